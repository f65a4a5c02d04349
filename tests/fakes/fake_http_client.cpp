#include "tests/fakes/fake_http_client.h"

#include <algorithm>

namespace fakes {

using platform::HeaderFields;
using platform::HttpResult;
using platform::Millis;

void FakeHttpClient::get(const std::string& url, Millis timeout, std::function<void(HttpResult)> done) {
  Answer given{error("Timeout was reached"), timeout};
  {
    const std::lock_guard lock(mutex_);
    requests_.push_back({url, timeout, dispatch_.now()});
    mostOpen_ = std::max(mostOpen_, ++open_);
    std::optional<Answer> scripted;
    if (const auto found = answers_.find(url); found != answers_.end()) {
      scripted = found->second;
    } else if (otherwise_) {
      scripted = otherwise_(url);
    }
    if (scripted && scripted->delay < timeout) {
      given = *scripted;
    }
  }
  dispatch_.global().after(given.delay, [this, result = given.result, done = std::move(done)] {
    {
      const std::lock_guard lock(mutex_);
      --open_;
    }
    done(result);
  });
}

void FakeHttpClient::answer(const std::string& url, const HttpResult& result, Millis delay) {
  const std::lock_guard lock(mutex_);
  answers_[url] = {result, delay};
}

HttpResult FakeHttpClient::status(int code, HeaderFields headers) {
  return {std::nullopt, code, std::move(headers)};
}

HttpResult FakeHttpClient::error(const std::string& text) {
  return {text, 0, {}};
}

void FakeHttpClient::setOtherwise(std::function<std::optional<Answer>(const std::string&)> otherwise) {
  const std::lock_guard lock(mutex_);
  otherwise_ = std::move(otherwise);
}

std::vector<FakeHttpClient::Request> FakeHttpClient::requests() const {
  const std::lock_guard lock(mutex_);
  return requests_;
}

std::vector<std::string> FakeHttpClient::requestedUrls() const {
  std::vector<std::string> urls;
  for (const Request& request : requests()) {
    urls.push_back(request.url);
  }
  return urls;
}

std::size_t FakeHttpClient::open() const {
  const std::lock_guard lock(mutex_);
  return open_;
}

std::size_t FakeHttpClient::mostOpen() const {
  const std::lock_guard lock(mutex_);
  return mostOpen_;
}

}  // namespace fakes

#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/http_client.h"

namespace fakes {

// Answers on simulated time, on a global queue. Not in the journal, since requests may come from any queue in
// any order: requests() has them.
class FakeHttpClient final : public platform::HttpClient {
 public:
  struct Answer {
    platform::HttpResult result;
    platform::Millis delay{0};
  };
  struct Request {
    std::string url;
    platform::Millis timeout{0};
    // When it was sent.
    platform::Millis time{0};
  };

  explicit FakeHttpClient(platform::Dispatch& dispatch) : dispatch_(dispatch) {}

  void get(const std::string& url, platform::Millis timeout,
           std::function<void(platform::HttpResult)> done) override;

  // Scripts the answer to an address; a later script takes the place of an earlier one. An answer that comes
  // at the time-out or later counts as none.
  void answer(const std::string& url, const platform::HttpResult& result,
              platform::Millis delay = platform::Millis{0});
  // A result with a status and fields, and one with an error.
  static platform::HttpResult status(int code, platform::HeaderFields headers = {});
  static platform::HttpResult error(const std::string& text);
  // Answers addresses without a script; absent (and at first): no answer until the time-out.
  void setOtherwise(std::function<std::optional<Answer>(const std::string& url)> otherwise);

  std::vector<Request> requests() const;
  std::vector<std::string> requestedUrls() const;
  // How many requests are open now, and how many were at most.
  std::size_t open() const;
  std::size_t mostOpen() const;

 private:
  platform::Dispatch& dispatch_;
  mutable std::mutex mutex_;
  std::map<std::string, Answer> answers_;
  std::function<std::optional<Answer>(const std::string&)> otherwise_;
  std::vector<Request> requests_;
  std::size_t open_ = 0;
  std::size_t mostOpen_ = 0;
};

}  // namespace fakes

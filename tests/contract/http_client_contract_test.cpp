#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/linux/linux_http_client.h"
#include "tests/contract/dispatch_harness.h"
#include "tests/contract/http_peer.h"
#include "tests/fakes/fake_http_client.h"

using platform::HeaderFields;
using platform::HttpResult;
using platform::Millis;
using namespace std::chrono_literals;

namespace {

// A client, and the servers that the test needs.
class HttpHarness {
 public:
  virtual ~HttpHarness() = default;
  virtual platform::HttpClient& client() = 0;
  virtual bool runUntil(const std::function<bool()>& reached) = 0;
  // The address of a server that answers with this status and these fields, that never answers, that
  // refuses.
  virtual std::string serving(int status, const HeaderFields& fields) = 0;
  virtual std::string silent() = 0;
  virtual std::string refusing() = 0;
};

class FakeHttpHarness : public HttpHarness {
 public:
  platform::HttpClient& client() override { return client_; }
  bool runUntil(const std::function<bool()>& reached) override { return queues_.runUntil(reached); }
  std::string serving(int status, const HeaderFields& fields) override {
    client_.answer("http://10.0.0.5:9090", fakes::FakeHttpClient::status(status, fields));
    return "http://10.0.0.5:9090";
  }
  std::string silent() override { return "http://10.0.0.6:9090"; }
  std::string refusing() override {
    client_.answer("http://10.0.0.7:9090", fakes::FakeHttpClient::error("Connection refused"));
    return "http://10.0.0.7:9090";
  }

 private:
  SimHarness queues_;
  fakes::FakeHttpClient client_{queues_.dispatch()};
};

class LinuxHttpHarness : public HttpHarness {
 public:
  platform::HttpClient& client() override { return client_; }
  bool runUntil(const std::function<bool()>& reached) override { return queues_.runUntil(reached); }
  std::string serving(int status, const HeaderFields& fields) override {
    std::string answer = "HTTP/1.1 " + std::to_string(status) + " Some Reason\r\nContent-Length: 4\r\n";
    for (const auto& [name, value] : fields) {
      answer.append(name).append(": ").append(value).append("\r\n");
    }
    peer_.answer("/", answer + "\r\nbody");
    peer_.start();
    return peer_.url("");
  }
  std::string silent() override {
    peer_.answer("/", [](PeerConnection& connection) { connection.waitUntilClientGoes(); });
    peer_.start();
    return peer_.url("");
  }
  std::string refusing() override { return peer_.url(""); }

 private:
  LinuxHarness queues_;
  HttpPeer peer_;
  platform::LinuxHttpClient client_;
};

// Results of requests, which come on a thread of the client's.
class Results {
 public:
  std::function<void(HttpResult)> take() {
    return [this](const HttpResult& result) {
      const std::lock_guard lock(mutex_);
      results_.push_back(result);
    };
  }
  std::size_t size() const {
    const std::lock_guard lock(mutex_);
    return results_.size();
  }
  HttpResult front() const {
    const std::lock_guard lock(mutex_);
    return results_.front();
  }

 private:
  mutable std::mutex mutex_;
  std::vector<HttpResult> results_;
};

struct Kind {
  const char* name;
  std::unique_ptr<HttpHarness> (*make)();
};

void PrintTo(const Kind& kind, std::ostream* out) {
  *out << kind.name;
}

}  // namespace

class HttpClientContract : public testing::TestWithParam<Kind> {
 protected:
  HttpHarness& harness() { return *harness_; }
  platform::HttpClient& client() { return harness_->client(); }
  // The result of one request; an error text of the test's when none came.
  HttpResult resultOf(const std::string& url, Millis timeout) {
    client().get(url, timeout, results_.take());
    if (!harness_->runUntil([this] { return results_.size() > 0; })) {
      return {"the test waited in vain", 0, {}};
    }
    return results_.front();
  }

 private:
  // The client goes first: it may still end requests.
  Results results_;
  std::unique_ptr<HttpHarness> harness_ = GetParam().make();
};

TEST_P(HttpClientContract, GivesStatusAndFieldsAsReceived) {
  const std::string url = harness().serving(200, {{"Server", "Lumo-Juniva/2.1"}, {"x-MIXED-case", "a  b"}});
  const HttpResult result = resultOf(url, 5s);
  EXPECT_EQ(result.error, std::nullopt);
  EXPECT_EQ(result.statusCode, 200);
  ASSERT_NE(platform::headerValue(result.headers, "Server"), nullptr);
  EXPECT_EQ(*platform::headerValue(result.headers, "Server"), "Lumo-Juniva/2.1");
  ASSERT_NE(platform::headerValue(result.headers, "x-MIXED-case"), nullptr);
  EXPECT_EQ(*platform::headerValue(result.headers, "x-MIXED-case"), "a  b");
  EXPECT_EQ(platform::headerValue(result.headers, "server"), nullptr);
}

TEST_P(HttpClientContract, TakesEveryStatusForAnAnswer) {
  const HttpResult result = resultOf(harness().serving(503, {{"Server", "Lumo-Juniva/2.1"}}), 5s);
  EXPECT_EQ(result.error, std::nullopt);
  EXPECT_EQ(result.statusCode, 503);
  EXPECT_NE(platform::headerValue(result.headers, "Server"), nullptr);
}

TEST_P(HttpClientContract, EndsWithAnErrorWhenNobodyAnswersInTime) {
  const HttpResult result = resultOf(harness().silent(), 50ms);
  ASSERT_TRUE(result.error);
  EXPECT_NE(*result.error, "");
  EXPECT_NE(*result.error, "the test waited in vain");
  EXPECT_EQ(result.statusCode, 0);
  EXPECT_TRUE(result.headers.empty());
}

TEST_P(HttpClientContract, EndsWithAnErrorWhenThePortIsClosed) {
  const HttpResult result = resultOf(harness().refusing(), 5s);
  ASSERT_TRUE(result.error);
  EXPECT_NE(*result.error, "the test waited in vain");
  EXPECT_EQ(result.statusCode, 0);
}

TEST_P(HttpClientContract, EndsEachOfManyRequestsOnce) {
  const std::string url = harness().silent();
  Results results;
  for (int request = 0; request < 256; ++request) {
    client().get(url, 100ms, results.take());
  }
  EXPECT_TRUE(harness().runUntil([&] { return results.size() == 256; }));
  // Whatever was sent before is through when a later request is.
  resultOf(url, 1ms);
  EXPECT_EQ(results.size(), 256U);
}

INSTANTIATE_TEST_SUITE_P(
    All, HttpClientContract,
    testing::Values(
        Kind{"Fake", []() -> std::unique_ptr<HttpHarness> { return std::make_unique<FakeHttpHarness>(); }},
        Kind{"Linux", []() -> std::unique_ptr<HttpHarness> { return std::make_unique<LinuxHttpHarness>(); }}),
    [](const auto& info) { return std::string(info.param.name); });

#pragma once

#include <memory>

#include "platform/http_client.h"

namespace platform {

// Requests over libcurl; one thread, started with the first request, drives all of them. Callbacks run on
// that thread and must not destroy the client. When the client goes, requests that are still open end with
// the error "cancelled" first. Of a "file:" address only whether it can be read is told. A header beyond 256
// KiB or 1,000 fields is an error.
class LinuxHttpClient : public HttpClient {
 public:
  LinuxHttpClient();
  ~LinuxHttpClient() override;
  LinuxHttpClient(const LinuxHttpClient&) = delete;
  LinuxHttpClient& operator=(const LinuxHttpClient&) = delete;

  void get(const std::string& url, Millis timeout, std::function<void(HttpResult)> done) override;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace platform

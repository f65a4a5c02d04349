#pragma once

#include <functional>
#include <string>

#include <curl/curl.h>

#include "platform/http_client.h"

namespace platform {

// One request of LinuxHttpClient: its options, the header fields as they come in, its result. On the client's
// thread only.
class HttpExchange {
 public:
  HttpExchange(std::string url, Millis timeout, std::function<void(HttpResult)> done);
  ~HttpExchange();
  HttpExchange(const HttpExchange&) = delete;
  HttpExchange& operator=(const HttpExchange&) = delete;

  // Makes the transfer; null, and the exchange ended with an error, when the address is of no use.
  CURL* start();
  // The transfer has ended with this code.
  void finish(CURLcode code);
  // Ends without an answer.
  void fail(std::string_view error);

  CURL* handle() const { return easy_; }

 private:
  static std::size_t headerArrived(char* bytes, std::size_t size, std::size_t count, void* self);
  bool addHeaderLine(std::string_view line);
  bool addField(std::string_view line);
  void end(HttpResult result);

  const std::string url_;
  const Millis timeout_;
  std::function<void(HttpResult)> done_;
  CURL* easy_ = nullptr;
  char reason_[CURL_ERROR_SIZE] = {};
  HeaderFields fields_;
  // What the answers of this exchange sent as headers so far.
  std::size_t headerBytes_ = 0;
  bool headerTooLarge_ = false;
  bool inHeader_ = false;
};

// What there is to say of a "file:" address: nothing but an error, or that it can be read.
HttpResult resultForFile(const std::string& url);

}  // namespace platform

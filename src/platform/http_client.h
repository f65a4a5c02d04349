#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/queue.h"
#include "platform/web_view.h"

namespace platform {

// The end of one request: an answer (any status counts) or an error text.
struct HttpResult {
  std::optional<std::string> error;
  int statusCode = 0;
  // The final answer's fields after redirects, empty for a file.
  HeaderFields headers;
};

// Requests that need no page: probes and the connection test.
class HttpClient {
 public:
  virtual ~HttpClient() = default;
  // Sends a GET for `url` (http, https or file), without a proxy or a cache. `done` gets the result exactly
  // once, on a thread of the client's, within `timeout` for the whole exchange. The body is read and dropped;
  // an endless one ends with the time. Any thread; returns at once. 256 requests at a time are usual.
  virtual void get(const std::string& url, Millis timeout, std::function<void(HttpResult)> done) = 0;
};

}  // namespace platform

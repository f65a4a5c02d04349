// The two value types that handlers work with: what came in, and what is to go out.
#pragma once

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

namespace juniva {

struct Header {
  std::string name;
  std::string value;
};

// One request as a handler sees it. `path` has its percent escapes removed, `query` and `body` are as
// received.
struct Request {
  std::string method;
  std::string path;
  std::string query;
  std::string contentType;
  std::string body;
};

// One answer. `delay` is waited before it is sent, without holding up other requests. A `silent` answer is
// never sent: the connection stays open and mute for `delay` and is then closed.
struct Response {
  int status = 200;
  std::string contentType = "text/html; charset=utf-8";
  std::vector<Header> headers;
  std::string body;
  std::chrono::seconds delay{0};
  bool silent = false;
};

// The value of the first header with this name, in any case of the name; an absent header gives an empty
// text.
std::string_view headerValue(const Response& response, std::string_view name);

// The longest body that is read; a longer one is answered with 413.
inline constexpr long long kMaximumBodyBytes = 1024LL * 1024;

}  // namespace juniva

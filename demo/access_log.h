// The line that tells a watcher of one request.
#pragma once

#include <string>
#include <string_view>

namespace juniva {

// What a log line is made of. `status` 0 stands for a request that got no answer and shows as "-"; empty
// texts show as "-". All texts are as the client sent them.
struct AccessRecord {
  std::string_view time;
  std::string_view method;
  std::string_view target;  // the path with its query
  int status = 0;
  std::string_view scan;  // the value of the Glimmerpad-Scan header
  std::string_view userAgent;
};

// `2026-11-21T02:00:24.123 GET /registrationorders 200 scan=- agent="…"`, without a newline. Whatever the
// texts hold, the result is one line whose fields are parted by single blanks; only the quoted last one may
// hold blanks.
std::string accessLine(const AccessRecord& record);

}  // namespace juniva

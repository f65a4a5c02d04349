#pragma once

#include <string>
#include <string_view>

#include "platform/format.h"

namespace platform {

// Writes one diagnostic line on standard error: "2026-11-21 02:00:24.123 LumoBrowser[pid:thread] text" (local
// time), with one write, so that lines of several threads never interleave; line breaks inside the text stay,
// bytes that are no UTF-8 are replaced. Any thread; errno is kept. After a failing write (full disk, a
// pipe that nobody reads) the kiosk goes on; the next line written tells how many were lost, and why.
void logLine(std::string_view text);
// The program's name in each line, "LumoBrowser" until it is set. Any thread.
void setLogProcessName(std::string name);

// The platform's plain log call: formats as stringWithFormat does and writes the line.
template <class... Arguments>
void NSLog(std::string_view format, const Arguments&... arguments) {
  logLine(vformat(format, {FormatArgument(arguments)...}));
}

}  // namespace platform

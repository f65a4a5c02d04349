#pragma once

#include <functional>
#include <string>

namespace platform {

// Takes a log line's text, valid UTF-8, in place of standard error. It runs on the thread that logs, one line
// at a time, and must not log.
using LogSink = std::function<void(const std::string& text)>;
// Null: standard error again. Any thread.
void setLogSink(LogSink sink);

}  // namespace platform

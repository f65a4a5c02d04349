#include "platform/log.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <ctime>
#include <mutex>
#include <utility>

#include <fmt/format.h>
#include <unistd.h>

#include "platform/log_sink.h"
#include "platform/strings.h"

namespace platform {

namespace {

struct Log {
  std::mutex mutex;
  std::string processName = "LumoBrowser";
  LogSink sink;
  // Lines that could not be written since the last one that was, and why the last of them could not.
  unsigned long lost = 0;
  int reason = 0;
  // The last one ends somewhere inside.
  bool isCut = false;
};

// Never destroyed: threads may log while the process ends.
Log& theLog() {
  static Log& log = *new Log;
  return log;
}

// Writing to a pipe that nobody reads would end the process. While this lives, the calling thread gets no
// SIGPIPE, and one that the write caused is gone afterwards. One that was pending before stays so.
class PipeSignalGuard {
 public:
  PipeSignalGuard() {
    sigset_t pending;
    sigemptyset(&pending);
    sigpending(&pending);
    wasPending_ = sigismember(&pending, SIGPIPE) == 1;
    sigemptyset(&pipeSignal_);
    sigaddset(&pipeSignal_, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipeSignal_, &before_);
  }
  ~PipeSignalGuard() {
    const timespec atOnce{};
    while (!wasPending_ && sigtimedwait(&pipeSignal_, nullptr, &atOnce) < 0 && errno == EINTR) {
    }
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  }
  PipeSignalGuard(const PipeSignalGuard&) = delete;
  PipeSignalGuard& operator=(const PipeSignalGuard&) = delete;

 private:
  sigset_t pipeSignal_{};
  sigset_t before_{};
  bool wasPending_ = false;
};

std::string timeStamp() {
  const auto now = std::chrono::time_point_cast<std::chrono::milliseconds>(std::chrono::system_clock::now());
  const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
  const auto millis = (now.time_since_epoch() % std::chrono::seconds(1)).count();
  std::tm local{};
  localtime_r(&seconds, &local);
  return fmt::format("{:04}-{:02}-{:02} {:02}:{:02}:{:02}.{:03}", local.tm_year + 1900, local.tm_mon + 1,
                     local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec, millis);
}

// How many bytes were written; where that is fewer, errno says why.
std::size_t writeAll(std::string_view bytes) {
  std::size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t written = ::write(STDERR_FILENO, bytes.data() + done, bytes.size() - done);
    if (written > 0) {
      done += static_cast<std::size_t>(written);
    } else if (written == 0 || errno != EINTR) {
      break;
    }
  }
  return done;
}

std::string lineOf(const Log& log, std::string_view text) {
  return fmt::format("{} {}[{}:{}] {}\n", timeStamp(), log.processName, getpid(), gettid(), text);
}

// What has to be said before the next line can be.
std::string catchUp(const Log& log) {
  std::string text = log.isCut ? "\n" : "";
  if (log.lost > 0) {
    const char* what = log.lost == 1 ? "line was" : "lines were";
    text += lineOf(log, fmt::format("{} {} lost here: {}", log.lost, what, std::strerror(log.reason)));
  }
  return text;
}

void write(Log& log, std::string_view text) {
  const std::string before = catchUp(log);
  const std::string bytes = before + lineOf(log, text);
  const std::size_t written = writeAll(bytes);
  const int error = errno;
  if (written >= before.size()) {
    log.lost = 0;
  }
  if (written > 0) {
    log.isCut = bytes[written - 1] != '\n';
  }
  if (written < bytes.size()) {
    ++log.lost;
    log.reason = error;
  }
}

}  // namespace

void logLine(std::string_view text) {
  const int errorOfCaller = errno;
  {
    const PipeSignalGuard guard;
    Log& log = theLog();
    // The rest of a write that was cut short must follow before another thread's line.
    const std::lock_guard lock(log.mutex);
    const std::string valid = validUtf8(text);
    if (log.sink) {
      log.sink(valid);
    } else {
      write(log, valid);
    }
  }
  errno = errorOfCaller;
}

void setLogProcessName(std::string name) {
  Log& log = theLog();
  const std::lock_guard lock(log.mutex);
  log.processName = std::move(name);
}

void setLogSink(LogSink sink) {
  Log& log = theLog();
  const std::lock_guard lock(log.mutex);
  log.sink = std::move(sink);
}

}  // namespace platform

#include "platform/log.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <ctime>
#include <mutex>
#include <utility>

#include <fmt/format.h>
#include <unistd.h>

#include "platform/strings.h"

namespace platform {

namespace {

struct Log {
  std::mutex mutex;
  std::string processName = "LumoBrowser";
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

void writeAll(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(STDERR_FILENO, bytes.data(), bytes.size());
    if (written > 0) {
      bytes.remove_prefix(static_cast<std::size_t>(written));
    } else if (written == 0 || errno != EINTR) {
      return;
    }
  }
}

}  // namespace

void logLine(std::string_view text) {
  const int errorOfCaller = errno;
  {
    const PipeSignalGuard guard;
    Log& log = theLog();
    // Only a write that was cut short needs the lock: its rest must follow before another thread's line.
    const std::lock_guard lock(log.mutex);
    writeAll(
        fmt::format("{} {}[{}:{}] {}\n", timeStamp(), log.processName, getpid(), gettid(), validUtf8(text)));
  }
  errno = errorOfCaller;
}

void setLogProcessName(std::string name) {
  Log& log = theLog();
  const std::lock_guard lock(log.mutex);
  log.processName = std::move(name);
}

}  // namespace platform

#include "support/ZELKOR_Log.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/format.h"
#include "platform/log.h"
#include "platform/paths.h"
#include "platform/standard_descriptors.h"
#include "platform/strings.h"
#include "support/ZELKOR_NSObjectAdditions.h"

namespace lumo {

namespace {

using platform::NSLog;
using platform::stringWithFormat;

constexpr int kEnabledLevels = 32;
constexpr mode_t kFileMode = 0664;
// 4001-01-01 00:00:00 UTC, the platform's distant future, in seconds since 1970.
constexpr std::time_t kDistantFuture = 64092211200;

bool isEnabled(int level) {
  return (level & kEnabledLevels) != 0;
}

struct LevelTexts {
  const char* tag;
  std::string label;
};

LevelTexts textsForLevel(int level, const std::string& applicationName) {
  switch (level) {
    case ZELKOR_Log::Info:
      return {"I", "INFO"};
    case ZELKOR_Log::Warn:
      return {"W", "WARN"};
    case ZELKOR_Log::Error:
      return {"E", "ERROR"};
    case ZELKOR_Log::Debug2:
      return {"D2", stringWithFormat("DEBUG2: %@", applicationName)};
    default:
      return {"D", stringWithFormat("DEBUG: %@", applicationName)};
  }
}

// Lines that wait for a log file. Bounded, since there may never be one.
class PendingBuffer {
 public:
  void append(std::string_view line) {
    if (characters_ >= kTrimFrom) {
      trim();
    }
    text_ += line;
    characters_ += countOf(line);
  }
  const std::string& text() const { return text_; }

 private:
  static constexpr std::size_t kTrimFrom = 1000001;
  static constexpr std::size_t kTrimBy = 10000;

  static bool beginsCharacter(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; }
  static std::size_t countOf(std::string_view text) {
    std::size_t count = 0;
    for (const char byte : text) {
      count += beginsCharacter(byte) ? 1 : 0;
    }
    return count;
  }
  void trim() {
    std::size_t end = 0;
    for (std::size_t count = 0; end < text_.size(); ++end) {
      if (beginsCharacter(text_[end]) && ++count > kTrimBy) {
        break;
      }
    }
    text_.erase(0, end);
    characters_ -= kTrimBy;
  }

  std::string text_;
  std::size_t characters_ = 0;
};

// Whole lines, also those with a zero byte inside. A failure is nobody's business here.
void put(std::string_view text, std::FILE* stream) {
  std::fwrite(text.data(), 1, text.size(), stream);
}

// Takes standard error onto the file. Descriptor 2 stays what it is, never closed in between, so other
// threads and child processes always have it.
void reopenStandardError(const std::string& path) {
  const int before = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  if (std::freopen(path.c_str(), "a", stderr) != nullptr) {
    std::setvbuf(stderr, nullptr, _IONBF, 0);
    if (fileno(stderr) != STDERR_FILENO) {
      dup2(fileno(stderr), STDERR_FILENO);
    }
  } else {
    // The C library has closed the descriptor.
    const int error = errno;
    if (before >= 0) {
      dup2(before, STDERR_FILENO);
    }
    NSLog("Standard error stays where it is: %s", std::strerror(error));
  }
  if (before >= 0) {
    close(before);
  }
}

struct State {
  State(platform::Dispatch& machine, platform::NotificationCenter& notifications, std::string processName)
      : dispatch(machine), center(notifications), applicationName(std::move(processName)) {}
  ~State() {
    if (stream != nullptr) {
      std::fclose(stream);
    }
  }
  State(const State&) = delete;
  State& operator=(const State&) = delete;

  // Queues one line. Lines that come while others wait are written in the same turn of the logging queue: in
  // a burst, a turn for each would cost more than writing it.
  static void add(const std::shared_ptr<State>& state, int level, std::string_view message) {
    {
      const std::lock_guard lock(state->waitingMutex);
      state->waiting.emplace_back(level, message);
      if (state->waiting.size() > 1) {
        return;
      }
    }
    state->loggingQueue().async([state] { state->writeWaiting(); });
  }

  // On the logging queue.
  void writeWaiting() {
    std::vector<std::pair<int, std::string>> lines;
    {
      const std::lock_guard lock(waitingMutex);
      lines.swap(waiting);
    }
    for (const auto& line : lines) {
      // An observer that throws costs the other lines nothing.
      try {
        write(line.first, platform::validUtf8(line.second));
      } catch (const std::exception& error) {
        NSLog("An observer of the log ended with an exception: %s", error.what());
      }
    }
  }

  // On the logging queue.
  void write(int level, const std::string& message) {
    std::optional<platform::Notification> notification;
    {
      const std::lock_guard lock(mutex);
      if (!shouldLogToStdErr && stream == nullptr) {
        return;
      }
      const LevelTexts texts = textsForLevel(level, applicationName);
      if (shouldLogToStdErr) {
        put(stringWithFormat("%@: %@\n", texts.label, message), stderr);
      }
      const std::string line =
          stringWithFormat("%s %@%@ %@\n", texts.tag, ZELKOR_Log::logDateString(),
                           shouldLogAppName ? stringWithFormat(" %@:", applicationName) : "", message);
      if (pending) {
        pending->append(line);
      } else {
        put(line, stream);
      }
      if (shouldNotifyForLogUpdates) {
        notification = {ZELKOR_Log::LogFileDidUpdateNotification,
                        logFilePath ? std::optional<platform::PropertyList>(*logFilePath) : std::nullopt,
                        {{ZELKOR_Log::LogFileAddedStringKey, line}},
                        nullptr};
      }
    }
    // Without the lock: an observer may change the log's settings.
    if (notification) {
      center.postNotification(*notification);
    }
  }

  platform::SerialQueue loggingQueue() {
    std::call_once(queueMade, [this] {
      queue = ZELKOR_NSObjectAdditions::dispatchQueueSerialWithDebugLabel(dispatch, "loggingQueue");
    });
    return *queue;
  }

  platform::Dispatch& dispatch;
  platform::NotificationCenter& center;
  std::once_flag queueMade;
  std::optional<platform::SerialQueue> queue;

  std::mutex waitingMutex;
  // Not yet in their turn. Not empty while a turn for them is under way.
  std::vector<std::pair<int, std::string>> waiting;

  // Guards what follows. Held while a line is written, so it is taken on the logging queue and by the
  // setters, never by those who log.
  std::mutex mutex;
  std::string applicationName;
  std::optional<std::string> logFilePath;
  // Given up for good once a file is open: there is always exactly one of it and the stream.
  std::optional<PendingBuffer> pending{std::in_place};
  std::FILE* stream = nullptr;
  bool shouldLogToStdErr = true;
  bool shouldNotifyForLogUpdates = false;
  bool shouldLogAppName = false;
  // Nobody sets it.
  int fatalExitStatus = 0;
};

// Never destroyed: threads may log while the process ends.
struct Process {
  std::mutex mutex;
  std::shared_ptr<State> state;
};

Process& process() {
  static Process& instance = *new Process;
  return instance;
}

// Null before initialize.
std::shared_ptr<State> current() {
  const std::lock_guard lock(process().mutex);
  return process().state;
}

template <class Change>
void change(Change&& apply) {
  if (const auto state = current()) {
    const std::lock_guard lock(state->mutex);
    apply(*state);
  }
}

void logPieces(int level, std::string_view message) {
  if (!isEnabled(level)) {
    return;
  }
  for (const std::string& piece : platform::componentsSeparatedBy(message, "\n")) {
    ZELKOR_Log::logLevel_message(level, piece);
  }
}

}  // namespace

void ZELKOR_Log::initialize(platform::Dispatch& dispatch, platform::NotificationCenter& center,
                            std::string processName) {
  auto state = std::make_shared<State>(dispatch, center, std::move(processName));
  const std::lock_guard lock(process().mutex);
  process().state.swap(state);
}

void ZELKOR_Log::setShouldNotifyForLogUpdates(bool should) {
  change([should](State& state) { state.shouldNotifyForLogUpdates = should; });
}

void ZELKOR_Log::setShouldLogToStdErr(bool should) {
  change([should](State& state) { state.shouldLogToStdErr = should; });
}

void ZELKOR_Log::setShouldLogAppName(bool should) {
  change([should](State& state) { state.shouldLogAppName = should; });
}

void ZELKOR_Log::setApplicationName(std::string name) {
  change([&name](State& state) { state.applicationName = std::move(name); });
}

bool ZELKOR_Log::setLogFile(const std::optional<std::string>& path) {
  const auto state = current();
  if (!state) {
    NSLog("The log has not been set up, so it cannot be kept in %@", path);
    return false;
  }
  {
    const std::lock_guard lock(state->mutex);
    state->logFilePath = path ? std::optional(platform::standardizingPath(*path)) : std::nullopt;
  }
  std::error_code error;
  std::filesystem::create_directories(platform::deletingLastPathComponent(path.value_or("")), error);
  if (error) {
    NSLog("error with createDirectoryAtPath for [%@]:\nERROR = %@", path, error.message());
  }
  rollLogFileIfNecessary(path);
  if (!path) {
    return false;
  }
  std::unique_lock lock(state->mutex);
  if (state->stream != nullptr) {
    return false;
  }
  // Else the log's own stream could become descriptor 2.
  platform::openStandardDescriptors();
  // Children get standard error, not this second way into the file.
  state->stream = std::fopen(path->c_str(), "ae");
  if (state->stream == nullptr) {
    const int number = errno;
    lock.unlock();
    debug(stringWithFormat("Failed to open log file at %@; error %d \"%s\"", path, number,
                           std::strerror(number)));
    return false;
  }
  fchmod(fileno(state->stream), kFileMode);
  // The C standard wants this before anything is written; nothing waits for a flush then.
  std::setbuf(state->stream, nullptr);
  put(state->pending->text(), state->stream);
  state->pending.reset();
  if (!state->shouldLogToStdErr) {
    reopenStandardError(*path);
  }
  return true;
}

std::string ZELKOR_Log::logDateString() {
  return logDateString(std::chrono::system_clock::now());
}

std::string ZELKOR_Log::logDateString(platform::Date date) {
  const auto second = std::chrono::floor<std::chrono::seconds>(date);
  const auto milliseconds = std::chrono::floor<std::chrono::milliseconds>(date - second);
  const std::time_t time = std::chrono::system_clock::to_time_t(second);
  std::tm local{};
  localtime_r(&time, &local);
  char day[64];
  char zone[16];
  std::strftime(day, sizeof day, "%G/%m/%d %H:%M:%S", &local);
  std::strftime(zone, sizeof zone, "%z", &local);
  return stringWithFormat("[%s.%03d %s]", day, static_cast<int>(milliseconds.count()), zone);
}

platform::SerialQueue ZELKOR_Log::loggingQueue() {
  const auto state = current();
  if (!state) {
    throw std::logic_error("the log has not been set up");
  }
  return state->loggingQueue();
}

void ZELKOR_Log::logLevel_message(int level, std::string_view message) {
  if (!isEnabled(level)) {
    return;
  }
  if (const auto state = current()) {
    State::add(state, level, message);
  }
}

void ZELKOR_Log::debug(std::string_view message) {
  logPieces(Debug, message);
}

void ZELKOR_Log::debug2(std::string_view message) {
  logPieces(Debug2, message);
}

void ZELKOR_Log::err(std::string_view message) {
  logLevel_message(Error, message);
}

void ZELKOR_Log::fatal(std::string_view message) {
  logLevel_message(Error, message);
  int status = 0;
  change([&status](State& state) { status = state.fatalExitStatus; });
  if (status != 0) {
    std::exit(status);
  }
  while (std::time(nullptr) < kDistantFuture) {
    std::this_thread::sleep_for(std::chrono::hours(24));
  }
  std::exit(1);
}

void ZELKOR_Log::logFileDidUpdate(const platform::Notification& /*notification*/) const {}

}  // namespace lumo

#include "platform/linux/single_instance.h"

#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/log.h"

namespace platform {

namespace {

namespace fs = std::filesystem;

// Whether `path` is a folder (no link to one) of this user's. In /tmp anybody may have put something there.
bool isOurFolder(const fs::path& path) {
  struct stat status = {};
  return lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == geteuid();
}

int processIn(int file) {
  char text[32] = {};
  const ssize_t length = pread(file, text, sizeof text - 1, 0);
  int process = 0;
  if (length > 0) {
    std::from_chars(text, text + length, process);
  }
  return process > 0 ? process : 0;
}

bool writeProcess(int file) {
  const std::string text = std::to_string(getpid()) + "\n";
  return ftruncate(file, 0) == 0 &&
         pwrite(file, text.data(), text.size(), 0) == static_cast<ssize_t>(text.size());
}

}  // namespace

std::optional<fs::path> runtimeFolder() {
  const char* given = std::getenv("XDG_RUNTIME_DIR");
  std::error_code ignored;
  if (given != nullptr && given[0] == '/' && fs::is_directory(given, ignored)) {
    return given;
  }
  const std::string user = std::to_string(geteuid());
  const fs::path session = "/run/user/" + user;
  if (isOurFolder(session)) {
    return session;
  }
  const fs::path own = "/tmp/lumobrowser-" + user;
  if (mkdir(own.c_str(), S_IRWXU) != 0 && errno != EEXIST) {
    NSLog("%s cannot be made: %s", own.string(), std::strerror(errno));
    return std::nullopt;
  }
  if (!isOurFolder(own) || chmod(own.c_str(), S_IRWXU) != 0) {
    NSLog("%s belongs to somebody else", own.string());
    return std::nullopt;
  }
  return own;
}

std::optional<std::vector<RunningApplication>> SingleInstance::claim(const std::optional<fs::path>& folder) {
  const RunningApplication self{getpid()};
  if (lock_) {
    return {{self}};
  }
  if (!folder) {
    return std::nullopt;
  }
  const fs::path path = *folder / (name_ + ".lock");
  FileDescriptor file(
      open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, S_IRUSR | S_IWUSR));
  if (!file) {
    NSLog("The lock file %s cannot be opened: %s", path.string(), std::strerror(errno));
    return std::nullopt;
  }
  if (flock(file.get(), LOCK_EX | LOCK_NB) != 0) {
    if (errno == EWOULDBLOCK) {
      return {{RunningApplication{processIn(file.get())}, self}};
    }
    NSLog("The lock file %s cannot be locked: %s", path.string(), std::strerror(errno));
    return std::nullopt;
  }
  // The sticky bit keeps programs that tidy such folders from removing the file below the lock (XDG Base
  // Directory; tmpfiles.d).
  fchmod(file.get(), S_ISVTX | S_IRUSR | S_IWUSR);
  if (!writeProcess(file.get())) {
    NSLog("The lock file %s cannot be written: %s", path.string(), std::strerror(errno));
  }
  lock_ = std::move(file);
  return {{self}};
}

}  // namespace platform

#include <cerrno>
#include <cstddef>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/format.h"
#include "platform/log.h"
#include "platform/paths.h"
#include "support/ZELKOR_Log.h"

namespace lumo {

namespace {

constexpr std::uint64_t kLargestLiveFile = 1048576;
constexpr std::size_t kOldFileIsCutFrom = 10485761;
constexpr mode_t kFileMode = 0664;

// The last `limit` bytes of a file, fewer when it is shorter or cannot be read to its end; nothing when it is
// no regular file. Read from its end, since a kiosk that ran for months may have a live file of any size.
std::string tailOfFile(const std::string& path, std::size_t limit) {
  std::string bytes;
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (file < 0) {
    return bytes;
  }
  struct stat status {};
  if (fstat(file, &status) == 0 && S_ISREG(status.st_mode)) {
    const auto size = static_cast<std::size_t>(status.st_size);
    bytes.resize(size < limit ? size : limit);
    auto offset = static_cast<off_t>(size - bytes.size());
    std::size_t filled = 0;
    while (filled < bytes.size()) {
      const ssize_t count = pread(file, bytes.data() + filled, bytes.size() - filled, offset);
      if (count > 0) {
        filled += static_cast<std::size_t>(count);
        offset += count;
      } else if (count == 0 || errno != EINTR) {
        break;
      }
    }
    bytes.resize(filled);
  }
  close(file);
  return bytes;
}

bool writeFile(const std::string& path, std::string_view bytes) {
  const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NONBLOCK, 0666);
  if (file < 0) {
    return false;
  }
  bool good = true;
  while (good && !bytes.empty()) {
    const ssize_t count = write(file, bytes.data(), bytes.size());
    if (count >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(count));
    } else {
      good = errno == EINTR;
    }
  }
  return close(file) == 0 && good;
}

std::string oldPathFor(const std::string& path) {
  const std::string extension = platform::pathExtension(path);
  return platform::stringWithFormat("%@_old.%@", platform::deletingPathExtension(path),
                                    extension.empty() ? "log" : extension);
}

}  // namespace

void ZELKOR_Log::rollLogFileIfNecessary(const std::optional<std::string>& path) {
  rollLogFile_toPath_atSize(path, std::nullopt, kLargestLiveFile);
}

void ZELKOR_Log::rollLogFile_toPath_atSize(const std::optional<std::string>& path,
                                           const std::optional<std::string>& destination,
                                           std::uint64_t size) {
  struct stat status {};
  if (!path || stat(path->c_str(), &status) != 0 || size > static_cast<std::uint64_t>(status.st_size)) {
    return;
  }
  platform::NSLog("Rolling log file.");
  const std::string target = destination ? *destination : oldPathFor(*path);
  // No more than the end of each can be in the result.
  std::string bytes = tailOfFile(target, kOldFileIsCutFrom) + tailOfFile(*path, kOldFileIsCutFrom);
  if (bytes.size() >= kOldFileIsCutFrom) {
    const std::size_t lineEnd = bytes.find('\n', bytes.size() - kOldFileIsCutFrom);
    bytes.erase(0, lineEnd == std::string::npos ? lineEnd : lineEnd + 1);
  }
  if (writeFile(target, bytes)) {
    platform::NSLog("Rolled previous log file into %@", target);
    chmod(target.c_str(), kFileMode);
  } else {
    platform::NSLog("Error writing old log file to %@", target);
  }
  const int live = open(path->c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
  if (live > 0) {
    platform::NSLog("Starting new log file at %@", *path);
  }
  if (live >= 0) {
    close(live);
  }
}

}  // namespace lumo

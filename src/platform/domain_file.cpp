#include "platform/domain_file.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include "platform/file_io.h"
#include "platform/log.h"
#include "platform/property_list_file.h"

namespace platform {
namespace {

using namespace std::chrono_literals;

// A write takes some milliseconds. Whoever holds the lock for longer than this was stopped, and the kiosk
// does not stop with it.
constexpr auto lockLimit = 2s;
// Short enough to meet the moments in which a busy writer lets go of the lock.
constexpr auto lockPause = 50us;
constexpr std::int64_t settledAfter = 50'000'000;

std::int64_t nanoseconds(const struct timespec& time) {
  return static_cast<std::int64_t>(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

std::filesystem::path withSuffix(std::filesystem::path path, std::string_view suffix) {
  path += suffix;
  return path;
}

// A symbolic link is replaced by no file: the file that it leads to is.
std::filesystem::path resolved(std::filesystem::path path) {
  std::error_code error;
  if (std::filesystem::is_symlink(path, error)) {
    auto target = std::filesystem::canonical(path, error);
    if (!error) {
      return target;
    }
  }
  return path;
}

std::string localTime() {
  const auto now = std::time(nullptr);
  struct tm parts {};
  std::array<char, 32> text{};
  localtime_r(&now, &parts);
  const auto length = std::strftime(text.data(), text.size(), "%Y%m%d-%H%M%S", &parts);
  return std::string(text.data(), length);
}

}  // namespace

DomainFile::DomainFile(std::filesystem::path path) : path_(resolved(std::move(path))) {}

bool DomainFile::Stamp::sameState(const Stamp& other) const {
  return exists == other.exists && device == other.device && inode == other.inode && size == other.size &&
         modified == other.modified && statusChanged == other.statusChanged;
}

DomainFile::Stamp DomainFile::stampOf(const struct stat& status) {
  Stamp stamp;
  stamp.exists = true;
  stamp.device = status.st_dev;
  stamp.inode = status.st_ino;
  stamp.size = status.st_size;
  stamp.modified = nanoseconds(status.st_mtim);
  stamp.statusChanged = nanoseconds(status.st_ctim);
  struct timespec now {};
  clock_gettime(CLOCK_REALTIME, &now);
  stamp.settled = std::abs(nanoseconds(now) - stamp.statusChanged) > settledAfter;
  return stamp;
}

bool DomainFile::changed() const {
  struct stat status {};
  const bool exists = ::stat(path_.c_str(), &status) == 0;
  if (!known_ || exists != stamp_.exists) {
    return true;
  }
  return exists && !(stamp_.settled && stamp_.sameState(stampOf(status)));
}

void DomainFile::report(Kind kind, std::string_view what, const std::string& reason) {
  if (reported_.insert(kind).second) {
    NSLog("UserDefaults: cannot %@ %@: %@", what, path_.string(), reason);
  }
}

DomainFile::Outcome DomainFile::load(Dictionary& values) {
  values = Dictionary();
  std::error_code error;
  auto contents = fileContents(path_, propertyListSizeLimit, error);
  stamp_ = Stamp();
  known_ = contents || error == std::errc::no_such_file_or_directory;
  if (!contents && !known_) {
    report(Kind::Read, "read", error.message());
    return Outcome::Unreadable;
  }
  succeeded(Kind::Read);
  if (!contents) {
    return Outcome::Values;
  }
  stamp_ = stampOf(contents->status);
  auto list = propertyListFromData(contents->bytes);
  const auto* dictionary = list ? list->as<Dictionary>() : nullptr;
  if (dictionary == nullptr) {
    return Outcome::Damaged;
  }
  values = *dictionary;
  return Outcome::Values;
}

std::optional<Dictionary> DomainFile::read() {
  Dictionary values;
  switch (load(values)) {
    case Outcome::Values:
      return values;
    case Outcome::Unreadable:
      return std::nullopt;
    case Outcome::Damaged:
      break;
  }
  // Another process may be setting it aside, or may have written a good one since.
  if (const auto held = lock()) {
    return read(*held);
  }
  report(Kind::SetAside, "set aside the damaged", "it cannot be locked");
  return values;
}

std::optional<Dictionary> DomainFile::read(const Lock& lock) {
  Dictionary values;
  switch (load(values)) {
    case Outcome::Values:
      return values;
    case Outcome::Unreadable:
      return std::nullopt;
    case Outcome::Damaged:
      break;
  }
  if (!setAside(lock)) {
    return std::nullopt;
  }
  return Dictionary();
}

bool DomainFile::setAside(const Lock&) {
  const auto name = withSuffix(path_, ".damaged-" + localTime());
  auto target = name;
  int error = 0;
  // Two damaged files of one second both stay.
  for (int number = 2; number < 100; ++number) {
    if (::renameat2(AT_FDCWD, path_.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) == 0) {
      stamp_ = Stamp();
      succeeded(Kind::SetAside);
      NSLog("UserDefaults: %@ is damaged; it is kept as %@ and the preferences start empty", path_.string(),
            target.string());
      return true;
    }
    error = errno;
    if (error != EEXIST) {
      break;
    }
    target = withSuffix(name, "-" + std::to_string(number));
  }
  report(Kind::SetAside, "set aside the damaged", std::generic_category().message(error));
  return false;
}

std::optional<DomainFile::Lock> DomainFile::lock() {
  if (const auto error = makeFolder(path_.parent_path())) {
    report(Kind::Folder, "make the folder of", error.message());
    return std::nullopt;
  }
  succeeded(Kind::Folder);
  // The lock file stays for ever: removing it would give two processes two different locks.
  const auto name = withSuffix(path_, ".lock");
  FileDescriptor descriptor(::open(name.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600));
  if (!descriptor) {
    report(Kind::Lock, "lock", std::generic_category().message(errno));
    return std::nullopt;
  }
  const auto end = std::chrono::steady_clock::now() + lockLimit;
  while (::flock(descriptor.get(), LOCK_EX | LOCK_NB) != 0) {
    const int error = errno;
    if ((error != EWOULDBLOCK && error != EINTR) || std::chrono::steady_clock::now() >= end) {
      report(Kind::Lock, "lock", std::generic_category().message(error));
      return std::nullopt;
    }
    std::this_thread::sleep_for(lockPause);
  }
  succeeded(Kind::Lock);
  return Lock(std::move(descriptor));
}

bool DomainFile::write(const Lock&, std::string_view bytes) {
  if (const auto error = replaceFile(path_, withSuffix(path_, ".new"), bytes)) {
    report(Kind::Write, "write", error.message());
    return false;
  }
  succeeded(Kind::Write);
  // The lock is held, so the file at this path is the one that was just written.
  struct stat status {};
  stamp_ = ::stat(path_.c_str(), &status) == 0 ? stampOf(status) : Stamp();
  return true;
}

}  // namespace platform

#include "platform/file_io.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <tuple>

#include <fcntl.h>
#include <unistd.h>

#include "platform/file_descriptor.h"

namespace platform {
namespace {

std::error_code lastError() {
  return {errno, std::generic_category()};
}

std::error_code writeAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const auto written = ::write(descriptor, bytes.data(), bytes.size());
    if (written < 0 && errno != EINTR) {
      return lastError();
    }
    bytes.remove_prefix(static_cast<std::size_t>(written < 0 ? 0 : written));
  }
  return {};
}

// Writes `bytes` to the new file `temporary`, down to the disk.
std::error_code writeNewFile(const std::filesystem::path& temporary, std::string_view bytes,
                             const struct stat* old) {
  FileDescriptor file(::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
  if (!file) {
    return lastError();
  }
  if (old != nullptr) {
    // Somebody who may write for others (root) leaves the file with its owner; everybody else owns it
    // already.
    if (old->st_uid != ::geteuid() || old->st_gid != ::getegid()) {
      std::ignore = ::fchown(file.get(), old->st_uid, old->st_gid);
    }
    if (::fchmod(file.get(), old->st_mode & 0777U) != 0) {
      return lastError();
    }
  }
  if (const auto error = writeAll(file.get(), bytes)) {
    return error;
  }
  if (::fsync(file.get()) != 0) {
    return lastError();
  }
  // Some file systems report a full disk only here.
  return ::close(file.release()) == 0 ? std::error_code() : lastError();
}

}  // namespace

std::optional<FileContents> fileContents(const std::filesystem::path& path, std::size_t limit,
                                         std::error_code& error) {
  error.clear();
  const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  FileContents contents;
  if (!file || ::fstat(file.get(), &contents.status) != 0) {
    error = lastError();
    return std::nullopt;
  }
  if (!S_ISREG(contents.status.st_mode)) {
    error = std::make_error_code(S_ISDIR(contents.status.st_mode) ? std::errc::is_a_directory
                                                                  : std::errc::invalid_argument);
    return std::nullopt;
  }
  const auto tooLarge = [limit](auto size) { return static_cast<std::uintmax_t>(size) > limit; };
  if (tooLarge(contents.status.st_size)) {
    error = std::make_error_code(std::errc::file_too_large);
    return std::nullopt;
  }
  std::array<char, 16384> buffer;
  while (true) {
    const auto count = ::read(file.get(), buffer.data(), buffer.size());
    if (count == 0) {
      return contents;
    }
    if (count < 0 && errno != EINTR) {
      error = lastError();
      return std::nullopt;
    }
    contents.bytes.append(buffer.data(), static_cast<std::size_t>(count < 0 ? 0 : count));
    if (tooLarge(contents.bytes.size())) {
      error = std::make_error_code(std::errc::file_too_large);
      return std::nullopt;
    }
  }
}

std::error_code replaceFile(const std::filesystem::path& path, const std::filesystem::path& temporary,
                            std::string_view bytes) {
  struct stat old {};
  const bool exists = ::stat(path.c_str(), &old) == 0;
  // A file that was made read-only is meant to stay, though its folder would allow to replace it.
  if (exists && ::faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) != 0) {
    return lastError();
  }
  ::unlink(temporary.c_str());
  auto error = writeNewFile(temporary, bytes, exists ? &old : nullptr);
  if (!error && ::rename(temporary.c_str(), path.c_str()) != 0) {
    error = lastError();
  }
  if (error) {
    ::unlink(temporary.c_str());
    return error;
  }
  // The rename itself reaches the disk with the folder. The new file stands either way.
  const auto folder = path.has_parent_path() ? path.parent_path() : std::filesystem::path(".");
  const FileDescriptor directory(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (directory) {
    ::fsync(directory.get());
  }
  return {};
}

std::error_code makeFolder(const std::filesystem::path& folder) {
  if (folder.empty() || ::mkdir(folder.c_str(), 0700) == 0) {
    return {};
  }
  if (errno == ENOENT && folder.has_relative_path() && folder.parent_path() != folder) {
    if (const auto error = makeFolder(folder.parent_path())) {
      return error;
    }
    if (::mkdir(folder.c_str(), 0700) == 0) {
      return {};
    }
  }
  const auto error = lastError();
  std::error_code ignored;
  return std::filesystem::is_directory(folder, ignored) ? std::error_code() : error;
}

}  // namespace platform

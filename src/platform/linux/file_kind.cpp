#include "platform/file_kind.h"

#include <cerrno>
#include <cstddef>
#include <vector>

#include <fcntl.h>
#include <gio/gio.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/file_descriptor.h"
#include "platform/strings.h"

namespace platform {

namespace {

// Enough for every rule of the database that looks into files.
constexpr std::size_t kLookedAt = 4096;

// What is no regular file has a type of its own (shared MIME-info specification, "Non-regular files").
const char* typeOfSpecialFile(mode_t mode) {
  switch (mode & S_IFMT) {
    case S_IFDIR:
      return "inode/directory";
    case S_IFIFO:
      return "inode/fifo";
    case S_IFSOCK:
      return "inode/socket";
    case S_IFCHR:
      return "inode/chardevice";
    default:
      return "inode/blockdevice";
  }
}

std::vector<guchar> beginningOf(const std::string& path) {
  std::vector<guchar> bytes(kLookedAt);
  std::size_t count = 0;
  // It may have been replaced by a pipe meanwhile, which must not block.
  const FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  while (file.get() >= 0 && count < bytes.size()) {
    const ssize_t got = read(file.get(), bytes.data() + count, bytes.size() - count);
    if (got < 0 && errno == EINTR) {
      continue;
    }
    if (got <= 0) {
      break;
    }
    count += static_cast<std::size_t>(got);
  }
  bytes.resize(count);
  return bytes;
}

const char* superType(FileKind kind) {
  switch (kind) {
    case FileKind::Text:
      return "text/plain";
    case FileKind::Image:
      return "image/*";
    case FileKind::PDF:
      return "application/pdf";
    default:
      return "video/*";
  }
}

}  // namespace

std::optional<std::string> typeOfFile(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) {
    return std::nullopt;
  }
  if (!S_ISREG(status.st_mode)) {
    return typeOfSpecialFile(status.st_mode);
  }
  const std::vector<guchar> bytes = beginningOf(path);
  // Without bytes the pointer has to be null: an empty content has a type of its own, whatever the name says.
  char* guessed = g_content_type_guess(validUtf8(path).c_str(), bytes.empty() ? nullptr : bytes.data(),
                                       bytes.size(), nullptr);
  std::string type = guessed;
  g_free(guessed);
  return type;
}

bool typeConformsToKind(const std::string& type, FileKind kind) {
  return g_content_type_is_a(type.c_str(), superType(kind)) != FALSE;
}

std::optional<std::int64_t> sizeOfFile(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) {
    return std::nullopt;
  }
  return status.st_size;
}

}  // namespace platform

#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include <sys/stat.h>

namespace platform {

// Whole files, read and replaced. Blocking; any thread.

struct FileContents {
  std::string bytes;
  // The state of the very file that the bytes are from.
  struct stat status {};
};

// The file at `path`; absent with `error` set when it is missing, cannot be read, is no regular file (a pipe
// never blocks the caller) or has more than `limit` bytes.
std::optional<FileContents> fileContents(const std::filesystem::path& path, std::size_t limit,
                                         std::error_code& error);

// Replaces `path` by a file with `bytes`, so that every reader, also after a power cut, sees the old file or
// the new one. The bytes go through `temporary`, a path in the same folder that nobody else uses meanwhile;
// what a killed writer left there is removed. The new file has the mode and, where the system allows it, the
// owner of the old one, else mode 0600. On an error the old file stands.
std::error_code replaceFile(const std::filesystem::path& path, const std::filesystem::path& temporary,
                            std::string_view bytes);

// Makes the folder and those above it that are missing, for this user alone (mode 0700).
std::error_code makeFolder(const std::filesystem::path& folder);

}  // namespace platform

#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace platform {

// Families of file types. A type belongs to one when it is, or is derived from, a type of the family: a shell
// script is text, a drawing in SVG both text and image.
enum class FileKind { Text, Image, PDF, Movie };

// The type of what lies at `path`, as the shared MIME database tells from name and content ("image/jpeg",
// "inode/directory"); links are followed. An empty or unreadable file is judged by its name alone. Absent
// when there is nothing at `path`. Reads a few KiB of regular files, and opens nothing else. Any thread.
std::optional<std::string> typeOfFile(const std::string& path);

// Whether the type belongs to the kind; one that the database does not know belongs to none. Any thread.
bool typeConformsToKind(const std::string& type, FileKind kind);

// The size in bytes of what lies at `path`, links followed; absent when that cannot be told. Any thread.
std::optional<std::int64_t> sizeOfFile(const std::string& path);

}  // namespace platform

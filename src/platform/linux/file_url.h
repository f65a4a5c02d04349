#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace platform {

// Whether the address has the scheme "file", in any case.
bool isFileUrl(std::string_view url);
// The absolute path of a file of this machine, percent-decoded, without query and fragment: for
// "file:///a%20b", "file:/a%20b" and "file://localhost/a%20b". Absent for the file of another machine, a
// relative path, a '%' that starts no escape and an escaped NUL. The bytes need not be UTF-8.
std::optional<std::string> pathFromFileUrl(std::string_view url);

}  // namespace platform

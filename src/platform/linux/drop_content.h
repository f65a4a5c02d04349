#pragma once

#include <optional>
#include <string>

#include "platform/pasteboard.h"

namespace platform {

// What a drag carries in the system's terms. `uriList` is its content of the type text/uri-list (RFC 2483),
// `text` its plain text in UTF-8; absent where the drag offers none, or none that could be read.
//
// Of the list count the files of this machine. A file manager also offers their names as text; a text that
// consists of nothing else is no string of its own.
Pasteboard contentOfDrag(const std::optional<std::string>& uriList, const std::optional<std::string>& text);

}  // namespace platform

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/file_kind.h"

namespace lumo {

// The kinds of files that a drag shows a frame for, and those that a drop passes on. A movie is passed on
// without having been shown a frame.
inline constexpr platform::FileKind kHighlightedKinds[] = {
    platform::FileKind::Text, platform::FileKind::Image, platform::FileKind::PDF};
inline constexpr platform::FileKind kAcceptedKinds[] = {platform::FileKind::Text, platform::FileKind::Image,
                                                        platform::FileKind::PDF, platform::FileKind::Movie};

// From this size on a dropped file gets a warning in the log. It is taken all the same.
inline constexpr std::int64_t kLargeFileSize = 5000;

// Whether a dropped file of that type (absent: unknown) is passed on.
bool isAccepted(const std::optional<std::string>& type);

// What a dropped text is passed on as, without blanks and line breaks at its ends; absent where there is no
// text, or an empty one. Blanks alone become the empty text.
std::optional<std::string> droppedText(const std::optional<std::string>& text);

// "file://" and the path, byte for byte.
std::string fileItem(const std::string& path);

// The address, of the application's own scheme, that shows the item. Escapes that the path itself holds are
// undone before everything is escaped, so a file whose name holds a percent sign and two hexadecimal digits
// may not be found. Absent when that leaves no UTF-8.
std::optional<std::string> ownAddressOfItem(const std::string& item);

}  // namespace lumo

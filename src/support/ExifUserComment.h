#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace lumo {

// The user comment of EXIF: eight bytes that name the character code, then the text without a zero at its
// end. Any thread.

// `text`, valid UTF-8, as such a field: "ASCII" where that will do, else "UNICODE", which is UTF-16 in the
// byte order of the EXIF data around it.
std::string userCommentField(std::string_view text, bool isBigEndian);

// The text of a field, as UTF-8. Programs differ in what they write, so this takes more than the standard: a
// code in small letters, blank or missing; UTF-8 or Latin 1 where ASCII is promised; UTF-16 with a byte-order
// mark or in the other order; zeros or blanks at the end. Absent when the bytes belong to no text.
std::optional<std::string> textOfUserComment(std::string_view field, bool isBigEndian);

}  // namespace lumo

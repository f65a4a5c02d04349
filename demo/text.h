// Text from outside, made safe for the place where it is put.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace juniva {

// The number of bytes of the well-formed UTF-8 character that begins at `at`, or 0 when none does.
std::size_t utf8CharacterLength(std::string_view text, std::size_t at);

bool isValidUtf8(std::string_view text);

// The number of characters of a valid UTF-8 text.
std::size_t utf8Length(std::string_view text);

// True when the text holds a control character (C0, DEL or C1).
bool hasControlCharacter(std::string_view text);

// Text for an element's content or a quoted attribute. Control characters except tab and newline, and bytes
// that are not UTF-8, become U+FFFD.
std::string htmlEscape(std::string_view text);

// Text for one field of a log line: never empty ("-"), no blank, no control character, no line separator,
// valid UTF-8. What is taken out shows as \xNN. A field longer than `limit` bytes ends in "...".
std::string logField(std::string_view text, std::size_t limit = 4096);

// The same for a field between double quotes: blanks stay, quotes show as \".
std::string quotedLogField(std::string_view text, std::size_t limit = 4096);

// Text for a response header's value: control characters become blanks, blanks around it are removed.
std::string headerText(std::string_view text);

// The header form of a free text: as headerText, with '+' for every blank.
std::string plusForBlanks(std::string_view text);

// Removes percent escapes. Nothing for an incomplete escape, an escaped NUL, or a result that is not UTF-8.
std::optional<std::string> percentDecode(std::string_view text, bool plusIsBlank);

// Adds percent escapes to every byte that is not unreserved in a URL.
std::string percentEncode(std::string_view text);

// The text without the white space around it.
std::string_view trimmed(std::string_view text);

// A whole number written in decimal digits only, within the bounds. Anything else gives nothing.
std::optional<int> parseWholeNumber(std::string_view text, int lowest, int highest);

}  // namespace juniva

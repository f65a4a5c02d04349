#pragma once

#include <string>
#include <string_view>
#include <vector>

// The few text operations that every part of the system needs. ASCII case rules unless stated; all take and
// return UTF-8.
namespace platform {

// Without the blanks, tabs, line breaks and Unicode spaces (category Zs, U+0085, U+2028, U+2029) at both
// ends.
std::string trimmed(std::string_view text);
std::string lowercase(std::string_view text);
std::string uppercase(std::string_view text);
bool equalIgnoringCase(std::string_view a, std::string_view b);
// The empty text is a prefix and a part of every text.
bool hasPrefixIgnoringCase(std::string_view text, std::string_view prefix);
bool containsIgnoringCase(std::string_view text, std::string_view part);
// Splits at every occurrence of `separator`; empty pieces are kept, so the empty text gives one empty piece.
// An empty separator splits nothing.
std::vector<std::string> componentsSeparatedBy(std::string_view text, std::string_view separator);
// Every occurrence from the left, without looking at the replacements again; an empty target replaces
// nothing.
std::string replacingOccurrences(std::string_view text, std::string_view target,
                                 std::string_view replacement);
std::string replacingOccurrencesIgnoringCase(std::string_view text, std::string_view target,
                                             std::string_view replacement);
bool isValidUtf8(std::string_view text);
// The text with U+FFFD for every maximal part of it that is not valid UTF-8, as the Unicode standard
// recommends.
std::string validUtf8(std::string_view text);

}  // namespace platform

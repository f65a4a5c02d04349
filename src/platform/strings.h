#pragma once

#include <string>
#include <string_view>
#include <vector>

// The few text operations that every part of the system needs. ASCII case rules unless stated; all take and
// return UTF-8.
namespace platform {

// Without the blanks, tabs, line breaks and Unicode spaces (U+0085, U+00A0, U+2028, U+2029, U+3000) at both
// ends.
std::string trimmed(std::string_view text);
std::string lowercase(std::string_view text);
std::string uppercase(std::string_view text);
bool equalIgnoringCase(std::string_view a, std::string_view b);
bool hasPrefixIgnoringCase(std::string_view text, std::string_view prefix);
bool containsIgnoringCase(std::string_view text, std::string_view part);
// Splits at every occurrence of `separator` (not empty); empty pieces are kept, so the empty text gives one
// empty piece.
std::vector<std::string> componentsSeparatedBy(std::string_view text, std::string_view separator);
std::string replacingOccurrences(std::string_view text, std::string_view target,
                                 std::string_view replacement);
std::string replacingOccurrencesIgnoringCase(std::string_view text, std::string_view target,
                                             std::string_view replacement);
bool isValidUtf8(std::string_view text);
// The text with every byte that is not part of valid UTF-8 replaced by U+FFFD.
std::string validUtf8(std::string_view text);

}  // namespace platform

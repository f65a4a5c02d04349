#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/property_list.h"

// The texts of single values in the XML form of property lists; independent of the locale. Any thread. Each
// reader ignores blanks at both ends and is absent when the rest is no such value.
namespace platform::property_list_text {

// The characters that count as blanks between and inside elements.
inline constexpr std::string_view blanks = " \t\r\n";

std::string_view withoutBlanks(std::string_view text);

// Decimal, or hexadecimal after "0x"; beyond 64 bits with sign the nearest real.
std::optional<PropertyList> readInteger(std::string_view text);
// Also "nan", "inf" and "infinity", with sign.
std::optional<PropertyList> readReal(std::string_view text);
// The shortest digits that read back as the same number.
std::string writeReal(double value);
// "YYYY-MM-DDTHH:MM:SSZ"; outside the range of Date its nearest end.
std::optional<PropertyList> readDate(std::string_view text);
std::string writeDate(Date value);
// Base64 with blanks anywhere.
std::optional<PropertyList> readData(std::string_view text);
// One line of Base64 for the bytes from `start` to before `end`.
std::string writeData(const Data& value, std::size_t start, std::size_t end);
// What stands between "&#" and ";": the character as UTF-8.
std::optional<std::string> readCharacterReference(std::string_view digits);

}  // namespace platform::property_list_text

#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "platform/property_list.h"

namespace platform {

// Property lists as bytes, XML version 1.0 and binary. Any thread.

// Deeper nesting and more bytes than these are refused; nothing that the kiosk keeps comes near them.
inline constexpr std::size_t propertyListDepthLimit = 512;
inline constexpr std::size_t propertyListSizeLimit = std::size_t{16} << 20;

// Reads either form; absent when the bytes are no property list, also when they are cut off or beyond the
// limits. Integers of more than 64 bits with sign become reals, a date outside the range of `Date` its
// nearest end, a text that is not UTF-8 is repaired, a UID is the dictionary {CF$UID = number}. Of keys that
// are given twice the last one counts. Fractions of seconds in binary dates are dropped.
std::optional<PropertyList> propertyListFromData(std::string_view bytes);
// The XML form; a text that is not valid UTF-8 is repaired first, and characters that XML cannot carry (such
// as U+0001) are left out, with a line in the log. Every value within the limits reads back equal.
std::string xmlDataFromPropertyList(const PropertyList& value);
// The whole file; absent when it is missing, unreadable, no regular file or no property list.
std::optional<PropertyList> propertyListFromFile(const std::filesystem::path& path);

}  // namespace platform

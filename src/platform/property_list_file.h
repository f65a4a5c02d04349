#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "platform/property_list.h"

namespace platform {

// Property lists as bytes, XML version 1.0 and binary. Any thread.

// Reads either form; absent when the bytes are no property list (also when they are cut off or nested beyond
// 512 levels).
std::optional<PropertyList> propertyListFromData(std::string_view bytes);
// The XML form; a text that is not valid UTF-8 is repaired first.
std::string xmlDataFromPropertyList(const PropertyList& value);
// The whole file; absent when it is missing, unreadable or no property list.
std::optional<PropertyList> propertyListFromFile(const std::filesystem::path& path);

}  // namespace platform

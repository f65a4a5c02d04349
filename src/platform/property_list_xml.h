#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/property_list.h"

namespace platform {

// The XML form of property lists, the part of property_list_file.h that needs no library: strict about
// structure (every element closed, nothing after the end), independent of the locale, linear in time. Any
// thread.

// Absent when `text` is no whole property list within the limits of property_list_file.h.
std::optional<PropertyList> propertyListFromXml(std::string_view text);
// `value` as XML; `droppedCharacters` is set when a text held characters that XML 1.0 forbids. Of
// keys that are the same without them one is written: that which held none, otherwise the first.
std::string xmlFromPropertyList(const PropertyList& value, bool& droppedCharacters);

}  // namespace platform

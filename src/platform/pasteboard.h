#pragma once

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

inline constexpr const char* kFilenamesPboardType = "NSFilenamesPboardType";
inline constexpr const char* kStringPboardType = "NSStringPboardType";

// What another program hands over. Content whose type is not among the types is absent.
struct Pasteboard {
  std::vector<std::string> types;
  std::optional<std::vector<std::string>> filenames;
  std::optional<std::string> string;

  bool hasType(std::string_view type) const {
    return std::find(types.begin(), types.end(), type) != types.end();
  }
};

}  // namespace platform

#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "platform/property_list.h"

namespace platform {

// The application's bundle: a folder NAME.app with the executable, Info.plist and Resources/. Values are read
// once; afterwards any thread may read.
class Bundle {
 public:
  Bundle() = default;
  // The bundle at `folder`. A missing or damaged Info.plist gives an empty dictionary and a line in the log.
  explicit Bundle(std::filesystem::path folder);
  // The bundle of the running executable (the folder in which it lies, links resolved).
  static Bundle main();

  const std::filesystem::path& path() const { return path_; }
  const Dictionary& infoDictionary() const { return info_; }
  // A string or number of Info.plist as text; absent when there is none of that name.
  std::optional<std::string> infoString(std::string_view key) const;
  std::optional<std::string> bundleIdentifier() const { return infoString("CFBundleIdentifier"); }
  std::optional<std::string> bundleName() const { return infoString("CFBundleName"); }
  // Resources/NAME.TYPE (Resources/NAME for an empty type), absent when there is no such file. A name or type
  // with a slash, and the names "." and "..", are refused.
  std::optional<std::filesystem::path> pathForResource(std::string_view name, std::string_view type) const;
  // The file NAME beside the executable, under the same rules.
  std::optional<std::filesystem::path> pathForAuxiliaryExecutable(std::string_view name) const;

 private:
  std::filesystem::path path_;
  Dictionary info_;
};

}  // namespace platform

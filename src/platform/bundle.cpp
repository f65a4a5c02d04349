#include "platform/bundle.h"

#include <system_error>
#include <utility>

#include "platform/log.h"
#include "platform/property_list_file.h"

namespace platform {
namespace {

// The regular file of that name in `folder`.
std::optional<std::filesystem::path> fileInFolder(const std::filesystem::path& folder,
                                                  const std::string& name) {
  const bool plain = name.find('/') == std::string::npos && name.find('\0') == std::string::npos;
  if (folder.empty() || !plain || name.empty() || name == "." || name == "..") {
    return std::nullopt;
  }
  auto path = folder / name;
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) {
    return std::nullopt;
  }
  return path;
}

}  // namespace

Bundle::Bundle(std::filesystem::path folder) : path_(std::move(folder)) {
  const auto file = path_ / "Info.plist";
  const auto list = propertyListFromFile(file);
  if (const auto* dictionary = list ? list->as<Dictionary>() : nullptr) {
    info_ = *dictionary;
  } else {
    NSLog("Bundle: %@ is missing or damaged", file.string());
  }
}

Bundle Bundle::main() {
  std::error_code error;
  // The link names the folder also when the executable was replaced while it runs (" (deleted)" follows its
  // name).
  const auto executable = std::filesystem::read_symlink("/proc/self/exe", error);
  return Bundle(executable.parent_path());
}

std::optional<std::string> Bundle::infoString(std::string_view key) const {
  const auto* value = info_.find(key);
  return value != nullptr ? stringValue(*value) : std::nullopt;
}

std::optional<std::filesystem::path> Bundle::pathForResource(std::string_view name,
                                                             std::string_view type) const {
  if (path_.empty()) {
    return std::nullopt;
  }
  std::string file(name);
  if (!type.empty()) {
    file.append(".").append(type);
  }
  return fileInFolder(path_ / "Resources", file);
}

std::optional<std::filesystem::path> Bundle::pathForAuxiliaryExecutable(std::string_view name) const {
  return fileInFolder(path_, std::string(name));
}

}  // namespace platform

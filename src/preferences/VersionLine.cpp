#include "preferences/VersionLine.h"

#include <optional>

#include "platform/format.h"

namespace lumo {

std::string versionLine(const platform::Dictionary& info, const std::string& architecture,
                        const std::string& revision) {
  const auto text = [&info](const char* key) {
    const platform::PropertyList* value = info.find(key);
    return value == nullptr ? std::nullopt : platform::stringValue(*value);
  };
  return platform::stringWithFormat("%@ (%@) - v%@ (%@) [%@] [XC-%@ sdk-%@]", text("CFBundleDisplayName"),
                                    architecture, text("CFBundleShortVersionString"),
                                    text("CFBundleVersion").value_or("??"), revision,
                                    text("DTXcode").value_or("??"), text("DTSDKName").value_or("??"));
}

}  // namespace lumo

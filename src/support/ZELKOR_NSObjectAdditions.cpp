#include "support/ZELKOR_NSObjectAdditions.h"

#include <filesystem>
#include <string_view>
#include <system_error>

#include "platform/log.h"
#include "platform/strings.h"

namespace lumo::ZELKOR_NSObjectAdditions {

platform::SerialQueue dispatchQueueSerialWithDebugLabel(platform::Dispatch& dispatch,
                                                        const std::optional<std::string>& label) {
  return platform::SerialQueue(dispatch, label.value_or(std::string()));
}

platform::SerialQueue dispatchQueueSerial(platform::Dispatch& dispatch) {
  return dispatchQueueSerialWithDebugLabel(dispatch, std::nullopt);
}

std::optional<std::string> pathToSelf() {
  std::error_code error;
  const auto link = std::filesystem::read_symlink("/proc/self/exe", error);
  const auto path = pathOfExecutable(link.string(), std::filesystem::exists(link, error));
  // Three times, so that it is found in a long log.
  for (int line = 0; line < 3; ++line) {
    platform::NSLog("pathToSelf = %@", path);
  }
  return path;
}

std::optional<std::string> pathOfExecutable(std::string link, bool exists) {
  constexpr std::string_view kDeleted = " (deleted)";
  if (link.empty()) {
    return std::nullopt;
  }
  if (!exists && link.ends_with(kDeleted)) {
    link.resize(link.size() - kDeleted.size());
  }
  return platform::validUtf8(link);
}

}  // namespace lumo::ZELKOR_NSObjectAdditions

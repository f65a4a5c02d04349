#include "support/ZELKOR_NSObjectAdditions.h"

#include <filesystem>

#include "platform/log.h"

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
  const std::filesystem::path link = std::filesystem::read_symlink("/proc/self/exe", error);
  const auto path = error ? std::nullopt : std::optional(link.string());
  // Three times, so that it is found in a long log.
  for (int line = 0; line < 3; ++line) {
    platform::NSLog("pathToSelf = %@", path);
  }
  return path;
}

}  // namespace lumo::ZELKOR_NSObjectAdditions

#include "support/ZELKOR_NSObjectAdditions.h"

namespace lumo::ZELKOR_NSObjectAdditions {

platform::SerialQueue dispatchQueueSerialWithDebugLabel(platform::Dispatch& dispatch,
                                                        const std::optional<std::string>& label) {
  return platform::SerialQueue(dispatch, label.value_or(std::string()));
}

platform::SerialQueue dispatchQueueSerial(platform::Dispatch& dispatch) {
  return dispatchQueueSerialWithDebugLabel(dispatch, std::nullopt);
}

}  // namespace lumo::ZELKOR_NSObjectAdditions

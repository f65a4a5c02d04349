#pragma once

#include <optional>
#include <string>

#include "platform/queue.h"

// Queue helpers, and where the program is. Each may be called from any thread.
namespace lumo::ZELKOR_NSObjectAdditions {

// A new serial queue of `dispatch` that recognises itself. Without a label it has the empty one.
platform::SerialQueue dispatchQueueSerialWithDebugLabel(platform::Dispatch& dispatch,
                                                        const std::optional<std::string>& label);
// The same without a label.
platform::SerialQueue dispatchQueueSerial(platform::Dispatch& dispatch);

// The full path of the running executable, links resolved; absent when the system does not tell.
std::optional<std::string> pathToSelf();

}  // namespace lumo::ZELKOR_NSObjectAdditions

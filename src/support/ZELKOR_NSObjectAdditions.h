#pragma once

#include <optional>
#include <string>

#include "platform/queue.h"

// Queue helpers. Each may be called from any thread.
namespace lumo::ZELKOR_NSObjectAdditions {

// A new serial queue of `dispatch` that recognises itself. Without a label it has the empty one.
platform::SerialQueue dispatchQueueSerialWithDebugLabel(platform::Dispatch& dispatch,
                                                        const std::optional<std::string>& label);
// The same without a label.
platform::SerialQueue dispatchQueueSerial(platform::Dispatch& dispatch);

}  // namespace lumo::ZELKOR_NSObjectAdditions

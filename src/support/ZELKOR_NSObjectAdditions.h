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

// The full path of the running executable, links resolved, as it was when the program was started; the log
// says it three times. Absent when the system does not tell.
std::optional<std::string> pathToSelf();
// That path from what Linux's link to the executable says, and whether a file is there: without the mark of
// one that was removed or replaced since the start, and with U+FFFD for bytes that are not UTF-8.
std::optional<std::string> pathOfExecutable(std::string link, bool exists);

}  // namespace lumo::ZELKOR_NSObjectAdditions

#pragma once

#include <cstdint>
#include <optional>

#include "platform/property_list.h"
#include "support/MachineFacts.h"

namespace lumo {

// What this machine says, for ZELKOR_Base and ZELKOR_Log.

// Absent when it does not tell.
std::optional<platform::Dictionary> currentMemory(bool withWired);
// With `memory` as it stands.
SystemFacts currentFacts(std::optional<platform::Dictionary> memory);

}  // namespace lumo

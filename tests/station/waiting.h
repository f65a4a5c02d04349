#pragma once

#include <chrono>
#include <functional>

namespace station {

// Far beyond what a busy machine needs. Only a test that fails waits so long.
inline constexpr std::chrono::seconds kPatience{30};

// Asks every few milliseconds until the condition holds. False when it does not within the bound.
bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds bound = kPatience);

}  // namespace station

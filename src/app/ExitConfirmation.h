#pragma once

#include <optional>
#include <string>

#include "platform/alert.h"

namespace lumo {

// Whether the running address is that of an order: it contains "registrationorders" somewhere, in any case.
bool isOrderPage(const std::optional<std::string>& running);

// The question before the kiosk is closed. Off an order page it also offers to release the order.
platform::Alert exitConfirmation(const std::optional<std::string>& running);

}  // namespace lumo

#pragma once

#include <optional>
#include <string>

namespace platform {

// The name (SSID) of the Wi-Fi network that this computer is on, as NetworkManager tells on the system bus,
// else as the first wireless interface tells. Absent where there is none, which is usual at a counter. Bytes
// that are no UTF-8 are replaced. Blocks, two seconds at most where the bus is silent: not on the main queue.
std::optional<std::string> wifiName();

}  // namespace platform

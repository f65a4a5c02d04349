#pragma once

#include <string>

namespace platform {

// The address of the session bus: DBUS_SESSION_BUS_ADDRESS, else the socket "bus" in XDG_RUNTIME_DIR, else
// empty. A bus is never started from here.
std::string sessionBusAddress();

}  // namespace platform

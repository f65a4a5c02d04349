#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace platform {

// The bus address without those of its parts that name a socket in a folder that does not exist. Empty when
// none is left. What is no address at all stays as it is: whoever connects says what is wrong with it.
std::string withoutMissingFolders(std::string_view address);

// Takes such parts out of DBUS_SESSION_BUS_ADDRESS, because the web engine ends the program when it cannot
// put the socket's folder into its sandbox. When none is left, the usual socket in the runtime folder stands
// there: without an address GLib would look for a bus elsewhere and start one. Before any thread is started.
// What to say about it in the log; absent when nothing was taken out.
std::optional<std::string> leaveOutUnreachableBuses();

}  // namespace platform

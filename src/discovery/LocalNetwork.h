#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace lumo {

// What this computer tells of its network. Both operations block; any thread but the main one.
struct LocalNetwork {
  // The standard output of a command of the shell's, absent when it is empty or no UTF-8. It waits until the
  // command has closed its output, without a limit.
  std::function<std::optional<std::string>(const std::string& command)> outputOfShellCommand;
  // The name of the Wi-Fi network as the machine tells it, absent for none.
  std::function<std::optional<std::string>()> ssid;
};

// The computer that this program runs on.
LocalNetwork networkOfThisComputer();

// Prints the names of the interfaces on one line.
extern const char* const kListInterfacesCommand;
// Prints the IPv4 address of the interface whose name takes the place of "[interfacename]", or nothing.
extern const char* const kInterfaceAddressTemplate;
// That template filled with a name, which the shell will not read as anything else.
std::string interfaceAddressCommand(const std::string& interfaceName);

// This computer's IPv4 address: what the first interface prints that prints anything, as it is when it has
// four parts between dots. "localhost" when it has not, and when there is none.
std::string localIPAddress(const LocalNetwork& network);
// The name of the Wi-Fi network without blanks at its ends; absent for none.
std::optional<std::string> wifiName(const LocalNetwork& network);
// The line about this computer's network for people. Without a Wi-Fi network it says that there is none, also
// where there is a cable.
std::string networkSummary(const std::optional<std::string>& address,
                           const std::optional<std::string>& wifiName);

// The interface whose address the settings show: "en0", and on a machine that has no interface of this name
// the one of the default route. "en0" where that is missing too.
std::string mainInterface(const std::vector<std::string>& interfaces, const std::string& routes);
// The same for this computer. Any thread.
std::string mainInterface();
// The interface of the default route with the lowest metric in a table such as /proc/net/route; absent when
// there is none.
std::optional<std::string> defaultRouteInterface(const std::string& routes);

}  // namespace lumo

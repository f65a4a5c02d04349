#include "discovery/LocalNetwork.h"

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>

#include <net/if.h>

#include "platform/log.h"
#include "platform/strings.h"
#include "platform/task.h"
#include "platform/wifi_name.h"

namespace lumo {

using platform::NSLog;

// "veth0@if4" is how the tool writes a virtual interface whose other end is elsewhere; the name is "veth0".
const char* const kListInterfacesCommand =
    "/sbin/ip -o link show | /bin/sed 's/^[0-9]*: *//; s/[:@].*//' | /usr/bin/tr '\\n' ' '";

// Nothing for the loopback interface, for one that is down, and for one whose cable is out: it may keep an
// address of its own, but no server can be reached through it.
const char* const kInterfaceAddressTemplate =
    "/sbin/ip -4 address show dev '[interfacename]' up | /bin/sed -n "
    "-e '/^[0-9].*<[^>]*LOOPBACK/q' -e '/^[0-9].*<[^>]*NO-CARRIER/q' "
    "-e '/^ *inet /{s/^ *inet \\([0-9.]*\\).*/\\1/p;q;}'";

namespace {

constexpr const char* kClass = "FindLumoJunivaServerWindowController";
constexpr const char* kOperation = "getLocalIPAddress";
constexpr const char* kLocalhost = "localhost";
constexpr std::size_t kPartsOfAnAddress = 4;

std::optional<std::string> outputOfShellCommand(const std::string& command) {
  const auto result = platform::Task::run("/bin/sh", {"-c", command});
  if (!result || result->standardOutput.empty() || !platform::isValidUtf8(result->standardOutput)) {
    return std::nullopt;
  }
  NSLog("returning output = %@", result->standardOutput);
  return result->standardOutput;
}

std::vector<std::string> interfaceNames(const LocalNetwork& network) {
  const auto output = network.outputOfShellCommand(kListInterfacesCommand);
  if (!output) {
    return {"en2", "en0", "en1", "en2"};
  }
  auto names = platform::componentsSeparatedBy(platform::trimmed(*output), " ");
  NSLog("ifsArray = %@", names);
  return names;
}

}  // namespace

LocalNetwork networkOfThisComputer() {
  return {outputOfShellCommand, platform::wifiName};
}

std::string interfaceAddressCommand(const std::string& interfaceName) {
  return platform::replacingOccurrences(kInterfaceAddressTemplate, "[interfacename]",
                                        platform::replacingOccurrences(interfaceName, "'", "'\\''"));
}

std::string localIPAddress(const LocalNetwork& network) {
  for (const std::string& name : interfaceNames(network)) {
    const std::string command = interfaceAddressCommand(name);
    NSLog("running command [%@]", command);
    std::string output = platform::trimmed(network.outputOfShellCommand(command).value_or(""));
    if (output.empty()) {
      continue;
    }
    if (platform::componentsSeparatedBy(output, ".").size() == kPartsOfAnAddress) {
      NSLog("%@ => interface[%@] =>[%@]", kOperation, name, output);
      return output;
    }
    NSLog("%@-%@ => got back odd info: [%@]", kClass, kOperation, output);
    break;
  }
  NSLog("%@-%@ => Unable to find valid ipaddress???", kClass, kOperation);
  return kLocalhost;
}

std::optional<std::string> wifiName(const LocalNetwork& network) {
  std::string name = platform::trimmed(network.ssid().value_or(""));
  return name.empty() ? std::nullopt : std::optional(std::move(name));
}

std::string networkSummary(const std::optional<std::string>& address,
                           const std::optional<std::string>& wifiName) {
  const bool hasAddress = address && !platform::equalIgnoringCase(*address, "unknown");
  if (!hasAddress || !wifiName || wifiName->empty()) {
    return "NOT connected to any network - will use localhost";
  }
  return platform::stringWithFormat("This Computer Network Info: %@%@", *address,
                                    platform::stringWithFormat(" at SSID %@", *wifiName));
}

std::optional<std::string> defaultRouteInterface(const std::string& routes) {
  constexpr unsigned kUp = 0x1;
  constexpr unsigned kReject = 0x200;
  std::istringstream lines(routes);
  std::string line;
  std::optional<std::string> best;
  std::int64_t bestMetric = 0;
  while (std::getline(lines, line)) {
    std::istringstream fields(line);
    std::string interface;
    std::string destination;
    std::string gateway;
    std::string mask;
    unsigned flags = 0;
    std::int64_t references = 0;
    std::int64_t use = 0;
    std::int64_t metric = 0;
    fields >> interface >> destination >> gateway >> std::hex >> flags >> std::dec >> references >> use >>
        metric >> mask;
    // The line with the titles fails here, and whatever else is no route.
    const bool usable = !fields.fail() && (flags & kUp) != 0 && (flags & kReject) == 0;
    if (usable && destination == "00000000" && mask == "00000000" && (!best || metric < bestMetric)) {
      best = interface;
      bestMetric = metric;
    }
  }
  return best;
}

std::string mainInterface(const std::vector<std::string>& interfaces, const std::string& routes) {
  constexpr const char* kUsual = "en0";
  if (std::find(interfaces.begin(), interfaces.end(), kUsual) != interfaces.end()) {
    return kUsual;
  }
  return defaultRouteInterface(routes).value_or(kUsual);
}

std::string mainInterface() {
  std::vector<std::string> names;
  const std::unique_ptr<struct if_nameindex, decltype(&if_freenameindex)> list(if_nameindex(),
                                                                               if_freenameindex);
  for (const struct if_nameindex* entry = list.get(); entry != nullptr && entry->if_name != nullptr;
       ++entry) {
    names.emplace_back(entry->if_name);
  }
  // Of this thread's own network: "net" itself is that of the process's first thread.
  std::ifstream file("/proc/thread-self/net/route");
  return mainInterface(names,
                       std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()));
}

}  // namespace lumo

#include "preferences/ThisComputer.h"

#include <array>
#include <memory>

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <netinet/in.h>

namespace lumo {

namespace {

std::optional<std::string> dottedAddress(const sockaddr* address) {
  if (address == nullptr || address->sa_family != AF_INET) {
    return std::nullopt;
  }
  std::array<char, INET_ADDRSTRLEN> text{};
  const auto* ipv4 = reinterpret_cast<const sockaddr_in*>(address);
  const char* dotted = inet_ntop(AF_INET, &ipv4->sin_addr, text.data(), text.size());
  return dotted == nullptr ? std::nullopt : std::optional<std::string>(dotted);
}

std::optional<std::vector<InterfaceEntry>> interfaceEntries() {
  ifaddrs* first = nullptr;
  if (getifaddrs(&first) != 0) {
    return std::nullopt;
  }
  const std::unique_ptr<ifaddrs, decltype(&freeifaddrs)> list(first, freeifaddrs);
  std::vector<InterfaceEntry> entries;
  for (const ifaddrs* entry = first; entry != nullptr; entry = entry->ifa_next) {
    entries.push_back({entry->ifa_name, dottedAddress(entry->ifa_addr)});
  }
  return entries;
}

}  // namespace

ThisComputer thisComputer() {
  return {networkOfThisComputer(), [] { return mainInterface(); }, interfaceEntries};
}

std::string addressOfInterface(const std::string& name,
                               const std::optional<std::vector<InterfaceEntry>>& entries) {
  std::string address = "unknown";
  if (entries) {
    for (const InterfaceEntry& entry : *entries) {
      if (entry.name == name && entry.ipv4) {
        address = *entry.ipv4;
      }
    }
  }
  return address;
}

}  // namespace lumo

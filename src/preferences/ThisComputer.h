#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "discovery/LocalNetwork.h"

namespace lumo {

// One entry of the system's list of interface addresses.
struct InterfaceEntry {
  std::string name;
  // The dotted IPv4 address; absent for an entry of another kind.
  std::optional<std::string> ipv4;
};

// What the settings ask of this computer. Its operations block for a moment; any thread but the main one.
struct ThisComputer {
  // As the search for servers sees it.
  LocalNetwork network;
  // The name of the interface whose address counts.
  std::function<std::string()> mainInterface;
  // The interface addresses in the system's order; absent when they cannot be read.
  std::function<std::optional<std::vector<InterfaceEntry>>()> interfaces;
};

// The computer that this program runs on.
ThisComputer thisComputer();

// The last IPv4 address of that interface in the list; "unknown" when there is none, or no list.
std::string addressOfInterface(const std::string& name,
                               const std::optional<std::vector<InterfaceEntry>>& entries);

}  // namespace lumo

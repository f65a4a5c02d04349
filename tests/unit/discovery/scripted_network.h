#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "discovery/LocalNetwork.h"

namespace discoverytest {

// A computer's network as the test says. Must outlive what was made from it.
class ScriptedNetwork {
 public:
  // What the list of interfaces prints; nothing at first.
  void setInterfaces(const std::string& output) { interfaces_ = output; }
  // What the command for that interface prints; nothing at first.
  void setAddress(const std::string& interface, const std::string& output) { addresses_[interface] = output; }
  // One interface with that address.
  void setLocalAddress(const std::string& address) {
    setInterfaces("eth0");
    setAddress("eth0", address);
  }
  std::optional<std::string> ssid;

  // The interfaces that were asked for their address so far, in order.
  const std::vector<std::string>& asked() const { return asked_; }

  lumo::LocalNetwork get() {
    return {[this](const std::string& command) { return outputOf(command); }, [this] { return ssid; }};
  }

 private:
  std::optional<std::string> outputOf(const std::string& command) {
    if (command == lumo::kListInterfacesCommand) {
      return interfaces_;
    }
    // The name stands between the first two quotes.
    const auto begin = command.find('\'') + 1;
    const std::string name = command.substr(begin, command.find('\'', begin) - begin);
    asked_.push_back(name);
    const auto found = addresses_.find(name);
    return found == addresses_.end() ? std::nullopt : std::optional(found->second);
  }

  std::optional<std::string> interfaces_;
  std::map<std::string, std::string> addresses_;
  std::vector<std::string> asked_;
};

}  // namespace discoverytest

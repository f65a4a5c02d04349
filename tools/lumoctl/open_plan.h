#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lumoctl {

// The photo server's addresses among the preferences in force; each may be absent.
struct ServerAddresses {
  std::optional<std::string> server;
  std::optional<std::string> defaultServer;
};

// What is sent to the kiosk, or why nothing is.
struct OpenPlan {
  std::vector<std::string> addresses;
  // One line without a full stop; then there are no addresses.
  std::optional<std::string> refusal;
};

// The "file:" address of an absolute path; every byte but letters, digits, "-._~" and "/" is escaped.
std::string fileAddress(std::string_view path);

// Why the kiosk would refuse `address`, judged by its own rules; absent when it would take it.
std::optional<std::string> refusalOf(const std::string& address, const ServerAddresses& servers);

// Turns what a person or a launcher named into addresses, in order. A file is what begins with "/", "./" or
// "../" (then it has to exist), or whatever else `exists` knows as a path; relative ones count from `folder`.
// All else is an address. One that is refused refuses the whole.
OpenPlan planOpen(const std::vector<std::string>& items, const std::string& folder,
                  const ServerAddresses& servers, const std::function<bool(const std::string&)>& exists);

}  // namespace lumoctl

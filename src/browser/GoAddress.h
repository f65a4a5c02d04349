#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/url.h"

namespace lumo {

// What the go command does with the stored addresses.
struct GoPlan {
  enum class Kind { Nothing, Load, InvalidAddress };

  Kind kind = Kind::Nothing;
  // The address to load; present for Load alone.
  std::optional<platform::Url> url;
  // The text that could not be made an address, for the page that says so.
  std::string invalidAddress;
  // To be stored as the running address, when it was completed.
  std::optional<std::string> store;
  // Diagnostic lines in their order.
  std::vector<std::string> log;
};

// Decides from the running address, the address that the sender gave (absent when it was no text) and the
// server's address. The running address is normalised (escapes removed, then added once) and completed with
// "http://" where it has no scheme or only a host and port; an empty one stands for the server's.
GoPlan planGo(const std::optional<std::string>& running, const std::optional<std::string>& senderAddress,
              const std::optional<std::string>& server);

// The page that takes the site's place when an address is none.
std::string invalidAddressPage(const std::string& address);

}  // namespace lumo

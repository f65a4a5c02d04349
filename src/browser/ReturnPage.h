#pragma once

#include <optional>
#include <string>
#include <variant>

#include "platform/url.h"

namespace lumo {

// The page to go back to when a receipt has been pictured: an address as text, a parsed one, or none.
using ReturnPage = std::variant<std::monostate, std::string, platform::Url>;

// Absent for none and for a text that is no address.
std::optional<platform::Url> returnUrl(const ReturnPage& page);

}  // namespace lumo

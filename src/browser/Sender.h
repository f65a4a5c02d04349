#pragma once

#include <string>
#include <variant>

namespace platform {
class View;
}

namespace lumo {

// Who sends a command: nobody, a control (not owned, good for the call) or, for the go command, an address.
using Sender = std::variant<std::monostate, platform::View*, std::string>;

// What "%@" prints for it.
std::string description(const Sender& sender);

}  // namespace lumo

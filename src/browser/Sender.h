#pragma once

#include <string>
#include <utility>
#include <variant>

namespace platform {
class View;
}

namespace lumo {

// Who sends a command: nobody, a control (not owned, good for the call) or, for the go command, an address.
class Sender {
 public:
  Sender() = default;
  Sender(platform::View* control) : value_(control) {}
  explicit Sender(std::string address) : value_(std::move(address)) {}

  // The control, or null when nobody or an address sends it.
  platform::View* control() const {
    const auto* view = std::get_if<platform::View*>(&value_);
    return view == nullptr ? nullptr : *view;
  }
  // The address, or null.
  const std::string* address() const { return std::get_if<std::string>(&value_); }

 private:
  std::variant<std::monostate, platform::View*, std::string> value_;
};

// What "%@" prints for it.
std::string description(const Sender& sender);

}  // namespace lumo

#pragma once

#include <concepts>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "platform/geometry.h"
#include "platform/property_list.h"

namespace platform {

// One argument of a format, type-erased. An absent object (std::nullopt, a null pointer) prints as "(null)".
class FormatArgument {
 public:
  using Value = std::variant<std::int64_t, std::uint64_t, double, const void*, std::string, std::nullptr_t>;

  FormatArgument(std::nullptr_t) : value_(nullptr) {}
  FormatArgument(std::nullopt_t) : value_(nullptr) {}
  FormatArgument(const char* text) {
    if (text == nullptr) {
      value_ = nullptr;
    } else {
      value_ = std::string(text);
    }
  }
  FormatArgument(std::string text) : value_(std::move(text)) {}
  FormatArgument(std::string_view text) : value_(std::string(text)) {}
  template <std::integral T>
  FormatArgument(T number) {
    if constexpr (std::is_signed_v<T>) {
      value_ = static_cast<std::int64_t>(number);
    } else {
      value_ = static_cast<std::uint64_t>(number);
    }
  }
  template <std::floating_point T>
  FormatArgument(T number) : value_(static_cast<double>(number)) {}
  // Anything that has a description in its namespace: geometry, property lists, the system's own objects.
  template <class T>
  requires requires(const T& object) {
    { description(object) } -> std::convertible_to<std::string>;
  } &&(!std::integral<T>)&&(!std::convertible_to<T, std::string_view>)FormatArgument(const T& object)
      : value_(description(object)) {
  }
  template <class T>
  FormatArgument(const std::optional<T>& object) {
    if (object) {
      value_ = FormatArgument(*object).value();
    } else {
      value_ = nullptr;
    }
  }

  const Value& value() const { return value_; }

 private:
  Value value_;
};

// The list of texts as "%@" prints it, "(\n    a,\n    b\n)".
std::string description(const std::vector<std::string>& texts);

// Fills a format of the platform's kind: "%@" takes any object, the C conversions (%i %d %u %li %lu %llu %qi
// %x %.8lx %5.2f %s %c %p %%) their numbers and texts. Never throws: a conversion whose argument is missing
// or of another kind prints what can be printed of it (an absent argument "(null)"), surplus arguments are
// ignored, and a lone '%' at the end stays as it is.
std::string vformat(std::string_view format, const std::vector<FormatArgument>& arguments);

template <class... Arguments>
std::string stringWithFormat(std::string_view format, const Arguments&... arguments) {
  return vformat(format, {FormatArgument(arguments)...});
}

}  // namespace platform

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

// The texts as "%@" prints a list, "(\n    a,\n    b\n)".
std::string description(const std::vector<std::string>& texts);
// Named texts as "%@" prints a dictionary, "{\n    name = text;\n}"; of a repeated name the last text counts.
std::string description(const std::vector<std::pair<std::string, std::string>>& texts);

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
  } &&(!std::is_arithmetic_v<T>)&&(!std::convertible_to<T, std::string_view>)FormatArgument(const T& object)
      : value_(description(object)) {
  }
  // An object by its address: what it describes itself as, else the address; a null pointer is absent.
  template <class T>
  requires(!std::same_as<std::remove_cv_t<T>, char>) FormatArgument(T* object) {
    if (object == nullptr) {
      value_ = nullptr;
      return;
    }
    if constexpr (std::is_class_v<T>) {
      if constexpr (requires { description(*object); }) {
        value_ = description(*object);
        return;
      }
    }
    value_ = static_cast<const void*>(object);
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

// Fills a format of the platform's kind: "%@" takes any object, the C conversions (d i u x X o, f F e E g G a
// A, s, c, p, %, with flags, width, precision, '*' and any length) their numbers and texts. Widths and
// precisions of texts count characters, never bytes; more than 512 count as 512. "%c" takes a Unicode
// code point. Never throws for its arguments: one that is missing prints as "(null)", one of another kind as
// "%@" prints it, surplus ones are ignored, and a '%' that begins no conversion stays as it is. A negative
// number under an unsigned conversion wraps at 32 bits, with l, q, j, z or t at 64; nothing else is cut.
std::string vformat(std::string_view format, const std::vector<FormatArgument>& arguments);

template <class... Arguments>
std::string stringWithFormat(std::string_view format, const Arguments&... arguments) {
  return vformat(format, {FormatArgument(arguments)...});
}

}  // namespace platform

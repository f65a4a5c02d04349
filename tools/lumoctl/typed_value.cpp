#include "tools/lumoctl/typed_value.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <optional>
#include <system_error>
#include <utility>

#include "app/PreferenceKeys.h"
#include "platform/property_list_text.h"
#include "platform/strings.h"

namespace lumoctl {

namespace {

using platform::PropertyList;
using Words = std::span<const std::string>;
using Parsed = std::variant<PropertyList, std::string>;

enum class Scalar { String, Boolean, Integer, Real, Date, Data };

std::optional<Scalar> scalarType(std::string_view word) {
  constexpr std::pair<std::string_view, Scalar> types[] = {
      {"-string", Scalar::String},   {"-bool", Scalar::Boolean}, {"-boolean", Scalar::Boolean},
      {"-int", Scalar::Integer},     {"-float", Scalar::Real},   {"-real", Scalar::Real},
      {"-integer", Scalar::Integer}, {"-date", Scalar::Date},    {"-data", Scalar::Data},
  };
  for (const auto& [name, type] : types) {
    if (word == name) {
      return type;
    }
  }
  return std::nullopt;
}

std::optional<PropertyList> booleanFrom(std::string_view text) {
  for (const char* yes : {"true", "yes", "1"}) {
    if (platform::equalIgnoringCase(text, yes)) {
      return PropertyList(true);
    }
  }
  for (const char* no : {"false", "no", "0"}) {
    if (platform::equalIgnoringCase(text, no)) {
      return PropertyList(false);
    }
  }
  return std::nullopt;
}

template <class Number>
std::optional<PropertyList> numberFrom(std::string_view text) {
  Number number{};
  if (text.starts_with('+') && !text.starts_with("+-")) {
    text.remove_prefix(1);
  }
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) {
    return std::nullopt;
  }
  if constexpr (std::is_floating_point_v<Number>) {
    if (!std::isfinite(number)) {
      return std::nullopt;
    }
  }
  return PropertyList(number);
}

std::optional<PropertyList> dataFrom(std::string_view text) {
  if (text.size() % 2 != 0) {
    return std::nullopt;
  }
  platform::Data data;
  for (; !text.empty(); text.remove_prefix(2)) {
    std::uint8_t byte = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + 2, byte, 16);
    if (error != std::errc() || end != text.data() + 2) {
      return std::nullopt;
    }
    data.push_back(std::byte{byte});
  }
  return PropertyList(std::move(data));
}

Parsed scalarFrom(Scalar type, const std::string& text) {
  std::optional<PropertyList> value;
  const char* kind = "";
  switch (type) {
    case Scalar::String:
      value = PropertyList(text);
      break;
    case Scalar::Boolean:
      value = booleanFrom(text);
      kind = "boolean (true or false)";
      break;
    case Scalar::Integer:
      value = numberFrom<std::int64_t>(text);
      kind = "whole number";
      break;
    case Scalar::Real:
      value = numberFrom<double>(text);
      kind = "number";
      break;
    case Scalar::Date:
      value = platform::property_list_text::readDate(text);
      kind = "date (YYYY-MM-DDTHH:MM:SSZ)";
      break;
    case Scalar::Data:
      value = dataFrom(text);
      kind = "row of hexadecimal bytes";
      break;
  }
  if (!value) {
    return "\"" + text + "\" is no " + kind;
  }
  return *value;
}

// Takes one value, with its type where one stands before it, from the front of `words`, which are not empty.
Parsed takeElement(Words& words) {
  const std::string first = words.front();
  words = words.subspan(1);
  const auto type = scalarType(first);
  if (!type) {
    return PropertyList(first);
  }
  if (words.empty()) {
    return first + " needs a value";
  }
  const std::string text = words.front();
  words = words.subspan(1);
  return scalarFrom(*type, text);
}

Parsed arrayFrom(Words words) {
  platform::Array array;
  while (!words.empty()) {
    Parsed element = takeElement(words);
    if (element.index() == 1) {
      return element;
    }
    array.push_back(std::get<PropertyList>(std::move(element)));
  }
  return PropertyList(std::move(array));
}

Parsed dictionaryFrom(Words words) {
  platform::Dictionary dictionary;
  while (!words.empty()) {
    const std::string key = words.front();
    words = words.subspan(1);
    if (words.empty()) {
      return "the key \"" + key + "\" of the dictionary has no value";
    }
    Parsed element = takeElement(words);
    if (element.index() == 1) {
      return element;
    }
    dictionary.set(key, std::get<PropertyList>(std::move(element)));
  }
  return PropertyList(std::move(dictionary));
}

Parsed untypedFrom(std::string_view key, const std::string& text) {
  const auto* row = lumo::preferenceKey(key);
  if (row == nullptr || row->type == lumo::PreferenceType::String) {
    return PropertyList(text);
  }
  switch (row->type) {
    case lumo::PreferenceType::Array:
      return std::string(key) + " is a list: give it with -array";
    case lumo::PreferenceType::Dictionary:
      return std::string(key) + " is a dictionary: give it with -dict";
    default:
      return scalarFrom(Scalar::Boolean, text);
  }
}

}  // namespace

std::variant<TypedValue, std::string> parseTypedValue(std::string_view key, Words words) {
  if (words.empty()) {
    return std::string("defaults write needs a value");
  }
  const std::string& first = words[0];
  const Words rest = words.subspan(1);
  Parsed parsed = std::string();
  bool add = false;
  if (first == "-array" || first == "-array-add") {
    parsed = arrayFrom(rest);
    add = first == "-array-add";
  } else if (first == "-dict" || first == "-dict-add") {
    parsed = dictionaryFrom(rest);
    add = first == "-dict-add";
  } else if (const auto type = scalarType(first)) {
    if (rest.size() != 1) {
      return first + " takes one value";
    }
    parsed = scalarFrom(*type, rest[0]);
  } else if (words.size() == 1) {
    parsed = untypedFrom(key, first);
  } else if (first.starts_with('-')) {
    return "there is no type " + first;
  } else {
    return std::string("defaults write takes one value; -array and -dict take more");
  }
  if (auto* error = std::get_if<std::string>(&parsed)) {
    return std::move(*error);
  }
  return TypedValue{std::get<PropertyList>(std::move(parsed)), add};
}

}  // namespace lumoctl

#pragma once

#include <chrono>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace platform {

class PropertyList;
using Array = std::vector<PropertyList>;
using Data = std::vector<std::byte>;
// A date is an absolute time with the resolution that property lists keep (1 s in XML; fractions are dropped
// there).
using Date = std::chrono::system_clock::time_point;

// An ordered dictionary: iteration follows the order of insertion, setting an existing key keeps its place.
class Dictionary {
 public:
  using Entry = std::pair<std::string, PropertyList>;

  Dictionary() = default;
  Dictionary(std::initializer_list<Entry> entries);

  // The value under `key`, or null. The pointer is good until the dictionary changes.
  const PropertyList* find(std::string_view key) const;
  bool contains(std::string_view key) const { return find(key) != nullptr; }
  // Stores `value` under `key`, replacing an earlier value.
  void set(std::string_view key, PropertyList value);
  // Removes `key`; a key that is not there is no error.
  void remove(std::string_view key);

  using const_iterator = std::vector<Entry>::const_iterator;
  bool empty() const;
  std::size_t size() const;
  const_iterator begin() const;
  const_iterator end() const;

  // Equal when both hold the same keys with equal values, whatever their order.
  bool operator==(const Dictionary& other) const;

 private:
  // Where `key` is among the entries, or the greatest number.
  std::size_t position(std::string_view key) const;
  // Where `key` is, or would be, in a table that is not empty.
  std::size_t slot(std::string_view key) const;
  void buildSlots();

  std::vector<Entry> entries_;
  // A hash table of positions plus one (zero is a free slot), so that a large list from outside costs no
  // quadratic time; empty while the dictionary is small.
  std::vector<std::uint32_t> slots_;
};

// One property-list value. A value is always present: absence is a std::optional or a null pointer around it.
class PropertyList {
 public:
  using Value = std::variant<bool, std::int64_t, double, std::string, Date, Data, Array, Dictionary>;

  // A boolean only: a pointer, which would turn into one, is refused by the compiler.
  template <std::same_as<bool> T>
  PropertyList(T value) : value_(value) {}
  PropertyList(int value) : value_(std::int64_t{value}) {}
  PropertyList(std::int64_t value) : value_(value) {}
  PropertyList(double value) : value_(value) {}
  PropertyList(const char* value) : value_(std::string(value)) {}
  PropertyList(std::string value) : value_(std::move(value)) {}
  PropertyList(std::string_view value) : value_(std::string(value)) {}
  PropertyList(Date value) : value_(value) {}
  PropertyList(Data value) : value_(std::move(value)) {}
  PropertyList(Array value) : value_(std::move(value)) {}
  PropertyList(Dictionary value) : value_(std::move(value)) {}

  const Value& value() const { return value_; }
  // The value as exactly this type, or null when it is of another one.
  template <class T>
  const T* as() const {
    return std::get_if<T>(&value_);
  }

  bool operator==(const PropertyList&) const = default;

 private:
  Value value_;
};

// After PropertyList, since an entry is complete only now.
inline bool Dictionary::empty() const {
  return entries_.empty();
}
inline std::size_t Dictionary::size() const {
  return entries_.size();
}
inline Dictionary::const_iterator Dictionary::begin() const {
  return entries_.begin();
}
inline Dictionary::const_iterator Dictionary::end() const {
  return entries_.end();
}

// Conversions of the readers of preferences. A boolean comes from a boolean, from a number (true unless it is
// zero) and from the texts "YES", "true" and "1", ignoring case; a string from a string or a number. Anything
// else is absent.
std::optional<bool> boolValue(const PropertyList& value);
std::optional<std::string> stringValue(const PropertyList& value);

// What "%@" prints: scalars plainly (a boolean as 1 or 0, a number in its shortest form, a date as
// "2026-11-21 02:00:24 +0000", data as "<01020304 05>"), arrays and dictionaries in the old-style
// description,
// "(\n    a,\n    b\n)" and "{\n    key = value;\n}", nested values indented by four blanks a level. Inside
// them a text stands in double quotes unless it consists of letters, digits and "_$./-" only; quotes,
// backslashes and control characters are escaped there, everything else stays readable UTF-8.
std::string description(const PropertyList& value);
std::string description(const Array& value);
std::string description(const Dictionary& value);

// The array's elements as texts, joined with `separator`; an element that has no text form is described as by
// "%@".
std::string componentsJoinedByString(const Array& array, std::string_view separator);

}  // namespace platform

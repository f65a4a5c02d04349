#pragma once

#include <span>
#include <string>
#include <string_view>
#include <variant>

#include "platform/property_list.h"

namespace lumoctl {

struct TypedValue {
  platform::PropertyList value;
  // Whether the array or dictionary is added to what is there.
  bool add = false;
  bool operator==(const TypedValue&) const = default;
};

// The value that the words behind `key` stand for, or a line that says why they stand for none.
//
// A first word with a type rules: -string, -bool or -boolean (true, false, yes, no, 1, 0 in any case), -int
// or -integer, -float, -date (YYYY-MM-DDTHH:MM:SSZ), -data (hexadecimal digits), -array and -array-add (any
// number of values), -dict and -dict-add (pairs of key and value). The values inside arrays and dictionaries
// are texts unless a type of a single value stands before them. One word alone is a boolean where the key
// table says so of `key`, else a text. Pure; any thread.
std::variant<TypedValue, std::string> parseTypedValue(std::string_view key,
                                                      std::span<const std::string> words);

}  // namespace lumoctl

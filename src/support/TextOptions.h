#pragma once

#include <cstddef>
#include <functional>
#include <string_view>

namespace lumo {

// The terms of the string and data additions.

enum class ComparisonResult { Ascending = -1, Same = 0, Descending = 1 };

// How texts are compared and searched; bits, to be added up.
enum CompareOptions : unsigned {
  // By Unicode's simple case folding, whatever the language.
  CaseInsensitiveSearch = 1,
  // The last occurrence first.
  BackwardsSearch = 4,
  // At the start only (with BackwardsSearch: the end), again after each one that was found there.
  AnchoredSearch = 8,
  // Runs of the digits 0 to 9 count as numbers. Says nothing to a search.
  NumericSearch = 64,
};

// A part of something: of data in bytes, of a text in Unicode characters.
struct Range {
  std::size_t location = 0;
  std::size_t length = 0;

  // Whether it lies within something that is `size` long.
  bool fits(std::size_t size) const { return location <= size && length <= size - location; }
};

// Whether a character belongs to the set.
using CharacterSet = std::function<bool(char32_t character)>;
// The set of the characters in `text`, UTF-8.
CharacterSet characterSetWithCharactersInString(std::string_view text);

}  // namespace lumo

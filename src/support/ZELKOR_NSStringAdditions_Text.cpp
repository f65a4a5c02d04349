#include <algorithm>
#include <cstddef>
#include <stdexcept>

#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include "platform/paths.h"
#include "platform/strings.h"
#include "support/ZELKOR_NSStringAdditions.h"

namespace lumo {

namespace {

std::u32string charactersOf(const icu::UnicodeString& text) {
  std::u32string characters;
  characters.reserve(static_cast<std::size_t>(text.length()));
  for (int32_t at = 0; at < text.length(); at = text.moveIndex32(at, 1)) {
    characters += static_cast<char32_t>(text.char32At(at));
  }
  return characters;
}

std::u32string charactersOf(std::string_view text) {
  return charactersOf(icu::UnicodeString::fromUTF8(platform::validUtf8(text)));
}

std::string textOf(const std::u32string& characters) {
  icu::UnicodeString joined;
  for (const char32_t character : characters) {
    joined.append(static_cast<UChar32>(character));
  }
  std::string text;
  return joined.toUTF8String(text);
}

// What texts have in common that differ in case or in how they spell an accent only.
std::u32string foldedCharacters(std::string_view text) {
  const auto source = icu::UnicodeString::fromUTF8(platform::validUtf8(text));
  UErrorCode status = U_ZERO_ERROR;
  const auto* decomposition = icu::Normalizer2::getNFDInstance(status);
  if (U_FAILURE(status)) {
    icu::UnicodeString copy(source);
    return charactersOf(copy.foldCase());
  }
  // Folding may leave a form that is not decomposed.
  icu::UnicodeString folded = decomposition->normalize(source, status);
  folded = decomposition->normalize(folded.foldCase(), status);
  return charactersOf(folded);
}

bool isDigit(char32_t character) {
  return character >= U'0' && character <= U'9';
}

template <class Value>
ComparisonResult ordering(const Value& one, const Value& other) {
  if (one == other) {
    return ComparisonResult::Same;
  }
  return one < other ? ComparisonResult::Ascending : ComparisonResult::Descending;
}

// Takes the run of digits at `at`, without the zeros before the number.
std::u32string takeNumber(const std::u32string& text, std::size_t& at) {
  const auto start = std::min(text.find_first_not_of(U'0', at), text.size());
  at = start;
  while (at < text.size() && isDigit(text[at])) {
    ++at;
  }
  return text.substr(start, at - start);
}

// Numbers of any length.
ComparisonResult compareNumbers(const std::u32string& one, const std::u32string& other) {
  return one.size() != other.size() ? ordering(one.size(), other.size()) : ordering(one, other);
}

ComparisonResult compareWithNumbers(const std::u32string& one, const std::u32string& other) {
  std::size_t i = 0;
  std::size_t k = 0;
  while (i < one.size() && k < other.size()) {
    auto result = ComparisonResult::Same;
    if (isDigit(one[i]) && isDigit(other[k])) {
      const auto number = takeNumber(one, i);
      result = compareNumbers(number, takeNumber(other, k));
    } else {
      result = ordering(one[i++], other[k++]);
    }
    if (result != ComparisonResult::Same) {
      return result;
    }
  }
  return ordering(one.size() - i, other.size() - k);
}

std::string lastComponentWithoutExtension(const std::string& path) {
  const std::string name = platform::deletingPathExtension(path);
  const auto slash = name.rfind('/');
  return slash == std::string::npos || name.size() == 1 ? name : name.substr(slash + 1);
}

bool areEqual(char32_t one, char32_t other, bool ignoringCase) {
  return one == other || (ignoringCase && u_foldCase(static_cast<UChar32>(one), U_FOLD_CASE_DEFAULT) ==
                                              u_foldCase(static_cast<UChar32>(other), U_FOLD_CASE_DEFAULT));
}

// From the left; a backward search gets everything the other way round.
std::u32string replacing(const std::u32string& text, const std::u32string& search,
                         const std::u32string& value, unsigned options) {
  if (search.empty()) {
    return text;
  }
  const auto equal = [ignoringCase = (options & CaseInsensitiveSearch) != 0](char32_t one, char32_t other) {
    return areEqual(one, other, ignoringCase);
  };
  std::u32string result;
  auto from = text.begin();
  while (true) {
    const auto found = std::search(from, text.end(), search.begin(), search.end(), equal);
    if (found == text.end() || ((options & AnchoredSearch) != 0 && found != from)) {
      return result.append(from, text.end());
    }
    result.append(from, found).append(value);
    from = found + static_cast<std::ptrdiff_t>(search.size());
  }
}

std::u32string replacingWithOptions(std::u32string text, std::u32string search, std::u32string value,
                                    unsigned options) {
  const bool backwards = (options & BackwardsSearch) != 0;
  if (!backwards) {
    return replacing(text, search, value, options);
  }
  for (auto* part : {&text, &search, &value}) {
    std::reverse(part->begin(), part->end());
  }
  auto result = replacing(text, search, value, options);
  std::reverse(result.begin(), result.end());
  return result;
}

}  // namespace

CharacterSet characterSetWithCharactersInString(std::string_view text) {
  return [characters = charactersOf(text)](char32_t character) {
    return characters.find(character) != std::u32string::npos;
  };
}

namespace ZELKOR_NSStringAdditions {

ComparisonResult myLocalizedCompare(const std::string& text, const std::string& other) {
  return ordering(foldedCharacters(lastComponentWithoutExtension(text)),
                  foldedCharacters(lastComponentWithoutExtension(other)));
}

ComparisonResult numericalCaseInsensitiveCompare(const std::string& text, const std::string& other) {
  return compareWithNumbers(foldedCharacters(text), foldedCharacters(other));
}

std::optional<std::string> stringByDeletingCharactersInSet(const platform::PropertyList& text,
                                                           const CharacterSet& set) {
  const auto* string = text.as<std::string>();
  if (string == nullptr) {
    return std::nullopt;
  }
  auto characters = charactersOf(*string);
  std::erase_if(characters, set);
  return textOf(characters);
}

std::optional<std::string> stringByReplacingSubStrings_withValues_options_range(
    const platform::PropertyList& text, const std::vector<std::optional<std::string>>& searches,
    const std::vector<std::optional<std::string>>& values, unsigned options, Range range) {
  const auto* string = text.as<std::string>();
  if (string == nullptr) {
    return std::nullopt;
  }
  const auto characters = charactersOf(*string);
  if (!range.fits(characters.size())) {
    throw std::out_of_range("the range lies outside of the string");
  }
  auto working = characters.substr(range.location, range.length);
  for (std::size_t i = 0; i < searches.size() && searches[i]; ++i) {
    const auto value = i < values.size() ? values[i].value_or("") : std::string();
    working = replacingWithOptions(working, charactersOf(*searches[i]), charactersOf(value), options);
  }
  return textOf(characters.substr(0, range.location) + working +
                characters.substr(range.location + range.length));
}

}  // namespace ZELKOR_NSStringAdditions

}  // namespace lumo

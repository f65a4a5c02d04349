#include "platform/strings.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <utility>

namespace platform {

namespace {

constexpr std::string_view kReplacement = "\uFFFD";

// Blanks, tabs and line breaks: white space, category Zs and the line and paragraph separators.
constexpr std::array<std::string_view, 25> kSpaces = {
    " ",      "\t",     "\n",     "\v",     "\f",     "\r",     "\u0085", "\u00A0", "\u1680",
    "\u2000", "\u2001", "\u2002", "\u2003", "\u2004", "\u2005", "\u2006", "\u2007", "\u2008",
    "\u2009", "\u200A", "\u2028", "\u2029", "\u202F", "\u205F", "\u3000"};

char lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

char upper(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

bool sameIgnoringCase(char a, char b) {
  return lower(a) == lower(b);
}

// What one character in UTF-8 looks like from its first byte (Unicode, table 3-7): its length, 0 when none
// starts so, and the range of its second byte. All later bytes are 80 to BF.
struct Shape {
  std::size_t length = 0;
  std::uint8_t secondLow = 0x80;
  std::uint8_t secondHigh = 0xBF;
};

Shape shapeOf(std::uint8_t first) {
  if (first < 0x80) {
    return {1};
  }
  if (first < 0xC2 || first > 0xF4) {
    return {0};
  }
  if (first < 0xE0) {
    return {2};
  }
  if (first < 0xF0) {
    return {3, first == 0xE0 ? std::uint8_t{0xA0} : std::uint8_t{0x80},
            first == 0xED ? std::uint8_t{0x9F} : std::uint8_t{0xBF}};
  }
  return {4, first == 0xF0 ? std::uint8_t{0x90} : std::uint8_t{0x80},
          first == 0xF4 ? std::uint8_t{0x8F} : std::uint8_t{0xBF}};
}

struct Part {
  // How many bytes belong together: a character, or as much of one as is there (at least one byte).
  std::size_t length = 0;
  bool isCharacter = false;
};

// The part at the start of `text`, which is not empty.
Part firstPart(std::string_view text) {
  Shape shape = shapeOf(static_cast<std::uint8_t>(text.front()));
  std::size_t length = 1;
  while (length < shape.length && length < text.size()) {
    const auto byte = static_cast<std::uint8_t>(text[length]);
    if (byte < shape.secondLow || byte > shape.secondHigh) {
      break;
    }
    shape.secondLow = 0x80;
    shape.secondHigh = 0xBF;
    ++length;
  }
  return {length, length == shape.length};
}

template <class Equal>
std::string replacing(std::string_view text, std::string_view target, std::string_view replacement,
                      const Equal& equal) {
  if (target.empty()) {
    return std::string(text);
  }
  std::string result;
  auto from = text.begin();
  while (true) {
    const auto found = std::search(from, text.end(), target.begin(), target.end(), equal);
    result.append(from, found);
    if (found == text.end()) {
      return result;
    }
    result += replacement;
    from = found + static_cast<std::ptrdiff_t>(target.size());
  }
}

}  // namespace

std::string trimmed(std::string_view text) {
  const auto lengthOfSpace = [](auto isThere) {
    const auto space = std::find_if(kSpaces.begin(), kSpaces.end(), isThere);
    return space == kSpaces.end() ? 0 : space->size();
  };
  const auto isAtStart = [&](std::string_view space) { return text.starts_with(space); };
  const auto isAtEnd = [&](std::string_view space) { return text.ends_with(space); };
  while (const std::size_t length = lengthOfSpace(isAtStart)) {
    text.remove_prefix(length);
  }
  while (const std::size_t length = lengthOfSpace(isAtEnd)) {
    text.remove_suffix(length);
  }
  return std::string(text);
}

std::string lowercase(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(), lower);
  return result;
}

std::string uppercase(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(), upper);
  return result;
}

bool equalIgnoringCase(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), sameIgnoringCase);
}

bool hasPrefixIgnoringCase(std::string_view text, std::string_view prefix) {
  return equalIgnoringCase(text.substr(0, prefix.size()), prefix);
}

bool containsIgnoringCase(std::string_view text, std::string_view part) {
  return part.empty() ||
         std::search(text.begin(), text.end(), part.begin(), part.end(), sameIgnoringCase) != text.end();
}

std::vector<std::string> componentsSeparatedBy(std::string_view text, std::string_view separator) {
  std::vector<std::string> components;
  while (!separator.empty()) {
    const std::size_t found = text.find(separator);
    if (found == std::string_view::npos) {
      break;
    }
    components.emplace_back(text.substr(0, found));
    text.remove_prefix(found + separator.size());
  }
  components.emplace_back(text);
  return components;
}

std::string replacingOccurrences(std::string_view text, std::string_view target,
                                 std::string_view replacement) {
  return replacing(text, target, replacement, std::equal_to<>());
}

std::string replacingOccurrencesIgnoringCase(std::string_view text, std::string_view target,
                                             std::string_view replacement) {
  return replacing(text, target, replacement, sameIgnoringCase);
}

bool isValidUtf8(std::string_view text) {
  while (!text.empty()) {
    const Part part = firstPart(text);
    if (!part.isCharacter) {
      return false;
    }
    text.remove_prefix(part.length);
  }
  return true;
}

std::string validUtf8(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  while (!text.empty()) {
    const Part part = firstPart(text);
    result += part.isCharacter ? text.substr(0, part.length) : kReplacement;
    text.remove_prefix(part.length);
  }
  return result;
}

}  // namespace platform

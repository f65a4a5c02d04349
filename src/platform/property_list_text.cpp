#include "platform/property_list_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <limits>
#include <utility>

namespace platform::property_list_text {
namespace {

constexpr std::string_view base64Alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr std::array<std::int8_t, 256> base64Values = [] {
  std::array<std::int8_t, 256> values{};
  values.fill(-1);
  for (std::size_t i = 0; i < base64Alphabet.size(); ++i) {
    values[static_cast<unsigned char>(base64Alphabet[i])] = static_cast<std::int8_t>(i);
  }
  return values;
}();

// The whole of `text` as a number, else nothing.
template <class Number, class... Format>
std::optional<Number> parseNumber(std::string_view text, Format... format) {
  Number number{};
  const auto* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, number, format...);
  if (result.ec != std::errc() || result.ptr != end) {
    return std::nullopt;
  }
  return number;
}

}  // namespace

std::string_view withoutBlanks(std::string_view text) {
  const auto first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos) {
    return {};
  }
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::optional<PropertyList> readInteger(std::string_view text) {
  auto digits = withoutBlanks(text);
  const bool negative = digits.starts_with('-');
  if (negative || digits.starts_with('+')) {
    digits.remove_prefix(1);
  }
  int base = 10;
  if (digits.starts_with("0x") || digits.starts_with("0X")) {
    digits.remove_prefix(2);
    base = 16;
  }
  const auto allowed = std::string_view("0123456789abcdefABCDEF").substr(0, base == 16 ? 22 : 10);
  if (digits.empty() || digits.find_first_not_of(allowed) != std::string_view::npos) {
    return std::nullopt;
  }
  constexpr auto largest = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
  if (const auto magnitude = parseNumber<std::uint64_t>(digits, base)) {
    if (*magnitude <= largest) {
      const auto value = static_cast<std::int64_t>(*magnitude);
      return PropertyList(negative ? -value : value);
    }
    if (negative && *magnitude == largest + 1) {
      return PropertyList(std::numeric_limits<std::int64_t>::min());
    }
  }
  const auto real =
      parseNumber<double>(digits, base == 16 ? std::chars_format::hex : std::chars_format::general);
  if (!real) {
    return std::nullopt;
  }
  return PropertyList(negative ? -*real : *real);
}

std::optional<PropertyList> readReal(std::string_view text) {
  text = withoutBlanks(text);
  if (text.starts_with('+')) {
    text.remove_prefix(1);
    if (text.starts_with('-')) {
      return std::nullopt;
    }
  }
  const auto number = parseNumber<double>(text);
  if (!number) {
    return std::nullopt;
  }
  return PropertyList(*number);
}

std::string writeReal(double value) {
  std::array<char, 32> digits{};
  const auto* end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
  return std::string(digits.data(), static_cast<std::size_t>(end - digits.data()));
}

std::optional<PropertyList> readDate(std::string_view text) {
  text = withoutBlanks(text);
  // Everything after the year has a fixed length; a year can have more digits or a sign.
  constexpr std::size_t tail = 16;
  if (text.size() <= tail) {
    return std::nullopt;
  }
  const auto rest = text.substr(text.size() - tail);
  if (rest[0] != '-' || rest[3] != '-' || rest[6] != 'T' || rest[9] != ':' || rest[12] != ':' ||
      rest[15] != 'Z') {
    return std::nullopt;
  }
  std::array<unsigned, 5> fields{};
  for (std::size_t i = 0; i < fields.size(); ++i) {
    const auto field = parseNumber<unsigned>(rest.substr(1 + 3 * i, 2));
    if (!field) {
      return std::nullopt;
    }
    fields[i] = *field;
  }
  const auto [month, day, hours, minutes, seconds] = fields;
  const auto year = parseNumber<int>(text.substr(0, text.size() - tail));
  // A second 60 is a leap second.
  if (!year || hours > 23 || minutes > 59 || seconds > 60) {
    return std::nullopt;
  }
  namespace chrono = std::chrono;
  // chrono's years end at 32767; the clock's range ends long before.
  const chrono::year_month_day date(chrono::year(std::clamp(*year, -9999, 9999)), chrono::month(month),
                                    chrono::day(day));
  if (!date.ok()) {
    return std::nullopt;
  }
  const chrono::sys_seconds time =
      chrono::sys_days(date) + chrono::hours(hours) + chrono::minutes(minutes) + chrono::seconds(seconds);
  if (time <= chrono::floor<chrono::seconds>(Date::min())) {
    return PropertyList(Date::min());
  }
  if (time >= chrono::floor<chrono::seconds>(Date::max())) {
    return PropertyList(Date::max());
  }
  return PropertyList(Date(time));
}

std::string writeDate(Date value) {
  namespace chrono = std::chrono;
  // Days are taken from whole seconds: the first day of the clock's range begins before its first nanosecond.
  const auto seconds = chrono::floor<chrono::seconds>(value);
  const auto days = chrono::floor<chrono::days>(seconds);
  const chrono::year_month_day date(days);
  const chrono::hh_mm_ss time(seconds - days);
  std::string text = std::to_string(static_cast<int>(date.year()));
  const auto append = [&text](char before, auto number) {
    text += before;
    text += static_cast<char>('0' + number / 10);
    text += static_cast<char>('0' + number % 10);
  };
  append('-', static_cast<unsigned>(date.month()));
  append('-', static_cast<unsigned>(date.day()));
  append('T', time.hours().count());
  append(':', time.minutes().count());
  append(':', time.seconds().count());
  return text + 'Z';
}

std::optional<PropertyList> readData(std::string_view text) {
  Data data;
  data.reserve(text.size() / 4 * 3);
  std::uint32_t bits = 0;
  unsigned count = 0;
  bool padded = false;
  for (const char c : text) {
    if (blanks.find(c) != std::string_view::npos) {
      continue;
    }
    if (c == '=') {
      padded = true;
      continue;
    }
    const auto value = base64Values[static_cast<unsigned char>(c)];
    if (value < 0 || padded) {
      return std::nullopt;
    }
    bits = bits << 6 | static_cast<std::uint32_t>(value);
    ++count;
    // The second to fourth character of each group complete a byte, with 4, 2 and 0 bits left over.
    if (count % 4 != 1) {
      data.push_back(static_cast<std::byte>(bits >> (2 * ((4 - count % 4) % 4)) & 0xFF));
    }
  }
  if (count % 4 == 1) {
    return std::nullopt;
  }
  return PropertyList(std::move(data));
}

std::string writeData(const Data& value, std::size_t start, std::size_t end) {
  std::string text;
  for (std::size_t i = start; i < end; i += 3) {
    std::uint32_t bits = 0;
    for (std::size_t j = 0; j < 3; ++j) {
      bits = bits << 8 | (i + j < end ? std::to_integer<std::uint32_t>(value[i + j]) : 0U);
    }
    for (std::size_t j = 0; j < 4; ++j) {
      text += i + j <= end ? base64Alphabet[bits >> (18 - 6 * j) & 0x3F] : '=';
    }
  }
  return text;
}

std::optional<std::string> readCharacterReference(std::string_view digits) {
  const bool hexadecimal = digits.starts_with('x') || digits.starts_with('X');
  const auto number = parseNumber<std::uint32_t>(digits.substr(hexadecimal ? 1 : 0), hexadecimal ? 16 : 10);
  if (!number || *number > 0x10FFFF) {
    return std::nullopt;
  }
  const bool surrogate = *number >= 0xD800 && *number <= 0xDFFF;
  const auto character = surrogate ? 0xFFFDU : *number;
  std::string text;
  const auto append = [&text](std::uint32_t byte) { text += static_cast<char>(byte); };
  if (character < 0x80) {
    append(character);
  } else if (character < 0x800) {
    append(0xC0 | character >> 6);
    append(0x80 | (character & 0x3F));
  } else if (character < 0x10000) {
    append(0xE0 | character >> 12);
    append(0x80 | (character >> 6 & 0x3F));
    append(0x80 | (character & 0x3F));
  } else {
    append(0xF0 | character >> 18);
    append(0x80 | (character >> 12 & 0x3F));
    append(0x80 | (character >> 6 & 0x3F));
    append(0x80 | (character & 0x3F));
  }
  return text;
}

}  // namespace platform::property_list_text

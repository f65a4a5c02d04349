#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "platform/property_list.h"

inline std::string repeated(std::string_view text, std::size_t count) {
  std::string result;
  result.reserve(text.size() * count);
  for (std::size_t i = 0; i < count; ++i) {
    result += text;
  }
  return result;
}

inline platform::Date date(int year, unsigned month, unsigned day, std::chrono::seconds time) {
  return std::chrono::sys_days(std::chrono::year_month_day(std::chrono::year(year), std::chrono::month(month),
                                                           std::chrono::day(day))) +
         time;
}

inline std::string fromHexadecimal(std::string_view digits) {
  std::string result;
  for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
    result += static_cast<char>(std::stoi(std::string(digits.substr(i, 2)), nullptr, 16));
  }
  return result;
}

// A dictionary with every type of value, as another program wrote it in the binary form.
inline std::string binaryExample() {
  return fromHexadecimal(
      "62706c6973743030db0102030405060708090a0b0c0d15161718191a1b1c1d547a756c75546c697374547265616c5362"
      "696753796573526e6f547768656e556561726c795464617461547465787455616c7068615a6c617374206669727374a7"
      "0e0f1011121314100113ffffffffffffffff10ff1200010000130000010000000000138000000000000000137fffffff"
      "ffffffff233fb999999999999a23fe41eb2d6600583509083341c858995c00000033c1d7fb3a56c0000044000102ff6a"
      "0047007200f600df0065002020ac0020d83ddcf7d11e1f566e657374656450081f24292e3236393e44494e545f676972"
      "7479828b949da6a7a8b1babfd4d7de00000000000001010000000000000020000000000000000000000000000000df");
}

// The same values.
inline platform::Dictionary exampleValues() {
  using namespace std::chrono_literals;
  using platform::Array;
  return platform::Dictionary{
      {"zulu", "last first"},
      {"list", Array{1, -1, 255, 65536, std::int64_t{1} << 40, std::numeric_limits<std::int64_t>::min(),
                     std::numeric_limits<std::int64_t>::max()}},
      {"real", 0.1},
      {"big", -1.5e300},
      {"yes", true},
      {"no", false},
      {"when", date(2026, 11, 21, 2h + 24s)},
      {"early", date(1950, 1, 2, 3h + 4min + 5s)},
      {"data", platform::Data{std::byte{0}, std::byte{1}, std::byte{2}, std::byte{255}}},
      {"text", "Gr\u00F6\u00DFe \u20AC \U0001F4F7"},
      {"alpha", platform::Dictionary{{"nested", ""}}},
  };
}

inline std::vector<std::string> keys(const platform::Dictionary& dictionary) {
  std::vector<std::string> result;
  for (const auto& [key, value] : dictionary) {
    result.push_back(key);
  }
  return result;
}

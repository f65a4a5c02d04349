#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>
#include <stdexcept>

#include "support/ZELKOR_NSStringAdditions.h"

namespace lumo::ZELKOR_NSStringAdditions {

namespace {

using platform::StringEncoding;

// What was found before the zero unit.
struct Scan {
  std::size_t length = 0;
  bool hasMark = false;
  // Whether that mark says that each unit has its bytes the other way round than this machine.
  bool isSwapped = false;
};

// The bytes need not lie where the machine likes a Unit to lie. A unit that the limit cuts is not read.
template <class Unit>
Scan scan(const char* bytes, std::size_t limit) {
  constexpr Unit kMark = 0xFEFF;
  constexpr Unit kSwappedMark = sizeof(Unit) == 2 ? Unit(0xFFFE) : Unit(0xFFFE0000);
  Scan result;
  while (limit - result.length >= sizeof(Unit)) {
    Unit unit = 0;
    std::memcpy(&unit, bytes + result.length, sizeof unit);
    if (unit == 0) {
      break;
    }
    if (result.length == 0) {
      result.isSwapped = unit == kSwappedMark;
      result.hasMark = unit == kMark || result.isSwapped;
    }
    result.length += sizeof unit;
  }
  return result;
}

template <class Unit>
std::optional<std::string> wideText(const char* bytes, std::size_t limit, StringEncoding encoding) {
  const Scan found = scan<Unit>(bytes, limit);
  std::string_view text(bytes, found.length);
  if (found.hasMark) {
    text.remove_prefix(sizeof(Unit));
    const bool isLittle = (std::endian::native == std::endian::little) != found.isSwapped;
    constexpr bool kIsPair = sizeof(Unit) == 2;
    if (isLittle) {
      encoding = kIsPair ? StringEncoding::UTF16LittleEndian : StringEncoding::UTF32LittleEndian;
    } else {
      encoding = kIsPair ? StringEncoding::UTF16BigEndian : StringEncoding::UTF32BigEndian;
    }
  }
  return platform::textFromBytes(text, encoding);
}

std::optional<std::string> narrowText(const char* bytes, std::size_t limit, StringEncoding encoding) {
  constexpr std::string_view kMark = "\xEF\xBB\xBF";
  // Compared byte by byte, so a zero ends it.
  if (encoding == StringEncoding::UTF8 && limit > kMark.size() &&
      std::strncmp(bytes, kMark.data(), kMark.size()) == 0) {
    bytes += kMark.size();
    limit -= kMark.size();
  }
  return platform::textFromBytes({bytes, ::strnlen(bytes, limit)}, encoding);
}

}  // namespace

std::optional<std::string> stringWithCString_maxLength_encoding(const void* bytes, std::size_t maxLength,
                                                                StringEncoding encoding) {
  const std::size_t unit = platform::bytesOfDot(encoding);
  if (bytes == nullptr || unit == 0 || (maxLength != 0 && unit > maxLength)) {
    return std::nullopt;
  }
  const std::size_t limit = maxLength == 0 ? std::numeric_limits<std::size_t>::max() : maxLength;
  const char* start = static_cast<const char*>(bytes);
  if (unit == sizeof(std::uint32_t)) {
    return wideText<std::uint32_t>(start, limit, encoding);
  }
  if (unit == sizeof(std::uint16_t)) {
    return wideText<std::uint16_t>(start, limit, encoding);
  }
  return narrowText(start, limit, encoding);
}

std::string hexdump(const platform::Data& data, Range range) {
  if (!range.fits(data.size())) {
    throw std::out_of_range("hexdump: the range lies outside of the data");
  }
  return {};
}

}  // namespace lumo::ZELKOR_NSStringAdditions

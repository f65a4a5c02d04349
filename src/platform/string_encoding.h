#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace platform {

// How bytes from elsewhere spell text; the values are the platform's own. UTF-16 and UTF-32 without a byte
// order are in this machine's.
enum class StringEncoding : std::uint32_t {
  ASCII = 1,
  JapaneseEUC = 3,
  UTF8 = 4,
  ISOLatin1 = 5,
  ShiftJIS = 8,
  ISOLatin2 = 9,
  UTF16 = 10,
  WindowsCP1251 = 11,
  WindowsCP1252 = 12,
  WindowsCP1253 = 13,
  WindowsCP1254 = 14,
  WindowsCP1250 = 15,
  ISO2022JP = 21,
  MacOSRoman = 30,
  UTF16BigEndian = 0x90000100,
  UTF16LittleEndian = 0x94000100,
  UTF32 = 0x8c000100,
  UTF32BigEndian = 0x98000100,
  UTF32LittleEndian = 0x9c000100,
};

// How many bytes "." takes: 1, 2 or 4. 0 for a value that is none of the above, or an encoding that this
// system has no table for. Any thread.
std::size_t bytesOfDot(StringEncoding encoding);

// The text that `bytes` spell, as UTF-8; a byte-order mark counts as a character. Absent when the encoding is
// unknown or a byte does not belong into it. Any thread.
std::optional<std::string> textFromBytes(std::string_view bytes, StringEncoding encoding);

}  // namespace platform

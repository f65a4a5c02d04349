// A byte buffer of the system's. The first byte chooses the encoding, the second one the limit.

#include <array>
#include <cstring>
#include <vector>

#include "platform/strings.h"
#include "support/ZELKOR_NSStringAdditions.h"
#include "tests/fuzz/fuzzing.h"

using fuzzing::require;
using platform::StringEncoding;

namespace {

constexpr std::array kEncodings{StringEncoding::ASCII,
                                StringEncoding::JapaneseEUC,
                                StringEncoding::UTF8,
                                StringEncoding::ISOLatin1,
                                StringEncoding::ShiftJIS,
                                StringEncoding::ISOLatin2,
                                StringEncoding::UTF16,
                                StringEncoding::WindowsCP1251,
                                StringEncoding::WindowsCP1252,
                                StringEncoding::WindowsCP1253,
                                StringEncoding::WindowsCP1254,
                                StringEncoding::WindowsCP1250,
                                StringEncoding::ISO2022JP,
                                StringEncoding::MacOSRoman,
                                StringEncoding::UTF16BigEndian,
                                StringEncoding::UTF32,
                                StringEncoding::UTF32BigEndian,
                                StringEncoding::UTF16LittleEndian,
                                StringEncoding::UTF32LittleEndian,
                                static_cast<StringEncoding>(0),
                                static_cast<StringEncoding>(4711)};

std::optional<std::string> textOf(const std::vector<char>& bytes, std::size_t limit,
                                  StringEncoding encoding) {
  auto text =
      lumo::ZELKOR_NSStringAdditions::stringWithCString_maxLength_encoding(bytes.data(), limit, encoding);
  require(!text || platform::isValidUtf8(*text), "a text is UTF-8");
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 3) {
    return 0;
  }
  const StringEncoding encoding = kEncodings.at(data[0] % kEncodings.size());
  // In a place of its own, so that every byte beyond is seen.
  std::vector<char> bytes(data + 2, data + size);
  bytes.shrink_to_fit();
  const auto limited = textOf(bytes, bytes.size(), encoding);
  textOf(bytes, 1 + data[1] % bytes.size(), encoding);

  // Without a limit there has to be a zero, of the largest unit, at a multiple of its size.
  std::vector<char> ended(bytes);
  ended.resize((bytes.size() + 3) / 4 * 4 + 4, '\0');
  ended.shrink_to_fit();
  const auto unlimited = textOf(ended, 0, encoding);
  require(unlimited == textOf(ended, ended.size(), encoding), "a limit behind the zero does not count");
  return 0;
}

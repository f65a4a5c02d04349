#include "platform/string_encoding.h"

#include <bit>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace std::string_view_literals;
using platform::StringEncoding;
using platform::textFromBytes;

constexpr bool kLittle = std::endian::native == std::endian::little;

TEST(StringEncoding, KnowsTheUnitOfEveryEncoding) {
  struct Row {
    StringEncoding encoding;
    std::size_t bytes;
  };
  const std::vector<Row> rows = {
      {StringEncoding::ASCII, 1},
      {StringEncoding::JapaneseEUC, 1},
      {StringEncoding::UTF8, 1},
      {StringEncoding::ISOLatin1, 1},
      {StringEncoding::ShiftJIS, 1},
      {StringEncoding::ISOLatin2, 1},
      {StringEncoding::UTF16, 2},
      {StringEncoding::WindowsCP1251, 1},
      {StringEncoding::WindowsCP1252, 1},
      {StringEncoding::WindowsCP1253, 1},
      {StringEncoding::WindowsCP1254, 1},
      {StringEncoding::WindowsCP1250, 1},
      {StringEncoding::ISO2022JP, 1},
      {StringEncoding::MacOSRoman, 1},
      {StringEncoding::UTF16BigEndian, 2},
      {StringEncoding::UTF16LittleEndian, 2},
      {StringEncoding::UTF32, 4},
      {StringEncoding::UTF32BigEndian, 4},
      {StringEncoding::UTF32LittleEndian, 4},
      {static_cast<StringEncoding>(0), 0},
      {static_cast<StringEncoding>(2), 0},
      {static_cast<StringEncoding>(0xFFFFFFFF), 0},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(platform::bytesOfDot(row.encoding), row.bytes) << static_cast<unsigned>(row.encoding);
  }
}

TEST(StringEncoding, ReadsBytesOfEveryEncoding) {
  struct Row {
    StringEncoding encoding;
    std::string_view bytes;
    std::optional<std::string> text;
  };
  const std::vector<Row> rows = {
      {StringEncoding::ASCII, "plain", "plain"},
      {StringEncoding::ASCII, "caf\xe9", std::nullopt},
      {StringEncoding::UTF8, "caf\u00e9", "caf\u00e9"},
      {StringEncoding::UTF8, "caf\xe9", std::nullopt},
      {StringEncoding::UTF8, "cut \xE2\x82", std::nullopt},
      {StringEncoding::ISOLatin1, "caf\xe9 \x80\xff", "caf\u00e9 \u0080\u00ff"},
      {StringEncoding::ISOLatin2,
       "\xb3\xf3"
       "d\xbc",
       "\u0142\u00f3"
       "d\u017a"},
      {StringEncoding::WindowsCP1250,
       "\xb3\xf3"
       "d\x9f",
       "\u0142\u00f3"
       "d\u017a"},
      {StringEncoding::WindowsCP1251, "\xd4\xee\xf2\xee", "\u0424\u043e\u0442\u043e"},
      {StringEncoding::WindowsCP1252, "5 \x80", "5 \u20ac"},
      {StringEncoding::WindowsCP1253, "\xd6", "\u03a6"},
      {StringEncoding::WindowsCP1254, "\xdd", "\u0130"},
      {StringEncoding::MacOSRoman, "caf\x8e", "caf\u00e9"},
      {StringEncoding::ShiftJIS, "\x8e\xca\x90\x5e", "\u5199\u771f"},
      {StringEncoding::JapaneseEUC, "\xbc\xcc\xbf\xbf", "\u5199\u771f"},
      {StringEncoding::ISO2022JP, "\x1b$B<L??\x1b(B", "\u5199\u771f"},
      {StringEncoding::UTF16BigEndian, "\0a\x20\xac\xd8\x3d\xdd\xa8"sv, "a\u20ac\U0001F5A8"},
      {StringEncoding::UTF16LittleEndian, "a\0\xac\x20\x3d\xd8\xa8\xdd"sv, "a\u20ac\U0001F5A8"},
      {StringEncoding::UTF16, kLittle ? "a\0\xac\x20"sv : "\0a\x20\xac"sv, "a\u20ac"},
      {StringEncoding::UTF16LittleEndian, "\x3d\xd8"sv, std::nullopt},
      {StringEncoding::UTF16LittleEndian, "a\0b"sv, std::nullopt},
      {StringEncoding::UTF16LittleEndian, "\xff\xfe"sv, "\uFEFF"},
      {StringEncoding::UTF32BigEndian, "\0\x01\xF5\xA8"sv, "\U0001F5A8"},
      {StringEncoding::UTF32LittleEndian, "\xA8\xF5\x01\0"sv, "\U0001F5A8"},
      {StringEncoding::UTF32, kLittle ? "a\0\0\0"sv : "\0\0\0a"sv, "a"},
      {StringEncoding::UTF32LittleEndian, "\0\0\x11\0"sv, std::nullopt},
      {StringEncoding::UTF32LittleEndian, "\0\xd8\0\0"sv, std::nullopt},
      {static_cast<StringEncoding>(77), "x", std::nullopt},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(textFromBytes(row.bytes, row.encoding), row.text) << static_cast<unsigned>(row.encoding);
    if (platform::bytesOfDot(row.encoding) != 0) {
      EXPECT_EQ(textFromBytes("", row.encoding), "") << static_cast<unsigned>(row.encoding);
    }
  }
}

TEST(StringEncoding, ReadsLongTextsWhole) {
  std::string bytes;
  std::string text;
  for (int i = 0; i < 10000; ++i) {
    bytes.append("\xac\x20", 2);
    text += "\u20ac";
  }
  EXPECT_EQ(textFromBytes(bytes, StringEncoding::UTF16LittleEndian), text);
}

}  // namespace

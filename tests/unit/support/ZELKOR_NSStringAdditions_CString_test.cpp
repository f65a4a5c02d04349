#include <bit>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include <gtest/gtest.h>
#include <sys/mman.h>

#include "support/ZELKOR_NSStringAdditions.h"

namespace {

using namespace std::string_view_literals;
using lumo::ZELKOR_NSStringAdditions::hexdump;
using platform::StringEncoding;

constexpr bool kLittle = std::endian::native == std::endian::little;

// Bytes before memory that nobody may read, at whatever address that makes.
class GuardedBytes {
 public:
  explicit GuardedBytes(std::string_view bytes) {
    EXPECT_NE(memory_, MAP_FAILED);
    EXPECT_EQ(::mprotect(memory_ + kReadable, kGuard, PROT_NONE), 0);
    start_ = memory_ + kReadable - bytes.size();
    std::memcpy(start_, bytes.data(), bytes.size());
  }
  ~GuardedBytes() { ::munmap(memory_, kReadable + kGuard); }
  GuardedBytes(const GuardedBytes&) = delete;
  GuardedBytes& operator=(const GuardedBytes&) = delete;
  const char* start() const { return start_; }

 private:
  // Whole pages, whatever their size is here.
  static constexpr std::size_t kReadable = 262144;
  static constexpr std::size_t kGuard = 65536;
  char* const memory_ = static_cast<char*>(
      ::mmap(nullptr, kReadable + kGuard, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
  char* start_ = nullptr;
};

std::optional<std::string> text(std::string_view bytes, std::size_t maxLength, StringEncoding encoding) {
  const GuardedBytes guarded(bytes);
  return lumo::ZELKOR_NSStringAdditions::stringWithCString_maxLength_encoding(guarded.start(), maxLength,
                                                                              encoding);
}

TEST(StringWithCString, EndsAtTheMaximumWithoutATerminator) {
  EXPECT_EQ(text("abcdefg", 5, StringEncoding::UTF8), "abcde");
  EXPECT_EQ(text("abcde", 5, StringEncoding::UTF8), "abcde");
  EXPECT_EQ(text("abcde", 5, StringEncoding::ISOLatin1), "abcde");
}

TEST(StringWithCString, EndsAtTheTerminatorBeforeTheMaximum) {
  EXPECT_EQ(text("abc\0efg"sv, 5, StringEncoding::UTF8), "abc");
  EXPECT_EQ(text("abc\0"sv, 500, StringEncoding::ASCII), "abc");
}

TEST(StringWithCString, AMaximumOfZeroReadsToTheTerminator) {
  EXPECT_EQ(text("abcdefg\0"sv, 0, StringEncoding::UTF8), "abcdefg");
  EXPECT_EQ(text("a\0b\0\0\0"sv, 0, StringEncoding::UTF16LittleEndian), "ab");
  EXPECT_EQ(text("a\0\0\0\0\0\0\0"sv, 0, StringEncoding::UTF32LittleEndian), "a");
  const std::string longText(100000, 'x');
  EXPECT_EQ(text(longText + '\0', 0, StringEncoding::UTF8), longText);
}

TEST(StringWithCString, UTF8IsReadWithoutItsMark) {
  EXPECT_EQ(text("\xEF\xBB\xBF"
                 "abc\0"sv,
                 7, StringEncoding::UTF8),
            "abc");
  EXPECT_EQ(text("\xEF\xBB\xBF"
                 "abc\0"sv,
                 0, StringEncoding::UTF8),
            "abc");
  EXPECT_EQ(text("\xEF\xBB\xBF"
                 "a",
                 4, StringEncoding::UTF8),
            "a");
  // The skipped mark does not move the end.
  EXPECT_EQ(text("\xEF\xBB\xBF"
                 "abcd",
                 5, StringEncoding::UTF8),
            "ab");
  EXPECT_EQ(text("\xEF\xBB\xBF\0"sv, 0, StringEncoding::UTF8), "");
  // With less than four bytes there is no mark.
  EXPECT_EQ(text("\xEF\xBB\xBF", 3, StringEncoding::UTF8), "\uFEFF");
  EXPECT_EQ(text("\xEF\xBB\xBF"
                 "a",
                 4, StringEncoding::ISOLatin1),
            "\u00ef\u00bb\u00bfa");
  EXPECT_EQ(text("\xEF\0"sv, 0, StringEncoding::ISOLatin1), "\u00ef");
  EXPECT_EQ(text("\0"sv, 0, StringEncoding::UTF8), "");
}

TEST(StringWithCString, UTF16IsReadInTheOrderOfItsMark) {
  for (const auto encoding :
       {StringEncoding::UTF16, StringEncoding::UTF16LittleEndian, StringEncoding::UTF16BigEndian}) {
    EXPECT_EQ(text("\xFF\xFE"
                   "a\0\xac\x20\0\0"sv,
                   0, encoding),
              "a\u20ac");
    EXPECT_EQ(text("\xFE\xFF\0a\x20\xac\0\0"sv, 0, encoding), "a\u20ac");
    EXPECT_EQ(text("\xFE\xFF\0a\x20\xac"sv, 6, encoding), "a\u20ac");
    EXPECT_EQ(text("\xFF\xFE\0\0"sv, 0, encoding), "");
  }
}

TEST(StringWithCString, UTF32IsReadInTheOrderOfItsMark) {
  for (const auto encoding :
       {StringEncoding::UTF32, StringEncoding::UTF32LittleEndian, StringEncoding::UTF32BigEndian}) {
    EXPECT_EQ(text("\xFF\xFE\0\0\xA8\xF5\x01\0\0\0\0\0"sv, 0, encoding), "\U0001F5A8");
    EXPECT_EQ(text("\0\0\xFE\xFF\0\x01\xF5\xA8\0\0\0\0"sv, 12, encoding), "\U0001F5A8");
  }
}

TEST(StringWithCString, WithoutAMarkTheEncodingDecidesTheOrder) {
  EXPECT_EQ(text("a\0b\0"sv, 4, StringEncoding::UTF16LittleEndian), "ab");
  EXPECT_EQ(text("\0a\0b"sv, 4, StringEncoding::UTF16BigEndian), "ab");
  EXPECT_EQ(text(kLittle ? "a\0"sv : "\0a"sv, 2, StringEncoding::UTF16), "a");
  EXPECT_EQ(text(kLittle ? "a\0\0\0"sv : "\0\0\0a"sv, 4, StringEncoding::UTF32), "a");
}

TEST(StringWithCString, AUnitThatTheMaximumCutsIsNotRead) {
  EXPECT_EQ(text("a\0b\0c"sv, 5, StringEncoding::UTF16LittleEndian), "ab");
  EXPECT_EQ(text("a\0\0\0b\0"sv, 6, StringEncoding::UTF32LittleEndian), "a");
}

TEST(StringWithCString, BytesMayLieAtAnyAddress) {
  const GuardedBytes bytes("xa\0b\0\0\0"sv);
  EXPECT_EQ(lumo::ZELKOR_NSStringAdditions::stringWithCString_maxLength_encoding(
                bytes.start() + 1, 6, StringEncoding::UTF16LittleEndian),
            "ab");
}

TEST(StringWithCString, AMaximumBelowAUnitGivesNothing) {
  EXPECT_EQ(text("a", 1, StringEncoding::UTF16), std::nullopt);
  EXPECT_EQ(text("a\0\0"sv, 3, StringEncoding::UTF32), std::nullopt);
  EXPECT_EQ(text("a", 1, StringEncoding::UTF8), "a");
}

TEST(StringWithCString, BytesOutsideTheEncodingGiveNothing) {
  EXPECT_EQ(text("caf\xe9\0"sv, 0, StringEncoding::UTF8), std::nullopt);
  EXPECT_EQ(text("caf\xe9\0"sv, 0, StringEncoding::ASCII), std::nullopt);
  EXPECT_EQ(text("\x3d\xd8\0\0"sv, 0, StringEncoding::UTF16LittleEndian), std::nullopt);
  // The maximum may cut a letter.
  EXPECT_EQ(text("\u20ac", 2, StringEncoding::UTF8), std::nullopt);
}

TEST(StringWithCString, AnUnknownEncodingOrNoBytesGiveNothing) {
  EXPECT_EQ(text("abc\0"sv, 0, static_cast<StringEncoding>(12345)), std::nullopt);
  EXPECT_EQ(
      lumo::ZELKOR_NSStringAdditions::stringWithCString_maxLength_encoding(nullptr, 5, StringEncoding::UTF8),
      std::nullopt);
}

TEST(StringWithCString, AnEmptyBufferGivesTheEmptyText) {
  EXPECT_EQ(text("\0"sv, 1, StringEncoding::ASCII), "");
  EXPECT_EQ(text("\0\0"sv, 2, StringEncoding::UTF16), "");
  EXPECT_EQ(text("\0\0\0\0"sv, 4, StringEncoding::UTF32), "");
}

TEST(StringWithCString, TheResultMayBeChanged) {
  auto result = text("abc\0"sv, 0, StringEncoding::UTF8);
  ASSERT_TRUE(result);
  result->append("def");
  EXPECT_EQ(*result, "abcdef");
}

TEST(Hexdump, IsEmptyForEveryRangeInsideTheData) {
  const platform::Data data(40, std::byte{7});
  for (std::size_t location = 0; location <= data.size(); ++location) {
    for (std::size_t length = 0; length <= data.size() - location; ++length) {
      EXPECT_EQ(hexdump(data, {location, length}), "");
    }
  }
}

TEST(Hexdump, ARangeOutsideOfTheDataIsAnError) {
  const platform::Data data(4);
  for (const lumo::Range range : {lumo::Range{0, 5}, {4, 1}, {5, 0}, {1, static_cast<std::size_t>(-1)}}) {
    EXPECT_THROW(hexdump(data, range), std::out_of_range) << range.location;
  }
}

}  // namespace

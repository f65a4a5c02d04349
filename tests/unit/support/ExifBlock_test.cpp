#include "support/ExifBlock.h"

#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/unit/support/exif_fixture.h"

namespace {

using exif_fixture::bytesOf;
using exif_fixture::Entry;
using exif_fixture::number;
using exif_fixture::text;
using exif_fixture::tiff;
using exif_fixture::undefined;
using lumo::ExifBlock;

constexpr std::uint32_t kMake = 0x010F;
constexpr std::uint32_t kExposure = 0x829A;
constexpr std::uint32_t kTaken = 0x9003;
constexpr std::uint32_t kMakerNote = 0x927C;
constexpr std::uint32_t kComment = 0x9286;
constexpr std::uint32_t kLensModel = 0xA434;
constexpr std::size_t kLimit = 65527;

std::vector<Entry> camera(bool isBigEndian) {
  return {{kExposure, 5, 1, bytesOf(1, 4, isBigEndian) + bytesOf(60, 4, isBigEndian)},
          text(kTaken, "2026:11:21 10:00:00"),
          undefined(kMakerNote, "a note with positions of its own"),
          text(kLensModel, "Lumo 35 mm")};
}

std::string commentOf(const ExifBlock& block) {
  const auto comment = block.userComment();
  return comment ? std::string(comment->bytes) : "(none)";
}

class ByteOrderTest : public ::testing::TestWithParam<bool> {};

TEST_P(ByteOrderTest, AFirstCommentLeavesEveryOtherValueWhereItWas) {
  const std::string before = tiff({text(kMake, "Lumocam")}, camera(GetParam()), GetParam());
  auto block = ExifBlock::read(before);
  ASSERT_TRUE(block);
  EXPECT_EQ(block->isBigEndian(), GetParam());
  EXPECT_FALSE(block->userComment());
  auto expected = block->dictionary();
  ASSERT_EQ(expected.size(), 4U);

  ASSERT_TRUE(block->setUserComment("ASCII...a comment", kLimit));
  EXPECT_EQ(commentOf(*block), "ASCII...a comment");
  expected.set("UserComment", "ASCII...a comment");
  EXPECT_EQ(block->dictionary(), expected);
  for (const std::string value : {"Lumocam", "2026:11:21 10:00:00", "a note with positions", "Lumo 35 mm"}) {
    EXPECT_EQ(block->bytes().find(value), before.find(value)) << value;
  }
  // The entries stay in the order of their tags.
  std::vector<std::string> names;
  for (const auto& [name, value] : block->dictionary()) {
    names.push_back(name);
  }
  EXPECT_EQ(names, (std::vector<std::string>{"ExposureTime", "DateTimeOriginal", "MakerNote", "UserComment",
                                             "LensModel"}));
}

TEST_P(ByteOrderTest, AnImageWithoutAnExifDirectoryGetsOne) {
  auto block = ExifBlock::read(
      tiff({text(kMake, "Lumocam"), number(0x8825, 8, GetParam())}, std::nullopt, GetParam()));
  ASSERT_TRUE(block);
  EXPECT_TRUE(block->dictionary().empty());
  ASSERT_TRUE(block->setUserComment("ASCII...a comment", kLimit));
  const auto again = ExifBlock::read(block->bytes());
  ASSERT_TRUE(again);
  EXPECT_EQ(commentOf(*again), "ASCII...a comment");
  EXPECT_NE(again->bytes().find("Lumocam"), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(, ByteOrderTest, ::testing::Bool(),
                         [](const auto& order) { return order.param ? "Big" : "Little"; });

TEST(ExifBlockTest, AHundredCommentsTakeNoMoreRoomThanTheLast) {
  auto block = ExifBlock::read(tiff({}, camera(false)));
  ASSERT_TRUE(block);
  ASSERT_TRUE(block->setUserComment("ASCII...last", kLimit));
  const std::size_t size = block->bytes().size();
  for (std::size_t i = 0; i < 100; ++i) {
    ASSERT_TRUE(block->setUserComment(std::string(1000 + i * 37 % 500, 'x'), kLimit));
  }
  ASSERT_TRUE(block->setUserComment("ASCII...last", kLimit));
  EXPECT_EQ(block->bytes().size(), size);
}

TEST(ExifBlockTest, ACommentInTheMiddleIsReplacedWhereItWasIfTheNewOneFits) {
  const std::string before =
      tiff({}, {{undefined(kComment, std::string(40, 'o')), text(kLensModel, "Lumo 35 mm")}});
  auto block = ExifBlock::read(before);
  ASSERT_TRUE(block);
  ASSERT_TRUE(block->setUserComment("ASCII...short", kLimit));
  EXPECT_EQ(block->bytes().size(), before.size());
  ASSERT_TRUE(block->setUserComment(std::string(60, 'n'), kLimit));
  EXPECT_EQ(block->bytes().size(), before.size() + 60);
  EXPECT_EQ(block->bytes().find("Lumo 35 mm"), before.find("Lumo 35 mm"));
}

TEST(ExifBlockTest, WhatWouldBeLargerThanTheLimitChangesNothing) {
  const std::string before = tiff({}, camera(false));
  auto block = ExifBlock::read(before);
  ASSERT_TRUE(block);
  // A directory of one entry more, and the comment.
  const std::size_t added = 2 + 5 * 12 + 4;
  const std::size_t most = kLimit - before.size() - before.size() % 2 - added;
  EXPECT_FALSE(block->setUserComment(std::string(most + 1, 'x'), kLimit));
  EXPECT_FALSE(block->setUserComment(std::string(kLimit + 1, 'x'), kLimit));
  EXPECT_EQ(block->bytes(), before);
  EXPECT_FALSE(block->userComment());
  EXPECT_TRUE(block->setUserComment(std::string(most, 'x'), kLimit));
  EXPECT_EQ(block->bytes().size(), kLimit);
}

TEST(ExifBlockTest, ADirectoryThatIsFullTakesNoComment) {
  constexpr std::size_t kMostEntries = 65535;
  const std::vector<Entry> full(kMostEntries, number(1, 7));
  for (const std::string& bytes : {tiff({}, full), tiff(full, std::nullopt)}) {
    auto block = ExifBlock::read(bytes);
    ASSERT_TRUE(block);
    EXPECT_FALSE(block->setUserComment("a comment", 10'000'000));
    EXPECT_EQ(block->bytes(), bytes);
  }
  auto block = ExifBlock::read(tiff({}, std::vector<Entry>(kMostEntries - 1, number(1, 7))));
  ASSERT_TRUE(block);
  EXPECT_TRUE(block->setUserComment("a comment", 10'000'000));
}

TEST(ExifBlockTest, TheDictionaryIsForPeople) {
  const auto block =
      ExifBlock::read(tiff({}, {{{0x829A, 5, 1, bytesOf(1, 4, false) + bytesOf(4, 4, false)},
                                 {0x8827, 3, 2, bytesOf(100, 2, false) + bytesOf(200, 2, false)},
                                 text(0x9003, "2026:11:21 10:00:00"),
                                 {0x9204, 10, 1, bytesOf(-1U, 4, false) + bytesOf(2, 4, false)},
                                 undefined(kMakerNote, std::string(500, 'm')),
                                 undefined(0x9101, std::string("\1\2\3\0", 4)),
                                 {0x9209, 9, 1, bytesOf(-7U, 4, false)},
                                 {0xA001, 8, 1, bytesOf(0xFFFE, 2, false)},
                                 undefined(0xA000, "0100"),
                                 {0xA433, 2, 0, ""},
                                 {0xBEEF, 4, 1, bytesOf(4'000'000'000, 4, false)}}}));
  ASSERT_TRUE(block);
  const platform::Dictionary expected{{"ExposureTime", 0.25},
                                      {"ISOSpeedRatings", platform::Array{100, 200}},
                                      {"DateTimeOriginal", "2026:11:21 10:00:00"},
                                      {"ExposureBiasValue", -0.5},
                                      {"MakerNote", "(500 bytes)"},
                                      {"ComponentsConfiguration", "(4 bytes)"},
                                      {"Flash", -7},
                                      {"ColorSpace", -2},
                                      {"FlashPixVersion", "0100"},
                                      {"LensMake", ""},
                                      {"0xbeef", std::int64_t{4'000'000'000}}};
  EXPECT_EQ(block->dictionary(), expected);
}

TEST(ExifBlockTest, WhatIsNoBlockGivesNone) {
  const std::string good = tiff({}, camera(false));
  std::string outside = good;
  outside.replace(4, 4, bytesOf(static_cast<std::uint32_t>(good.size()), 4, false));
  std::string inHeader = good;
  inHeader.replace(4, 4, bytesOf(4, 4, false));
  std::string manyEntries = good;
  manyEntries.replace(8, 2, "\xFF\xFF");
  std::string farExif = good;
  farExif.replace(8 + 2 + 8, 4, "\xFF\xFF\xFF\xFF");
  for (const std::string& bytes :
       {std::string(), std::string("II*\0", 4), std::string("II\0*", 4) + good.substr(4),
        "XX" + good.substr(2), outside, inHeader, manyEntries, farExif}) {
    EXPECT_FALSE(ExifBlock::read(bytes));
  }
}

TEST(ExifBlockTest, AValueThatLiesOutsideIsDamagedAndCanBeReplaced) {
  std::string bytes = tiff({}, {{undefined(kComment, "ASCII...comment")}});
  const std::size_t place = bytes.find("ASCII");
  const std::string position = bytesOf(static_cast<std::uint32_t>(place), 4, false);
  bytes.replace(bytes.find(position), 4, bytesOf(0x7FFFFFFF, 4, false));
  auto block = ExifBlock::read(bytes);
  ASSERT_TRUE(block);
  EXPECT_FALSE(block->userComment());
  EXPECT_EQ(block->dictionary(), (platform::Dictionary{{"UserComment", "(damaged)"}}));
  ASSERT_TRUE(block->setUserComment("ASCII...new", kLimit));
  EXPECT_EQ(commentOf(*block), "ASCII...new");
}

TEST(ExifBlockTest, ACommentThatLiesUponADirectoryIsRefusedOrWhole) {
  const std::string good = tiff({text(kMake, "Lumocam")}, {{undefined(kComment, "ASCII...comment")}});
  const std::size_t entry = good.find(bytesOf(kComment, 2, false));
  for (std::uint32_t position = 0; position < good.size(); ++position) {
    std::string bytes = good;
    bytes.replace(entry + 8, 4, bytesOf(position, 4, false));
    bytes.replace(entry + 4, 4, bytesOf(static_cast<std::uint32_t>(good.size()) - position, 4, false));
    auto block = ExifBlock::read(bytes);
    ASSERT_TRUE(block);
    for (const std::size_t size : {9, 40, 4000}) {
      ExifBlock changed = *block;
      if (changed.setUserComment(std::string(size, 'c'), kLimit)) {
        EXPECT_EQ(commentOf(changed), std::string(size, 'c')) << position;
      } else {
        EXPECT_EQ(changed.bytes(), bytes) << position;
      }
    }
  }
}

TEST(ExifBlockTest, NoBytesLeadOutside) {
  const std::string good = tiff({text(kMake, "Lumocam")}, camera(true), true);
  std::mt19937 random(1);
  int read = 0;
  for (int i = 0; i < 20000; ++i) {
    std::string bytes = good.substr(0, random() % 4 == 0 ? random() % good.size() : good.size());
    for (unsigned change = random() % 6; change > 0 && !bytes.empty(); --change) {
      bytes[random() % bytes.size()] = static_cast<char>(random() % 3 == 0 ? 0xFF : random());
    }
    if (auto block = ExifBlock::read(bytes)) {
      ++read;
      block->dictionary();
      if (block->setUserComment("ASCII...comment", kLimit)) {
        EXPECT_EQ(commentOf(*block), "ASCII...comment");
      }
    }
  }
  EXPECT_GT(read, 1000);
}

}  // namespace

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/ZELKOR_NSStringAdditions.h"

namespace {

using lumo::ComparisonResult;
using lumo::Range;
using lumo::ZELKOR_NSStringAdditions::myLocalizedCompare;
using lumo::ZELKOR_NSStringAdditions::numericalCaseInsensitiveCompare;
using lumo::ZELKOR_NSStringAdditions::stringByDeletingCharactersInSet;
constexpr auto replacing =
    &lumo::ZELKOR_NSStringAdditions::stringByReplacingSubStrings_withValues_options_range;

struct Comparison {
  std::string one;
  std::string other;
  ComparisonResult result;
};

ComparisonResult reversed(ComparisonResult result) {
  return static_cast<ComparisonResult>(-static_cast<int>(result));
}

TEST(NumericalCaseInsensitiveCompare, OrdersNumbersByTheirValue) {
  const std::vector<Comparison> rows = {
      {"a2", "A10", ComparisonResult::Ascending},
      {"file9", "File10", ComparisonResult::Ascending},
      {"FILE10", "file10", ComparisonResult::Same},
      {"a10b2", "a10b10", ComparisonResult::Ascending},
      {"a02", "a2", ComparisonResult::Same},
      {"a0", "a", ComparisonResult::Descending},
      {"a", "b", ComparisonResult::Ascending},
      {"a1", "ab", ComparisonResult::Ascending},
      {"", "", ComparisonResult::Same},
      {"", "a", ComparisonResult::Ascending},
      {"99999999999999999999999999999998", "99999999999999999999999999999999", ComparisonResult::Ascending},
      {"100000000000000000000000000000000000", "99999999999999999999999999999999999",
       ComparisonResult::Descending},
      {"K\u00dcCHE 2", "k\u00fcche 10", ComparisonResult::Ascending},
      {"caf\u00e9", "CAFE\u0301", ComparisonResult::Same},
      {"\xff 1", "\uFFFD 2", ComparisonResult::Ascending},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(numericalCaseInsensitiveCompare(row.one, row.other), row.result) << row.one;
    EXPECT_EQ(numericalCaseInsensitiveCompare(row.other, row.one), reversed(row.result)) << row.one;
  }
}

TEST(MyLocalizedCompare, ComparesNamesWithoutFolderAndExtension) {
  const std::vector<Comparison> rows = {
      {"/z/alpha.jpg", "/a/BETA.png", ComparisonResult::Ascending},
      {"/z/Photo.jpg", "photo.tiff", ComparisonResult::Same},
      {"/z/photo.jpg/", "photo", ComparisonResult::Same},
      {"a10", "a2", ComparisonResult::Ascending},
      {"archive.tar.gz", "archive.tar", ComparisonResult::Descending},
      {"/", "", ComparisonResult::Descending},
      {"/", "/", ComparisonResult::Same},
      {"\u00c4pfel", "\u00e4pfel.jpg", ComparisonResult::Same},
      // No language's order: a dictionary has it between the two.
      {"\u00e4pfel", "zebra", ComparisonResult::Ascending},
      {".profile", ".Profile.txt", ComparisonResult::Same},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(myLocalizedCompare(row.one, row.other), row.result) << row.one;
    EXPECT_EQ(myLocalizedCompare(row.other, row.one), reversed(row.result)) << row.one;
  }
}

TEST(StringByDeletingCharactersInSet, RemovesEveryCharacterOfTheSet) {
  const auto set = lumo::characterSetWithCharactersInString("-/ \u20ac");
  EXPECT_EQ(stringByDeletingCharactersInSet("12-34/56 7\u20ac--", set), "1234567");
  EXPECT_EQ(stringByDeletingCharactersInSet("\u00e9\u20ac\u20ad", set), "\u00e9\u20ad");
  EXPECT_EQ(stringByDeletingCharactersInSet("", set), "");
  EXPECT_EQ(stringByDeletingCharactersInSet("--", set), "");
  EXPECT_EQ(stringByDeletingCharactersInSet("a1b2", [](char32_t c) { return c < U'A'; }), "ab");
  EXPECT_EQ(stringByDeletingCharactersInSet("a-b", lumo::characterSetWithCharactersInString("")), "a-b");
}

TEST(StringByDeletingCharactersInSet, WhatIsNoStringGivesNothing) {
  const auto set = lumo::characterSetWithCharactersInString("1");
  EXPECT_EQ(stringByDeletingCharactersInSet(123, set), std::nullopt);
  EXPECT_EQ(stringByDeletingCharactersInSet(platform::Array{"1"}, set), std::nullopt);
}

using Texts = std::vector<std::optional<std::string>>;

TEST(StringByReplacingSubStrings, TheSecondOfTwoSearchesWithOneValueIsDeleted) {
  EXPECT_EQ(replacing("one two one two", Texts{"one", "two"}, Texts{"1"}, 0, Range{0, 15}), "1  1 ");
}

TEST(StringByReplacingSubStrings, ReplacesInTheirOrder) {
  struct Row {
    const char* text;
    Texts searches;
    Texts values;
    unsigned options;
    const char* result;
  };
  const std::vector<Row> rows = {
      {"abc", {"a", "b"}, {"x", "y"}, 0, "xyc"},
      // A later search finds what an earlier one has put in.
      {"abc", {"a", "b"}, {"b", "z"}, 0, "zzc"},
      {"abc", {"b", "a"}, {"z", "b"}, 0, "bzc"},
      // What has been put in is not searched again for the same text.
      {"aa", {"a"}, {"aa"}, 0, "aaaa"},
      {"abc", {"a", std::nullopt, "c"}, {"x", "y", "z"}, 0, "xbc"},
      {"abc", {"a", "b"}, {std::nullopt, "y"}, 0, "yc"},
      {"abc", {}, {"x"}, 0, "abc"},
      {"abc", {""}, {"x"}, 0, "abc"},
      {"aAa", {"a"}, {"x"}, 0, "xAx"},
      {"aAa", {"a"}, {"x"}, lumo::CaseInsensitiveSearch, "xxx"},
      {"\u00c4\u00e4", {"\u00e4"}, {"ae"}, lumo::CaseInsensitiveSearch, "aeae"},
      {"aaa", {"aa"}, {"x"}, 0, "xa"},
      {"aaa", {"aa"}, {"x"}, lumo::BackwardsSearch, "ax"},
      {"aabcab", {"ab"}, {"xy"}, lumo::BackwardsSearch, "axycxy"},
      {"ababcab", {"ab"}, {"x"}, lumo::AnchoredSearch, "xxcab"},
      {"cababcab", {"ab"}, {"x"}, lumo::AnchoredSearch, "cababcab"},
      {"ababcab", {"ab"}, {"x"}, lumo::AnchoredSearch | lumo::BackwardsSearch, "ababcx"},
      {"ABab", {"ab"}, {"x"}, lumo::AnchoredSearch | lumo::CaseInsensitiveSearch, "xx"},
  };
  for (const Row& row : rows) {
    const std::string text = row.text;
    std::size_t characters = 0;
    for (const char byte : text) {
      characters += (static_cast<unsigned char>(byte) & 0xC0) != 0x80 ? 1U : 0U;
    }
    EXPECT_EQ(replacing(text, row.searches, row.values, row.options, Range{0, characters}), row.result)
        << row.text;
  }
}

TEST(StringByReplacingSubStrings, NeverChangesTheTextOutsideOfTheRange) {
  EXPECT_EQ(replacing("aaaaa", Texts{"a"}, Texts{"bb"}, 0, Range{1, 2}), "abbbbaa");
  EXPECT_EQ(replacing("aaaaa", Texts{"a"}, Texts{}, 0, Range{0, 2}), "aaa");
  EXPECT_EQ(replacing("aaaaa", Texts{"a"}, Texts{}, 0, Range{3, 2}), "aaa");
  EXPECT_EQ(replacing("aaaaa", Texts{"a"}, Texts{"b"}, 0, Range{5, 0}), "aaaaa");
  // An occurrence that the range cuts is none.
  EXPECT_EQ(replacing("abab", Texts{"ab"}, Texts{"x"}, 0, Range{1, 3}), "abx");
  EXPECT_EQ(replacing("abab", Texts{"ab"}, Texts{"x"}, 0, Range{1, 2}), "abab");
  // Counted in characters.
  EXPECT_EQ(replacing("\u20aca\u20aca", Texts{"a"}, Texts{"b"}, 0, Range{0, 2}), "\u20acb\u20aca");
}

TEST(StringByReplacingSubStrings, ARangeOutsideOfTheTextIsAnError) {
  for (const Range range : {Range{0, 4}, {3, 1}, {4, 0}, {1, static_cast<std::size_t>(-1)}}) {
    EXPECT_THROW(replacing("abc", Texts{"a"}, Texts{}, 0, range), std::out_of_range);
  }
}

TEST(StringByReplacingSubStrings, WhatIsNoStringGivesNothing) {
  EXPECT_EQ(replacing(1.5, Texts{"1"}, Texts{}, 0, Range{}), std::nullopt);
  EXPECT_EQ(replacing(platform::Dictionary{}, Texts{"1"}, Texts{}, 0, Range{}), std::nullopt);
}

}  // namespace

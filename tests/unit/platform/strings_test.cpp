#include "platform/strings.h"

#include <algorithm>
#include <random>

#include <gtest/gtest.h>

namespace {

using namespace platform;
using Texts = std::vector<std::string>;

struct Pair {
  std::string given;
  std::string result;
};

TEST(Strings, TrimsSpacesOfAllKinds) {
  const std::vector<Pair> table = {
      {"", ""},
      {" ", ""},
      {"a", "a"},
      {" \t\r\n\v\f a b \n", "a b"},
      {"\u00A0a\u00A0", "a"},
      {"\u0085\u2028\u2029a\u3000", "a"},
      {"\u1680\u2000\u200A\u202F\u205Fa\u2003\u2009", "a"},
      {"\u00A0 \u3000\n", ""},
      {"a\u00A0b", "a\u00A0b"},
      // No spaces: a zero-width space, a letter that shares its last byte with one, and a lone byte.
      {"\u200Ba\u200B", "\u200Ba\u200B"},
      {"\u0105\u0120", "\u0105\u0120"},
      {"\x85"
       "a\xA0",
       "\x85"
       "a\xA0"},
  };
  for (const auto& [given, result] : table) {
    EXPECT_EQ(trimmed(given), result) << given;
  }
}

TEST(Strings, ChangesTheCaseOfAsciiAlone) {
  EXPECT_EQ(lowercase("AbZ@[`{ÄÖ1"), "abz@[`{ÄÖ1");
  EXPECT_EQ(uppercase("aBz@[`{äö1"), "ABZ@[`{äö1");
  EXPECT_EQ(uppercase("lumo-reg-code"), "LUMO-REG-CODE");
  EXPECT_EQ(lowercase(""), "");
}

TEST(Strings, ComparesIgnoringCase) {
  EXPECT_TRUE(equalIgnoringCase("Receipt", "rECEIPT"));
  EXPECT_TRUE(equalIgnoringCase("", ""));
  EXPECT_FALSE(equalIgnoringCase("a", "ab"));
  EXPECT_FALSE(equalIgnoringCase("ab", "a"));
  EXPECT_FALSE(equalIgnoringCase("[", "{"));
  EXPECT_FALSE(equalIgnoringCase("ä", "Ä"));

  EXPECT_TRUE(hasPrefixIgnoringCase("FILE:///x", "file:"));
  EXPECT_TRUE(hasPrefixIgnoringCase("a", ""));
  EXPECT_FALSE(hasPrefixIgnoringCase("fil", "file:"));
  EXPECT_FALSE(hasPrefixIgnoringCase("xfile:", "file:"));

  EXPECT_TRUE(containsIgnoringCase("x Lumo-Juniva/2", "lumo-juniva"));
  EXPECT_TRUE(containsIgnoringCase("", ""));
  EXPECT_TRUE(containsIgnoringCase("aab", "AB"));
  EXPECT_FALSE(containsIgnoringCase("lumo", "lumo-juniva"));
}

TEST(Strings, SplitsAndKeepsEmptyPieces) {
  EXPECT_EQ(componentsSeparatedBy("", ","), Texts({""}));
  EXPECT_EQ(componentsSeparatedBy("a", ","), Texts({"a"}));
  EXPECT_EQ(componentsSeparatedBy(",", ","), Texts({"", ""}));
  EXPECT_EQ(componentsSeparatedBy("a,,b,", ","), Texts({"a", "", "b", ""}));
  EXPECT_EQ(componentsSeparatedBy("a, b", ", "), Texts({"a", "b"}));
  EXPECT_EQ(componentsSeparatedBy("aaa", "aa"), Texts({"", "a"}));
  EXPECT_EQ(componentsSeparatedBy("ab", ""), Texts({"ab"}));
}

TEST(Strings, ReplacesFromTheLeft) {
  EXPECT_EQ(replacingOccurrences("http://http://http://x", "http://http://", "http://"), "http://http://x");
  EXPECT_EQ(replacingOccurrences("aaa", "aa", "a"), "aa");
  EXPECT_EQ(replacingOccurrences("abcabc", "b", ""), "acac");
  EXPECT_EQ(replacingOccurrences("abc", "", "x"), "abc");
  EXPECT_EQ(replacingOccurrences("", "a", "x"), "");
  EXPECT_EQ(replacingOccurrences("ABC", "b", "x"), "ABC");
  EXPECT_EQ(replacingOccurrences("a", "a", "aa"), "aa");
  EXPECT_EQ(replacingOccurrencesIgnoringCase("[junivaserver]/[JunivaServer]", "[junivaserver]", "h"), "h/h");
  EXPECT_EQ(replacingOccurrencesIgnoringCase("aBcÄ", "ABC", "ä"), "äÄ");
  EXPECT_EQ(replacingOccurrencesIgnoringCase("abc", "", "x"), "abc");
}

TEST(Strings, KnowsValidUtf8) {
  for (const std::string valid : {"", "a", "\x7F", "\u0080", "\u07FF", "\u0800", "\uD7FF", "\uE000", "\uFFFF",
                                  "\U00010000", "\U0010FFFF"}) {
    EXPECT_TRUE(isValidUtf8(valid)) << valid;
    EXPECT_EQ(validUtf8(valid), valid);
  }
  EXPECT_TRUE(isValidUtf8(std::string_view("\0", 1)));
}

TEST(Strings, ReplacesEachMaximalPartThatIsNoUtf8) {
  const std::string one = "\uFFFD";
  const std::vector<Pair> table = {
      {"\x80", one},
      {"\xFF\xFE", one + one},
      {"a\xE4z", "a" + one + "z"},
      // Over-long forms, surrogates and what lies beyond the last plane: no byte of them belongs together.
      {"\xC0\xAF", one + one},
      {"\xE0\x80\xAF", one + one + one},
      {"\xF0\x8F\xBF\xBF", one + one + one + one},
      {"\xED\xA0\x80", one + one + one},
      {"\xF4\x90\x80\x80", one + one + one + one},
      {"\xF5\x80", one + one},
      // Cut characters: all that is there of each is one part.
      {"\xE2\x82", one},
      {"\xF0\x9F\x98", one},
      {"\xE2\x82z\xF0\x9F\x98\x41", one + "z" + one + "A"},
      {"\xF0\x9F\x98\xE2\x82\xAC", one + "\u20AC"},
      {"\xC3\xC3\xA4", one + "ä"},
      // The example of the Unicode standard, table 3-11.
      {"\xF1\x80\x80\xE1\x80\xC2\x62\x80\x63\x80\xBF\x64",
       one + one + one + "b" + one + "c" + one + one + "d"},
  };
  for (const auto& [given, result] : table) {
    EXPECT_FALSE(isValidUtf8(given));
    EXPECT_EQ(validUtf8(given), result);
  }
}

TEST(Strings, TakesAnyBytes) {
  std::mt19937 random(20261121);
  const std::string pieces[] = {"a",    " ",    "\xC2",     "\xA0", "\xE3\x80\x80",
                                "\xE2", "\x80", "\xF0\x9F", "%",    "\n"};
  for (int round = 0; round < 20000; ++round) {
    std::string text;
    for (auto count = random() % 12; count > 0; --count) {
      text += pieces[random() % std::size(pieces)];
    }
    const std::string repaired = validUtf8(text);
    EXPECT_TRUE(isValidUtf8(repaired));
    EXPECT_EQ(repaired == text, isValidUtf8(text));
    EXPECT_EQ(trimmed(trimmed(text)), trimmed(text));
    EXPECT_EQ(componentsSeparatedBy(text, "a").size(),
              1 + static_cast<std::size_t>(std::count(text.begin(), text.end(), 'a')));
  }
}

}  // namespace

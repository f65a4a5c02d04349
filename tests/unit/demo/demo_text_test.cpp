#include <gtest/gtest.h>

#include "demo/text.h"

namespace juniva {
namespace {

TEST(DemoHtmlEscape, TakesAwayWhatMarkupIsMadeOf) {
  EXPECT_EQ(htmlEscape("<a href=\"x\">'&'</a>"), "&lt;a href=&quot;x&quot;&gt;&#39;&amp;&#39;&lt;/a&gt;");
  EXPECT_EQ(htmlEscape("&amp;"), "&amp;amp;");
  EXPECT_EQ(htmlEscape("Zoë 13 × 18\n\t€"), "Zoë 13 × 18\n\t€");
  EXPECT_EQ(htmlEscape(""), "");
}

TEST(DemoHtmlEscape, ReplacesControlsAndBrokenUtf8) {
  const std::string mark = "\xEF\xBF\xBD";
  EXPECT_EQ(htmlEscape(std::string_view("a\0b", 3)), "a" + mark + "b");
  EXPECT_EQ(htmlEscape("\x1b\x7f"), mark + mark);
  EXPECT_EQ(htmlEscape("\xC2\x85"), mark);  // a C1 control
  EXPECT_EQ(htmlEscape("\xff<"), mark + "&lt;");
  EXPECT_EQ(htmlEscape("\xC3"), mark);             // cut off in the middle
  EXPECT_EQ(htmlEscape("\xC0\xBC"), mark + mark);  // an overlong '<'
}

TEST(DemoUtf8, KnowsWellFormedCharacters) {
  const struct {
    std::string_view text;
    std::size_t length;
  } rows[] = {
      {"a", 1},
      {"é", 2},
      {"€", 3},
      {"😀", 4},
      {"", 0},
      {"\x80", 0},
      {"\xC1\x81", 0},          // overlong
      {"\xE0\x80\x80", 0},      // overlong
      {"\xED\xA0\x80", 0},      // surrogate
      {"\xF0\x80\x80\x80", 0},  // overlong
      {"\xF4\x90\x80\x80", 0},  // beyond U+10FFFF
      {"\xF5\x80\x80\x80", 0},
      {"\xE2\x82", 0},
  };
  for (const auto& row : rows)
    EXPECT_EQ(utf8CharacterLength(row.text, 0), row.length) << htmlEscape(row.text);
  EXPECT_EQ(utf8CharacterLength("a", 7), 0u);
  EXPECT_EQ(utf8Length("Zoë €"), 5u);
  EXPECT_TRUE(isValidUtf8("Zoë"));
  EXPECT_FALSE(isValidUtf8("Zo\xEB"));
}

TEST(DemoLogField, StaysOneWord) {
  const struct {
    std::string_view text;
    std::string_view field;
  } rows[] = {
      {"", "-"},
      {"/registrationorders?a=1", "/registrationorders?a=1"},
      {"a b", "a\\x20b"},
      {"a\r\nb", "a\\x0D\\x0Ab"},
      {"\x1b[31m", "\\x1B[31m"},
      {"back\\slash", "back\\\\slash"},
      {"Zoë", "Zoë"},
      {"\xff", "\\xFF"},
      {"\xC2\x85", "\\xC2\\x85"},
      {"\xE2\x80\xA8", "\\xE2\\x80\\xA8"},
      {"\"", "\""},
  };
  for (const auto& row : rows) EXPECT_EQ(logField(row.text), row.field);
}

TEST(DemoLogField, QuotedKeepsBlanksAndHidesQuotes) {
  EXPECT_EQ(quotedLogField("curl \"7\" \\\n"), "curl \\\"7\\\" \\\\\\x0A");
}

TEST(DemoLogField, EndsAtItsLimit) {
  EXPECT_EQ(logField("abcdef", 6), "abcdef");
  EXPECT_EQ(logField("abcdefg", 6), "abcdef...");
}

TEST(DemoHeaderText, CannotBreakAHeader) {
  EXPECT_EQ(headerText("a\r\nSet-Cookie: x"), "a  Set-Cookie: x");
  EXPECT_EQ(headerText("  Zoë \n"), "Zoë");
  EXPECT_EQ(plusForBlanks("2 x Clara\n"), "2+x+Clara");
}

TEST(DemoPercentDecode, Table) {
  EXPECT_EQ(percentDecode("a%20b+c", true), "a b c");
  EXPECT_EQ(percentDecode("a%20b+c", false), "a b+c");
  EXPECT_EQ(percentDecode("%C3%AB", false), "ë");
  EXPECT_EQ(percentDecode("%2b%2F", true), "+/");
  for (const std::string_view broken : {"%", "%4", "%zz", "%4g", "%00", "%ff", "%C3"}) {
    EXPECT_EQ(percentDecode(broken, true), std::nullopt) << broken;
  }
}

TEST(DemoPercentEncode, KeepsUnreservedOnly) {
  EXPECT_EQ(percentEncode("A-1042"), "A-1042");
  EXPECT_EQ(percentEncode("a b&c=ë"), "a%20b%26c%3D%C3%AB");
}

TEST(DemoWholeNumber, TakesDigitsWithinBoundsOnly) {
  EXPECT_EQ(parseWholeNumber("0", 0, 99), 0);
  EXPECT_EQ(parseWholeNumber("99", 0, 99), 99);
  EXPECT_EQ(parseWholeNumber("007", 0, 99), 7);
  for (const std::string_view wrong : {"", "-1", "-0", "+1", "100", "1.0", "1 ", " 1", "x", "99999999999"}) {
    EXPECT_EQ(parseWholeNumber(wrong, 0, 99), std::nullopt) << wrong;
  }
}

}  // namespace
}  // namespace juniva

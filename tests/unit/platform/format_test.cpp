#include "platform/format.h"

#include <cstdio>
#include <limits>
#include <random>

#include <gtest/gtest.h>

#include "platform/strings.h"
#include "platform/url.h"
#include "platform/web_view.h"

namespace shop {

struct Order {
  int number = 0;
};
std::string description(const Order& order) {
  return "<Order " + std::to_string(order.number) + ">";
}

struct Plain {};

}  // namespace shop

namespace {

using namespace platform;

struct Row {
  std::string format;
  std::vector<FormatArgument> arguments;
  std::string result;
};

void check(const std::vector<Row>& table) {
  for (const auto& [format, arguments, result] : table) {
    EXPECT_EQ(vformat(format, arguments), result) << format;
  }
}

TEST(Format, PrintsObjects) {
  check({
      {"%@->%@....", {"AppDelegate", "ibReloadPage:"}, "AppDelegate->ibReloadPage:...."},
      {"%@", {std::string("a\nb")}, "a\nb"},
      {"%@", {std::string_view("view")}, "view"},
      {"%@", {"Größe 写真"}, "Größe 写真"},
      {"%@", {nullptr}, "(null)"},
      {"%@", {std::nullopt}, "(null)"},
      {"%@", {static_cast<const char*>(nullptr)}, "(null)"},
      {"%@", {std::optional<std::string>()}, "(null)"},
      {"%@", {std::optional<std::string>("here")}, "here"},
      {"%@ %@", {std::optional<int>(9090), std::optional<int>()}, "9090 (null)"},
      {"%@://%@:%@", {"http", "h", std::optional<int>()}, "http://h:(null)"},
      {"%@ %@ %@", {1, -2L, 3ULL}, "1 -2 3"},
      {"%@ %@", {true, false}, "1 0"},
      {"%@ %@ %@", {1.0, 0.1, 14047.2080078125}, "1 0.1 14047.2080078125"},
      {"[%@]", {""}, "[]"},
  });
}

TEST(Format, AsksObjectsForTheirDescriptions) {
  shop::Order order{7};
  shop::Order* none = nullptr;
  shop::Plain plain;
  EXPECT_EQ(stringWithFormat("%@", order), "<Order 7>");
  EXPECT_EQ(stringWithFormat("%@ %@", &order, none), "<Order 7> (null)");
  EXPECT_EQ(stringWithFormat("%@", std::optional<shop::Order>(order)), "<Order 7>");
  EXPECT_EQ(stringWithFormat("%@", &plain), stringWithFormat("%p", static_cast<const void*>(&plain)));
  EXPECT_EQ(stringWithFormat("%@", Url::parse("http://h/x")), "http://h/x");
  EXPECT_EQ(stringWithFormat("%@", std::vector<std::string>{"a", "b c"}), "(\n    a,\n    \"b c\"\n)");
  EXPECT_EQ(stringWithFormat("%@", std::vector<std::string>()), "(\n)");
  const HeaderFields headers{{"Server", "x y"}, {"Glimmerpad-Scan", "no"}};
  EXPECT_EQ(stringWithFormat("%@", headers), "{\n    Server = \"x y\";\n    Glimmerpad-Scan = no;\n}");
}

TEST(Format, PrintsNumbers) {
  constexpr auto smallest = std::numeric_limits<std::int64_t>::min();
  constexpr auto largest = std::numeric_limits<std::uint64_t>::max();
  check({
      {"%i %d", {1, -1}, "1 -1"},
      {"%u %lu", {1U, 2UL}, "1 2"},
      {"%li", {smallest}, "-9223372036854775808"},
      {"%llu", {largest}, "18446744073709551615"},
      {"%lld", {largest}, "18446744073709551615"},
      {"%qi", {std::int64_t{1} << 40}, "1099511627776"},
      // A wide number under a narrow conversion is never cut.
      {"%d", {std::int64_t{1} << 40}, "1099511627776"},
      {"%zu %td %jd", {std::size_t{1}, 2, 3}, "1 2 3"},
      {"%u %x", {-1, -1}, "4294967295 ffffffff"},
      {"%lu %llx", {-1, -1}, "18446744073709551615 ffffffffffffffff"},
      {"%.8lx  ", {16}, "00000010  "},
      {"%.2x ", {std::uint8_t{10}}, "0a "},
      {"%02X%02X", {171, 5}, "AB05"},
      {"%#x %o", {255, 8}, "0xff 10"},
      {"[%5d] [%-5d] [%05d] [%+d]", {42, 42, 42, 42}, "[   42] [42   ] [00042] [+42]"},
      {"%d%%", {50}, "50%"},
      {"%d %d", {'a', true}, "97 1"},
      {"total time = %5.2f", {1.005}, "total time =  1.00"},
      {"%f %.3f", {1.5, 1100.5}, "1.500000 1100.500"},
      {"%g %e", {0.0001, 12345.678}, "0.0001 1.234568e+04"},
      {"%f", {3}, "3.000000"},
      {"%.0f", {2.5}, "2"},
      {"%f %F",
       {std::numeric_limits<double>::infinity(), std::numeric_limits<double>::infinity()},
       "inf INF"},
      {"%5.1f|%-8.1f|", {2.25F, 2.25F}, "  2.2|2.2     |"},
      {"%*d|%-*d|%.*f", {5, 42, 5, 42, 1, 2.25}, "   42|42   |2.2"},
      {"%*d", {-5, 42}, "42   "},
      {"%.*f", {-1, 2.5}, "2.500000"},
  });
}

TEST(Format, PrintsTextsAndCharacters) {
  check({
      {"%s %@%@ %@\n", {"D2", "[x]", "", "disk full"}, "D2 [x] disk full\n"},
      {"%s", {nullptr}, "(null)"},
      {"%c%c", {'a', 0x41}, "aA"},
      {"%c%c%c", {0xE4, 0x20AC, 0x1F600}, "ä€😀"},
      {"%c%c%c", {-1, 0xD800, 0x110000}, "\uFFFD\uFFFD\uFFFD"},
      {"%5c|%-3c|", {'a', 'b'}, "    a|b  |"},
      {"%c", {0}, std::string(1, '\0')},
      {"[%5s] [%-5s] [%.2s] [%5.1s]", {"abc", "abc", "abc", "abc"}, "[  abc] [abc  ] [ab] [    a]"},
      // Fields count characters, and none is ever cut in the middle.
      {"[%.2s] [%3s] [%-3@] [%.1@]", {"äöü", "äö", "ä", "€uro"}, "[äö] [ äö] [ä  ] [€]"},
      {"[%05s]", {"a"}, "[    a]"},
      {"%p %p", {reinterpret_cast<const void*>(0x1234), nullptr}, "0x1234 0x0"},
      {"%p", {255}, "0xff"},
  });
}

TEST(Format, KeepsWhatBeginsNoConversion) {
  check({
      {"", {}, ""},
      {"plain", {}, "plain"},
      {"%", {}, "%"},
      {"%%", {}, "%"},
      {"%%@", {"x"}, "%@"},
      {"%5%|%-%", {}, "%|%"},
      {"UPDATE Progress...%5.2f%", {12.5}, "UPDATE Progress...12.50%"},
      {"100%", {}, "100%"},
      {"%5", {1}, "%5"},
      {"%-08.3l", {1}, "%-08.3l"},
      {"%y%@", {"x"}, "%yx"},
      {"%n", {1}, "%n"},
      {"%1$@", {"x"}, "%1$@"},
      {"50%ä%@", {"x"}, "50%äx"},
      {"%*", {1}, "%*"},
      {"%*y%d", {1}, "%*y1"},
  });
}

TEST(Format, PrintsWhatItCanOfOtherArguments) {
  check({
      {"%@ %@", {"a"}, "a (null)"},
      {"%d %s %f %x %c %p", {}, "(null) (null) (null) (null) (null) 0x0"},
      {"%@", {"a", "b", 3}, "a"},
      {"none", {"a"}, "none"},
      {"%d %li %x %u", {"one", "two", "three", "four"}, "one two three four"},
      {"%f %5.2f", {"one", nullptr}, "one (null)"},
      {"%d %x", {2.5, 2.5}, "2.5 2.5"},
      {"%s %s %s", {1, 2.5, -3}, "1 2.5 -3"},
      {"%c", {"text"}, "text"},
      {"%c", {1.5}, "1.5"},
      {"%p", {"text"}, "text"},
      {"%8d|%-8d|", {"one", nullptr}, "     one|(null)  |"},
      {"%.2d", {"three"}, "three"},
      {"%*d", {"wide", 4}, "4"},
      {"%*d", {}, "(null)"},
      {"%i", {std::optional<int>()}, "(null)"},
  });
}

TEST(Format, BoundsFields) {
  EXPECT_EQ(stringWithFormat("%999999999999999999999d", 1).size(), 512u);
  EXPECT_EQ(stringWithFormat("%.999999999999d", 1).size(), 512u);
  EXPECT_EQ(stringWithFormat("%*d", std::numeric_limits<std::int64_t>::min(), 1).size(), 512u);
  EXPECT_EQ(stringWithFormat("%*d", std::numeric_limits<std::uint64_t>::max(), 1).size(), 512u);
  EXPECT_EQ(stringWithFormat("%99999.99999f", 1.5).size(), 514u);
  EXPECT_EQ(stringWithFormat("%99999s", "ä").size(), 513u);
  // A long text itself is never cut.
  EXPECT_EQ(stringWithFormat("%@", std::string(100000, 'x')).size(), 100000u);
}

// The C library's own printf says what a conversion prints.
TEST(Format, PrintsNumbersAsTheCLibraryDoes) {
  std::vector<std::string> fields;
  for (const char* flags : {"", "-", "0", "+", " ", "#", "-#", "+0"}) {
    for (const char* width : {"", "3", "12"}) {
      for (const char* precision : {"", ".0", ".2", ".9"}) {
        fields.push_back(std::string("%") + flags + width + precision);
      }
    }
  }
  const auto expected = [](const std::string& format, auto value) {
    char buffer[512];
    std::snprintf(buffer, sizeof buffer, format.c_str(), value);
    return std::string(buffer);
  };
  for (const std::string& field : fields) {
    for (const long number : {1L, 7L, 255L, -1L, -123456789L, 1L << 40}) {
      for (const char* kind : {"li", "ld"}) {
        EXPECT_EQ(stringWithFormat(field + kind, number), expected(field + kind, number)) << field + kind;
      }
    }
    // Signs have no meaning for these.
    if (field.find_first_of("+ ") == std::string::npos) {
      for (const unsigned long number : {1UL, 8UL, 0xABCDUL, ~0UL}) {
        for (const char* kind : {"lu", "lx", "lX"}) {
          if (field.find('#') == std::string::npos || *kind != 'l' || kind[1] != 'u') {
            EXPECT_EQ(stringWithFormat(field + kind, number), expected(field + kind, number)) << field + kind;
          }
        }
      }
    }
    for (const double number : {0.0, 1.0, -2.5, 12345.678, 1e-7, 6.02e23}) {
      for (const char* kind : {"f", "e", "E"}) {
        EXPECT_EQ(stringWithFormat(field + kind, number), expected(field + kind, number)) << field + kind;
      }
    }
  }
}

TEST(Format, TakesAnyFormatAndAnyArguments) {
  const std::string alphabet = "%%%%%%@diuxXofFeEgGaAscpnyS*.-+ #0123456789hlqjztL$[]\xC3\xA4";
  const std::vector<FormatArgument> values = {0,
                                              -1,
                                              std::numeric_limits<std::int64_t>::min(),
                                              std::numeric_limits<std::uint64_t>::max(),
                                              0.0,
                                              -1e308,
                                              std::numeric_limits<double>::quiet_NaN(),
                                              std::numeric_limits<double>::infinity(),
                                              "",
                                              "text",
                                              "Größe",
                                              "\xFF\xC3",
                                              nullptr,
                                              reinterpret_cast<const void*>(1)};
  std::mt19937 random(20261121);
  for (int round = 0; round < 15000; ++round) {
    std::string format;
    for (auto count = random() % 16; count > 0; --count) {
      format += alphabet[random() % alphabet.size()];
    }
    std::vector<FormatArgument> arguments;
    for (auto count = random() % 5; count > 0; --count) {
      arguments.push_back(values[random() % values.size()]);
    }
    std::string result;
    ASSERT_NO_THROW(result = vformat(format, arguments)) << format;
    ASSERT_LE(result.size(), 16u * 1400u) << format;
    if (isValidUtf8(format) && arguments.empty()) {
      ASSERT_TRUE(isValidUtf8(result)) << format;
    }
  }
}

}  // namespace

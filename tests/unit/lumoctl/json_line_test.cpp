#include "tools/lumoctl/json_line.h"

#include <gtest/gtest.h>

namespace lumoctl {
namespace {

TEST(JsonString, EscapesWhatJsonDoesNotAllow) {
  using namespace std::string_view_literals;
  const std::pair<std::string_view, std::string_view> cases[] = {
      {"", R"("")"},
      {"plain / text", R"("plain / text")"},
      {R"(a"b\c)", R"("a\"b\\c")"},
      {"a\nb\rc\td", R"("a\nb\rc\td")"},
      {"\0\x01\x1f\x7f"sv, R"("\u0000\u0001\u001f\u007f")"},
      {"Grüße 😀", "\"Grüße 😀\""},
      {"a\u2028b\u2029c", R"("a\u2028b\u2029c")"},
      {"a\xff\x62", "\"a\uFFFD\x62\""},
  };
  for (const auto& [text, json] : cases) {
    EXPECT_EQ(jsonString(text), json);
  }
}

TEST(JsonLine, HasAllThreeMembers) {
  EXPECT_EQ(jsonLine({"lumoXNotification", std::nullopt, {}}),
            R"({"name":"lumoXNotification","object":null,"userInfo":{}})");
  EXPECT_EQ(jsonLine({"n", "", {}}), R"({"name":"n","object":"","userInfo":{}})");
}

TEST(JsonLine, KeepsTheOrderAndEscapesKeysToo) {
  EXPECT_EQ(jsonLine({"n", "an \"object\"", {{"z", "1"}, {"a\n", "{}"}}}),
            R"({"name":"n","object":"an \"object\"","userInfo":{"z":"1","a\n":"{}"}})");
}

}  // namespace
}  // namespace lumoctl

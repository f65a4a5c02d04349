#include "platform/property_list.h"

#include <chrono>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "platform/format.h"

namespace {

using namespace platform;

Data bytes(std::initializer_list<int> values) {
  Data data;
  for (const int value : values) {
    data.push_back(static_cast<std::byte>(value));
  }
  return data;
}

std::vector<std::string> keysOf(const Dictionary& dictionary) {
  std::vector<std::string> keys;
  for (const auto& [key, value] : dictionary) {
    keys.push_back(key);
  }
  return keys;
}

// What a pointer must never turn into is a boolean.
static_assert(!std::is_constructible_v<PropertyList, Dictionary*>);
static_assert(!std::is_constructible_v<PropertyList, const void*>);
static_assert(std::is_constructible_v<PropertyList, bool>);

TEST(Dictionary, KeepsTheOrderOfInsertion) {
  Dictionary dictionary{{"z", 1}, {"a", 2}, {"z", 3}};
  EXPECT_EQ(keysOf(dictionary), (std::vector<std::string>{"z", "a"}));
  EXPECT_EQ(*dictionary.find("z"), PropertyList(3));
  dictionary.set("a", "new");
  dictionary.set("", true);
  EXPECT_EQ(keysOf(dictionary), (std::vector<std::string>{"z", "a", ""}));
  EXPECT_EQ(*dictionary.find("a"), PropertyList("new"));
  dictionary.remove("z");
  dictionary.remove("not there");
  EXPECT_EQ(keysOf(dictionary), (std::vector<std::string>{"a", ""}));
  EXPECT_EQ(dictionary.find("z"), nullptr);
  EXPECT_FALSE(dictionary.contains("A"));
  EXPECT_TRUE(dictionary.contains(""));
  EXPECT_EQ(dictionary.size(), 2u);
  EXPECT_FALSE(dictionary.empty());
  EXPECT_TRUE(Dictionary().empty());
}

TEST(Dictionary, ComparesWithoutRegardToOrder) {
  EXPECT_EQ((Dictionary{{"a", 1}, {"b", 2}}), (Dictionary{{"b", 2}, {"a", 1}}));
  EXPECT_NE((Dictionary{{"a", 1}, {"b", 2}}), (Dictionary{{"a", 1}, {"b", 3}}));
  EXPECT_NE((Dictionary{{"a", 1}, {"b", 2}}), (Dictionary{{"a", 1}, {"c", 2}}));
  EXPECT_NE((Dictionary{{"a", 1}}), (Dictionary{{"a", 1}, {"b", 2}}));
}

// Large dictionaries look their keys up in a table: it must tell the same as a walk over the entries does.
TEST(Dictionary, FindsEveryKeyHoweverLargeItIs) {
  Dictionary dictionary;
  constexpr int count = 600;
  for (int number = 0; number < count; ++number) {
    dictionary.set("key" + std::to_string(number), number);
    ASSERT_EQ(dictionary.size(), static_cast<std::size_t>(number) + 1);
    ASSERT_FALSE(dictionary.contains("key" + std::to_string(number + 1)));
  }
  for (int number = 0; number < count; ++number) {
    ASSERT_NE(dictionary.find("key" + std::to_string(number)), nullptr);
    ASSERT_EQ(*dictionary.find("key" + std::to_string(number)), PropertyList(number));
  }
  const Dictionary copy = dictionary;
  for (int number = 0; number < count; number += 3) {
    dictionary.remove("key" + std::to_string(number));
  }
  EXPECT_EQ(dictionary.size(), 400u);
  for (int number = 0; number < count; ++number) {
    const std::string key = "key" + std::to_string(number);
    ASSERT_EQ(dictionary.contains(key), number % 3 != 0) << key;
    ASSERT_TRUE(copy.contains(key));
  }
  dictionary.set("key0", "again");
  EXPECT_EQ(keysOf(dictionary).back(), "key0");
  Dictionary moved = std::move(dictionary);
  dictionary = {};
  EXPECT_FALSE(dictionary.contains("key1"));
  EXPECT_TRUE(moved.contains("key1"));
  for (const std::string& key : keysOf(moved)) {
    if (moved.size() > 10) {
      moved.remove(key);
    }
  }
  EXPECT_EQ(moved.size(), 10u);
  EXPECT_EQ(*moved.find("key0"), PropertyList("again"));
}

TEST(PropertyList, KeepsTheKindOfItsValue) {
  EXPECT_NE(PropertyList(true).as<bool>(), nullptr);
  EXPECT_NE(PropertyList(1).as<std::int64_t>(), nullptr);
  EXPECT_NE(PropertyList(1.0).as<double>(), nullptr);
  EXPECT_NE(PropertyList("1").as<std::string>(), nullptr);
  EXPECT_NE(PropertyList(Date()).as<Date>(), nullptr);
  EXPECT_NE(PropertyList(Data()).as<Data>(), nullptr);
  EXPECT_NE(PropertyList(Array()).as<Array>(), nullptr);
  EXPECT_NE(PropertyList(Dictionary()).as<Dictionary>(), nullptr);
  EXPECT_EQ(PropertyList(true).as<std::int64_t>(), nullptr);
  EXPECT_NE(PropertyList(true), PropertyList(1));
  EXPECT_NE(PropertyList(1), PropertyList(1.0));
  EXPECT_EQ(PropertyList(Array{1, "a"}), PropertyList(Array{1, "a"}));
}

TEST(PropertyList, ReadsBooleans) {
  const std::vector<std::pair<PropertyList, std::optional<bool>>> table = {
      {true, true},
      {false, false},
      {1, true},
      {-7, true},
      {0, false},
      {0.5, true},
      {0.0, false},
      {-0.0, false},
      {"YES", true},
      {"yes", true},
      {"True", true},
      {"1", true},
      {"NO", std::nullopt},
      {"0", std::nullopt},
      {"", std::nullopt},
      {" YES", std::nullopt},
      {"10", std::nullopt},
      {Date(), std::nullopt},
      {bytes({1}), std::nullopt},
      {Array{true}, std::nullopt},
      {Dictionary{{"a", true}}, std::nullopt},
  };
  for (const auto& [value, result] : table) {
    EXPECT_EQ(boolValue(value), result) << description(value);
  }
}

TEST(PropertyList, ReadsStrings) {
  const std::vector<std::pair<PropertyList, std::optional<std::string>>> table = {
      {"", ""},
      {"a b", "a b"},
      {9090, "9090"},
      {std::numeric_limits<std::int64_t>::min(), "-9223372036854775808"},
      {5.0, "5"},
      {0.1, "0.1"},
      {true, std::nullopt},
      {Date(), std::nullopt},
      {bytes({1}), std::nullopt},
      {Array{"a"}, std::nullopt},
      {Dictionary(), std::nullopt},
  };
  for (const auto& [value, result] : table) {
    EXPECT_EQ(stringValue(value), result) << description(value);
  }
}

TEST(PropertyList, DescribesScalarsPlainly) {
  using namespace std::chrono;
  const Date date = sys_days(year(2026) / 11 / 21) + hours(2) + seconds(24) + milliseconds(999);
  const std::vector<std::pair<PropertyList, std::string>> table = {
      {true, "1"},
      {false, "0"},
      {-5, "-5"},
      {1.5, "1.5"},
      {std::nan(""), "nan"},
      {"a \"b\"\n", "a \"b\"\n"},
      {"", ""},
      {date, "2026-11-21 02:00:24 +0000"},
      {Date(milliseconds(-1)), "1969-12-31 23:59:59 +0000"},
      {Date::max(), "2262-04-11 23:47:16 +0000"},
      {Date::min(), "1677-09-21 00:12:43 +0000"},
      {Data(), "<>"},
      {bytes({0xDE, 0xAD, 0xBE, 0xEF, 1}), "<deadbeef 01>"},
      {bytes({1, 2, 3, 4}), "<01020304>"},
  };
  for (const auto& [value, text] : table) {
    EXPECT_EQ(description(value), text);
  }
}

TEST(PropertyList, DescribesTextsInsideOthersWithQuotesWhereNeeded) {
  const std::vector<std::pair<PropertyList, std::string>> table = {
      {"abc_XYZ$09", "abc_XYZ$09"},
      {"/a/b-c.d", "/a/b-c.d"},
      {"", "\"\""},
      {"a b", "\"a b\""},
      {"http://h", "\"http://h\""},
      {"a;b", "\"a;b\""},
      {"a\"b\\c", "\"a\\\"b\\\\c\""},
      {"a\nb\tc\rd", "\"a\\nb\\tc\\rd\""},
      {std::string("\0\x1B\x7F", 3), "\"\\U0000\\U001b\\U007f\""},
      {"Müller 写真", "\"Müller 写真\""},
      {1.5, "1.5"},
      {1e300, "\"1e+300\""},
      {true, "1"},
      {Date(), "\"1970-01-01 00:00:00 +0000\""},
      {bytes({1}), "<01>"},
  };
  for (const auto& [value, text] : table) {
    EXPECT_EQ(description(Array{value}), "(\n    " + text + "\n)");
    EXPECT_EQ(description(Dictionary{{"k", value}}), "{\n    k = " + text + ";\n}");
  }
  EXPECT_EQ(description(Dictionary{{"a key", 1}, {"lumo-reg-code", 2}}),
            "{\n    \"a key\" = 1;\n    lumo-reg-code = 2;\n}");
}

TEST(PropertyList, DescribesArraysAndDictionaries) {
  EXPECT_EQ(description(Array()), "(\n)");
  EXPECT_EQ(description(Dictionary()), "{\n}");
  EXPECT_EQ(description(Array{"a", "b"}), "(\n    a,\n    b\n)");
  EXPECT_EQ(description(PropertyList(Array{1})), "(\n    1\n)");
  EXPECT_EQ(description(Array{Array(), Dictionary()}), "(\n    (\n    ),\n    {\n    }\n)");
  EXPECT_EQ(description(Dictionary{{"list", Array{Dictionary{{"status", "ok"}, {"n", 1}}, 2}}, {"b", false}}),
            "{\n"
            "    list = (\n"
            "        {\n"
            "            status = ok;\n"
            "            n = 1;\n"
            "        },\n"
            "        2\n"
            "    );\n"
            "    b = 0;\n"
            "}");
}

TEST(PropertyList, DescribesDeepNesting) {
  PropertyList value = "end";
  for (int level = 0; level < 512; ++level) {
    value = Array{std::move(value)};
  }
  const std::string text = description(value);
  EXPECT_NE(text.find(std::string(std::size_t{4} * 512, ' ') + "end\n"), std::string::npos);
}

TEST(PropertyList, JoinsComponents) {
  EXPECT_EQ(componentsJoinedByString({}, ", "), "");
  EXPECT_EQ(componentsJoinedByString({"a"}, ", "), "a");
  EXPECT_EQ(componentsJoinedByString({"a b", 1, 2.5, true, ""}, ", "), "a b, 1, 2.5, 1, ");
  EXPECT_EQ(componentsJoinedByString({Array{"x"}, "y"}, "|"), "(\n    x\n)|y");
}

TEST(PropertyList, PrintsAsAnObject) {
  EXPECT_EQ(stringWithFormat("%@ %@", PropertyList("a b"), Array{"a b"}), "a b (\n    \"a b\"\n)");
  EXPECT_EQ(stringWithFormat("%@", Dictionary{{"a", 1}}), "{\n    a = 1;\n}");
  EXPECT_EQ(stringWithFormat("%@", std::optional<PropertyList>()), "(null)");
}

}  // namespace

#include "tools/lumoctl/typed_value.h"

#include <cstddef>
#include <limits>

#include <gtest/gtest.h>

namespace lumoctl {
namespace {

using platform::Array;
using platform::Dictionary;
using platform::PropertyList;
using Words = std::vector<std::string>;

TEST(TypedValue, FollowsItsType) {
  const std::pair<Words, PropertyList> cases[] = {
      {{"-string", "1"}, "1"},
      {{"-string", "-bool"}, "-bool"},
      {{"-string", ""}, ""},
      {{"-bool", "YES"}, true},
      {{"-boolean", "True"}, true},
      {{"-bool", "1"}, true},
      {{"-bool", "no"}, false},
      {{"-bool", "FALSE"}, false},
      {{"-bool", "0"}, false},
      {{"-int", "-42"}, -42},
      {{"-integer", "+7"}, 7},
      {{"-int", "9223372036854775807"}, std::numeric_limits<std::int64_t>::max()},
      {{"-float", "1.5"}, 1.5},
      {{"-float", "-2e3"}, -2000.0},
      {{"-real", "4"}, 4.0},
      {{"-date", "1970-01-01T00:00:10Z"},
       platform::Date(std::chrono::duration_cast<platform::Date::duration>(std::chrono::seconds(10)))},
      {{"-data", "00ffA1"}, platform::Data{std::byte{0}, std::byte{0xFF}, std::byte{0xA1}}},
      {{"-array"}, Array{}},
      {{"-array", "a", "b c", ""}, Array{"a", "b c", ""}},
      {{"-array", "-int", "1", "-bool", "yes", "-string", "-int", "-x"}, Array{1, true, "-int", "-x"}},
      {{"-dict"}, Dictionary{}},
      {{"-dict", "a", "1", "b", "-int", "2"}, Dictionary{{"a", "1"}, {"b", 2}}},
      {{"-dict", "-int", "x"}, Dictionary{{"-int", "x"}}},
      {{"plain"}, "plain"},
      {{"-5"}, "-5"},
      {{""}, ""},
  };
  for (const auto& [words, value] : cases) {
    const auto parsed = parseTypedValue("nobodysKey", words);
    const auto* typed = std::get_if<TypedValue>(&parsed);
    ASSERT_NE(typed, nullptr) << testing::PrintToString(words);
    EXPECT_TRUE(typed->value == value) << testing::PrintToString(words);
    EXPECT_FALSE(typed->add);
  }
}

TEST(TypedValue, IsAddedWhenTheTypeSaysSo) {
  EXPECT_TRUE(std::get<TypedValue>(parseTypedValue("k", Words{"-array-add", "a"})).add);
  const auto parsed = std::get<TypedValue>(parseTypedValue("k", Words{"-dict-add", "a", "b"}));
  EXPECT_TRUE((parsed == TypedValue{Dictionary{{"a", "b"}}, true}));
}

TEST(TypedValue, WithoutATypeFollowsTheKeyTable) {
  const auto value = [](const char* key, const char* text) {
    return std::get<TypedValue>(parseTypedValue(key, Words{text})).value;
  };
  EXPECT_TRUE(value("prefForceFullScreen", "Yes") == PropertyList(true));
  EXPECT_TRUE(value("prefForceFullScreen", "0") == PropertyList(false));
  EXPECT_TRUE(value("prefServerAddress", "1") == PropertyList("1"));
  for (const char* key :
       {"prefForceFullScreen", "prefArrayOfPathNamesToDataForLumo", "prefSelectedJunivaServerInfo"}) {
    EXPECT_EQ(parseTypedValue(key, Words{"maybe"}).index(), 1U) << key;
  }
}

TEST(TypedValue, IsRefusedWithALine) {
  const Words cases[] = {
      {},
      {"-string"},
      {"-string", "a", "b"},
      {"-bool", "maybe"},
      {"-bool", ""},
      {"-int", "1.5"},
      {"-int", "x"},
      {"-int", ""},
      {"-int", "9223372036854775808"},
      {"-int", "+-1"},
      {"-float", "nan"},
      {"-float", "inf"},
      {"-float", "1e999"},
      {"-float", "1,5"},
      {"-date", "yesterday"},
      {"-data", "abc"},
      {"-data", "zz"},
      {"-data", "+1"},
      {"-array", "a", "-int"},
      {"-array", "-int", "x"},
      {"-dict", "a"},
      {"-dict", "a", "-bool"},
      {"-dict", "a", "-bool", "x"},
      {"-list", "a"},
      {"a", "b"},
  };
  for (const auto& words : cases) {
    const auto parsed = parseTypedValue("nobodysKey", words);
    const auto* why = std::get_if<std::string>(&parsed);
    ASSERT_NE(why, nullptr) << testing::PrintToString(words);
    EXPECT_FALSE(why->empty());
  }
}

}  // namespace
}  // namespace lumoctl

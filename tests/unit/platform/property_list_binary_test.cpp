#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/property_list_file.h"
#include "tests/unit/platform/property_list_examples.h"

namespace {

using platform::Array;
using platform::Dictionary;
using platform::PropertyList;
using platform::propertyListFromData;

// A binary list from its objects; the first one is the root.
std::string binaryList(const std::vector<std::string>& objects, int referenceSize) {
  std::string list = "bplist00";
  std::string table;
  const auto number = [](std::uint64_t value, int size) {
    std::string text;
    for (int i = size - 1; i >= 0; --i) {
      text += static_cast<char>(value >> (8 * i) & 0xFF);
    }
    return text;
  };
  for (const auto& object : objects) {
    table += number(list.size(), 4);
    list += object;
  }
  const auto offset = list.size();
  return list + table + std::string(6, '\0') + '\x04' + static_cast<char>(referenceSize) +
         number(objects.size(), 8) + number(0, 8) + number(offset, 8);
}

// Arrays of one element each, `levels` of them, around a boolean.
std::string nestedBinaryList(int levels) {
  std::vector<std::string> objects;
  for (int i = 1; i <= levels; ++i) {
    objects.push_back({'\xA1', static_cast<char>(i >> 8), static_cast<char>(i & 0xFF)});
  }
  objects.push_back("\x09");
  return binaryList(objects, 2);
}

TEST(PropertyListBinary, ReadsTheBinaryForm) {
  const auto result = propertyListFromData(binaryExample());
  ASSERT_TRUE(result && result->as<Dictionary>());
  EXPECT_EQ(*result, PropertyList(exampleValues()));
  EXPECT_EQ(keys(*result->as<Dictionary>()), keys(exampleValues()));
}

TEST(PropertyListBinary, ReadsSharedObjectsOfTheBinaryForm) {
  // An array that holds the same text twice.
  const auto result = propertyListFromData(binaryList({std::string("\xA2\x01\x01"), "\x52hi"}, 1));
  ASSERT_TRUE(result);
  EXPECT_EQ(*result, PropertyList(Array{"hi", "hi"}));
}

TEST(PropertyListBinary, BoundsTheNesting) {
  EXPECT_TRUE(propertyListFromData(nestedBinaryList(512)));
  EXPECT_FALSE(propertyListFromData(nestedBinaryList(513)));
  EXPECT_FALSE(propertyListFromData(nestedBinaryList(60000)));
}

TEST(PropertyListBinary, RefusesCyclesOfTheBinaryForm) {
  EXPECT_FALSE(propertyListFromData(binaryList({std::string("\xA1\x00", 2)}, 1)));
  EXPECT_FALSE(propertyListFromData(binaryList({"\xA1\x01", std::string("\xA1\x00", 2)}, 1)));
}

TEST(PropertyListBinary, RefusesBinaryListsThatGrowWithoutBound) {
  // Each array holds the next one twice: thirty of them stand for a thousand million values.
  std::vector<std::string> objects;
  for (char i = 1; i <= 30; ++i) {
    objects.push_back({'\xA2', i, i});
  }
  objects.push_back("\x09");
  EXPECT_FALSE(propertyListFromData(binaryList(objects, 1)));
}

TEST(PropertyListBinary, RefusesWrongNumbersOfTheBinaryForm) {
  const std::string text = "\x52hi";
  const std::vector<std::vector<std::string>> lists{
      {std::string("\xA1\x05", 2), text},                             // no such object
      {std::string("\xAF\x13\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF", 10)},  // more elements than bytes
      {std::string("\x5F\x13\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF", 10)},  // a longer text than the list
      {std::string("\x6F\x13\x80\x00\x00\x00\x00\x00\x00\x01", 10)},  // a size that overflows when doubled
      {std::string("\x5F\x53", 2)},                                   // no number as size
      {std::string("\x17\x00", 2)},                                   // an integer of 128 bytes
      {std::string("\x33\x00", 2)},                                   // half a date
      {std::string("\xD1\x01\x01", 3), std::string("\x10\x05", 2)},   // a number as key
      {std::string("\x00", 1)},                                       // null
      {std::string("\x70", 1)},                                       // no type
  };
  for (const auto& objects : lists) {
    EXPECT_FALSE(propertyListFromData(binaryList(objects, 1)));
  }
}

}  // namespace

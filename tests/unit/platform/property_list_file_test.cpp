#include "platform/property_list_file.h"

#include <chrono>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/unit/platform/property_list_examples.h"
#include "tests/unit/platform/temporary_folder.h"

namespace {

using namespace std::chrono_literals;
using platform::Array;
using platform::Data;
using platform::Date;
using platform::Dictionary;
using platform::PropertyList;
using platform::propertyListFromData;
using platform::propertyListFromFile;
using platform::xmlDataFromPropertyList;

std::string inPlist(std::string_view content) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">" + std::string(content) +
         "</plist>";
}

std::optional<PropertyList> read(std::string_view content) {
  return propertyListFromData(inPlist(content));
}

Data bytes(std::size_t count) {
  Data data;
  for (std::size_t i = 0; i < count; ++i) {
    data.push_back(static_cast<std::byte>(i * 37 % 256));
  }
  return data;
}

TEST(PropertyListFile, WritesTheUsualForm) {
  const Dictionary dictionary{{"b", Array{1, "a & b"}}, {"a", Dictionary{}}, {"c", true}};
  EXPECT_EQ(xmlDataFromPropertyList(dictionary),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
            "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
            "<plist version=\"1.0\">\n"
            "<dict>\n"
            "\t<key>b</key>\n"
            "\t<array>\n"
            "\t\t<integer>1</integer>\n"
            "\t\t<string>a &amp; b</string>\n"
            "\t</array>\n"
            "\t<key>a</key>\n"
            "\t<dict/>\n"
            "\t<key>c</key>\n"
            "\t<true/>\n"
            "</dict>\n"
            "</plist>\n");
}

TEST(PropertyListFile, ReadsBackWhatItWrites) {
  const std::vector<PropertyList> values{
      true,
      false,
      0,
      -1,
      std::numeric_limits<std::int64_t>::min(),
      std::numeric_limits<std::int64_t>::max(),
      0.0,
      0.1,
      1.0 / 3,
      -2.5e-300,
      std::numeric_limits<double>::max(),
      std::numeric_limits<double>::denorm_min(),
      std::numeric_limits<double>::infinity(),
      -std::numeric_limits<double>::infinity(),
      "",
      "  blanks and\ttabs\nand\r\nbreaks  ",
      "<key>&amp;]]>\"'</key>",
      "Gr\u00F6\u00DFe \u20AC \U0001F4F7 \u2028",
      date(1970, 1, 1, 0s),
      date(1969, 12, 31, 23h + 59min + 59s),
      date(2024, 2, 29, 12h),
      date(2100, 1, 1, 1s),
      date(1700, 1, 1, 1s),
      Date(std::chrono::floor<std::chrono::seconds>(Date::max()) - 1s),
      Array{},
      Dictionary{},
      Array{Array{}, Dictionary{{"", Array{1, 2.0, "3"}}}},
      exampleValues(),
  };
  for (const auto& value : values) {
    const auto xml = xmlDataFromPropertyList(value);
    const auto result = propertyListFromData(xml);
    ASSERT_TRUE(result) << xml;
    EXPECT_EQ(*result, value) << xml;
  }
  for (std::size_t size = 0; size < 160; ++size) {
    const PropertyList value(bytes(size));
    EXPECT_EQ(propertyListFromData(xmlDataFromPropertyList(value)), value) << size;
  }
}

TEST(PropertyListFile, KeepsTypesApart) {
  const auto result = propertyListFromData(xmlDataFromPropertyList(Array{1, 1.0, true, "1"}));
  ASSERT_TRUE(result);
  const auto& array = *result->as<Array>();
  EXPECT_TRUE(array[0].as<std::int64_t>());
  EXPECT_TRUE(array[1].as<double>());
  EXPECT_TRUE(array[2].as<bool>());
  EXPECT_TRUE(array[3].as<std::string>());
}

TEST(PropertyListFile, KeepsTheOrderOfKeys) {
  Dictionary dictionary;
  for (const char* key : {"zulu", "alpha", "Mike", "10", "9", ""}) {
    dictionary.set(key, key);
  }
  const auto result = propertyListFromData(xmlDataFromPropertyList(dictionary));
  ASSERT_TRUE(result);
  EXPECT_EQ(keys(*result->as<Dictionary>()), keys(dictionary));
}

TEST(PropertyListFile, NotANumberStaysNotANumber) {
  const auto result = propertyListFromData(xmlDataFromPropertyList(std::numeric_limits<double>::quiet_NaN()));
  ASSERT_TRUE(result && result->as<double>());
  EXPECT_TRUE(std::isnan(*result->as<double>()));
}

struct Reading {
  const char* content;
  PropertyList value;
};

TEST(PropertyListFile, ReadsWhatOthersWrite) {
  const std::vector<Reading> readings{
      {"<string>a&lt;b&gt;c&amp;d&quot;e&apos;f</string>", "a<b>c&d\"e'f"},
      {"<string>&#233;&#XE9;&#x7FF;</string>", "\u00E9\u00E9\u07FF"},
      {"<string>&#65;&#x20AC;&#x1F4F7;&#xD800;</string>", "A\u20AC\U0001F4F7\uFFFD"},
      {"<string>a<![CDATA[<b>&amp;]]>c<!-- d -->e</string>", "a<b>&amp;ce"},
      {"<string >x</string\n>", "x"},
      {"<string/>", ""},
      {"<string attribute='>' />", ""},
      {"<string>\xFF\xFE</string>", "\uFFFD\uFFFD"},
      {"<!-- before --> <integer> 42 </integer> <!-- after -->", 42},
      {"<integer>+007</integer>", 7},
      {"<integer>0x1F</integer>", 31},
      {"<integer>-0X10</integer>", -16},
      {"<integer>0x1FFFFFFFFFFFFFFFF</integer>", 36893488147419103231.0},
      {"<integer>18446744073709551615</integer>", 18446744073709551615.0},
      {"<integer>-9223372036854775809</integer>", -9223372036854775809.0},
      {"<real>+1.5</real>", 1.5},
      {"<real> 12 </real>", 12.0},
      {"<real>1E3</real>", 1000.0},
      {"<true></true>", true},
      {"<false />", false},
      {"<data>\n\tAA\n\tEC/w==\n</data>", Data{std::byte{0}, std::byte{1}, std::byte{2}, std::byte{255}}},
      {"<data/>", Data{}},
      {"<date>2026-11-21T02:00:24Z</date>", date(2026, 11, 21, 2h + 24s)},
      {"<date>2026-12-31T23:59:60Z</date>", date(2027, 1, 1, 0s)},
      {"<date>0001-01-01T00:00:00Z</date>", Date::min()},
      {"<date>4001-01-01T00:00:00Z</date>", Date::max()},
      {"<dict><key>a</key><true/><key>a</key><false/></dict>", Dictionary{{"a", false}}},
      {"<dict><key>a&amp;b</key><array/></dict>", Dictionary{{"a&b", Array{}}}},
  };
  for (const auto& [content, value] : readings) {
    const auto result = read(content);
    ASSERT_TRUE(result) << content;
    EXPECT_EQ(*result, value) << content;
  }
}

TEST(PropertyListFile, ReadsWithoutTheOuterElement) {
  EXPECT_EQ(propertyListFromData("\xEF\xBB\xBF<dict><key>a</key><true/></dict>\n"),
            PropertyList(Dictionary{{"a", true}}));
  EXPECT_EQ(
      propertyListFromData("<?xml version='1.0'?><!DOCTYPE plist [ <!ENTITY a '>'> ]><plist><true/></plist>"),
      PropertyList(true));
}

TEST(PropertyListFile, RefusesWhatIsNoPropertyList) {
  const std::vector<std::string> contents{
      "",
      "text",
      "<string>a",
      "<string>a</string",
      "<string>a</dict>",
      "<string>a</string><string>b</string>",
      "<string>a<!-- never closed</string>",
      "<string>a<![CDATA[never closed</string>",
      "<true/><!-- never closed",
      "<string>&unknown;</string>",
      "<string>&amp</string>",
      "<string>&#1114112;</string>",
      "<string>&#;</string>",
      "<string><b>a</b></string>",
      "<integer/>",
      "<integer></integer>",
      "<integer>1a</integer>",
      "<integer>--1</integer>",
      "<integer>1.0</integer>",
      "<integer>0x</integer>",
      "<integer>1" + repeated("0", 400) + "</integer>",
      "<real/>",
      "<real>1,5</real>",
      "<real>+-1</real>",
      "<real>1.5 2</real>",
      "<true>x</true>",
      "<date/>",
      "<date>2026-11-21</date>",
      "<date>2026-02-30T00:00:00Z</date>",
      "<date>2026-13-01T00:00:00Z</date>",
      "<date>2026-11-21T24:00:00Z</date>",
      "<date>2026-11-21T23:60:00Z</date>",
      "<date>2026-11-21T23:59:61Z</date>",
      "<date>twenty-11-21T23:59:59Z</date>",
      "<date>2026-11-21T02:00:24+01:00</date>",
      "<data>A</data>",
      "<data>A*AA</data>",
      "<data>AA=A</data>",
      "<key>a</key>",
      "<dict><key>a</key></dict>",
      "<dict><true/></dict>",
      "<dict><key>a</key><key>b</key></dict>",
      "<dict><key>a</key><true/>",
      "<array><true/></dict>",
      "<array></array><array/>",
      "<unknown/>",
      "<null/>",
      "<>",
      "</array>",
      "<!-- never closed",
      "<plist/>",
  };
  for (const auto& content : contents) {
    EXPECT_FALSE(read(content)) << content;
  }
  for (const std::string text :
       {"", " ", "<", "<plist>", "<plist/>", "<plist></plist>", "bplist00", "bplist01", "not a property list",
        "{ a = b; }", "{\"a\": 1}", "<html><body>502</body></html>", "<plist><true/></plist>rest"}) {
    EXPECT_FALSE(propertyListFromData(text)) << text;
  }
}

TEST(PropertyListFile, RefusesEveryCutOffFile) {
  const auto xml = xmlDataFromPropertyList(exampleValues());
  const auto end = xml.rfind("</plist>") + 8;
  for (std::size_t size = 0; size < end; ++size) {
    EXPECT_FALSE(propertyListFromData(xml.substr(0, size))) << size;
  }
  const auto binary = binaryExample();
  for (std::size_t size = 0; size < binary.size(); ++size) {
    EXPECT_FALSE(propertyListFromData(binary.substr(0, size))) << size;
  }
}

TEST(PropertyListFile, SurvivesDamagedBytes) {
  std::mt19937 random(20261121);
  for (const auto& original : {xmlDataFromPropertyList(exampleValues()), binaryExample()}) {
    int readable = 0;
    for (int i = 0; i < 20000; ++i) {
      auto bytes = original;
      for (auto count = 1 + random() % 4; count > 0; --count) {
        const auto position = random() % bytes.size();
        switch (random() % 4) {
          case 0:
            bytes[position] = static_cast<char>(random());
            break;
          case 1:
            bytes[position] = static_cast<char>(bytes[position] ^ 1 << random() % 8);
            break;
          case 2:
            bytes.erase(position, random() % 16);
            break;
          default:
            bytes.insert(position, bytes.substr(random() % bytes.size(), random() % 16));
        }
      }
      // Whatever is still readable can be written and read again.
      if (const auto value = propertyListFromData(bytes)) {
        ++readable;
        ASSERT_TRUE(propertyListFromData(xmlDataFromPropertyList(*value)));
      }
    }
    EXPECT_GT(readable, 0);
    EXPECT_LT(readable, 20000);
  }
}

TEST(PropertyListFile, SurvivesForeignBytes) {
  std::mt19937 random(7);
  for (int i = 0; i < 5000; ++i) {
    std::string bytes = i % 2 == 0 ? "bplist00" : "";
    for (auto size = random() % 200; size > 0; --size) {
      bytes += static_cast<char>(random());
    }
    EXPECT_FALSE(propertyListFromData(bytes));
  }
}

TEST(PropertyListFile, BoundsTheNesting) {
  const auto nested = [](std::size_t levels) {
    return read(repeated("<array>", levels) + "<true/>" + repeated("</array>", levels));
  };
  EXPECT_TRUE(nested(512));
  EXPECT_FALSE(nested(513));
  EXPECT_FALSE(nested(100000));
  EXPECT_FALSE(propertyListFromData(repeated("<array>", 1000000)));
  EXPECT_FALSE(propertyListFromData(repeated("<dict><key>a</key>", 500000)));
}

TEST(PropertyListFile, ReadsLargeListsInBoundedTime) {
  const auto entities = repeated("&amp;", 1000000);
  const auto text = read("<string>" + entities + "</string>");
  ASSERT_TRUE(text);
  EXPECT_EQ(text->as<std::string>()->size(), 1000000U);
  EXPECT_TRUE(read("<array>" + repeated("<true/>", 200000) + "</array>"));

  std::string entries;
  for (int i = 0; i < 5000; ++i) {
    entries += "<key>" + std::to_string(i) + "</key><true/>";
  }
  EXPECT_TRUE(read("<dict>" + entries + "</dict>"));
  for (int i = 5000; i < 100000; ++i) {
    entries += "<key>" + std::to_string(i) + "</key><true/>";
  }
  EXPECT_FALSE(read("<dict>" + entries + "</dict>"));
  EXPECT_FALSE(read("<string>" + std::string(platform::propertyListSizeLimit, 'a') + "</string>"));
}

TEST(PropertyListFile, LeavesOutWhatXmlCannotCarry) {
  const PropertyList value(Dictionary{{"a\x01z", std::string("b\0c\x1F\xEF\xBF\xBF\x7F", 8)}});
  testing::internal::CaptureStderr();
  const auto xml = xmlDataFromPropertyList(value);
  EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::HasSubstr("control characters"));
  EXPECT_EQ(propertyListFromData(xml), PropertyList(Dictionary{{"az", "bc\x7F"}}));

  testing::internal::CaptureStderr();
  xmlDataFromPropertyList("tab\tbreak\n");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(PropertyListFile, WritesOneOfTheKeysThatAreAlikeWithoutWhatXmlCannotCarry) {
  const PropertyList value(Dictionary{{"a\x01", 1},
                                      {"a", 2},
                                      {"a\x02", 3},
                                      {"b\x01", 4},
                                      {"\x02"
                                       "b",
                                       5},
                                      {"<\x01", 6},
                                      {"<", 7}});
  testing::internal::CaptureStderr();
  const auto xml = xmlDataFromPropertyList(value);
  EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::HasSubstr("control characters"));
  const auto again = propertyListFromData(xml);
  EXPECT_EQ(again, PropertyList(Dictionary{{"a", 2}, {"b", 4}, {"<", 7}}));
  EXPECT_EQ(xmlDataFromPropertyList(*again), xml);
}

TEST(PropertyListFile, RepairsTextThatIsNoUtf8) {
  EXPECT_EQ(propertyListFromData(xmlDataFromPropertyList("a\xFFz\xC3")), PropertyList("a\uFFFDz\uFFFD"));
}

TEST(PropertyListFile, DropsFractionsOfSeconds) {
  const PropertyList value(Date(date(2026, 1, 1, 5s) + 900ms));
  EXPECT_EQ(propertyListFromData(xmlDataFromPropertyList(value)), PropertyList(date(2026, 1, 1, 5s)));
  const PropertyList early(Date(date(1960, 1, 1, 5s) + 900ms));
  EXPECT_EQ(propertyListFromData(xmlDataFromPropertyList(early)), PropertyList(date(1960, 1, 1, 5s)));
}

TEST(PropertyListFile, ReadsFiles) {
  const TemporaryFolder folder;
  writeFile(folder / "xml", xmlDataFromPropertyList(exampleValues()));
  writeFile(folder / "binary", binaryExample());
  writeFile(folder / "empty", "");
  EXPECT_EQ(propertyListFromFile(folder / "xml"), PropertyList(exampleValues()));
  EXPECT_EQ(propertyListFromFile(folder / "binary"), PropertyList(exampleValues()));
  EXPECT_FALSE(propertyListFromFile(folder / "empty"));
  EXPECT_FALSE(propertyListFromFile(folder / "missing"));
  EXPECT_FALSE(propertyListFromFile(folder.path()));
  EXPECT_FALSE(propertyListFromFile(""));
  // A pipe that nobody writes to must not keep the reader waiting.
  ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
  EXPECT_FALSE(propertyListFromFile(folder / "pipe"));
}

}  // namespace

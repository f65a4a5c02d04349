#include "app/PreferenceKeys.h"

#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/property_list_file.h"
#include "platform/user_defaults.h"

namespace {

using lumo::PreferenceType;
using platform::Array;
using platform::Dictionary;
using platform::PropertyList;

Dictionary factoryValues() {
  const auto list = platform::propertyListFromFile(LUMO_SOURCE_DIR "/resources/bundle/FactoryDefaults.plist");
  const auto* dictionary = list ? list->as<Dictionary>() : nullptr;
  return dictionary != nullptr ? *dictionary : Dictionary();
}

TEST(PreferenceKeys, HasEachKeyOnceWithItsType) {
  const std::vector<std::pair<std::string, PreferenceType>> expected{
      {"prefServerAddress", PreferenceType::String},
      {"prefDefaultServerAddress", PreferenceType::String},
      {"prefRunningUrlString", PreferenceType::String},
      {"prefShowMenuBar", PreferenceType::Boolean},
      {"prefDoAutoLoadUrlAtStartup", PreferenceType::Boolean},
      {"prefDoNotConfirmOnExit", PreferenceType::Boolean},
      {"prefKeepAppActiveAlways", PreferenceType::Boolean},
      {"prefForceFullScreen", PreferenceType::Boolean},
      {"prefWindowAlwaysStatusLevel", PreferenceType::Boolean},
      {"prefThisUserAgent", PreferenceType::String},
      {"prefClearCacheAtLaunch", PreferenceType::Boolean},
      {"prefShowNavigationBar", PreferenceType::Boolean},
      {"prefShowWindowTitle", PreferenceType::Boolean},
      {"prefFullSizeContentView", PreferenceType::Boolean},
      {"prefShowWindowTitleBar", PreferenceType::Boolean},
      {"prefShowPrefPanelWhenUrlLoadFailed", PreferenceType::Boolean},
      {"prefLenientWithFailProvisionalNavigation", PreferenceType::Boolean},
      {"prefFirstFocusWebFieldByIdentifier", PreferenceType::String},
      {"prefPathNamesToForceFocus", PreferenceType::String},
      {"prefArrayOfPathNamesToDataForLumo", PreferenceType::Array},
      {"prefPathNamesToDataForLumo", PreferenceType::String},
      {"prefScanReturnStringFormat", PreferenceType::String},
      {"prefEnableLockedFields1", PreferenceType::Boolean},
      {"prefSelectedJunivaServerInfo", PreferenceType::Dictionary},
      {"prefJunivaPhotoStationListPath", PreferenceType::String},
      {"prefJunivaServerUrlString", PreferenceType::String},
      {"prefAppVersion", PreferenceType::String},
      {"LumoAV_ffmpegLaunchPath", PreferenceType::String},
  };
  EXPECT_EQ(lumo::preferenceKeys().size(), expected.size());
  for (const auto& [name, type] : expected) {
    const auto* key = lumo::preferenceKey(name);
    ASSERT_TRUE(key != nullptr) << name;
    EXPECT_EQ(key->name, name);
    EXPECT_EQ(key->type, type) << name;
  }
  EXPECT_EQ(lumo::preferenceKey("prefUnknown"), nullptr);
  EXPECT_EQ(lumo::preferenceKey(""), nullptr);
}

TEST(PreferenceKeys, HasTheCodesOwnDefaults) {
  for (const auto& key : lumo::preferenceKeys()) {
    const std::string name = key.name;
    if (name == "prefJunivaPhotoStationListPath") {
      EXPECT_STREQ(key.codeDefault, "registrationorders");
    } else if (name == "LumoAV_ffmpegLaunchPath") {
      EXPECT_STREQ(key.codeDefault, "/usr/local/bin/ffmpeg");
    } else {
      EXPECT_EQ(key.codeDefault, nullptr) << name;
    }
  }
}

TEST(PreferenceKeys, TellsFittingValues) {
  EXPECT_TRUE(lumo::matches(PreferenceType::Boolean, true));
  EXPECT_TRUE(lumo::matches(PreferenceType::Boolean, 0));
  EXPECT_FALSE(lumo::matches(PreferenceType::Boolean, Array{}));
  EXPECT_TRUE(lumo::matches(PreferenceType::String, "a"));
  EXPECT_TRUE(lumo::matches(PreferenceType::String, 1));
  EXPECT_FALSE(lumo::matches(PreferenceType::String, Dictionary()));
  EXPECT_TRUE(lumo::matches(PreferenceType::Array, (Array{"a", "b"})));
  EXPECT_TRUE(lumo::matches(PreferenceType::Array, Array{}));
  EXPECT_FALSE(lumo::matches(PreferenceType::Array, Array{Array{}}));
  EXPECT_FALSE(lumo::matches(PreferenceType::Array, "a, b"));
  EXPECT_TRUE(lumo::matches(PreferenceType::Dictionary, Dictionary()));
  EXPECT_FALSE(lumo::matches(PreferenceType::Dictionary, "a"));
}

TEST(PreferenceTable, LeavesTheCellOfAFactoryValueEmptyThatSaysNothing) {
  const std::string row = "| `prefThisUserAgent` | string | Advanced: User agent |";
  for (const auto& [value, cell] : std::vector<std::pair<PropertyList, std::string>>{
           {"Kiosk/1", " `Kiosk/1` |"}, {7, " `7` |"}, {"", " |"}, {Dictionary{{"a", "b"}}, " |"}}) {
    EXPECT_THAT(lumo::preferenceTable(Dictionary{{"prefThisUserAgent", value}}),
                testing::HasSubstr(row + cell + " |"))
        << cell;
  }
  EXPECT_THAT(
      lumo::preferenceTable(Dictionary{{"prefArrayOfPathNamesToDataForLumo", Array{"a", 1, Array{}}}}),
      testing::HasSubstr(" | `a`, `1`, `` | "));
}

TEST(FactoryDefaults, HoldKnownKeysWithFittingValues) {
  const auto factory = factoryValues();
  ASSERT_FALSE(factory.empty());
  for (const auto& [name, value] : factory) {
    const auto* key = lumo::preferenceKey(name);
    ASSERT_TRUE(key != nullptr) << name;
    EXPECT_TRUE(key->operatorSets()) << name;
    EXPECT_TRUE(lumo::matches(key->type, value)) << name;
  }
  for (const auto& key : lumo::preferenceKeys()) {
    if (key.type == PreferenceType::Boolean && key.operatorSets()) {
      ASSERT_TRUE(factory.contains(key.name)) << key.name;
      EXPECT_TRUE(factory.find(key.name)->as<bool>() != nullptr) << key.name;
    }
  }
}

TEST(FactoryDefaults, SuitAServerOnThisMachine) {
  platform::UserDefaults defaults;
  defaults.registerDefaults(factoryValues());
  EXPECT_EQ(defaults.stringForKey(lumo::prefServerAddress), "http://localhost:9090/registrationorders");
  EXPECT_EQ(defaults.stringForKey(lumo::prefDefaultServerAddress), "http://localhost:9090");
  EXPECT_TRUE(defaults.boolForKey(lumo::prefDoAutoLoadUrlAtStartup));
  EXPECT_TRUE(defaults.boolForKey(lumo::prefShowMenuBar));
  EXPECT_FALSE(defaults.boolForKey(lumo::prefForceFullScreen));
  EXPECT_EQ(defaults.objectForKey(lumo::prefArrayOfPathNamesToDataForLumo),
            PropertyList(Array{"registrationorders/photostationdata", "registrationorders/posdata",
                               "registrationam/photostationdata", "registrationam/posdata",
                               "registrationbookeo/photostationdata", "registrationbookeo/posdata",
                               "gradorders/gowndata"}));
  EXPECT_EQ(defaults.stringForKey(lumo::prefRunningUrlString), std::nullopt);
}

TEST(PreferencesPage, HoldsTheTableOfTheProgram) {
  std::ifstream file(LUMO_SOURCE_DIR "/docs/preferences.md");
  const std::string page{std::istreambuf_iterator<char>(file), {}};
  const std::string begin = "<!-- table: written by scripts/update-preference-table -->\n";
  const auto start = page.find(begin);
  const auto end = page.find("<!-- end of table -->\n");
  ASSERT_NE(start, std::string::npos);
  ASSERT_NE(end, std::string::npos);
  EXPECT_EQ(page.substr(start + begin.size(), end - start - begin.size()),
            lumo::preferenceTable(factoryValues()))
      << "run scripts/update-preference-table";
}

}  // namespace

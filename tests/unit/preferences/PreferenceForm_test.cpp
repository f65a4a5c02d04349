#include "preferences/PreferenceForm.h"

#include <algorithm>
#include <map>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/property_list_file.h"
#include "tests/fakes/captured_log.h"
#include "tests/fakes/fake_settings_form.h"
#include "tests/fakes/test_platform.h"

namespace {

using lumo::PreferenceEdit;
using lumo::preferenceKey;
using lumo::RefusedPreference;
using lumo::RemovePreference;
using platform::Array;
using platform::Dictionary;
using platform::PropertyList;
using platform::SettingKind;
using platform::SettingValue;
using std::nullopt;
using testing::ElementsAre;

TEST(SettingGroups, HaveARowForEachKeyThatAnOperatorSets) {
  std::set<std::string> keys;
  for (const auto& group : lumo::settingGroups()) {
    for (const auto& row : group.rows) {
      EXPECT_TRUE(keys.insert(row.key).second) << row.key << " twice";
      EXPECT_FALSE(row.title.empty()) << row.key;
      EXPECT_FALSE(row.explanation.empty()) << row.key;
      EXPECT_EQ(row.explanation.find('`'), std::string::npos) << row.key;
    }
  }
  for (const auto& key : lumo::preferenceKeys()) {
    const bool isExpected = key.operatorSets() || std::string(key.name) == lumo::prefEnableLockedFields1;
    EXPECT_EQ(keys.contains(key.name), isExpected) << key.name;
  }
}

TEST(SettingGroups, StandInTheOrderInWhichPeopleReadThem) {
  std::vector<std::string> titles;
  for (const auto& group : lumo::settingGroups()) {
    titles.push_back(group.title);
    EXPECT_FALSE(group.explanation.empty()) << group.title;
  }
  EXPECT_THAT(titles, ElementsAre("Server", "Window", "Start and exit", "Pages", "Printing",
                                  "Protected settings", "Pages with a meaning", "Advanced"));
  EXPECT_THAT(lumo::protectedGroups(), ElementsAre(6U, 7U));
}

TEST(SettingGroups, GiveEachKindOfValueItsKindOfRow) {
  std::map<std::string, SettingKind> kinds;
  for (const auto& group : lumo::settingGroups()) {
    for (const auto& row : group.rows) {
      kinds[row.key] = row.kind;
      EXPECT_EQ(row.kind == SettingKind::Switch,
                preferenceKey(row.key)->type == lumo::PreferenceType::Boolean)
          << row.key;
    }
  }
  EXPECT_EQ(kinds[lumo::prefServerAddress], SettingKind::Text);
  EXPECT_EQ(kinds[lumo::prefPathNamesToForceFocus], SettingKind::Lines);
  EXPECT_EQ(kinds[lumo::prefArrayOfPathNamesToDataForLumo], SettingKind::Lines);
}

struct Shown {
  const char* key;
  std::optional<PropertyList> value;
  SettingValue shown;
};

class ShownValue : public testing::TestWithParam<Shown> {};

TEST_P(ShownValue, FitsItsRow) {
  EXPECT_EQ(lumo::shownValue(*preferenceKey(GetParam().key), GetParam().value), GetParam().shown);
}

INSTANTIATE_TEST_SUITE_P(
    Preferences, ShownValue,
    testing::Values(Shown{lumo::prefShowMenuBar, true, true}, Shown{lumo::prefShowMenuBar, "YES", true},
                    Shown{lumo::prefShowMenuBar, 0, false}, Shown{lumo::prefShowMenuBar, nullopt, false},
                    Shown{lumo::prefShowMenuBar, Array{}, false},
                    Shown{lumo::prefServerAddress, "http://s", "http://s"},
                    Shown{lumo::prefServerAddress, 5, "5"}, Shown{lumo::prefServerAddress, nullopt, ""},
                    Shown{lumo::prefServerAddress, Dictionary{}, ""},
                    Shown{lumo::prefJunivaPhotoStationListPath, nullopt, "registrationorders"},
                    Shown{lumo::prefJunivaPhotoStationListPath, "a", "a"},
                    Shown{lumo::prefPathNamesToForceFocus, "/a, /b,,/c ", "/a\n/b\n/c"},
                    Shown{lumo::prefPathNamesToForceFocus, "", ""},
                    Shown{lumo::prefArrayOfPathNamesToDataForLumo, Array{"a", "b"}, "a\nb"},
                    Shown{lumo::prefArrayOfPathNamesToDataForLumo, "a", ""},
                    Shown{lumo::prefArrayOfPathNamesToDataForLumo, Array{Array{}}, ""}));

struct Written {
  const char* name;
  const char* key;
  SettingValue written;
  PreferenceEdit edit;
};

class WrittenSetting : public testing::TestWithParam<Written> {};

TEST_P(WrittenSetting, IsUnderstood) {
  EXPECT_EQ(lumo::preferenceEdit(*preferenceKey(GetParam().key), GetParam().written), GetParam().edit);
}

const RefusedPreference noAddress{"This is no address. It reads like http://10.0.0.5:9090/path"};
const RefusedPreference noWord{"This must be one word, without a blank"};
const RefusedPreference noPath{"This must be the whole path of a program, which begins with /"};

INSTANTIATE_TEST_SUITE_P(
    Preferences, WrittenSetting,
    testing::Values(
        Written{"On", lumo::prefShowMenuBar, true, PropertyList(true)},
        Written{"Off", lumo::prefShowMenuBar, false, PropertyList(false)},
        Written{"Address", lumo::prefServerAddress, " http://s:9090/r ", PropertyList("http://s:9090/r")},
        Written{"AddressWithoutScheme", lumo::prefServerAddress, "10.0.0.5:9090",
                PropertyList("10.0.0.5:9090")},
        Written{"AddressWithLettersThatAreEscapedLater", lumo::prefServerAddress, "http://s/gr\u00FC\u00DFe",
                PropertyList("http://s/gr\u00FC\u00DFe")},
        Written{"AddressWithABlank", lumo::prefServerAddress, "http://my server/", noAddress},
        Written{"AddressWithABadPort", lumo::prefDefaultServerAddress, "http://s:port/", noAddress},
        Written{"EmptiedAddress", lumo::prefServerAddress, "  ", RemovePreference{}},
        Written{"Word", lumo::prefFirstFocusWebFieldByIdentifier, "name", PropertyList("name")},
        Written{"TwoWords", lumo::prefFirstFocusWebFieldByIdentifier, "a b", noWord},
        Written{"Text", lumo::prefThisUserAgent, " Kiosk 1 ", PropertyList("Kiosk 1")},
        Written{"TextOfTwoLines", lumo::prefThisUserAgent, "a\nb",
                RefusedPreference{"This must be one line"}},
        Written{"EmptiedText", lumo::prefThisUserAgent, "", RemovePreference{}},
        Written{"Program", lumo::LumoAV_ffmpegLaunchPath, "/opt/my tools/ffmpeg",
                PropertyList("/opt/my tools/ffmpeg")},
        Written{"ProgramWithoutItsFolder", lumo::LumoAV_ffmpegLaunchPath, "ffmpeg", noPath},
        Written{"PathsOnLines", lumo::prefPathNamesToForceFocus, "/a\n /b \n\n", PropertyList("/a, /b")},
        Written{"PathsWithCommas", lumo::prefPathNamesToForceFocus, "/a,/b,\n/c", PropertyList("/a, /b, /c")},
        Written{"EmptiedPaths", lumo::prefPathNamesToForceFocus, "\n , \n", RemovePreference{}},
        Written{"ListOfPaths", lumo::prefArrayOfPathNamesToDataForLumo, "a\nb, c",
                PropertyList(Array{"a", "b", "c"})},
        Written{"EmptiedListOfPaths", lumo::prefArrayOfPathNamesToDataForLumo, "", RemovePreference{}}),
    [](const auto& info) { return info.param.name; });

class PreferenceFormTest : public testing::Test {
 protected:
  void SetUp() override {
    const auto list =
        platform::propertyListFromFile(LUMO_SOURCE_DIR "/resources/bundle/FactoryDefaults.plist");
    ASSERT_TRUE(list);
    defaults.registerDefaults(*list->as<Dictionary>());
  }
  fakes::FakeSettingsForm& open() {
    binding = std::make_unique<lumo::PreferenceForm>(
        form, defaults, [this](const std::string& key) { changed.push_back(key); });
    log.clear();
    return form;
  }
  std::optional<PropertyList> stored(const std::string& key) const {
    const Dictionary values = defaults.userValues();
    const auto* value = values.find(key);
    return value == nullptr ? nullopt : std::optional(*value);
  }

  fakes::CapturedLog log;
  fakes::TestPlatform machine;
  platform::UserDefaults& defaults = machine.defaults;
  fakes::FakeSettingsForm form{{machine.dispatch, machine.journal}, "ibSettingsForm"};
  std::unique_ptr<lumo::PreferenceForm> binding;
  std::vector<std::string> changed;
};

TEST_F(PreferenceFormTest, ShowsTheValuesInEffect) {
  defaults.setObject("http://user:9090", lumo::prefServerAddress);
  open();

  EXPECT_EQ(form.text(lumo::prefServerAddress), "http://user:9090");
  EXPECT_EQ(form.text(lumo::prefDefaultServerAddress), "http://localhost:9090");
  EXPECT_TRUE(form.isOn(lumo::prefShowMenuBar));
  EXPECT_FALSE(form.isOn(lumo::prefForceFullScreen));
  EXPECT_EQ(form.text(lumo::prefPathNamesToForceFocus), "/registrationorders/details");
  EXPECT_TRUE(form.text(lumo::prefArrayOfPathNamesToDataForLumo)
                  .starts_with("registrationorders/photostationdata\nregistrationorders/posdata\n"));
  EXPECT_TRUE(defaults.userValues().contains(lumo::prefServerAddress));
  EXPECT_EQ(defaults.userValues().size(), 1U);
  EXPECT_THAT(changed, ElementsAre());
}

TEST_F(PreferenceFormTest, StoresWhatAPersonChanges) {
  open();
  EXPECT_TRUE(form.flip(lumo::prefForceFullScreen));
  EXPECT_TRUE(form.write(lumo::prefServerAddress, " http://10.0.1.20:9090 "));

  EXPECT_EQ(stored(lumo::prefForceFullScreen), PropertyList(true));
  EXPECT_EQ(stored(lumo::prefServerAddress), PropertyList("http://10.0.1.20:9090"));
  EXPECT_EQ(form.text(lumo::prefServerAddress), "http://10.0.1.20:9090");
  EXPECT_THAT(changed, ElementsAre(lumo::prefForceFullScreen, lumo::prefServerAddress));
  EXPECT_THAT(log.lines(), ElementsAre("prefForceFullScreen is set to 1",
                                       "prefServerAddress is set to http://10.0.1.20:9090"));
}

TEST_F(PreferenceFormTest, AnEmptiedTextIsTheFactoryValueAgain) {
  defaults.setObject("http://user:9090", lumo::prefServerAddress);
  open();
  form.write(lumo::prefServerAddress, "");

  EXPECT_EQ(stored(lumo::prefServerAddress), nullopt);
  EXPECT_EQ(form.text(lumo::prefServerAddress), "http://localhost:9090/registrationorders");
  EXPECT_THAT(changed, ElementsAre(lumo::prefServerAddress));
  EXPECT_THAT(log.lines(), ElementsAre("prefServerAddress gets its factory value back"));
}

TEST_F(PreferenceFormTest, AValueThatDoesNotParseIsRefusedVisibly) {
  defaults.setObject("http://user:9090", lumo::prefServerAddress);
  open();
  form.write(lumo::prefServerAddress, "http://my server");

  EXPECT_EQ(stored(lumo::prefServerAddress), PropertyList("http://user:9090"));
  EXPECT_EQ(form.text(lumo::prefServerAddress), "http://my server");
  EXPECT_EQ(form.problem(lumo::prefServerAddress), noAddress.reason);
  EXPECT_THAT(changed, ElementsAre());
  EXPECT_THAT(log.lines(),
              ElementsAre("prefServerAddress keeps its value, \"http://my server\" was refused: " +
                          noAddress.reason));

  form.write(lumo::prefServerAddress, "http://myserver");
  EXPECT_EQ(form.problem(lumo::prefServerAddress), "");
  EXPECT_EQ(stored(lumo::prefServerAddress), PropertyList("http://myserver"));
}

TEST_F(PreferenceFormTest, LocksTheProtectedGroupsUntilTheyAreOpened) {
  open();
  for (const auto& key : lumo::preferenceKeys()) {
    if (key.operatorSets()) {
      const bool isProtected =
          key.group == lumo::PreferenceGroup::Routes || key.group == lumo::PreferenceGroup::Advanced;
      EXPECT_EQ(form.isLocked(key.name), isProtected) << key.name;
    }
  }
  EXPECT_FALSE(form.write(lumo::prefThisUserAgent, "Kiosk"));
  EXPECT_FALSE(form.isLocked(lumo::prefEnableLockedFields1));

  form.flip(lumo::prefEnableLockedFields1);
  EXPECT_EQ(stored(lumo::prefEnableLockedFields1), PropertyList(true));
  EXPECT_TRUE(form.write(lumo::prefThisUserAgent, "Kiosk"));
  EXPECT_EQ(stored(lumo::prefThisUserAgent), PropertyList("Kiosk"));

  form.flip(lumo::prefEnableLockedFields1);
  EXPECT_TRUE(form.isLocked(lumo::prefThisUserAgent));
}

TEST_F(PreferenceFormTest, EveryValueCanBeChanged) {
  open();
  form.flip(lumo::prefEnableLockedFields1);
  for (const auto& key : lumo::preferenceKeys()) {
    if (!key.operatorSets()) {
      continue;
    }
    if (key.input == lumo::PreferenceInput::Switch) {
      const bool before = defaults.boolForKey(key.name);
      EXPECT_TRUE(form.flip(key.name)) << key.name;
      EXPECT_EQ(defaults.boolForKey(key.name), !before) << key.name;
    } else {
      EXPECT_TRUE(form.write(key.name, "/new")) << key.name;
      const bool isArray = key.type == lumo::PreferenceType::Array;
      EXPECT_EQ(stored(key.name), isArray ? PropertyList(Array{"/new"}) : PropertyList("/new")) << key.name;
    }
  }
}

TEST_F(PreferenceFormTest, ShowsChangesOfOthersWhenItIsTold) {
  open();
  defaults.setObject("http://b", lumo::prefServerAddress);
  defaults.setObject(true, lumo::prefForceFullScreen);
  binding->refresh(lumo::prefServerAddress);
  EXPECT_EQ(form.text(lumo::prefServerAddress), "http://b");
  EXPECT_FALSE(form.isOn(lumo::prefForceFullScreen));
  binding->refresh();
  EXPECT_TRUE(form.isOn(lumo::prefForceFullScreen));
  EXPECT_THAT(changed, ElementsAre());
}

TEST_F(PreferenceFormTest, LetsGoOfTheFormAtItsEnd) {
  open();
  binding.reset();
  EXPECT_EQ(form.delegate(), nullptr);
}

}  // namespace

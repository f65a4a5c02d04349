#include <map>

#include <gmock/gmock.h>

#include "app/PreferenceKeys.h"
#include "platform/property_list_file.h"
#include "station/station.h"

// The operator's settings, worked through the accessibility tree and with keys.

namespace station {

using lumo::PreferenceInput;
using lumo::PreferenceKey;
using lumo::PreferenceType;
using platform::Array;
using platform::PropertyList;
using ::testing::Contains;
using ::testing::Not;

namespace {

bool isProtected(const PreferenceKey& key) {
  for (const lumo::PreferenceGroupText& group : lumo::preferenceGroups()) {
    if (group.group == key.group) {
      return group.isProtected;
    }
  }
  return false;
}

std::vector<const PreferenceKey*> keys(bool ofProtectedGroups) {
  std::vector<const PreferenceKey*> found;
  for (const PreferenceKey& key : lumo::preferenceKeys()) {
    if (key.operatorSets() && isProtected(key) == ofProtectedGroups) {
      found.push_back(&key);
    }
  }
  return found;
}

}  // namespace

class SettingsTest : public StationTest {
 protected:
  void openSettings() {
    ASSERT_TRUE(station.press("Settings"));
    // The locks close in the turn in which the first test of the connection begins.
    ASSERT_TRUE(waitUntil([this] { return isOpen() && !light().empty(); }));
  }
  bool isOpen() { return station.control("dialog", "Settings").has_value(); }
  bool isClosedSoon() {
    return waitUntil([this] { return !isOpen(); });
  }
  Accessible dialog() { return station.control("dialog", "Settings").value(); }
  bool says(const std::string& name) {
    bool found = false;
    dialog().walk([&](const Accessible& item, int) { found = found || item.name() == name; });
    return found;
  }
  // What the light tells people who do not see it, empty while it is out.
  std::string light() {
    for (const char* text : {"Available", "Not available"}) {
      if (says(text)) {
        return text;
      }
    }
    return "";
  }
  // The controls by their titles, as they are now, in one walk: the tree is large.
  std::map<std::string, Accessible> controls() {
    std::map<std::string, Accessible> found;
    dialog().walk([&found](const Accessible& item, int) {
      const std::string role = item.role();
      if (role == "switch" || role == "text box") {
        found.emplace(item.name(), item);
      }
    });
    return found;
  }
  Accessible control(const char* key) { return controls().at(lumo::preferenceKey(key)->title); }
  std::optional<PropertyList> stored(const std::string& key) {
    const auto list =
        platform::propertyListFromFile(station.configurationFolder() / "lumo/com.lumo.LumoBrowser.plist");
    const auto* values = list ? list->as<platform::Dictionary>() : nullptr;
    const auto* value = values == nullptr ? nullptr : values->find(key);
    return value == nullptr ? std::nullopt : std::optional(*value);
  }
  bool isStoredSoon(const std::string& key, const std::optional<PropertyList>& value) {
    return waitUntil([&] { return stored(key) == value; });
  }
  // Turns a switch and waits for the file.
  void turn(const PreferenceKey& key, const Accessible& control) {
    const bool before = control.isChecked();
    ASSERT_TRUE(control.press()) << key.name;
    EXPECT_TRUE(isStoredSoon(key.name, PropertyList(!before))) << key.name;
    EXPECT_TRUE(waitUntil([&] { return control.isChecked() == !before; })) << key.name;
  }
  void turn(const char* key) { turn(*lumo::preferenceKey(key), control(key)); }
  // Turns each switch twice, writes into each field, and looks into the file.
  void changeAll(const std::vector<const PreferenceKey*>& changed) {
    const auto all = controls();
    for (const PreferenceKey* key : changed) {
      const Accessible& control = all.at(key->title);
      if (key->input == PreferenceInput::Switch) {
        turn(*key, control);
        turn(*key, control);
      } else {
        ASSERT_TRUE(control.write("/of/" + std::string(key->name))) << key->name;
      }
    }
    // Whatever is used next ends the change of a text.
    turn(lumo::prefClearCacheAtLaunch);
    for (const PreferenceKey* key : changed) {
      if (key->input != PreferenceInput::Switch) {
        const PropertyList written = "/of/" + std::string(key->name);
        EXPECT_EQ(stored(key->name),
                  key->type == PreferenceType::Array ? PropertyList(Array{written}) : written);
      }
    }
  }
  // Whether those keys can be changed, all or none.
  void expectSensitive(const std::vector<const PreferenceKey*>& expected, bool sensitive) {
    const auto all = controls();
    for (const PreferenceKey* key : expected) {
      EXPECT_EQ(all.at(key->title).isSensitive(), sensitive) << key->name;
    }
  }
};

TEST_F(SettingsTest, EveryControlHasANameAndIsLargeEnough) {
  startAtHome();
  openSettings();
  int controls = 0;
  dialog().walk([&controls](const Accessible& item, int) {
    const std::string role = item.role();
    if (role == "button" || role == "text box" || role == "switch") {
      ++controls;
      EXPECT_NE(item.name(), "") << role;
    }
    if (role == "button" || role == "text box" || role == "list item") {
      const Area area = item.extents();
      EXPECT_GE(area.height, 44) << role << " " << item.name();
      EXPECT_GE(area.width, 44) << role << " " << item.name();
    }
  });
  // Five buttons, the lock, and whatever an operator sets.
  EXPECT_EQ(controls, static_cast<int>(5 + 1 + keys(false).size() + keys(true).size()));
}

TEST_F(SettingsTest, EveryOpenSettingIsStoredInTheFile) {
  startAtHome();
  openSettings();
  changeAll(keys(false));
}

TEST_F(SettingsTest, TheProtectedSettingsAreLockedUntilTheyAreOpened) {
  startAtHome();
  openSettings();
  expectSensitive(keys(true), false);
  turn(lumo::prefEnableLockedFields1);
  expectSensitive(keys(true), true);
  changeAll(keys(true));

  ASSERT_TRUE(dialog().find("button", "Close")->press());
  ASSERT_TRUE(isClosedSoon());
  openSettings();
  EXPECT_TRUE(isStoredSoon(lumo::prefEnableLockedFields1, PropertyList(0)));
  expectSensitive(keys(true), false);
}

TEST_F(SettingsTest, LevelAndNavigationBarFollowAtOnce) {
  startAtHome();
  openSettings();
  turn(lumo::prefWindowAlwaysStatusLevel);
  EXPECT_TRUE(waitUntil([this] {
    return ::testing::Value(station.screen().states(station.window()), Contains("_NET_WM_STATE_ABOVE"));
  }));
  turn(lumo::prefWindowAlwaysStatusLevel);
  EXPECT_TRUE(waitUntil([this] {
    return ::testing::Value(station.screen().states(station.window()), Not(Contains("_NET_WM_STATE_ABOVE")));
  }));

  ASSERT_TRUE(station.control("button", "Home"));
  turn(lumo::prefShowNavigationBar);
  EXPECT_TRUE(waitUntil([this] { return !station.control("button", "Home"); }));
  turn(lumo::prefShowNavigationBar);
  EXPECT_TRUE(waitUntil([this] { return station.control("button", "Home").has_value(); }));
}

TEST_F(SettingsTest, AnAddressIsWrittenWithTheKeyboard) {
  startAtHome();
  openSettings();
  ASSERT_TRUE(station.clickOn(control(lumo::prefServerAddress)));
  station.key("ctrl+a");
  station.type("http://10.0.0.5:9090/r");
  station.key("Return");
  EXPECT_TRUE(isStoredSoon(lumo::prefServerAddress, PropertyList("http://10.0.0.5:9090/r")));

  // Emptied, it is the factory's again.
  station.key("ctrl+a");
  station.key("BackSpace");
  station.key("Tab");
  EXPECT_TRUE(isStoredSoon(lumo::prefServerAddress, std::nullopt));
  EXPECT_TRUE(waitUntil([this] {
    return control(lumo::prefServerAddress).text() == "http://localhost:9090/registrationorders";
  }));
}

TEST_F(SettingsTest, WhatIsNoAddressIsRefusedWithAReason) {
  startAtHome();
  openSettings();
  ASSERT_TRUE(control(lumo::prefServerAddress).write("http://my server/"));
  turn(lumo::prefClearCacheAtLaunch);
  EXPECT_TRUE(
      waitUntil([this] { return says("This is no address. It reads like http://10.0.0.5:9090/path"); }));
  EXPECT_EQ(stored(lumo::prefServerAddress), PropertyList(server.url("/home")));
  EXPECT_TRUE(station.logs("prefServerAddress keeps its value, \"http://my server/\" was refused"));
}

TEST_F(SettingsTest, TheLightIsGreenForA404AndRedForNobody) {
  startAtHome();
  openSettings();
  EXPECT_EQ(light(), "Available");
  const RefusingPort nobody;
  ASSERT_TRUE(control(lumo::prefServerAddress).write(nobody.url("/")));
  ASSERT_TRUE(station.press("Test Connection"));
  EXPECT_TRUE(waitUntil([this] { return light() == "Not available"; }));
  EXPECT_TRUE(station.logs("error = "));

  server.set("/nothing", HttpAnswer{.status = 404});
  ASSERT_TRUE(control(lumo::prefServerAddress).write(server.url("/nothing")));
  ASSERT_TRUE(station.press("Test Connection"));
  EXPECT_TRUE(waitUntil([this] { return light() == "Available"; }));
  EXPECT_EQ(server.count("/nothing"), 1);
}

struct Reset {
  const char* name;
  const char* button;
  const char* key;
};

class SettingsResetTest : public SettingsTest, public ::testing::WithParamInterface<Reset> {};

INSTANTIATE_TEST_SUITE_P(Groups, SettingsResetTest,
                         ::testing::Values(Reset{"FocusItem", "Reset the pages with a focus",
                                                 lumo::prefPathNamesToForceFocus},
                                           Reset{"EndOfSession", "Reset the paths that end an order",
                                                 lumo::prefPathNamesToDataForLumo}),
                         [](const auto& info) { return info.param.name; });

TEST_P(SettingsResetTest, AsksAndGivesTheFactoryValueBack) {
  station.prefer(lumo::prefPathNamesToForceFocus, "/mine");
  station.prefer(lumo::prefPathNamesToDataForLumo, "/mine");
  startAtHome();
  openSettings();
  const auto isAsked = [this] {
    return station.control("alert dialog", "Reset To Factory Setting").has_value();
  };
  ASSERT_TRUE(station.press(GetParam().button));
  ASSERT_TRUE(waitUntil(isAsked));
  ASSERT_TRUE(station.press("Cancel"));
  ASSERT_TRUE(waitUntil([&] { return !isAsked(); }));
  EXPECT_EQ(stored(GetParam().key), PropertyList("/mine"));

  ASSERT_TRUE(station.press(GetParam().button));
  ASSERT_TRUE(waitUntil(isAsked));
  ASSERT_TRUE(station.press("Reset To Factory"));
  ASSERT_TRUE(waitUntil([&] { return !isAsked(); }));
  const bool first = std::string(GetParam().key) == lumo::prefPathNamesToForceFocus;
  const PropertyList factory =
      "registrationorders/photostationdata, registrationorders/posdata, "
      "registrationam/photostationdata, registrationam/posdata, "
      "registrationbookeo/photostationdata, registrationbookeo/posdata, "
      "gradorders/gowndata";
  EXPECT_TRUE(isStoredSoon(GetParam().key, first ? std::nullopt : std::optional(factory)));
  EXPECT_EQ(stored(first ? lumo::prefPathNamesToDataForLumo : lumo::prefPathNamesToForceFocus),
            PropertyList("/mine"));
  EXPECT_TRUE(waitUntil([&] {
    return control(GetParam().key).text() == (first ? "/registrationorders/details"
                                                    : "registrationorders/photostationdata\n"
                                                      "registrationorders/posdata\n"
                                                      "registrationam/photostationdata\n"
                                                      "registrationam/posdata\n"
                                                      "registrationbookeo/photostationdata\n"
                                                      "registrationbookeo/posdata\n"
                                                      "gradorders/gowndata");
  }));
}

TEST_F(SettingsTest, EscapeClosesThemAndTakesWhatWasWritten) {
  startAtHome();
  openSettings();
  ASSERT_TRUE(control(lumo::prefServerAddress).write("http://late:9090"));
  station.key("Escape");
  ASSERT_TRUE(isClosedSoon());
  EXPECT_TRUE(isStoredSoon(lumo::prefServerAddress, PropertyList("http://late:9090")));
  EXPECT_TRUE(station.logs("User Entered: 1"));
}

TEST_F(SettingsTest, AreWorkedWithTheKeyboardAlone) {
  startAtHome();
  station.key("ctrl+comma");
  ASSERT_TRUE(waitUntil([this] { return isOpen(); }));
  // Forward to the first switch, through buttons and fields.
  const auto isThere = [this] { return control(lumo::prefForceFullScreen).isFocused(); };
  for (int press = 0; press < 12 && !isThere(); ++press) {
    station.key("Tab");
  }
  ASSERT_TRUE(waitUntil(isThere)) << description(dialog());
  station.key("space");
  EXPECT_TRUE(isStoredSoon(lumo::prefForceFullScreen, PropertyList(true)));
  station.key("Escape");
  EXPECT_TRUE(isClosedSoon());
}

}  // namespace station

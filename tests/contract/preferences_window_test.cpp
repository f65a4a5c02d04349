#include <optional>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/PreferenceKeys.h"
#include "platform/linux/linux_settings_form.h"
#include "preferences/MyPreferencesWindowController.h"
#include "tests/contract/toolkit_harness.h"
#include "tests/fakes/captured_log.h"
#include "tests/fakes/test_platform.h"
#include "tests/unit/discovery/scripted_network.h"

// The settings' real window over a scripted network.

namespace {

using fakes::FakeHttpClient;

class PreferencesSheetTest : public testing::Test {
 protected:
  using Controller = lumo::MyPreferencesWindowController;

  void SetUp() override {
    ASSERT_NE(parent, nullptr);
    parent->makeKeyAndOrderFront();
    machine.defaults.setObject("http://s/", lumo::prefServerAddress);
    http.answer("http://s/", FakeHttpClient::status(404));
    const lumo::ThisComputer computer{network.get(), [] { return std::string("en0"); },
                                      [] {
                                        return std::vector<lumo::InterfaceEntry>{{"en0", "10.0.1.7"}};
                                      }};
    controller = std::make_unique<Controller>(platform, Controller::ShowNavBar(), nullptr, computer);
    ASSERT_NE(controller->window(), nullptr);
    parent->beginSheet(*controller->window(), [this](int code) { endedWith = code; });
    ASSERT_TRUE(
        harness.runUntil([&] { return !controller->fIpInfoString.empty() && !controller->fIsChecking; }));
    ASSERT_TRUE(harness.runUntil([&] { return sheet().frame().width > 0; }));
  }
  void TearDown() override {
    controller.reset();
    EXPECT_TRUE(harness.runUntil([&] { return http.open() == 0; }));
  }

  platform::Window& sheet() { return *controller->window(); }
  GtkWidget* widget(const std::string& name) { return LinuxToolkit::widget(sheet(), name); }
  GtkWidget* control(const std::string& key) {
    return dynamic_cast<platform::LinuxSettingsForm&>(*sheet().viewNamed("ibSettingsForm")).control(key);
  }
  std::string text(const std::string& name) { return gtk_label_get_text(GTK_LABEL(widget(name))); }

  fakes::CapturedLog log;
  LinuxToolkit harness;
  fakes::TestPlatform machine;
  FakeHttpClient http{harness.dispatch()};
  platform::Platform platform{
      harness.dispatch(), machine.application,   harness.windows(),      machine.bus, http,
      machine.defaults,   machine.notifications, machine.bundle.bundle()};
  discoverytest::ScriptedNetwork network;
  std::unique_ptr<platform::Window> parent = harness.windows().loadWindow("MyWebViewWindowController");
  std::unique_ptr<Controller> controller;
  std::optional<int> endedWith;
};

TEST_F(PreferencesSheetTest, ShowsItsLinesAndTheGreenLightOfA404) {
  EXPECT_EQ(text("fVersionString"), controller->fVersionString);
  EXPECT_EQ(text("fIpInfoString"), "NOT connected to any network - will use localhost");
  EXPECT_EQ(text("ibStatusText"), "The photo server answers");
  EXPECT_EQ(controller->fStatus1View->imageName(), "NSStatusAvailable");
  EXPECT_TRUE(gtk_widget_has_css_class(widget("fStatus1View"), "lumo-status-available"));
}

TEST_F(PreferencesSheetTest, HasAControlForEachKeyThatAnOperatorSets) {
  for (const auto& key : lumo::preferenceKeys()) {
    if (!key.operatorSets()) {
      continue;
    }
    GtkWidget* found = control(key.name);
    ASSERT_NE(found, nullptr) << key.name;
    const bool isProtected =
        key.group == lumo::PreferenceGroup::Routes || key.group == lumo::PreferenceGroup::Advanced;
    EXPECT_EQ(gtk_widget_is_sensitive(found) == FALSE, isProtected) << key.name;
  }
}

TEST_F(PreferencesSheetTest, ItsButtonsAreLargeEnoughForAFinger) {
  for (const char* name : {"ibCloseButton", "ibTestConnection", "ibSearchJunivaServer", "ibResetToFactory1",
                           "ibResetToFactory2"}) {
    graphene_rect_t bounds;
    ASSERT_TRUE(gtk_widget_compute_bounds(widget(name), widget(name), &bounds));
    EXPECT_GE(bounds.size.width, 44) << name;
    EXPECT_GE(bounds.size.height, 44) << name;
  }
}

TEST_F(PreferencesSheetTest, StaysInItsWindowWhateverIsWritten) {
  const platform::Rect before = sheet().frame();
  gtk_editable_set_text(GTK_EDITABLE(control(lumo::prefServerAddress)), std::string(20'000, 'x').c_str());
  controller->ibCloseButton();
  EXPECT_EQ(machine.defaults.stringForKey(lumo::prefServerAddress)->size(), 20'000U);
  EXPECT_EQ(endedWith, 1);
  EXPECT_LE(before.width, parent->frame().width);
  EXPECT_LE(before.height, parent->frame().height);
}

TEST_F(PreferencesSheetTest, EscapeClosesItWithOne) {
  harness.pressEscape(sheet());
  EXPECT_EQ(endedWith, 1);
}

TEST_F(PreferencesSheetTest, EscapeCancelsAResetFirst) {
  harness.press(sheet(), "ibResetToFactory1");
  ASSERT_EQ(harness.shownAlerts(*parent).size(), 1U);
  harness.pressEscape(sheet());
  EXPECT_TRUE(harness.shownAlerts(*parent).empty());
  EXPECT_EQ(endedWith, std::nullopt);
  EXPECT_TRUE(log.contains("MyPreferencesWindowController->ibResetToFactory1:....returnCode = 1000"));
}

}  // namespace

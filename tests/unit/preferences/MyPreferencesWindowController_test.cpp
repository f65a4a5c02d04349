#include "preferences/MyPreferencesWindowController.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/fakes/captured_log.h"
#include "tests/fakes/test_platform.h"

namespace {

using lumo::MyPreferencesWindowController;
using testing::ElementsAre;

constexpr const char* kWindow = "MyPreferencesWindowController";

class PreferencesWindow : public testing::Test {
 protected:
  // A browser window with the preferences on it as a sheet.
  void open() {
    parent = platform.windows.loadWindow("MyWebViewWindowController");
    controller = std::make_unique<MyPreferencesWindowController>(platform);
    parent->beginSheet(*controller->window(), [this](int code) { codes.push_back(code); });
    log.clear();
  }
  fakes::FakeWindow& sheet() { return *machine.windows.window(kWindow); }

  fakes::CapturedLog log;
  fakes::TestPlatform machine;
  platform::Platform platform = machine.platform();
  std::unique_ptr<platform::Window> parent;
  std::unique_ptr<MyPreferencesWindowController> controller;
  std::vector<int> codes;
};

TEST_F(PreferencesWindow, IsMadeFromItsDescription) {
  const MyPreferencesWindowController preferences(platform);

  EXPECT_THAT(machine.windows.loaded(), ElementsAre(kWindow));
  EXPECT_EQ(preferences.window(), machine.windows.window(kWindow));
}

TEST_F(PreferencesWindow, ItsCloseButtonEndsTheSheetWithOne) {
  open();
  EXPECT_TRUE(sheet().press("ibCloseButton"));

  EXPECT_THAT(codes, ElementsAre(1));
  EXPECT_EQ(controller->window()->sheetParent(), nullptr);
  EXPECT_TRUE(log.contains("MyPreferencesWindowController->ibCloseButton:...."));
}

TEST_F(PreferencesWindow, ClosingItWhenItIsNoSheetDoesNothing) {
  open();
  sheet().press("ibCloseButton");
  controller->ibCloseButton();

  EXPECT_THAT(codes, ElementsAre(1));
}

TEST_F(PreferencesWindow, WithoutADescriptionThereIsNone) {
  machine.windows.removeDescription(kWindow);
  const MyPreferencesWindowController preferences(platform);

  EXPECT_EQ(preferences.window(), nullptr);
}

}  // namespace

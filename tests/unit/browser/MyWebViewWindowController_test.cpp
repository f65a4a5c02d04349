#include "tests/unit/browser/browser_fixture.h"

// The preferences sheet, and what the web view tells the window.

namespace {

using browsertest::kBrowserWindow;
using browsertest::kPreferencesWindow;
using platform::NavigationPolicy;
using testing::ElementsAre;

constexpr const char* kAlreadyVisible =
    "MyWebViewWindowController->ibOpenPreferences:....ALREADY VISIBLE....";

using BrowserPreferences = browsertest::BrowserTest;

TEST_F(BrowserPreferences, AreASheetOfTheWindow) {
  makeShown().ibOpenPreferences({});

  ASSERT_NE(browser->myPreferencesWindowController, nullptr);
  EXPECT_EQ(window().currentSheet(), browser->myPreferencesWindowController->window());
  EXPECT_EQ(log.lines().front(), "MyWebViewWindowController->ibOpenPreferences:....");
}

TEST_F(BrowserPreferences, TheirEndTellsItsCode) {
  makeShown().ibOpenPreferences({});
  log.clear();
  window().endSheet(*window().currentSheet(), 7);

  EXPECT_THAT(log.lines(), ElementsAre("User Entered: 7"));
}

TEST_F(BrowserPreferences, AreShownOnceWhileTheyAreOpen) {
  makeShown().ibOpenPreferences({});
  const auto* first = browser->myPreferencesWindowController.get();
  EXPECT_FALSE(log.contains(kAlreadyVisible));
  browser->ibOpenPreferences({});

  EXPECT_EQ(log.count(kAlreadyVisible), 1U);
  EXPECT_EQ(browser->myPreferencesWindowController.get(), first);
  EXPECT_THAT(machine.windows.loaded(), ElementsAre(kBrowserWindow, kPreferencesWindow));
  EXPECT_EQ(window().sheetCount(), 1U);
}

TEST_F(BrowserPreferences, AreMadeAnewAtEachOpening) {
  makeShown().ibOpenPreferences({});
  window().currentSheet()->press("ibCloseButton");
  EXPECT_EQ(window().currentSheet(), nullptr);
  EXPECT_TRUE(log.contains("User Entered: 1"));
  browser->ibOpenPreferences({});

  EXPECT_THAT(machine.windows.loaded(), ElementsAre(kBrowserWindow, kPreferencesWindow, kPreferencesWindow));
  EXPECT_EQ(window().sheetCount(), 1U);
  EXPECT_FALSE(log.contains(kAlreadyVisible));
}

TEST_F(BrowserPreferences, WaitingBehindAnAlertAreReplacedByTheNextRequest) {
  makeShown();
  platform::Alert alert;
  alert.addButtonWithTitle("OK");
  window().beginAlert(alert, [](const platform::AlertResponse&) {});
  browser->ibOpenPreferences({});
  browser->ibOpenPreferences({});
  window().pressAlertButton("OK");

  EXPECT_EQ(window().sheetCount(), 1U);
  EXPECT_EQ(window().currentSheet(), browser->myPreferencesWindowController->window());
}

TEST_F(BrowserPreferences, WithoutADescriptionAreNotShown) {
  machine.windows.removeDescription(kPreferencesWindow);
  makeShown().ibOpenPreferences({});

  EXPECT_EQ(window().sheetCount(), 0U);
}

TEST_F(BrowserPreferences, GoWithTheWindow) {
  makeShown().ibOpenPreferences({});
  browser.reset();

  EXPECT_EQ(machine.windows.window(kPreferencesWindow), nullptr);
  EXPECT_EQ(machine.window(), nullptr);
}

TEST_F(BrowserPreferences, TheEndOfAnOldStyleSheetPutsItAwayAndTellsItsCode) {
  makeShown();
  const auto sheet = machine.windows.loadWindow(kPreferencesWindow);
  machine.journal.clear();
  browser->didEndSheet2_returnCode_contextInfo(*sheet, -3);

  EXPECT_THAT(machine.journal.entries(), ElementsAre("MyPreferencesWindowController orderOut"));
  EXPECT_THAT(log.lines(),
              ElementsAre("MyWebViewWindowController->didEndSheet2:returnCode:contextInfo:....OLD "
                          "OS method - Probably not running on 10.9+",
                          "User Entered: -3"));
}

using BrowserPage = browsertest::BrowserTest;

TEST_F(BrowserPage, MayNavigateAndIsShown) {
  makeShown();

  EXPECT_TRUE(page().browse("http://h/next"));
  EXPECT_EQ(page().lastPolicy(), NavigationPolicy::Allow);
}

}  // namespace

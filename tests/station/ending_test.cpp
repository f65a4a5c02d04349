#include <csignal>

#include <gmock/gmock.h>

#include "station/station.h"

// The ways in which the kiosk ends.

namespace station {

using ::testing::Contains;
using ::testing::HasSubstr;

namespace {

constexpr const char* kAsked = "AppDelegate->applicationShouldTerminate:....";

}  // namespace

class EndingTest : public StationTest {};

TEST_F(EndingTest, TheWindowManagersCloseEndsIt) {
  startAtHome();
  station.screen().close(station.window());
  EXPECT_EQ(station.kiosk().end(), "exit status 0");
  EXPECT_THAT(station.log(), HasSubstr("windowShouldClose:"));
  EXPECT_THAT(station.log(), HasSubstr(kAsked));
}

TEST_F(EndingTest, TheTitleBarsCloseButtonEndsIt) {
  startAtHome();
  ASSERT_TRUE(station.press("Close"));
  EXPECT_EQ(station.kiosk().end(), "exit status 0");
  EXPECT_THAT(station.log(), HasSubstr("windowShouldClose:"));
  EXPECT_THAT(station.log(), HasSubstr(kAsked));
}

TEST_F(EndingTest, TheKeyEndsIt) {
  startAtHome();
  station.key("ctrl+q");
  EXPECT_EQ(station.kiosk().end(), "exit status 0");
  EXPECT_THAT(station.log(), HasSubstr(kAsked));
}

TEST_F(EndingTest, TheKeyEndsItWithoutMenuBar) {
  station.prefer("prefShowMenuBar", false);
  startAtHome();
  station.key("ctrl+q");
  EXPECT_EQ(station.kiosk().end(), "exit status 0");
}

TEST_F(EndingTest, APersonIsAskedFirst) {
  station.prefer("prefDoNotConfirmOnExit", false);
  startAtHome();
  const auto isAsked = [this] { return station.control("alert dialog", "Are You Sure???").has_value(); };
  station.key("ctrl+q");
  ASSERT_TRUE(waitUntil(isAsked));
  ASSERT_TRUE(station.press("Cancel"));
  ASSERT_TRUE(waitUntil([&] { return !isAsked(); }));
  EXPECT_TRUE(station.kiosk().isRunning());
  station.screen().close(station.window());
  ASSERT_TRUE(waitUntil(isAsked));
  ASSERT_TRUE(station.press("Close Window Only"));
  EXPECT_EQ(station.kiosk().end(), "exit status 0");
}

TEST_F(EndingTest, NoOtherKeyEndsItOrLeadsAway) {
  server.set("/home",
             HttpAnswer{page(kRed,
                             "<script>addEventListener('keydown', event => {"
                             "if (event.key == 'F8') setTimeout(() => fetch('/later'), 1500)})</script>")});
  startAtHome();
  for (const char* key : {"F1",
                          "F3",
                          "F5",
                          "F6",
                          "F7",
                          "F9",
                          "F11",
                          "F12",
                          "Menu",
                          "shift+F10",
                          "Insert",
                          "ctrl+period",
                          "ctrl+semicolon",
                          "ctrl+f",
                          "ctrl+l",
                          "ctrl+n",
                          "ctrl+p",
                          "ctrl+s",
                          "ctrl+t",
                          "ctrl+u",
                          "ctrl+w",
                          "ctrl+plus",
                          "ctrl+shift+i",
                          "ctrl+shift+d"}) {
    station.key(key);
  }
  // The page's answer comes when more than a blink of the cursor has passed.
  station.key("F8");
  ASSERT_TRUE(waitUntil([this] { return server.count("/later") == 1; }));
  EXPECT_TRUE(station.kiosk().isRunning());
  EXPECT_EQ(station.screen().windows().size(), 1U);
  EXPECT_TRUE(station.shows(kRed));
  EXPECT_EQ(station.stop(), "exit status 0");
  EXPECT_EQ(server.count("/home"), 1);
}

TEST_F(EndingTest, ASessionsEndEndsItAndTheEnginesProcesses) {
  station.prefer("prefDoNotConfirmOnExit", false);
  startAtHome();
  station.kiosk().send(SIGTERM);
  EXPECT_EQ(station.kiosk().end(), "exit status 0");
  // The kernel shortens names to 15 characters.
  EXPECT_TRUE(waitUntil([] {
    const auto names = childrenNames();
    return !::testing::Value(names, Contains("WebKitWebProces")) &&
           !::testing::Value(names, Contains("WebKitNetworkPr")) &&
           !::testing::Value(names, Contains("bwrap"));
  })) << ::testing::PrintToString(childrenNames());
}

TEST_F(EndingTest, ALostScreenEndsIt) {
  startAtHome();
  station.breakScreen();
  EXPECT_EQ(station.kiosk().end(), "exit status 1");
}

class EndingWithoutWindowManagerTest : public StationTest {
 protected:
  EndingWithoutWindowManagerTest() : StationTest({.windowManager = false}) {}
};

TEST_F(EndingWithoutWindowManagerTest, ARequestToCloseEndsIt) {
  startAtHome();
  station.screen().askToClose(station.window());
  EXPECT_EQ(station.kiosk().end(), "exit status 0");
  EXPECT_THAT(station.log(), HasSubstr(kAsked));
}

}  // namespace station

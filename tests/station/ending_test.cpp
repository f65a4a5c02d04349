#include <csignal>

#include <gmock/gmock.h>

#include "station/station.h"

// The ways in which the kiosk ends.

namespace station {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Not;

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

#include <gmock/gmock.h>

#include "station/station.h"

// How the kiosk starts, with what it loads and beside whom.

namespace station {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class StartTest : public StationTest {};

TEST_F(StartTest, AsksForTheHomePageOnceWithScanHeaderAndUserAgent) {
  station.prefer("prefThisUserAgent", "X");
  startAtHome();
  // After its end nothing more can come.
  EXPECT_EQ(station.stop(), "exit status 0");
  const auto requests = server.requests("/home");
  ASSERT_EQ(requests.size(), 1U);
  EXPECT_EQ(requests[0].method, "GET");
  EXPECT_EQ(requests[0].header("Glimmerpad-Scan"), "no");
  EXPECT_THAT(requests[0].header("User-Agent").value_or(""), StartsWith("Mozilla/"));
  EXPECT_THAT(requests[0].header("User-Agent").value_or(""), EndsWith(" X"));
}

TEST_F(StartTest, KeepsTheEnginesUserAgentWithoutAText) {
  server.set("/home",
             HttpAnswer{page(
                 kRed, "<script>fetch('/agent', {method: 'POST', body: navigator.userAgent})</script>")});
  startAtHome();
  ASSERT_TRUE(waitUntil([this] { return server.count("/agent") == 1; }));
  const std::string agent = server.requests("/home")[0].header("User-Agent").value_or("");
  EXPECT_EQ(server.requests("/agent")[0].body, agent);
  EXPECT_THAT(agent, Not(EndsWith(" ")));
}

TEST_F(StartTest, LoadsNothingWhenNotAskedTo) {
  station.prefer("prefDoAutoLoadUrlAtStartup", false);
  station.start();
  // The button works when the start is over.
  ASSERT_TRUE(station.press("Home"));
  ASSERT_TRUE(station.shows(kRed));
  EXPECT_EQ(station.stop(), "exit status 0");
  EXPECT_EQ(server.count("/home"), 1);
}

TEST_F(StartTest, ASecondCopyBringsTheFirstToTheFrontAndEnds) {
  startAtHome();
  const WindowId kiosk = station.window();
  OtherWindow other(station.display(), {100, 100, 1000, 800}, kBlue);
  station.screen().activate(other.id());
  ASSERT_TRUE(waitUntil([&] { return station.screen().active() == other.id(); }));
  ASSERT_TRUE(station.shows(kBlue)) << "the other window does not cover the kiosk";
  const std::string before = station.log();

  const auto copy = station.startCopy();
  EXPECT_EQ(copy->end(), "exit status 0");
  EXPECT_THAT(station.copyOutput(), HasSubstr("Another Instance of this app is already running..."));
  EXPECT_TRUE(waitUntil([&] { return station.screen().active() == kiosk; }));
  EXPECT_TRUE(station.shows(kRed));
  EXPECT_TRUE(station.kiosk().isRunning());
  EXPECT_EQ(station.screen().windowsOf(copy->pid()).size(), 0U);
  // The copy has its diagnostics on standard error; the log is the first one's.
  EXPECT_THAT(station.log(), Not(HasSubstr("Another Instance")));
  EXPECT_EQ(station.stop(), "exit status 0");
  EXPECT_EQ(server.count("/home"), 1);
}

class StartWithoutBusTest : public StationTest {
 protected:
  StartWithoutBusTest() : StationTest({.bus = false}) {}
};

TEST_F(StartWithoutBusTest, ASecondCopyBringsTheFirstToTheFrontAndEnds) {
  startAtHome();
  const WindowId kiosk = station.window();
  OtherWindow other(station.display(), {100, 100, 1000, 800}, kBlue);
  station.screen().activate(other.id());
  ASSERT_TRUE(waitUntil([&] { return station.screen().active() == other.id(); }));
  const auto copy = station.startCopy();
  EXPECT_EQ(copy->end(), "exit status 0");
  EXPECT_TRUE(waitUntil([&] { return station.screen().active() == kiosk; }));
  EXPECT_TRUE(station.shows(kRed));
  EXPECT_EQ(station.stop(), "exit status 0");
}

class StartWithoutDisplayTest : public StationTest {
 protected:
  StartWithoutDisplayTest() : StationTest({.screen = false}) {}
};

TEST_F(StartWithoutDisplayTest, SaysSoAndEnds) {
  station.start();
  EXPECT_EQ(station.kiosk().end(), "exit status 1");
  EXPECT_THAT(station.log(), HasSubstr("] There is no display to show a window on.\n"));
  EXPECT_THAT(station.output(), EndsWith("lumobrowser: There is no display to show a window on.\n"));
}

TEST_F(StartWithoutDisplayTest, SaysSoAndEndsWhenTheNamedOneIsNotThere) {
  station.environment["DISPLAY"] = ":4711";
  station.start();
  EXPECT_EQ(station.kiosk().end(), "exit status 1");
  EXPECT_THAT(station.log(), HasSubstr("] There is no display to show a window on.\n"));
  EXPECT_THAT(station.output(), EndsWith("lumobrowser: There is no display to show a window on.\n"));
}

}  // namespace station

#include <gmock/gmock.h>

#include "station/station.h"

// The window: its place, its level and its parts.

namespace station {

using ::testing::Contains;
using ::testing::Not;

namespace {

constexpr const char* kAbove = "_NET_WM_STATE_ABOVE";

}  // namespace

class FullScreenTest : public StationTest, public ::testing::WithParamInterface<bool> {
 protected:
  FullScreenTest() : StationTest({.windowManager = GetParam()}) {}
};

INSTANTIATE_TEST_SUITE_P(Desktops, FullScreenTest, ::testing::Bool(), [](const auto& info) {
  return info.param ? "WithWindowManager" : "WithoutWindowManager";
});

TEST_P(FullScreenTest, CoversTheScreenWhenForced) {
  station.prefer("prefForceFullScreen", true);
  startAtHome();
  const WindowId window = station.window();
  EXPECT_TRUE(waitUntil([&] { return station.screen().frame(window) == station.screen().area(); }))
      << station.screen().frame(window);
}

TEST_P(FullScreenTest, KeepsItsSizeWhenNotForced) {
  startAtHome();
  const Area frame = station.screen().frame(station.window());
  EXPECT_EQ(frame.width, 1200) << frame;
  EXPECT_EQ(frame.height, 860) << frame;
}

class LevelTest : public StationTest {
 protected:
  // A window of another program that a person brings to the front, where the kiosk's is too.
  void showOther() {
    other_.emplace(station.display(), Area{300, 300, 600, 500}, kBlue);
    station.screen().activate(other_->id());
    ASSERT_TRUE(waitUntil([this] { return station.screen().active() == other_->id(); }));
  }
  WindowId topmost() { return station.screen().windows().back(); }

  std::optional<OtherWindow> other_;
};

TEST_F(LevelTest, StaysAboveAllOthersWhenAsked) {
  station.prefer("prefWindowAlwaysStatusLevel", true);
  startAtHome();
  EXPECT_TRUE(waitUntil(
      [this] { return ::testing::Value(station.screen().states(station.window()), Contains(kAbove)); }));
  showOther();
  EXPECT_EQ(topmost(), station.window());
  EXPECT_TRUE(station.shows(kRed));
}

TEST_F(LevelTest, IsLikeAllOthersWhenNotAsked) {
  startAtHome();
  EXPECT_THAT(station.screen().states(station.window()), Not(Contains(kAbove)));
  showOther();
  EXPECT_TRUE(waitUntil([this] { return topmost() == other_->id(); }));
  EXPECT_TRUE(station.shows(kBlue));
}

TEST_F(LevelTest, TakesTheFrontBackWhenAsked) {
  station.prefer("prefKeepAppActiveAlways", true);
  startAtHome();
  OtherWindow other(station.display(), {300, 300, 600, 500}, kBlue);
  station.screen().activate(other.id());
  EXPECT_TRUE(waitUntil([&] { return other.hasHadFocus(); }));
  EXPECT_TRUE(waitUntil([this] { return station.screen().active() == station.window(); }));
  EXPECT_TRUE(waitUntil([this] { return topmost() == station.window(); }));
  EXPECT_TRUE(station.shows(kRed));
}

TEST_F(LevelTest, LeavesTheFrontToOthersWhenNotAsked) {
  startAtHome();
  showOther();
  // What the kiosk has to do about it is done before it answers a button.
  ASSERT_TRUE(station.press("Go"));
  ASSERT_TRUE(waitUntil([this] { return server.count("/home") == 2; }));
  EXPECT_EQ(station.screen().active(), other_->id());
}

class BarsTest : public StationTest {
 protected:
  bool hasToolbar() { return station.control("text box", "Address").has_value(); }
  bool hasMenuBar() { return station.control("menu item", "View").has_value(); }
  // The menu bar has a label of this name too.
  bool hasTitle() { return station.control("label", "Lumo Browser").has_value(); }
};

TEST_F(BarsTest, ShowWhenAskedFor) {
  station.prefer("prefShowNavigationBar", true);
  station.prefer("prefShowMenuBar", true);
  startAtHome();
  for (const char* name : {"Back", "Forward", "Home", "Go", "Settings"}) {
    EXPECT_TRUE(station.control("button", name)) << name;
  }
  EXPECT_TRUE(hasToolbar());
  EXPECT_TRUE(hasMenuBar());
  EXPECT_EQ(station.screen().title(station.window()), "Lumo Browser");
}

TEST_F(BarsTest, OfNavigationIsHiddenAlone) {
  station.prefer("prefShowNavigationBar", false);
  startAtHome();
  EXPECT_TRUE(hasMenuBar());
  EXPECT_FALSE(hasToolbar());
  EXPECT_FALSE(station.control("button", "Home"));
}

TEST_F(BarsTest, OfMenusIsHiddenAlone) {
  station.prefer("prefShowMenuBar", false);
  startAtHome();
  EXPECT_TRUE(hasToolbar());
  EXPECT_TRUE(hasTitle());
  EXPECT_FALSE(hasMenuBar());
}

TEST_F(BarsTest, KeepTheTitleBarWithoutItsTitle) {
  station.prefer("prefShowMenuBar", false);
  station.prefer("prefShowWindowTitle", false);
  startAtHome();
  EXPECT_TRUE(hasToolbar());
  EXPECT_FALSE(hasTitle());
  EXPECT_TRUE(station.control("button", "Close"));
}

}  // namespace station

#include <algorithm>
#include <numbers>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/LumoNSViewAdditions.h"
#include "tests/contract/screen_picture.h"
#include "tests/contract/toolkit_harness.h"
#include "tests/fakes/captured_log.h"

// What animations look like on the screen, and where clicks go meanwhile.

namespace {

namespace additions = lumo::LumoNSViewAdditions;

using platform::Color;
using platform::Millis;
using platform::Rect;
using platform::View;

constexpr unsigned long kRed = 0xFF0000;

class LinuxDrawingTest : public ToolkitTest<LinuxToolkit> {
 protected:
  using Picture = ScreenCamera::Picture;

  void SetUp() override {
    ToolkitTest<LinuxToolkit>::SetUp();
    // A red bar of 200 x 40 on a white page.
    window->contentView().setBackgroundColor(Color{1, 1, 1, 1});
    bar->setFrame({200, 200, 200, 40});
    bar->setBackgroundColor(Color{1, 0, 0, 1});
    ASSERT_TRUE(harness.runUntil([&] { return pixel(300, 220) == kRed && pixel(300, 170) == 0xFFFFFF; }));
  }
  Picture picture() { return camera.take(0, 100, 640, 300); }
  // A line through the bar. Where something moves: what takes longer to look at keeps a busy machine from
  // drawing the window meanwhile.
  Picture line() { return camera.take(0, 220, 640, 1); }
  unsigned long pixel(int x, int y) { return camera.take(x, y, 1, 1).front(); }
  // What of the picture is red: its left and right edge, absent when nothing is.
  static std::optional<std::pair<int, int>> redEdges(const Picture& shown) {
    std::optional<std::pair<int, int>> edges;
    for (std::size_t at = 0; at < shown.size(); ++at) {
      if (shown[at] == kRed) {
        const int x = static_cast<int>(at % 640);
        edges = edges ? std::pair(std::min(edges->first, x), std::max(edges->second, x)) : std::pair(x, x);
      }
    }
    return edges;
  }
  GtkWidget* pick(double x, double y) {
    return gtk_widget_pick(GTK_WIDGET(LinuxToolkit::toplevel(*window)), x, y, GTK_PICK_DEFAULT);
  }

  const fakes::CapturedLog log;
  ScreenCamera camera{LinuxToolkit::machine().display()};
  View* bar = &view("second");
};

TEST_F(LinuxDrawingTest, AShakeGoesRightAndLeftAndComesBack) {
  const Picture resting = picture();
  int left = 640;
  int right = 0;
  // A side is shown for 50 ms, which can fall between two pictures on a busy machine: then it is shaken once
  // more.
  for (int shake = 0; shake < 20 && !(left < 200 && right > 399); ++shake) {
    bool over = false;
    additions::nodLeftRightWithCompletionHandler(harness.dispatch(), *bar, [&] { over = true; });
    ASSERT_TRUE(harness.runUntil([&] {
      if (const auto edges = redEdges(line())) {
        left = std::min(left, edges->first);
        right = std::max(right, edges->second);
      }
      return over;
    }));
    EXPECT_TRUE(harness.runUntil([&] { return picture() == resting; }));
  }
  EXPECT_LT(left, 200);
  EXPECT_GE(left, 190);
  EXPECT_GT(right, 399);
  EXPECT_LE(right, 409);
  EXPECT_EQ(bar->frame(), (Rect{200, 200, 200, 40}));
}

TEST_F(LinuxDrawingTest, AMotionIsSeenBetweenItsEnds) {
  const Picture resting = picture();
  std::vector<int> places;
  bool over = false;
  bar->animateFrame({300, 200, 200, 40}, Millis{400}, [&] { over = true; });
  EXPECT_TRUE(harness.runUntil([&] {
    if (const auto edges = redEdges(line())) {
      places.push_back(edges->first);
    }
    return over && places.back() == 300;
  }));
  EXPECT_TRUE(std::is_sorted(places.begin(), places.end())) << testing::PrintToString(places);
  EXPECT_TRUE(std::any_of(places.begin(), places.end(), [](int x) { return x > 205 && x < 295; }))
      << testing::PrintToString(places);
  bar->setFrame({200, 200, 200, 40});
  EXPECT_TRUE(harness.runUntil([&] { return picture() == resting; }));
}

TEST_F(LinuxDrawingTest, AFlashGoesPaleAndComesBack) {
  const Picture resting = picture();
  bool over = false;
  bool pale = false;
  additions::flashOnOffWithCompletionHandler(harness.dispatch(), *bar, [&] { over = true; });
  EXPECT_TRUE(harness.runUntil([&] {
    const unsigned long middle = line()[300];
    pale = pale || (middle != kRed && middle != 0);
    return over;
  }));
  EXPECT_TRUE(harness.runUntil([&] { return picture() == resting; }));
  EXPECT_TRUE(pale);
  EXPECT_EQ(bar->opacity(), 1);
}

TEST_F(LinuxDrawingTest, AnOpacityIsSeen) {
  bar->setOpacity(0.5);
  EXPECT_TRUE(harness.runUntil([&] {
    const unsigned long shown = pixel(300, 220);
    return shown >> 16 == 0xFF && (shown & 0xFF) > 0x70 && (shown & 0xFF) < 0x90;
  }));
  bar->setHidden(true);
  EXPECT_TRUE(harness.runUntil([&] { return pixel(300, 220) == 0xFFFFFF; }));
}

TEST_F(LinuxDrawingTest, AnEndlessTurnTurnsUntilItIsTakenAway) {
  const Picture resting = picture();
  additions::rotateViewWithCompletionBlock(harness.dispatch(), *bar, {});
  // Upright, the bar reaches far above its place.
  int upright = 0;
  EXPECT_TRUE(harness.runUntil([&] {
    upright += pixel(300, 140) == kRed ? 1 : 0;
    return upright > 0 && pixel(300, 140) != kRed;
  }));
  EXPECT_TRUE(harness.runUntil([&] { return pixel(300, 140) == kRed; }));
  EXPECT_FALSE(bar->animationKeys().empty());
  bar->removeAnimation("rotation");
  EXPECT_TRUE(harness.runUntil([&] { return picture() == resting; }));
}

TEST_F(LinuxDrawingTest, ASingleTurnEndsWhereItBegan) {
  const Picture resting = picture();
  additions::rotateNSViewWithCompletionHandler(harness.dispatch(), *bar, {});
  bool upright = false;
  EXPECT_TRUE(harness.runUntil([&] {
    upright = upright || pixel(300, 140) == kRed;
    return upright && bar->animationKeys().empty();
  }));
  EXPECT_TRUE(harness.runUntil([&] { return picture() == resting; }));
}

TEST_F(LinuxDrawingTest, ATurnIsCounterClockwiseAboutTheAnchorPoint) {
  additions::setAnchorPoint(*bar, {0, 0.5});
  bar->setRotation(std::numbers::pi / 2);
  // About the middle of the left edge at (200, 220), the right end goes up.
  EXPECT_TRUE(harness.runUntil([&] { return pixel(200, 50) == kRed; }));
  EXPECT_EQ(pixel(300, 220), 0xFFFFFFU);
  EXPECT_EQ(pixel(200, 300), 0xFFFFFFU);
}

TEST_F(LinuxDrawingTest, TheColourTurnsWithItsView) {
  bar->setRotation(std::numbers::pi / 4);
  // Up to the right lies the bar, up to the left nothing does.
  EXPECT_TRUE(harness.runUntil([&] { return pixel(350, 170) == kRed; }));
  EXPECT_EQ(pixel(250, 170), 0xFFFFFFU);
  EXPECT_EQ(pixel(350, 270), 0xFFFFFFU);
}

TEST_F(LinuxDrawingTest, AnImageFadesOutAndInAgain) {
  auto* image = dynamic_cast<platform::ImageView*>(window->viewNamed("picture"));
  ASSERT_NE(image, nullptr);
  image->setImageNamed("NSStatusAvailable");
  const auto place = [&] { return camera.take(0, 440, 64, 40); };
  const Picture empty = place();
  ASSERT_TRUE(harness.runUntil([&] { return place() != empty; }));
  const Picture resting = place();
  bool gone = false;
  image->animateOpacity(0, Millis{200}, [&] { gone = true; });
  EXPECT_TRUE(harness.runUntil([&] { return gone && place() == empty; }));
  bool back = false;
  int between = 0;
  image->animateOpacity(1, Millis{300}, [&] { back = true; });
  EXPECT_TRUE(harness.runUntil([&] {
    const Picture shown = place();
    between += shown != empty && shown != resting ? 1 : 0;
    return back && shown == resting;
  }));
  EXPECT_GT(between, 0);
}

TEST_F(LinuxDrawingTest, ClicksFollowAViewThatIsMovedOrTurned) {
  GtkWidget* first = LinuxToolkit::widget(view("first"));
  GtkWidget* widget = LinuxToolkit::widget(*bar);
  EXPECT_EQ(pick(300, 220), widget);
  EXPECT_EQ(pick(300, 140), first);
  bar->setRotation(std::numbers::pi / 2);
  EXPECT_TRUE(harness.runUntil([&] { return pixel(300, 140) == kRed; }));
  EXPECT_EQ(pick(300, 140), widget);
  EXPECT_EQ(pick(210, 220), first);
  bar->setRotation(0);
  bar->setFrame({20, 300, 200, 40});
  EXPECT_TRUE(harness.runUntil([&] { return pixel(30, 310) == kRed; }));
  EXPECT_EQ(pick(30, 310), widget);
  EXPECT_EQ(pick(300, 220), first);
}

}  // namespace

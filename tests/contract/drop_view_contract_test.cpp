#include <memory>
#include <optional>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/drop_view.h"
#include "tests/contract/screen_picture.h"
#include "tests/contract/toolkit_harness.h"

// The view that takes drops, as far as a test can go that makes no drags itself.

namespace {

using platform::Canvas;
using platform::Color;
using platform::DraggingInfo;
using platform::Rect;

constexpr unsigned long kBlue = 0x0000FF;
constexpr unsigned long kWhite = 0xFFFFFF;

class Drawer final : public platform::DropDestination {
 public:
  unsigned draggingEntered(const DraggingInfo& /*sender*/) override { return platform::kDragOperationEvery; }
  void draggingExited(const DraggingInfo& /*sender*/) override {}
  bool prepareForDragOperation(const DraggingInfo& /*sender*/) override { return true; }
  bool performDragOperation(const DraggingInfo& /*sender*/) override { return true; }
  void draggingEnded(const DraggingInfo& /*sender*/) override {}
  void drawRect(const Rect& area, Canvas& canvas) override {
    areas.push_back(area);
    if (draw) {
      draw(area, canvas);
    }
  }

  std::vector<Rect> areas;
  std::function<void(const Rect&, Canvas&)> draw;
};

template <class Harness>
class DropViewTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_NE(window, nullptr);
    ASSERT_NE(drops(), nullptr);
    window->contentView().setBackgroundColor(Color{1, 1, 1, 1});
    window->makeKeyAndOrderFront();
    ASSERT_TRUE(harness.runUntil([&] { return window->contentView().frame() == all; }));
  }
  platform::DropView* drops() { return dynamic_cast<platform::DropView*>(window->viewNamed("drops")); }

  const Rect all{0, 0, 640, 480};
  // Before the window, which goes first.
  Drawer drawer;
  Harness harness;
  std::unique_ptr<platform::Window> window = harness.windows().loadWindow("ContractDrops");
};

template <class Harness>
class DropViewContract : public DropViewTest<Harness> {};

TYPED_TEST_SUITE(DropViewContract, Toolkits);

TYPED_TEST(DropViewContract, IsAViewLikeOthersAndFollowsWhatItCovers) {
  EXPECT_EQ(this->drops()->kind(), platform::ViewKind::View);
  EXPECT_EQ(this->drops()->superview(), &this->window->contentView());
  EXPECT_EQ(this->drops()->window(), this->window.get());
  this->drops()->setFrame({1, 2, 3, 4});
  EXPECT_EQ(this->drops()->frame(), (Rect{1, 2, 3, 4}));
  this->drops()->setFrame(this->all);
  this->window->setFrame({0, 0, 700, 500}, false);
  EXPECT_TRUE(this->harness.runUntil([&] { return this->drops()->frame() == Rect{0, 0, 700, 500}; }));
}

TYPED_TEST(DropViewContract, DrawsAllOfItselfALittleAfterItNeedsTo) {
  this->drops()->setDestination(&this->drawer);
  this->drops()->registerForDraggedTypes({platform::kStringPboardType});
  this->drawer.areas.clear();
  this->drops()->setNeedsDisplay();
  EXPECT_TRUE(this->drawer.areas.empty());
  EXPECT_TRUE(this->harness.runUntil([&] { return !this->drawer.areas.empty(); }));
  EXPECT_EQ(this->drawer.areas.back(), this->all);
}

TYPED_TEST(DropViewContract, ADestinationThatWasTakenOffIsLeftAlone) {
  this->drops()->setDestination(&this->drawer);
  this->drops()->setNeedsDisplay();
  this->drops()->setDestination(nullptr);
  this->drops()->setNeedsDisplay();
  bool later = false;
  this->harness.dispatch().main().after(platform::Millis{200}, [&] { later = true; });
  EXPECT_TRUE(this->harness.runUntil([&] { return later; }));
  EXPECT_TRUE(this->drawer.areas.empty());
}

class LinuxDropViewTest : public DropViewTest<LinuxToolkit> {
 protected:
  unsigned long pixel(int x, int y) { return camera.take(x, y, 1, 1).front(); }
  void show(std::function<void(const Rect&, Canvas&)> draw) {
    drawer.draw = std::move(draw);
    drawer.areas.clear();
    drops()->setDestination(&drawer);
    ASSERT_TRUE(harness.runUntil([&] { return !drawer.areas.empty(); }));
  }
  bool shows(int x, int y, unsigned long color) {
    return harness.runUntil([&] { return pixel(x, y) == color; });
  }

  ScreenCamera camera{LinuxToolkit::machine().display()};
};

TEST_F(LinuxDropViewTest, ALineAlongTheEdgeIsDrawnInsideInItsFullWidth) {
  show([](const Rect& area, Canvas& canvas) {
    canvas.setDefaultLineWidth(5);
    canvas.setColor({1, 1, 1, 1});
    canvas.setColor({0, 0, 1, 1});
    canvas.strokeRect(area);
  });
  for (const auto& [x, y] : {std::pair(0, 240),
                             {4, 240},
                             {635, 240},
                             {639, 240},
                             {320, 0},
                             {320, 4},
                             {320, 475},
                             {320, 479},
                             {0, 0},
                             {639, 479}}) {
    EXPECT_TRUE(shows(x, y, kBlue)) << x << ", " << y;
  }
  for (const auto& [x, y] : {std::pair(5, 240), {634, 240}, {320, 5}, {320, 474}, {320, 240}}) {
    EXPECT_TRUE(shows(x, y, kWhite)) << x << ", " << y;
  }
}

TEST_F(LinuxDropViewTest, ALineInTheMidstLiesOnTheRectanglesEdge) {
  show([](const Rect&, Canvas& canvas) {
    canvas.setDefaultLineWidth(4);
    canvas.setColor({0, 0, 1, 1});
    canvas.strokeRect({100, 100, 200, 100});
    // Nothing of it is in the view, or it has no width.
    canvas.strokeRect({-100, -100, 20, 20});
    canvas.setDefaultLineWidth(-1);
    canvas.strokeRect({400, 100, 100, 100});
  });
  for (const auto& [x, y] : {std::pair(98, 150), {101, 150}, {298, 150}, {301, 150}, {200, 98}, {200, 201}}) {
    EXPECT_TRUE(shows(x, y, kBlue)) << x << ", " << y;
  }
  for (const auto& [x, y] : {std::pair(97, 150), {102, 150}, {302, 150}, {200, 150}, {0, 0}, {400, 150}}) {
    EXPECT_TRUE(shows(x, y, kWhite)) << x << ", " << y;
  }
}

TEST_F(LinuxDropViewTest, ClicksGoToWhatLiesBelow) {
  drops()->setDestination(&drawer);
  drops()->registerForDraggedTypes({platform::kStringPboardType});
  GtkWidget* page = LinuxToolkit::widget(*window, "page");
  EXPECT_TRUE(harness.runUntil([&] {
    return gtk_widget_pick(GTK_WIDGET(LinuxToolkit::toplevel(*window)), 320, 240, GTK_PICK_DEFAULT) == page;
  }));
}

TEST_F(LinuxDropViewTest, MayGoBeforeAndAfterItsWindow) {
  drops()->setDestination(&drawer);
  drops()->registerForDraggedTypes({platform::kStringPboardType, platform::kFilenamesPboardType});
  drops()->registerForDraggedTypes({platform::kStringPboardType});
  const std::weak_ptr<void> life = drops()->lifetime();
  window.reset();
  EXPECT_TRUE(life.expired());
}

}  // namespace

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/LumoNSViewAdditions.h"
#include "tests/contract/toolkit_harness.h"

namespace {

namespace additions = lumo::LumoNSViewAdditions;

using platform::Color;
using platform::Millis;
using platform::Point;
using platform::Rect;
using platform::View;
using testing::ElementsAre;
using testing::IsEmpty;

template <class Harness>
class ViewContract : public ToolkitTest<Harness> {};

TYPED_TEST_SUITE(ViewContract, Toolkits);

TYPED_TEST(ViewContract, TellsWhatItsDescriptionSays) {
  View& first = this->view("first");
  EXPECT_EQ(first.identifier(), "First");
  EXPECT_EQ(first.tag(), 41);
  EXPECT_FALSE(this->view("second").identifier());
  EXPECT_FALSE(this->view("second").tag());
  EXPECT_EQ(this->window->viewWithTag(41), &first);
  EXPECT_EQ(this->window->viewWithTag(42), nullptr);
  EXPECT_EQ(this->window->viewNamed("nobody"), nullptr);
  EXPECT_EQ(first.kind(), platform::ViewKind::View);
  EXPECT_TRUE(this->view("field").isKindOf(platform::ViewKind::TextField));
  EXPECT_TRUE(this->view("field").isKindOf(platform::ViewKind::View));
  EXPECT_FALSE(this->view("button").isKindOf(platform::ViewKind::TextField));
  EXPECT_EQ(platform::description(first), "<View First>");
}

TYPED_TEST(ViewContract, KnowsWhereItStands) {
  View& content = this->window->contentView();
  View& first = this->view("first");
  EXPECT_EQ(content.superview(), nullptr);
  EXPECT_EQ(first.superview(), &content);
  EXPECT_EQ(first.window(), this->window.get());
  EXPECT_THAT(content.subviews(),
              ElementsAre(&first, &this->view("second"), &this->view("row"), &this->view("picture")));
  EXPECT_EQ(this->view("row").subviews().size(), 4U);
  EXPECT_THAT(this->view("field").subviews(), IsEmpty());
  EXPECT_EQ(this->view("button").superview(), &this->view("row"));
}

TYPED_TEST(ViewContract, KeepsTheFrameThatItIsGiven) {
  View& first = this->view("first");
  EXPECT_EQ(first.frame(), this->all);
  first.setFrame({10, 20, 300, 200});
  EXPECT_EQ(first.frame(), (Rect{10, 20, 300, 200}));
  first.setFrame({-10, 20, -5, -1});
  EXPECT_EQ(first.frame(), (Rect{-10, 20, 0, 0}));
  first.setFrame({0, 0, 505, 14047});
  EXPECT_EQ(first.frame(), (Rect{0, 0, 505, 14047}));
  EXPECT_EQ(this->window->contentView().frame(), this->all);
}

TYPED_TEST(ViewContract, FollowsItsSuperviewOnlyWhenItCoversIt) {
  View& first = this->view("first");
  View& second = this->view("second");
  first.setFrame({10, 20, 300, 200});
  second.setFrame({10, 20, 300, 200});
  second.setFrame(this->all);
  this->window->setFrame({0, 0, 700, 500}, false);

  EXPECT_TRUE(this->harness.runUntil([&] {
    return this->window->contentView().frame() == Rect{0, 0, 700, 500};
  }));
  EXPECT_EQ(second.frame(), (Rect{0, 0, 700, 500}));
  EXPECT_EQ(first.frame(), (Rect{10, 20, 300, 200}));
}

TYPED_TEST(ViewContract, HidesAndShows) {
  View& first = this->view("first");
  EXPECT_FALSE(first.isHidden());
  first.setHidden(true);
  EXPECT_TRUE(first.isHidden());
  first.setHidden(false);
  EXPECT_FALSE(first.isHidden());
}

TYPED_TEST(ViewContract, KeepsItsOpacityBetweenNothingAndAll) {
  View& first = this->view("first");
  EXPECT_EQ(first.opacity(), 1);
  first.setOpacity(0.25);
  EXPECT_EQ(first.opacity(), 0.25);
  first.setOpacity(-1);
  EXPECT_EQ(first.opacity(), 0);
  first.setOpacity(7);
  EXPECT_EQ(first.opacity(), 1);
}

TYPED_TEST(ViewContract, HasAColourBehindItOrNone) {
  View& first = this->view("first");
  EXPECT_FALSE(first.backgroundColor());
  first.setBackgroundColor(Color{1, 0.5, 0, 0.75});
  EXPECT_EQ(first.backgroundColor(), (Color{1, 0.5, 0, 0.75}));
  first.setFrame({1, 2, 3, 4});
  EXPECT_EQ(first.backgroundColor(), (Color{1, 0.5, 0, 0.75}));
  first.setBackgroundColor(std::nullopt);
  EXPECT_FALSE(first.backgroundColor());
}

TYPED_TEST(ViewContract, TakesASubviewAboveAnotherOrOnTop) {
  View& content = this->window->contentView();
  const auto above = this->harness.windows().makeWebView({0, 0, 50, 40});
  const auto top = this->harness.windows().makeWebView(this->all);
  content.addSubviewAbove(*above, &this->view("first"));
  content.addSubviewAbove(*top, nullptr);

  EXPECT_THAT(content.subviews(), ElementsAre(&this->view("first"), above.get(), &this->view("second"),
                                              &this->view("row"), &this->view("picture"), top.get()));
  EXPECT_EQ(above->superview(), &content);
  EXPECT_EQ(above->window(), this->window.get());
  EXPECT_EQ(above->frame(), (Rect{0, 0, 50, 40}));
  EXPECT_EQ(top->frame(), this->all);

  this->window->setFrame({0, 0, 700, 500}, false);
  EXPECT_TRUE(this->harness.runUntil([&] { return top->frame() == Rect{0, 0, 700, 500}; }));
  EXPECT_EQ(above->frame(), (Rect{0, 0, 50, 40}));
}

TYPED_TEST(ViewContract, ASubviewThatIsAddedAgainMoves) {
  View& content = this->window->contentView();
  View* first = &this->view("first");
  View* second = &this->view("second");
  View* row = &this->view("row");
  View* picture = &this->view("picture");
  const auto added = this->harness.windows().makeWebView({5, 6, 50, 40});
  content.addSubviewAbove(*added, nullptr);
  content.addSubviewAbove(*added, first);
  EXPECT_THAT(content.subviews(), ElementsAre(first, added.get(), second, row, picture));
  // A sibling that is elsewhere counts as none.
  content.addSubviewAbove(*added, &this->view("button"));
  EXPECT_THAT(content.subviews(), ElementsAre(first, second, row, picture, added.get()));
  EXPECT_EQ(added->frame(), (Rect{5, 6, 50, 40}));
}

TYPED_TEST(ViewContract, AViewThatGoesLeavesItsSuperview) {
  View& content = this->window->contentView();
  auto added = this->harness.windows().makeWebView(this->all);
  content.addSubviewAbove(*added, nullptr);
  const std::weak_ptr<void> life = added->lifetime();
  EXPECT_FALSE(life.expired());
  added.reset();
  EXPECT_TRUE(life.expired());
  EXPECT_EQ(content.subviews().size(), 4U);
}

TYPED_TEST(ViewContract, ViewsOfADescriptionLiveAsLongAsTheirWindow) {
  const std::weak_ptr<void> content = this->window->contentView().lifetime();
  const std::weak_ptr<void> field = this->view("field").lifetime();
  EXPECT_FALSE(content.expired());
  EXPECT_FALSE(field.expired());
  this->window.reset();
  EXPECT_TRUE(content.expired());
  EXPECT_TRUE(field.expired());
}

TYPED_TEST(ViewContract, AnAnimatedFrameReadsAsTheNewOneAtOnceAndEndsInTime) {
  View& first = this->view("first");
  const Rect wanted{100, 50, 640, 480};
  const Millis start = this->harness.dispatch().now();
  std::optional<Millis> end;
  bool onMain = false;
  first.animateFrame(wanted, Millis{120}, [&] {
    end = this->harness.dispatch().now();
    onMain = this->harness.dispatch().main().isCurrent();
  });
  EXPECT_EQ(first.frame(), wanted);
  EXPECT_FALSE(end);
  EXPECT_TRUE(this->harness.runUntil([&] {
    EXPECT_EQ(first.frame(), wanted);
    return end.has_value();
  }));
  EXPECT_GE(*end - start, Millis{120});
  EXPECT_TRUE(onMain);
  EXPECT_EQ(first.frame(), wanted);
}

TYPED_TEST(ViewContract, AnAnimatedOpacityReadsAsTheNewOneAtOnceAndEndsInTime) {
  View& first = this->view("first");
  const Millis start = this->harness.dispatch().now();
  std::optional<Millis> end;
  first.animateOpacity(-0.5, Millis{120}, [&] { end = this->harness.dispatch().now(); });
  EXPECT_EQ(first.opacity(), 0);
  EXPECT_TRUE(this->harness.runUntil([&] { return end.has_value(); }));
  EXPECT_GE(*end - start, Millis{120});
  EXPECT_EQ(first.opacity(), 0);
}

TYPED_TEST(ViewContract, AReplacedMotionStillCompletes) {
  View& first = this->view("first");
  std::vector<std::string> ends;
  first.animateFrame({100, 0, 640, 480}, Millis{200}, [&] { ends.push_back("first frame"); });
  first.animateFrame({0, 100, 640, 480}, Millis{50}, [&] { ends.push_back("second frame"); });
  first.animateOpacity(0, Millis{300}, [&] { ends.push_back("first opacity"); });
  first.setOpacity(0.5);
  EXPECT_TRUE(this->harness.runUntil([&] { return ends.size() == 3; }));
  EXPECT_THAT(ends, ElementsAre("second frame", "first frame", "first opacity"));
  EXPECT_EQ(first.frame(), (Rect{0, 100, 640, 480}));
  EXPECT_EQ(first.opacity(), 0.5);
}

TYPED_TEST(ViewContract, AnimationsEndAlsoOffTheScreen) {
  View& first = this->view("first");
  first.setHidden(true);
  int ends = 0;
  first.animateFrame({100, 0, 640, 480}, Millis{30}, [&] { ++ends; });
  first.animateOpacity(0.5, Millis{30}, [&] { ++ends; });
  first.addAnimation({0, 1, Millis{30}, false}, "turn", [&](bool finished) { ends += finished ? 1 : 10; });
  first.animateOpacity(0.25, Millis{0}, {});
  EXPECT_TRUE(this->harness.runUntil([&] { return ends == 3; })) << ends;
  EXPECT_EQ(first.frame(), (Rect{100, 0, 640, 480}));
  EXPECT_EQ(first.opacity(), 0.25);
}

TYPED_TEST(ViewContract, ATurnTellsHowItEnded) {
  View& first = this->view("first");
  std::vector<std::string> ends;
  const auto noting = [&](const std::string& name) {
    return [&ends, name](bool finished) { ends.push_back(name + (finished ? " finished" : " removed")); };
  };
  const Millis start = this->harness.dispatch().now();
  first.addAnimation({0, 1, Millis{10000}, true}, "endless", noting("endless"));
  first.addAnimation({0, 1, Millis{60}, false}, "short", noting("short"));
  first.addAnimation({0, 1, Millis{10000}, false}, "replaced", noting("old"));
  first.addAnimation({0, 1, Millis{90}, false}, "replaced", noting("new"));
  EXPECT_THAT(first.animationKeys(), ElementsAre("endless", "short", "replaced"));
  EXPECT_THAT(ends, IsEmpty());

  EXPECT_TRUE(this->harness.runUntil([&] { return ends.size() == 3; }));
  EXPECT_GE(this->harness.dispatch().now() - start, Millis{90});
  EXPECT_THAT(ends, ElementsAre("old removed", "short finished", "new finished"));
  EXPECT_THAT(first.animationKeys(), ElementsAre("endless"));

  first.removeAnimation("endless");
  first.removeAnimation("nobody");
  EXPECT_THAT(first.animationKeys(), IsEmpty());
  EXPECT_EQ(ends.size(), 3U);
  EXPECT_TRUE(this->harness.runUntil([&] { return ends.size() == 4; }));
  EXPECT_EQ(ends.back(), "endless removed");
}

TYPED_TEST(ViewContract, TheAnchorPointAloneMovesTheView) {
  View& first = this->view("first");
  first.setFrame({100, 50, 200, 80});
  EXPECT_EQ(first.anchorPoint(), (Point{0.5, 0.5}));
  EXPECT_EQ(first.layerPosition(), (Point{200, 90}));
  first.setLayerAnchorPoint({0, 1});
  EXPECT_EQ(first.anchorPoint(), (Point{0, 1}));
  EXPECT_EQ(first.layerPosition(), (Point{200, 90}));
  EXPECT_EQ(first.frame(), (Rect{200, 10, 200, 80}));
  first.setLayerPosition({20, 180});
  EXPECT_EQ(first.frame(), (Rect{20, 100, 200, 80}));
  EXPECT_EQ(first.layerPosition(), (Point{20, 180}));
  first.setFrame({1, 2, 200, 80});
  EXPECT_EQ(first.frame(), (Rect{1, 2, 200, 80}));
  EXPECT_EQ(first.anchorPoint(), (Point{0, 1}));
}

TYPED_TEST(ViewContract, TheAnchorPointWithThePositionLeavesTheViewInPlace) {
  View& first = this->view("first");
  first.setFrame({100, 50, 200, 80});
  additions::setAnchorPoint(first, {0.25, 1});
  EXPECT_EQ(first.anchorPoint(), (Point{0.25, 1}));
  EXPECT_EQ(first.frame(), (Rect{100, 50, 200, 80}));
  EXPECT_EQ(first.layerPosition(), (Point{150, 130}));
}

TYPED_TEST(ViewContract, KeepsItsTurn) {
  View& first = this->view("first");
  EXPECT_EQ(first.rotation(), 0);
  first.setRotation(0.5);
  EXPECT_EQ(first.rotation(), 0.5);
  first.addAnimation({1, 2, Millis{30}, false}, "turn", {});
  EXPECT_EQ(first.rotation(), 0.5);
  EXPECT_TRUE(this->harness.runUntil([&] { return first.animationKeys().empty(); }));
  EXPECT_EQ(first.rotation(), 0.5);
}

TYPED_TEST(ViewContract, ControlsKeepTheirContent) {
  auto& field = dynamic_cast<platform::TextField&>(this->view("field"));
  field.setStringValue("http://10.0.0.5:9090/Grüße");
  EXPECT_EQ(field.stringValue(), "http://10.0.0.5:9090/Grüße");
  auto& button = dynamic_cast<platform::Button&>(this->view("button"));
  button.setTitle("Done");
  EXPECT_EQ(button.title(), "Done");
  EXPECT_TRUE(button.isEnabled());
  button.setEnabled(false);
  EXPECT_FALSE(button.isEnabled());
  EXPECT_EQ(dynamic_cast<platform::SegmentedControl&>(this->view("segments")).selectedSegment(), -1);
}

}  // namespace

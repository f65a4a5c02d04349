#include "support/LumoNSViewAdditions.h"

#include <cmath>
#include <memory>
#include <numbers>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/fakes/captured_log.h"
#include "tests/fakes/fake_controls.h"
#include "tests/fakes/fake_view.h"
#include "tests/fakes/journal.h"
#include "tests/fakes/sim_dispatch.h"

namespace {

using fakes::CapturedLog;
using fakes::FakeImageView;
using fakes::FakeView;
using fakes::Journal;
using fakes::SimDispatch;
using fakes::TimeLog;
using fakes::ViewOptions;
using platform::Millis;
using platform::Point;
using platform::Rect;
using platform::View;
using testing::ElementsAre;
using testing::IsEmpty;

namespace additions = lumo::LumoNSViewAdditions;

using Lines = std::vector<std::string>;

constexpr Rect kFrame{100, 50, 40, 20};
constexpr Millis kHour = std::chrono::hours(1);
constexpr const char* kTurnHasEnded = "<View>-animationDidStop:finished:-> ...";

class LumoNSViewAdditionsTest : public testing::Test {
 protected:
  static ViewOptions framed() {
    ViewOptions options;
    options.frame = kFrame;
    return options;
  }
  // The times at which the journal has an entry that begins so.
  std::vector<int> timesOf(const std::string& prefix) const {
    std::vector<int> times;
    for (const std::string& entry : journal.timedStartingWith(prefix)) {
      times.push_back(std::stoi(entry));
    }
    return times;
  }

  SimDispatch dispatch;
  Journal journal{dispatch};
  TimeLog happened{dispatch};
  CapturedLog log;
  FakeView view{{dispatch, journal}, "view", framed()};
  FakeImageView image{{dispatch, journal}, "image", framed()};
};

using ViewShake = LumoNSViewAdditionsTest;

TEST_F(ViewShake, MovesRightBackLeftAndBackInFourStepsOfFiftyMilliseconds) {
  additions::nodLeftRightWithCompletionHandler(dispatch, view, happened.adding("done"));
  dispatch.advance(kHour);

  EXPECT_THAT(journal.timed(), ElementsAre("0 view animateFrame {{110, 50}, {40, 20}} 50ms",  //
                                           "50 view animateFrame {{100, 50}, {40, 20}} 50ms",
                                           "100 view animateFrame {{100, 50}, {40, 20}} 0ms",
                                           "100 view animateFrame {{90, 50}, {40, 20}} 50ms",
                                           "150 view animateFrame {{100, 50}, {40, 20}} 0ms",
                                           "150 view animateFrame {{100, 50}, {40, 20}} 50ms"));
  EXPECT_EQ(happened.entries(), Lines{"200 done"});
  EXPECT_EQ(view.frame(), kFrame);
}

TEST_F(ViewShake, LogsTheFramesAndEachStep) {
  additions::nodLeftRightWithCompletionHandler(dispatch, view, {});
  dispatch.advance(Millis{200});

  EXPECT_THAT(log.lines(), ElementsAre(" self.animator.frame = {{100, 50}, {40, 20}}",  //
                                       "          self.frame = {{100, 50}, {40, 20}}",  //
                                       "111111...", "2222222...", "3333...", "4444...", "DONE..."));
}

TEST_F(ViewShake, ReturnsBeforeAnythingHappens) {
  additions::nodLeftRightWithCompletionHandler(dispatch, view, happened.adding("done"));

  EXPECT_THAT(journal.entries(), IsEmpty());
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(ViewShake, StartsFromTheFrameThatTheViewHasWhenItsTurnComes) {
  additions::nodLeftRightWithCompletionHandler(dispatch, view, {});
  view.moveTo({0, 0, 10, 10});
  dispatch.runUntilIdle();

  EXPECT_EQ(view.frame(), (Rect{10, 0, 10, 10}));
}

TEST_F(ViewShake, EndsQuietlyWhenItsViewGoes) {
  auto shortLived = std::make_unique<FakeView>(fakes::Stage{dispatch, journal}, "shortLived", framed());
  additions::nodLeftRightWithCompletionHandler(dispatch, *shortLived, happened.adding("done"));
  dispatch.advance(Millis{120});
  shortLived.reset();
  dispatch.advance(kHour);

  EXPECT_THAT(happened.entries(), IsEmpty());
  EXPECT_THAT(timesOf("shortLived"), ElementsAre(0, 50, 100, 100));
}

TEST_F(ViewShake, NeverBeginsOnAViewThatIsGone) {
  auto shortLived = std::make_unique<FakeView>(fakes::Stage{dispatch, journal}, "shortLived", framed());
  additions::nodLeftRightWithCompletionHandler(dispatch, *shortLived, happened.adding("done"));
  shortLived.reset();
  dispatch.advance(kHour);

  EXPECT_THAT(happened.entries(), IsEmpty());
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(ViewShake, ACountOfTwoPerformsTwoOneAfterAnotherAtTheNextMillisecond) {
  additions::nodLeftRight(dispatch, view, 2);
  dispatch.advance(kHour);

  EXPECT_THAT(timesOf("view animateFrame {{110, 50}"), ElementsAre(0, 201));
}

TEST_F(ViewShake, ACountOfZeroPerformsThree) {
  additions::nodLeftRight(dispatch, view, 0);
  dispatch.advance(kHour);

  EXPECT_THAT(timesOf("view animateFrame {{110, 50}"), ElementsAre(0, 201, 402));
}

TEST_F(ViewShake, TheLoopLogsEachPassWithTheCounterThatIsLeft) {
  additions::nodLeftRight(dispatch, view, 2);
  dispatch.advance(kHour);

  Lines loopLines;
  for (const std::string& line : log.lines()) {
    if (line.starts_with("nodLeftRight:") || line == "DONE...") {
      loopLines.push_back(line);
    }
  }
  EXPECT_THAT(loopLines, ElementsAre("nodLeftRight:-> myloopcount[1] start...", "DONE...",
                                     "nodLeftRight:-> myloopcount[1] ended...",
                                     "nodLeftRight:-> myloopcount[0] start...", "DONE...",
                                     "nodLeftRight:-> myloopcount[0] ended..."));
}

TEST_F(ViewShake, TheLoopEndsWithItsView) {
  auto shortLived = std::make_unique<FakeView>(fakes::Stage{dispatch, journal}, "shortLived", framed());
  additions::nodLeftRight(dispatch, *shortLived, 3);
  dispatch.advance(Millis{250});
  shortLived.reset();
  dispatch.advance(kHour);

  EXPECT_THAT(timesOf("shortLived animateFrame {{110, 50}"), ElementsAre(0, 201));
  EXPECT_EQ(dispatch.pendingTimers(), 0U);
}

using ViewFade = LumoNSViewAdditionsTest;

TEST_F(ViewFade, ShowsTheTwoImagesInFiveStepsOfOneSecond) {
  additions::fadeImageWithCompletionHandler(dispatch, image, happened.adding("done"));
  dispatch.advance(kHour);

  EXPECT_THAT(journal.timed(), ElementsAre("0 image animateOpacity 1 1000ms",              //
                                           "0 image setImageNamed Recording_text.png",     //
                                           "1000 image animateOpacity 0 1000ms",           //
                                           "2000 image setHidden YES",                     //
                                           "2000 image setImageNamed Complete_text.png",   //
                                           "2000 image setHidden NO",                      //
                                           "2000 image animateOpacity 1 1000ms",           //
                                           "3000 image animateOpacity 0 1000ms",           //
                                           "4000 image setHidden YES",                     //
                                           "4000 image setImageNamed Recording_text.png",  //
                                           "4000 image setHidden NO",                      //
                                           "4000 image animateOpacity 1 1000ms"));
  EXPECT_EQ(happened.entries(), Lines{"5000 done"});
  EXPECT_FALSE(image.isHidden());
  EXPECT_EQ(image.opacity(), 1.0);
}

TEST_F(ViewFade, DoesNothingToAPlainViewAndNeverCallsItsBlock) {
  additions::fadeImageWithCompletionHandler(dispatch, view, happened.adding("done"));
  dispatch.advance(kHour);

  EXPECT_THAT(journal.entries(), IsEmpty());
  EXPECT_THAT(happened.entries(), IsEmpty());
}

TEST_F(ViewFade, ACountOfTwoPerformsTwoSequencesOnTheNextTenthOfASecond) {
  additions::fadeInOut(dispatch, image, 2);
  dispatch.advance(kHour);

  EXPECT_EQ(image.history().size(), 6U);
  EXPECT_THAT(timesOf("image animateOpacity 1"), ElementsAre(0, 2000, 4000, 5100, 7100, 9100));
}

TEST_F(ViewFade, ACountOfZeroPerformsThreeSequences) {
  additions::fadeInOut(dispatch, image, 0);
  dispatch.advance(kHour);

  EXPECT_EQ(image.history().size(), 9U);
}

TEST_F(ViewFade, TheLoopWaitsForEverOnAPlainViewAndThatCostsNothing) {
  additions::fadeInOut(dispatch, view, 2);
  dispatch.runUntilIdle();

  EXPECT_EQ(dispatch.pendingTimers(), 0U);
  EXPECT_EQ(dispatch.advance(kHour), 0U);
  EXPECT_THAT(journal.entries(), IsEmpty());
}

TEST_F(ViewFade, EndsQuietlyWhenItsViewGoesInTheMiddle) {
  auto shortLived = std::make_unique<FakeImageView>(fakes::Stage{dispatch, journal}, "shortLived");
  additions::fadeInOut(dispatch, *shortLived, 2);
  dispatch.advance(Millis{1500});
  shortLived.reset();
  dispatch.advance(kHour);

  EXPECT_THAT(timesOf("shortLived"), ElementsAre(0, 0, 1000));
}

using ViewSpin = LumoNSViewAdditionsTest;

TEST_F(ViewSpin, TurnsClockwiseWithoutEndOnceASecondAboutTheCentre) {
  image.setLayerAnchorPoint({0, 0});
  additions::rotateViewWithCompletionBlock(dispatch, image, happened.adding("started"));
  dispatch.advance(kHour);

  const platform::RotationAnimation* spin = image.animation("rotation");
  ASSERT_NE(spin, nullptr);
  EXPECT_EQ(spin->from, 0.0);
  EXPECT_EQ(spin->to, -2 * std::numbers::pi);
  EXPECT_EQ(spin->duration, Millis{1000});
  EXPECT_TRUE(spin->forever);
  EXPECT_EQ(image.anchorPoint(), (Point{0.5, 0.5}));
  EXPECT_EQ(happened.entries(), Lines{"0 started"});
}

TEST_F(ViewSpin, TheFirstVariantCallsNothingWhenASpinRunsAlready) {
  additions::rotateViewWithCompletionBlock(dispatch, view, happened.adding("first"));
  additions::rotateViewWithCompletionBlock(dispatch, view, happened.adding("second"));
  dispatch.advance(kHour);

  EXPECT_EQ(happened.entries(), Lines{"0 first"});
}

TEST_F(ViewSpin, TheSecondVariantTellsTrueThenFalseAndOnlyOneSpinRuns) {
  std::vector<bool> answers;
  const auto keep = [&](bool started) { answers.push_back(started); };
  additions::rotateViewWithCompletionBlock2(dispatch, view, keep);
  additions::rotateViewWithCompletionBlock2(dispatch, view, keep);
  dispatch.runUntilIdle();

  EXPECT_THAT(answers, ElementsAre(true, false));
  EXPECT_THAT(view.animationKeys(), ElementsAre("rotation"));
  EXPECT_EQ(journal.startingWith("view addAnimation").size(), 1U);
}

TEST_F(ViewSpin, AnyOtherAnimationOfTheViewKeepsItFromSpinning) {
  additions::rotateNSViewWithCompletionHandler(dispatch, view, {});
  std::vector<bool> answers;
  additions::rotateViewWithCompletionBlock2(dispatch, view,
                                            [&](bool started) { answers.push_back(started); });
  dispatch.runUntilIdle();

  EXPECT_THAT(answers, ElementsAre(false));
  EXPECT_THAT(view.animationKeys(), ElementsAre("transform"));
}

TEST_F(ViewSpin, RunsWithoutATimerOfItsOwn) {
  additions::rotateViewWithCompletionBlock(dispatch, view, {});
  dispatch.runUntilIdle();

  EXPECT_EQ(dispatch.pendingTimers(), 0U);
}

using ViewTurn = LumoNSViewAdditionsTest;

TEST_F(ViewTurn, IsOneEvenTurnCounterClockwiseWithinASecond) {
  additions::rotateNSViewWithCompletionHandler(dispatch, view, happened.adding("done"));
  dispatch.runUntilIdle();

  const platform::RotationAnimation* turn = view.animation("transform");
  ASSERT_NE(turn, nullptr);
  EXPECT_EQ(turn->from, 0.0);
  EXPECT_EQ(turn->to, static_cast<double>(6.2831855F));
  EXPECT_EQ(turn->duration, Millis{1000});
  EXPECT_FALSE(turn->forever);
}

TEST_F(ViewTurn, SetsTheAnchorPointTwiceAndTheSecondWins) {
  additions::rotateNSViewWithCompletionHandler(dispatch, view, {});
  dispatch.runUntilIdle();

  EXPECT_THAT(journal.startingWith("view setLayer"),
              ElementsAre("view setLayerAnchorPoint {0.5, 1}", "view setLayerAnchorPoint {0.5, 0.5}"));
  EXPECT_EQ(view.frame(), kFrame);
}

TEST_F(ViewTurn, LogsItsEndAfterExactlyOneSecondAndNeverCallsItsBlock) {
  additions::rotateNSViewWithCompletionHandler(dispatch, view, happened.adding("done"));
  dispatch.advance(Millis{999});
  EXPECT_THAT(log.lines(), IsEmpty());
  dispatch.advance(Millis{1});
  EXPECT_THAT(log.lines(), ElementsAre(kTurnHasEnded));
  dispatch.advance(kHour);

  EXPECT_THAT(happened.entries(), IsEmpty());
  EXPECT_THAT(view.animationKeys(), IsEmpty());
}

TEST_F(ViewTurn, LogsItsEndAlsoWhenItIsRemovedBefore) {
  additions::rotateNSViewWithCompletionHandler(dispatch, view, {});
  dispatch.advance(Millis{300});
  view.removeAnimation("transform");
  dispatch.advance(kHour);

  EXPECT_EQ(log.count(kTurnHasEnded), 1U);
}

TEST_F(ViewTurn, ALoopOfThreePerformsOneAndThenWaitsWithoutEndAtNoCost) {
  additions::rotateImage(dispatch, image, 3);
  dispatch.advance(Millis{1000});

  EXPECT_EQ(dispatch.pendingTimers(), 0U);
  EXPECT_EQ(dispatch.advance(kHour), 0U);
  EXPECT_EQ(journal.startingWith("image addAnimation").size(), 1U);
}

TEST_F(ViewTurn, NeverBeginsOnAViewThatIsGone) {
  auto shortLived = std::make_unique<FakeView>(fakes::Stage{dispatch, journal}, "shortLived");
  additions::rotateImage(dispatch, *shortLived, 0);
  additions::rotateViewWithCompletionBlock(dispatch, *shortLived, happened.adding("started"));
  shortLived.reset();
  dispatch.advance(kHour);

  EXPECT_THAT(journal.entries(), IsEmpty());
  EXPECT_THAT(happened.entries(), IsEmpty());
}

using ViewFlash = LumoNSViewAdditionsTest;

TEST_F(ViewFlash, FadesOutIn200MillisecondsAndInIn150) {
  additions::flashOnOffWithCompletionHandler(dispatch, view, happened.adding("done"));
  dispatch.advance(kHour);

  EXPECT_THAT(journal.timed(),
              ElementsAre("0 view animateOpacity 0 200ms", "200 view animateOpacity 1 150ms"));
  EXPECT_EQ(happened.entries(), Lines{"350 done"});
}

TEST_F(ViewFlash, ACountOfTwoPerformsTwoOnTheNextTenthOfASecond) {
  additions::flashOnOff(dispatch, view, 2);
  dispatch.advance(kHour);

  EXPECT_THAT(timesOf("view animateOpacity 0"), ElementsAre(0, 400));
}

TEST_F(ViewFlash, ACountOfZeroPerformsThree) {
  additions::flashOnOff(dispatch, view, 0);
  dispatch.advance(kHour);

  EXPECT_THAT(timesOf("view animateOpacity 0"), ElementsAre(0, 400, 800));
}

TEST_F(ViewFlash, WithoutACountFlashesFiveTimes) {
  additions::flashOnOff(dispatch, view);
  dispatch.advance(kHour);

  EXPECT_THAT(timesOf("view animateOpacity 0"), ElementsAre(0, 400, 800, 1200, 1600));
  EXPECT_THAT(log.lines(), IsEmpty());
}

using ViewAnchorPoint = LumoNSViewAdditionsTest;

// Where the view's corner, a fraction of its size, lies on the screen.
Point cornerOf(const View& view, Point corner) {
  const Rect frame = view.frame();
  const Point anchor = view.anchorPoint();
  const Point position = view.layerPosition();
  const double x = (corner.x - anchor.x) * frame.width;
  const double y = (corner.y - anchor.y) * frame.height;
  const double turn = view.rotation();
  return {position.x + x * std::cos(turn) + y * std::sin(turn),
          position.y + y * std::cos(turn) - x * std::sin(turn)};
}

TEST_F(ViewAnchorPoint, MovesThePositionWithThePointSoThatTheFrameStays) {
  additions::setAnchorPoint(view, {1.0, 0.25});

  EXPECT_EQ(view.anchorPoint(), (Point{1.0, 0.25}));
  EXPECT_EQ(view.layerPosition(), (Point{140, 55}));
  EXPECT_EQ(view.frame(), kFrame);
}

TEST_F(ViewAnchorPoint, KeepsATurnedViewWhereItIsOnTheScreen) {
  for (const double turn : {0.3, std::numbers::pi / 2, -2.0}) {
    view.setRotation(turn);
    for (const Point point : {Point{0, 0}, Point{1, 1}, Point{0.5, 1}, Point{0.5, 0.5}, Point{-1, 2}}) {
      const Point topLeft = cornerOf(view, {0, 0});
      const Point bottomRight = cornerOf(view, {1, 1});
      additions::setAnchorPoint(view, point);
      EXPECT_EQ(view.anchorPoint(), point);
      EXPECT_NEAR(cornerOf(view, {0, 0}).x, topLeft.x, 1e-9);
      EXPECT_NEAR(cornerOf(view, {0, 0}).y, topLeft.y, 1e-9);
      EXPECT_NEAR(cornerOf(view, {1, 1}).x, bottomRight.x, 1e-9);
      EXPECT_NEAR(cornerOf(view, {1, 1}).y, bottomRight.y, 1e-9);
    }
  }
}

}  // namespace

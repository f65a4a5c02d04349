#include <memory>

#include <gtest/gtest.h>

#include "support/LumoNSViewAdditions.h"
#include "tests/contract/dispatch_harness.h"
#include "tests/fakes/captured_log.h"
#include "tests/fakes/fake_controls.h"

// The repeated animations on the machine's own queues: their loops hop between threads, their views stay on
// the main one.

namespace {

namespace additions = lumo::LumoNSViewAdditions;

template <class Harness>
class ViewAnimations : public testing::Test {
 protected:
  std::size_t count(const char* prefix) const { return journal.startingWith(prefix).size(); }

  const fakes::CapturedLog log;
  Harness harness;
  fakes::Journal journal{harness.dispatch()};
  fakes::Stage stage{harness.dispatch(), journal};
};

using Harnesses = testing::Types<SimHarness, LinuxHarness>;
TYPED_TEST_SUITE(ViewAnimations, Harnesses);

TYPED_TEST(ViewAnimations, RepeatAsOftenAsTheyWereAsked) {
  fakes::FakeView shaken(this->stage, "shaken");
  fakes::FakeView flashed(this->stage, "flashed");
  additions::nodLeftRight(this->harness.dispatch(), shaken, 2);
  additions::flashOnOff(this->harness.dispatch(), flashed, 2);

  // Six moves a shake, and one more flash of a third view that starts when both should long be over.
  EXPECT_TRUE(this->harness.runUntil([&] {
    return this->count("shaken animateFrame") == 12 && this->count("flashed animateOpacity") == 4;
  }));
  bool over = false;
  fakes::FakeView third(this->stage, "third");
  additions::flashOnOffWithCompletionHandler(this->harness.dispatch(), third, [&] { over = true; });
  EXPECT_TRUE(this->harness.runUntil([&] { return over; }));
  EXPECT_EQ(this->count("shaken animateFrame"), 12U);
  EXPECT_EQ(this->count("flashed animateOpacity 0"), 2U);
}

TYPED_TEST(ViewAnimations, LeaveAViewThatGoes) {
  auto view = std::make_unique<fakes::FakeImageView>(this->stage, "gone");
  additions::nodLeftRight(this->harness.dispatch(), *view, 0);
  additions::fadeInOut(this->harness.dispatch(), *view, 0);
  additions::rotateImage(this->harness.dispatch(), *view, 0);
  EXPECT_TRUE(this->harness.runUntil([&] { return this->count("gone animateFrame") >= 2; }));
  view.reset();
  const std::size_t before = this->count("gone");
  bool over = false;
  fakes::FakeView other(this->stage, "other");
  additions::nodLeftRightWithCompletionHandler(this->harness.dispatch(), other, [&] { over = true; });
  EXPECT_TRUE(this->harness.runUntil([&] { return over; }));
  EXPECT_EQ(this->count("gone"), before);
}

}  // namespace

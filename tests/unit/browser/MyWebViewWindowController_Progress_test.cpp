#include "tests/unit/browser/browser_fixture.h"

// The load indicator.

namespace {

using platform::Millis;
using testing::IsEmpty;

// Queues of which the global one is slow with the first block after a test has said so.
class OvertakingDispatch final : public platform::Dispatch {
 public:
  explicit OvertakingDispatch(fakes::SimDispatch& sim) : sim_(sim), global_(*this) {}

  Millis now() const override { return sim_.now(); }
  platform::Queue& main() override { return sim_.main(); }
  platform::Queue& global(platform::QualityOfService) override { return global_; }
  void syncOnMain(const platform::Block& block) override { sim_.syncOnMain(block); }

  void delayNext(Millis delay) { delay_ = delay; }

 private:
  class Global final : public platform::Queue {
   public:
    explicit Global(OvertakingDispatch& owner) : owner_(owner) {}
    void async(platform::Block block) override {
      owner_.sim_.global().after(std::exchange(owner_.delay_, Millis{0}), std::move(block));
    }
    void after(Millis delay, platform::Block block) override {
      owner_.sim_.global().after(delay, std::move(block));
    }
    bool isCurrent() const override { return owner_.sim_.global().isCurrent(); }
    std::string label() const override { return owner_.sim_.global().label(); }

   private:
    OvertakingDispatch& owner_;
  };

  fakes::SimDispatch& sim_;
  Global global_;
  Millis delay_{0};
};

class BrowserProgress : public browsertest::BrowserTest {
 protected:
  fakes::FakeProgressIndicator& indicator() {
    return window().view<fakes::FakeProgressIndicator>("ibProgressIndicator");
  }
  void settle() { machine.dispatch.runUntilIdle(); }
};

TEST_F(BrowserProgress, StartsHalfWayBetweenNoneAndAll) {
  makeShown().startIndicator();
  settle();

  EXPECT_TRUE(indicator().isAnimating());
  EXPECT_EQ(indicator().doubleValue(), 0.5);
  EXPECT_EQ(indicator().minValue(), 0.0);
  EXPECT_EQ(indicator().maxValue(), 1.0);
}

TEST_F(BrowserProgress, ItsValueStandsBeforeItMoves) {
  makeShown().startIndicator();
  settle();

  EXPECT_EQ(machine.journal.entries().back(), "ibProgressIndicator startAnimation");
}

TEST_F(BrowserProgress, StopsAndKeepsItsValue) {
  makeShown().startIndicator();
  browser->updateIndicator(0.75);
  browser->stopIndicator();
  settle();

  EXPECT_FALSE(indicator().isAnimating());
  EXPECT_EQ(indicator().doubleValue(), 0.75);
}

TEST_F(BrowserProgress, TakesTheGivenFraction) {
  makeShown().updateIndicator(0.25);
  settle();

  EXPECT_EQ(indicator().doubleValue(), 0.25);
  EXPECT_FALSE(indicator().isAnimating());
}

TEST_F(BrowserProgress, ItsCallerNeverWaits) {
  makeShown().startIndicator();
  EXPECT_THAT(machine.journal.entries(), IsEmpty());
  // First on a queue of its own, then on the main queue.
  EXPECT_EQ(machine.dispatch.pendingBlocks(), 1U);
  EXPECT_GE(machine.dispatch.runUntilIdle(), 2U);
  EXPECT_TRUE(indicator().isAnimating());
}

TEST_F(BrowserProgress, AStartThatItsStopOvertakesStartsNothing) {
  OvertakingDispatch dispatch(machine.dispatch);
  platform::Platform overtaking{dispatch,      platform.application, platform.windows,       platform.bus,
                                platform.http, platform.defaults,    platform.notifications, platform.bundle};
  lumo::MyWebViewWindowController controller(overtaking);
  settle();
  dispatch.delayNext(Millis{10});
  controller.startIndicator();
  controller.stopIndicator();
  machine.dispatch.advance(Millis{20});

  EXPECT_FALSE(indicator().isAnimating());
  EXPECT_EQ(indicator().doubleValue(), 0.0);
}

TEST_F(BrowserProgress, GoesOnAfterAWindowThatIsNoMore) {
  makeShown().startIndicator();
  browser->updateIndicator(0.1);
  browser.reset();
  machine.journal.clear();
  settle();

  EXPECT_THAT(machine.journal.entries(), IsEmpty());
}

TEST_F(BrowserProgress, IsNotMissedWhereTheDescriptionHasNone) {
  describe([](fakes::FakeWindow&) {});
  makeShown().startIndicator();
  browser->updateIndicator(0.1);
  browser->stopIndicator();
  settle();

  EXPECT_THAT(machine.journal.entries(), IsEmpty());
}

TEST_F(BrowserProgress, NotificationsOfTheLegacyViewDriveIt) {
  makeShown().handleWebViewProgressStarted({});
  settle();
  EXPECT_TRUE(indicator().isAnimating());
  legacy().setHidden(false);
  legacy().load({*platform::Url::parse("http://h/"), {}, Millis{0}, {}});
  legacy().startNavigation();
  legacy().answerResponse(200);
  browser->handleWebViewProgressChanged({});
  settle();
  EXPECT_EQ(indicator().doubleValue(), legacy().estimatedProgress());
  EXPECT_EQ(indicator().doubleValue(), 0.5);
  browser->handleWebViewProgressFinished({});
  settle();
  EXPECT_FALSE(indicator().isAnimating());

  EXPECT_TRUE(log.contains(
      "MyWebViewWindowController->handleWebViewProgressStarted:....TURN ON PROGRESSSSSSSSSS..."));
  EXPECT_TRUE(
      log.contains("MyWebViewWindowController->handleWebViewProgressChanged:....UPDATE Progress...50.00%"));
  EXPECT_TRUE(log.contains(
      "MyWebViewWindowController->handleWebViewProgressFinished:....TURN OFFFFFFFFF PROGRESSSSSSSSSS..."));
}

}  // namespace

#include "tests/fakes/sim_dispatch.h"

#include <stdexcept>
#include <thread>

#include <gtest/gtest.h>

using fakes::SimDispatch;
using fakes::TimeLog;
using platform::Hold;
using platform::Millis;
using platform::SerialQueue;
using namespace std::chrono_literals;

using Texts = std::vector<std::string>;

TEST(SimDispatch, TimeStandsStillUntilTheTestLetsItGoOn) {
  SimDispatch sim;
  TimeLog log(sim);
  sim.main().async(log.adding("now"));
  sim.global().after(100ms, log.adding("later"));
  EXPECT_EQ(sim.pendingBlocks(), 1U);
  EXPECT_EQ(sim.pendingTimers(), 1U);
  EXPECT_EQ(sim.nextTimer(), 100ms);
  EXPECT_EQ(sim.runUntilIdle(), 1U);
  EXPECT_EQ(sim.now(), 0ms);
  EXPECT_EQ(sim.advance(99ms), 0U);
  EXPECT_EQ(sim.now(), 99ms);
  EXPECT_EQ(log.entries(), (Texts{"0 now"}));
  EXPECT_EQ(sim.advance(1ms), 1U);
  EXPECT_EQ(log.entries(), (Texts{"0 now", "100 later"}));
  EXPECT_EQ(log.timeOf("later"), 100ms);
  EXPECT_FALSE(log.timeOf("never").has_value());
  EXPECT_FALSE(sim.nextTimer().has_value());
}

TEST(SimDispatch, AdvanceRunsEachTimerAtItsOwnTime) {
  SimDispatch sim;
  TimeLog log(sim);
  sim.main().after(30ms, [&] {
    log.add("first");
    sim.main().after(300ms, log.adding("second"));
  });
  sim.advance(1s);
  EXPECT_EQ(log.entries(), (Texts{"30 first", "330 second"}));
  EXPECT_EQ(sim.now(), 1s);
}

TEST(SimDispatch, AdvanceToNextTimerGoesFromTimerToTimer) {
  SimDispatch sim;
  TimeLog log(sim);
  sim.main().async(log.adding("now"));
  sim.main().after(200ms, log.adding("b"));
  sim.main().after(50ms, log.adding("a"));
  EXPECT_TRUE(sim.advanceToNextTimer());
  EXPECT_EQ(log.entries(), (Texts{"0 now", "50 a"}));
  EXPECT_TRUE(sim.advanceToNextTimer());
  EXPECT_FALSE(sim.advanceToNextTimer());
  EXPECT_EQ(log.entries(), (Texts{"0 now", "50 a", "200 b"}));
  EXPECT_EQ(sim.now(), 200ms);
}

TEST(SimDispatch, BlocksOfAllQueuesRunInTheOrderInWhichTheyBecameDue) {
  SimDispatch sim;
  TimeLog log(sim);
  SerialQueue serial(sim);
  sim.global().async(log.adding("global"));
  serial.async(log.adding("serial"));
  sim.main().async(log.adding("main"));
  sim.main().after(10ms, log.adding("timer 2"));
  serial.after(5ms, log.adding("timer 1"));
  sim.advance(10ms);
  EXPECT_EQ(log.entries(), (Texts{"0 global", "0 serial", "0 main", "5 timer 1", "10 timer 2"}));
}

TEST(SimDispatch, AHoldOverTwoWaitsIsExactToTheMillisecond) {
  SimDispatch sim;
  TimeLog log(sim);
  SerialQueue queue(sim);
  queue.asyncHolding([&](const Hold& hold) {
    sim.main().after(30ms, [&, hold] { sim.main().after(300ms, [&, hold] { log.add("waited"); }); });
  });
  queue.async(log.adding("next"));
  sim.advance(1s);
  EXPECT_EQ(log.entries(), (Texts{"330 waited", "330 next"}));
}

TEST(SimDispatch, ARunWithoutEndFailsLoudly) {
  SimDispatch sim;
  std::function<void()> again = [&] { sim.main().async(again); };
  sim.main().async(again);
  EXPECT_THROW(sim.runUntilIdle(), std::runtime_error);
  SimDispatch other;
  SerialQueue queue(other);
  std::function<void()> forever = [&] { queue.after(1ms, forever); };
  queue.async(forever);
  EXPECT_THROW(other.advance(1h), std::runtime_error);
}

TEST(SimDispatch, ItIsRunByItsOwnThreadOnly) {
  SimDispatch sim;
  bool refused = false;
  std::thread thread([&] {
    try {
      sim.runUntilIdle();
    } catch (const std::logic_error&) {
      refused = true;
    }
  });
  thread.join();
  EXPECT_TRUE(refused);
}

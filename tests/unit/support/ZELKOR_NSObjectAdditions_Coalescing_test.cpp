#include <chrono>
#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "support/ZELKOR_NSObjectAdditions.h"
#include "support/ZELKOR_NSObjectInstanceAdditions.h"
#include "tests/fakes/sim_dispatch.h"

namespace {

namespace additions = lumo::ZELKOR_NSObjectAdditions;
using platform::Millis;
using platform::SerialQueue;

using Entries = std::vector<std::string>;
using Call = decltype(&additions::runOnceForKey_onQueue_collectingFor_usingBlock);

class Coalescing : public testing::Test {
 protected:
  // Five calls, 100 ms apart, with a delay of one second.
  void callFiveTimes(Call call) {
    for (const char* name : {"first", "second", "third", "fourth", "fifth"}) {
      call(dispatch, "key", std::nullopt, 1, log.adding(name));
      dispatch.advance(Millis(100));
    }
    dispatch.advance(Millis(10000));
  }

  fakes::SimDispatch dispatch;
  fakes::TimeLog log{dispatch};
};

TEST_F(Coalescing, AfterWaitingRunsOnlyTheFifthOfFiveOneSecondAfterIt) {
  callFiveTimes(&additions::runOnceForKey_onQueue_afterWaiting_usingBlock);
  EXPECT_EQ(log.entries(), Entries{"1400 fifth"});
}

TEST_F(Coalescing, CollectingRunsOnlyTheFirstOfFiveAtOnce) {
  callFiveTimes(&additions::runOnceForKey_onQueue_collectingFor_usingBlock);
  EXPECT_EQ(log.entries(), Entries{"0 first"});
}

TEST_F(Coalescing, BeforeAndAfterRunsTheFirstAndTheFifthOfFive) {
  callFiveTimes(&additions::runOnceForKey_onQueue_beforeAndAfter_usingBlock);
  EXPECT_EQ(log.entries(), (Entries{"0 first", "1400 fifth"}));
}

TEST_F(Coalescing, ASingleCallBeforeAndAfterRunsItsBlockTwice) {
  additions::runOnceForKey_onQueue_beforeAndAfter_usingBlock(dispatch, "key", std::nullopt, 0.25,
                                                             log.adding("block"));
  dispatch.advance(Millis(1000));
  EXPECT_EQ(log.entries(), (Entries{"0 block", "250 block"}));
}

TEST_F(Coalescing, ACallMoreThanTheDelayAfterTheOneBeforeBeginsANewBurst) {
  for (int i = 0; i < 3; ++i) {
    additions::runOnceForKey_onQueue_collectingFor_usingBlock(dispatch, "key", std::nullopt, 1,
                                                              log.adding("block"));
    dispatch.advance(Millis(1001));
  }
  EXPECT_EQ(log.entries(), (Entries{"0 block", "1001 block", "2002 block"}));
}

TEST_F(Coalescing, ABurstLastsAsLongAsCallsComeWithinTheDelay) {
  for (int i = 0; i < 4; ++i) {
    additions::runOnceForKey_onQueue_collectingFor_usingBlock(dispatch, "key", std::nullopt, 1,
                                                              log.adding("block"));
    dispatch.advance(Millis(999));
  }
  EXPECT_EQ(log.entries(), Entries{"0 block"});
}

TEST_F(Coalescing, TheBlockThatRunsAtTheEndIsTheOneWhoseTimeEndsLast) {
  const auto call = &additions::runOnceForKey_onQueue_afterWaiting_usingBlock;
  call(dispatch, "key", std::nullopt, 2, log.adding("long"));
  dispatch.advance(Millis(100));
  call(dispatch, "key", std::nullopt, 0.5, log.adding("short"));
  dispatch.advance(Millis(5000));
  EXPECT_EQ(log.entries(), Entries{"2000 long"});
}

TEST_F(Coalescing, NeitherBitRunsNothing) {
  additions::runOnceForKey_onQueue_afterWaiting_when_usingBlock(dispatch, "key", std::nullopt, 1, 0,
                                                                log.adding("block"));
  additions::runOnceForKey_onQueue_afterWaiting_when_usingBlock(dispatch, "key", std::nullopt, 1, 4,
                                                                log.adding("block"));
  dispatch.advance(Millis(5000));
  EXPECT_EQ(log.entries(), Entries{});
}

TEST_F(Coalescing, ThePrimitiveTakesTheBitsOfTheCallItself) {
  const auto call = &additions::runOnceForKey_onQueue_afterWaiting_when_usingBlock;
  call(dispatch, "key", std::nullopt, 1, additions::AtEnd, log.adding("first"));
  call(dispatch, "key", std::nullopt, 1, additions::AtStart, log.adding("second"));
  dispatch.advance(Millis(5000));
  // The first one would run at the end only, and the last one at the start only.
  EXPECT_EQ(log.entries(), Entries{});
}

TEST_F(Coalescing, OtherKeysAreOtherBursts) {
  const auto call = &additions::runOnceForKey_onQueue_beforeAndAfter_usingBlock;
  call(dispatch, "a", std::nullopt, 1, log.adding("a"));
  dispatch.advance(Millis(500));
  call(dispatch, "b", std::nullopt, 1, log.adding("b"));
  call(dispatch, "a", std::nullopt, 1, log.adding("a again"));
  dispatch.advance(Millis(5000));
  EXPECT_EQ(log.entries(), (Entries{"0 a", "500 b", "1500 b", "1500 a again"}));
}

TEST_F(Coalescing, WithoutAQueueBlocksRunOnTheMainQueue) {
  bool onMain = false;
  additions::runOnceForKey_onQueue_afterWaiting_usingBlock(dispatch, "key", std::nullopt, 0.01,
                                                           [&] { onMain = dispatch.main().isCurrent(); });
  dispatch.advance(Millis(10));
  EXPECT_TRUE(onMain);
}

TEST_F(Coalescing, BlocksRunOnTheirQueue) {
  const SerialQueue queue(dispatch, "target");
  bool onQueue = false;
  additions::runOnceForKey_onQueue_afterWaiting_usingBlock(dispatch, "key", queue, 1,
                                                           [&] { onQueue = queue.isCurrent(); });
  dispatch.advance(Millis(1000));
  EXPECT_TRUE(onQueue);
}

TEST_F(Coalescing, AQueueIsKeptForItsBlocks) {
  additions::runOnceForKey_onQueue_afterWaiting_usingBlock(dispatch, "key", SerialQueue(dispatch), 1,
                                                           log.adding("block"));
  dispatch.advance(Millis(1000));
  EXPECT_EQ(log.entries(), Entries{"1000 block"});
}

TEST_F(Coalescing, NothingRunsOnTheCaller) {
  additions::runOnceForKey_onQueue_beforeAndAfter_usingBlock(dispatch, "key", std::nullopt, 0,
                                                             log.adding("block"));
  EXPECT_EQ(log.entries(), Entries{});
  dispatch.runUntilIdle();
  EXPECT_EQ(log.entries(), (Entries{"0 block", "0 block"}));
}

TEST_F(Coalescing, ABlockIsLetGoAfterItsTime) {
  const auto held = std::make_shared<int>(1);
  for (int i = 0; i < 3; ++i) {
    additions::runOnceForKey_onQueue_collectingFor_usingBlock(dispatch, "key", std::nullopt, 1, [held] {});
  }
  dispatch.advance(Millis(999));
  EXPECT_GT(held.use_count(), 3);
  dispatch.advance(Millis(1));
  EXPECT_EQ(held.use_count(), 1);
}

TEST_F(Coalescing, ABlockThatIsNullDoesNothing) {
  additions::runOnceForKey_onQueue_beforeAndAfter_usingBlock(dispatch, "key", std::nullopt, 1, nullptr);
  dispatch.advance(Millis(2000));
  EXPECT_EQ(dispatch.pendingTimers(), 0U);
}

TEST_F(Coalescing, CallsOfManyThreadsAreOneBurst) {
  std::vector<std::thread> threads;
  int runs = 0;
  threads.reserve(8);
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([&] {
      for (int k = 0; k < 50; ++k) {
        additions::runOnceForKey_onQueue_beforeAndAfter_usingBlock(dispatch, "key", std::nullopt, 1,
                                                                   [&runs] { ++runs; });
      }
    });
  }
  for (auto& thread : threads) {
    thread.join();
  }
  dispatch.advance(Millis(1000));
  EXPECT_EQ(runs, 2);
}

// Each thread calls once for each key, so a key's burst is made of one call of every thread.
TEST_F(Coalescing, TenThousandKeysOfEightThreadsAreTenThousandBursts) {
  constexpr std::size_t kKeys = 10000;
  constexpr std::size_t kThreads = 8;
  // On the main queue only.
  std::vector<std::vector<platform::Millis>> runs(kKeys);
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  for (std::size_t i = 0; i < kThreads; ++i) {
    threads.emplace_back([this, &runs, i] {
      for (std::size_t k = 0; k < kKeys; ++k) {
        auto& mine = runs[(k + i * kKeys / kThreads) % kKeys];
        const std::string key = std::to_string(&mine - runs.data());
        additions::runOnceForKey_onQueue_beforeAndAfter_usingBlock(
            dispatch, key, std::nullopt, 1, [this, &mine] { mine.push_back(dispatch.now()); });
      }
    });
  }
  for (auto& thread : threads) {
    thread.join();
  }
  dispatch.advance(Millis(1000));
  EXPECT_EQ(dispatch.pendingTimers(), 0U);
  EXPECT_EQ(runs, std::vector(kKeys, std::vector{Millis(0), Millis(1000)}));
}

TEST_F(Coalescing, AnotherDispatchHasBurstsOfItsOwn) {
  {
    fakes::SimDispatch other;
    additions::runOnceForKey_onQueue_collectingFor_usingBlock(other, "key", std::nullopt, 1, [] {});
  }
  additions::runOnceForKey_onQueue_collectingFor_usingBlock(dispatch, "key", std::nullopt, 1,
                                                            log.adding("block"));
  dispatch.runUntilIdle();
  EXPECT_EQ(log.entries(), Entries{"0 block"});
}

TEST_F(Coalescing, AnObjectSharesTheBurstsOfEverybody) {
  const struct Object : lumo::ZELKOR_NSObjectInstanceAdditions {
  } object;
  additions::runOnceForKey_onQueue_collectingFor_usingBlock(dispatch, "a", std::nullopt, 1,
                                                            log.adding("function"));
  object.runOnceForKey_onQueue_collectingFor_usingBlock(dispatch, "a", std::nullopt, 1,
                                                        log.adding("swallowed"));
  object.runOnceForKey_onQueue_afterWaiting_usingBlock(dispatch, "b", std::nullopt, 2, log.adding("after"));
  object.runOnceForKey_onQueue_beforeAndAfter_usingBlock(dispatch, "c", std::nullopt, 3, log.adding("both"));
  dispatch.advance(Millis(5000));
  EXPECT_EQ(log.entries(), (Entries{"0 function", "0 both", "2000 after", "3000 both"}));
}

TEST(CoalescingDelay, CountsFractionsOfAMillisecondAsAWhole) {
  struct Row {
    double seconds;
    std::int64_t milliseconds;
  };
  const std::vector<Row> rows = {
      {0, 0},
      {1, 1000},
      {0.1, 100},
      {0.3, 300},
      {2.675, 2675},
      {0.0015, 2},
      {0.0000000001, 0},
      {-1, 0},
      {std::nan(""), 0},
      {std::numeric_limits<double>::infinity(), 9000000000000},
      {1e300, 9000000000000},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(additions::coalescingDelay(row.seconds).count(), row.milliseconds) << row.seconds;
  }
}

}  // namespace

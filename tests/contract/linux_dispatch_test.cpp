#include "platform/linux/linux_dispatch.h"

#include <atomic>
#include <condition_variable>
#include <future>
#include <mutex>
#include <optional>
#include <thread>

#include <gtest/gtest.h>

#include "platform/linux/timer_thread.h"
#include "platform/linux/worker_pool.h"

using platform::LinuxDispatch;
using platform::Millis;
using platform::SerialQueue;
using namespace std::chrono_literals;

namespace {

// A door at which blocks wait until it is opened.
class Door {
 public:
  void open() {
    const std::lock_guard lock(mutex_);
    open_ = true;
    changed_.notify_all();
  }
  void wait() {
    std::unique_lock lock(mutex_);
    ++waiting_;
    changed_.notify_all();
    changed_.wait(lock, [this] { return open_; });
    --waiting_;
  }
  // Whether `count` blocks stand before the door within ten seconds.
  bool waitFor(int count) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, 10s, [&] { return waiting_ == count; });
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  int waiting_ = 0;
  bool open_ = false;
};

bool eventually(const std::function<bool()>& reached) {
  const auto limit = std::chrono::steady_clock::now() + 10s;
  while (!reached()) {
    if (std::chrono::steady_clock::now() > limit) {
      return false;
    }
    std::this_thread::yield();
  }
  return true;
}

}  // namespace

TEST(LinuxDispatch, RunsSixtyFourBlockingJobsAtOnce) {
  LinuxDispatch dispatch;
  Door door;
  for (int i = 0; i < 64; ++i) {
    dispatch.global().async([&] { door.wait(); });
  }
  const bool allThere = door.waitFor(64);
  door.open();
  EXPECT_TRUE(allThere);
}

TEST(LinuxDispatch, ASerialQueueIsNotHeldUpByBlockedOnes) {
  LinuxDispatch dispatch;
  Door door;
  std::vector<SerialQueue> blocked;
  for (int i = 0; i < 8; ++i) {
    blocked.emplace_back(dispatch).async([&] { door.wait(); });
  }
  std::promise<void> ran;
  SerialQueue free(dispatch);
  free.async([&] { ran.set_value(); });
  EXPECT_EQ(ran.get_future().wait_for(10s), std::future_status::ready);
  door.open();
}

TEST(LinuxDispatch, ATurnOfTheMainQueueTakesOnlyTheBlocksThatWereThereAtItsBeginning) {
  LinuxDispatch dispatch;
  int rounds = 0;
  std::function<void()> again = [&] {
    ++rounds;
    dispatch.main().async(again);
  };
  dispatch.main().async(again);
  dispatch.main().async([] {});
  EXPECT_TRUE(dispatch.runMainOnce(0ms));
  EXPECT_EQ(rounds, 1);
  EXPECT_TRUE(dispatch.runMainOnce(0ms));
  EXPECT_EQ(rounds, 2);
}

TEST(LinuxDispatch, AMainBlockMayRunTheMainLoop) {
  LinuxDispatch dispatch;
  bool inner = false;
  bool stillMain = false;
  dispatch.main().async([&] {
    dispatch.main().async([&] { inner = true; });
    while (!inner && dispatch.runMainOnce(1s)) {
    }
    stillMain = dispatch.main().isCurrent();
  });
  while (!stillMain && dispatch.runMainOnce(1s)) {
  }
  EXPECT_TRUE(inner);
  EXPECT_TRUE(stillMain);
}

TEST(LinuxDispatch, AWaitingMainLoopWakesForABlockOfAnotherThread) {
  LinuxDispatch dispatch;
  bool ran = false;
  std::thread thread([&] { dispatch.main().async([&] { ran = true; }); });
  const auto begin = dispatch.now();
  while (!ran && dispatch.now() - begin < 10s) {
    dispatch.runMainOnce(10s);
  }
  thread.join();
  EXPECT_TRUE(ran);
  EXPECT_LT(dispatch.now() - begin, 10s);
}

TEST(LinuxDispatch, AMainLoopWithNothingToDoSaysSo) {
  LinuxDispatch dispatch;
  EXPECT_FALSE(dispatch.runMainOnce(0ms));
  const auto begin = dispatch.now();
  EXPECT_FALSE(dispatch.runMainOnce(20ms));
  EXPECT_GE(dispatch.now() - begin, 19ms);
}

TEST(LinuxDispatch, TheMainLoopRunsOnTheMainThreadOnly) {
  LinuxDispatch dispatch;
  bool ran = false;
  dispatch.main().async([&] { ran = true; });
  bool done = true;
  std::thread thread([&] { done = dispatch.runMainOnce(0ms); });
  thread.join();
  EXPECT_FALSE(done);
  EXPECT_FALSE(ran);
}

TEST(LinuxDispatch, DrainWaitsForWhatIsQueued) {
  LinuxDispatch dispatch;
  SerialQueue queue(dispatch);
  int count = 0;
  for (int i = 0; i < 100; ++i) {
    queue.async([&] { ++count; });
  }
  queue.drain();
  EXPECT_EQ(count, 100);
}

TEST(LinuxDispatch, DrainFromTheQueueItselfReturns) {
  LinuxDispatch dispatch;
  SerialQueue queue(dispatch);
  bool returned = false;
  queue.async([&] {
    queue.drain();
    returned = true;
  });
  queue.drain();
  EXPECT_TRUE(returned);
}

TEST(LinuxDispatch, StopLetsARunningJobBeAndDropsTheRest) {
  LinuxDispatch dispatch;
  Door door;
  std::atomic<bool> ended = false;
  std::atomic<int> late = 0;
  SerialQueue queue(dispatch);
  queue.async([&] {
    door.wait();
    dispatch.main().async([&] { ++late; });
    ended = true;
  });
  queue.async([&] { ++late; });
  ASSERT_TRUE(door.waitFor(1));
  dispatch.main().async([&] { ++late; });
  dispatch.main().after(1h, [&] { ++late; });
  dispatch.global().after(1h, [&] { ++late; });
  dispatch.stop();
  EXPECT_FALSE(ended);
  dispatch.global().async([&] { ++late; });
  dispatch.global().after(1ms, [&] { ++late; });
  door.open();
  EXPECT_TRUE(eventually([&] { return ended.load(); }));
  queue.drain();
  EXPECT_FALSE(dispatch.runMainOnce(0ms));
  EXPECT_EQ(late, 0);
}

TEST(LinuxDispatch, StopFreesAWorkerThatWaitsForTheMainThread) {
  LinuxDispatch dispatch;
  std::atomic<bool> begun = false;
  std::atomic<bool> returned = false;
  bool ran = false;
  dispatch.global().async([&] {
    begun = true;
    dispatch.syncOnMain([&] { ran = true; });
    returned = true;
  });
  ASSERT_TRUE(eventually([&] { return begun.load(); }));
  dispatch.stop();
  EXPECT_TRUE(eventually([&] { return returned.load(); }));
  EXPECT_FALSE(ran);
}

TEST(LinuxDispatch, NobodyWaitsInVainForAQueueAfterStop) {
  LinuxDispatch dispatch;
  SerialQueue queue(dispatch);
  dispatch.stop();
  queue.async([] {});
  queue.drain();
  dispatch.stop();
}

TEST(LinuxDispatch, TheEndWaitsForRunningJobs) {
  std::atomic<bool> ended = false;
  Door door;
  std::optional<LinuxDispatch> dispatch(std::in_place);
  dispatch->global().async([&] {
    door.wait();
    dispatch->now();
    ended = true;
  });
  ASSERT_TRUE(door.waitFor(1));
  std::thread opener([&] { door.open(); });
  dispatch.reset();
  EXPECT_TRUE(ended);
  opener.join();
}

TEST(WorkerPool, AnIdleThreadTakesTheNextBlock) {
  platform::WorkerPool pool;
  for (int i = 0; i < 20; ++i) {
    std::promise<void> ran;
    pool.post([&] { ran.set_value(); });
    ran.get_future().wait();
  }
  // Fewer threads than blocks: one that has just set the promise may not be idle yet when the next block
  // comes.
  EXPECT_LT(pool.threadCount(), 10U);
}

TEST(WorkerPool, IdleThreadsEndAndNewOnesCome) {
  platform::WorkerPool pool(1ms);
  for (int round = 0; round < 3; ++round) {
    Door door;
    for (int i = 0; i < 5; ++i) {
      pool.post([&] { door.wait(); });
    }
    EXPECT_TRUE(door.waitFor(5));
    EXPECT_EQ(pool.threadCount(), 5U);
    door.open();
    EXPECT_TRUE(eventually([&] { return pool.threadCount() == 0; }));
  }
}

TEST(WorkerPool, ABurstOfBlocksWaitsForTheThreadsThereAre) {
  Door door;
  std::atomic<int> done = 0;
  std::promise<void> allDone;
  platform::WorkerPool pool;
  constexpr int kThreads = platform::WorkerPool::kMostThreads;
  for (int i = 0; i < kThreads; ++i) {
    pool.post([&] { door.wait(); });
  }
  EXPECT_TRUE(door.waitFor(kThreads));
  constexpr int kMore = 1000;
  for (int i = 0; i < kMore; ++i) {
    pool.post([&] {
      if (++done == kMore) {
        allDone.set_value();
      }
    });
  }
  EXPECT_EQ(pool.threadCount(), static_cast<std::size_t>(kThreads));
  EXPECT_EQ(done, 0);
  door.open();
  EXPECT_EQ(allDone.get_future().wait_for(10s), std::future_status::ready);
  EXPECT_LE(pool.threadCount(), static_cast<std::size_t>(kThreads));
}

TEST(TimerThread, AnEarlierTimerOvertakesALaterOne) {
  platform::TimerThread timers;
  std::promise<void> fired;
  bool late = false;
  timers.schedule(1h, [&] { late = true; });
  timers.schedule(1ms, [&] { fired.set_value(); });
  EXPECT_EQ(fired.get_future().wait_for(10s), std::future_status::ready);
  timers.stop();
  EXPECT_FALSE(late);
}

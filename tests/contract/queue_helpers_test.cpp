#include <atomic>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/ZELKOR_NSObjectAdditions.h"
#include "tests/contract/dispatch_harness.h"

// The queue helpers on threads.
namespace {

namespace additions = lumo::ZELKOR_NSObjectAdditions;

TEST(QueueHelpersOnThreads, SyncFromAWorkerWaitsForAnyQueue) {
  LinuxHarness harness;
  platform::Dispatch& dispatch = harness.dispatch();
  const auto serial = additions::dispatchQueueSerial(dispatch);
  std::vector<std::string> notes;
  std::atomic<bool> ended{false};
  additions::performAsyncGlobal(dispatch, [&] {
    additions::performSyncOnQueue_block(dispatch, serial, [&] { notes.emplace_back("serial"); });
    additions::performSyncOnQueue_block(dispatch, dispatch.main(), [&] { notes.emplace_back("main"); });
    additions::performSyncOnQueue_block(dispatch, dispatch.global(), [&] { notes.emplace_back("global"); });
    additions::performSyncOnMainQueue(dispatch, [&] { notes.emplace_back("main again"); });
    ended = true;
  });
  ASSERT_TRUE(harness.runUntil([&] { return ended.load(); }));
  EXPECT_EQ(notes, (std::vector<std::string>{"serial", "main", "global", "main again"}));
}

TEST(QueueHelpersOnThreads, ABurstFromManyWorkersRunsOnceAtItsStartAndOnceAtItsEnd) {
  LinuxHarness harness;
  platform::Dispatch& dispatch = harness.dispatch();
  constexpr int kCalls = 200;
  std::atomic<int> calls{0};
  int runs = 0;
  for (int i = 0; i < kCalls; ++i) {
    additions::performAsyncGlobal(dispatch, [&] {
      // Longer than any machine needs for the calls.
      additions::runOnceForKey_onQueue_beforeAndAfter_usingBlock(dispatch, "key", std::nullopt, 1,
                                                                 [&runs] { ++runs; });
      ++calls;
    });
  }
  ASSERT_TRUE(harness.runUntil([&] { return calls == kCalls && runs == 2; }));
  std::atomic<bool> after{false};
  additions::runOnceForKey_onQueue_afterWaiting_usingBlock(dispatch, "key", std::nullopt, 0,
                                                           [&after] { after = true; });
  ASSERT_TRUE(harness.runUntil([&] { return after.load(); }));
  EXPECT_EQ(runs, 2);
}

}  // namespace

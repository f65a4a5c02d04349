#include <atomic>
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
using additions::QueueOrNone;
using platform::Block;
using platform::SerialQueue;

class QueueHelpers : public testing::Test {
 protected:
  // Runs `body` on a thread of its own, which is on no queue, and the queues until it has ended.
  void onAThread(const Block& body) {
    std::atomic<bool> ended{false};
    std::thread thread([&] {
      body();
      ended = true;
    });
    while (!ended) {
      dispatch.runUntilIdle();
      std::this_thread::yield();
    }
    thread.join();
  }
  // What counts where a block ran: the queue, by its label.
  Block noting(const std::string& name, platform::Queue& queue) {
    return [this, name, &queue] { notes.push_back(name + (queue.isCurrent() ? " there" : " elsewhere")); };
  }

  fakes::SimDispatch dispatch;
  SerialQueue queue = additions::dispatchQueueSerialWithDebugLabel(dispatch, "queue");
  std::vector<std::string> notes;
  using Notes = std::vector<std::string>;
};

TEST_F(QueueHelpers, GlobalQueuesAreChosenByTheirQualityOfService) {
  using platform::QualityOfService;
  EXPECT_EQ(&additions::dispatchQueueGlobal(dispatch), &dispatch.global(QualityOfService::Default));
  EXPECT_EQ(&additions::dispatchQueueGlobalWithQOS(dispatch, 21),
            &dispatch.global(QualityOfService::Default));
  EXPECT_EQ(&additions::dispatchQueueGlobalWithQOS(dispatch, 25),
            &dispatch.global(QualityOfService::UserInitiated));
  EXPECT_EQ(&additions::dispatchQueueGlobalWithQOS(dispatch, 9),
            &dispatch.global(QualityOfService::Background));
  EXPECT_EQ(&additions::dispatchQueueGlobalWithQOS(dispatch, 12345),
            &dispatch.global(QualityOfService::Default));
}

TEST_F(QueueHelpers, TheKeyIsOneAndTheSame) {
  EXPECT_NE(additions::dispatchQueueSpecificKeyIdentity(), nullptr);
  EXPECT_EQ(additions::dispatchQueueSpecificKeyIdentity(), additions::dispatchQueueSpecificKeyIdentity());
}

TEST_F(QueueHelpers, KnowTheMainQueue) {
  EXPECT_TRUE(additions::isMainQueue(dispatch));
  bool onQueue = true;
  bool onMain = false;
  queue.async([&] { onQueue = additions::isMainQueue(dispatch); });
  dispatch.main().async([&] { onMain = additions::isMainQueue(dispatch); });
  dispatch.runUntilIdle();
  EXPECT_FALSE(onQueue);
  EXPECT_TRUE(onMain);
  bool onThread = true;
  onAThread([&] { onThread = additions::isMainQueue(dispatch); });
  EXPECT_FALSE(onThread);
}

TEST_F(QueueHelpers, OnlySerialQueuesAndTheMainOneAreRecognised) {
  platform::Queue& global = dispatch.global();
  int checks = 0;
  const auto check = [&](const QueueOrNone& one, bool expected) {
    EXPECT_EQ(one.isRecognised(dispatch), expected) << checks;
    ++checks;
  };
  queue.async([&] {
    check(queue, true);
    check(static_cast<platform::Queue&>(queue), true);
    check(SerialQueue(dispatch), false);
    check(dispatch.main(), false);
    check(std::nullopt, false);
  });
  global.async([&] { check(global, false); });
  dispatch.main().async([&] {
    check(dispatch.main(), true);
    check(queue, false);
  });
  dispatch.runUntilIdle();
  EXPECT_EQ(checks, 8);
}

TEST_F(QueueHelpers, SyncWithoutAQueueRunsTheBlockBeforeReturning) {
  additions::performSyncOnQueue_block(dispatch, std::nullopt, noting("block", dispatch.main()));
  EXPECT_EQ(notes, Notes{"block there"});
}

TEST_F(QueueHelpers, SyncOnTheQueueItselfRunsInline) {
  queue.async([this] {
    additions::performSyncOnQueue_block(dispatch, queue, noting("block", queue));
    notes.emplace_back("returned");
  });
  dispatch.runUntilIdle();
  EXPECT_EQ(notes, (Notes{"block there", "returned"}));
}

TEST_F(QueueHelpers, SyncFromTheMainQueueReturnsBeforeTheBlockRuns) {
  additions::performSyncOnQueue_block(dispatch, queue, noting("block", queue));
  notes.emplace_back("returned");
  dispatch.runUntilIdle();
  EXPECT_EQ(notes, (Notes{"returned", "block there"}));
}

TEST_F(QueueHelpers, SyncFromElsewhereReturnsAfterTheBlockHasRun) {
  onAThread([this] {
    additions::performSyncOnQueue_block(dispatch, queue, noting("serial", queue));
    notes.emplace_back("returned");
    additions::performSyncOnQueue_block(dispatch, dispatch.global(), noting("global", dispatch.global()));
    notes.emplace_back("returned");
    additions::performSyncOnQueue_block(dispatch, dispatch.main(), noting("main", dispatch.main()));
    notes.emplace_back("returned");
  });
  EXPECT_EQ(notes, (Notes{"serial there", "returned", "global there", "returned", "main there", "returned"}));
}

TEST_F(QueueHelpers, SyncReturnsAlsoWhenTheQueueDropsTheBlock) {
  auto other = std::make_unique<fakes::SimDispatch>();
  SerialQueue doomed(*other);
  std::atomic<bool> ran{false};
  std::thread thread([&] { additions::performSyncOnQueue_block(dispatch, doomed, [&] { ran = true; }); });
  while (other->pendingBlocks() == 0) {
    std::this_thread::yield();
  }
  other.reset();
  thread.join();
  EXPECT_FALSE(ran);
}

TEST_F(QueueHelpers, InlineRunsAtOnceWithoutAQueueAndOnTheQueueItself) {
  additions::performInlineOnQueue_block(dispatch, std::nullopt, noting("none", dispatch.main()));
  additions::performInlineOnQueue_block(dispatch, dispatch.main(), noting("main", dispatch.main()));
  EXPECT_EQ(notes, (Notes{"none there", "main there"}));
  notes.clear();
  queue.async([this] {
    additions::performInlineOnQueue_block(dispatch, queue, noting("block", queue));
    notes.emplace_back("returned");
  });
  dispatch.runUntilIdle();
  EXPECT_EQ(notes, (Notes{"block there", "returned"}));
}

TEST_F(QueueHelpers, InlineFromElsewhereIsDeferred) {
  additions::performInlineOnQueue_block(dispatch, queue, noting("block", queue));
  notes.emplace_back("returned");
  dispatch.runUntilIdle();
  EXPECT_EQ(notes, (Notes{"returned", "block there"}));
  notes.clear();
  // A global queue is not recognised, even from its own block.
  platform::Queue& global = dispatch.global();
  global.async([&] {
    additions::performInlineOnQueue_block(dispatch, global, noting("global", global));
    notes.emplace_back("returned");
  });
  dispatch.runUntilIdle();
  EXPECT_EQ(notes, (Notes{"returned", "global there"}));
}

TEST_F(QueueHelpers, AQueueIsKeptUntilItsBlockHasRun) {
  bool ran = false;
  additions::performInlineOnQueue_block(dispatch, SerialQueue(dispatch), [&ran] { ran = true; });
  dispatch.runUntilIdle();
  EXPECT_TRUE(ran);
}

TEST_F(QueueHelpers, SyncOnTheMainQueueRunsAtOnceThereAndWaitsElsewhere) {
  additions::performSyncOnMainQueue(dispatch, noting("here", dispatch.main()));
  EXPECT_EQ(notes, Notes{"here there"});
  notes.clear();
  onAThread([this] {
    additions::performSyncOnMainQueue(dispatch, noting("block", dispatch.main()));
    notes.emplace_back("returned");
  });
  EXPECT_EQ(notes, (Notes{"block there", "returned"}));
}

TEST_F(QueueHelpers, AsyncOnTheMainQueueIsDeferredEvenFromThere) {
  additions::performAsyncOnMainQueue(dispatch, noting("block", dispatch.main()));
  notes.emplace_back("returned");
  dispatch.runUntilIdle();
  EXPECT_EQ(notes, (Notes{"returned", "block there"}));
}

TEST_F(QueueHelpers, AsyncGlobalGoesToTheQueueOfItsQuality) {
  using platform::QualityOfService;
  additions::performAsyncGlobal(dispatch, noting("default", dispatch.global(QualityOfService::Default)));
  additions::performAsyncGlobalUserInitiated(
      dispatch, noting("user", dispatch.global(QualityOfService::UserInitiated)));
  additions::performAsyncGlobalQOS_block(dispatch, 9,
                                         noting("background", dispatch.global(QualityOfService::Background)));
  EXPECT_TRUE(notes.empty());
  dispatch.runUntilIdle();
  EXPECT_EQ(notes, (Notes{"default there", "user there", "background there"}));
}

TEST_F(QueueHelpers, ABlockThatIsNullDoesNothing) {
  additions::performSyncOnQueue_block(dispatch, std::nullopt, nullptr);
  additions::performInlineOnQueue_block(dispatch, queue, nullptr);
  additions::performSyncOnMainQueue(dispatch, nullptr);
  additions::performAsyncOnMainQueue(dispatch, nullptr);
  additions::performAsyncGlobal(dispatch, nullptr);
  EXPECT_EQ(dispatch.runUntilIdle(), 3U);
}

// The same as operations of an object.
TEST_F(QueueHelpers, AnObjectHasThemAsItsOwn) {
  const struct Object : lumo::ZELKOR_NSObjectInstanceAdditions {
  } object;
  EXPECT_TRUE(object.isMainQueue(dispatch));
  object.performSyncOnQueue_block(dispatch, std::nullopt, noting("sync none", dispatch.main()));
  object.performSyncOnQueue_block(dispatch, queue, noting("sync", queue));
  object.performInlineOnQueue_block(dispatch, queue, noting("inline", queue));
  object.performSyncOnMainQueue(dispatch, noting("sync main", dispatch.main()));
  EXPECT_EQ(notes, (Notes{"sync none there", "sync main there"}));
  notes.clear();
  dispatch.runUntilIdle();
  EXPECT_EQ(notes, (Notes{"sync there", "inline there"}));
  notes.clear();
  using platform::QualityOfService;
  object.performAsyncOnMainQueue(dispatch, noting("main", dispatch.main()));
  object.performAsyncGlobal(dispatch, noting("global", dispatch.global()));
  object.performAsyncGlobalUserInitiated(dispatch,
                                         noting("user", dispatch.global(QualityOfService::UserInitiated)));
  object.performAsyncGlobalQOS_block(dispatch, 9,
                                     noting("background", dispatch.global(QualityOfService::Background)));
  dispatch.runUntilIdle();
  EXPECT_EQ(notes, (Notes{"main there", "global there", "user there", "background there"}));
}

}  // namespace

#include <atomic>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/contract/dispatch_harness.h"

using platform::Hold;
using platform::Millis;
using platform::QualityOfService;
using platform::SerialQueue;

namespace {

struct Kind {
  const char* name;
  std::unique_ptr<DispatchHarness> (*make)();
};

void PrintTo(const Kind& kind, std::ostream* out) {
  *out << kind.name;
}

// A list that blocks of any thread write.
class Record {
 public:
  void add(const std::string& item) {
    const std::lock_guard lock(mutex_);
    items_.push_back(item);
  }
  std::vector<std::string> items() const {
    const std::lock_guard lock(mutex_);
    return items_;
  }
  std::size_t size() const { return items().size(); }

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> items_;
};

using Texts = std::vector<std::string>;

}  // namespace

class DispatchContract : public testing::TestWithParam<Kind> {
 protected:
  platform::Dispatch& dispatch() { return harness_->dispatch(); }
  bool runUntil(const std::function<bool()>& reached) { return harness_->runUntil(reached); }
  // Lets the workers and the main queue do whatever they would do by now: a job on a queue of its own has
  // gone through both of them many times.
  void letOthersRun() {
    const SerialQueue other(dispatch());
    auto rounds = std::make_shared<std::atomic<int>>(0);
    auto step = std::make_shared<std::function<void()>>();
    std::weak_ptr<std::function<void()>> again = step;
    *step = [this, other, rounds, again] {
      SerialQueue(other).async([this, rounds, again] {
        dispatch().main().async([rounds, again] {
          const auto next = again.lock();
          if (++*rounds < 50 && next) {
            (*next)();
          }
        });
      });
    };
    (*step)();
    ASSERT_TRUE(runUntil([&] { return *rounds >= 50; }));
  }

  std::unique_ptr<DispatchHarness> harness_ = GetParam().make();
  Record record_;
};

INSTANTIATE_TEST_SUITE_P(Over, DispatchContract,
                         testing::Values(Kind{"SimDispatch",
                                              []() -> std::unique_ptr<DispatchHarness> {
                                                return std::make_unique<SimHarness>();
                                              }},
                                         Kind{"LinuxDispatch",
                                              []() -> std::unique_ptr<DispatchHarness> {
                                                return std::make_unique<LinuxHarness>();
                                              }}),
                         [](const auto& info) { return info.param.name; });

TEST_P(DispatchContract, NothingRunsBeforeTheCallThatPostedItHasReturned) {
  bool ran = false;
  dispatch().main().async([&] { ran = true; });
  EXPECT_FALSE(ran);
  EXPECT_TRUE(runUntil([&] { return ran; }));
}

TEST_P(DispatchContract, MainQueueKeepsItsOrderAndPutsNewBlocksBehind) {
  dispatch().main().async([&] {
    record_.add("1");
    dispatch().main().async([&] { record_.add("3"); });
  });
  dispatch().main().async([&] { record_.add("2"); });
  ASSERT_TRUE(runUntil([&] { return record_.size() == 3; }));
  EXPECT_EQ(record_.items(), (Texts{"1", "2", "3"}));
}

TEST_P(DispatchContract, SerialQueueKeepsItsOrder) {
  SerialQueue queue(dispatch(), "ordered");
  Texts expected;
  for (int i = 0; i < 200; ++i) {
    expected.push_back(std::to_string(i));
    queue.async([this, i] { record_.add(std::to_string(i)); });
  }
  ASSERT_TRUE(runUntil([&] { return record_.size() == 200; }));
  EXPECT_EQ(record_.items(), expected);
}

TEST_P(DispatchContract, SerialQueueTakesBlocksOfBlocksBehindThoseThatWait) {
  SerialQueue queue(dispatch());
  queue.async([&, queue]() mutable {
    record_.add("1");
    queue.async([&] { record_.add("3"); });
  });
  queue.async([&] { record_.add("2"); });
  ASSERT_TRUE(runUntil([&] { return record_.size() == 3; }));
  EXPECT_EQ(record_.items(), (Texts{"1", "2", "3"}));
}

TEST_P(DispatchContract, EightThreadsKeepTheirOwnOrderAndNothingOverlaps) {
  constexpr int kThreads = 8;
  constexpr int kBlocks = 10'000;
  SerialQueue serial(dispatch());
  platform::Queue* const queues[] = {&serial, &dispatch().main()};
  for (platform::Queue* queue : queues) {
    std::vector<int> last(kThreads, -1);
    std::atomic<int> inside = 0;
    std::atomic<int> done = 0;
    bool inOrder = true;
    bool alone = true;
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int t = 0; t < kThreads; ++t) {
      threads.emplace_back([&, t] {
        for (int i = 0; i < kBlocks; ++i) {
          queue->async([&, t, i] {
            alone = ++inside == 1 && alone;
            inOrder = last[static_cast<std::size_t>(t)] == i - 1 && inOrder;
            last[static_cast<std::size_t>(t)] = i;
            --inside;
            ++done;
          });
        }
      });
    }
    for (std::thread& thread : threads) {
      thread.join();
    }
    ASSERT_TRUE(runUntil([&] { return done == kThreads * kBlocks; })) << queue->label() << " " << done;
    EXPECT_TRUE(inOrder);
    EXPECT_TRUE(alone);
  }
}

TEST_P(DispatchContract, AHoldKeepsLaterJobsWaitingUntilItIsDropped) {
  SerialQueue queue(dispatch());
  Hold kept;
  std::atomic<bool> taken = false;
  queue.asyncHolding([&](Hold hold) {
    record_.add("first");
    kept = std::move(hold);
    taken = true;
  });
  queue.async([&] { record_.add("second"); });
  ASSERT_TRUE(runUntil([&] { return taken.load(); }));
  letOthersRun();
  EXPECT_EQ(record_.items(), (Texts{"first"}));
  record_.add("dropped");
  kept.reset();
  ASSERT_TRUE(runUntil([&] { return record_.size() == 3; }));
  EXPECT_EQ(record_.items(), (Texts{"first", "dropped", "second"}));
}

TEST_P(DispatchContract, TheLastCopyOfAHoldCounts) {
  SerialQueue queue(dispatch());
  std::vector<Hold> copies;
  std::atomic<bool> taken = false;
  queue.asyncHolding([&](const Hold& hold) {
    copies = {hold, hold};
    taken = true;
  });
  queue.async([&] { record_.add("later"); });
  ASSERT_TRUE(runUntil([&] { return taken.load(); }));
  copies.pop_back();
  letOthersRun();
  EXPECT_TRUE(record_.items().empty());
  copies.pop_back();
  EXPECT_TRUE(runUntil([&] { return record_.size() == 1; }));
}

TEST_P(DispatchContract, AHoldThatItsJobDropsAtOnceLetsNothingInBeforeTheJobHasEnded) {
  SerialQueue queue(dispatch());
  queue.asyncHolding([&](Hold hold) {
    record_.add("first begins");
    hold.reset();
    record_.add("first ends");
  });
  queue.async([&] { record_.add("second"); });
  ASSERT_TRUE(runUntil([&] { return record_.size() == 3; }));
  EXPECT_EQ(record_.items(), (Texts{"first begins", "first ends", "second"}));
}

TEST_P(DispatchContract, ADroppedContinuationFreesTheQueue) {
  SerialQueue queue(dispatch());
  std::function<void()> continuation;
  std::atomic<bool> taken = false;
  queue.asyncHolding([&](const Hold& hold) {
    continuation = [hold] {};
    taken = true;
  });
  queue.async([&] { record_.add("later"); });
  ASSERT_TRUE(runUntil([&] { return taken.load(); }));
  EXPECT_TRUE(record_.items().empty());
  continuation = nullptr;
  EXPECT_TRUE(runUntil([&] { return record_.size() == 1; }));
}

TEST_P(DispatchContract, AHoldGoesWithATimerAndThroughTheMainQueue) {
  SerialQueue queue(dispatch());
  queue.asyncHolding([&](const Hold& hold) {
    record_.add("waits");
    dispatch().main().after(Millis(30), [&, hold] {
      record_.add(dispatch().main().isCurrent() ? "main" : "elsewhere");
      dispatch().global().after(Millis(20), [&, hold] { record_.add("waited"); });
    });
  });
  queue.async([&] { record_.add("next"); });
  ASSERT_TRUE(runUntil([&] { return record_.size() == 4; }));
  EXPECT_EQ(record_.items(), (Texts{"waits", "main", "waited", "next"}));
}

TEST_P(DispatchContract, AfterIsNeverEarly) {
  SerialQueue serial(dispatch());
  platform::Queue* const queues[] = {&serial, &dispatch().main(), &dispatch().global()};
  std::atomic<int> left = 0;
  for (platform::Queue* queue : queues) {
    for (const int delay : {1, 7, 20}) {
      ++left;
      const Millis posted = dispatch().now();
      queue->after(Millis(delay), [this, queue, posted, delay, &left] {
        EXPECT_GE(dispatch().now() - posted, Millis(delay)) << queue->label();
        --left;
      });
    }
  }
  EXPECT_TRUE(runUntil([&] { return left == 0; }));
}

TEST_P(DispatchContract, EqualDelaysKeepTheirOrderAndShorterOnesComeFirst) {
  SerialQueue serial(dispatch());
  platform::Queue* const queues[] = {&serial, &dispatch().main()};
  for (platform::Queue* queue : queues) {
    Record record;
    queue->after(Millis(300), [&] { record.add("last"); });
    for (int i = 0; i < 20; ++i) {
      queue->after(Millis(10), [&record, i] { record.add(std::to_string(i)); });
    }
    ASSERT_TRUE(runUntil([&] { return record.size() == 21; })) << queue->label();
    Texts expected;
    for (int i = 0; i < 20; ++i) {
      expected.push_back(std::to_string(i));
    }
    expected.push_back("last");
    EXPECT_EQ(record.items(), expected) << queue->label();
  }
}

TEST_P(DispatchContract, ADelayDoesNotOccupyTheSerialQueue) {
  SerialQueue queue(dispatch());
  queue.after(Millis(50), [&] { record_.add("delayed"); });
  queue.async([&] { record_.add("meanwhile"); });
  ASSERT_TRUE(runUntil([&] { return record_.size() == 2; }));
  EXPECT_EQ(record_.items(), (Texts{"meanwhile", "delayed"}));
}

TEST_P(DispatchContract, NoDelayAndANegativeOneAreAsync) {
  SerialQueue serial(dispatch());
  platform::Queue* const queues[] = {&serial, &dispatch().main()};
  for (platform::Queue* queue : queues) {
    Record record;
    queue->after(Millis(-5), [&] { record.add("1"); });
    queue->after(Millis(0), [&] { record.add("2"); });
    queue->async([&] { record.add("3"); });
    ASSERT_TRUE(runUntil([&] { return record.size() == 3; }));
    EXPECT_EQ(record.items(), (Texts{"1", "2", "3"})) << queue->label();
  }
}

TEST_P(DispatchContract, TheLongestDelayIsNoNumberThatOverflows) {
  bool ran = false;
  dispatch().main().after(Millis::max(), [&] { ran = true; });
  letOthersRun();
  EXPECT_FALSE(ran);
}

TEST_P(DispatchContract, TimeNeverGoesBack) {
  const Millis before = dispatch().now();
  EXPECT_GE(before, Millis::zero());
  letOthersRun();
  EXPECT_GE(dispatch().now(), before);
}

TEST_P(DispatchContract, SyncOnMainFromTheMainQueueRunsAtOnce) {
  bool ran = false;
  dispatch().syncOnMain([&] {
    ran = true;
    EXPECT_TRUE(dispatch().main().isCurrent());
  });
  EXPECT_TRUE(ran);
  dispatch().main().async([&] {
    dispatch().syncOnMain([&] { record_.add("inner"); });
    record_.add("outer");
  });
  ASSERT_TRUE(runUntil([&] { return record_.size() == 2; }));
  EXPECT_EQ(record_.items(), (Texts{"inner", "outer"}));
}

TEST_P(DispatchContract, SyncOnMainFromAWorkerWaitsAndComesBehindEarlierBlocks) {
  dispatch().global().async([&] {
    dispatch().main().async([&] { record_.add("earlier"); });
    dispatch().syncOnMain([&] {
      record_.add(dispatch().main().isCurrent() && !dispatch().global().isCurrent() ? "on main"
                                                                                    : "elsewhere");
    });
    record_.add(!dispatch().main().isCurrent() && dispatch().global().isCurrent() ? "on the worker"
                                                                                  : "elsewhere");
  });
  ASSERT_TRUE(runUntil([&] { return record_.size() == 3; }));
  EXPECT_EQ(record_.items(), (Texts{"earlier", "on main", "on the worker"}));
}

TEST_P(DispatchContract, SyncOnMainFromAForeignThread) {
  std::atomic<bool> ended = false;
  bool onMain = false;
  std::thread thread([&] {
    dispatch().syncOnMain([&] { onMain = dispatch().main().isCurrent(); });
    ended = true;
  });
  const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (!ended && std::chrono::steady_clock::now() < limit) {
    runUntil([&] { return ended.load(); });
  }
  ASSERT_TRUE(ended);
  thread.join();
  EXPECT_TRUE(onMain);
}

TEST_P(DispatchContract, EveryQueueKnowsItselfAndNoOther) {
  SerialQueue one(dispatch(), "one");
  SerialQueue two(dispatch(), "two");
  platform::Queue* const queues[] = {&one,
                                     &two,
                                     &dispatch().main(),
                                     &dispatch().global(),
                                     &dispatch().global(QualityOfService::Background),
                                     &dispatch().global(QualityOfService::UserInitiated)};
  EXPECT_TRUE(dispatch().main().isCurrent());
  EXPECT_FALSE(one.isCurrent());
  EXPECT_FALSE(dispatch().global().isCurrent());
  std::atomic<int> left = 0;
  for (platform::Queue* self : queues) {
    ++left;
    self->async([&, self] {
      for (platform::Queue* other : queues) {
        EXPECT_EQ(other->isCurrent(), other == self) << self->label() << " asks " << other->label();
      }
      --left;
    });
  }
  EXPECT_TRUE(runUntil([&] { return left == 0; }));
  EXPECT_TRUE(dispatch().main().isCurrent());
}

TEST_P(DispatchContract, ASerialJobThatGoesThroughTheMainQueueKnowsWhereItIs) {
  SerialQueue queue(dispatch());
  queue.async([&] {
    record_.add(queue.isCurrent() ? "queue" : "elsewhere");
    dispatch().syncOnMain([&] { record_.add(queue.isCurrent() ? "queue" : "main"); });
    record_.add(queue.isCurrent() ? "queue" : "elsewhere");
  });
  ASSERT_TRUE(runUntil([&] { return record_.size() == 3; }));
  EXPECT_EQ(record_.items(), (Texts{"queue", "main", "queue"}));
}

TEST_P(DispatchContract, CopiesAreOneQueue) {
  SerialQueue queue(dispatch(), "label");
  SerialQueue copy = queue;
  const SerialQueue other(dispatch(), "label");
  EXPECT_TRUE(queue == copy);
  EXPECT_FALSE(queue == other);
  EXPECT_EQ(copy.label(), "label");
  EXPECT_EQ(SerialQueue(dispatch()).label(), "");
  queue.async([&, copy]() mutable {
    record_.add(copy.isCurrent() ? "1" : "elsewhere");
    copy.async([&] { record_.add("2"); });
    queue.async([&] { record_.add("3"); });
  });
  ASSERT_TRUE(runUntil([&] { return record_.size() == 3; }));
  EXPECT_EQ(record_.items(), (Texts{"1", "2", "3"}));
}

TEST_P(DispatchContract, JobsRunAlthoughTheLastCopyIsGone) {
  {
    SerialQueue queue(dispatch());
    queue.async([&] { record_.add("now"); });
    queue.after(Millis(10), [&] { record_.add("later"); });
  }
  ASSERT_TRUE(runUntil([&] { return record_.size() == 2; }));
  EXPECT_EQ(record_.items(), (Texts{"now", "later"}));
}

TEST_P(DispatchContract, ABlockIsGoneBeforeTheNextOneRuns) {
  SerialQueue serial(dispatch());
  platform::Queue* const queues[] = {&serial, &dispatch().main()};
  for (platform::Queue* queue : queues) {
    auto held = std::make_shared<int>(0);
    const std::weak_ptr<int> watch = held;
    std::atomic<int> result = -1;
    queue->async([held] { ++*held; });
    held.reset();
    queue->async([&] { result = watch.expired() ? 1 : 0; });
    ASSERT_TRUE(runUntil([&] { return result != -1; }));
    EXPECT_EQ(result, 1) << queue->label();
  }
}

TEST_P(DispatchContract, ABlockThatThrowsDoesNotStopItsQueue) {
  SerialQueue serial(dispatch(), "throwing");
  platform::Queue* const queues[] = {&serial, &dispatch().main(), &dispatch().global()};
  for (platform::Queue* queue : queues) {
    std::atomic<bool> ran = false;
    queue->async([] { throw std::runtime_error("on purpose"); });
    queue->async([] { throw 17; });
    queue->async(nullptr);
    queue->async([&] { ran = true; });
    EXPECT_TRUE(runUntil([&] { return ran.load(); })) << queue->label();
  }
  std::atomic<bool> ran = false;
  serial.asyncHolding([](const Hold&) { throw std::runtime_error("on purpose"); });
  serial.asyncHolding(nullptr);
  serial.async([&] { ran = true; });
  EXPECT_TRUE(runUntil([&] { return ran.load(); }));
}

TEST_P(DispatchContract, WhatHasNotRunIsFreedWithTheDispatch) {
  auto held = std::make_shared<int>(0);
  const std::weak_ptr<int> watch = held;
  {
    platform::Dispatch& machine = dispatch();
    SerialQueue queue(machine);
    queue.after(Millis(3'600'000), [held, queue] {});
    machine.main().async([held, queue] {});
    machine.main().after(Millis(3'600'000), [held] {});
    machine.global().after(Millis(3'600'000), [held] {});
    // The queue is occupied for good, its waiting jobs hold the queue itself.
    queue.asyncHolding(
        [&machine, held](const Hold& hold) { machine.main().after(Millis(3'600'000), [hold, held] {}); });
    queue.async([held, queue] {});
  }
  held.reset();
  harness_.reset();
  EXPECT_TRUE(watch.expired());
}

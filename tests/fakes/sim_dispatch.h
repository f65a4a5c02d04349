#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/queue.h"

namespace fakes {

// Queues on simulated time, all run by the test's thread: nothing runs before the test says so, and time
// stands still except in advance and advanceToNextTimer. Blocks of all queues run in the order in which they
// became due, equal times in the order in which they were posted. The test's own code counts as running on
// the main queue. Posting is allowed from any thread, everything else only on the thread that made the
// object.
//
// More than a million blocks in one run (a block that posts itself for ever) throw std::runtime_error.
class SimDispatch : public platform::Dispatch {
 public:
  SimDispatch();
  ~SimDispatch() override;
  SimDispatch(const SimDispatch&) = delete;
  SimDispatch& operator=(const SimDispatch&) = delete;

  // Zero at first.
  platform::Millis now() const override;
  platform::Queue& main() override;
  platform::Queue& global(platform::QualityOfService qos = platform::QualityOfService::Default) override;
  // From a block of another queue: runs the main blocks that are already due, then `block`, and returns.
  // From another thread: waits until the test runs it.
  void syncOnMain(const platform::Block& block) override;

  // Runs what is due now, also what is posted meanwhile. Returns how many blocks ran.
  std::size_t runUntilIdle();
  // Lets `duration` pass, running each timer at its time and what follows from it. Returns how many blocks
  // ran.
  std::size_t advance(platform::Millis duration);
  // Runs what is due now, then moves to the time of the next timer and runs what is due then. False when
  // there is no timer.
  bool advanceToNextTimer();

  // The time of the next timer, absent when there is none. Timers of serial queues are seen here as well.
  std::optional<platform::Millis> nextTimer() const;
  // Blocks that wait for a later time.
  std::size_t pendingTimers() const;
  // Blocks that are due now.
  std::size_t pendingBlocks() const;

 private:
  class SimQueue;
  using Key = std::pair<platform::Millis, std::uint64_t>;
  struct Entry {
    SimQueue* queue = nullptr;
    platform::Block block;
  };

  void post(SimQueue* queue, platform::Millis delay, platform::Block block);
  bool runFirst(platform::Millis limit);
  void runEntry(Entry entry);
  std::size_t runUpTo(platform::Millis limit);

  const std::thread::id thread_ = std::this_thread::get_id();
  mutable std::mutex mutex_;
  platform::Millis now_{0};
  std::uint64_t lastNumber_ = 0;
  std::map<Key, Entry> entries_;
  bool closed_ = false;
  std::size_t ran_ = 0;
  int depth_ = 0;
  std::unique_ptr<SimQueue> main_;
  std::map<platform::QualityOfService, std::unique_ptr<SimQueue>> globals_;
};

// What happened when, for tests that check waits to the millisecond:
//   TimeLog log(sim);  …  EXPECT_EQ(log.entries(), (std::vector<std::string>{"0 load", "100 loaded"}));
class TimeLog {
 public:
  explicit TimeLog(const platform::Dispatch& dispatch) : dispatch_(dispatch) {}

  void add(const std::string& event);
  // A block that adds `event` when it runs. The log must outlive it.
  platform::Block adding(std::string event);
  // "MILLISECONDS EVENT", in order.
  std::vector<std::string> entries() const;
  // When `event` happened first, absent when it did not.
  std::optional<platform::Millis> timeOf(const std::string& event) const;
  void clear() { events_.clear(); }

 private:
  const platform::Dispatch& dispatch_;
  std::vector<std::pair<platform::Millis, std::string>> events_;
};

}  // namespace fakes

#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <list>
#include <mutex>
#include <thread>

#include "platform/queue.h"

namespace platform {

// Worker threads that grow with the work: a block that finds no idle thread gets a new one, so blocks that
// wait for a child process do not hold up others. From `kMostThreads` on blocks wait for a thread, first
// come, first served: a burst of thousands would otherwise be slower for all its threads. A thread that stays
// idle ends after a while. Any thread may call.
class WorkerPool {
 public:
  static constexpr std::size_t kMostThreads = 128;

  explicit WorkerPool(std::chrono::milliseconds idleTime = std::chrono::seconds(10));
  // Stops, and waits for the blocks that are running. Not from a worker.
  ~WorkerPool();
  WorkerPool(const WorkerPool&) = delete;
  WorkerPool& operator=(const WorkerPool&) = delete;

  // Runs `block` on a worker; after stop it is dropped. When the system gives no further thread, the block
  // waits for one of those there are, with a line in the log. The block must not throw, nor wait for another
  // block.
  void post(Block block);
  // Drops the blocks that have not started and ends the idle threads. Running blocks are let be: their
  // threads end after them.
  void stop();
  // The threads there are at the moment, busy or idle.
  std::size_t threadCount() const;

 private:
  using Threads = std::list<std::thread>;

  void addThread();
  void work(Threads::iterator self);
  void joinEnded();

  const std::chrono::milliseconds idleTime_;
  mutable std::mutex mutex_;
  std::condition_variable wake_;
  std::condition_variable changed_;
  std::deque<Block> blocks_;
  Threads threads_;
  // Threads on their last steps, each joined by the one that ends after it, or by stop.
  Threads ended_;
  std::size_t idle_ = 0;
  std::size_t starting_ = 0;
  bool stopped_ = false;
};

}  // namespace platform

#include "platform/linux/worker_pool.h"

#include <system_error>
#include <utility>

#include <pthread.h>

#include "platform/log.h"

namespace platform {

WorkerPool::WorkerPool(std::chrono::milliseconds idleTime) : idleTime_(idleTime) {}

WorkerPool::~WorkerPool() {
  stop();
  {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return threads_.empty(); });
  }
  joinEnded();
}

void WorkerPool::post(Block block) {
  const std::lock_guard lock(mutex_);
  if (stopped_) {
    return;
  }
  blocks_.push_back(std::move(block));
  // A thread that has been woken counts as idle until it has taken its block, hence the comparison.
  if (blocks_.size() > idle_ + starting_ && threads_.size() < kMostThreads) {
    addThread();
  } else {
    wake_.notify_one();
  }
}

void WorkerPool::stop() {
  std::deque<Block> dropped;
  {
    std::unique_lock lock(mutex_);
    stopped_ = true;
    dropped.swap(blocks_);
    wake_.notify_all();
    changed_.wait(lock, [this] { return idle_ + starting_ == 0; });
  }
  joinEnded();
}

std::size_t WorkerPool::threadCount() const {
  const std::lock_guard lock(mutex_);
  return threads_.size();
}

void WorkerPool::addThread() {
  const auto self = threads_.emplace(threads_.end());
  try {
    *self = std::thread([this, self] { work(self); });
    ++starting_;
  } catch (const std::system_error& error) {
    threads_.erase(self);
    NSLog("No further worker thread: %s", error.what());
  }
}

void WorkerPool::work(Threads::iterator self) {
  pthread_setname_np(pthread_self(), "lumo-worker");
  std::unique_lock lock(mutex_);
  --starting_;
  while (!stopped_) {
    if (blocks_.empty()) {
      ++idle_;
      const bool woken = wake_.wait_for(lock, idleTime_, [this] { return stopped_ || !blocks_.empty(); });
      --idle_;
      if (!woken) {
        break;
      }
      continue;
    }
    Block block = std::move(blocks_.front());
    blocks_.pop_front();
    lock.unlock();
    block();
    block = nullptr;
    lock.lock();
  }
  Threads before;
  before.swap(ended_);
  ended_.splice(ended_.end(), threads_, self);
  changed_.notify_all();
  lock.unlock();
  for (std::thread& thread : before) {
    thread.join();
  }
}

void WorkerPool::joinEnded() {
  Threads ended;
  {
    const std::lock_guard lock(mutex_);
    ended.swap(ended_);
  }
  for (std::thread& thread : ended) {
    thread.join();
  }
}

}  // namespace platform

#include "platform/linux/timer_thread.h"

#include <algorithm>
#include <system_error>

#include <pthread.h>

#include "platform/log.h"

namespace platform {

namespace {

// A bound that keeps the sum of clock and delay inside the clock's range.
constexpr Millis kLongestDelay = std::chrono::hours(24 * 365);

}  // namespace

TimerThread::~TimerThread() {
  stop();
}

void TimerThread::schedule(Millis delay, Block fire) {
  const Clock::time_point due = Clock::now() + std::min(delay, kLongestDelay);
  const std::lock_guard lock(mutex_);
  if (stopped_) {
    return;
  }
  const auto added = timers_.emplace(std::pair(due, ++lastNumber_), std::move(fire)).first;
  if (!thread_.joinable()) {
    try {
      thread_ = std::thread([this] { run(); });
    } catch (const std::system_error& error) {
      NSLog("No thread for the timers, they wait for the next one: %s", error.what());
    }
  } else if (added == timers_.begin()) {
    changed_.notify_one();
  }
}

void TimerThread::stop() {
  decltype(timers_) dropped;
  {
    const std::lock_guard lock(mutex_);
    stopped_ = true;
    dropped.swap(timers_);
    changed_.notify_one();
  }
  if (thread_.joinable()) {
    thread_.join();
  }
}

void TimerThread::run() {
  pthread_setname_np(pthread_self(), "lumo-timers");
  std::unique_lock lock(mutex_);
  while (!stopped_) {
    if (timers_.empty()) {
      changed_.wait(lock);
      continue;
    }
    const Clock::time_point due = timers_.begin()->first.first;
    if (Clock::now() < due) {
      changed_.wait_until(lock, due);
      continue;
    }
    Block fire = std::move(timers_.begin()->second);
    timers_.erase(timers_.begin());
    lock.unlock();
    fire();
    fire = nullptr;
    lock.lock();
  }
}

}  // namespace platform

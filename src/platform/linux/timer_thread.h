#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <thread>
#include <utility>

#include "platform/queue.h"

namespace platform {

// One thread that waits for all timers. It starts with the first one. Any thread may call.
class TimerThread {
 public:
  using Clock = std::chrono::steady_clock;

  TimerThread() = default;
  // Stops.
  ~TimerThread();
  TimerThread(const TimerThread&) = delete;
  TimerThread& operator=(const TimerThread&) = delete;

  // Calls `fire` on the timer thread once `delay` has passed; equal times keep their order. `fire` only hands
  // work on to a queue: it neither blocks nor throws. A delay beyond a year is a year. After stop nothing is
  // kept.
  void schedule(Millis delay, Block fire);
  // Drops all timers and ends the thread. Not from the timer thread.
  void stop();

 private:
  void run();

  std::mutex mutex_;
  std::condition_variable changed_;
  std::map<std::pair<Clock::time_point, std::uint64_t>, Block> timers_;
  std::uint64_t lastNumber_ = 0;
  std::thread thread_;
  bool stopped_ = false;
};

}  // namespace platform

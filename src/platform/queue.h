#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace platform {

using Block = std::function<void()>;
using Millis = std::chrono::milliseconds;
// Keeps a serial queue occupied until the last copy is gone; see SerialQueue::asyncHolding.
using Hold = std::shared_ptr<void>;

enum class QualityOfService : unsigned { Background = 9, Default = 21, UserInitiated = 25 };

// Runs blocks. Every operation may be called from any thread and returns at once.
class Queue {
 public:
  virtual ~Queue() = default;

  // Runs `block` once, after everything that is already in the queue (a global queue keeps no order).
  virtual void async(Block block) = 0;
  // The same, not before `delay` has passed. No thread sleeps meanwhile. Zero or less is async.
  virtual void after(Millis delay, Block block) = 0;
  // Whether the caller runs on this queue.
  virtual bool isCurrent() const = 0;
  // The debug label, empty when none was given.
  virtual std::string label() const = 0;
};

// The machine's queues and its clock: LinuxDispatch in the program, SimDispatch in tests.
class Dispatch {
 public:
  virtual ~Dispatch() = default;

  // Time since an arbitrary start; never goes back.
  virtual Millis now() const = 0;
  // The queue of the main thread, on which all work with windows and web views happens.
  virtual Queue& main() = 0;
  // A concurrent queue of worker threads. A thread is added when none is idle, so a blocking child never
  // starves it.
  virtual Queue& global(QualityOfService qos = QualityOfService::Default) = 0;
  // Runs `block` on the main queue and waits for its end; runs it at once when the caller is on the main
  // queue.
  virtual void syncOnMain(const Block& block) = 0;
};

// A queue that runs one job at a time, in order, on a global queue of `dispatch`. Copies share one queue;
// jobs that are already queued run even when the last copy is gone. `dispatch` must outlive the jobs.
class SerialQueue : public Queue {
 public:
  explicit SerialQueue(Dispatch& dispatch, std::string label = {});

  void async(Block block) override;
  void after(Millis delay, Block block) override;
  bool isCurrent() const override;
  std::string label() const override;

  // Runs `job` like async, but the queue stays occupied until the last copy of the Hold that it is given has
  // been dropped: a job that waits (a timer, an alert) keeps its Hold, and later work on the queue keeps its
  // order. A continuation that is dropped without being called frees the queue as well, so nothing can wedge
  // it.
  void asyncHolding(std::function<void(Hold)> job);
  // Waits until everything queued so far has run. Not from this queue, nor from the main queue on simulated
  // time.
  void drain();

  // Whether both are copies of one queue.
  bool operator==(const SerialQueue& other) const { return state_ == other.state_; }

 private:
  struct State;
  std::shared_ptr<State> state_;
};

}  // namespace platform

#include <algorithm>
#include <cstdint>
#include <deque>
#include <future>
#include <iterator>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

#include "platform/current_queue.h"
#include "platform/log.h"
#include "platform/queue.h"

namespace platform {

namespace {

// Exactly one of the two is set.
struct Job {
  Block block;
  std::function<void(Hold)> holding;
};

// A block that waits for its time. It belongs to its timer, so a timer that the dispatch drops frees it.
struct Delayed {
  Millis delay;
  std::uint64_t number = 0;
  Block block;
};

}  // namespace

struct SerialQueue::State : std::enable_shared_from_this<SerialQueue::State> {
  State(Dispatch& machine, std::string name) : dispatch(machine), label(std::move(name)) {}

  // The right to run the next job of the queue, handed through the global queue. A turn that the dispatch
  // drops without taking it (it has been stopped) drops the jobs, so nobody waits for them in vain.
  struct Turn {
    explicit Turn(std::shared_ptr<State> queue) : state(std::move(queue)) {}
    ~Turn() {
      if (state) {
        state->abandon();
      }
    }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;
    void take() { std::exchange(state, nullptr)->run(); }

    std::shared_ptr<State> state;
  };

  void add(Job job) {
    {
      const std::lock_guard lock(mutex);
      jobs.push_back(std::move(job));
      if (std::exchange(occupied, true)) {
        return;
      }
    }
    passTurn();
  }

  void passTurn() {
    dispatch.global().async([turn = std::make_shared<Turn>(shared_from_this())] { turn->take(); });
  }

  // One job for each turn: the other users of the global queue get theirs, and a dispatch that stops lets no
  // further job begin.
  void run() {
    Job job;
    {
      const std::lock_guard lock(mutex);
      job = std::move(jobs.front());
      jobs.pop_front();
    }
    if (job.holding) {
      // This copy keeps the queue occupied while the job runs, even when the job drops its own at once.
      const Hold hold(this, [self = shared_from_this()](void*) { self->release(); });
      runBlock([holding = std::move(job.holding), &hold] { holding(hold); }, this, label);
    } else {
      runBlock(std::move(job.block), this, label);
      release();
    }
  }

  // The end of an occupation, on whatever thread it happens.
  void release() {
    {
      const std::lock_guard lock(mutex);
      if (jobs.empty()) {
        occupied = false;
        return;
      }
    }
    passTurn();
  }

  void abandon() {
    std::deque<Job> dropped;
    const std::lock_guard lock(mutex);
    dropped.swap(jobs);
    occupied = false;
  }

  std::shared_ptr<Delayed> addDelayed(Millis delay, Block block) {
    const std::lock_guard lock(mutex);
    auto entry = std::make_shared<Delayed>(Delayed{delay, ++lastNumber, std::move(block)});
    waiting[delay].emplace_back(entry->number, entry);
    return entry;
  }

  // The timer of `entry` has fired. Timers reach the queue through worker threads that may overtake each
  // other, so whatever was asked for earlier with no longer a delay goes first: its time has come as well.
  void expire(const std::shared_ptr<Delayed>& entry) {
    // The last reference must not go under the lock.
    std::vector<std::shared_ptr<Delayed>> due;
    {
      const std::lock_guard lock(mutex);
      for (auto same = waiting.begin(); same != waiting.end() && same->first <= entry->delay;) {
        auto& entries = same->second;
        for (; !entries.empty() && entries.front().first <= entry->number; entries.pop_front()) {
          if (auto other = entries.front().second.lock()) {
            due.push_back(std::move(other));
          }
        }
        same = entries.empty() ? waiting.erase(same) : std::next(same);
      }
      if (due.empty()) {
        return;
      }
      std::ranges::sort(due, {}, &Delayed::number);
      for (const auto& other : due) {
        jobs.push_back({std::exchange(other->block, nullptr), nullptr});
      }
      if (std::exchange(occupied, true)) {
        return;
      }
    }
    passTurn();
  }

  Dispatch& dispatch;
  const std::string label;
  std::mutex mutex;
  std::deque<Job> jobs;
  // By their delays, of which there are few, in the order in which they were asked for: with thousands of
  // timers none has to be looked for.
  std::map<Millis, std::deque<std::pair<std::uint64_t, std::weak_ptr<Delayed>>>> waiting;
  std::uint64_t lastNumber = 0;
  // Whether a turn is under way or a Hold is out.
  bool occupied = false;
};

SerialQueue::SerialQueue(Dispatch& dispatch, std::string label)
    : state_(std::make_shared<State>(dispatch, std::move(label))) {}

void SerialQueue::async(Block block) {
  state_->add({std::move(block), nullptr});
}

void SerialQueue::asyncHolding(std::function<void(Hold)> job) {
  state_->add({nullptr, std::move(job)});
}

void SerialQueue::after(Millis delay, Block block) {
  if (delay <= Millis::zero()) {
    async(std::move(block));
    return;
  }
  state_->dispatch.global().after(
      delay, [state = state_, entry = state_->addDelayed(delay, std::move(block))] { state->expire(entry); });
}

bool SerialQueue::isCurrent() const {
  return CurrentQueue::identity() == state_.get();
}

std::string SerialQueue::label() const {
  return state_->label;
}

void SerialQueue::drain() {
  if (isCurrent()) {
    NSLog("The queue \"%@\" cannot wait for itself", state_->label);
    return;
  }
  auto reached = std::make_shared<std::promise<void>>();
  const std::future<void> end = reached->get_future();
  async([reached] { reached->set_value(); });
  reached.reset();
  // Also ends when the job is dropped: the promise is then gone.
  end.wait();
}

}  // namespace platform

#include "tests/fakes/sim_dispatch.h"

#include <algorithm>
#include <cstdint>
#include <future>
#include <iterator>
#include <stdexcept>

#include "platform/current_queue.h"

namespace fakes {

using platform::Block;
using platform::CurrentQueue;
using platform::Millis;
using platform::QualityOfService;

namespace {

constexpr std::size_t kMostBlocks = 1'000'000;
// A bound that keeps sums of time inside the range, as the machine's own timers have it.
constexpr Millis kLongestDelay = std::chrono::hours(24 * 365);

}  // namespace

class SimDispatch::SimQueue : public platform::Queue {
 public:
  SimQueue(SimDispatch& dispatch, std::string label) : dispatch_(dispatch), label_(std::move(label)) {}

  void async(Block block) override { dispatch_.post(this, Millis::zero(), std::move(block)); }
  void after(Millis delay, Block block) override { dispatch_.post(this, delay, std::move(block)); }
  bool isCurrent() const override {
    const void* current = CurrentQueue::identity();
    if (this == dispatch_.main_.get() && current == nullptr) {
      return std::this_thread::get_id() == dispatch_.thread_;
    }
    return current == this;
  }
  std::string label() const override { return label_; }

 private:
  SimDispatch& dispatch_;
  const std::string label_;
};

SimDispatch::SimDispatch() : main_(std::make_unique<SimQueue>(*this, "main")) {
  globals_[QualityOfService::Background] = std::make_unique<SimQueue>(*this, "global background");
  globals_[QualityOfService::Default] = std::make_unique<SimQueue>(*this, "global default");
  globals_[QualityOfService::UserInitiated] = std::make_unique<SimQueue>(*this, "global user-initiated");
}

SimDispatch::~SimDispatch() {
  std::map<Key, Entry> dropped;
  const std::lock_guard lock(mutex_);
  closed_ = true;
  dropped.swap(entries_);
}

Millis SimDispatch::now() const {
  const std::lock_guard lock(mutex_);
  return now_;
}

platform::Queue& SimDispatch::main() {
  return *main_;
}

platform::Queue& SimDispatch::global(QualityOfService qos) {
  const auto found = globals_.find(qos);
  return found == globals_.end() ? *globals_.at(QualityOfService::Default) : *found->second;
}

void SimDispatch::syncOnMain(const Block& block) {
  if (main_->isCurrent()) {
    platform::runBlock([&block] { block(); }, main_.get(), main_->label());
    return;
  }
  if (std::this_thread::get_id() != thread_) {
    auto ended = std::make_shared<std::promise<void>>();
    const std::future<void> end = ended->get_future();
    main_->async([ended, &block, this] {
      platform::runBlock([&block] { block(); }, main_.get(), main_->label());
      ended->set_value();
    });
    ended.reset();
    end.wait();
    return;
  }
  std::vector<Entry> earlier;
  {
    const std::lock_guard lock(mutex_);
    std::erase_if(entries_, [&](auto& item) {
      const bool taken = item.first.first <= now_ && item.second.queue == main_.get();
      if (taken) {
        earlier.push_back(std::move(item.second));
      }
      return taken;
    });
  }
  for (Entry& entry : earlier) {
    runEntry(std::move(entry));
  }
  platform::runBlock([&block] { block(); }, main_.get(), main_->label());
}

std::size_t SimDispatch::runUntilIdle() {
  return runUpTo(now());
}

std::size_t SimDispatch::advance(Millis duration) {
  const Millis end = now() + std::min(duration, kLongestDelay);
  const std::size_t count = runUpTo(end);
  const std::lock_guard lock(mutex_);
  now_ = std::max(now_, end);
  return count;
}

bool SimDispatch::advanceToNextTimer() {
  runUntilIdle();
  const auto next = nextTimer();
  if (!next) {
    return false;
  }
  runUpTo(*next);
  return true;
}

std::optional<Millis> SimDispatch::nextTimer() const {
  const std::lock_guard lock(mutex_);
  const auto next = entries_.upper_bound({now_, UINT64_MAX});
  return next == entries_.end() ? std::nullopt : std::optional(next->first.first);
}

std::size_t SimDispatch::pendingTimers() const {
  const std::lock_guard lock(mutex_);
  return static_cast<std::size_t>(std::distance(entries_.upper_bound({now_, UINT64_MAX}), entries_.end()));
}

std::size_t SimDispatch::pendingBlocks() const {
  const std::lock_guard lock(mutex_);
  return static_cast<std::size_t>(std::distance(entries_.begin(), entries_.upper_bound({now_, UINT64_MAX})));
}

void SimDispatch::post(SimQueue* queue, Millis delay, Block block) {
  const std::lock_guard lock(mutex_);
  if (closed_) {
    return;
  }
  const Millis due = now_ + std::clamp(delay, Millis::zero(), kLongestDelay);
  entries_.emplace(Key{due, ++lastNumber_}, Entry{queue, std::move(block)});
}

bool SimDispatch::runFirst(Millis limit) {
  Entry entry;
  {
    const std::lock_guard lock(mutex_);
    const auto first = entries_.begin();
    if (first == entries_.end() || first->first.first > limit) {
      return false;
    }
    now_ = std::max(now_, first->first.first);
    entry = std::move(first->second);
    entries_.erase(first);
  }
  runEntry(std::move(entry));
  return true;
}

void SimDispatch::runEntry(Entry entry) {
  if (++ran_ > kMostBlocks) {
    throw std::runtime_error("SimDispatch ran a million blocks without coming to rest");
  }
  platform::runBlock(std::move(entry.block), entry.queue, entry.queue->label());
}

std::size_t SimDispatch::runUpTo(Millis limit) {
  struct Depth {
    int& value;
    explicit Depth(int& depth) : value(depth) { ++value; }
    ~Depth() { --value; }
  };
  if (std::this_thread::get_id() != thread_) {
    throw std::logic_error("SimDispatch runs on the thread that made it");
  }
  const Depth inside(depth_);
  if (depth_ == 1) {
    ran_ = 0;
  }
  const std::size_t before = ran_;
  while (runFirst(limit)) {
  }
  return ran_ - before;
}

void TimeLog::add(const std::string& event) {
  events_.emplace_back(dispatch_.now(), event);
}

Block TimeLog::adding(std::string event) {
  return [this, event = std::move(event)] { add(event); };
}

std::vector<std::string> TimeLog::entries() const {
  std::vector<std::string> texts;
  for (const auto& [time, event] : events_) {
    texts.push_back(std::to_string(time.count()) + " " + event);
  }
  return texts;
}

std::optional<Millis> TimeLog::timeOf(const std::string& event) const {
  for (const auto& [time, name] : events_) {
    if (name == event) {
      return time;
    }
  }
  return std::nullopt;
}

}  // namespace fakes

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <map>
#include <mutex>
#include <utility>

#include "support/ZELKOR_NSObjectAdditions.h"

namespace lumo::ZELKOR_NSObjectAdditions {

namespace {

using platform::Block;
using platform::Dispatch;
using platform::Millis;

// The bursts of one dispatch, of which a program has one. The steps that are under way keep it alive. It is
// gone when there are none, and then every count is zero.
class Bursts : public std::enable_shared_from_this<Bursts> {
 public:
  explicit Bursts(Dispatch& dispatch)
      : queue_(dispatchQueueSerialWithDebugLabel(dispatch, "com.lumo.LumoBrowser.coalescing")) {}

  static std::shared_ptr<Bursts> of(Dispatch& dispatch);

  // `queue` is one.
  void call(const std::string& key, const QueueOrNone& queue, Millis delay, int when, const Block& block) {
    queue_.async([self = shared_from_this(), key, queue, when, block] {
      self->arrive(key, (when & AtStart) != 0, queue, block);
    });
    queue_.after(delay, [self = shared_from_this(), key, queue, when, block] {
      self->expire(key, (when & AtEnd) != 0, queue, block);
    });
  }

 private:
  static void post(const QueueOrNone& queue, const Block& block) {
    if (block) {
      queue.get()->async(block);
    }
  }

  void arrive(const std::string& key, bool runs, const QueueOrNone& queue, const Block& block) {
    const auto [entry, isFirst] = pending_.try_emplace(key, 0);
    if (isFirst && runs) {
      post(queue, block);
    }
    ++entry->second;
  }

  void expire(const std::string& key, bool runs, const QueueOrNone& queue, const Block& block) {
    const auto entry = pending_.find(key);
    if (entry == pending_.end() || --entry->second > 0) {
      return;
    }
    pending_.erase(entry);
    if (runs) {
      post(queue, block);
    }
  }

  platform::SerialQueue queue_;
  // How many timers each key has. On the queue only.
  std::map<std::string, std::int64_t> pending_;
};

std::shared_ptr<Bursts> Bursts::of(Dispatch& dispatch) {
  // Never destroyed: threads may call while the process ends.
  static std::mutex& mutex = *new std::mutex;
  static auto& all = *new std::map<Dispatch*, std::weak_ptr<Bursts>>;
  const std::lock_guard lock(mutex);
  if (auto bursts = all[&dispatch].lock()) {
    return bursts;
  }
  std::erase_if(all, [](const auto& entry) { return entry.second.expired(); });
  auto bursts = std::make_shared<Bursts>(dispatch);
  all[&dispatch] = bursts;
  return bursts;
}

}  // namespace

Millis coalescingDelay(double seconds) {
  // As nanoseconds the time has to fit into 64 bits.
  constexpr double kLongest = 9e9;
  const double bounded = std::isnan(seconds) ? 0 : std::clamp(seconds, 0.0, kLongest);
  const std::chrono::nanoseconds exact(static_cast<std::int64_t>(bounded * 1e9));
  return std::chrono::ceil<Millis>(exact);
}

void runOnceForKey_onQueue_afterWaiting_when_usingBlock(Dispatch& dispatch, const std::string& key,
                                                        const QueueOrNone& queue, double seconds, int when,
                                                        const Block& block) {
  Bursts::of(dispatch)->call(key, queue.get() != nullptr ? queue : QueueOrNone(dispatch.main()),
                             coalescingDelay(seconds), when, block);
}

void runOnceForKey_onQueue_collectingFor_usingBlock(Dispatch& dispatch, const std::string& key,
                                                    const QueueOrNone& queue, double seconds,
                                                    const Block& block) {
  runOnceForKey_onQueue_afterWaiting_when_usingBlock(dispatch, key, queue, seconds, AtStart, block);
}

void runOnceForKey_onQueue_afterWaiting_usingBlock(Dispatch& dispatch, const std::string& key,
                                                   const QueueOrNone& queue, double seconds,
                                                   const Block& block) {
  runOnceForKey_onQueue_afterWaiting_when_usingBlock(dispatch, key, queue, seconds, AtEnd, block);
}

void runOnceForKey_onQueue_beforeAndAfter_usingBlock(Dispatch& dispatch, const std::string& key,
                                                     const QueueOrNone& queue, double seconds,
                                                     const Block& block) {
  runOnceForKey_onQueue_afterWaiting_when_usingBlock(dispatch, key, queue, seconds, AtStart | AtEnd, block);
}

}  // namespace lumo::ZELKOR_NSObjectAdditions

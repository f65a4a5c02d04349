#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/queue.h"

// Queue helpers, and where the program is. Each may be called from any thread. What takes a `dispatch` works
// with its queues; it must outlive what is posted. A block that is null runs as one that does nothing.
namespace lumo::ZELKOR_NSObjectAdditions {

// A queue to run blocks on, or none. A serial queue is kept until the last block for it has run; the main
// queue and the global ones belong to their dispatch.
class QueueOrNone {
 public:
  QueueOrNone(std::nullopt_t /*none*/) {}
  QueueOrNone(const platform::SerialQueue& queue);
  QueueOrNone(platform::Queue& queue);

  // Null for none.
  platform::Queue* get() const { return queue_.get(); }
  // Whether the caller runs on this queue and that can be told, as of the main queue and of serial queues.
  // Code on a global queue is never recognised: several blocks may run on one at a time.
  bool isRecognised(platform::Dispatch& dispatch) const;

 private:
  std::shared_ptr<platform::Queue> queue_;
  bool isSerial_ = false;
};

// A new serial queue of `dispatch` that recognises itself. Without a label it has the empty one.
platform::SerialQueue dispatchQueueSerialWithDebugLabel(platform::Dispatch& dispatch,
                                                        const std::optional<std::string>& label);
// The same without a label.
platform::SerialQueue dispatchQueueSerial(platform::Dispatch& dispatch);

// The global queue of that quality of service (QualityOfService as a number); the default one for any other
// number, and without one.
platform::Queue& dispatchQueueGlobalWithQOS(platform::Dispatch& dispatch, unsigned qos);
platform::Queue& dispatchQueueGlobal(platform::Dispatch& dispatch);

// The process-wide mark of queues that recognise themselves: a unique address, the same at each call.
const void* dispatchQueueSpecificKeyIdentity();
bool isMainQueue(platform::Dispatch& dispatch);

// Runs `block` on `queue` and returns after its end; at once on the caller's thread without a queue, or when
// the caller is on that queue already. But on the main queue nothing ever waits: from there the block is
// posted to any other queue, and need not have run when the call returns. A queue that is stopped drops the
// block; the call returns then.
void performSyncOnQueue_block(platform::Dispatch& dispatch, const QueueOrNone& queue,
                              const platform::Block& block);
// Runs `block` at once without a queue, or when the caller is on it; else posts it.
void performInlineOnQueue_block(platform::Dispatch& dispatch, const QueueOrNone& queue,
                                platform::Block block);
// Runs `block` on the main queue and returns after its end.
void performSyncOnMainQueue(platform::Dispatch& dispatch, const platform::Block& block);
// Posts `block` to the main queue, also from there.
void performAsyncOnMainQueue(platform::Dispatch& dispatch, platform::Block block);
void performAsyncGlobalQOS_block(platform::Dispatch& dispatch, unsigned qos, platform::Block block);
void performAsyncGlobalUserInitiated(platform::Dispatch& dispatch, platform::Block block);
void performAsyncGlobal(platform::Dispatch& dispatch, platform::Block block);

// When the block of a burst runs; bits.
enum CoalescingTime : int { AtStart = 1, AtEnd = 2 };

// Runs once for each burst of calls. A burst are the calls of equal `key`, whoever makes them, of which none
// comes more than its `seconds` after the one before. With AtStart, the block of the first call runs at once;
// with AtEnd, that of the call whose time ends last, when it ends. All other blocks never run. Blocks run on
// `queue`, without one on the main queue, and never on the caller. Fractions of a millisecond count as a
// whole one; a negative time, or none at all, as zero.
void runOnceForKey_onQueue_afterWaiting_when_usingBlock(platform::Dispatch& dispatch, const std::string& key,
                                                        const QueueOrNone& queue, double seconds, int when,
                                                        const platform::Block& block);
// At the start of a burst only.
void runOnceForKey_onQueue_collectingFor_usingBlock(platform::Dispatch& dispatch, const std::string& key,
                                                    const QueueOrNone& queue, double seconds,
                                                    const platform::Block& block);
// At the end only.
void runOnceForKey_onQueue_afterWaiting_usingBlock(platform::Dispatch& dispatch, const std::string& key,
                                                   const QueueOrNone& queue, double seconds,
                                                   const platform::Block& block);
// At both: a single call runs its block twice.
void runOnceForKey_onQueue_beforeAndAfter_usingBlock(platform::Dispatch& dispatch, const std::string& key,
                                                     const QueueOrNone& queue, double seconds,
                                                     const platform::Block& block);
// How long a burst of so many seconds waits.
platform::Millis coalescingDelay(double seconds);

// The full path of the running executable, links resolved, as it was when the program was started; the log
// says it three times. Absent when the system does not tell.
std::optional<std::string> pathToSelf();
// That path from what Linux's link to the executable says, and whether a file is there: without the mark of
// one that was removed or replaced since the start, and with U+FFFD for bytes that are not UTF-8.
std::optional<std::string> pathOfExecutable(std::string link, bool exists);

}  // namespace lumo::ZELKOR_NSObjectAdditions

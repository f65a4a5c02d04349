#pragma once

#include <string>

#include "platform/queue.h"

namespace platform {

// For those who implement queues: marks the queue that the calling thread works for. Marks nest: the end of
// one brings back the one before, so a block that runs inside another block is told its own queue.
class CurrentQueue {
 public:
  // `identity` is an address that stands for one queue; it is only compared.
  explicit CurrentQueue(const void* identity);
  ~CurrentQueue();
  CurrentQueue(const CurrentQueue&) = delete;
  CurrentQueue& operator=(const CurrentQueue&) = delete;

  // The innermost mark of the calling thread, null when there is none.
  static const void* identity();

 private:
  const void* outer_;
};

// Runs `block` and destroys it, both marked as work of `identity`. An exception that leaves the block ends in
// the log, so that one faulty block never takes its queue or the kiosk with it.
void runBlock(Block block, const void* identity, const std::string& label);

}  // namespace platform

#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "platform/queue.h"

namespace platform {

// Keeps requests of other programs until the application can answer them. Main queue only.
class RequestGate {
 public:
  static constexpr std::size_t kMostWaiting = 100;

  // Runs `request` now when the gate is open, else when it opens, in order. False when too many wait.
  bool pass(Block request) {
    if (open_) {
      request();
      return true;
    }
    if (waiting_.size() >= kMostWaiting) {
      return false;
    }
    waiting_.push_back(std::move(request));
    return true;
  }

  void open() {
    open_ = true;
    for (const Block& request : std::exchange(waiting_, {})) {
      request();
    }
  }

 private:
  bool open_ = false;
  std::vector<Block> waiting_;
};

}  // namespace platform

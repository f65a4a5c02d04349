#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "platform/linux/linux_dispatch.h"
#include "tests/fakes/sim_dispatch.h"

// Drives a dispatch whatever kind it is. A test belongs to its main thread and lets time go on only here.
class DispatchHarness {
 public:
  virtual ~DispatchHarness() = default;

  virtual platform::Dispatch& dispatch() = 0;
  // Runs the queues until `reached` is true. False when that does not happen within ten seconds.
  virtual bool runUntil(const std::function<bool()>& reached) = 0;
};

class SimHarness : public DispatchHarness {
 public:
  platform::Dispatch& dispatch() override { return dispatch_; }
  bool runUntil(const std::function<bool()>& reached) override {
    const platform::Millis end = dispatch_.now() + std::chrono::seconds(10);
    dispatch_.runUntilIdle();
    while (!reached()) {
      if (dispatch_.now() > end || !dispatch_.advanceToNextTimer()) {
        return reached();
      }
    }
    return true;
  }

 private:
  fakes::SimDispatch dispatch_;
};

class LinuxHarness : public DispatchHarness {
 public:
  platform::Dispatch& dispatch() override { return dispatch_; }
  bool runUntil(const std::function<bool()>& reached) override {
    const platform::Millis end = dispatch_.now() + std::chrono::seconds(10);
    while (!reached()) {
      if (dispatch_.now() > end) {
        return false;
      }
      dispatch_.runMainOnce(platform::Millis(5));
    }
    return true;
  }

 private:
  platform::LinuxDispatch dispatch_;
};

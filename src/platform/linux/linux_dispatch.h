#pragma once

#include <memory>

#include "platform/queue.h"

namespace platform {

// Queues and clock of the program on Linux. The thread that makes it is the main thread; its main queue is
// served by the default main context, together with the toolkit's events, and yields to them after the blocks
// that were there when its turn began. A main block that runs the main loop itself lets later blocks run
// inside it. All qualities of service share one pool of worker threads. Exceptions that leave a block end in
// the log.
class LinuxDispatch : public Dispatch {
 public:
  LinuxDispatch();
  // Stops, then waits for the blocks that still run on workers, since they may use this object. A program
  // that must not wait at its end calls stop and leaves the object alone. On the main thread.
  ~LinuxDispatch() override;
  LinuxDispatch(const LinuxDispatch&) = delete;
  LinuxDispatch& operator=(const LinuxDispatch&) = delete;

  // Time since this object was made.
  Millis now() const override;
  Queue& main() override;
  Queue& global(QualityOfService qos = QualityOfService::Default) override;
  // Returns without having run `block` when the dispatch is stopped meanwhile.
  void syncOnMain(const Block& block) override;

  // Drops the timers and all blocks that have not started, lets running blocks be and joins the idle
  // threads. From then on every new block is dropped. On the main thread, outside of its blocks.
  void stop();

  // Lets the main context do what is ready, and waits for something at most `maxWait` when nothing is.
  // Returns whether anything was done. For programs and tests without a main loop of their own; main thread
  // only (on another one it does nothing).
  bool runMainOnce(Millis maxWait);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace platform

#pragma once

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include <gio/gio.h>

#include "platform/queue.h"

namespace platform {

// One attempt to connect to a message bus. It runs on a thread of its own, because a bus may accept and then
// be silent: nothing of GDBus that waits for it has a time limit.
class BusAttempt : public std::enable_shared_from_this<BusAttempt> {
 public:
  // Starts; `ended` runs on that thread when it has succeeded or failed, unless the attempt was abandoned.
  static std::shared_ptr<BusAttempt> start(const std::string& address, Block ended);
  BusAttempt();
  ~BusAttempt();
  BusAttempt(const BusAttempt&) = delete;
  BusAttempt& operator=(const BusAttempt&) = delete;

  // Whether it has ended, waiting until `patience` after its start.
  bool wait(Millis patience);
  // The connection (the caller owns it), or null and why.
  GDBusConnection* take(std::string& error);
  // Nobody waits any longer. After this returns, `ended` runs no more.
  void abandon();

 private:
  void run(const std::string& address);

  const gint64 started_ = g_get_monotonic_time();
  GCancellable* cancellable_ = g_cancellable_new();
  std::mutex mutex_;
  std::condition_variable changed_;
  Block ended_;
  bool done_ = false;
  GDBusConnection* connection_ = nullptr;
  std::string error_;
};

}  // namespace platform

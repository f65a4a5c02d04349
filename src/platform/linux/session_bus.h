#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/linux/session_bus_address.h"
#include "platform/queue.h"

typedef struct _GDBusConnection GDBusConnection;

namespace platform {

// The one connection to the session bus. It is private to this process, its loss ends nothing, and it comes
// back by itself once start was called (at growing intervals up to 30 s), else when it is next asked for. A
// missing bus is said once in the log until there is one again. Main thread only; the bus is heard while the
// default main context runs. `dispatch` must outlive it.
class SessionBus {
 public:
  // The longest that any operation keeps the caller, a bus that accepts and says nothing included.
  static constexpr Millis kPatience{2000};

  enum class Sent {
    Yes,
    // The bus went away meanwhile; a new connection may be had at once.
    Lost,
    // The bus takes nothing; the connection is given up.
    TimedOut,
  };

  explicit SessionBus(Dispatch& dispatch);
  ~SessionBus();
  SessionBus(const SessionBus&) = delete;
  SessionBus& operator=(const SessionBus&) = delete;

  // Connects in the background and keeps connected. On each new connection `announce` runs first (to register
  // objects), then `name` is asked for, so that nobody finds the name without the objects. Once.
  void start(std::string name, std::function<void(GDBusConnection*)> announce);
  // The connection, made now when there is none; null when that failed or takes longer than `patience`. While
  // a bus does not answer, only the first call waits for it. Not owned, good until the next turn of the event
  // loop.
  GDBusConnection* connection(Millis patience = kPatience);
  // Returns when everything sent so far has left the process, or that became impossible. Without a
  // connection: Lost.
  Sent flush(Millis patience = kPatience);

 private:
  struct State;
  std::shared_ptr<State> state_;
};

}  // namespace platform

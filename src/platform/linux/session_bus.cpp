#include "platform/linux/session_bus.h"

#include <algorithm>
#include <utility>

#include <gio/gio.h>

#include "platform/linux/bus_attempt.h"
#include "platform/log.h"

namespace platform {

namespace {

constexpr Millis kFirstRetry{250};
constexpr Millis kLongestRetry{30'000};
// How long the end of a connection that was shut down may take to be noticed.
constexpr Millis kShutdownPatience{200};

// Makes every read and write that is under way on the connection fail, so that no thread stays in one.
void shutDown(GDBusConnection* connection) {
  GIOStream* stream = g_dbus_connection_get_stream(connection);
  if (G_IS_SOCKET_CONNECTION(stream)) {
    g_socket_shutdown(g_socket_connection_get_socket(G_SOCKET_CONNECTION(stream)), TRUE, TRUE, nullptr);
  }
}

// Waits for one asynchronous operation without running anything else of the program's: its answer comes to a
// main context that only this object serves.
class PrivateWait {
 public:
  PrivateWait() : context_(g_main_context_new()) { g_main_context_push_thread_default(context_); }
  ~PrivateWait() {
    g_main_context_pop_thread_default(context_);
    g_main_context_unref(context_);
  }
  PrivateWait(const PrivateWait&) = delete;
  PrivateWait& operator=(const PrivateWait&) = delete;

  bool until(const bool& done, Millis patience) {
    bool timedOut = false;
    GSource* limit = g_timeout_source_new(static_cast<guint>(std::max<Millis::rep>(patience.count(), 0)));
    g_source_set_callback(
        limit,
        [](gpointer flag) -> gboolean {
          *static_cast<bool*>(flag) = true;
          return G_SOURCE_REMOVE;
        },
        &timedOut, nullptr);
    g_source_attach(limit, context_);
    while (!done && !timedOut) {
      g_main_context_iteration(context_, TRUE);
    }
    g_source_destroy(limit);
    g_source_unref(limit);
    return done;
  }

 private:
  GMainContext* context_;
};

struct Flushing {
  bool done = false;
  bool succeeded = false;
};

// The toolkit uses GLib's shared connection beside ours, and GLib ends the program when the bus of that one
// goes away. It is kept for good: the toolkit would get a new one, which ends the program again.
void outliveTheSharedConnection() {
  static GDBusConnection* shared = nullptr;
  if (shared != nullptr) {
    return;
  }
  g_bus_get(
      G_BUS_TYPE_SESSION, nullptr,
      [](GObject*, GAsyncResult* result, gpointer) {
        GDBusConnection* connection = g_bus_get_finish(result, nullptr);
        if (connection == nullptr) {
          return;
        }
        g_dbus_connection_set_exit_on_close(connection, FALSE);
        if (shared == nullptr) {
          shared = connection;
        } else {
          g_object_unref(connection);
        }
      },
      nullptr);
}

}  // namespace

struct SessionBus::State : std::enable_shared_from_this<State> {
  explicit State(Dispatch& dispatch) : dispatch(dispatch) {}

  void attemptNow();
  void attemptEnded();
  void adopt(GDBusConnection* made);
  void askForName();
  void lost();
  void giveUp();
  void retryLater();
  void failed(const std::string& why);

  Dispatch& dispatch;
  GDBusConnection* connection = nullptr;
  gulong closedHandler = 0;
  std::shared_ptr<BusAttempt> attempt;
  bool kept = false;
  std::string name;
  std::function<void(GDBusConnection*)> announce;
  bool retryPending = false;
  int failures = 0;
  bool missingIsKnown = false;
};

void SessionBus::State::attemptNow() {
  if (attempt || connection != nullptr) {
    return;
  }
  const std::string address = sessionBusAddress();
  if (address.empty()) {
    failed("there is no address of one");
    return;
  }
  Queue& main = dispatch.main();
  attempt = BusAttempt::start(address, [weak = weak_from_this(), &main] {
    main.async([weak] {
      if (const auto state = weak.lock()) {
        state->attemptEnded();
      }
    });
  });
}

void SessionBus::State::attemptEnded() {
  if (!attempt || !attempt->wait(Millis::zero())) {
    return;
  }
  std::string error;
  GDBusConnection* made = std::exchange(attempt, nullptr)->take(error);
  if (made == nullptr) {
    failed(error);
    return;
  }
  adopt(made);
}

void SessionBus::State::adopt(GDBusConnection* made) {
  connection = made;
  if (std::exchange(missingIsKnown, false)) {
    NSLog("The session bus is there");
  }
  using Weak = std::weak_ptr<State>;
  closedHandler = g_signal_connect_data(
      connection, "closed", G_CALLBACK(+[](GDBusConnection*, gboolean, GError*, gpointer weak) {
        if (const auto state = static_cast<Weak*>(weak)->lock()) {
          state->lost();
        }
      }),
      new Weak(weak_from_this()), [](gpointer weak, GClosure*) { delete static_cast<Weak*>(weak); },
      static_cast<GConnectFlags>(0));
  if (g_dbus_connection_is_closed(connection)) {
    lost();
    return;
  }
  if (kept) {
    announce(connection);
    askForName();
  }
}

void SessionBus::State::askForName() {
  outliveTheSharedConnection();
  using Weak = std::weak_ptr<State>;
  g_dbus_connection_call(
      connection, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName",
      g_variant_new("(su)", name.c_str(), 0U), G_VARIANT_TYPE("(u)"), G_DBUS_CALL_FLAGS_NONE, -1, nullptr,
      [](GObject* source, GAsyncResult* result, gpointer data) {
        const std::unique_ptr<Weak> weak(static_cast<Weak*>(data));
        GError* error = nullptr;
        GVariant* answer = g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &error);
        const auto state = weak->lock();
        if (answer == nullptr) {
          if (state && G_OBJECT(state->connection) == source) {
            NSLog("The name %s on the session bus was not given: %s", state->name, error->message);
            state->lost();
          }
          g_error_free(error);
          return;
        }
        guint32 answerCode = 0;
        g_variant_get(answer, "(u)", &answerCode);
        g_variant_unref(answer);
        if (!state) {
          return;
        }
        state->failures = 0;
        // 1 and 4: the name is ours; 2: it will be when the present owner leaves (D-Bus specification).
        if (answerCode != 1 && answerCode != 4) {
          NSLog("The name %s on the session bus belongs to another program", state->name);
        }
      },
      new Weak(weak_from_this()));
}

void SessionBus::State::lost() {
  if (connection == nullptr) {
    return;
  }
  NSLog("The session bus was lost");
  missingIsKnown = true;
  giveUp();
  retryLater();
}

void SessionBus::State::giveUp() {
  if (connection == nullptr) {
    return;
  }
  GDBusConnection* old = std::exchange(connection, nullptr);
  g_signal_handler_disconnect(old, closedHandler);
  shutDown(old);
  g_object_unref(old);
}

void SessionBus::State::failed(const std::string& why) {
  if (!std::exchange(missingIsKnown, true)) {
    NSLog("No session bus: %s", why);
  }
  retryLater();
}

void SessionBus::State::retryLater() {
  if (!kept || retryPending) {
    return;
  }
  retryPending = true;
  const Millis delay = std::min(kFirstRetry * (1 << std::min(failures, 10)), kLongestRetry);
  ++failures;
  dispatch.main().after(delay, [weak = weak_from_this()] {
    if (const auto state = weak.lock()) {
      state->retryPending = false;
      state->attemptNow();
    }
  });
}

SessionBus::SessionBus(Dispatch& dispatch) : state_(std::make_shared<State>(dispatch)) {}

SessionBus::~SessionBus() {
  if (state_->attempt) {
    state_->attempt->abandon();
  }
  state_->giveUp();
}

void SessionBus::start(std::string name, std::function<void(GDBusConnection*)> announce) {
  state_->kept = true;
  state_->name = std::move(name);
  state_->announce = std::move(announce);
  if (state_->connection != nullptr) {
    state_->announce(state_->connection);
    state_->askForName();
    return;
  }
  state_->attemptNow();
}

GDBusConnection* SessionBus::connection(Millis patience) {
  if (state_->connection != nullptr && g_dbus_connection_is_closed(state_->connection)) {
    state_->lost();
  }
  if (state_->connection == nullptr) {
    state_->attemptNow();
    if (state_->attempt && state_->attempt->wait(patience)) {
      state_->attemptEnded();
    } else if (state_->attempt && !std::exchange(state_->missingIsKnown, true)) {
      NSLog("No session bus: it does not answer");
    }
  }
  return state_->connection;
}

SessionBus::Sent SessionBus::flush(Millis patience) {
  if (state_->connection == nullptr) {
    return Sent::Lost;
  }
  // The synchronous call of GDBus has no time limit, whatever its cancellable.
  PrivateWait wait;
  // Shared with the answer, which may come after this returned.
  const auto flushing = std::make_shared<Flushing>();
  g_dbus_connection_flush(
      state_->connection, nullptr,
      [](GObject* source, GAsyncResult* result, gpointer data) {
        const std::unique_ptr<std::shared_ptr<Flushing>> flushing(
            static_cast<std::shared_ptr<Flushing>*>(data));
        (*flushing)->succeeded = g_dbus_connection_flush_finish(G_DBUS_CONNECTION(source), result, nullptr);
        (*flushing)->done = true;
      },
      new std::shared_ptr<Flushing>(flushing));
  if (wait.until(flushing->done, patience)) {
    if (flushing->succeeded) {
      return Sent::Yes;
    }
    state_->lost();
    return Sent::Lost;
  }
  NSLog("The session bus takes nothing any more");
  state_->lost();
  // The shut-down connection ends the operation, and with it the thread that serves it.
  wait.until(flushing->done, kShutdownPatience);
  return Sent::TimedOut;
}

}  // namespace platform

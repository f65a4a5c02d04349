#include "tools/lumoctl/kiosk_bus.h"

#include <csignal>
#include <utility>

#include <gio/gio.h>
#include <glib-unix.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/linux/session_bus_address.h"
#include "platform/log.h"
#include "platform/pasteboard.h"

namespace lumoctl {

namespace {

constexpr const char* kName = "com.lumo.LumoBrowser";
constexpr const char* kPath = "/com/lumo/LumoBrowser";
constexpr const char* kApplication = "org.freedesktop.Application";
constexpr const char* kServices = "com.lumo.LumoBrowser.Services";
constexpr const char* kNotificationPath = "/com/lumo/DistributedNotifications";
constexpr const char* kNotificationInterface = "com.lumo.DistributedNotifications";
constexpr int kConnectPatience = 5000;
constexpr int kBusPatience = 5000;
// How long a copy that has found another kiosk on this machine waits for that one to come to this bus.
constexpr int kOtherCopyPatience = 5000;
// A kiosk that has just been started is busy with its first page.
constexpr int kKioskPatience = 20000;

std::string takeMessage(GError* error) {
  g_dbus_error_strip_remote_error(error);
  std::string message = error->message;
  g_error_free(error);
  return message;
}

GVariant* strings(const std::vector<std::string>& texts) {
  GVariantBuilder builder;
  g_variant_builder_init(&builder, G_VARIANT_TYPE("as"));
  for (const std::string& text : texts) {
    g_variant_builder_add(&builder, "s", text.c_str());
  }
  return g_variant_builder_end(&builder);
}

GVariant* noData() {
  return g_variant_new_array(G_VARIANT_TYPE("{sv}"), nullptr, 0);
}

// Runs until something calls g_main_loop_quit, `patience` milliseconds at most. False when the time was up.
bool runFor(GMainLoop* loop, guint patience) {
  struct Alarm {
    GMainLoop* loop;
    bool rang = false;
  } alarm{loop};
  const guint source = g_timeout_add(
      patience,
      [](gpointer data) -> gboolean {
        auto* alarm = static_cast<Alarm*>(data);
        alarm->rang = true;
        g_main_loop_quit(alarm->loop);
        return G_SOURCE_REMOVE;
      },
      &alarm);
  g_main_loop_run(loop);
  if (!alarm.rang) {
    g_source_remove(source);
  }
  return !alarm.rang;
}

// What may end the wait for a kiosk that was started.
struct Birth {
  GMainLoop* loop;
  bool owned = false;
  std::optional<int> status;
  // The timer that ends the wait for another copy.
  guint giveUp = 0;
};

std::string endText(int status) {
  const bool killed = WIFSIGNALED(status);
  const int number = killed ? WTERMSIG(status) : WEXITSTATUS(status);
  return std::string("the kiosk ended with ") + (killed ? "signal " : "status ") + std::to_string(number) +
         " while it started; its log is ~/Library/Logs/Lumo/LumoBrowser.log";
}

struct Hearing {
  const std::function<void(const platform::DistributedNotification&)>& heard;
  GMainLoop* loop;
  bool lost = false;
};

void signalled(GDBusConnection*, const char*, const char*, const char*, const char* name, GVariant* arguments,
               gpointer data) {
  if (!g_variant_is_of_type(arguments, G_VARIANT_TYPE("(sa{ss})"))) {
    platform::NSLog("Notification %s left out: its arguments are %s", name,
                    g_variant_get_type_string(arguments));
    return;
  }
  platform::DistributedNotification notification;
  notification.name = name;
  const char* object = nullptr;
  GVariantIter* texts = nullptr;
  g_variant_get(arguments, "(&sa{ss})", &object, &texts);
  if (*object != '\0') {
    notification.object = object;
  }
  const char* key = nullptr;
  const char* value = nullptr;
  while (g_variant_iter_next(texts, "{&s&s}", &key, &value) != FALSE) {
    notification.userInfo.emplace_back(key, value);
  }
  g_variant_iter_free(texts);
  static_cast<Hearing*>(data)->heard(notification);
}

gboolean quitOnSignal(gpointer loop) {
  g_main_loop_quit(static_cast<GMainLoop*>(loop));
  return G_SOURCE_CONTINUE;
}

}  // namespace

struct KioskBus::State {
  explicit State(GDBusConnection* connection) : connection(connection) {}
  ~State() { g_object_unref(connection); }
  State(const State&) = delete;
  State& operator=(const State&) = delete;

  // The answer, or null with `error` set; the caller owns it.
  GVariant* callBus(const char* method, GVariant* arguments, const char* answer, std::string& error) const {
    GError* problem = nullptr;
    GVariant* result = g_dbus_connection_call_sync(
        connection, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", method,
        arguments, G_VARIANT_TYPE(answer), G_DBUS_CALL_FLAGS_NONE, kBusPatience, nullptr, &problem);
    if (result == nullptr) {
      error = takeMessage(problem);
    }
    return result;
  }

  std::optional<std::string> callKiosk(const char* interface, const char* method, GVariant* arguments) const {
    GError* problem = nullptr;
    GVariant* result =
        g_dbus_connection_call_sync(connection, kName, kPath, interface, method, arguments, nullptr,
                                    G_DBUS_CALL_FLAGS_NO_AUTO_START, kKioskPatience, nullptr, &problem);
    if (result == nullptr) {
      return "the kiosk did not take the request: " + takeMessage(problem);
    }
    g_variant_unref(result);
    return std::nullopt;
  }

  GDBusConnection* connection;
};

KioskBus::KioskBus(std::unique_ptr<State> state) : state_(std::move(state)) {}
KioskBus::~KioskBus() = default;

std::unique_ptr<KioskBus> KioskBus::connect(std::string& error) {
  const std::string address = platform::sessionBusAddress();
  if (address.empty()) {
    error = "there is no session bus (DBUS_SESSION_BUS_ADDRESS is not set)";
    return nullptr;
  }
  struct Attempt {
    GMainLoop* loop;
    GDBusConnection* connection = nullptr;
    GError* error = nullptr;
  } attempt{g_main_loop_new(nullptr, FALSE)};
  GCancellable* cancellable = g_cancellable_new();
  constexpr auto flags = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                           G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
  g_dbus_connection_new_for_address(
      address.c_str(), flags, nullptr, cancellable,
      [](GObject*, GAsyncResult* result, gpointer data) {
        auto* attempt = static_cast<Attempt*>(data);
        attempt->connection = g_dbus_connection_new_for_address_finish(result, &attempt->error);
        g_main_loop_quit(attempt->loop);
      },
      &attempt);
  const bool inTime = runFor(attempt.loop, kConnectPatience);
  if (!inTime) {
    g_cancellable_cancel(cancellable);
    g_main_loop_run(attempt.loop);
  }
  g_object_unref(cancellable);
  g_main_loop_unref(attempt.loop);
  if (attempt.connection == nullptr) {
    const std::string reason = takeMessage(attempt.error);
    error = "the session bus cannot be reached: " + (inTime ? reason : "it does not answer");
    return nullptr;
  }
  return std::unique_ptr<KioskBus>(new KioskBus(std::make_unique<State>(attempt.connection)));
}

std::optional<bool> KioskBus::running() const {
  std::string error;
  GVariant* answer = state_->callBus("NameHasOwner", g_variant_new("(s)", kName), "(b)", error);
  if (answer == nullptr) {
    return std::nullopt;
  }
  gboolean owned = FALSE;
  g_variant_get(answer, "(b)", &owned);
  g_variant_unref(answer);
  return owned != FALSE;
}

std::optional<int> KioskBus::process() const {
  std::string error;
  GVariant* answer = state_->callBus("GetConnectionUnixProcessID", g_variant_new("(s)", kName), "(u)", error);
  if (answer == nullptr) {
    return std::nullopt;
  }
  guint32 process = 0;
  g_variant_get(answer, "(u)", &process);
  g_variant_unref(answer);
  return static_cast<int>(process);
}

std::optional<std::string> KioskBus::start(const std::string& program, std::chrono::milliseconds patience) {
  Birth birth{g_main_loop_new(nullptr, FALSE)};
  const guint watch = g_bus_watch_name_on_connection(
      state_->connection, kName, G_BUS_NAME_WATCHER_FLAGS_NONE,
      [](GDBusConnection*, const char*, const char*, gpointer data) {
        auto* birth = static_cast<Birth*>(data);
        birth->owned = true;
        g_main_loop_quit(birth->loop);
      },
      nullptr, &birth, nullptr);
  std::string name = program;
  char* words[] = {name.data(), nullptr};
  GPid child = 0;
  GError* error = nullptr;
  constexpr auto flags = static_cast<GSpawnFlags>(G_SPAWN_DO_NOT_REAP_CHILD | G_SPAWN_STDOUT_TO_DEV_NULL |
                                                  G_SPAWN_STDERR_TO_DEV_NULL);
  // A session of its own: it must not go when this terminal is closed.
  const bool spawned =
      g_spawn_async(
          "/", words, nullptr, flags, [](gpointer) { ::setsid(); }, nullptr, &child, &error) != FALSE;
  std::optional<std::string> refusal;
  if (!spawned) {
    refusal = "the kiosk cannot be started: " + takeMessage(error);
  } else {
    const guint end = g_child_watch_add(
        child,
        [](GPid, int status, gpointer data) {
          auto* birth = static_cast<Birth*>(data);
          birth->status = status;
          if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
            g_main_loop_quit(birth->loop);
            return;
          }
          // A copy that ends well has found another one, which may be about to be there.
          birth->giveUp = g_timeout_add(
              kOtherCopyPatience,
              [](gpointer data) -> gboolean {
                auto* birth = static_cast<Birth*>(data);
                birth->giveUp = 0;
                g_main_loop_quit(birth->loop);
                return G_SOURCE_REMOVE;
              },
              birth);
        },
        &birth);
    runFor(birth.loop, static_cast<guint>(patience.count()));
    if (!birth.owned && !birth.status) {
      refusal = "the kiosk was started, but did not come up in time";
    } else if (!birth.owned && WIFEXITED(*birth.status) && WEXITSTATUS(*birth.status) == 0) {
      refusal = "a kiosk runs, but not on this session bus";
    } else if (!birth.owned) {
      refusal = endText(*birth.status);
    }
    if (!birth.status) {
      g_source_remove(end);
    }
    if (birth.giveUp != 0) {
      g_source_remove(birth.giveUp);
    }
  }
  g_bus_unwatch_name(watch);
  g_main_loop_unref(birth.loop);
  return refusal;
}

std::optional<std::string> KioskBus::activate() {
  return state_->callKiosk(kApplication, "Activate", g_variant_new("(@a{sv})", noData()));
}

std::optional<std::string> KioskBus::open(const std::vector<std::string>& addresses) {
  return state_->callKiosk(kApplication, "Open", g_variant_new("(@as@a{sv})", strings(addresses), noData()));
}

std::optional<std::string> KioskBus::searchText(const std::string& text) {
  return state_->callKiosk(
      kServices, "SearchFromPasteboard",
      g_variant_new("(@as@asss)", strings({platform::kStringPboardType}), strings({}), text.c_str(), ""));
}

bool KioskBus::listen(const std::function<void(const platform::DistributedNotification&)>& heard) {
  Hearing hearing{heard, g_main_loop_new(nullptr, FALSE)};
  const guint subscription = g_dbus_connection_signal_subscribe(
      state_->connection, nullptr, kNotificationInterface, nullptr, kNotificationPath, nullptr,
      G_DBUS_SIGNAL_FLAGS_NONE, signalled, &hearing, nullptr);
  const gulong closed = g_signal_connect(state_->connection, "closed",
                                         G_CALLBACK(+[](GDBusConnection*, gboolean, GError*, gpointer data) {
                                           auto* hearing = static_cast<Hearing*>(data);
                                           hearing->lost = true;
                                           g_main_loop_quit(hearing->loop);
                                         }),
                                         &hearing);
  const guint interrupt = g_unix_signal_add(SIGINT, quitOnSignal, hearing.loop);
  const guint terminate = g_unix_signal_add(SIGTERM, quitOnSignal, hearing.loop);
  if (g_dbus_connection_is_closed(state_->connection) != FALSE) {
    hearing.lost = true;
  } else {
    g_main_loop_run(hearing.loop);
  }
  g_source_remove(interrupt);
  g_source_remove(terminate);
  g_signal_handler_disconnect(state_->connection, closed);
  g_dbus_connection_signal_unsubscribe(state_->connection, subscription);
  g_main_loop_unref(hearing.loop);
  return !hearing.lost;
}

}  // namespace lumoctl

// Listens on the session bus, or sends one signal over it, and tells when.
//
//   bus_signals listen   prints "ready", then for each release message a line: the time, its status
//   bus_signals send     prints "ready"; upon a line on standard input sends a message like the kiosk's and
//                        prints the time at which it began to
//
// Times are of the monotonic clock, in nanoseconds. Exit status 1: there is no bus, or it did not take the
// signal; 2: bad usage.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <utility>

#include <gio/gio.h>

namespace {

constexpr const char* kPath = "/com/lumo/DistributedNotifications";
constexpr const char* kInterface = "com.lumo.DistributedNotifications";
constexpr const char* kMember = "lumoXNotification";

std::int64_t now() {
  timespec time{};
  clock_gettime(CLOCK_MONOTONIC, &time);
  return time.tv_sec * std::int64_t{1'000'000'000} + time.tv_nsec;
}

[[noreturn]] void fail(GError* error) {
  std::fprintf(stderr, "bus_signals: %s\n", error != nullptr ? error->message : "no reason given");
  std::exit(1);
}

void say(const char* line) {
  std::puts(line);
  std::fflush(stdout);
}

void heard(GDBusConnection* /*bus*/, const char* /*sender*/, const char* /*path*/, const char* /*interface*/,
           const char* /*member*/, GVariant* arguments, gpointer /*data*/) {
  const std::int64_t arrived = now();
  GVariant* texts = g_variant_get_child_value(arguments, 1);
  const char* status = "";
  g_variant_lookup(texts, "status", "&s", &status);
  std::printf("%lld %s\n", static_cast<long long>(arrived), status);
  std::fflush(stdout);
  g_variant_unref(texts);
}

void listen(GDBusConnection* bus) {
  g_dbus_connection_signal_subscribe(bus, nullptr, kInterface, kMember, kPath, nullptr,
                                     G_DBUS_SIGNAL_FLAGS_NONE, heard, nullptr, nullptr);
  // The bus has taken the rule when it has answered what was asked after it.
  GError* error = nullptr;
  GVariant* answer = g_dbus_connection_call_sync(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                                 "org.freedesktop.DBus.Peer", "Ping", nullptr, nullptr,
                                                 G_DBUS_CALL_FLAGS_NONE, -1, nullptr, &error);
  if (answer == nullptr) fail(error);
  g_variant_unref(answer);
  say("ready");
  g_main_loop_run(g_main_loop_new(nullptr, FALSE));
}

void send(GDBusConnection* bus) {
  say("ready");
  if (std::getchar() == EOF) return;
  const std::int64_t started = now();
  GVariantBuilder texts;
  g_variant_builder_init(&texts, G_VARIANT_TYPE("a{ss}"));
  for (const auto& [key, value] : {std::pair{"senderApp", "LumoBrowser.app"},
                                   {"email", "noEmailRequired"},
                                   {"status", "sent"},
                                   {"LUMO-REG-CODE", "A-1017"},
                                   {"LUMO-REG-NAME", "Order of the bench"},
                                   {"respurlstring", "http://127.0.0.1:9090/registrationorders"},
                                   {"urlstring", "http://127.0.0.1:9090/registrationorders"}}) {
    g_variant_builder_add(&texts, "{ss}", key, value);
  }
  GError* error = nullptr;
  if (g_dbus_connection_emit_signal(bus, nullptr, kPath, kInterface, kMember,
                                    g_variant_new("(sa{ss})", "", &texts), &error) == FALSE ||
      g_dbus_connection_flush_sync(bus, nullptr, &error) == FALSE) {
    fail(error);
  }
  std::printf("%lld\n", static_cast<long long>(started));
}

}  // namespace

int main(int argc, char** argv) {
  const bool listens = argc == 2 && std::strcmp(argv[1], "listen") == 0;
  if (!listens && (argc != 2 || std::strcmp(argv[1], "send") != 0)) {
    std::fprintf(stderr, "Usage: bus_signals listen|send\n");
    return 2;
  }
  GError* error = nullptr;
  GDBusConnection* bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, &error);
  if (bus == nullptr) fail(error);
  (listens ? listen : send)(bus);
  g_object_unref(bus);
}

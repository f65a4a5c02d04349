#include "station/listener.h"

#include <stdexcept>

#include "station/waiting.h"

namespace station {

namespace {

constexpr const char* kKiosk = "com.lumo.LumoBrowser";
constexpr int kPatienceOfCalls = 5000;

}  // namespace

const std::vector<platform::DistributedNotification>& Listener::heard() {
  while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
  }
  return bus_.heard();
}

const std::vector<platform::DistributedNotification>& Listener::heardToTheEnd() {
  if (!waitUntil([this] { return !kioskIsOnTheBus(); })) {
    throw std::runtime_error("a kiosk that has ended is still on the bus");
  }
  return heard();
}

bool Listener::kioskIsOnTheBus() {
  GVariant* answer = g_dbus_connection_call_sync(
      bus_.connection(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
      "NameHasOwner", g_variant_new("(s)", kKiosk), G_VARIANT_TYPE("(b)"), G_DBUS_CALL_FLAGS_NONE,
      kPatienceOfCalls, nullptr, nullptr);
  if (answer == nullptr) {
    throw std::runtime_error("the bus does not answer");
  }
  gboolean owned = FALSE;
  g_variant_get(answer, "(b)", &owned);
  g_variant_unref(answer);
  return owned != FALSE;
}

}  // namespace station

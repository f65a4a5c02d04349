#include "platform/linux/linux_message_bus.h"

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>

#include <gio/gio.h>

#include "platform/linux/session_bus.h"
#include "platform/log.h"
#include "platform/strings.h"

namespace platform {

namespace {

constexpr const char* kPath = "/com/lumo/DistributedNotifications";
constexpr const char* kInterface = "com.lumo.DistributedNotifications";

// A longer name would have the bus close the connection; GDBus does not check it (D-Bus specification, "Valid
// Names").
constexpr std::size_t kLongestName = 255;

bool isAllowedName(const std::string& name) {
  return name.size() <= kLongestName && name.find('\0') == std::string::npos &&
         g_dbus_is_member_name(name.c_str()) != FALSE;
}

// The text as the bus takes it: UTF-8 without NUL.
std::string busText(const std::string& text, bool& repaired) {
  if (isValidUtf8(text) && text.find('\0') == std::string::npos) {
    return text;
  }
  repaired = true;
  return replacingOccurrences(validUtf8(text), std::string_view("\0", 1), "\uFFFD");
}

GVariant* arguments(const DistributedNotification& notification) {
  bool repaired = false;
  GVariantBuilder texts;
  g_variant_builder_init(&texts, G_VARIANT_TYPE("a{ss}"));
  for (const auto& [key, value] : notification.userInfo) {
    g_variant_builder_add(&texts, "{ss}", busText(key, repaired).c_str(), busText(value, repaired).c_str());
  }
  const std::string object = busText(notification.object.value_or(""), repaired);
  if (repaired) {
    NSLog("Notification %s: text that is not UTF-8 was repaired", notification.name);
  }
  return g_variant_new("(sa{ss})", object.c_str(), &texts);
}

}  // namespace

bool LinuxMessageBus::postNotification(const DistributedNotification& notification) {
  const std::string& name = notification.name;
  if (!isAllowedName(name)) {
    NSLog("Notification refused, the bus does not allow the name \"%s\"", validUtf8(name));
    return false;
  }
  GVariant* body = g_variant_ref_sink(arguments(notification));
  const auto end = std::chrono::steady_clock::now() + SessionBus::kPatience;
  const auto left = [end] {
    return std::chrono::duration_cast<Millis>(end - std::chrono::steady_clock::now());
  };
  bool sent = false;
  // A bus that was restarted is noticed only now; then the second connection carries it.
  for (int attempt = 0; attempt < 2 && !sent; ++attempt) {
    GDBusConnection* connection = bus_.connection(left());
    if (connection == nullptr) {
      break;
    }
    GError* error = nullptr;
    if (g_dbus_connection_emit_signal(connection, nullptr, kPath, kInterface, name.c_str(), body, &error) ==
        FALSE) {
      NSLog("Notification %s was not sent: %s", name, error->message);
      g_error_free(error);
      continue;
    }
    const SessionBus::Sent result = bus_.flush(left());
    sent = result == SessionBus::Sent::Yes;
    if (result == SessionBus::Sent::TimedOut) {
      break;
    }
  }
  g_variant_unref(body);
  return sent;
}

}  // namespace platform

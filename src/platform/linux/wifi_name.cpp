#include "platform/wifi_name.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

#include <gio/gio.h>
#include <ifaddrs.h>
#include <linux/wireless.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include "platform/file_descriptor.h"
#include "platform/linux/bus_attempt.h"
#include "platform/strings.h"

namespace platform {

namespace {

constexpr Millis kPatience{2000};
constexpr const char* kService = "org.freedesktop.NetworkManager";
constexpr guint32 kWifiDevice = 2;

using Variant = std::unique_ptr<GVariant, decltype(&g_variant_unref)>;

// The properties of NetworkManager's objects. Everything together takes no longer than the patience.
class NetworkManager {
 public:
  NetworkManager() {
    const char* address = std::getenv("DBUS_SYSTEM_BUS_ADDRESS");
    const auto attempt =
        BusAttempt::start(address == nullptr ? "unix:path=/run/dbus/system_bus_socket" : address, {});
    if (attempt->wait(kPatience)) {
      std::string error;
      connection_ = attempt->take(error);
    } else {
      attempt->abandon();
    }
  }
  ~NetworkManager() { g_clear_object(&connection_); }
  NetworkManager(const NetworkManager&) = delete;
  NetworkManager& operator=(const NetworkManager&) = delete;

  // The property's value when it is of that type, else null.
  Variant property(const std::string& object, const std::string& interface, const char* name,
                   const char* type) const {
    Variant value(nullptr, g_variant_unref);
    const gint64 left = kPatience.count() - (g_get_monotonic_time() - started_) / 1000;
    if (connection_ == nullptr || left <= 0) {
      return value;
    }
    const Variant answer(g_dbus_connection_call_sync(
                             connection_, kService, object.c_str(), "org.freedesktop.DBus.Properties", "Get",
                             g_variant_new("(ss)", interface.c_str(), name), G_VARIANT_TYPE("(v)"),
                             G_DBUS_CALL_FLAGS_NO_AUTO_START, static_cast<int>(left), nullptr, nullptr),
                         g_variant_unref);
    if (answer == nullptr) {
      return value;
    }
    GVariant* content = nullptr;
    g_variant_get(answer.get(), "(v)", &content);
    value.reset(content);
    if (g_variant_is_of_type(content, G_VARIANT_TYPE(type)) == FALSE) {
      value.reset();
    }
    return value;
  }

 private:
  const gint64 started_ = g_get_monotonic_time();
  GDBusConnection* connection_ = nullptr;
};

std::optional<std::string> nonEmpty(const std::string& name) {
  return name.empty() ? std::nullopt : std::optional(validUtf8(name));
}

std::optional<std::string> nameOfDevice(const NetworkManager& manager, const std::string& device) {
  const std::string interface = std::string(kService) + ".Device";
  const Variant type = manager.property(device, interface, "DeviceType", "u");
  if (type == nullptr || g_variant_get_uint32(type.get()) != kWifiDevice) {
    return std::nullopt;
  }
  const Variant point = manager.property(device, interface + ".Wireless", "ActiveAccessPoint", "o");
  if (point == nullptr || std::string_view(g_variant_get_string(point.get(), nullptr)) == "/") {
    return std::nullopt;
  }
  const Variant ssid = manager.property(g_variant_get_string(point.get(), nullptr),
                                        std::string(kService) + ".AccessPoint", "Ssid", "ay");
  if (ssid == nullptr) {
    return std::nullopt;
  }
  gsize length = 0;
  const void* bytes = g_variant_get_fixed_array(ssid.get(), &length, 1);
  return nonEmpty(length == 0 ? "" : std::string(static_cast<const char*>(bytes), length));
}

std::optional<std::string> nameFromNetworkManager() {
  const NetworkManager manager;
  const Variant devices = manager.property("/org/freedesktop/NetworkManager", kService, "Devices", "ao");
  if (devices == nullptr) {
    return std::nullopt;
  }
  gsize count = 0;
  const auto paths =
      std::unique_ptr<const gchar*, decltype(&g_free)>(g_variant_get_objv(devices.get(), &count), g_free);
  for (gsize index = 0; index < count; ++index) {
    if (auto name = nameOfDevice(manager, paths.get()[index])) {
      return name;
    }
  }
  return std::nullopt;
}

std::optional<std::string> nameFromInterfaces() {
  const FileDescriptor socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  ifaddrs* list = nullptr;
  if (!socket || getifaddrs(&list) != 0) {
    return std::nullopt;
  }
  const std::unique_ptr<ifaddrs, decltype(&freeifaddrs)> owned(list, freeifaddrs);
  for (const ifaddrs* entry = list; entry != nullptr; entry = entry->ifa_next) {
    // Every interface has one of these.
    if (entry->ifa_addr == nullptr || entry->ifa_addr->sa_family != AF_PACKET) {
      continue;
    }
    char name[IW_ESSID_MAX_SIZE + 1] = {};
    iwreq request = {};
    std::strncpy(request.ifr_name, entry->ifa_name, IFNAMSIZ - 1);
    request.u.essid.pointer = name;
    request.u.essid.length = IW_ESSID_MAX_SIZE;
    // An interface that is not wireless refuses.
    if (ioctl(socket.get(), SIOCGIWESSID, &request) == 0) {
      const std::size_t length = std::min<std::size_t>(request.u.essid.length, IW_ESSID_MAX_SIZE);
      if (auto found = nonEmpty(std::string(name, length))) {
        return found;
      }
    }
  }
  return std::nullopt;
}

}  // namespace

std::optional<std::string> wifiName() {
  auto name = nameFromNetworkManager();
  return name ? name : nameFromInterfaces();
}

}  // namespace platform

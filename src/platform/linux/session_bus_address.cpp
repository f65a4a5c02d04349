#include "platform/linux/session_bus_address.h"

#include <cstdlib>
#include <string_view>

#include <gio/gio.h>
#include <sys/stat.h>

namespace platform {

namespace {

std::string environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

}  // namespace

std::string sessionBusAddress() {
  const std::string given = environment("DBUS_SESSION_BUS_ADDRESS");
  if (!given.empty()) {
    return std::string_view(given).starts_with("autolaunch:") ? "" : given;
  }
  const std::string folder = environment("XDG_RUNTIME_DIR");
  const std::string socket = folder + "/bus";
  struct stat status = {};
  if (!folder.starts_with('/') || stat(socket.c_str(), &status) != 0 || !S_ISSOCK(status.st_mode)) {
    return "";
  }
  char* escaped = g_dbus_address_escape_value(socket.c_str());
  std::string address = std::string("unix:path=") + escaped;
  g_free(escaped);
  return address;
}

}  // namespace platform

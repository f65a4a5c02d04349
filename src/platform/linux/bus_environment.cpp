#include "platform/linux/bus_environment.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>

#include <gio/gio.h>

#include "platform/format.h"
#include "platform/linux/single_instance.h"
#include "platform/strings.h"

namespace platform {

namespace {

constexpr const char* kVariable = "DBUS_SESSION_BUS_ADDRESS";
constexpr std::string_view kUnix = "unix:";
constexpr std::string_view kPath = "path=";

// What stands before the separator; `text` keeps what is behind it.
std::string_view nextPart(std::string_view& text, char separator) {
  const auto end = text.find(separator);
  const std::string_view part = text.substr(0, end);
  text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  return part;
}

// Whether the part of an address names a socket in a folder that does not exist.
bool isInMissingFolder(std::string_view part) {
  if (!part.starts_with(kUnix)) {
    return false;
  }
  part.remove_prefix(kUnix.size());
  while (!part.empty()) {
    const std::string_view entry = nextPart(part, ',');
    if (!entry.starts_with(kPath)) {
      continue;
    }
    char* path = g_uri_unescape_segment(entry.data() + kPath.size(), entry.data() + entry.size(), nullptr);
    if (path == nullptr) {
      return false;
    }
    const std::filesystem::path folder = std::filesystem::path(path).parent_path();
    g_free(path);
    std::error_code error;
    // One that may not be looked into is there.
    return !folder.empty() && !std::filesystem::exists(folder, error) && !error;
  }
  return false;
}

}  // namespace

std::string withoutMissingFolders(std::string_view address) {
  std::string kept;
  bool anyLeftOut = false;
  for (std::string_view rest = address; !rest.empty();) {
    const std::string_view part = nextPart(rest, ';');
    if (isInMissingFolder(part)) {
      anyLeftOut = true;
    } else {
      kept.append(kept.empty() ? "" : ";").append(part);
    }
  }
  return anyLeftOut ? kept : std::string(address);
}

std::optional<std::string> leaveOutUnreachableBuses() {
  const char* given = std::getenv(kVariable);
  const std::string address = given == nullptr ? "" : given;
  std::string kept = withoutMissingFolders(address);
  if (kept == address) {
    return std::nullopt;
  }
  if (kept.empty()) {
    const auto folder = runtimeFolder();
    char* socket = g_dbus_address_escape_value((folder.value_or("/") / "bus").c_str());
    kept = std::string("unix:path=") + socket;
    g_free(socket);
  }
  setenv(kVariable, kept.c_str(), 1);
  return stringWithFormat("The session bus address %s is left out, its folder does not exist; %s is used",
                          validUtf8(address), kept);
}

}  // namespace platform

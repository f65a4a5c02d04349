#include "tools/lumoctl/open_plan.h"

#include <algorithm>

#include "app/StartUrl.h"
#include "platform/linux/file_url.h"
#include "platform/linux/open_request.h"
#include "platform/paths.h"
#include "platform/strings.h"

namespace lumoctl {

namespace {

bool looksLikePath(std::string_view item) {
  return item == "." || item == ".." || item.starts_with('/') || item.starts_with("./") ||
         item.starts_with("../");
}

bool needsNoEscape(char byte) {
  return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9') ||
         std::string_view("-._~/").find(byte) != std::string_view::npos;
}

std::string shown(std::string_view item) {
  constexpr std::size_t most = 200;
  std::string text = platform::validUtf8(item.substr(0, most));
  std::replace_if(
      text.begin(), text.end(), [](char byte) { return byte == '\n' || byte == '\r'; }, ' ');
  return "\"" + text + (item.size() > most ? "…" : "") + "\"";
}

}  // namespace

std::string fileAddress(std::string_view path) {
  constexpr std::string_view digits = "0123456789ABCDEF";
  std::string address = "file://";
  for (const char byte : path) {
    if (needsNoEscape(byte)) {
      address += byte;
    } else {
      const auto code = static_cast<unsigned char>(byte);
      address += '%';
      address += digits[code >> 4];
      address += digits[code & 0xF];
    }
  }
  return address;
}

std::optional<std::string> refusalOf(const std::string& address, const ServerAddresses& servers) {
  if (platform::isFileUrl(address)) {
    return platform::pathFromFileUrl(address)
               ? std::nullopt
               : std::optional(shown(address) + " names no file of this machine");
  }
  const auto start = lumo::resolveStartUrl(platform::withPlaceholderBrackets(address), servers.server,
                                           servers.defaultServer);
  if (start.address) {
    return std::nullopt;
  }
  const bool noServer = !servers.server && !servers.defaultServer &&
                        address.find("server]") != std::string::npos && !start.log.empty();
  return shown(address) + " is refused: " + (noServer ? start.log.back() : "it is no address");
}

OpenPlan planOpen(const std::vector<std::string>& items, const std::string& folder,
                  const ServerAddresses& servers, const std::function<bool(const std::string&)>& exists) {
  OpenPlan plan;
  for (const std::string& item : items) {
    const bool isPath = looksLikePath(item);
    const std::string path = platform::standardizingPath(
        item.starts_with('/') ? item : std::string(folder).append("/").append(item));
    const bool isFile = !item.empty() && exists(path);
    if (isPath && !isFile) {
      return {{}, shown(item) + " does not exist"};
    }
    const std::string address = isFile ? fileAddress(path) : item;
    if (auto refusal = refusalOf(address, servers)) {
      return {{}, std::move(refusal)};
    }
    plan.addresses.push_back(address);
  }
  return plan;
}

}  // namespace lumoctl

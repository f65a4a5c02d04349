#include "tools/lumoctl/json_line.h"

#include "platform/strings.h"

namespace lumoctl {

namespace {

void appendEscape(std::string& json, unsigned character) {
  constexpr std::string_view digits = "0123456789abcdef";
  json += "\\u";
  for (int shift = 12; shift >= 0; shift -= 4) {
    json += digits[(character >> shift) & 0xF];
  }
}

}  // namespace

std::string jsonString(std::string_view text) {
  constexpr std::string_view lineSeparator = "\u2028";
  constexpr std::string_view paragraphSeparator = "\u2029";
  const std::string valid = platform::validUtf8(text);
  std::string json = "\"";
  std::string_view rest = valid;
  while (!rest.empty()) {
    if (rest.starts_with(lineSeparator) || rest.starts_with(paragraphSeparator)) {
      appendEscape(json, rest.starts_with(lineSeparator) ? 0x2028 : 0x2029);
      rest.remove_prefix(lineSeparator.size());
      continue;
    }
    const char character = rest.front();
    rest.remove_prefix(1);
    switch (character) {
      case '"':
      case '\\':
        json += '\\';
        json += character;
        break;
      case '\n':
        json += "\\n";
        break;
      case '\r':
        json += "\\r";
        break;
      case '\t':
        json += "\\t";
        break;
      default:
        if (const auto code = static_cast<unsigned char>(character); code < 0x20 || code == 0x7F) {
          appendEscape(json, code);
        } else {
          json += character;
        }
    }
  }
  return json + "\"";
}

std::string jsonLine(const platform::DistributedNotification& notification) {
  std::string line = "{\"name\":" + jsonString(notification.name) + ",\"object\":";
  line += notification.object ? jsonString(*notification.object) : "null";
  line += ",\"userInfo\":{";
  bool first = true;
  for (const auto& [key, value] : notification.userInfo) {
    line += first ? "" : ",";
    line += jsonString(key) + ":" + jsonString(value);
    first = false;
  }
  return line + "}}";
}

}  // namespace lumoctl

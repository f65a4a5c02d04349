#include "platform/linux/file_url.h"

#include <cstddef>

#include "platform/strings.h"

namespace platform {

namespace {

constexpr std::string_view kScheme = "file:";

int hexDigit(char digit) {
  if (digit >= '0' && digit <= '9') {
    return digit - '0';
  }
  if (digit >= 'a' && digit <= 'f') {
    return digit - 'a' + 10;
  }
  return digit >= 'A' && digit <= 'F' ? digit - 'A' + 10 : -1;
}

std::optional<std::string> decoded(std::string_view text) {
  std::string bytes;
  bytes.reserve(text.size());
  for (std::size_t at = 0; at < text.size(); ++at) {
    char byte = text[at];
    if (byte == '%') {
      const int high = at + 2 < text.size() ? hexDigit(text[at + 1]) : -1;
      const int low = at + 2 < text.size() ? hexDigit(text[at + 2]) : -1;
      if (high < 0 || low < 0) {
        return std::nullopt;
      }
      byte = static_cast<char>(high * 16 + low);
      at += 2;
    }
    if (byte == '\0') {
      return std::nullopt;
    }
    bytes.push_back(byte);
  }
  return bytes;
}

}  // namespace

bool isFileUrl(std::string_view url) {
  return hasPrefixIgnoringCase(url, kScheme);
}

std::optional<std::string> pathFromFileUrl(std::string_view url) {
  if (!isFileUrl(url)) {
    return std::nullopt;
  }
  url.remove_prefix(kScheme.size());
  url = url.substr(0, url.find_first_of("?#"));
  if (url.starts_with("//")) {
    url.remove_prefix(2);
    const std::string_view host = url.substr(0, url.find('/'));
    if (!host.empty() && !equalIgnoringCase(host, "localhost")) {
      return std::nullopt;
    }
    url.remove_prefix(host.size());
  }
  if (!url.starts_with('/')) {
    return std::nullopt;
  }
  return decoded(url);
}

}  // namespace platform

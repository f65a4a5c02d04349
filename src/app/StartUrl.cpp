#include "app/StartUrl.h"

#include <algorithm>
#include <array>

#include "platform/format.h"
#include "platform/strings.h"
#include "platform/url.h"

namespace lumo {

namespace {

using platform::Url;

constexpr std::array kPlaceholders{"[junivaserver]", "[dorvinserver]"};
constexpr std::array kAllowedSchemes{"file", "http", "https"};
constexpr std::array kOwnSchemes{"lumobrowser://", "lumobrowser:/", "lumobrowser:"};
constexpr const char* kDefaultPort = "9090";

bool isAllowed(const std::optional<std::string>& scheme) {
  return std::any_of(kAllowedSchemes.begin(), kAllowedSchemes.end(), [&](const char* allowed) {
    return platform::lowercase(scheme.value_or("")) == allowed;
  });
}

std::string replacementFor(const std::string& server) {
  const auto url = Url::parse(server);
  if (!url) {
    return server;
  }
  const std::string port = url->port() ? platform::stringWithFormat("%i", *url->port()) : kDefaultPort;
  std::optional<std::string> host = url->host();
  if (host && host->find(':') != std::string::npos) {
    host = "[" + *host + "]";  // An IPv6 address (RFC 3986, 3.2.2).
  }
  return platform::stringWithFormat("%@://%@:%@", url->scheme(), host, port);
}

}  // namespace

std::optional<std::string> replaceKnownPlaceholders(const std::string& url,
                                                    const std::optional<std::string>& server,
                                                    const std::optional<std::string>& defaultServer) {
  const bool found = std::any_of(kPlaceholders.begin(), kPlaceholders.end(), [&](const char* placeholder) {
    return url.find(placeholder) != std::string::npos;
  });
  if (!found) {
    return url;
  }
  const std::optional<std::string>& address = server ? server : defaultServer;
  if (!address) {
    return std::nullopt;
  }
  const std::string replacement = replacementFor(*address);
  std::string result = url;
  for (const char* placeholder : kPlaceholders) {
    result = platform::replacingOccurrencesIgnoringCase(result, placeholder, replacement);
  }
  return platform::replacingOccurrences(result, "http://http://", "http://");
}

StartUrl resolveStartUrl(const std::optional<std::string>& text, const std::optional<std::string>& server,
                         const std::optional<std::string>& defaultServer) {
  StartUrl result;
  if (!text) {
    return result;
  }
  std::string stripped = *text;
  for (const char* scheme : kOwnSchemes) {
    stripped = platform::replacingOccurrences(stripped, scheme, "");
  }
  const auto resolved = replaceKnownPlaceholders(platform::trimmed(stripped), server, defaultServer);
  if (!resolved) {
    result.log.emplace_back("no photo server is set to take the placeholder's place, nothing is loaded");
    return result;
  }
  std::string address = *resolved;
  result.log.push_back(address);
  auto url = Url::parse(address);
  if (!url) {
    return result;
  }
  result.log.push_back(platform::stringWithFormat("url.scheme = %@", url->scheme()));
  if (!isAllowed(url->scheme())) {
    address = "http://" + address;
    url = Url::parse(address);
  }
  if (!url || !url->scheme()) {
    address = "http://" + address;
    url = Url::parse(address);
  }
  if (url && url->scheme()) {
    result.address = address;
  }
  return result;
}

}  // namespace lumo

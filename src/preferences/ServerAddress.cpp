#include "preferences/ServerAddress.h"

#include <algorithm>

#include "app/PreferenceKeys.h"
#include "platform/log.h"
#include "platform/strings.h"
#include "platform/url.h"

namespace lumo {

using platform::NSLog;
using platform::stringWithFormat;

namespace {

constexpr std::size_t kPartsOfAnAddress = 4;

bool isTestedAsItIs(const std::optional<platform::Url>& url) {
  const auto isScheme = [&url](const char* scheme) {
    return url && url->scheme() && platform::equalIgnoringCase(*url->scheme(), scheme);
  };
  return isScheme("http") || isScheme("file");
}

}  // namespace

std::optional<TestAddress> addressToTest(const std::optional<std::string>& serverAddress,
                                         const std::optional<std::string>& defaultServerAddress) {
  const std::string address =
      serverAddress && !serverAddress->empty() ? *serverAddress : defaultServerAddress.value_or("");
  if (address.empty()) {
    return std::nullopt;
  }
  const auto url = platform::Url::parse(address);
  NSLog("tempurl = %@", url);
  NSLog("tempurl.scheme = %@", url ? url->scheme() : std::nullopt);
  return isTestedAsItIs(url) ? TestAddress{address, false} : TestAddress{"http://" + address, true};
}

std::optional<std::string> chosenServerAddress(const std::optional<platform::Dictionary>& record,
                                               const std::string& localAddress,
                                               const std::optional<platform::PropertyList>& path) {
  const auto* urlstring = record ? record->find("urlstring") : nullptr;
  std::string server = stringWithFormat("%@", urlstring);
  const std::string local = platform::trimmed(localAddress);
  if (platform::componentsSeparatedBy(local, ".").size() == kPartsOfAnAddress) {
    server = platform::replacingOccurrences(server, local, "localhost");
  }
  const std::string end =
      path ? stringWithFormat("%@", *path) : preferenceKey(prefJunivaPhotoStationListPath)->codeDefault;
  const auto url = platform::Url::parse(server);
  return url ? std::optional(url->byAppendingPathComponent(end).absoluteString()) : std::nullopt;
}

}  // namespace lumo

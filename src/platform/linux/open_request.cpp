#include "platform/linux/open_request.h"

#include <optional>

#include "platform/linux/file_url.h"
#include "platform/log.h"
#include "platform/strings.h"

namespace platform {

namespace {

// Only these stand in brackets that are part of the address; "%5B" elsewhere is data.
constexpr std::string_view kPlaceholders[] = {"junivaserver", "dorvinserver"};
constexpr std::string_view kOpen = "%5B";
constexpr std::string_view kClose = "%5D";

}  // namespace

std::string withPlaceholderBrackets(std::string_view address) {
  std::string text;
  while (!address.empty()) {
    std::string_view found;
    if (hasPrefixIgnoringCase(address, kOpen)) {
      const std::string_view rest = address.substr(kOpen.size());
      for (const std::string_view placeholder : kPlaceholders) {
        if (hasPrefixIgnoringCase(rest, placeholder) &&
            hasPrefixIgnoringCase(rest.substr(placeholder.size()), kClose)) {
          found = rest.substr(0, placeholder.size());
        }
      }
    }
    if (found.empty()) {
      text += address.front();
      address.remove_prefix(1);
    } else {
      text.append("[").append(found).append("]");
      address.remove_prefix(kOpen.size() + found.size() + kClose.size());
    }
  }
  return text;
}

std::vector<OpenRequest> openRequests(const std::vector<std::string>& addresses) {
  if (addresses.empty()) {
    return {OpenRequest{}};
  }
  std::vector<OpenRequest> requests;
  for (const std::string& address : addresses) {
    const bool isFile = isFileUrl(address);
    const auto kind = isFile ? OpenRequest::Kind::Files : OpenRequest::Kind::Urls;
    const auto item = isFile ? pathFromFileUrl(address) : std::optional(withPlaceholderBrackets(address));
    if (!item) {
      NSLog("Open request refused, no file of this machine: %s", validUtf8(address));
      continue;
    }
    if (requests.empty() || requests.back().kind != kind) {
      requests.push_back({kind, {}});
    }
    requests.back().items.push_back(*item);
  }
  return requests;
}

}  // namespace platform

#include "browser/GoAddress.h"

#include "platform/format.h"
#include "platform/strings.h"

namespace lumo {

namespace {

constexpr const char* kClass = "MyWebViewWindowController";
constexpr const char* kGo = "ibGoButtonWK:";

// The running address in the one form in which every character is escaped once; absent when its escapes are
// no text.
std::optional<std::string> normalised(const std::string& address, GoPlan& plan) {
  const auto plain = platform::stringByRemovingPercentEscapes(address);
  plan.log.push_back(platform::stringWithFormat("url string withOUT percent encoding = %@", plain));
  if (!plain) {
    return std::nullopt;
  }
  return platform::stringByAddingPercentEscapes(*plain);
}

std::optional<platform::Url> standardized(const std::string& address) {
  const auto url = platform::Url::parse(address);
  return url ? std::optional(url->standardized()) : std::nullopt;
}

}  // namespace

GoPlan planGo(const std::optional<std::string>& running, const std::optional<std::string>& senderAddress,
              const std::optional<std::string>& server) {
  GoPlan plan;
  plan.log.push_back(platform::stringWithFormat("url string at start = %@", running));
  std::optional<std::string> stored = running;
  if (!stored) {
    plan.log.push_back(
        platform::stringWithFormat("%@->%@....HMMM prefRunningUrlString returned NIL???????", kClass, kGo));
    if (senderAddress) {
      plan.log.push_back(
          platform::stringWithFormat("%@->%@....Checking if sender is NSString...", kClass, kGo));
      stored = senderAddress;
      plan.log.push_back(platform::stringWithFormat("%@->%@....Will try to use sender string: [%@]...",
                                                    kClass, kGo, stored));
    }
  }

  const std::string trimmed = platform::trimmed(stored.value_or(""));
  const std::optional<std::string> address = trimmed.empty() ? server : normalised(trimmed, plan);
  if (!address) {
    return plan;
  }

  plan.invalidAddress = *address;
  plan.kind = GoPlan::Kind::InvalidAddress;
  auto url = standardized(*address);
  if (!url) {
    return plan;
  }
  plan.log.push_back(platform::stringWithFormat("url.scheme = %@", url->scheme()));
  if (!url->scheme() || platform::equalIgnoringCase(*url->scheme(), "localhost")) {
    const std::string completed = "http://" + *address;
    plan.invalidAddress = completed;
    url = standardized(completed);
    if (!url) {
      return plan;
    }
    plan.store = completed;
  }
  plan.kind = GoPlan::Kind::Load;
  plan.url = url;
  return plan;
}

std::string invalidAddressPage(const std::string& address) {
  return platform::stringWithFormat("Invalid url Request = [%@]", platform::htmlEscaped(address));
}

}  // namespace lumo

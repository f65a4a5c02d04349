#include "browser/ReleaseMessage.h"

#include <algorithm>

#include "platform/format.h"
#include "platform/log.h"
#include "platform/strings.h"
#include "support/NotificationNames.h"

namespace lumo {

namespace {

constexpr const char* kOrderPrefix = "lumo-reg-";
constexpr const char* kOrderText = "lumo-reg-ordertext";
constexpr const char* kPagePrefix = "respurlstring";
constexpr const char* kStationList = "registrationorders/photostationlist";

const char* statusText(ReleaseStatus status) {
  switch (status) {
    case ReleaseStatus::Registered:
      return "registered";
    case ReleaseStatus::CancelledRegistered:
      return "cancelled_registered";
    case ReleaseStatus::ClosedWindow:
      break;
  }
  return "closedwindow";
}

void setValue(platform::DistributedNotification& message, const std::string& key, const std::string& value) {
  const auto found = std::find_if(message.userInfo.begin(), message.userInfo.end(),
                                  [&](const auto& entry) { return entry.first == key; });
  if (found == message.userInfo.end()) {
    message.userInfo.emplace_back(key, value);
  } else {
    found->second = value;
  }
}

}  // namespace

platform::DistributedNotification releaseMessage(ReleaseStatus status,
                                                 const std::optional<std::string>& running,
                                                 const platform::HeaderFields* order) {
  platform::DistributedNotification message{kReleaseMessage, std::nullopt, {}};
  setValue(message, "senderApp", "LumoBrowser.app");
  setValue(message, "email", "noEmailRequired");
  setValue(message, "status", statusText(status));
  if (order != nullptr) {
    for (const auto& [name, value] : *order) {
      if (platform::hasPrefixIgnoringCase(name, kOrderPrefix)) {
        const bool isText = platform::equalIgnoringCase(name, kOrderText);
        setValue(message, platform::uppercase(name),
                 isText ? platform::replacingOccurrences(value, "+", " ") : value);
      }
      if (platform::hasPrefixIgnoringCase(name, kPagePrefix)) {
        setValue(message, name, value);
      }
    }
  }
  if (running) {
    setValue(message, "urlstring", *running);
  }
  return message;
}

std::optional<std::string> messageValue(const platform::DistributedNotification& message,
                                        const std::string& key) {
  for (const auto& [name, value] : message.userInfo) {
    if (name == key) {
      return value;
    }
  }
  return std::nullopt;
}

std::optional<platform::Url> photoStationListUrl(const platform::Url& failingUrl) {
  const std::string base =
      failingUrl.host() ? platform::stringWithFormat("%@://%@%@", failingUrl.scheme(), failingUrl.host(),
                                                     platform::stringWithFormat(":%@", failingUrl.port()))
                        : platform::stringWithFormat("%@://%@%@", failingUrl.scheme(), nullptr, "/");
  const auto url = platform::Url::parse(base);
  const auto list = url ? std::optional(url->byAppendingPathComponent(kStationList)) : std::nullopt;
  platform::NSLog("redirecturl = %@", list);
  // The component is appended a second time; servers answer that path.
  return list ? std::optional(list->byAppendingPathComponent(kStationList)) : std::nullopt;
}

}  // namespace lumo

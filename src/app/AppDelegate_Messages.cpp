#include <utility>

#include "app/AppDelegate.h"
#include "app/PreferenceKeys.h"
#include "app/StartUrl.h"
#include "browser/MyWebViewWindowController.h"
#include "platform/log.h"
#include "platform/url.h"
#include "platform/user_defaults.h"

// What arrives from other programs.

namespace lumo {

using platform::NSLog;

namespace {

constexpr const char* kClass = "AppDelegate";
// Between storing an address and loading it, so that the load finds what was stored.
constexpr platform::Millis kBeforeLoad{100};

}  // namespace

std::optional<std::string> AppDelegate::replaceKnownPlaceholdersForUrl(const std::string& url) const {
  return replaceKnownPlaceholders(url, platform_.defaults.stringForKey(prefServerAddress),
                                  platform_.defaults.stringForKey(prefDefaultServerAddress));
}

bool AppDelegate::validateUrlString(const std::optional<std::string>& text) {
  constexpr const char* kOperation = "validateUrlString:";
  const StartUrl start = resolveStartUrl(text, platform_.defaults.stringForKey(prefServerAddress),
                                         platform_.defaults.stringForKey(prefDefaultServerAddress));
  for (const std::string& line : start.log) {
    platform::logLine(line);
  }
  if (!start.address) {
    return false;
  }
  NSLog("%@->%@....222222222222222222222222222222222222..........", kClass, kOperation);
  NSLog("%@->%@....prefRunningUrlString will be set with: [%@]..........", kClass, kOperation, start.address);
  {
    const std::lock_guard lock(addressToStoreMutex_);
    addressToStore_ = start.address;
  }
  // One queue for all addresses keeps several of them in their order, so that the last one ends up stored and
  // loaded.
  openQueue_.async(onMain([this] {
    std::unique_lock lock(addressToStoreMutex_);
    const auto address = std::exchange(addressToStore_, std::nullopt);
    lock.unlock();
    // Of many at once only the newest is written: each waits for the disk, and the window would with it.
    if (address) {
      platform_.defaults.setObject(*address, prefRunningUrlString);
      platform_.defaults.synchronize();
    }
  }));
  openQueue_.after(kBeforeLoad, onMain([this, address = *start.address] {
                     myWebViewWindowController->ibGoButton(Sender(address));
                   }));
  return true;
}

platform::Block AppDelegate::onMain(platform::Block block) {
  return [&dispatch = platform_.dispatch, alive = std::weak_ptr(alive_), block = std::move(block)] {
    dispatch.main().async([alive, block] {
      if (!alive.expired()) {
        block();
      }
    });
  };
}

void AppDelegate::application_openURLs(const std::vector<std::string>& urls) {
  NSLog("%s %@", "-[AppDelegate application:openURLs:]", urls);
  for (const std::string& url : urls) {
    validateUrlString(url);
  }
}

void AppDelegate::application_openFiles(const std::vector<std::string>& filenames) {
  NSLog("%@->%@....filenames = %@", kClass, "application:openFiles:", filenames);
  if (filenames.empty()) {
    return;
  }
  const std::string address = platform::stringByAddingPercentEscapes("file://" + filenames.front());
  const auto url = platform::Url::parse(address);
  if (url && url->scheme()) {
    platform_.defaults.setObject(address, prefRunningUrlString);
    myWebViewWindowController->ibGoButton({});
  }
}

bool AppDelegate::applicationOpenUntitledFile() {
  NSLog("%@->%@....", kClass, "applicationOpenUntitledFile:");
  return true;
}

void AppDelegate::SearchFromPasteboard_userData_error(const platform::Pasteboard& pasteboard,
                                                      const std::optional<std::string>& userData) {
  constexpr const char* kOperation = "SearchFromPasteboard:userData:error:";
  NSLog("%@->%@....", kClass, kOperation);
  NSLog("%@->%@....pboardtypes = %@", kClass, kOperation, pasteboard.types);
  if (pasteboard.hasType(platform::kFilenamesPboardType)) {
    NSLog("Found pasteboard string data = %@", pasteboard.filenames);
    NSLog("filearray class type = %@", pasteboard.filenames ? "NSArray" : nullptr);
    application_openFiles(pasteboard.filenames.value_or(std::vector<std::string>()));
  }
  if (pasteboard.hasType(platform::kStringPboardType)) {
    NSLog("Found pasteboard string data = %@", pasteboard.string);
    NSLog("Found data = %@", userData);
    NSLog("Found error = %@", nullptr);
    if (pasteboard.string) {
      validateUrlString(pasteboard.string);
    }
  }
}

void AppDelegate::handleDragDropNotification(const platform::Notification& notification) {
  NSLog("%@->%@....userInfo = %@", kClass, "handleDragDropNotification:", notification.userInfo);
  const platform::PropertyList* strings = notification.userInfo.find("mystrings");
  const auto text = strings == nullptr ? std::nullopt : platform::stringValue(*strings);
  platform_.dispatch.syncOnMain([&] { validateUrlString(text); });
}

void AppDelegate::handleGetURLEvent_withReplyEvent(const std::optional<std::string>& directObject) {
  NSLog("%@->%@....urlstring = %@", kClass, "handleGetURLEvent:withReplyEvent:", directObject);
  const auto plain = directObject ? platform::stringByRemovingPercentEscapes(*directObject) : std::nullopt;
  platform::SerialQueue(platform_.dispatch).after(kBeforeLoad, onMain([this, plain] {
                                                    validateUrlString(plain);
                                                  }));
}

void AppDelegate::handleOpenContentsEvent_withReplyEvent(const std::optional<std::string>& directObject) {
  NSLog("%@->%@....", kClass, "handleOpenContentsEvent:withReplyEvent:");
  NSLog("%@", directObject);
}

}  // namespace lumo

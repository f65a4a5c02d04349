#include "app/AppDelegate.h"
#include "platform/log.h"

// What arrives from other programs.

namespace lumo {

using platform::NSLog;

namespace {

constexpr const char* kClass = "AppDelegate";

}  // namespace

void AppDelegate::application_openURLs(const std::vector<std::string>& urls) {
  NSLog("%s %@", "-[AppDelegate application:openURLs:]", urls);
}

void AppDelegate::application_openFiles(const std::vector<std::string>& filenames) {
  NSLog("%@->%@....filenames = %@", kClass, "application:openFiles:", filenames);
}

bool AppDelegate::applicationOpenUntitledFile() {
  NSLog("%@->%@....", kClass, "applicationOpenUntitledFile:");
  return true;
}

void AppDelegate::SearchFromPasteboard_userData_error(const platform::Pasteboard& pasteboard,
                                                      const std::optional<std::string>& /*userData*/) {
  constexpr const char* kOperation = "SearchFromPasteboard:userData:error:";
  NSLog("%@->%@....", kClass, kOperation);
  NSLog("%@->%@....pboardtypes = %@", kClass, kOperation, pasteboard.types);
}

void AppDelegate::handleDragDropNotification(const platform::Notification& notification) {
  NSLog("%@->%@....userInfo = %@", kClass, "handleDragDropNotification:", notification.userInfo);
}

}  // namespace lumo

#include "app/AppDelegate.h"
#include "app/ExitConfirmation.h"
#include "app/PreferenceKeys.h"
#include "browser/MyWebViewWindowController.h"
#include "browser/ReleaseMessage.h"
#include "platform/log.h"
#include "platform/user_defaults.h"
#include "support/NotificationNames.h"

// Quitting: the question, the message that the window was closed, and the end.

namespace lumo {

using platform::NSLog;

namespace {

constexpr const char* kClass = "AppDelegate";

}  // namespace

platform::TerminateReply AppDelegate::applicationShouldTerminate() {
  NSLog("%@->%@....", kClass, "applicationShouldTerminate:");
  if (fDoTerminateNow) {
    return platform::TerminateReply::Now;
  }
  platform::Window* browser =
      myWebViewWindowController == nullptr ? nullptr : myWebViewWindowController->window();
  if (platform_.defaults.boolForKey(prefDoNotConfirmOnExit) || browser == nullptr) {
    handleTerminateNowNotifcation(nullptr);
    return platform::TerminateReply::Cancel;
  }
  if (exitConfirmationShown_) {
    return platform::TerminateReply::Cancel;
  }
  exitConfirmationShown_ = true;
  browser->beginAlert(exitConfirmation(platform_.defaults.stringForKey(prefRunningUrlString)),
                      [this, alive = std::weak_ptr(alive_)](const platform::AlertResponse& response) {
                        if (!alive.expired()) {
                          exitConfirmationShown_ = false;
                          alertDidEnd_returnCode_contextInfo(response.code);
                        }
                      });
  return platform::TerminateReply::Cancel;
}

void AppDelegate::alertDidEnd_returnCode_contextInfo(long returnCode) {
  NSLog("%@->%@....returnCode = %li", kClass, "alertDidEnd:returnCode:contextInfo:", returnCode);
  switch (returnCode) {
    case platform::kAlertThirdButtonReturn:
      NSLog("1002");
      fDoTerminateNow = true;
      platform_.notifications.postNotificationName(kTerminateWithOutRegistrationSave);
      break;
    case platform::kAlertSecondButtonReturn:
      NSLog("1001");
      handleTerminateNowNotifcation(nullptr);
      break;
    case platform::kAlertFirstButtonReturn:
      NSLog("1000");
      break;
    default:
      NSLog("huh??");
      break;
  }
}

void AppDelegate::handleTerminateNowNotifcation(const platform::Notification* notification) {
  NSLog("%@->%@....", kClass, "handleTerminateNowNotifcation:");
  if (notification == nullptr) {
    const auto message =
        releaseMessage(ReleaseStatus::ClosedWindow, platform_.defaults.stringForKey(prefRunningUrlString));
    platform_.bus.postNotification(message);
    NSLog("Inside %@ => %@...NSDistributedNotificationCenter postNotifiction: %@ ", kClass,
          "handleTerminateNowNotifcation:", message);
  }
  fDoTerminateNow = true;
  // By way of a queue, so that the request that started this has been answered before the new one comes.
  platform::SerialQueue(platform_.dispatch).async([&platform = platform_] {
    platform.dispatch.main().async([&platform] { platform.application.terminate(); });
  });
}

void AppDelegate::applicationMustTerminate() {
  if (!fDoTerminateNow) {
    handleTerminateNowNotifcation(nullptr);
  }
}

}  // namespace lumo

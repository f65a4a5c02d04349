#include "app/PreferenceKeys.h"
#include "browser/MyWebViewWindowController.h"
#include "browser/ReleaseMessage.h"
#include "platform/log.h"
#include "platform/strings.h"
#include "platform/user_defaults.h"
#include "support/NotificationNames.h"

// The end of an order: the station's other programs are told, then the application ends.

namespace lumo {

using platform::NSLog;

namespace {

constexpr const char* kClass = "MyWebViewWindowController";
constexpr platform::Millis kBeforeOrderRelease{200};
constexpr platform::Millis kBeforeSaveRelease{1000};
constexpr platform::Millis kBeforeOrderList{500};
// Under this key errors keep the address that failed.
constexpr const char* kFailingUrlKey = "NSErrorFailingURLKey";

}  // namespace

void MyWebViewWindowController::postRelease(const char* operation, platform::DistributedNotification message,
                                            platform::Block posted) {
  // The post is made on the main queue and waited for by going on only after it: the message has left before
  // the application is asked to end. Nothing here needs the window, which may be gone by then.
  platform_.dispatch.main().async(
      [&platform = platform_, operation, message = std::move(message), posted = std::move(posted)] {
        platform.bus.postNotification(message);
        platform.dispatch.global().async([&platform, operation, message, posted] {
          NSLog("Inside %@ => %@...NSDistributedNotificationCenter postNotifiction: %@ ", kClass, operation,
                message);
          if (posted) {
            posted();
          }
          platform.notifications.postNotificationName(kTerminateNow);
        });
      });
}

void MyWebViewWindowController::handleTerminateWithRegistrationOrdersPhotoStationData(
    const platform::HeaderFields& fields) {
  static constexpr const char* kOperation = "handleTerminateWithRegistrationOrdersPhotoStationData:";
  platform_.dispatch.global().after(kBeforeOrderRelease, [this, alive = std::weak_ptr(alive_), fields] {
    if (alive.expired()) {
      return;
    }
    std::vector<std::string> names;
    for (const auto& [name, value] : fields) {
      names.push_back(name);
    }
    NSLog("%@->%@.... param.allkeys = %@", kClass, kOperation, names);
    const auto message = releaseMessage(ReleaseStatus::Registered,
                                        platform_.defaults.stringForKey(prefRunningUrlString), &fields);
    postRelease(kOperation, message, [message] {
      NSLog("code = %@", messageValue(message, "LUMO-REG-CODE"));
      NSLog("name = %@", messageValue(message, "LUMO-REG-NAME"));
    });
  });
}

bool MyWebViewWindowController::handleTerminateWithRegistrationOrdersPhotoStationDataLOOP(
    const platform::HeaderFields& /*fields*/) {
  return true;
}

void MyWebViewWindowController::releaseAfterSave(const char* operation, ReleaseStatus status) {
  platform::SerialQueue(platform_.dispatch)
      .after(kBeforeSaveRelease, [this, alive = std::weak_ptr(alive_), operation, status] {
        if (!alive.expired()) {
          postRelease(operation,
                      releaseMessage(status, platform_.defaults.stringForKey(prefRunningUrlString)), {});
        }
      });
}

void MyWebViewWindowController::handleTerminateWithRegistrationSave() {
  NSLog("%@->%@....", kClass, "handleTerminateWithRegistrationSave:");
  releaseAfterSave("handleTerminateWithRegistrationSave:", ReleaseStatus::Registered);
}

void MyWebViewWindowController::handleTerminateWithOutRegistrationSave(
    const platform::Notification& /*note*/) {
  NSLog("%@->%@....", kClass, "handleTerminateWithOutRegistrationSave:");
  releaseAfterSave("handleTerminateWithOutRegistrationSave:", ReleaseStatus::CancelledRegistered);
}

void MyWebViewWindowController::handleTerminateWithRegistrationOrdersConfirmSaveData(
    const platform::Dictionary& data) {
  platform_.dispatch.global().after(kBeforeOrderList, [this, alive = std::weak_ptr(alive_), data] {
    const platform::PropertyList* failing = data.find(kFailingUrlKey);
    const auto text = failing == nullptr ? std::nullopt : platform::stringValue(*failing);
    const auto url = platform::Url::parse(text);
    const auto list = url ? photoStationListUrl(*url) : std::nullopt;
    if (alive.expired() || !list) {
      return;
    }
    platform_.defaults.setObject(list->absoluteString(), prefRunningUrlString);
    platform_.dispatch.main().async([this, alive] {
      if (!alive.expired()) {
        ibGoButton({});
      }
    });
  });
}

}  // namespace lumo

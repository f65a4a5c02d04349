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

// Posts `message` on the main queue, and only after that logs for `operation`, runs `posted` (may be empty)
// and asks the application to end: the message has left by then. The platform outlives the window, which
// nothing here needs.
void postRelease(platform::Platform& platform, const char* operation,
                 platform::DistributedNotification message, platform::Block posted) {
  platform.dispatch.main().async(
      [&platform, operation, message = std::move(message), posted = std::move(posted)] {
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

void releaseAfterSave(platform::Platform& platform, const char* operation, ReleaseStatus status) {
  NSLog("%@->%@....", kClass, operation);
  platform::SerialQueue(platform.dispatch).after(kBeforeSaveRelease, [&platform, operation, status] {
    postRelease(platform, operation,
                releaseMessage(status, platform.defaults.stringForKey(prefRunningUrlString)), {});
  });
}

}  // namespace

void MyWebViewWindowController::handleTerminateWithRegistrationOrdersPhotoStationData(
    const platform::HeaderFields& fields) {
  static constexpr const char* kOperation = "handleTerminateWithRegistrationOrdersPhotoStationData:";
  platform_.dispatch.global().after(kBeforeOrderRelease, [&platform = platform_, fields] {
    std::vector<std::string> names;
    for (const auto& [name, value] : fields) {
      names.push_back(name);
    }
    NSLog("%@->%@.... param.allkeys = %@", kClass, kOperation, names);
    const auto message = releaseMessage(ReleaseStatus::Registered,
                                        platform.defaults.stringForKey(prefRunningUrlString), &fields);
    postRelease(platform, kOperation, message, [message] {
      NSLog("code = %@", messageValue(message, "LUMO-REG-CODE"));
      NSLog("name = %@", messageValue(message, "LUMO-REG-NAME"));
    });
  });
}

bool MyWebViewWindowController::handleTerminateWithRegistrationOrdersPhotoStationDataLOOP(
    const platform::HeaderFields& /*fields*/) {
  return true;
}

void MyWebViewWindowController::handleTerminateWithRegistrationSave() {
  releaseAfterSave(platform_, "handleTerminateWithRegistrationSave:", ReleaseStatus::Registered);
}

void MyWebViewWindowController::handleTerminateWithOutRegistrationSave(
    const platform::Notification& /*note*/) {
  releaseAfterSave(platform_, "handleTerminateWithOutRegistrationSave:", ReleaseStatus::CancelledRegistered);
}

void MyWebViewWindowController::handleTerminateWithRegistrationOrdersConfirmSaveData(
    const platform::Dictionary& data) {
  platform_.dispatch.global().after(
      kBeforeOrderList, [this, &platform = platform_, alive = std::weak_ptr(alive_), data] {
        const platform::PropertyList* failing = data.find(kFailingUrlKey);
        const auto text = failing == nullptr ? std::nullopt : platform::stringValue(*failing);
        const auto url = platform::Url::parse(text);
        const auto list = url ? photoStationListUrl(*url) : std::nullopt;
        if (!list) {
          return;
        }
        platform.defaults.setObject(list->absoluteString(), prefRunningUrlString);
        platform.dispatch.main().async([this, alive] {
          if (!alive.expired()) {
            ibGoButton({});
          }
        });
      });
}

}  // namespace lumo

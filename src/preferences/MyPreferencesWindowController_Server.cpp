#include <utility>

#include "app/PreferenceKeys.h"
#include "discovery/ServerScan.h"
#include "platform/application.h"
#include "platform/log.h"
#include "platform/url.h"
#include "platform/user_defaults.h"
#include "preferences/MyPreferencesWindowController.h"
#include "preferences/ServerAddress.h"

// Tests of the connection, and the search for servers.

namespace lumo {

using platform::NSLog;

namespace {

constexpr const char* kClass = "MyPreferencesWindowController";
constexpr const char* kTest = "ibTestConnection:";
constexpr const char* kSearch = "ibSearchJunivaServer:";
constexpr platform::Millis kTestTimeout{5000};
constexpr int kServerWasChosen = 1;

const char* statusText(const std::string& image) {
  if (image.empty()) {
    return "Asking the photo server…";
  }
  return image == kServerAvailable ? "The photo server answers" : "The photo server cannot be reached";
}

}  // namespace

void MyPreferencesWindowController::showStatus(const std::string& image) {
  if (fStatus1View != nullptr) {
    fStatus1View->setImageNamed(image);
  }
  showText("ibStatusText", statusText(image));
}

void MyPreferencesWindowController::ibTestConnection() {
  NSLog("%@->%@....", kClass, kTest);
  if (fIsChecking) {
    platform_.application.beep();
    platform_.application.beep();
    NSLog("%@->%@....PREVIOUS Still in Session...", kClass, kTest);
    return;
  }
  // From here on, since a second press may come before the queue has its turn.
  fIsChecking = true;
  if (form_ != nullptr) {
    form_->endEditing();
  }
  showText("ibStatusText", statusText(""));
  startTest();
}

void MyPreferencesWindowController::startTest() {
  const auto server = platform_.defaults.stringForKey(prefServerAddress);
  const auto fallback = platform_.defaults.stringForKey(prefDefaultServerAddress);
  currentTaskQueue1_.async([this, &platform = platform_, onMain = toMain(), server, fallback] {
    const auto tested = addressToTest(server, fallback);
    if (tested && tested->isRewritten) {
      platform.defaults.setObject(tested->address, prefServerAddress);
      onMain([this] { refresh(prefServerAddress); });
    }
    const auto end = [this, onMain](const platform::HttpResult& result) {
      if (result.error) {
        NSLog("error = %@", *result.error);
      } else {
        NSLog("valid connection");
      }
      onMain([this, result] { testEnded(result); });
    };
    const auto url = tested ? platform::Url::parse(tested->address) : std::nullopt;
    if (!url) {
      end({.error = tested ? "this is no address: " + tested->address : "there is no address to test"});
      return;
    }
    NSLog("%@->%@....New Method on 10.9+...", kClass, kTest);
    platform::SerialQueue(platform.dispatch).async([&http = platform.http, url, end] {
      http.get(url->absoluteString(), kTestTimeout, end);
    });
    NSLog("%@->%@....End...", kClass, kTest);
  });
}

void MyPreferencesWindowController::testEnded(const platform::HttpResult& result) {
  showStatus(result.error ? kServerUnavailable : kServerAvailable);
  fIsChecking = false;
}

void MyPreferencesWindowController::ibSearchJunivaServer() {
  NSLog("Inside %@ => %@...", kClass, kSearch);
  if (window_ == nullptr) {
    return;
  }
  if (form_ != nullptr) {
    form_->endEditing();
  }
  fFindJunivaController = FindLumoJunivaServerWindowController::make(platform_, computer_.network);
  platform::Window* finder = fFindJunivaController->window();
  if (finder == nullptr) {
    return;
  }
  windowWillBeginSheet();
  window_->beginSheet(*finder, [this](int response) {
    NSLog("Inside %@ => %@...response = %li", kClass, kSearch, static_cast<long>(response));
    if (response == kServerWasChosen) {
      serverChosen();
    }
  });
}

void MyPreferencesWindowController::serverChosen() {
  const auto record = platform_.defaults.dictionaryForKey(prefSelectedJunivaServerInfo);
  // This computer's address is asked from the shell, for which the window must not wait.
  platform_.dispatch.global().async(
      [this, &defaults = platform_.defaults, onMain = toMain(), network = computer_.network, record] {
        const std::string local = FindLumoJunivaServerWindowController::getLocalIPAddress(network);
        const auto address =
            chosenServerAddress(record, local, defaults.objectForKey(prefJunivaPhotoStationListPath));
        if (!address) {
          NSLog("the chosen server has no usable address, the preferences stay: %@", record);
          return;
        }
        defaults.setObject(*address, prefJunivaServerUrlString);
        defaults.setObject(*address, prefServerAddress);
        defaults.synchronize();
        onMain([this] { refresh(prefServerAddress); });
      });
}

}  // namespace lumo

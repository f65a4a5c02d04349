#include <algorithm>

#include "app/PreferenceKeys.h"
#include "browser/GoAddress.h"
#include "browser/LoadFailure.h"
#include "browser/MyWebViewWindowController.h"
#include "platform/log.h"
#include "platform/user_defaults.h"
#include "preferences/MyPreferencesWindowController.h"

// The commands that put a page into the window.

namespace lumo {

using platform::NSLog;

namespace {

constexpr const char* kClass = "MyWebViewWindowController";
constexpr platform::Millis kLoadTimeout{5000};
constexpr const char* kScanHeader = "Glimmerpad-Scan";

template <class Control>
Control* controlOf(const Sender& sender) {
  return dynamic_cast<Control*>(sender.control());
}

}  // namespace

void MyWebViewWindowController::ibGoButton(const Sender& sender) {
  ibGoButtonWK(sender);
}

void MyWebViewWindowController::ibGoButtonWK(const Sender& sender) {
  NSLog("%@->%@....sender = [%@]", kClass, "ibGoButtonWK:", sender);
  const std::string* address = sender.address();
  platform::UserDefaults& defaults = platform_.defaults;
  const GoPlan plan = planGo(defaults.stringForKey(prefRunningUrlString),
                             address == nullptr ? std::nullopt : std::optional(*address),
                             defaults.stringForKey(prefServerAddress));
  for (const std::string& line : plan.log) {
    platform::logLine(line);
  }
  if (plan.store) {
    defaults.setObject(*plan.store, prefRunningUrlString);
  }
  // Here the current view comes first.
  std::vector<platform::WebView*> views = visibleWebViews();
  std::reverse(views.begin(), views.end());
  // What was typed is discarded: the field shows the address that counts.
  if (ibTextField != nullptr && plan.kind != GoPlan::Kind::Nothing) {
    ibTextField->setStringValue(plan.url ? plan.url->absoluteString() : plan.invalidAddress);
  }
  if (plan.kind != GoPlan::Kind::Nothing) {
    ++loads_;
  }
  if (plan.kind == GoPlan::Kind::Load) {
    platform::UrlRequest request{
        *plan.url, platform::CachePolicy::ReloadIgnoringLocalCacheData, kLoadTimeout, {}};
    NSLog("request.allHTTPHeaderFields = %@", request.headers);
    request.headers.emplace_back(kScanHeader, hasCamera() ? "yes" : "no");
    for (platform::WebView* view : views) {
      view->load(request);
    }
  } else if (plan.kind == GoPlan::Kind::InvalidAddress) {
    for (platform::WebView* view : views) {
      view->loadHTMLString(readablePage(invalidAddressPage(plan.invalidAddress)), std::nullopt);
    }
  }
}

void MyWebViewWindowController::ibHomeButton(const Sender& sender) {
  for (std::size_t count = visibleWebViews().size(); count > 0; --count) {
    const auto server = platform_.defaults.stringForKey(prefServerAddress);
    if (server && !server->empty()) {
      platform_.defaults.setObject(*server, prefRunningUrlString);
    }
    ibGoButton(sender);
  }
}

void MyWebViewWindowController::ibBackButton(const Sender& /*sender*/) {
  for (platform::WebView* view : visibleWebViews()) {
    view->goBack();
  }
}

void MyWebViewWindowController::ibForwardButton(const Sender& /*sender*/) {
  for (platform::WebView* view : visibleWebViews()) {
    view->goForward();
  }
}

void MyWebViewWindowController::ibTextButton(const Sender& sender) {
  if (auto* field = controlOf<platform::TextField>(sender); field != nullptr && field->window() != nullptr) {
    for (platform::WebView* view : visibleWebViews()) {
      field->window()->makeFirstResponder(*view);
    }
  }
  ibGoButton({});
}

void MyWebViewWindowController::ibToolbarGoButton(const Sender& sender) {
  NSLog("%@-%@...", kClass, "ibToolbarGoButton:");
  ibGoButton(sender);
}

void MyWebViewWindowController::ibToolbarTextField(const Sender& sender) {
  NSLog("%@-%@...", kClass, "ibToolbarTextField:");
  ibTextButton(sender);
}

void MyWebViewWindowController::ibToolbarSettingsButton(const Sender& /*sender*/) {
  NSLog("%@-%@...", kClass, "ibToolbarSettingsButton:");
  ibOpenPreferences({});
}

void MyWebViewWindowController::ibToolbarSegmentedControl1(const Sender& sender) {
  constexpr const char* kOperation = "ibToolbarSegmentedControl1:";
  const auto* control = controlOf<platform::SegmentedControl>(sender);
  if (control == nullptr) {
    return;
  }
  const long segment = control->selectedSegment();
  NSLog("%@-%@... segmentcontrol selectedSegment = %li", kClass, kOperation, segment);
  switch (segment) {
    case 0:
      ibBackButton(sender);
      break;
    case 1:
      ibForwardButton(sender);
      break;
    default:
      NSLog("%@-%@...Unsupported segmentcontrol selectedSegment = %li", kClass, kOperation, segment);
      break;
  }
}

void MyWebViewWindowController::ibOpenPreferences(const Sender& /*sender*/) {
  constexpr const char* kOperation = "ibOpenPreferences:";
  NSLog("%@->%@....", kClass, kOperation);
  if (window_ == nullptr) {
    return;
  }
  const auto isShown = [](const MyPreferencesWindowController* controller) {
    return controller != nullptr && controller->window() != nullptr && controller->window()->isVisible();
  };
  if (!isShown(myPreferencesWindowController.get())) {
    myPreferencesWindowController = std::make_unique<MyPreferencesWindowController>(
        platform_, [this] { ibShowNavBar({}); }, myPreferencesWindowController.get());
  }
  platform::Window* preferences = myPreferencesWindowController->window();
  if (preferences == nullptr) {
    return;
  }
  if (preferences->isVisible()) {
    NSLog("%@->%@....ALREADY VISIBLE....", kClass, kOperation);
    return;
  }
  window_->beginSheet(*preferences, [](int code) { NSLog("User Entered: %li", static_cast<long>(code)); });
}

void MyWebViewWindowController::didEndSheet2_returnCode_contextInfo(platform::Window& sheet,
                                                                    long returnCode) {
  NSLog("%@->%@....OLD OS method - Probably not running on 10.9+", kClass,
        "didEndSheet2:returnCode:contextInfo:");
  sheet.orderOut();
  NSLog("User Entered: %li", returnCode);
}

}  // namespace lumo

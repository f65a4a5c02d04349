#include "app/PreferenceKeys.h"
#include "browser/LoadFailure.h"
#include "browser/MyWebViewWindowController.h"
#include "platform/log.h"
#include "platform/user_defaults.h"

// Loads that fail, and what the person sees of it.

namespace lumo {

using platform::NSLog;

namespace {

constexpr const char* kClass = "MyWebViewWindowController";
constexpr platform::Millis kBeforePreferences{500};

}  // namespace

void MyWebViewWindowController::handleWebViewError(const std::optional<platform::WebError>& error) {
  platform::SerialQueue queue(platform_.dispatch);
  queue.async([this, &platform = platform_, alive = std::weak_ptr(alive_), error, load = loads_.load(),
               queue]() mutable {
    if (error) {
      platform.dispatch.main().async([this, alive, load, page = readablePage(errorPage(*error))] {
        // A page that was asked for meanwhile is not to be replaced by the failure of an older one.
        if (alive.expired() || load != loads_) {
          return;
        }
        for (platform::WebView* view : visibleWebViews()) {
          view->loadHTMLString(page, std::nullopt);
        }
      });
    } else {
      NSLog("Unknown Error Found at:\n%@", "handleWebViewError:");
    }
    if (platform.defaults.boolForKey(prefShowPrefPanelWhenUrlLoadFailed)) {
      queue.after(kBeforePreferences, [this, &platform, alive] {
        platform.dispatch.main().async([this, alive] {
          if (!alive.expired()) {
            ibOpenPreferences({});
          }
        });
      });
    }
  });
}

void MyWebViewWindowController::webView_didFailProvisionalNavigation_withError(
    platform::WebView& /*view*/, const platform::WebError& error) {
  constexpr const char* kOperation = "webView:didFailProvisionalNavigation:withError:";
  NSLog("%@-%@...error = %@", kClass, kOperation, error);
  if (platform_.defaults.boolForKey(prefLenientWithFailProvisionalNavigation)) {
    NSLog("%@-%@...is LENIENT... returning...", kClass, kOperation);
    return;
  }
  stopIndicator();
  const auto failing = failingUrl(error);
  if (failing) {
    NSLog("%@-%@...paramsstring = %@", kClass, kOperation, failing->parameterString());
    NSLog("%@-%@...query = %@", kClass, kOperation, failing->query());
  }
  if (!isExpectedFailure(failing)) {
    handleWebViewError(error);
  }
}

void MyWebViewWindowController::webView_didFailNavigation_withError(platform::WebView& /*view*/,
                                                                    const platform::WebError& error) {
  NSLog("%@-%@...error = %@", kClass, "webView:didFailNavigation:withError:", error);
  stopIndicator();
}

void MyWebViewWindowController::webViewWebContentProcessDidTerminate(platform::WebView& /*view*/) {
  NSLog("%@-%@...", kClass, "webViewWebContentProcessDidTerminate:");
}

}  // namespace lumo

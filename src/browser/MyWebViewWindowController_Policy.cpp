#include <set>

#include "app/PreferenceKeys.h"
#include "browser/MyWebViewWindowController.h"
#include "browser/ServerRoutes.h"
#include "platform/log.h"
#include "platform/user_defaults.h"

// What the photo server's answers make the browser do.

namespace lumo {

using platform::NavigationPolicy;
using platform::NSLog;

namespace {

constexpr const char* kClass = "MyWebViewWindowController";
// Two waits, one after the other: the page first has its turn, then the time to draw itself.
constexpr platform::Millis kBeforeReceipt{30};
constexpr platform::Millis kPageDraws{300};

void storeScanReturn(platform::UserDefaults& defaults, const std::string* page) {
  if (page != nullptr) {
    defaults.setObject(*page, prefScanReturnStringFormat);
  } else {
    defaults.removeObject(prefScanReturnStringFormat);
  }
}

}  // namespace

void MyWebViewWindowController::webView_decidePolicyForNavigationAction_decisionHandler(
    platform::WebView& /*view*/, const platform::NavigationAction& action, platform::DecisionHandler decide) {
  constexpr const char* kOperation = "webView:decidePolicyForNavigationAction:decisionHandler:";
  NSLog("%@-%@...navigationAction = %@", kClass, kOperation, action);
  const auto marked = requestWithScanHeader(action.request, hasCamera());
  if (!marked) {
    if (hasCamera()) {
      NSLog("%@-%@...navigationAction.request.allHTTPHeaderFields = %@", kClass, kOperation,
            action.request.headers);
      NSLog("already set...");
    }
    decide(NavigationPolicy::Allow);
    return;
  }
  decide(NavigationPolicy::Cancel);
  if (ibWKWebView != nullptr) {
    ibWKWebView->load(*marked);
  }
}

void MyWebViewWindowController::webView_decidePolicyForNavigationResponse_decisionHandler(
    platform::WebView& view, const platform::NavigationResponse& response, platform::DecisionHandler decide) {
  constexpr const char* kOperation = "webView:decidePolicyForNavigationResponse:decisionHandler:";
  const std::optional<platform::Url> url = view.url();
  const std::optional<std::string> path = url ? url->path() : std::nullopt;
  NSLog("%@-%@...", kClass, kOperation);
  NSLog("%@-%@...navigationResponse = %@", kClass, kOperation, response);
  NSLog("%@-%@...response = %@", kClass, kOperation, response.url);
  stopIndicator();
  const platform::HeaderFields fields = fieldsWithAddress(response.headers, url);
  NSLog("%@-%@...path = [%@]", kClass, kOperation, path);

  const std::string* scanReturn = platform::headerValue(fields, kScanReturnHeader);
  switch (headerWish(fields)) {
    case HeaderWish::Scan:
      storeScanReturn(platform_.defaults, scanReturn);
      decide(NavigationPolicy::Allow);
      doTheScanProcess();
      return;
    case HeaderWish::PrintReceipt:
      storeScanReturn(platform_.defaults, scanReturn);
      decide(NavigationPolicy::Allow);
      printReceiptSoon(receiptReturnPage(
          url, scanReturn == nullptr ? std::nullopt : std::optional<std::string>(*scanReturn)));
      return;
    case HeaderWish::None:
      break;
  }

  NavigationPolicy policy = NavigationPolicy::Allow;
  if (isRegistrationSave(path)) {
    policy = NavigationPolicy::Cancel;
    handleTerminateWithRegistrationSave();
  }
  const std::set<std::string> paths =
      releasePaths(platform_.defaults.stringForKey(prefPathNamesToDataForLumo));
  NSLog("%@-> mSet = %@", kOperation, std::vector<std::string>(paths.begin(), paths.end()));
  if (isReleasePath(path, paths)) {
    NSLog("%@-> closing window for path = %@", kOperation, path);
    handleTerminateWithRegistrationOrdersPhotoStationData(fields);
    policy = NavigationPolicy::Cancel;
  }
  decide(policy);
}

void MyWebViewWindowController::doTheScanProcess() {
  // The kiosk has no scanner of its own: the server's page goes on with the station's scan program.
  NSLog("%@->%@....", kClass, "doTheScanProcess");
}

void MyWebViewWindowController::printReceiptSoon(const ReturnPage& page) {
  webviewProcessQueue().asyncHolding([this, &dispatch = platform_.dispatch, alive = std::weak_ptr(alive_),
                                      page](const platform::Hold& hold) {
    dispatch.global().after(kBeforeReceipt, [this, &dispatch, alive, page, hold] {
      dispatch.global().after(kPageDraws, [this, &dispatch, alive, page, hold] {
        dispatch.main().async([this, alive, page, hold] {
          if (!alive.expired()) {
            doPrintThisPageAndReturnToPage(page);
          }
        });
      });
    });
  });
}

}  // namespace lumo

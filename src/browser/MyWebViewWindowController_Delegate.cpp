#include "browser/MyWebViewWindowController.h"
#include "platform/log.h"

// What the web view tells and asks.

namespace lumo {

using platform::NSLog;

namespace {

constexpr const char* kClass = "MyWebViewWindowController";

}  // namespace

void MyWebViewWindowController::webView_decidePolicyForNavigationAction_decisionHandler(
    platform::WebView& /*view*/, const platform::NavigationAction& action, platform::DecisionHandler decide) {
  NSLog("%@-%@...navigationAction = %@", kClass,
        "webView:decidePolicyForNavigationAction:decisionHandler:", action);
  decide(platform::NavigationPolicy::Allow);
}

void MyWebViewWindowController::webView_decidePolicyForNavigationResponse_decisionHandler(
    platform::WebView& /*view*/, const platform::NavigationResponse& response,
    platform::DecisionHandler decide) {
  NSLog("%@-%@...response = %@", kClass,
        "webView:decidePolicyForNavigationResponse:decisionHandler:", response);
  decide(platform::NavigationPolicy::Allow);
}

void MyWebViewWindowController::webView_didStartProvisionalNavigation(platform::WebView& /*view*/) {
  NSLog("%@-%@...", kClass, "webView:didStartProvisionalNavigation:");
}

void MyWebViewWindowController::webView_didFinishNavigation(platform::WebView& view) {
  NSLog("%@-%@...webView.URL = %@", kClass, "webView:didFinishNavigation:", view.url());
}

}  // namespace lumo

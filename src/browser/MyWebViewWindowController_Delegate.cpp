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

void MyWebViewWindowController::webView_didFailProvisionalNavigation_withError(
    platform::WebView& /*view*/, const platform::WebError& error) {
  NSLog("%@-%@...error = %@", kClass, "webView:didFailProvisionalNavigation:withError:", error);
}

void MyWebViewWindowController::webView_didFailNavigation_withError(platform::WebView& /*view*/,
                                                                    const platform::WebError& error) {
  NSLog("%@-%@...error = %@", kClass, "webView:didFailNavigation:withError:", error);
}

void MyWebViewWindowController::webViewWebContentProcessDidTerminate(platform::WebView& /*view*/) {
  NSLog("%@-%@...", kClass, "webViewWebContentProcessDidTerminate:");
}

void MyWebViewWindowController::webView_runJavaScriptAlertPanelWithMessage_initiatedByFrame_completionHandler(
    platform::WebView& /*view*/, const std::string& message, const platform::UrlRequest& frameRequest,
    platform::Block done) {
  constexpr const char* kOperation =
      "webView:runJavaScriptAlertPanelWithMessage:initiatedByFrame:completionHandler:";
  NSLog("%@-%@...", kClass, kOperation);
  NSLog("%@-%@...frame.request = %@", kClass, kOperation, frameRequest);
  platform::Alert alert;
  alert.messageText = message;
  alert.addButtonWithTitle("OK");
  window_->beginAlert(alert, [done = std::move(done)](const platform::AlertResponse&) { done(); });
}

void MyWebViewWindowController::
    webView_runJavaScriptConfirmPanelWithMessage_initiatedByFrame_completionHandler(
        platform::WebView& /*view*/, const std::string& message, const platform::UrlRequest& frameRequest,
        std::function<void(bool)> done) {
  constexpr const char* kOperation =
      "webView:runJavaScriptConfirmPanelWithMessage:initiatedByFrame:completionHandler:";
  NSLog("%@-%@...", kClass, kOperation);
  NSLog("%@-%@...frame.request = %@", kClass, kOperation, frameRequest);
  platform::Alert alert;
  alert.messageText = message;
  alert.style = platform::AlertStyle::Informational;
  alert.addButtonWithTitle("OK");
  alert.addButtonWithTitle("Cancel");
  window_->beginAlert(alert, [done = std::move(done)](const platform::AlertResponse& response) {
    done(response.code == platform::kAlertFirstButtonReturn);
  });
}

void MyWebViewWindowController::
    webView_runJavaScriptTextInputPanelWithPrompt_defaultText_initiatedByFrame_completionHandler(
        platform::WebView& /*view*/, const std::string& prompt, const std::string& defaultText,
        const platform::UrlRequest& /*frameRequest*/, std::function<void(std::optional<std::string>)> done) {
  platform::Alert alert;
  alert.messageText = prompt;
  alert.style = platform::AlertStyle::Informational;
  alert.hasTextField = true;
  alert.textFieldValue = defaultText;
  alert.addButtonWithTitle("OK");
  alert.addButtonWithTitle("Cancel");
  window_->beginAlert(alert, [done = std::move(done)](const platform::AlertResponse& response) {
    done(response.code == platform::kAlertFirstButtonReturn ? std::optional(response.text) : std::nullopt);
  });
}

platform::WebView* MyWebViewWindowController::webView_createWebViewWithRequest(
    platform::WebView& view, const platform::UrlRequest& request) {
  constexpr const char* kOperation = "webView:createWebViewWithRequest:";
  NSLog("%@->%@....sender = %@", kClass, kOperation, static_cast<const platform::View&>(view));
  NSLog("%@->%@....request = %@", kClass, kOperation, request);
  return &view;
}

void MyWebViewWindowController::webViewDidClose(platform::WebView& /*view*/) {
  NSLog("%@-%@...", kClass, "webViewDidClose:");
}

}  // namespace lumo

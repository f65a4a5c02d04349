#include "browser/LegacyWebViewDelegate.h"
#include "browser/MyWebViewWindowController.h"
#include "platform/log.h"

// The resources of the legacy view, the windows and panels that its pages ask for, and what only logs.

namespace lumo {

using platform::NSLog;

namespace {

constexpr const char* kClass = "MyWebViewWindowController";

void logSender(const char* operation, const platform::WebView& view) {
  NSLog("%@->%@....sender = %@", kClass, operation, static_cast<const platform::View&>(view));
}

void logCall(const char* operation) {
  NSLog("%@->%@....", kClass, operation);
}

}  // namespace

std::optional<std::string> LegacyWebViewDelegate::webView_identifierForInitialRequest_fromDataSource(
    platform::WebView& view, const platform::UrlRequest& request, const platform::WebFrame& dataSource) {
  constexpr const char* kOperation = "webView:identifierForInitialRequest:fromDataSource:";
  logSender(kOperation, view);
  NSLog("%@->%@....request = %@", kClass, kOperation, request);
  NSLog("%@->%@....dataSource = %@", kClass, kOperation, dataSource);
  NSLog("");
  return std::nullopt;
}

void LegacyWebViewDelegate::webView_resource_willSendRequest_redirectResponse_fromDataSource(
    platform::WebView& view, const std::optional<std::string>& identifier,
    const platform::UrlRequest& request, const std::optional<platform::NavigationResponse>& redirectResponse,
    const platform::WebFrame& dataSource) {
  constexpr const char* kOperation = "webView:resource:willSendRequest:redirectResponse:fromDataSource:";
  logSender(kOperation, view);
  NSLog("%@->%@....identifier = %@", kClass, kOperation, identifier);
  NSLog("%@->%@....request = %@", kClass, kOperation, request);
  NSLog("%@->%@....redirectResponse = %@", kClass, kOperation, redirectResponse);
  NSLog("%@->%@....dataSource = %@", kClass, kOperation, dataSource);
  NSLog("");
}

platform::WebView* LegacyWebViewDelegate::webView_createWebViewWithRequest(
    platform::WebView& view, const platform::UrlRequest& request) {
  constexpr const char* kOperation = "webView:createWebViewWithRequest:";
  logSender(kOperation, view);
  NSLog("%@->%@....request = %@", kClass, kOperation, request);
  browser_.myWebViewWindowController = std::make_unique<MyWebViewWindowController>(platform_, browser_);
  browser_.myWebViewWindowController->showWindow();
  return &view;
}

platform::WebView* LegacyWebViewDelegate::webView_createWebViewModalDialogWithRequest(
    platform::WebView& view, const platform::UrlRequest& request) {
  constexpr const char* kOperation = "webView:createWebViewModalDialogWithRequest:";
  logSender(kOperation, view);
  NSLog("%@->%@....request = %@", kClass, kOperation, request);
  return &view;
}

void LegacyWebViewDelegate::webViewRunModal(platform::WebView& view) {
  logSender("webViewRunModal:", view);
}

void LegacyWebViewDelegate::webViewClose(platform::WebView& view) {
  logSender("webViewClose:", view);
}

void LegacyWebViewDelegate::webViewDidClose(platform::WebView& view) {
  webViewClose(view);
}

void LegacyWebViewDelegate::webView_decidePolicyForNavigationAction_decisionHandler(
    platform::WebView& /*view*/, const platform::NavigationAction& /*action*/,
    platform::DecisionHandler decide) {
  decide(platform::NavigationPolicy::Allow);
}

void LegacyWebViewDelegate::webView_decidePolicyForNavigationResponse_decisionHandler(
    platform::WebView& /*view*/, const platform::NavigationResponse& /*response*/,
    platform::DecisionHandler decide) {
  decide(platform::NavigationPolicy::Allow);
}

void LegacyWebViewDelegate::webView_didStartProvisionalNavigation(platform::WebView& /*view*/) {}

void LegacyWebViewDelegate::webView_didFinishNavigation(platform::WebView& /*view*/) {}

void LegacyWebViewDelegate::webView_didFailProvisionalNavigation_withError(
    platform::WebView& /*view*/, const platform::WebError& /*error*/) {}

void LegacyWebViewDelegate::webView_didFailNavigation_withError(platform::WebView& /*view*/,
                                                                const platform::WebError& /*error*/) {}

void LegacyWebViewDelegate::webViewWebContentProcessDidTerminate(platform::WebView& view) {
  browser_.webViewWebContentProcessDidTerminate(view);
}

void LegacyWebViewDelegate::webView_runJavaScriptAlertPanelWithMessage_initiatedByFrame_completionHandler(
    platform::WebView& view, const std::string& message, const platform::UrlRequest& frameRequest,
    platform::Block done) {
  browser_.webView_runJavaScriptAlertPanelWithMessage_initiatedByFrame_completionHandler(
      view, message, frameRequest, std::move(done));
}

void LegacyWebViewDelegate::webView_runJavaScriptConfirmPanelWithMessage_initiatedByFrame_completionHandler(
    platform::WebView& view, const std::string& message, const platform::UrlRequest& frameRequest,
    std::function<void(bool)> done) {
  browser_.webView_runJavaScriptConfirmPanelWithMessage_initiatedByFrame_completionHandler(
      view, message, frameRequest, std::move(done));
}

void LegacyWebViewDelegate::
    webView_runJavaScriptTextInputPanelWithPrompt_defaultText_initiatedByFrame_completionHandler(
        platform::WebView& view, const std::string& prompt, const std::string& defaultText,
        const platform::UrlRequest& frameRequest, std::function<void(std::optional<std::string>)> done) {
  browser_.webView_runJavaScriptTextInputPanelWithPrompt_defaultText_initiatedByFrame_completionHandler(
      view, prompt, defaultText, frameRequest, std::move(done));
}

void LegacyWebViewDelegate::webView_didCommitLoadForFrame(platform::WebView& /*view*/,
                                                          const platform::WebFrame& /*frame*/) {
  logCall("webView:didCommitLoadForFrame:");
}

void LegacyWebViewDelegate::webView_didChangeLocationWithinPageForFrame(platform::WebView& /*view*/,
                                                                        const platform::WebFrame& /*frame*/) {
  logCall("webView:didChangeLocationWithinPageForFrame:");
}

void LegacyWebViewDelegate::webView_didReceiveIcon_forFrame(platform::WebView& /*view*/,
                                                            const platform::WebFrame& /*frame*/) {
  logCall("webView:didReceiveIcon:forFrame:");
}

void LegacyWebViewDelegate::webView_didCancelClientRedirectForFrame(platform::WebView& /*view*/,
                                                                    const platform::WebFrame& /*frame*/) {
  logCall("webView:didCancelClientRedirectForFrame:");
}

void LegacyWebViewDelegate::webView_willPerformClientRedirectToURL_delay_fireDate_forFrame(
    platform::WebView& /*view*/, const platform::WebFrame& /*frame*/) {
  logCall("webView:willPerformClientRedirectToURL:delay:fireDate:forFrame:");
}

void LegacyWebViewDelegate::webView_didClearWindowObject_forFrame(platform::WebView& /*view*/,
                                                                  const platform::WebFrame& /*frame*/) {
  logCall("webView:didClearWindowObject:forFrame:");
}

void LegacyWebViewDelegate::webView_resource_didReceiveContentLength_fromDataSource(
    platform::WebView& /*view*/, const platform::WebFrame& /*frame*/) {
  logCall("webView:resource:didReceiveContentLength:fromDataSource:");
}

void LegacyWebViewDelegate::webView_plugInFailedWithError_dataSource(platform::WebView& /*view*/,
                                                                     const platform::WebFrame& /*frame*/) {
  logCall("webView:plugInFailedWithError:dataSource:");
}

void LegacyWebViewDelegate::webView_resource_didReceiveAuthenticationChallenge_fromDataSource(
    platform::WebView& /*view*/, const platform::WebFrame& /*frame*/) {
  logCall("webView:resource:didReceiveAuthenticationChallenge:fromDataSource:");
}

void LegacyWebViewDelegate::webView_resource_didCancelAuthenticationChallenge_fromDataSource(
    platform::WebView& /*view*/, const platform::WebFrame& /*frame*/) {
  logCall("webView:resource:didCancelAuthenticationChallenge:fromDataSource:");
}

void LegacyWebViewDelegate::webView_resource_didReceiveResponse_fromDataSource(
    platform::WebView& /*view*/, const std::optional<std::string>& /*identifier*/,
    const platform::NavigationResponse& /*response*/, const platform::WebFrame& /*dataSource*/) {
  logCall("webView:resource:didReceiveResponse:fromDataSource:");
}

void LegacyWebViewDelegate::webView_resource_didFinishLoadingFromDataSource(
    platform::WebView& /*view*/, const std::optional<std::string>& /*identifier*/,
    const platform::WebFrame& /*dataSource*/) {
  logCall("webView:resource:didFinishLoadingFromDataSource:");
}

void LegacyWebViewDelegate::webView_resource_didFailLoadingWithError_fromDataSource(
    platform::WebView& /*view*/, const std::optional<std::string>& /*identifier*/,
    const platform::WebError& /*error*/, const platform::WebFrame& /*dataSource*/) {
  logCall("webView:resource:didFailLoadingWithError:fromDataSource:");
}

}  // namespace lumo

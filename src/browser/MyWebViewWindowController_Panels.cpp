#include "browser/MyWebViewWindowController.h"
#include "platform/log.h"

// What a page's scripts ask the person, and the windows that pages ask for.

namespace lumo {

using platform::NSLog;

namespace {

constexpr const char* kClass = "MyWebViewWindowController";

void logPanel(const char* operation, const platform::UrlRequest& frameRequest) {
  NSLog("%@-%@...", kClass, operation);
  NSLog("%@-%@...frame.request = %@", kClass, operation, frameRequest);
}

}  // namespace

void MyWebViewWindowController::webView_runJavaScriptAlertPanelWithMessage_initiatedByFrame_completionHandler(
    platform::WebView& /*view*/, const std::string& message, const platform::UrlRequest& frameRequest,
    platform::Block done) {
  constexpr const char* kOperation =
      "webView:runJavaScriptAlertPanelWithMessage:initiatedByFrame:completionHandler:";
  logPanel(kOperation, frameRequest);
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
  logPanel(kOperation, frameRequest);
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
        const platform::UrlRequest& frameRequest, std::function<void(std::optional<std::string>)> done) {
  constexpr const char* kOperation =
      "webView:runJavaScriptTextInputPanelWithPrompt:defaultText:initiatedByFrame:completionHandler:";
  logPanel(kOperation, frameRequest);
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

#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/platform.h"
#include "platform/web_view.h"

namespace lumo {

class MyWebViewWindowController;

// What the browser window is for its legacy view: the view's frames, resources and panels. Nothing is decided
// before a page shows; the server's paths and its close header count when a frame has loaded, for every frame
// of the page. Takes effect only while the view is shown. Main queue only.
class LegacyWebViewDelegate final : public platform::WebViewDelegate, public platform::WebFrameDelegate {
 public:
  // Both outlive it.
  LegacyWebViewDelegate(platform::Platform& platform, MyWebViewWindowController& browser);
  ~LegacyWebViewDelegate() override;
  LegacyWebViewDelegate(const LegacyWebViewDelegate&) = delete;
  LegacyWebViewDelegate& operator=(const LegacyWebViewDelegate&) = delete;

  // Frames.
  void webView_didStartProvisionalLoadForFrame(platform::WebView& view,
                                               const platform::WebFrame& frame) override;
  void webView_didReceiveServerRedirectForProvisionalLoadForFrame(platform::WebView& view,
                                                                  const platform::WebFrame& frame) override;
  void webView_didCommitLoadForFrame(platform::WebView& view, const platform::WebFrame& frame) override;
  void webView_didReceiveTitle_forFrame(platform::WebView& view, const std::string& title,
                                        const platform::WebFrame& frame) override;
  // Follows the close header and the table of routes, and loads the very first page once more.
  void webView_didFinishLoadForFrame(platform::WebView& view, const platform::WebFrame& frame) override;
  void webView_didFailProvisionalLoadWithError_forFrame(platform::WebView& view,
                                                        const platform::WebError& error,
                                                        const platform::WebFrame& frame) override;
  void webView_didFailLoadWithError_forFrame(platform::WebView& view, const platform::WebError& error,
                                             const platform::WebFrame& frame) override;
  void webView_didChangeLocationWithinPageForFrame(platform::WebView& view,
                                                   const platform::WebFrame& frame) override;
  void webView_willCloseFrame(platform::WebView& view, const platform::WebFrame& frame) override;

  // Resources. None has an identifier, and each is asked for as the page wants it.
  std::optional<std::string> webView_identifierForInitialRequest_fromDataSource(
      platform::WebView& view, const platform::UrlRequest& request,
      const platform::WebFrame& dataSource) override;
  void webView_resource_willSendRequest_redirectResponse_fromDataSource(
      platform::WebView& view, const std::optional<std::string>& identifier,
      const platform::UrlRequest& request,
      const std::optional<platform::NavigationResponse>& redirectResponse,
      const platform::WebFrame& dataSource) override;
  void webView_resource_didReceiveResponse_fromDataSource(platform::WebView& view,
                                                          const std::optional<std::string>& identifier,
                                                          const platform::NavigationResponse& response,
                                                          const platform::WebFrame& dataSource) override;
  void webView_resource_didFinishLoadingFromDataSource(platform::WebView& view,
                                                       const std::optional<std::string>& identifier,
                                                       const platform::WebFrame& dataSource) override;
  void webView_resource_didFailLoadingWithError_fromDataSource(platform::WebView& view,
                                                               const std::optional<std::string>& identifier,
                                                               const platform::WebError& error,
                                                               const platform::WebFrame& dataSource) override;

  // This engine tells of none of these. They only log, as those above that have no other effect.
  void webView_didReceiveIcon_forFrame(platform::WebView& view, const platform::WebFrame& frame);
  void webView_didCancelClientRedirectForFrame(platform::WebView& view, const platform::WebFrame& frame);
  void webView_willPerformClientRedirectToURL_delay_fireDate_forFrame(platform::WebView& view,
                                                                      const platform::WebFrame& frame);
  void webView_didClearWindowObject_forFrame(platform::WebView& view, const platform::WebFrame& frame);
  void webView_resource_didReceiveContentLength_fromDataSource(platform::WebView& view,
                                                               const platform::WebFrame& dataSource);
  void webView_plugInFailedWithError_dataSource(platform::WebView& view,
                                                const platform::WebFrame& dataSource);
  void webView_resource_didReceiveAuthenticationChallenge_fromDataSource(
      platform::WebView& view, const platform::WebFrame& dataSource);
  void webView_resource_didCancelAuthenticationChallenge_fromDataSource(platform::WebView& view,
                                                                        const platform::WebFrame& dataSource);

  // The page's wishes. A modal dialogue opens in the view that asks for it.
  platform::WebView* webView_createWebViewWithRequest(platform::WebView& view,
                                                      const platform::UrlRequest& request) override;
  platform::WebView* webView_createWebViewModalDialogWithRequest(platform::WebView& view,
                                                                 const platform::UrlRequest& request);
  void webViewRunModal(platform::WebView& view);
  void webViewClose(platform::WebView& view);

  // The rest of what a view tells its delegate: navigations are allowed, panels are the browser window's, and
  // of loads the frames tell.
  void webView_decidePolicyForNavigationAction_decisionHandler(platform::WebView& view,
                                                               const platform::NavigationAction& action,
                                                               platform::DecisionHandler decide) override;
  void webView_decidePolicyForNavigationResponse_decisionHandler(platform::WebView& view,
                                                                 const platform::NavigationResponse& response,
                                                                 platform::DecisionHandler decide) override;
  void webView_didStartProvisionalNavigation(platform::WebView& view) override;
  void webView_didFinishNavigation(platform::WebView& view) override;
  void webView_didFailProvisionalNavigation_withError(platform::WebView& view,
                                                      const platform::WebError& error) override;
  void webView_didFailNavigation_withError(platform::WebView& view, const platform::WebError& error) override;
  void webViewWebContentProcessDidTerminate(platform::WebView& view) override;
  void webView_runJavaScriptAlertPanelWithMessage_initiatedByFrame_completionHandler(
      platform::WebView& view, const std::string& message, const platform::UrlRequest& frameRequest,
      platform::Block done) override;
  void webView_runJavaScriptConfirmPanelWithMessage_initiatedByFrame_completionHandler(
      platform::WebView& view, const std::string& message, const platform::UrlRequest& frameRequest,
      std::function<void(bool)> done) override;
  void webView_runJavaScriptTextInputPanelWithPrompt_defaultText_initiatedByFrame_completionHandler(
      platform::WebView& view, const std::string& prompt, const std::string& defaultText,
      const platform::UrlRequest& frameRequest,
      std::function<void(std::optional<std::string>)> done) override;
  void webViewDidClose(platform::WebView& view) override;

 private:
  void followCloseHeader(const platform::HeaderFields& fields);
  void followRoute(const platform::UrlRequest& request, const platform::HeaderFields& fields);
  void loadFirstPageAgain(const std::optional<platform::UrlRequest>& request);

  platform::Platform& platform_;
  MyWebViewWindowController& browser_;
  // Expires with the delegate, for what is posted to the main queue.
  std::shared_ptr<int> alive_ = std::make_shared<int>(0);
};

}  // namespace lumo

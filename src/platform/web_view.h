#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/alert.h"
#include "platform/property_list.h"
#include "platform/url.h"
#include "platform/view.h"

namespace platform {

enum class CachePolicy { UseProtocolCachePolicy = 0, ReloadIgnoringLocalCacheData = 1 };

// Header fields in the order received; names exactly as received, repeats joined by ", ", values as UTF-8.
using HeaderFields = std::vector<std::pair<std::string, std::string>>;

// The value of the field of exactly this name, or null.
const std::string* headerValue(const HeaderFields& fields, std::string_view name);
// The fields as "%@" prints a dictionary.
std::string description(const HeaderFields& fields);

// A request for a page. The time-out counts from the start and again from every redirect until the page
// commits; zero means none.
struct UrlRequest {
  Url url;
  CachePolicy cachePolicy = CachePolicy::UseProtocolCachePolicy;
  Millis timeout{0};
  HeaderFields headers;
};

std::string description(const UrlRequest& request);

// The platform's codes that the system tells apart; others are the engine's own.
inline constexpr int kErrorTimedOut = -1001;
inline constexpr int kErrorWebContentProcessTerminated = 2;
inline constexpr int kErrorFrameLoadInterrupted = 102;

struct WebError {
  int code = 0;
  std::string localizedDescription;
  // The address that failed, as text and parsed; absent when there was none.
  std::optional<std::string> failingUrlString;
};

std::string description(const WebError& error);

struct NavigationAction {
  UrlRequest request;
  bool isMainFrame = true;
};

// What the server answered to a navigation. Not HTTP (a file): no status, no fields.
struct NavigationResponse {
  std::optional<Url> url;
  bool isHttp = false;
  int statusCode = 0;
  HeaderFields headers;
  bool isMainFrame = true;
};

std::string description(const NavigationAction& action);
std::string description(const NavigationResponse& response);

enum class NavigationPolicy { Cancel, Allow };
using DecisionHandler = std::function<void(NavigationPolicy)>;

// An image of a page: 8 bits each of red, green, blue, alpha, rows without padding.
struct Image {
  int width = 0;
  int height = 0;
  std::vector<std::byte> pixels;
};

class WebView;

// Hears of a web view's loads and answers its questions, on the main queue. Not owned by the view. Decision
// and completion handlers are called exactly once; one that is dropped uncalled counts as cancel, so that the
// engine never waits.
class WebViewDelegate {
 public:
  virtual ~WebViewDelegate() = default;

  virtual void webView_decidePolicyForNavigationAction_decisionHandler(WebView& view,
                                                                       const NavigationAction& action,
                                                                       DecisionHandler decide) = 0;
  // Asked for the responses of sub-frames too. The view's URL is meanwhile that of the main frame's
  // navigation in progress.
  virtual void webView_decidePolicyForNavigationResponse_decisionHandler(WebView& view,
                                                                         const NavigationResponse& response,
                                                                         DecisionHandler decide) = 0;
  virtual void webView_didStartProvisionalNavigation(WebView& view) = 0;
  virtual void webView_didFinishNavigation(WebView& view) = 0;
  // Before anything of the page was shown, and after.
  virtual void webView_didFailProvisionalNavigation_withError(WebView& view, const WebError& error) = 0;
  virtual void webView_didFailNavigation_withError(WebView& view, const WebError& error) = 0;
  // The page is gone, and nothing loads it again by itself. What was on its way then and had not begun to
  // show is asked for again, at most twice; then it has failed with kErrorWebContentProcessTerminated. So is
  // an address of which the engine says nothing for a long time.
  virtual void webViewWebContentProcessDidTerminate(WebView& view) = 0;

  // `frameRequest` is the request of the frame that asks.
  virtual void webView_runJavaScriptAlertPanelWithMessage_initiatedByFrame_completionHandler(
      WebView& view, const std::string& message, const UrlRequest& frameRequest, Block done) = 0;
  virtual void webView_runJavaScriptConfirmPanelWithMessage_initiatedByFrame_completionHandler(
      WebView& view, const std::string& message, const UrlRequest& frameRequest,
      std::function<void(bool)> done) = 0;
  // The answer is absent when the person cancelled.
  virtual void webView_runJavaScriptTextInputPanelWithPrompt_defaultText_initiatedByFrame_completionHandler(
      WebView& view, const std::string& prompt, const std::string& defaultText,
      const UrlRequest& frameRequest, std::function<void(std::optional<std::string>)> done) = 0;
  // The page asks for a new window. The view to use (this one: the page opens in it), or null for none.
  virtual WebView* webView_createWebViewWithRequest(WebView& view, const UrlRequest& request) = 0;
  virtual void webViewDidClose(WebView& view) = 0;
};

// One frame of a page, the main one or one inside it, and how far its load has come.
struct WebFrame {
  bool isMain = true;
  // What was asked for, as it stands after the redirects so far; absent for a text of the system's own that
  // has no address.
  std::optional<UrlRequest> request;
  // What was answered, absent until it has come. Not HTTP for a text of the system's own.
  std::optional<NavigationResponse> response;
};

std::string description(const WebFrame& frame);

// Hears of the loads of every frame of a view and of each resource that they consist of, on the main queue.
// Not owned by the view. A load that a newer one has replaced is not told of any more; a frame that shows
// nothing of a server (its text is an attribute of the page) has no failures.
class WebFrameDelegate {
 public:
  virtual ~WebFrameDelegate() = default;

  virtual void webView_didStartProvisionalLoadForFrame(WebView& view, const WebFrame& frame) = 0;
  virtual void webView_didReceiveServerRedirectForProvisionalLoadForFrame(WebView& view,
                                                                          const WebFrame& frame) = 0;
  virtual void webView_didCommitLoadForFrame(WebView& view, const WebFrame& frame) = 0;
  virtual void webView_didReceiveTitle_forFrame(WebView& view, const std::string& title,
                                                const WebFrame& frame) = 0;
  virtual void webView_didFinishLoadForFrame(WebView& view, const WebFrame& frame) = 0;
  // Before anything of the frame was shown, and after.
  virtual void webView_didFailProvisionalLoadWithError_forFrame(WebView& view, const WebError& error,
                                                                const WebFrame& frame) = 0;
  virtual void webView_didFailLoadWithError_forFrame(WebView& view, const WebError& error,
                                                     const WebFrame& frame) = 0;
  // The page has changed its own address, or the person has gone to another place in it.
  virtual void webView_didChangeLocationWithinPageForFrame(WebView& view, const WebFrame& frame) = 0;
  // A new page takes the place of this main frame.
  virtual void webView_willCloseFrame(WebView& view, const WebFrame& frame) = 0;

  // What stands for the resource in the calls that follow; absent for no such thing. `dataSource` is here and
  // below the main frame: which frame a resource belongs to is not known.
  virtual std::optional<std::string> webView_identifierForInitialRequest_fromDataSource(
      WebView& view, const UrlRequest& request, const WebFrame& dataSource) = 0;
  // Before the request, and before each that follows a redirect, which is absent for the first.
  virtual void webView_resource_willSendRequest_redirectResponse_fromDataSource(
      WebView& view, const std::optional<std::string>& identifier, const UrlRequest& request,
      const std::optional<NavigationResponse>& redirectResponse, const WebFrame& dataSource) = 0;
  virtual void webView_resource_didReceiveResponse_fromDataSource(
      WebView& view, const std::optional<std::string>& identifier, const NavigationResponse& response,
      const WebFrame& dataSource) = 0;
  virtual void webView_resource_didFinishLoadingFromDataSource(WebView& view,
                                                               const std::optional<std::string>& identifier,
                                                               const WebFrame& dataSource) = 0;
  virtual void webView_resource_didFailLoadingWithError_fromDataSource(
      WebView& view, const std::optional<std::string>& identifier, const WebError& error,
      const WebFrame& dataSource) = 0;
};

// A page of the web engine. Main queue only. A dormant view (the legacy one of a window description) costs
// nothing until it is first shown or loaded: it answers from the settings and creates its engine view on
// first use.
class WebView : public virtual View {
 public:
  virtual void setDelegate(WebViewDelegate* delegate) = 0;
  // Frames and resources are told of from the next load on. Beside the delegate, and none at first.
  virtual void setFrameDelegate(WebFrameDelegate* delegate) = 0;

  virtual void load(const UrlRequest& request) = 0;
  // Shows a text of the system's own making. Without a base address the page has none.
  virtual void loadHTMLString(const std::string& html, const std::optional<Url>& base) = 0;
  // The address of the main frame's navigation in progress during a policy decision, else the committed one;
  // absent for none.
  virtual std::optional<Url> url() const = 0;
  virtual void goBack() = 0;
  virtual void goForward() = 0;
  virtual double estimatedProgress() const = 0;

  // Runs a script; `completion` gets its value (absent for undefined and null) or an error, once, always. The
  // text "navigator.userAgent" is answered from the settings, without a process.
  virtual void evaluateJavaScript(
      const std::string& script,
      std::function<void(std::optional<PropertyList> result, std::optional<WebError> error)> completion) = 0;
  // The same at once, for what needs no process ("navigator.userAgent"); absent for every other script.
  virtual std::optional<std::string> stringByEvaluatingJavaScriptFromString(const std::string& script) = 0;
  // Absent until one is set. Holds from the next request on.
  virtual std::optional<std::string> customUserAgent() const = 0;
  virtual void setCustomUserAgent(const std::string& agent) = 0;

  // A picture of the whole view as it is laid out; absent when it failed or took longer than 10 s.
  virtual void takeSnapshot(std::function<void(std::optional<Image>)> completion) = 0;
  // Empties the engine's memory and disk cache and uses none in this run. Cookies and storage stay. All
  // views.
  virtual void disableCache() = 0;
};

}  // namespace platform

#include "browser/LegacyWebViewDelegate.h"

#include "browser/MyWebViewWindowController.h"
#include "browser/ServerRoutes.h"
#include "platform/log.h"
#include "platform/strings.h"

// The frames of the legacy view: when a load begins, has come, or fails. The lines of the log are those of
// the browser window, whose part this is.

namespace lumo {

using platform::NSLog;

namespace {

constexpr const char* kClass = "MyWebViewWindowController";

void logSender(const char* operation, const platform::WebView& view) {
  NSLog("%@->%@....sender = %@", kClass, operation, static_cast<const platform::View&>(view));
}

void logFrame(const char* operation, const platform::WebFrame& frame) {
  NSLog("%@->%@....frame = %@", kClass, operation, frame);
}

std::optional<platform::HeaderFields> headersOf(const std::optional<platform::UrlRequest>& request) {
  return request ? std::optional(request->headers) : std::nullopt;
}

}  // namespace

LegacyWebViewDelegate::LegacyWebViewDelegate(platform::Platform& platform, MyWebViewWindowController& browser)
    : platform_(platform), browser_(browser) {}

LegacyWebViewDelegate::~LegacyWebViewDelegate() = default;

void LegacyWebViewDelegate::webView_didStartProvisionalLoadForFrame(platform::WebView& /*view*/,
                                                                    const platform::WebFrame& frame) {
  NSLog("%@->%@....", kClass, "webView:didStartProvisionalLoadForFrame:");
  NSLog("req = %@", frame.request);
  NSLog("headers = %@", headersOf(frame.request));
  NSLog("cache policy = %@", frame.request
                                 ? std::optional(std::to_string(static_cast<int>(frame.request->cachePolicy)))
                                 : std::nullopt);
  browser_.startIndicator();
}

void LegacyWebViewDelegate::webView_didReceiveServerRedirectForProvisionalLoadForFrame(
    platform::WebView& /*view*/, const platform::WebFrame& frame) {
  NSLog("%@->%@....", kClass, "webView:didReceiveServerRedirectForProvisionalLoadForFrame:");
  NSLog("req = %@", frame.request);
  NSLog("headers = %@", headersOf(frame.request));
}

void LegacyWebViewDelegate::webView_didReceiveTitle_forFrame(platform::WebView& view,
                                                             const std::string& title,
                                                             const platform::WebFrame& frame) {
  constexpr const char* kOperation = "webView:didReceiveTitle:forFrame:";
  logSender(kOperation, view);
  logFrame(kOperation, frame);
  NSLog("%@->%@....title = %@", kClass, kOperation, title);
  NSLog("");
}

void LegacyWebViewDelegate::webView_didFinishLoadForFrame(platform::WebView& view,
                                                          const platform::WebFrame& frame) {
  constexpr const char* kOperation = "webView:didFinishLoadForFrame:";
  logSender(kOperation, view);
  logFrame(kOperation, frame);
  browser_.stopIndicator();
  const std::optional<platform::UrlRequest> request = frame.request;
  NSLog("req = %@", request);
  NSLog("headers = %@", headersOf(request));
  NSLog("response before = %@", frame.response);
  platform::HeaderFields fields;
  if (frame.response && frame.response->isHttp) {
    fields = frame.response->headers;
  } else {
    NSLog("unable to convert NSURLResponse to NSHTTPURLResponse");
  }
  NSLog("allHeaderFields = %@", fields);
  followCloseHeader(fields);
  NSLog("%@->%@....req = %@", kClass, kOperation, request);
  NSLog("%@->%@....url = %@", kClass, kOperation, request ? std::optional(request->url) : std::nullopt);
  NSLog("%@->%@....url.path = %@", kClass, kOperation, request ? request->url.path() : std::nullopt);
  if (request) {
    followRoute(*request, fields);
  }
  loadFirstPageAgain(request);
}

void LegacyWebViewDelegate::followCloseHeader(const platform::HeaderFields& fields) {
  const std::string* value = platform::headerValue(fields, kScannerHeader);
  if (value == nullptr) {
    return;
  }
  NSLog("Found Glimmerpad-Plus-Scanner = %@", *value);
  if (!platform::equalIgnoringCase(*value, "close")) {
    return;
  }
  platform::SerialQueue(platform_.dispatch)
      .async([this, &dispatch = platform_.dispatch, alive = std::weak_ptr(alive_)] {
        dispatch.main().async([this, alive] {
          // Not as a person closes it, which would quit.
          if (!alive.expired() && browser_.window() != nullptr) {
            browser_.window()->close();
          }
        });
      });
}

// What is released are the fields as they came, without the page's address.
void LegacyWebViewDelegate::followRoute(const platform::UrlRequest& request,
                                        const platform::HeaderFields& fields) {
  const std::optional<std::string> path = request.url.path();
  const LegacyRoute* route = legacyRoute(path);
  if (route == nullptr) {
    return;
  }
  if (route->isLogged) {
    NSLog("%@-> closing window for path = %@", "webView:didFinishLoadForFrame:", path);
  }
  switch (route->action) {
    case LegacyAction::Log:
      NSLog("need to handle [%@]", path);
      break;
    case LegacyAction::Save:
      browser_.handleTerminateWithRegistrationSave();
      break;
    case LegacyAction::Release:
      browser_.handleTerminateWithRegistrationOrdersPhotoStationData(fields);
      break;
  }
}

void LegacyWebViewDelegate::loadFirstPageAgain(const std::optional<platform::UrlRequest>& request) {
  if (!browser_.fFirstTime.exchange(false) || !request) {
    return;
  }
  for (platform::WebView* view : {browser_.ibWebView, browser_.ibWKWebView}) {
    if (view != nullptr && !view->isHidden()) {
      view->load(*request);
    }
  }
}

void LegacyWebViewDelegate::webView_didFailProvisionalLoadWithError_forFrame(
    platform::WebView& view, const platform::WebError& error, const platform::WebFrame& frame) {
  constexpr const char* kOperation = "webView:didFailProvisionalLoadWithError:forFrame:";
  logSender(kOperation, view);
  logFrame(kOperation, frame);
  NSLog("%@->%@....ERROR = %@", kClass, kOperation, error.localizedDescription);
  browser_.stopIndicator();
  browser_.handleWebViewError(error);
}

void LegacyWebViewDelegate::webView_didFailLoadWithError_forFrame(platform::WebView& /*view*/,
                                                                  const platform::WebError& error,
                                                                  const platform::WebFrame& frame) {
  constexpr const char* kOperation = "webView:didFailLoadWithError:forFrame:";
  NSLog("%@->%@....", kClass, kOperation);
  logFrame(kOperation, frame);
  NSLog("%@->%@....ERROR = %@", kClass, kOperation, error.localizedDescription);
  browser_.stopIndicator();
  browser_.handleWebViewError(error);
}

void LegacyWebViewDelegate::webView_willCloseFrame(platform::WebView& view, const platform::WebFrame& frame) {
  constexpr const char* kOperation = "webView:willCloseFrame:";
  logSender(kOperation, view);
  logFrame(kOperation, frame);
  NSLog("req = %@", frame.request);
}

}  // namespace lumo

#include "app/PreferenceKeys.h"
#include "browser/FieldFocus.h"
#include "browser/MyWebViewWindowController.h"
#include "platform/log.h"
#include "platform/user_defaults.h"

// What the browser does when a page has begun and finished to load.

namespace lumo {

using platform::NSLog;

namespace {

constexpr const char* kClass = "MyWebViewWindowController";
// The page's own start-up code of that turn comes first.
constexpr platform::Millis kBeforeFocus{10};

}  // namespace

void MyWebViewWindowController::webView_didStartProvisionalNavigation(platform::WebView& /*view*/) {
  NSLog("%@-%@...", kClass, "webView:didStartProvisionalNavigation:");
  startIndicator();
}

void MyWebViewWindowController::webView_didFinishNavigation(platform::WebView& view) {
  constexpr const char* kOperation = "webView:didFinishNavigation:";
  const std::optional<platform::Url> url = view.url();
  const std::optional<std::string> path = url ? url->path() : std::nullopt;
  NSLog("%@-%@...webView.URL = %@", kClass, kOperation, url);
  NSLog("%@-%@...webView.URL.query = %@", kClass, kOperation, url ? url->query() : std::nullopt);
  if (isFocusPath(path, platform_.defaults.stringForKey(prefPathNamesToForceFocus))) {
    NSLog("%@-%@...path = [%@]", kClass, kOperation, path);
    focusFieldSoon(view);
  }
  stopIndicator();
  NSLog("%@-%@...webView.customUserAgent = [%@]", kClass, kOperation, view.customUserAgent());
}

void MyWebViewWindowController::focusFieldSoon(platform::WebView& view) {
  const std::string script = focusScript(platform_.defaults.stringForKey(prefFirstFocusWebFieldByIdentifier));
  platform_.dispatch.global().after(
      kBeforeFocus, [&dispatch = platform_.dispatch, &view, shown = view.lifetime(), script] {
        dispatch.main().async([&view, shown, script] {
          if (shown.expired()) {
            return;
          }
          view.evaluateJavaScript(script, [](const std::optional<platform::PropertyList>& result,
                                             const std::optional<platform::WebError>& error) {
            if (result) {
              NSLog("result = %@", *result);
            }
            if (error) {
              NSLog("error = %@", *error);
            }
          });
        });
      });
}

}  // namespace lumo

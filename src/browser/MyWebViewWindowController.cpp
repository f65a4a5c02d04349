#include "browser/MyWebViewWindowController.h"

#include "app/PreferenceKeys.h"
#include "browser/LegacyWebViewDelegate.h"
#include "dropview/MyDragDropView.h"
#include "platform/application.h"
#include "platform/bundle.h"
#include "platform/log.h"
#include "platform/user_defaults.h"
#include "preferences/MyPreferencesWindowController.h"
#include "support/LumoNSViewAdditions.h"
#include "support/NotificationNames.h"

// The window's set-up and its delegate; what the window does stands in the files named by concern beside this
// one.

namespace lumo {

using platform::NSLog;

namespace {

constexpr const char* kClass = "MyWebViewWindowController";
// For the queue's label where the bundle has no identifier.
constexpr const char* kApplicationIdentifier = "com.lumo.LumoBrowser";
constexpr platform::Color kLightGray{2.0 / 3, 2.0 / 3, 2.0 / 3, 1};
constexpr double kProgressViewOpacity = 0.7;

std::string processQueueLabel(const platform::Bundle& bundle) {
  const auto identifier = bundle.bundleIdentifier();
  return (identifier && !identifier->empty() ? *identifier : kApplicationIdentifier) +
         platform::stringWithFormat(".taskqueue1.%@", "webviewProcessQueue");
}

}  // namespace

std::string description(const Sender& sender) {
  if (const platform::View* view = sender.control()) {
    return platform::description(*view);
  }
  return sender.address() == nullptr ? "(null)" : *sender.address();
}

MyWebViewWindowController::MyWebViewWindowController(platform::Platform& platform)
    : MyWebViewWindowController(
          platform, platform::SerialQueue(platform.dispatch, processQueueLabel(platform.bundle))) {}

MyWebViewWindowController::MyWebViewWindowController(platform::Platform& platform,
                                                     const MyWebViewWindowController& owner)
    : MyWebViewWindowController(platform, owner.webviewProcessQueue_) {}

MyWebViewWindowController::MyWebViewWindowController(platform::Platform& platform,
                                                     platform::SerialQueue queue)
    : platform_(platform), webviewProcessQueue_(std::move(queue)) {
  window_ = platform_.windows.loadWindow(kClass);
  if (window_ == nullptr) {
    return;
  }
  window_->setDelegate(this);
  connectOutlets();
  connectActions();
  awakeFromNib();
  windowDidLoad();
}

MyWebViewWindowController::~MyWebViewWindowController() {
  for (const auto token : observers_) {
    platform_.notifications.removeObserver(token);
  }
  myPreferencesWindowController.reset();
  myWebViewWindowController.reset();
  if (ibWebView != nullptr) {
    ibWebView->setDelegate(nullptr);
    ibWebView->setFrameDelegate(nullptr);
  }
  if (ibWKWebView != nullptr) {
    ibWKWebView->setDelegate(nullptr);
  }
  if (window_ != nullptr) {
    window_->setDelegate(nullptr);
  }
}

void MyWebViewWindowController::showWindow() {
  if (window_ == nullptr) {
    return;
  }
  window_->makeKeyAndOrderFront();
  // Keys, and the scanners that act as keyboards, belong to the page.
  for (platform::WebView* view : visibleWebViews()) {
    window_->makeFirstResponder(*view);
  }
}

void MyWebViewWindowController::connectOutlets() {
  ibTextField = dynamic_cast<platform::TextField*>(window_->viewNamed("ibTextField"));
  ibWebView = dynamic_cast<platform::WebView*>(window_->viewNamed("ibWebView"));
  ibWKWebView = dynamic_cast<platform::WebView*>(window_->viewNamed("ibWKWebView"));
  ibProgressIndicator = dynamic_cast<platform::ProgressIndicator*>(window_->viewNamed("ibProgressIndicator"));
  ibProgressIndicator2 =
      dynamic_cast<platform::ProgressIndicator*>(window_->viewNamed("ibProgressIndicator2"));
  ibChildWindow = window_->overlay();
  if (ibWebView != nullptr) {
    legacyDelegate_ = std::make_unique<LegacyWebViewDelegate>(platform_, *this);
    ibWebView->setDelegate(legacyDelegate_.get());
    ibWebView->setFrameDelegate(legacyDelegate_.get());
  }
  if (auto* place = dynamic_cast<platform::DropView*>(window_->viewNamed("ibDragDropView"))) {
    dragDropView_ = std::make_shared<MyDragDropView>(platform_, *place);
    dragDropView_->awakeFromNib();
    ibDragDropView = dragDropView_;
  }
}

void MyWebViewWindowController::connectActions() {
  using Action = void (MyWebViewWindowController::*)(const Sender&);
  const std::pair<const char*, Action> actions[] = {
      {"ibToolbarGoButton:", &MyWebViewWindowController::ibToolbarGoButton},
      {"ibToolbarTextField:", &MyWebViewWindowController::ibToolbarTextField},
      {"ibToolbarSettingsButton:", &MyWebViewWindowController::ibToolbarSettingsButton},
      {"ibToolbarSegmentedControl1:", &MyWebViewWindowController::ibToolbarSegmentedControl1},
      {"ibHomeButton:", &MyWebViewWindowController::ibHomeButton},
      {"ibShowNavBar:", &MyWebViewWindowController::ibShowNavBar},
  };
  for (const auto& [name, action] : actions) {
    window_->setAction(name, [this, handler = action](platform::View& sender) { (this->*handler)(&sender); });
  }
}

void MyWebViewWindowController::awakeFromNib() {
  NSLog("%@->%@....", kClass, "awakeFromNib");
  if (ibWebView != nullptr) {
    ibWebView->setHidden(true);
  }
  platform::View& content = window_->contentView();
  if (ibWKWebView == nullptr) {
    madeWebView_ = platform_.windows.makeWebView(content.frame());
    ibWKWebView = madeWebView_.get();
    if (ibWKWebView != nullptr) {
      content.addSubviewAbove(*ibWKWebView, ibWebView);
      ibWKWebView->setHidden(false);
    }
  }
  if (ibWKWebView != nullptr) {
    ibWKWebView->setDelegate(this);
    ibWKWebView->setFrame(content.frame());
    webViewHeight_ = std::make_shared<LayoutConstraint>(
        LayoutConstraint{ibWKWebView->frame().height - content.frame().height});
    ibWebViewContraintHeight = webViewHeight_;
  }
  if (const auto dropView = ibDragDropView.lock()) {
    dropView->setFrame(content.frame());
  }
}

void MyWebViewWindowController::windowDidLoad() {
  NSLog("%@->%@....", kClass, "windowDidLoad");
  fIsPrintingReceipt = false;
  window_->setLevel(platform::kStatusWindowLevel);
  const auto constraint = ibWebViewContraintHeight.lock();
  ibWebViewOriginalConstant = constraint == nullptr ? 0 : constraint->constant;
  adjustWebViewForNavigationBar({});
  observers_.push_back(platform_.notifications.addObserver(
      kShowNavBar, [this](const platform::Notification& note) { handleShowNavBarNotification(note); }));
  observers_.push_back(platform_.notifications.addObserver(
      kTerminateWithOutRegistrationSave,
      [this](const platform::Notification& note) { handleTerminateWithOutRegistrationSave(note); }));
  fFirstTime = true;
  window_->setLevel(platform_.defaults.boolForKey(prefWindowAlwaysStatusLevel)
                        ? platform::kStatusWindowLevel
                        : platform::kNormalWindowLevel);
  setUpUserAgents();
  if (platform_.defaults.boolForKey(prefClearCacheAtLaunch) && ibWKWebView != nullptr) {
    ibWKWebView->disableCache();
  }
  setUpOverlay();
}

void MyWebViewWindowController::setUpUserAgents() {
  constexpr const char* script = "navigator.userAgent";
  const auto suffix = platform_.defaults.stringForKey(prefThisUserAgent);
  const auto withSuffix = [suffix](const std::string& agent) {
    return suffix ? agent + platform::stringWithFormat(" %@", *suffix) : agent;
  };
  if (ibWebView != nullptr) {
    const auto agent = ibWebView->stringByEvaluatingJavaScriptFromString(script);
    ibWebView->setCustomUserAgent(withSuffix(agent.value_or("")));
    NSLog("self.ibWebView.customUserAgent = %@", ibWebView->customUserAgent());
  }
  if (ibWKWebView != nullptr) {
    ibWKWebView->evaluateJavaScript(script, [this, alive = std::weak_ptr(alive_), withSuffix](
                                                const std::optional<platform::PropertyList>& result,
                                                const std::optional<platform::WebError>& error) {
      const std::string* agent = result ? result->as<std::string>() : nullptr;
      if (alive.expired() || error || agent == nullptr) {
        return;
      }
      ibWKWebView->setCustomUserAgent(withSuffix(*agent));
      NSLog("self.ibWKWebView.customUserAgent = %@", ibWKWebView->customUserAgent());
    });
  }
}

void MyWebViewWindowController::setUpOverlay() {
  if (ibChildWindow == nullptr) {
    return;
  }
  NSLog("self.window.frame = %@", window_->frame());
  fIsPrintingReceipt = false;
  ibChildWindow->setOpaque(false);
  ibChildWindow->setBackgroundColor(std::nullopt);
  ibChildWindow->setAlphaValue(1.0);
  ibChildWindow->setFrame(window_->frame());
  ibChildWindow->setLevel(platform::kStatusWindowLevel);
  platform::View* progress = LumoNSViewAdditions::findViewWithIdentifier_viewType(
      ibChildWindow->contentView(), "progressview", platform::ViewKind::View);
  if (progress != nullptr) {
    progress->setBackgroundColor(kLightGray);
    progress->setOpacity(kProgressViewOpacity);
  }
}

std::vector<platform::WebView*> MyWebViewWindowController::visibleWebViews() const {
  std::vector<platform::WebView*> views;
  for (platform::WebView* view : {ibWebView, ibWKWebView}) {
    if (view != nullptr && !view->isHidden()) {
      views.push_back(view);
    }
  }
  return views;
}

bool MyWebViewWindowController::windowShouldClose(platform::Window& /*window*/) {
  NSLog("%@->%@....", kClass, "windowShouldClose:");
  platform_.dispatch.global().async([&platform = platform_] {
    platform.dispatch.main().async([&platform] { platform.application.terminate(); });
  });
  return false;
}

void MyWebViewWindowController::windowDidResize(platform::Window& window) {
  NSLog("%@->%@....notification = %@...", kClass, "windowDidResize:", window.frame());
  if (&window == window_.get() && ibChildWindow != nullptr) {
    ibChildWindow->setFrame(window.frame());
  }
}

void MyWebViewWindowController::windowDidEnterFullScreen(platform::Window& /*window*/) {
  NSLog("%@->%@....", kClass, "windowDidEnterFullScreen:");
}

}  // namespace lumo

#include <utility>

#include "app/PreferenceKeys.h"
#include "browser/MyWebViewWindowController.h"
#include "browser/WindowMode.h"
#include "platform/application.h"
#include "platform/log.h"
#include "platform/user_defaults.h"

// The window modes that the preferences choose.

namespace lumo {

using platform::NSLog;

namespace {

constexpr const char* kClass = "MyWebViewWindowController";

}  // namespace

void MyWebViewWindowController::adjustWebViewForNavigationBar(const Sender& /*sender*/) {
  if (window_ == nullptr) {
    return;
  }
  const platform::UserDefaults& defaults = platform_.defaults;
  const bool showNavigationBar = defaults.boolForKey(prefShowNavigationBar);
  const bool showWindowTitle = defaults.boolForKey(prefShowWindowTitle);
  const bool showMenuBar = defaults.boolForKey(prefShowMenuBar);
  const bool fullSizeContentView = defaults.boolForKey(prefFullSizeContentView);
  platform_.application.setMenuBarVisible(showMenuBar);
  makeWindowFullScreen();
  window_->setToolbarVisible(showNavigationBar);
  // The title bar itself is never hidden, whatever prefShowWindowTitleBar says.
  window_->setTitleVisible(showWindowTitle);
  window_->setStyleMask(styleMaskWithFullSizeContent(window_->styleMask(), fullSizeContentView));
  // Once more, since a change of the screen mode may have altered it.
  platform_.application.setMenuBarVisible(showMenuBar);
}

void MyWebViewWindowController::ibShowNavBar(const Sender& sender) {
  NSLog("%@->%@....", kClass, "ibShowNavBar:");
  adjustWebViewForNavigationBar(sender);
}

void MyWebViewWindowController::handleShowNavBarNotification(const platform::Notification& /*notification*/) {
  NSLog("%@->%@....", kClass, "handleShowNavBarNotification:");
  // Observers run on the poster's thread; windows belong to the main queue.
  platform_.dispatch.syncOnMain([this] { adjustWebViewForNavigationBar({}); });
}

void MyWebViewWindowController::makeWindowFullScreen() {
  NSLog("%@->%@....", kClass, "makeWindowFullScreen");
  const std::vector<platform::Rect> screens = platform_.windows.screens();
  if (window_ == nullptr || screens.empty()) {
    return;
  }
  const platform::Rect screen = screens.front();
  const bool forced = platform_.defaults.boolForKey(prefForceFullScreen);
  const auto onMain = [this](platform::Block change) {
    platform_.dispatch.main().async([alive = std::weak_ptr(alive_), change = std::move(change)] {
      if (!alive.expired()) {
        change();
      }
    });
  };
  switch (fullScreenStep(screen, window_->frame(), forced)) {
    case FullScreenStep::Nothing:
      break;
    case FullScreenStep::Toggle:
      NSLog("NEED TO TOOGGLE TO SMALLER SIZE....");
      // At the start two requests come before the main queue runs; a second toggle would undo the first.
      if (!std::exchange(toggleIsPosted_, true)) {
        onMain([this] {
          toggleIsPosted_ = false;
          window_->toggleFullScreen();
        });
      }
      break;
    case FullScreenStep::CoverScreen:
      onMain([this, screen] { window_->setFrame(screen, true); });
      break;
  }
}

}  // namespace lumo

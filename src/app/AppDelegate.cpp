#include "app/AppDelegate.h"

#include "app/PreferenceKeys.h"
#include "browser/MyWebViewWindowController.h"
#include "platform/log.h"
#include "platform/user_defaults.h"
#include "support/NotificationNames.h"

// Life of the application after class initialisation.

namespace lumo {

using platform::NSLog;

namespace {

constexpr const char* kClass = "AppDelegate";

}  // namespace

AppDelegate::AppDelegate(platform::Platform& platform)
    : platform_(platform), openQueue_(platform.dispatch, "AppDelegate.open") {}

AppDelegate::~AppDelegate() {
  for (const auto token : observers_) {
    platform_.notifications.removeObserver(token);
  }
}

void AppDelegate::applicationWillFinishLaunching() {
  NSLog("%@->%@....", kClass, "applicationWillFinishLaunching:");
  platform_.defaults.synchronize();
  fDoTerminateNow = false;
  platform_.application.setMenuBarVisible(platform_.defaults.boolForKey(prefShowMenuBar));
  myWebViewWindowController = std::make_unique<MyWebViewWindowController>(platform_);
  connectMenu();
  myWebViewWindowController->showWindow();
  myWebViewWindowController->makeWindowFullScreen();
}

void AppDelegate::connectMenu() {
  platform::Application& application = platform_.application;
  MyWebViewWindowController* browser = myWebViewWindowController.get();
  application.setMenuAction("ibReloadPage:", [this] { ibReloadPage(); });
  application.setMenuAction("ibOpenPreferencesWindow:", [this] { ibOpenPreferencesWindow(); });
  application.setMenuAction("ibBringToFrontButton:", [this] { ibBringToFrontButton(); });
  application.setMenuAction("ibHomeButton:", [browser] { browser->ibHomeButton({}); });
  application.setMenuAction("ibBackButton:", [browser] { browser->ibBackButton({}); });
  application.setMenuAction("ibForwardButton:", [browser] { browser->ibForwardButton({}); });
  application.setMenuAction("terminate:", [&application] { application.terminate(); });
}

void AppDelegate::applicationDidFinishLaunching() {
  NSLog("%@->%@....", kClass, "applicationDidFinishLaunching:");
  platform_.application.setServicesProvider(this);
  observers_.push_back(platform_.notifications.addObserver(
      kAddFromString, [this](const platform::Notification& note) { handleDragDropNotification(note); }));
  observers_.push_back(platform_.notifications.addObserver(
      kTerminateNow, [this](const platform::Notification& note) { handleTerminateNowNotifcation(&note); }));
  // The posted blocks may run when the delegate is gone; the platform outlives both.
  const std::weak_ptr<int> alive(alive_);
  platform::Dispatch& dispatch = platform_.dispatch;
  if (platform_.defaults.boolForKey(prefDoAutoLoadUrlAtStartup)) {
    platform::SerialQueue(dispatch).async([this, alive, &dispatch] {
      dispatch.main().async([this, alive] {
        if (alive.expired()) {
          return;
        }
        NSLog("%@->%@....11111111111111111111111111111111111111111........", kClass,
              "applicationDidFinishLaunching:");
        myWebViewWindowController->ibHomeButton({});
      });
    });
  }
  dispatch.global().async([this, alive, &dispatch] {
    dispatch.main().async([this, alive] {
      if (!alive.expired()) {
        ibBringToFrontButton();
      }
    });
  });
}

void AppDelegate::ibReloadPage() {
  myWebViewWindowController->ibGoButton({});
}

void AppDelegate::ibOpenPreferencesWindow() {
  NSLog("%@->%@....", kClass, "ibOpenPreferencesWindow:");
  NSLog("%@->%@....", kClass, "ibOpenPreferencesWindow:");
  myWebViewWindowController->ibOpenPreferences({});
}

void AppDelegate::ibBringToFrontButton() {
  platform_.application.activate(platform::kActivateAllWindows | platform::kActivateIgnoringOtherApps);
  if (window != nullptr) {
    window->orderFront();
  }
}

void AppDelegate::applicationDidResignActive() {
  if (platform_.defaults.boolForKey(prefKeepAppActiveAlways)) {
    ibBringToFrontButton();
  }
}

}  // namespace lumo

#include "preferences/MyPreferencesWindowController.h"

#include <utility>

#include "app/PreferenceKeys.h"
#include "platform/application.h"
#include "platform/bundle.h"
#include "platform/log.h"
#include "platform/notification_center.h"
#include "platform/settings_form.h"
#include "platform/user_defaults.h"
#include "preferences/VersionLine.h"
#include "support/NotificationNames.h"
#include "support/SourceRevision.h"
#include "support/ZELKOR_NSStringAdditions.h"

// The window; tests of the connection and the search for servers stand in a file of their own beside this
// one.

namespace lumo {

using platform::NSLog;

namespace {

constexpr const char* kClass = "MyPreferencesWindowController";
// For the queue's label where the bundle has no identifier.
constexpr const char* kApplicationIdentifier = "com.lumo.LumoBrowser";

std::string taskQueueLabel(const platform::Bundle& bundle) {
  const auto identifier = bundle.bundleIdentifier();
  return (identifier && !identifier->empty() ? *identifier : kApplicationIdentifier) +
         std::string(".taskqueue1");
}

std::string addressOf(const ThisComputer& computer) {
  return addressOfInterface(computer.mainInterface(), computer.interfaces());
}

std::string ipInfoOf(const ThisComputer& computer) {
  const auto wifi = wifiName(computer.network);
  return networkSummary(addressOf(computer), wifi);
}

}  // namespace

MyPreferencesWindowController::MyPreferencesWindowController(platform::Platform& platform,
                                                             ShowNavBar showNavBarBelow,
                                                             const MyPreferencesWindowController* previous,
                                                             ThisComputer computer)
    : platform_(platform),
      showNavBarBelow_(std::move(showNavBarBelow)),
      computer_(std::move(computer)),
      currentTaskQueue1_(previous != nullptr
                             ? previous->currentTaskQueue1_
                             : platform::SerialQueue(platform.dispatch, taskQueueLabel(platform.bundle))),
      window_(platform.windows.loadWindow(kClass)) {
  if (window_ != nullptr) {
    connectActions();
    windowDidLoad();
  }
}

MyPreferencesWindowController::~MyPreferencesWindowController() {
  NSLog("%@->%@.... DEALLOC .......DEALLOC .......DEALLOC .......   ", kClass, "dealloc");
}

void MyPreferencesWindowController::connectActions() {
  using Action = void (MyPreferencesWindowController::*)();
  const std::pair<const char*, Action> actions[] = {
      {"ibCloseButton:", &MyPreferencesWindowController::ibCloseButton},
      {"ibResetToFactory1:", &MyPreferencesWindowController::ibResetToFactory1},
      {"ibResetToFactory2:", &MyPreferencesWindowController::ibResetToFactory2},
      {"ibTestConnection:", &MyPreferencesWindowController::ibTestConnection},
      {"ibSearchJunivaServer:", &MyPreferencesWindowController::ibSearchJunivaServer},
  };
  for (const auto& [name, action] : actions) {
    window_->setAction(name, [this, handler = action](platform::View&) { (this->*handler)(); });
  }
}

void MyPreferencesWindowController::windowDidLoad() {
  NSLog("%@->%@....windowDidLoad......windowDidLoad......windowDidLoad......", kClass, "windowDidLoad");
  NSLog("self.window = %@", window_.get());
  window_->setDelegate(this);
  fStatus1View = dynamic_cast<platform::ImageView*>(window_->viewNamed("fStatus1View"));
  if (auto* form = dynamic_cast<platform::SettingsForm*>(window_->viewNamed("ibSettingsForm"))) {
    form_ = std::make_unique<PreferenceForm>(*form, platform_.defaults,
                                             [this](const std::string& key) { preferenceChanged(key); });
  }
  platform::SerialQueue(platform_.dispatch)
      .async([this, onMain = toMain(), &bundle = platform_.bundle, computer = computer_] {
        const platform::Dictionary& info = bundle.infoDictionary();
        NSLog("infoDict = %@", info);
        if (!info.empty()) {
          const std::string text = versionLine(
              info, ZELKOR_NSStringAdditions::RunningArchitectureDisplayString(), sourceRevision());
          onMain([this, text] { showVersion(text); });
        }
        onMain([this] {
          showStatus("");
          ibTestConnection();
          platform_.defaults.setObject(0, prefEnableLockedFields1);
          refresh(prefEnableLockedFields1);
        });
        const std::string text = ipInfoOf(computer);
        onMain([this, text] { showIpInfo(text); });
      });
}

std::function<void(platform::Block)> MyPreferencesWindowController::toMain() const {
  return [&main = platform_.dispatch.main(), alive = std::weak_ptr(alive_)](platform::Block work) {
    main.async([alive, work = std::move(work)] {
      if (!alive.expired()) {
        work();
      }
    });
  };
}

void MyPreferencesWindowController::showText(const char* view, const std::string& text) {
  if (window_ == nullptr) {
    return;
  }
  if (auto* field = dynamic_cast<platform::TextField*>(window_->viewNamed(view))) {
    field->setStringValue(text);
  }
}

void MyPreferencesWindowController::showVersion(const std::string& text) {
  fVersionString = text;
  showText("fVersionString", text);
}

void MyPreferencesWindowController::showIpInfo(const std::string& text) {
  fIpInfoString = text;
  showText("fIpInfoString", text);
}

std::string MyPreferencesWindowController::getIPAddress() const {
  return addressOf(computer_);
}

std::string MyPreferencesWindowController::getIPInfo() const {
  return ipInfoOf(computer_);
}

void MyPreferencesWindowController::ibSetWindowLevel() {
  if (window_ == nullptr) {
    return;
  }
  platform::Window* parent = window_->sheetParent();
  NSLog("%@->%@....parentwindow = %@", kClass, "ibSetWindowLevel:", parent);
  if (parent != nullptr) {
    parent->setLevel(platform_.defaults.boolForKey(prefWindowAlwaysStatusLevel)
                         ? platform::kStatusWindowLevel
                         : platform::kNormalWindowLevel);
  }
}

void MyPreferencesWindowController::ibShowNavBar() {
  NSLog("%@->%@....", kClass, "ibShowNavBar:");
  if (window_ == nullptr) {
    platform_.notifications.postNotification({kShowNavBar, std::nullopt, {}, this});
  } else if (window_->sheetParent() != nullptr && showNavBarBelow_) {
    showNavBarBelow_();
  }
}

void MyPreferencesWindowController::ibCloseButton() {
  NSLog("%@->%@....", kClass, "ibCloseButton:");
  if (form_ != nullptr) {
    form_->endEditing();
  }
  if (platform::Window* parent = window_ == nullptr ? nullptr : window_->sheetParent()) {
    parent->endSheet(*window_, 1);
  }
}

bool MyPreferencesWindowController::windowShouldClose(platform::Window& /*window*/) {
  ibCloseButton();
  return false;
}

void MyPreferencesWindowController::ibResetToFactory1() {
  askToReset("ibResetToFactory1:", "This will reset the APIs for Setting Focus Item...\n\n", [this] {
    platform_.defaults.removeObject(prefPathNamesToForceFocus);
    refresh(prefPathNamesToForceFocus);
  });
}

void MyPreferencesWindowController::ibResetToFactory2() {
  askToReset("ibResetToFactory2:", "This will reset the APIs for when to End Session...\n\n",
             [this] { resetEndOfSession(); });
}

void MyPreferencesWindowController::resetEndOfSession() {
  const auto paths = platform_.defaults.objectForKey(prefArrayOfPathNamesToDataForLumo);
  const auto* array = paths ? paths->as<platform::Array>() : nullptr;
  if (array == nullptr) {
    return;
  }
  const std::string joined = platform::componentsJoinedByString(*array, ", ");
  NSLog("%@->%@....s = %@", kClass, "ibResetToFactory2:", joined);
  platform_.defaults.setObject(joined, prefPathNamesToDataForLumo);
  refresh(prefPathNamesToDataForLumo);
}

void MyPreferencesWindowController::askToReset(const char* operation, const char* informativeText,
                                               std::function<void()> reset) {
  NSLog("%@->%@....", kClass, operation);
  if (window_ == nullptr) {
    return;
  }
  if (form_ != nullptr) {
    form_->endEditing();
  }
  platform::Alert alert;
  alert.style = platform::AlertStyle::Critical;
  alert.messageText = "Reset To Factory Setting";
  alert.informativeText = informativeText;
  alert.addButtonWithTitle("Cancel");
  alert.addButtonWithTitle("Reset To Factory");
  windowWillBeginSheet();
  window_->beginAlert(alert, [operation, reset = std::move(reset)](const platform::AlertResponse& response) {
    NSLog("%@->%@....returnCode = %i", kClass, operation, response.code);
    if (response.code == platform::kAlertSecondButtonReturn) {
      NSLog("%@->%@....NSAlertSecondButtonReturn", kClass, operation);
      reset();
    }
  });
}

void MyPreferencesWindowController::preferenceChanged(const std::string& key) {
  if (key == prefWindowAlwaysStatusLevel) {
    ibSetWindowLevel();
  } else if (preferenceKey(key)->group == PreferenceGroup::Window) {
    ibShowNavBar();
  }
}

void MyPreferencesWindowController::refresh(const char* key) {
  if (form_ != nullptr) {
    form_->refresh(key);
  }
}

void MyPreferencesWindowController::windowDidExpose() {
  NSLog("%@->%@....", kClass, "windowDidExpose:");
}

void MyPreferencesWindowController::windowWillBeginSheet() {
  NSLog("%@->%@....", kClass, "windowWillBeginSheet:");
}

void MyPreferencesWindowController::
    URLSession_downloadTask_didWriteData_totalBytesWritten_totalBytesExpectedToWrite() {
  NSLog("%@->%@....", kClass,
        "URLSession:downloadTask:didWriteData:totalBytesWritten:totalBytesExpectedToWrite:");
}

}  // namespace lumo

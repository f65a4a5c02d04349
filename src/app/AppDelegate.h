#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/application.h"
#include "platform/notification_center.h"
#include "platform/platform.h"
#include "platform/queue.h"
#include "platform/view.h"
#include "platform/window.h"

namespace lumo {

class MyWebViewWindowController;

// The application shell: start-up, the one browser window, requests of other programs, and quitting. Main
// queue only, but for the observers of notifications, which run on the poster's thread.
class AppDelegate final : public platform::ApplicationDelegate, public platform::ServicesProvider {
 public:
  // Class initialisation, once for each launch, before any instance and any window: single instance, factory
  // defaults, log file. May end the process (with status 0) when another copy runs.
  static void initialize(platform::Application& application, const platform::Bundle& bundle,
                         platform::UserDefaults& defaults);
  // Beeps, brings another running copy to the front and ends this process with 0 when there is one.
  static void checkForDuplicateRunningInstances(platform::Application& application);

  // `platform` must outlive the delegate.
  explicit AppDelegate(platform::Platform& platform);
  ~AppDelegate() override;

  // While true the next request to terminate is granted at once.
  std::atomic<bool> fDoTerminateNow{false};
  // Outlet, not used by the shell.
  platform::ProgressIndicator* ibProgressIndicator = nullptr;
  // Made at will-finish-launching and never replaced.
  std::unique_ptr<MyWebViewWindowController> myWebViewWindowController;
  // The main interface's own window, not owned; null where there is none.
  platform::Window* window = nullptr;

  void ibReloadPage();
  void ibOpenPreferencesWindow();
  void ibBringToFrontButton();

  void applicationWillFinishLaunching() override;
  void applicationDidFinishLaunching() override;
  platform::TerminateReply applicationShouldTerminate() override;
  bool applicationShouldTerminateAfterLastWindowClosed() override { return true; }
  void applicationDidResignActive() override;
  void applicationWillTerminate() override {}
  void applicationMustTerminate() override;
  void application_openURLs(const std::vector<std::string>& urls) override;
  void application_openFiles(const std::vector<std::string>& filenames) override;
  bool applicationOpenUntitledFile() override;
  void SearchFromPasteboard_userData_error(const platform::Pasteboard& pasteboard,
                                           const std::optional<std::string>& userData) override;

  // The server placeholders replaced; absent when there is one and no server is set.
  std::optional<std::string> replaceKnownPlaceholdersForUrl(const std::string& url) const;
  // Resolves an address from outside; when it is one, it is stored and, 100 ms later, loaded. False
  // otherwise, and then nothing changes.
  bool validateUrlString(const std::optional<std::string>& text);
  // Event handlers that start-up does not install; `directObject` is the event's text, absent for none.
  void handleGetURLEvent_withReplyEvent(const std::optional<std::string>& directObject);
  void handleOpenContentsEvent_withReplyEvent(const std::optional<std::string>& directObject);

  // Acts on the answer to the question before quitting.
  void alertDidEnd_returnCode_contextInfo(long returnCode);
  void handleDragDropNotification(const platform::Notification& notification);
  // The closing path. Called directly (null), it first tells the station's other programs that the window was
  // closed; a poster of the notification has told them already.
  void handleTerminateNowNotifcation(const platform::Notification* notification);

 private:
  void connectMenu();
  // A block for any queue that has `block` run on the main queue, unless the delegate has gone by then.
  platform::Block onMain(platform::Block block);

  platform::Platform& platform_;
  platform::SerialQueue openQueue_;
  // The newest accepted address that is not stored yet.
  std::mutex addressToStoreMutex_;
  std::optional<std::string> addressToStore_;
  bool exitConfirmationShown_ = false;
  std::vector<platform::NotificationCenter::Token> observers_;
  std::shared_ptr<int> alive_ = std::make_shared<int>(0);
};

// The factory values as they are registered: the array of release paths is also joined (with ", ") into the
// text that the browser reads, which replaces a text of the file's own.
platform::Dictionary registrationDefaults(const platform::Dictionary& factory);

}  // namespace lumo

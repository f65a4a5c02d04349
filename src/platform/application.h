#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/pasteboard.h"

namespace platform {

enum class TerminateReply { Cancel = 0, Now = 1 };

// Activation options, as bits.
inline constexpr unsigned kActivateAllWindows = 1;
inline constexpr unsigned kActivateIgnoringOtherApps = 2;

struct RunningApplication {
  int processIdentifier = 0;
  bool operator==(const RunningApplication&) const = default;
};

// Hears of the application's life and of requests of other programs, on the main queue.
class ApplicationDelegate {
 public:
  virtual ~ApplicationDelegate() = default;
  virtual void applicationWillFinishLaunching() = 0;
  virtual void applicationDidFinishLaunching() = 0;
  virtual TerminateReply applicationShouldTerminate() = 0;
  virtual bool applicationShouldTerminateAfterLastWindowClosed() = 0;
  virtual void applicationDidResignActive() = 0;
  virtual void applicationWillTerminate() = 0;
  // The system ends the session or sent SIGTERM: no dialogue is possible. Must end the application by
  // terminate.
  virtual void applicationMustTerminate() = 0;

  // Open-URL and open-file requests; the lists are not empty unless the sender's was.
  virtual void application_openURLs(const std::vector<std::string>& urls) = 0;
  virtual void application_openFiles(const std::vector<std::string>& filenames) = 0;
  virtual bool applicationOpenUntitledFile() = 0;
};

// Handles a services request of another program; `userData` is absent when none was given.
class ServicesProvider {
 public:
  virtual ~ServicesProvider() = default;
  virtual void SearchFromPasteboard_userData_error(const Pasteboard& pasteboard,
                                                   const std::optional<std::string>& userData) = 0;
};

// The running program on the desktop. Main queue only, but for what says otherwise.
class Application {
 public:
  virtual ~Application() = default;

  // The copies of this application that run now, this one included, the oldest first; absent when that cannot
  // be told. The first call also claims the place of the running copy.
  virtual std::optional<std::vector<RunningApplication>> runningApplications() = 0;
  virtual int processIdentifier() const = 0;
  // Brings another copy to the front; best effort, returns when the request has left.
  virtual void activateOther(const RunningApplication& other, unsigned options) = 0;

  // Runs the event loop with the delegate until the program terminates: will-finish-launching,
  // did-finish-launching, then events. Answers the exit status. The delegate must outlive the call.
  virtual int run(ApplicationDelegate& delegate) = 0;
  // Asks the delegate and, when it answers Now, ends the loop after everything that has been posted was sent.
  // Any thread (it hops to the main queue when needed).
  virtual void terminate() = 0;
  // For a block of the main queue that must not be returned to: runs the event loop from inside it until the
  // application has terminated, then ends the process.
  [[noreturn]] virtual void runToTermination() = 0;

  // Asks the desktop to open an address of the application's own scheme, which therefore comes back as an
  // open-URL request, in a later turn of the main queue. Nothing happens when the application ends before.
  virtual void openURL(const std::string& url) = 0;
  virtual void setServicesProvider(ServicesProvider* provider) = 0;
  // What a menu item of this action name ("ibReloadPage:") does. An item without a handler is disabled.
  virtual void setMenuAction(const std::string& action, std::function<void()> handler) = 0;
  // The menu bar with its items; hidden, its keyboard shortcuts still work.
  virtual void setMenuBarVisible(bool visible) = 0;
  virtual bool isMenuBarVisible() const = 0;
  // Brings this application's windows to the front, see the options above.
  virtual void activate(unsigned options) = 0;
  virtual void beep() = 0;
  // Ends the process at once with this status; buffered output is written first.
  [[noreturn]] virtual void exitProcess(int status) = 0;
};

}  // namespace platform

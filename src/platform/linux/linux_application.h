#pragma once

#include <memory>

#include "platform/application.h"
#include "platform/queue.h"

typedef struct _GtkWidget GtkWidget;

namespace platform {

class Bundle;
class SessionBus;

// The program on a Linux desktop: the instance lock, the event loop, termination signals, requests over the
// session bus, the menu and the windows' place in front. The toolkit need not be initialised before menus and
// windows are used. All that it is given must outlive it.
class LinuxApplication : public Application {
 public:
  LinuxApplication(Dispatch& dispatch, SessionBus& bus, const Bundle& bundle);
  ~LinuxApplication() override;

  // Absent when the lock file cannot be made. The other copy's identifier is 0 when it is not known yet.
  std::optional<std::vector<RunningApplication>> runningApplications() override;
  int processIdentifier() const override;
  void activateOther(const RunningApplication& other, unsigned options) override;
  int run(ApplicationDelegate& delegate) override;
  void terminate() override;
  [[noreturn]] void runToTermination() override;
  void openURL(const std::string& url) override;
  void setServicesProvider(ServicesProvider* provider) override;
  void setMenuAction(const std::string& action, std::function<void()> handler) override;
  void setMenuBarVisible(bool visible) override;
  bool isMenuBarVisible() const override;
  void activate(unsigned options) override;
  void beep() override;
  [[noreturn]] void exitProcess(int status) override;

  // For the window adapter, main queue only.

  // See MainMenu. The bar is a floating reference, to be packed into a toplevel.
  GtkWidget* makeMenuBar();
  void attachTo(GtkWidget* toplevel);
  // Off while a sheet or alert is open in any window. Not counted.
  void setActionsEnabled(bool enabled);
  // To be told whenever a toplevel becomes the desktop's active one or stops being it. When a moment later
  // none of ours is active, the application has resigned.
  void noteActiveChanged(bool active);
  // To be told when the last window has been closed by the person: terminates when the delegate wants that.
  void noteLastWindowClosed();

 private:
  struct State;
  std::shared_ptr<State> state_;
};

}  // namespace platform

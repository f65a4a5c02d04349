#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/application.h"
#include "tests/fakes/journal.h"
#include "tests/fakes/sim_dispatch.h"

namespace fakes {

// What FakeApplication::exitProcess throws in place of ending the process.
struct ProcessExit {
  int status = 0;
};

// The program on a desktop that the test plays. Recorded under the name "application".
class FakeApplication final : public platform::Application {
 public:
  FakeApplication(SimDispatch& dispatch, Journal& journal) : dispatch_(dispatch), journal_(journal) {}

  std::optional<std::vector<platform::RunningApplication>> runningApplications() override;
  int processIdentifier() const override { return kOwnIdentifier; }
  void activateOther(const platform::RunningApplication& other, unsigned options) override;
  // launch, then lets simulated time pass until the program terminates and answers 0. Throws std::logic_error
  // when it does not within a simulated day.
  int run(platform::ApplicationDelegate& delegate) override;
  void terminate() override;
  // Lets simulated time pass as run does, then throws ProcessExit.
  [[noreturn]] void runToTermination() override;
  void openURL(const std::string& url) override;
  void setServicesProvider(platform::ServicesProvider* provider) override;
  void setMenuAction(const std::string& action, std::function<void()> handler) override;
  void setMenuBarVisible(bool visible) override;
  bool isMenuBarVisible() const override { return menuBarVisible_; }
  void activate(unsigned options) override;
  void beep() override;
  // Throws ProcessExit. In a block on a queue, where an exception ends in the log, exitStatus tells it all
  // the same.
  [[noreturn]] void exitProcess(int status) override;

  static constexpr int kOwnIdentifier = 4242;

  // Other copies that run already: all older than this one. Absent: it cannot be told.
  void setOthers(std::optional<std::vector<int>> processIdentifiers) {
    others_ = std::move(processIdentifiers);
  }

  // The start as run has it, then what is due; returns with the delegate kept for the operations below.
  // Throws ProcessExit when the delegate ends the process in will-finish- or did-finish-launching.
  void launch(platform::ApplicationDelegate& delegate);
  void setDelegate(platform::ApplicationDelegate* delegate) { delegate_ = delegate; }
  // Requests of the desktop, handed to the delegate.
  void openURLs(const std::vector<std::string>& urls);
  void openFiles(const std::vector<std::string>& filenames);
  bool openUntitledFile();
  void resignActive();
  // SIGTERM, or the session's end.
  void mustTerminate();
  // The person has closed a window and none is left: terminates when the delegate wants that.
  void noteLastWindowClosed();
  // The person quits by the menu.
  void quit() { terminate(); }
  // A services request; false when nobody provides them.
  bool requestService(const platform::Pasteboard& pasteboard,
                      const std::optional<std::string>& userData = std::nullopt);
  // The person uses a menu item ("ibReloadPage:"); false when it is disabled.
  bool chooseMenu(const std::string& action);
  bool isMenuItemEnabled(const std::string& action) const { return menu_.contains(action); }

  // The delegate's answers to requests to terminate, in order.
  const std::vector<platform::TerminateReply>& replies() const { return replies_; }
  // Whether it has granted one and will-terminate was sent.
  bool isTerminated() const { return terminated_; }
  std::optional<int> exitStatus() const { return exitStatus_; }
  int beeps() const { return beeps_; }
  // The options of each call.
  const std::vector<unsigned>& activations() const { return activations_; }
  struct OtherActivation {
    int processIdentifier = 0;
    unsigned options = 0;
    bool operator==(const OtherActivation&) const = default;
  };
  const std::vector<OtherActivation>& otherActivations() const { return otherActivations_; }

 private:
  void record(const std::string& what) { journal_.add("application " + what); }
  platform::ApplicationDelegate& delegate() const;
  void passUntilTerminated();

  SimDispatch& dispatch_;
  Journal& journal_;
  platform::ApplicationDelegate* delegate_ = nullptr;
  platform::ServicesProvider* services_ = nullptr;
  std::map<std::string, std::function<void()>> menu_;
  std::optional<std::vector<int>> others_ = std::vector<int>{};
  bool menuBarVisible_ = true;
  bool terminating_ = false;
  bool terminated_ = false;
  int beeps_ = 0;
  std::optional<int> exitStatus_;
  std::vector<platform::TerminateReply> replies_;
  std::vector<unsigned> activations_;
  std::vector<OtherActivation> otherActivations_;
};

}  // namespace fakes

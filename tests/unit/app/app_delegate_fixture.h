#pragma once

#include <memory>
#include <string>
#include <vector>

#include "app/AppDelegate.h"
#include "tests/unit/browser/browser_fixture.h"

namespace apptest {

// A machine with the application shell, which has not been launched yet.
class AppDelegateTest : public browsertest::MachineTest {
 protected:
  // Launches; log and journal begin then.
  void launch() {
    machine.application.launch(delegate());
    machine.journal.clear();
    log.clear();
  }
  lumo::AppDelegate& delegate() { return *shell; }
  std::vector<std::string> loads() const { return machine.journal.startingWith("webView1 load"); }

  std::unique_ptr<lumo::AppDelegate> shell = std::make_unique<lumo::AppDelegate>(platform);
};

}  // namespace apptest

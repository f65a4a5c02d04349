#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "station/listener.h"
#include "station/station.h"

namespace station {

// The message that tells of an end with that status; the address is absent where none is stored.
platform::DistributedNotification releaseOf(const std::string& status,
                                            const std::optional<std::string>& address);

// A kiosk that asks before it quits, and another program that hears what it tells.
class ExitTest : public StationTest {
 protected:
  explicit ExitTest(const Equipment& equipment = {}) : StationTest(equipment) {}
  void SetUp() override;

  bool isAsked() { return station.control("alert dialog", "Are You Sure???").has_value(); }
  bool isAskedSoon() {
    return waitUntil([this] { return isAsked(); });
  }
  bool isAskedNoMore() {
    return waitUntil([this] { return !isAsked(); });
  }
  // How many questions show.
  int questions();
  // The titles of the question's buttons from left to right.
  std::vector<std::string> answers();
  // The button with the keyboard, "" for none.
  std::string focusedAnswer();
  bool hasFocusSoon(const std::string& answer) {
    return waitUntil([&] { return focusedAnswer() == answer; });
  }
  // How often the application was asked to quit.
  int requests() const;
  std::optional<std::string> runningAddress() const { return station.storedText("prefRunningUrlString"); }
  // Ends the kiosk's life with a key and that answer.
  void quitWith(const std::string& answer);

  std::unique_ptr<Listener> listener;

 private:
  std::vector<Accessible> buttons();
};

}  // namespace station

#pragma once

#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "platform/alert.h"
#include "tests/fakes/journal.h"

namespace fakes {

class FakeWindow;

// The sheets and alerts of one parent: one is shown, the others wait their turn. Completions of those that
// are still there when it goes are never called.
class SheetQueue {
 public:
  SheetQueue(Stage stage, std::string owner) : stage_(stage), owner_(std::move(owner)) {}

  void addAlert(const platform::Alert& alert, platform::AlertCompletion completion);
  void addSheet(FakeWindow& sheet);
  // Takes `sheet` away, shown or waiting. False when it is not here.
  bool removeSheet(const FakeWindow& sheet);
  void clear() { entries_.clear(); }

  // What is shown now: null when it is something of the other kind, or nothing.
  const platform::Alert* currentAlert() const;
  FakeWindow* currentSheet() const;
  // How many are shown or wait.
  std::size_t size() const { return entries_.size(); }
  // Every alert that was shown so far, in the order of their showing.
  const std::vector<platform::Alert>& shownAlerts() const { return shownAlerts_; }

  // The person presses the alert's button with this tag. Throws std::logic_error when no alert with such a
  // button is shown.
  void answer(int code, const std::string& text);
  void press(const std::string& title, const std::string& text);

 private:
  struct Entry {
    platform::Alert alert;
    platform::AlertCompletion completion;
    FakeWindow* sheet = nullptr;
  };

  void add(Entry entry);
  void showFirst();

  const Stage stage_;
  const std::string owner_;
  std::deque<Entry> entries_;
  std::vector<platform::Alert> shownAlerts_;
};

}  // namespace fakes

#include "tests/fakes/sheet_queue.h"

#include <algorithm>
#include <stdexcept>

#include "tests/fakes/fake_window.h"

namespace fakes {

using platform::Alert;
using platform::AlertButton;

void SheetQueue::add(Entry entry) {
  entries_.push_back(std::move(entry));
  if (entries_.size() == 1) {
    showFirst();
  }
}

void SheetQueue::addAlert(const Alert& alert, platform::AlertCompletion completion) {
  stage_.journal.add(owner_ + " beginAlert " + alert.messageText);
  add({alert, std::move(completion), nullptr});
}

void SheetQueue::addSheet(FakeWindow& sheet) {
  stage_.journal.add(owner_ + " beginSheet " + sheet.name());
  add({{}, {}, &sheet});
}

void SheetQueue::showFirst() {
  if (entries_.empty()) {
    return;
  }
  const Entry& entry = entries_.front();
  if (entry.sheet != nullptr) {
    stage_.journal.add(owner_ + " shows the sheet " + entry.sheet->name());
  } else {
    stage_.journal.add(owner_ + " shows the alert " + entry.alert.messageText);
    shownAlerts_.push_back(entry.alert);
  }
}

bool SheetQueue::removeSheet(const FakeWindow& sheet) {
  const auto place = std::find_if(entries_.begin(), entries_.end(),
                                  [&](const Entry& entry) { return entry.sheet == &sheet; });
  if (place == entries_.end()) {
    return false;
  }
  const bool shown = place == entries_.begin();
  entries_.erase(place);
  if (shown) {
    showFirst();
  }
  return true;
}

const Alert* SheetQueue::currentAlert() const {
  return entries_.empty() || entries_.front().sheet != nullptr ? nullptr : &entries_.front().alert;
}

FakeWindow* SheetQueue::currentSheet() const {
  return entries_.empty() ? nullptr : entries_.front().sheet;
}

void SheetQueue::answer(int code, const std::string& text) {
  const Alert* alert = currentAlert();
  if (alert == nullptr) {
    throw std::logic_error(owner_ + " shows no alert that could be answered");
  }
  if (std::none_of(alert->buttons.begin(), alert->buttons.end(),
                   [&](const AlertButton& button) { return button.tag == code; })) {
    throw std::logic_error("the alert \"" + alert->messageText + "\" has no button " + std::to_string(code));
  }
  stage_.journal.add(owner_ + " alert answered " + std::to_string(code));
  const platform::AlertCompletion completion = std::move(entries_.front().completion);
  entries_.pop_front();
  showFirst();
  if (completion) {
    completion({code, text});
  }
}

void SheetQueue::press(const std::string& title, const std::string& text) {
  if (const Alert* alert = currentAlert()) {
    for (const AlertButton& button : alert->buttons) {
      if (button.title == title) {
        answer(button.tag, text);
        return;
      }
    }
  }
  throw std::logic_error(owner_ + " shows no alert with the button " + title);
}

}  // namespace fakes

#include "tests/fakes/fake_settings_form.h"

#include <stdexcept>

#include "platform/log.h"

namespace fakes {

using platform::SettingKind;
using platform::SettingValue;

void FakeSettingsForm::setGroups(const std::vector<platform::SettingGroup>& groups) {
  groups_ = groups;
  rows_.clear();
  editing_.reset();
  for (std::size_t index = 0; index < groups.size(); ++index) {
    for (const platform::SettingRow& row : groups[index].rows) {
      const bool isSwitch = row.kind == SettingKind::Switch;
      rows_[row.key] = {.kind = row.kind,
                        .group = index,
                        .shown = isSwitch ? SettingValue(false) : SettingValue(std::string())};
    }
  }
}

FakeSettingsForm::Row* FakeSettingsForm::find(const std::string& key) {
  const auto found = rows_.find(key);
  if (found == rows_.end()) {
    platform::NSLog("the form has no row %@", key);
    return nullptr;
  }
  return &found->second;
}

const FakeSettingsForm::Row& FakeSettingsForm::row(const std::string& key) const {
  const auto found = rows_.find(key);
  if (found == rows_.end()) {
    throw std::logic_error("the form has no row " + key);
  }
  return found->second;
}

void FakeSettingsForm::setValue(const std::string& key, const SettingValue& value) {
  Row* row = find(key);
  if (row == nullptr) {
    return;
  }
  if (value.index() != row->shown.index()) {
    platform::NSLog("a value of another kind for the row %@", key);
    return;
  }
  if (editing_ == key) {
    return;
  }
  row->shown = value;
  row->problem.clear();
  if (const auto* text = std::get_if<std::string>(&value)) {
    row->known = *text;
  }
}

void FakeSettingsForm::setLocked(std::size_t group, bool locked) {
  for (auto& [key, row] : rows_) {
    if (row.group != group) {
      continue;
    }
    row.locked = locked;
    if (locked && editing_ == key) {
      editing_.reset();
      row.shown = row.known;
    }
  }
}

void FakeSettingsForm::showProblem(const std::string& key, const std::string& problem) {
  if (Row* row = find(key)) {
    row->problem = problem;
  }
}

void FakeSettingsForm::endEditing() {
  if (!editing_) {
    return;
  }
  const std::string key = *editing_;
  editing_.reset();
  Row& row = *find(key);
  row.known = std::get<std::string>(row.shown);
  if (delegate_ != nullptr) {
    delegate_->settingChanged(*this, key, row.shown);
  }
}

bool FakeSettingsForm::flip(const std::string& key) {
  endEditing();
  Row* row = find(key);
  if (row == nullptr || row->locked || row->kind != SettingKind::Switch) {
    return false;
  }
  row->shown = !std::get<bool>(row->shown);
  row->problem.clear();
  if (delegate_ != nullptr) {
    delegate_->settingChanged(*this, key, row->shown);
  }
  return true;
}

bool FakeSettingsForm::type(const std::string& key, const std::string& text) {
  if (editing_ != key) {
    endEditing();
  }
  Row* row = find(key);
  if (row == nullptr || row->locked || row->kind == SettingKind::Switch) {
    return false;
  }
  row->shown = text;
  row->problem.clear();
  if (text == row->known) {
    editing_.reset();
  } else {
    editing_ = key;
  }
  return true;
}

bool FakeSettingsForm::write(const std::string& key, const std::string& text) {
  const bool typed = type(key, text);
  pressReturn();
  return typed;
}

}  // namespace fakes

#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/settings_form.h"
#include "tests/fakes/fake_view.h"

namespace fakes {

// A form that the test reads and writes as a person would.
class FakeSettingsForm final : public FakeView, public platform::SettingsForm {
 public:
  using FakeView::FakeView;
  platform::ViewKind kind() const override { return platform::ViewKind::SettingsForm; }
  void setDelegate(platform::SettingsFormDelegate* delegate) override { delegate_ = delegate; }
  void setGroups(const std::vector<platform::SettingGroup>& groups) override;
  void setValue(const std::string& key, const platform::SettingValue& value) override;
  void setLocked(std::size_t group, bool locked) override;
  void showProblem(const std::string& key, const std::string& problem) override;
  void endEditing() override;

  // What the person sees. A key that is in no row throws std::logic_error.
  platform::SettingsFormDelegate* delegate() const { return delegate_; }
  const std::vector<platform::SettingGroup>& groups() const { return groups_; }
  // What stands in the row now, also what has just been typed.
  const platform::SettingValue& value(const std::string& key) const { return row(key).shown; }
  bool isOn(const std::string& key) const { return std::get<bool>(value(key)); }
  const std::string& text(const std::string& key) const { return std::get<std::string>(value(key)); }
  bool isLocked(const std::string& key) const { return row(key).locked; }
  const std::string& problem(const std::string& key) const { return row(key).problem; }

  // What the person does; false when the row is locked or of another kind. Typing replaces the text and goes
  // on until Return, or until the keyboard goes elsewhere.
  bool flip(const std::string& key);
  bool type(const std::string& key, const std::string& text);
  // Return.
  void pressReturn() { endEditing(); }
  // Both.
  bool write(const std::string& key, const std::string& text);

 private:
  struct Row {
    platform::SettingKind kind = platform::SettingKind::Switch;
    std::size_t group = 0;
    platform::SettingValue shown;
    // The text that the delegate knows.
    std::string known;
    bool locked = false;
    std::string problem;
  };
  const Row& row(const std::string& key) const;
  Row* find(const std::string& key);

  platform::SettingsFormDelegate* delegate_ = nullptr;
  std::vector<platform::SettingGroup> groups_;
  std::map<std::string, Row> rows_;
  // The row in which somebody types.
  std::optional<std::string> editing_;
};

}  // namespace fakes

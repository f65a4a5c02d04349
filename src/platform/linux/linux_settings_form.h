#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include <gtk/gtk.h>

#include "platform/linux/linux_view.h"
#include "platform/settings_form.h"

namespace platform {

// A GtkBox of the style class "lumo-settings-form" as a form: a heading and a boxed list for each group. Each
// control has its row's title as accessible name and the explanation as accessible description.
class LinuxSettingsForm final : public LinuxView, public SettingsForm {
 public:
  LinuxSettingsForm(Dispatch& dispatch, GtkWidget* box);
  ~LinuxSettingsForm() override;

  ViewKind kind() const override { return ViewKind::SettingsForm; }
  void setDelegate(SettingsFormDelegate* delegate) override { delegate_ = delegate; }
  void setGroups(const std::vector<SettingGroup>& groups) override;
  void setValue(const std::string& key, const SettingValue& value) override;
  void setLocked(std::size_t group, bool locked) override;
  void showProblem(const std::string& key, const std::string& problem) override;
  void endEditing() override;

  // The control in which a person changes that value: a GtkSwitch, a GtkEntry or a GtkTextView. Null for
  // none.
  GtkWidget* control(const std::string& key) const;
  // What the row says of a problem, empty for none.
  std::string shownProblem(const std::string& key) const;

 private:
  struct Row;

  std::unique_ptr<Row> makeRow(const SettingRow& setting);
  GtkWidget* makeSwitchRow(Row& row, const SettingRow& setting);
  GtkWidget* makeTextRow(Row& row, const SettingRow& setting);
  void clear();
  Row* find(const std::string& key) const;
  // The person has ended the change of a text.
  void ended(Row& row);
  void report(Row& row, const SettingValue& value);

  SettingsFormDelegate* delegate_ = nullptr;
  // Of each group.
  std::vector<std::vector<std::unique_ptr<Row>>> rows_;
  std::vector<GtkWidget*> groups_;
};

}  // namespace platform

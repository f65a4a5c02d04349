#pragma once

#include <cstddef>
#include <string>
#include <variant>
#include <vector>

#include "platform/view.h"

namespace platform {

class SettingsForm;

// Switch: on or off. Text: one line. Lines: several lines, one item in each.
enum class SettingKind { Switch, Text, Lines };

// A boolean for a switch, else the text, lines separated by "\n".
using SettingValue = std::variant<bool, std::string>;

// One setting. The key names it towards the delegate and is unique in its form; people read the title and, as
// an explanation, one sentence without its full stop.
struct SettingRow {
  std::string key;
  SettingKind kind = SettingKind::Switch;
  std::string title;
  std::string explanation;
};

// Settings under a heading. One without rows is a heading with an explanation.
struct SettingGroup {
  std::string title;
  std::string explanation;
  std::vector<SettingRow> rows;
};

// Hears of what a person changes, on the main queue. Must outlive the form or be taken off it.
class SettingsFormDelegate {
 public:
  virtual ~SettingsFormDelegate() = default;
  // The person has set a switch, or has ended the change of a text (Return, or the keyboard went elsewhere).
  // The value is of the row's kind.
  virtual void settingChanged(SettingsForm& form, const std::string& key, const SettingValue& value) = 0;
};

// A list of settings that a person reads and changes, in a window description. Main queue only. A key that no
// row has, and a value of another kind than its row's, are ignored with a line in the log.
class SettingsForm : public virtual View {
 public:
  // The delegate hears of changes until another (or null) is set.
  virtual void setDelegate(SettingsFormDelegate* delegate) = 0;
  // Draws these groups in place of those before: nothing locked, switches off, texts empty.
  virtual void setGroups(const std::vector<SettingGroup>& groups) = 0;
  // Shows a value; the delegate does not hear of it. A problem is told no longer. A text that the person is
  // changing just now stays.
  virtual void setValue(const std::string& key, const SettingValue& value) = 0;
  // Locks the rows of the group at that place, or unlocks them: they can be read and not changed. A change
  // of a text that has not ended is dropped.
  virtual void setLocked(std::size_t group, bool locked) = 0;
  // Says beneath a row why its value was not taken, until the next change; the empty text says nothing.
  virtual void showProblem(const std::string& key, const std::string& problem) = 0;
  // Ends the change of a text that a person has begun: the delegate hears of it.
  virtual void endEditing() = 0;
};

}  // namespace platform

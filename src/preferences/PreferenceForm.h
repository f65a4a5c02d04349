#pragma once

#include <functional>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "app/PreferenceKeys.h"
#include "platform/property_list.h"
#include "platform/settings_form.h"
#include "platform/user_defaults.h"

namespace lumo {

// The decisions: values in, values out. Any thread.

// Every preference that an operator sets, in its group; the switch that opens the protected groups stands in
// a group of its own before the first of these.
std::vector<platform::SettingGroup> settingGroups();
// The places of the protected groups among them.
std::vector<std::size_t> protectedGroups();

// What a form shows for a value: that in effect. Without a value it is what the code itself uses; a value
// that the readers of the key would not take shows as none.
platform::SettingValue shownValue(const PreferenceKey& key,
                                  const std::optional<platform::PropertyList>& value);

// Back to the factory value.
struct RemovePreference {
  bool operator==(const RemovePreference&) const = default;
};
// Why the text is no value, for people.
struct RefusedPreference {
  std::string reason;
  bool operator==(const RefusedPreference&) const = default;
};
using PreferenceEdit = std::variant<platform::PropertyList, RemovePreference, RefusedPreference>;
// What follows from what a person has written: a value to store, the factory value for an emptied text, or a
// refusal. Blanks at the ends do not count. Paths may be separated by commas or stand on lines of their own;
// empty ones do not count.
PreferenceEdit preferenceEdit(const PreferenceKey& key, const platform::SettingValue& written);

// Binds the preferences to a form: shows their values and stores what a person changes. Main queue only.
class PreferenceForm : public platform::SettingsFormDelegate {
 public:
  // Draws the form. `changed` (may be empty) hears the key of each preference that was stored or removed,
  // afterwards. `form` and `defaults` must outlive this object.
  PreferenceForm(platform::SettingsForm& form, platform::UserDefaults& defaults,
                 std::function<void(const std::string& key)> changed);
  ~PreferenceForm() override;
  PreferenceForm(const PreferenceForm&) = delete;
  PreferenceForm& operator=(const PreferenceForm&) = delete;

  // Shows all values anew, or that of one key, and locks the protected groups or opens them as stored.
  void refresh();
  void refresh(const std::string& key);
  // Takes what a person has begun to write.
  void endEditing() { form_.endEditing(); }

  void settingChanged(platform::SettingsForm& form, const std::string& key,
                      const platform::SettingValue& value) override;

 private:
  void applyLock();

  platform::SettingsForm& form_;
  platform::UserDefaults& defaults_;
  const std::function<void(const std::string&)> changed_;
};

}  // namespace lumo

#include "preferences/PreferenceForm.h"

#include <algorithm>
#include <type_traits>

#include "platform/log.h"
#include "platform/strings.h"
#include "platform/url.h"

namespace lumo {

using platform::NSLog;
using platform::PropertyList;
using platform::SettingKind;
using platform::SettingValue;

namespace {

SettingKind kindOf(const PreferenceKey& key) {
  switch (key.input) {
    case PreferenceInput::Switch:
      return SettingKind::Switch;
    case PreferenceInput::Paths:
      return SettingKind::Lines;
    default:
      return SettingKind::Text;
  }
}

platform::SettingRow rowOf(const PreferenceKey& key) {
  return {key.name, kindOf(key), key.title, key.effect};
}

platform::SettingGroup lockGroup() {
  const PreferenceKey& key = *preferenceKey(prefEnableLockedFields1);
  return {"Protected settings",
          "What follows can keep a station from working",
          {{key.name, SettingKind::Switch, key.title, "Closed again each time the settings open"}}};
}

bool hasBlank(std::string_view text) {
  return std::any_of(text.begin(), text.end(), [](unsigned char byte) { return byte <= ' '; });
}

bool hasControlCharacter(std::string_view text) {
  return std::any_of(text.begin(), text.end(), [](unsigned char byte) { return byte < ' ' || byte == 0x7F; });
}

// The items of a list that a person wrote, without blanks around them.
platform::Array itemsOf(const std::string& written) {
  platform::Array items;
  for (const std::string& line : platform::componentsSeparatedBy(written, "\n")) {
    for (const std::string& piece : platform::componentsSeparatedBy(line, ",")) {
      if (std::string item = platform::trimmed(piece); !item.empty()) {
        items.emplace_back(std::move(item));
      }
    }
  }
  return items;
}

// Why a text is no value of that kind; empty when it is one.
std::string problemOf(PreferenceInput input, const std::string& text) {
  switch (input) {
    case PreferenceInput::Address: {
      // The go command escapes what an address must not hold, but for the blanks that people mistype.
      const bool parses = platform::Url::parse(platform::stringByAddingPercentEscapes(text)).has_value();
      return parses && !hasBlank(text) ? "" : "This is no address. It reads like http://10.0.0.5:9090/path";
    }
    case PreferenceInput::Word:
      return hasBlank(text) ? "This must be one word, without a blank" : "";
    case PreferenceInput::Program:
      return text.front() == '/' ? "" : "This must be the whole path of a program, which begins with /";
    default:
      return "";
  }
}

}  // namespace

std::vector<platform::SettingGroup> settingGroups() {
  std::vector<platform::SettingGroup> groups;
  bool hasLock = false;
  for (const PreferenceGroupText& text : preferenceGroups()) {
    if (text.isProtected && !std::exchange(hasLock, true)) {
      groups.push_back(lockGroup());
    }
    platform::SettingGroup group{text.title, text.explanation, {}};
    for (const PreferenceKey& key : preferenceKeys()) {
      if (key.group == text.group) {
        group.rows.push_back(rowOf(key));
      }
    }
    groups.push_back(std::move(group));
  }
  return groups;
}

std::vector<std::size_t> protectedGroups() {
  std::vector<std::size_t> places;
  const auto texts = preferenceGroups();
  for (std::size_t index = 0; index < texts.size(); ++index) {
    if (texts[index].isProtected) {
      // The lock's own group stands before them.
      places.push_back(index + 1);
    }
  }
  return places;
}

SettingValue shownValue(const PreferenceKey& key, const std::optional<PropertyList>& value) {
  if (key.type == PreferenceType::Boolean) {
    return value && platform::boolValue(*value).value_or(false);
  }
  if (!value) {
    return std::string(key.codeDefault != nullptr ? key.codeDefault : "");
  }
  if (!matches(key.type, *value)) {
    return std::string();
  }
  if (const auto* array = value->as<platform::Array>()) {
    return platform::componentsJoinedByString(*array, "\n");
  }
  const std::string text = platform::stringValue(*value).value_or("");
  return key.input == PreferenceInput::Paths ? platform::componentsJoinedByString(itemsOf(text), "\n") : text;
}

PreferenceEdit preferenceEdit(const PreferenceKey& key, const SettingValue& written) {
  if (const auto* on = std::get_if<bool>(&written)) {
    return PropertyList(*on);
  }
  const std::string text = platform::trimmed(std::get<std::string>(written));
  if (key.input == PreferenceInput::Paths) {
    platform::Array items = itemsOf(text);
    if (items.empty()) {
      return RemovePreference{};
    }
    return key.type == PreferenceType::Array ? PropertyList(std::move(items))
                                             : PropertyList(platform::componentsJoinedByString(items, ", "));
  }
  if (text.empty()) {
    return RemovePreference{};
  }
  if (hasControlCharacter(text)) {
    return RefusedPreference{"This must be one line"};
  }
  if (std::string problem = problemOf(key.input, text); !problem.empty()) {
    return RefusedPreference{std::move(problem)};
  }
  return PropertyList(text);
}

PreferenceForm::PreferenceForm(platform::SettingsForm& form, platform::UserDefaults& defaults,
                               std::function<void(const std::string&)> changed)
    : form_(form), defaults_(defaults), changed_(std::move(changed)) {
  form_.setGroups(settingGroups());
  refresh();
  form_.setDelegate(this);
}

PreferenceForm::~PreferenceForm() {
  form_.setDelegate(nullptr);
}

void PreferenceForm::refresh() {
  for (const PreferenceKey& key : preferenceKeys()) {
    if (key.operatorSets()) {
      refresh(key.name);
    }
  }
  refresh(prefEnableLockedFields1);
}

void PreferenceForm::refresh(const std::string& key) {
  form_.setValue(key, shownValue(*preferenceKey(key), defaults_.objectForKey(key)));
  if (key == prefEnableLockedFields1) {
    applyLock();
  }
}

void PreferenceForm::applyLock() {
  const bool isOpen = defaults_.boolForKey(prefEnableLockedFields1);
  for (const std::size_t group : protectedGroups()) {
    form_.setLocked(group, !isOpen);
  }
}

void PreferenceForm::settingChanged(platform::SettingsForm& /*form*/, const std::string& key,
                                    const SettingValue& value) {
  const PreferenceEdit edit = preferenceEdit(*preferenceKey(key), value);
  if (const auto* refused = std::get_if<RefusedPreference>(&edit)) {
    NSLog("%@ keeps its value, \"%@\" was refused: %@", key, std::get<std::string>(value), refused->reason);
    form_.showProblem(key, refused->reason);
    return;
  }
  if (const auto* stored = std::get_if<PropertyList>(&edit)) {
    NSLog("%@ is set to %@", key, *stored);
    defaults_.setObject(*stored, key);
  } else {
    NSLog("%@ gets its factory value back", key);
    defaults_.removeObject(key);
  }
  // As it was understood.
  refresh(key);
  if (changed_) {
    changed_(key);
  }
}

}  // namespace lumo

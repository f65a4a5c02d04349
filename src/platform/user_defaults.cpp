#include "platform/user_defaults.h"

#include <algorithm>
#include <cstdlib>
#include <mutex>
#include <utility>
#include <vector>

#include "platform/domain_file.h"
#include "platform/log.h"
#include "platform/property_list_file.h"

namespace platform {
namespace {

// One change of the user's layer; without a value the key is removed.
using Change = std::pair<std::string, std::optional<PropertyList>>;

void applyChange(Dictionary& values, const Change& change) {
  if (change.second) {
    values.set(change.first, *change.second);
  } else {
    values.remove(change.first);
  }
}

}  // namespace

struct UserDefaults::State {
  State() = default;
  explicit State(std::filesystem::path path) : file(std::in_place, std::move(path)) {}

  // Reads the file again when it changed.
  bool refresh() {
    if (!file || !file->changed()) {
      return true;
    }
    const auto values = file->read();
    if (!values) {
      return false;
    }
    adopt(*values);
    return true;
  }

  void adopt(Dictionary values) {
    for (const auto& change : waiting) {
      applyChange(values, change);
    }
    user = std::move(values);
  }

  // Writes the changes that wait; true when the file holds them all.
  bool flush() {
    const auto lock = file->lock();
    if (!lock) {
      return false;
    }
    const auto held = file->read(*lock);
    if (!held) {
      return false;
    }
    while (true) {
      adopt(*held);
      if (user == *held) {
        break;
      }
      const auto bytes = xmlDataFromPropertyList(user);
      // What cannot be read back would take every other preference along.
      if (const auto readBack = propertyListFromData(bytes)) {
        if (!file->write(*lock, bytes)) {
          return false;
        }
        user = *readBack->as<Dictionary>();
        break;
      }
      if (waiting.empty()) {
        return false;
      }
      refuseOne();
    }
    waiting.clear();
    return true;
  }

  // Drops the change that makes the whole unwritable: one that is so by itself, else the newest.
  void refuseOne() {
    auto refused = std::find_if(waiting.begin(), waiting.end(), [](const Change& change) {
      return change.second && !propertyListFromData(xmlDataFromPropertyList(*change.second));
    });
    if (refused == waiting.end()) {
      --refused;
    }
    NSLog("UserDefaults: the value for %@ is too large or nested too deeply and is not kept", refused->first);
    waiting.erase(refused);
  }

  void change(std::string_view key, std::optional<PropertyList> value) {
    if (!file) {
      applyChange(user, Change(key, std::move(value)));
      return;
    }
    std::erase_if(waiting, [key](const Change& earlier) { return earlier.first == key; });
    waiting.emplace_back(key, std::move(value));
    applyChange(user, waiting.back());
    flush();
  }

  // The value under `key` as a reader sees it, or null.
  const PropertyList* value(std::string_view key) {
    refresh();
    const auto* value = user.find(key);
    return value != nullptr ? value : registered.find(key);
  }

  std::mutex mutex;
  std::optional<DomainFile> file;
  Dictionary registered;
  // The user's layer: what the file held last, with the changes that wait.
  Dictionary user;
  // Changes that the file does not hold yet, at most one for a key, in the order in which they were made.
  std::vector<Change> waiting;
};

UserDefaults::UserDefaults() : state_(std::make_unique<State>()) {}

UserDefaults::UserDefaults(std::filesystem::path file) : state_(std::make_unique<State>(std::move(file))) {
  const std::lock_guard guard(state_->mutex);
  state_->refresh();
}

UserDefaults::~UserDefaults() {
  const std::lock_guard guard(state_->mutex);
  if (!state_->waiting.empty()) {
    state_->flush();
  }
}

std::optional<std::filesystem::path> UserDefaults::standardPath(std::string_view identifier) {
  std::filesystem::path folder;
  const auto take = [&folder](const char* variable, std::string_view below) {
    const char* value = std::getenv(variable);
    if (folder.empty() && value != nullptr && *value == '/') {
      folder = std::filesystem::path(value) / below;
    }
  };
  take("XDG_CONFIG_HOME", "lumo");
  take("HOME", ".config/lumo");
  if (folder.empty()) {
    return std::nullopt;
  }
  return folder / (std::string(identifier) + ".plist");
}

void UserDefaults::registerDefaults(const Dictionary& values) {
  const std::lock_guard guard(state_->mutex);
  for (const auto& [key, value] : values) {
    state_->registered.set(key, value);
  }
}

bool UserDefaults::boolForKey(std::string_view key) const {
  const std::lock_guard guard(state_->mutex);
  const auto* value = state_->value(key);
  return value != nullptr && boolValue(*value).value_or(false);
}

std::optional<std::string> UserDefaults::stringForKey(std::string_view key) const {
  const std::lock_guard guard(state_->mutex);
  const auto* value = state_->value(key);
  return value != nullptr ? stringValue(*value) : std::nullopt;
}

std::optional<PropertyList> UserDefaults::objectForKey(std::string_view key) const {
  const std::lock_guard guard(state_->mutex);
  const auto* value = state_->value(key);
  return value != nullptr ? std::optional<PropertyList>(*value) : std::nullopt;
}

std::optional<Dictionary> UserDefaults::dictionaryForKey(std::string_view key) const {
  const std::lock_guard guard(state_->mutex);
  const auto* value = state_->value(key);
  const auto* dictionary = value != nullptr ? value->as<Dictionary>() : nullptr;
  return dictionary != nullptr ? std::optional<Dictionary>(*dictionary) : std::nullopt;
}

void UserDefaults::setObject(std::optional<PropertyList> value, std::string_view key) {
  const std::lock_guard guard(state_->mutex);
  state_->change(key, std::move(value));
}

void UserDefaults::removeObject(std::string_view key) {
  setObject(std::nullopt, key);
}

bool UserDefaults::synchronize() {
  const std::lock_guard guard(state_->mutex);
  if (!state_->refresh()) {
    return false;
  }
  return state_->waiting.empty() || state_->flush();
}

Dictionary UserDefaults::userValues() const {
  const std::lock_guard guard(state_->mutex);
  state_->refresh();
  return state_->user;
}

}  // namespace platform

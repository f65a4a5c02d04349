#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/property_list.h"

namespace platform {

// The preferences of one domain in two layers: registered (fallback) values, kept in memory, and the user's
// values, kept in the domain file. A read answers the user's value, else the registered one, else nothing.
// Any thread.
//
// The domain file is a property list (XML or binary; written as XML). Every change is written at once: under
// a lock beside the file it is read again, changed and replaced atomically (temporary file, fsync, rename),
// so two processes that write different keys both keep theirs and a reader sees the old file or the new one,
// never half a file. A file that another process replaced is read again at the next read. A damaged file is
// set aside beside the original as "NAME.damaged-YYYYMMDD-HHMMSS" with a line in the log, and the user layer
// starts empty. A file that cannot be written (full disk, no rights) gives a line in the log; the value then
// lives in memory until it can be.
class UserDefaults {
 public:
  // The domain kept in `file`; its folder is made when it is missing. Without a path: in memory only.
  UserDefaults();
  explicit UserDefaults(std::filesystem::path file);
  ~UserDefaults();
  UserDefaults(const UserDefaults&) = delete;
  UserDefaults& operator=(const UserDefaults&) = delete;

  // The standard domain's file: ${XDG_CONFIG_HOME:-$HOME/.config}/lumo/IDENTIFIER.plist (XDG Base Directory).
  // Absent when neither variable gives an absolute folder.
  static std::optional<std::filesystem::path> standardPath(std::string_view identifier);

  // Adds to the registered values; a key that is registered again takes the new value.
  void registerDefaults(const Dictionary& values);

  // Typed reads convert as boolValue and stringValue state; a value of another kind counts as absent.
  bool boolForKey(std::string_view key) const;
  std::optional<std::string> stringForKey(std::string_view key) const;
  std::optional<PropertyList> objectForKey(std::string_view key) const;
  std::optional<Dictionary> dictionaryForKey(std::string_view key) const;

  // Stores the user's value; storing nothing removes it, so that the registered value shows again.
  void setObject(std::optional<PropertyList> value, std::string_view key);
  void removeObject(std::string_view key);
  // Makes sure that the file holds every change and that changes of others are seen. False when the file
  // cannot be read or written.
  bool synchronize();

  // The user's layer alone.
  Dictionary userValues() const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace platform

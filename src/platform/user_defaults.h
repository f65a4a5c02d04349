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
// a lock beside the file (NAME.lock, waited for at most two seconds) it is read again, changed and replaced
// atomically (temporary file, fsync, rename), so two processes that write different keys both keep theirs and
// a reader sees the old file or the new one, never half a file. Storing what the file holds already writes
// nothing. A file that another process replaced is read again at the next read.
//
// A damaged file (no property list, no dictionary, or empty) is set aside beside the original as
// "NAME.damaged-YYYYMMDD-HHMMSS" with a line in the log, and the user layer starts empty. A file that exists
// but cannot be read is never replaced. Where the file cannot be written (full disk, no rights, file made
// read-only) a line goes into the log, one for each kind of failure until a write succeeds; the values then
// live in memory and are written by the next change or synchronize that succeeds. A value that no property
// list can carry (too large, nested too deeply) is refused with a line in the log.
class UserDefaults {
 public:
  // The domain kept in `file`; its folder is made by the first write when it is missing, and a symbolic link
  // stands for the file that it leads to. Without a path: in memory only.
  UserDefaults();
  explicit UserDefaults(std::filesystem::path file);
  // Tries once more to write what could not be written.
  ~UserDefaults();
  UserDefaults(const UserDefaults&) = delete;
  UserDefaults& operator=(const UserDefaults&) = delete;

  // The standard domain's file: ${XDG_CONFIG_HOME:-$HOME/.config}/lumo/IDENTIFIER.plist (XDG Base Directory).
  // Absent when neither variable gives an absolute folder.
  static std::optional<std::filesystem::path> standardPath(std::string_view identifier);

  // Adds to the registered values; a key that is registered again takes the new value.
  void registerDefaults(const Dictionary& values);

  // Typed reads convert as boolValue and stringValue state; a value of another kind counts as absent (false),
  // also where a registered value stands behind it.
  bool boolForKey(std::string_view key) const;
  std::optional<std::string> stringForKey(std::string_view key) const;
  std::optional<PropertyList> objectForKey(std::string_view key) const;
  std::optional<Dictionary> dictionaryForKey(std::string_view key) const;

  // Stores the user's value; storing nothing removes it, so that the registered value shows again.
  void setObject(std::optional<PropertyList> value, std::string_view key);
  void removeObject(std::string_view key);
  // Makes sure that the file holds every change and that changes of others are seen. False when the file
  // cannot be read, or cannot be written and a change waits for it.
  bool synchronize();

  // The user's layer alone.
  Dictionary userValues() const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace platform

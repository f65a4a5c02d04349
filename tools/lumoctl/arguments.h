#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "platform/property_list.h"

// What the words on the command line ask for. Pure; any thread.
namespace lumoctl {

struct Help {
  bool operator==(const Help&) const = default;
};
struct Version {
  bool operator==(const Version&) const = default;
};
// Hands addresses and files to the kiosk; with neither, only brings it up.
struct Open {
  std::vector<std::string> items;
  // The primary selection's text instead of items.
  bool selection = false;
  bool operator==(const Open&) const = default;
};
// The user's values: that of `key`, or all.
struct DefaultsRead {
  std::optional<std::string> key;
  bool operator==(const DefaultsRead&) const = default;
};
struct DefaultsWrite {
  std::string key;
  platform::PropertyList value;
  // Whether an array or a dictionary is added to what is there.
  bool add = false;
  bool operator==(const DefaultsWrite&) const = default;
};
struct DefaultsDelete {
  std::string key;
  bool operator==(const DefaultsDelete&) const = default;
};
struct DefaultsList {
  bool operator==(const DefaultsList&) const = default;
};
// "-" is standard output or input.
struct DefaultsExport {
  std::string file;
  bool operator==(const DefaultsExport&) const = default;
};
struct DefaultsImport {
  std::string file;
  bool operator==(const DefaultsImport&) const = default;
};
struct Listen {
  bool operator==(const Listen&) const = default;
};
struct Status {
  bool operator==(const Status&) const = default;
};
// The words make no sense; one line for the person who wrote them, without a full stop.
struct UsageError {
  std::string message;
  bool operator==(const UsageError&) const = default;
};

using Command = std::variant<Help, Version, Open, DefaultsRead, DefaultsWrite, DefaultsDelete, DefaultsList,
                             DefaultsExport, DefaultsImport, Listen, Status, UsageError>;

// The command for `words`, the arguments without the program's name.
Command parseArguments(const std::vector<std::string>& words);

// What --help prints.
extern const char* const usageText;

}  // namespace lumoctl

#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "platform/property_list.h"
#include "platform/user_defaults.h"
#include "tools/lumoctl/arguments.h"

namespace lumoctl {

// Where a command prints what was asked for, and its complaints.
struct Streams {
  std::ostream& out;
  std::ostream& err;
  // What the preferences had to say of their file so far, for example why it cannot be written. Part of the
  // complaint when the command fails.
  const std::vector<std::string>& remarks;
};

inline constexpr int kDone = 0;
inline constexpr int kFailed = 1;
inline constexpr int kUsage = 2;

// The values that the kiosk registers from its factory file `factory`.
platform::Dictionary registeredValues(const platform::Dictionary& factory);

// The commands on the preferences in `defaults`; each returns the exit status, with one line on `err` when it
// is not 0. `factory` are the registered values.
int readDefaults(const DefaultsRead& command, const platform::UserDefaults& defaults,
                 const platform::Dictionary& factory, const Streams& streams);
// Warns of a key that is not in the key table and of a value that its readers do not understand, and stores
// it all the same.
int writeDefaults(const DefaultsWrite& command, platform::UserDefaults& defaults, const Streams& streams);
int deleteDefaults(const DefaultsDelete& command, platform::UserDefaults& defaults, const Streams& streams);
// Four columns, parted by two blanks at least: key, type, factory value, value in force; "-" for none.
// Keys of the user that are not in the key table follow with the type "unknown".
int listDefaults(const platform::UserDefaults& defaults, const platform::Dictionary& factory,
                 const Streams& streams);
int exportDefaults(const DefaultsExport& command, const platform::UserDefaults& defaults,
                   const Streams& streams);
// Sets each value of the file; others stay. A file that cannot be stored as a whole changes nothing.
int importDefaults(const DefaultsImport& command, platform::UserDefaults& defaults, std::istream& in,
                   const Streams& streams);

}  // namespace lumoctl

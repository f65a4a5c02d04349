#include "tools/lumoctl/defaults_command.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <istream>
#include <iterator>
#include <ostream>
#include <string>
#include <system_error>
#include <vector>

#include <unistd.h>

#include "app/PreferenceKeys.h"
#include "platform/file_io.h"
#include "platform/property_list_file.h"
#include "platform/property_list_xml.h"
#include "platform/strings.h"

namespace lumoctl {

namespace {

using platform::PropertyList;

int failed(const Streams& streams, const std::string& why) {
  streams.err << "lumoctl: " << why;
  for (const std::string& remark : streams.remarks) {
    streams.err << "; " << remark;
  }
  streams.err << '\n';
  return kFailed;
}

const char* typeText(lumo::PreferenceType type) {
  switch (type) {
    case lumo::PreferenceType::Boolean:
      return "boolean";
    case lumo::PreferenceType::String:
      return "string";
    case lumo::PreferenceType::Array:
      return "array";
    case lumo::PreferenceType::Dictionary:
      return "dictionary";
  }
  return "";
}

void warn(const std::string& key, const PropertyList& value, const Streams& streams) {
  const auto* row = lumo::preferenceKey(key);
  if (row == nullptr) {
    streams.err << "lumoctl: warning: the kiosk knows no key " << key << '\n';
  } else if (!lumo::matches(row->type, value)) {
    streams.err << "lumoctl: warning: the kiosk expects a value of type " << typeText(row->type) << " for "
                << key << '\n';
  }
}

// Whether the value comes back from a file as it went in. What does not would be kept differently or not at
// all (control characters, values nested too deeply).
bool canBeStored(const std::string& key, const PropertyList& value) {
  const PropertyList whole(platform::Dictionary{{key, value}});
  bool dropped = false;
  const auto back = platform::propertyListFromXml(platform::xmlFromPropertyList(whole, dropped));
  return !dropped && back && *back == whole;
}

bool stored(platform::UserDefaults& defaults, const std::string& key, const PropertyList& value) {
  defaults.setObject(value, key);
  const bool written = defaults.synchronize();
  const auto user = defaults.userValues();
  const auto* held = user.find(key);
  return written && held != nullptr && *held == value;
}

// One line for a table.
std::string cellText(const PropertyList* value) {
  std::string text;
  if (value == nullptr) {
    return "-";
  }
  if (const auto* flag = value->as<bool>()) {
    return *flag ? "true" : "false";
  }
  if (const auto* array = value->as<platform::Array>()) {
    text = platform::componentsJoinedByString(*array, ", ");
  } else {
    text = platform::description(*value);
  }
  std::string line;
  for (const char byte : text) {
    const bool blank = byte == '\n' || byte == '\r' || byte == '\t' || byte == ' ';
    if (!blank) {
      line += byte;
    } else if (line.empty() || line.back() != ' ') {
      line += ' ';
    }
  }
  return line.empty() ? "\"\"" : line;
}

// How many columns a text takes, near enough for a table.
std::size_t width(const std::string& text) {
  return static_cast<std::size_t>(
      std::count_if(text.begin(), text.end(), [](char byte) { return (byte & 0xC0) != 0x80; }));
}

using Row = std::array<std::string, 4>;
// One long list must not push the values of all other rows out of sight.
constexpr std::size_t kWidestColumn = 46;

void print(const std::vector<Row>& rows, std::ostream& out) {
  std::array<std::size_t, 4> widths{};
  for (const Row& row : rows) {
    for (std::size_t column = 0; column < row.size(); ++column) {
      widths[column] = std::max(widths[column], std::min(width(row[column]), kWidestColumn));
    }
  }
  for (const Row& row : rows) {
    for (std::size_t column = 0; column + 1 < row.size(); ++column) {
      const std::size_t taken = width(row[column]);
      out << row[column] << std::string(std::max(widths[column], taken) - taken + 2, ' ');
    }
    out << row.back() << '\n';
  }
}

// What `value` is when it is added to the user's value `old`; absent when they are of different kinds.
std::optional<PropertyList> sum(const PropertyList* old, const PropertyList& value) {
  if (old == nullptr) {
    return value;
  }
  if (const auto* more = value.as<platform::Array>()) {
    const auto* array = old->as<platform::Array>();
    if (array == nullptr) {
      return std::nullopt;
    }
    platform::Array all = *array;
    all.insert(all.end(), more->begin(), more->end());
    return PropertyList(std::move(all));
  }
  const auto* dictionary = old->as<platform::Dictionary>();
  if (dictionary == nullptr) {
    return std::nullopt;
  }
  platform::Dictionary all = *dictionary;
  for (const auto& [name, element] : *value.as<platform::Dictionary>()) {
    all.set(name, element);
  }
  return PropertyList(std::move(all));
}

}  // namespace

platform::Dictionary registeredValues(const platform::Dictionary& factory) {
  platform::Dictionary values = factory;
  const auto* paths = factory.find(lumo::prefArrayOfPathNamesToDataForLumo);
  if (const auto* array = paths == nullptr ? nullptr : paths->as<platform::Array>()) {
    values.set(lumo::prefPathNamesToDataForLumo, platform::componentsJoinedByString(*array, ", "));
  }
  return values;
}

int readDefaults(const DefaultsRead& command, const platform::UserDefaults& defaults,
                 const platform::Dictionary& factory, const Streams& streams) {
  const auto user = defaults.userValues();
  if (!command.key) {
    streams.out << platform::description(user) << '\n';
    return kDone;
  }
  const auto* value = user.find(*command.key);
  if (value == nullptr) {
    const auto* registered = factory.find(*command.key);
    return failed(streams, *command.key + " is not set" +
                               (registered == nullptr ? std::string()
                                                      : "; its factory value is " + cellText(registered)));
  }
  streams.out << platform::description(*value) << '\n';
  return kDone;
}

int writeDefaults(const DefaultsWrite& command, platform::UserDefaults& defaults, const Streams& streams) {
  PropertyList value = command.value;
  if (command.add) {
    const auto user = defaults.userValues();
    const auto whole = sum(user.find(command.key), command.value);
    if (!whole) {
      return failed(streams, "the value of " + command.key + " is of another kind, nothing can be added");
    }
    value = *whole;
  }
  if (!canBeStored(command.key, value)) {
    return failed(streams, "the value for " + command.key + " cannot be stored in a property list");
  }
  warn(command.key, value, streams);
  if (!stored(defaults, command.key, value)) {
    return failed(streams, "the preferences could not be written, " + command.key + " is not stored");
  }
  return kDone;
}

int deleteDefaults(const DefaultsDelete& command, platform::UserDefaults& defaults, const Streams& streams) {
  if (!defaults.userValues().contains(command.key)) {
    return failed(streams, command.key + " is not set");
  }
  defaults.removeObject(command.key);
  if (!defaults.synchronize()) {
    return failed(streams, "the preferences could not be written, " + command.key + " stays");
  }
  return kDone;
}

int listDefaults(const platform::UserDefaults& defaults, const platform::Dictionary& factory,
                 const Streams& streams) {
  const auto user = defaults.userValues();
  std::vector<Row> rows{{"KEY", "TYPE", "FACTORY", "CURRENT"}};
  for (const lumo::PreferenceKey& key : lumo::preferenceKeys()) {
    const auto* registered = factory.find(key.name);
    const auto* own = user.find(key.name);
    std::string current = cellText(own != nullptr ? own : registered);
    if (own == nullptr && registered == nullptr) {
      const bool isBoolean = key.type == lumo::PreferenceType::Boolean;
      current = key.codeDefault != nullptr ? key.codeDefault : isBoolean ? "false" : "-";
    }
    rows.push_back({key.name, typeText(key.type), cellText(registered), std::move(current)});
  }
  for (const auto& [name, value] : user) {
    if (lumo::preferenceKey(name) == nullptr) {
      rows.push_back({name, "unknown", "-", cellText(&value)});
    }
  }
  print(rows, streams.out);
  return kDone;
}

int exportDefaults(const DefaultsExport& command, const platform::UserDefaults& defaults,
                   const Streams& streams) {
  const std::string bytes = platform::xmlDataFromPropertyList(defaults.userValues());
  if (command.file == "-") {
    streams.out << bytes;
    return kDone;
  }
  const std::filesystem::path path = command.file;
  std::filesystem::path temporary = path;
  temporary += ".new-" + std::to_string(::getpid());
  if (const auto error = platform::replaceFile(path, temporary, bytes)) {
    return failed(streams, command.file + " cannot be written: " + error.message());
  }
  return kDone;
}

int importDefaults(const DefaultsImport& command, platform::UserDefaults& defaults, std::istream& in,
                   const Streams& streams) {
  std::string bytes;
  if (command.file == "-") {
    std::array<char, 65536> buffer;
    while (in && bytes.size() <= platform::propertyListSizeLimit) {
      in.read(buffer.data(), buffer.size());
      bytes.append(buffer.data(), static_cast<std::size_t>(in.gcount()));
    }
  } else {
    std::error_code error;
    auto contents = platform::fileContents(command.file, platform::propertyListSizeLimit, error);
    if (!contents) {
      return failed(streams, command.file + " cannot be read: " + error.message());
    }
    bytes = std::move(contents->bytes);
  }
  const std::string name = command.file == "-" ? "standard input" : command.file;
  const auto list = platform::propertyListFromData(bytes);
  const auto* values = list ? list->as<platform::Dictionary>() : nullptr;
  if (values == nullptr) {
    return failed(streams, name + " is no property list with a dictionary");
  }
  for (const auto& [key, value] : *values) {
    if (key.empty() || !canBeStored(key, value)) {
      return failed(streams, std::string(name)
                                 .append(": the value for \"")
                                 .append(key)
                                 .append("\" cannot be stored, nothing is changed"));
    }
  }
  for (const auto& [key, value] : *values) {
    warn(key, value, streams);
    if (!stored(defaults, key, value)) {
      return failed(streams, "the preferences could not be written, " + key + " is not stored");
    }
  }
  return kDone;
}

}  // namespace lumoctl

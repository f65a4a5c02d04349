#include "tools/lumoctl/arguments.h"

#include <span>

#include "tools/lumoctl/typed_value.h"

namespace lumoctl {

const char* const usageText =
    "Usage: lumoctl open [ADDRESS|FILE...]     hand addresses and files to the kiosk\n"
    "       lumoctl open --selection           hand the selected text to the kiosk\n"
    "       lumoctl defaults read [KEY]        print the values that were set\n"
    "       lumoctl defaults write KEY VALUE   set a value; VALUE may have a type:\n"
    "                                          -string S, -bool B, -int N, -float X, -date D, -data HEX,\n"
    "                                          -array V..., -array-add V..., -dict K V..., -dict-add K V...\n"
    "       lumoctl defaults delete KEY        let the factory value show again\n"
    "       lumoctl defaults list              print every key with its type and values\n"
    "       lumoctl defaults export FILE|-     write the values that were set as a property list\n"
    "       lumoctl defaults import FILE|-     set the values of a property list\n"
    "       lumoctl listen                     print the kiosk's notifications, one JSON object a line\n"
    "       lumoctl status                     tell whether a kiosk runs, and where\n"
    "       lumoctl --help | --version\n";

namespace {

using Words = std::span<const std::string>;

Command parseOpen(Words words) {
  Open open;
  bool options = true;
  for (const std::string& word : words) {
    if (options && word == "--") {
      options = false;
    } else if (options && word == "--selection") {
      open.selection = true;
    } else if (options && word.starts_with('-')) {
      return UsageError{"open has no option " + word};
    } else {
      open.items.push_back(word);
    }
  }
  if (open.selection && !open.items.empty()) {
    return UsageError{"open takes --selection or addresses, not both"};
  }
  return open;
}

Command parseWrite(Words words) {
  if (words.empty() || words[0].empty()) {
    return UsageError{"defaults write needs a key"};
  }
  auto value = parseTypedValue(words[0], words.subspan(1));
  if (auto* error = std::get_if<std::string>(&value)) {
    return UsageError{std::move(*error)};
  }
  auto& typed = std::get<TypedValue>(value);
  return DefaultsWrite{words[0], std::move(typed.value), typed.add};
}

Command parseDefaults(Words words) {
  if (words.empty()) {
    return UsageError{"defaults needs one of read, write, delete, list, export, import"};
  }
  const std::string& verb = words[0];
  words = words.subspan(1);
  if (verb == "write") {
    return parseWrite(words);
  }
  const bool one = words.size() == 1 && !words[0].empty();
  if (verb == "read") {
    if (words.empty()) {
      return DefaultsRead{};
    }
    return one ? Command(DefaultsRead{words[0]}) : UsageError{"defaults read takes one key, or none"};
  }
  if (verb == "delete") {
    return one ? Command(DefaultsDelete{words[0]}) : UsageError{"defaults delete needs one key"};
  }
  if (verb == "list") {
    return words.empty() ? Command(DefaultsList{}) : UsageError{"defaults list takes no argument"};
  }
  if (verb == "export") {
    return one ? Command(DefaultsExport{words[0]}) : UsageError{"defaults export needs one file, or -"};
  }
  if (verb == "import") {
    return one ? Command(DefaultsImport{words[0]}) : UsageError{"defaults import needs one file, or -"};
  }
  return UsageError{"defaults has no command " + verb};
}

}  // namespace

Command parseArguments(const std::vector<std::string>& words) {
  if (words.empty()) {
    return UsageError{"a command is missing: open, defaults, listen or status"};
  }
  const std::string& verb = words[0];
  const Words rest = Words(words).subspan(1);
  if (verb == "--help" || verb == "-h") {
    return Help{};
  }
  if (verb == "--version") {
    return Version{};
  }
  if (verb == "open") {
    return parseOpen(rest);
  }
  if (verb == "defaults") {
    return parseDefaults(rest);
  }
  if (verb == "listen") {
    return rest.empty() ? Command(Listen{}) : UsageError{"listen takes no argument"};
  }
  if (verb == "status") {
    return rest.empty() ? Command(Status{}) : UsageError{"status takes no argument"};
  }
  return UsageError{"there is no command " + verb};
}

}  // namespace lumoctl

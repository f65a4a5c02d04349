#include "app/PreferenceKeys.h"

#include <algorithm>
#include <array>

namespace lumo {
namespace {

using Type = PreferenceType;
using Input = PreferenceInput;
using Group = PreferenceGroup;

constexpr std::array keys{
    PreferenceKey{prefServerAddress, Type::String, Input::Address, nullptr, Group::Server, "Address",
                  "Address of the photo server, the home page"},
    PreferenceKey{prefDefaultServerAddress, Type::String, Input::Address, nullptr, Group::Server,
                  "Fallback address", "Address of the photo server where no address is set"},
    PreferenceKey{prefForceFullScreen, Type::Boolean, Input::Switch, nullptr, Group::Window, "Full screen",
                  "Cover the first screen with the browser window"},
    PreferenceKey{prefWindowAlwaysStatusLevel, Type::Boolean, Input::Switch, nullptr, Group::Window,
                  "Always on top", "Keep the browser window above all other windows"},
    PreferenceKey{prefShowMenuBar, Type::Boolean, Input::Switch, nullptr, Group::Window, "Menu bar",
                  "Show the menu bar"},
    PreferenceKey{prefShowNavigationBar, Type::Boolean, Input::Switch, nullptr, Group::Window,
                  "Navigation bar",
                  "Show the navigation bar; without it the settings open with Ctrl and comma"},
    PreferenceKey{prefShowWindowTitle, Type::Boolean, Input::Switch, nullptr, Group::Window, "Window title",
                  "Show the title of the window"},
    PreferenceKey{prefFullSizeContentView, Type::Boolean, Input::Switch, nullptr, Group::Window,
                  "Page under the title bar", "Let the page reach under the title bar"},
    PreferenceKey{prefDoAutoLoadUrlAtStartup, Type::Boolean, Input::Switch, nullptr, Group::StartAndExit,
                  "Open the home page", "Load the home page at launch"},
    PreferenceKey{prefClearCacheAtLaunch, Type::Boolean, Input::Switch, nullptr, Group::StartAndExit,
                  "Empty the page cache", "Start with an empty page cache"},
    PreferenceKey{prefKeepAppActiveAlways, Type::Boolean, Input::Switch, nullptr, Group::StartAndExit,
                  "Stay in front", "Take the foreground back at once when another application gets it"},
    PreferenceKey{prefDoNotConfirmOnExit, Type::Boolean, Input::Switch, nullptr, Group::StartAndExit,
                  "Quit without asking", "Leave out the question before the kiosk quits"},
    PreferenceKey{prefLenientWithFailProvisionalNavigation, Type::Boolean, Input::Switch, nullptr,
                  Group::Pages, "No error page", "Show no error page when a server cannot be reached"},
    PreferenceKey{prefShowPrefPanelWhenUrlLoadFailed, Type::Boolean, Input::Switch, nullptr, Group::Pages,
                  "Settings after a failure", "Open the settings after a page that could not be loaded"},
    PreferenceKey{prefFirstFocusWebFieldByIdentifier, Type::String, Input::Word, nullptr, Group::Pages,
                  "Field with the focus",
                  "The id of the input field that gets the focus when a page has loaded"},
    PreferenceKey{prefPathNamesToForceFocus, Type::String, Input::Paths, nullptr, Group::Routes,
                  "Pages with a focus",
                  "Paths of the pages on which the field named under Pages gets the focus"},
    PreferenceKey{prefPathNamesToDataForLumo, Type::String, Input::Paths, nullptr, Group::Routes,
                  "Paths that end an order",
                  "Server paths that release the order and close the window; without a value of the user it "
                  "is the factory list"},
    PreferenceKey{prefArrayOfPathNamesToDataForLumo, Type::Array, Input::Paths, nullptr, Group::Routes,
                  "Factory paths that end an order", "Factory list of the server paths that end a session"},
    PreferenceKey{prefThisUserAgent, Type::String, Input::Text, nullptr, Group::Advanced, "User agent",
                  "Text after the engine's user agent, separated by one blank"},
    PreferenceKey{prefJunivaPhotoStationListPath, Type::String, Input::Text, "registrationorders",
                  Group::Advanced, "Path of a found server",
                  "Path that is appended to the address of a server found by search"},
    PreferenceKey{LumoAV_ffmpegLaunchPath, Type::String, Input::Program, "/usr/local/bin/ffmpeg",
                  Group::Advanced, "Movie converter", "Program that converts movies"},
    PreferenceKey{prefShowWindowTitleBar, Type::Boolean, Input::Switch, nullptr, Group::Advanced, "Title bar",
                  "Without effect: it is read, and the title bar shows all the same"},
    PreferenceKey{prefRunningUrlString, Type::String, Input::Address, nullptr, Group::Kiosk,
                  "Running address", "Address that the browser loads and shows"},
    PreferenceKey{prefSelectedJunivaServerInfo, Type::Dictionary, Input::Text, nullptr, Group::Kiosk,
                  "Chosen server", "Server chosen by search: `status`, `server`, `urlstring`, `ipaddress`"},
    PreferenceKey{prefJunivaServerUrlString, Type::String, Input::Address, nullptr, Group::Kiosk,
                  "Address of the chosen server", "Record of the address of the server chosen last"},
    PreferenceKey{prefScanReturnStringFormat, Type::String, Input::Text, nullptr, Group::Kiosk, "Scan format",
                  "Record of the last scan format that the server sent"},
    PreferenceKey{
        prefEnableLockedFields1, Type::Boolean, Input::Switch, nullptr, Group::Kiosk,
        "Change protected settings",
        "Whether the protected groups of the settings are open; closed again each time the settings open"},
    PreferenceKey{prefAppVersion, Type::String, Input::Text, nullptr, Group::Kiosk, "Version",
                  "Record of the version that ran last"},
};

constexpr std::array groups{
    PreferenceGroupText{Group::Server, "Server", "The photo server whose pages this kiosk shows", false},
    PreferenceGroupText{Group::Window, "Window", "What of the browser window can be seen, and where", false},
    PreferenceGroupText{Group::StartAndExit, "Start and exit", "What happens at launch and before the end",
                        false},
    PreferenceGroupText{Group::Pages, "Pages", "What happens around a page that loads", false},
    PreferenceGroupText{
        Group::Printing, "Printing",
        "Receipts go to this computer's default printer, which the system's own print settings "
        "choose. A script printtocups2.sh on the desktop takes the place of the kiosk's own",
        false},
    PreferenceGroupText{Group::Routes, "Pages with a meaning",
                        "Paths of the photo server's application by which the kiosk knows what to do", true},
    PreferenceGroupText{Group::Advanced, "Advanced", "What suits nearly every station as it comes", true},
};

const char* typeName(const PreferenceKey& key) {
  switch (key.type) {
    case Type::Boolean:
      return "boolean";
    case Type::String:
      return key.input == Input::Paths ? "string, separated by commas" : "string";
    case Type::Array:
      return "array of strings";
    case Type::Dictionary:
      break;
  }
  return "dictionary";
}

// Where a person finds it.
std::string placeOf(const PreferenceKey& key) {
  const auto* text = std::find_if(groups.begin(), groups.end(),
                                  [&key](const auto& group) { return group.group == key.group; });
  return text == groups.end() ? "kiosk" : std::string(text->title) + ": " + key.title;
}

// What stands in a cell for that value.
std::string cellText(const platform::PropertyList& value) {
  std::string text;
  if (const auto* flag = value.as<bool>()) {
    return *flag ? "true" : "false";
  }
  if (const auto* array = value.as<platform::Array>()) {
    for (const auto& element : *array) {
      text += (text.empty() ? "`" : ", `") + platform::stringValue(element).value_or("") + "`";
    }
  } else if (const auto plain = platform::stringValue(value); plain && !plain->empty()) {
    text = "`" + *plain + "`";
  }
  return text;
}

}  // namespace

std::span<const PreferenceKey> preferenceKeys() {
  return keys;
}

const PreferenceKey* preferenceKey(std::string_view name) {
  const auto* row =
      std::find_if(keys.begin(), keys.end(), [name](const auto& key) { return name == key.name; });
  return row == keys.end() ? nullptr : row;
}

std::span<const PreferenceGroupText> preferenceGroups() {
  return groups;
}

bool matches(PreferenceType type, const platform::PropertyList& value) {
  switch (type) {
    case Type::Boolean:
      return platform::boolValue(value).has_value();
    case Type::String:
      return platform::stringValue(value).has_value();
    case Type::Array: {
      const auto* array = value.as<platform::Array>();
      return array != nullptr && std::all_of(array->begin(), array->end(), [](const auto& element) {
               return platform::stringValue(element).has_value();
             });
    }
    case Type::Dictionary:
      break;
  }
  return value.as<platform::Dictionary>() != nullptr;
}

std::string preferenceTable(const platform::Dictionary& factory) {
  std::string table =
      "| Key | Type | In the settings | Factory value | Without a value | Effect |\n"
      "|---|---|---|---|---|---|\n";
  for (const auto& key : keys) {
    const auto* value = factory.find(key.name);
    std::string fallback = key.codeDefault != nullptr ? "`" + std::string(key.codeDefault) + "`" : "";
    if (key.type == Type::Boolean) {
      fallback = "false";
    }
    const std::array<std::string, 6> cells{"`" + std::string(key.name) + "`", typeName(key), placeOf(key),
                                           value ? cellText(*value) : "",     fallback,      key.effect};
    table += '|';
    for (const auto& cell : cells) {
      table += cell.empty() ? " |" : " " + cell + " |";
    }
    table += '\n';
  }
  return table;
}

}  // namespace lumo

#include "app/PreferenceKeys.h"

#include <algorithm>
#include <array>

namespace lumo {
namespace {

using enum PreferenceType;

constexpr std::array keys{
    PreferenceKey{prefServerAddress, String, nullptr, "Address of the photo server, the home page", true},
    PreferenceKey{prefDefaultServerAddress, String, nullptr,
                  "Address of the photo server where `prefServerAddress` is not set", true},
    PreferenceKey{prefDoAutoLoadUrlAtStartup, Boolean, nullptr, "Load the home page at launch", true},
    PreferenceKey{prefForceFullScreen, Boolean, nullptr, "Cover the first screen with the browser window",
                  true},
    PreferenceKey{prefWindowAlwaysStatusLevel, Boolean, nullptr,
                  "Keep the browser window above all other windows", true},
    PreferenceKey{prefKeepAppActiveAlways, Boolean, nullptr,
                  "Take the foreground back at once when another application gets it", true},
    PreferenceKey{prefDoNotConfirmOnExit, Boolean, nullptr, "Quit without asking", true},
    PreferenceKey{prefShowMenuBar, Boolean, nullptr, "Show the menu bar", true},
    PreferenceKey{prefShowNavigationBar, Boolean, nullptr, "Show the navigation bar", true},
    PreferenceKey{prefShowWindowTitle, Boolean, nullptr, "Show the title of the window", true},
    PreferenceKey{prefFullSizeContentView, Boolean, nullptr, "Let the page reach under the title bar", true},
    PreferenceKey{prefShowWindowTitleBar, Boolean, nullptr, "None: it is read and nothing follows from it",
                  true},
    PreferenceKey{prefThisUserAgent, String, nullptr,
                  "Text after the engine's user agent, separated by one blank", true},
    PreferenceKey{prefClearCacheAtLaunch, Boolean, nullptr, "Start with an empty page cache", true},
    PreferenceKey{prefShowPrefPanelWhenUrlLoadFailed, Boolean, nullptr,
                  "Open the preferences after a page that could not be loaded", true},
    PreferenceKey{prefLenientWithFailProvisionalNavigation, Boolean, nullptr,
                  "Show no error page when a server cannot be reached", true},
    PreferenceKey{prefFirstFocusWebFieldByIdentifier, String, nullptr,
                  "`id` of the input field that gets the focus when a page has loaded", true},
    PreferenceKey{prefPathNamesToForceFocus, String, nullptr,
                  "Paths of the pages on which that field gets the focus, separated by commas", true},
    PreferenceKey{prefArrayOfPathNamesToDataForLumo, Array, nullptr,
                  "Factory list of the server paths that end a session", true},
    PreferenceKey{
        prefPathNamesToDataForLumo, String, nullptr,
        "Server paths that release the order and close the window, separated by commas; without a value "
        "of the user it is the factory list",
        true},
    PreferenceKey{prefJunivaPhotoStationListPath, String, "registrationorders",
                  "Path that is appended to the address of a server found by search", true},
    PreferenceKey{LumoAV_ffmpegLaunchPath, String, "/usr/local/bin/ffmpeg", "Program that converts movies",
                  true},
    PreferenceKey{prefRunningUrlString, String, nullptr, "Address that the browser loads and shows", false},
    PreferenceKey{prefSelectedJunivaServerInfo, Dictionary, nullptr,
                  "Server chosen by search: `status`, `server`, `urlstring`, `ipaddress`", false},
    PreferenceKey{prefJunivaServerUrlString, String, nullptr,
                  "Record of the address of the server chosen last", false},
    PreferenceKey{prefScanReturnStringFormat, String, nullptr,
                  "Record of the last scan format that the server sent", false},
    PreferenceKey{
        prefEnableLockedFields1, Boolean, nullptr,
        "Whether the first group of protected fields is open; closed again with each preferences window",
        false},
    PreferenceKey{prefAppVersion, String, nullptr, "Record of the version that ran last", false},
};

const char* typeName(PreferenceType type) {
  switch (type) {
    case Boolean:
      return "boolean";
    case String:
      return "string";
    case Array:
      return "array of strings";
    case Dictionary:
      return "dictionary";
  }
  return "";
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

bool matches(PreferenceType type, const platform::PropertyList& value) {
  switch (type) {
    case Boolean:
      return platform::boolValue(value).has_value();
    case String:
      return platform::stringValue(value).has_value();
    case Array: {
      const auto* array = value.as<platform::Array>();
      return array != nullptr && std::all_of(array->begin(), array->end(), [](const auto& element) {
               return platform::stringValue(element).has_value();
             });
    }
    case Dictionary:
      return value.as<platform::Dictionary>() != nullptr;
  }
  return false;
}

std::string preferenceTable(const platform::Dictionary& factory) {
  std::string table =
      "| Key | Type | Set by | Factory value | Without a value | Effect |\n"
      "|---|---|---|---|---|---|\n";
  for (const auto& key : keys) {
    const auto* value = factory.find(key.name);
    std::string fallback = key.codeDefault != nullptr ? "`" + std::string(key.codeDefault) + "`" : "";
    if (key.type == Boolean) {
      fallback = "false";
    }
    const std::array<std::string, 6> cells{
        "`" + std::string(key.name) + "`", typeName(key.type), key.operatorSets ? "operator" : "kiosk",
        value ? cellText(*value) : "",     fallback,           key.effect};
    table += '|';
    for (const auto& cell : cells) {
      table += cell.empty() ? " |" : " " + cell + " |";
    }
    table += '\n';
  }
  return table;
}

}  // namespace lumo

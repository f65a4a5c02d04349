#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "platform/property_list.h"

namespace lumo {

// The names of the preferences, as they stand in the domain file.
inline constexpr char prefServerAddress[] = "prefServerAddress";
inline constexpr char prefDefaultServerAddress[] = "prefDefaultServerAddress";
inline constexpr char prefRunningUrlString[] = "prefRunningUrlString";
inline constexpr char prefShowMenuBar[] = "prefShowMenuBar";
inline constexpr char prefDoAutoLoadUrlAtStartup[] = "prefDoAutoLoadUrlAtStartup";
inline constexpr char prefDoNotConfirmOnExit[] = "prefDoNotConfirmOnExit";
inline constexpr char prefKeepAppActiveAlways[] = "prefKeepAppActiveAlways";
inline constexpr char prefForceFullScreen[] = "prefForceFullScreen";
inline constexpr char prefWindowAlwaysStatusLevel[] = "prefWindowAlwaysStatusLevel";
inline constexpr char prefThisUserAgent[] = "prefThisUserAgent";
inline constexpr char prefClearCacheAtLaunch[] = "prefClearCacheAtLaunch";
inline constexpr char prefShowNavigationBar[] = "prefShowNavigationBar";
inline constexpr char prefShowWindowTitle[] = "prefShowWindowTitle";
inline constexpr char prefFullSizeContentView[] = "prefFullSizeContentView";
inline constexpr char prefShowWindowTitleBar[] = "prefShowWindowTitleBar";
inline constexpr char prefShowPrefPanelWhenUrlLoadFailed[] = "prefShowPrefPanelWhenUrlLoadFailed";
inline constexpr char prefLenientWithFailProvisionalNavigation[] = "prefLenientWithFailProvisionalNavigation";
inline constexpr char prefFirstFocusWebFieldByIdentifier[] = "prefFirstFocusWebFieldByIdentifier";
inline constexpr char prefPathNamesToForceFocus[] = "prefPathNamesToForceFocus";
inline constexpr char prefArrayOfPathNamesToDataForLumo[] = "prefArrayOfPathNamesToDataForLumo";
inline constexpr char prefPathNamesToDataForLumo[] = "prefPathNamesToDataForLumo";
inline constexpr char prefScanReturnStringFormat[] = "prefScanReturnStringFormat";
inline constexpr char prefEnableLockedFields1[] = "prefEnableLockedFields1";
inline constexpr char prefSelectedJunivaServerInfo[] = "prefSelectedJunivaServerInfo";
inline constexpr char prefJunivaPhotoStationListPath[] = "prefJunivaPhotoStationListPath";
inline constexpr char prefJunivaServerUrlString[] = "prefJunivaServerUrlString";
inline constexpr char prefAppVersion[] = "prefAppVersion";
inline constexpr char LumoAV_ffmpegLaunchPath[] = "LumoAV_ffmpegLaunchPath";

enum class PreferenceType { Boolean, String, Array, Dictionary };

// How a person writes a value. Paths are a list: an array of strings, or one string with commas in between.
enum class PreferenceInput { Switch, Text, Word, Address, Program, Paths };

// Where a preference stands in the settings; Kiosk: nowhere, since the kiosk itself keeps it.
enum class PreferenceGroup { Kiosk, Server, Window, StartAndExit, Pages, Printing, Routes, Advanced };

// One row of the key table.
struct PreferenceKey {
  const char* name;
  PreferenceType type;
  PreferenceInput input;
  // What the code itself uses when neither layer has a value, as text; null where a reader gets nothing or
  // false.
  const char* codeDefault;
  PreferenceGroup group;
  // What it is called in the settings.
  const char* title;
  // One line for people, without a full stop.
  const char* effect;

  bool operatorSets() const { return group != PreferenceGroup::Kiosk; }
};

// A group of the settings.
struct PreferenceGroupText {
  PreferenceGroup group;
  const char* title;
  const char* explanation;
  // Whether its values can keep a station from working, so that it is locked at first.
  bool isProtected;
};

// Every preference, in the order in which people read them. The rows live as long as the program; any thread.
std::span<const PreferenceKey> preferenceKeys();
// The row of that name, or null.
const PreferenceKey* preferenceKey(std::string_view name);
// The groups in the order in which people read them, the protected ones last. Printing has no preferences:
// its explanation is all there is.
std::span<const PreferenceGroupText> preferenceGroups();
// Whether a value of this kind is what the readers of `type` expect.
bool matches(PreferenceType type, const platform::PropertyList& value);
// The rows as a Markdown table, with the values that the factory file gives.
std::string preferenceTable(const platform::Dictionary& factory);

}  // namespace lumo

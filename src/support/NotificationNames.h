#pragma once

// Every notification of the application, in one place.
namespace lumo {

// In-process. A string was dropped: user information "mystrings" holds it, trimmed. Observed by AppDelegate.
inline constexpr char kAddFromString[] = "LumoNotificationAddFromString";
// In-process. Files were dropped: the object is the list of their "file://" addresses. Observed by nobody
// here.
inline constexpr char kAddFromFile[] = "LumoNotificationAddFromFile";
// In-process. An order was released, the application ends. Observed by AppDelegate.
inline constexpr char kTerminateNow[] = "LumoNotificationTerminateNow";
// In-process. The person leaves and releases the order unsaved. Observed by the browser window.
inline constexpr char kTerminateWithOutRegistrationSave[] =
    "LumoNotificationTerminateWithOutRegistrationSave";
// In-process. The window modes have changed; "sender" is the preferences window. Observed by the browser
// window.
inline constexpr char kShowNavBar[] = "ibshownavbarNotification";
// Distributed. The release message to the station's other programs; see ReleaseMessage.h.
inline constexpr char kReleaseMessage[] = "lumoXNotification";

}  // namespace lumo

#pragma once

#include "tests/fakes/fake_window.h"

namespace fakes {

// The three window descriptions of the system, as far as controllers can tell: the names, tags, identifiers
// and actions of their views. Layout and colours are left out.

// "MyWebViewWindowController": the kiosk's window of 1024 x 768. Names: ibWebView (dormant), ibDragDropView
// above it, ibTextField, segmentedControl, homeButton, goButton, settingsButton, ibProgressIndicator,
// ibProgressIndicator2. Its overlay holds the shade "progressview" and, above it in a box of their own, the
// image view "progressimage".
void describeBrowserWindow(FakeWindow& window);
// "MyPreferencesWindowController", a sheet. Names: fVersionString, fIpInfoString, fStatus1View, ibStatusText,
// ibSettingsForm and a button for each action.
void describePreferencesWindow(FakeWindow& window);
// "FindLumoJunivaServerWindowController", a sheet. Names: fVersionString, fScanningResultString,
// fBottomLineString, fProgressIndicator, ibScanButton (tag 3000), ibChoiceButton0 to ibChoiceButton9 (tags
// 5000 to 5009, hidden) and ibCloseButton.
void describeFinderWindow(FakeWindow& window);

}  // namespace fakes

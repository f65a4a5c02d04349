#include "preferences/MyPreferencesWindowController.h"

#include "platform/notification_center.h"
#include "support/SourceRevision.h"
#include "support/ZELKOR_NSStringAdditions.h"
#include "tests/unit/preferences/preferences_fixture.h"

// The window, the settings on it and the two resets.

namespace {

using lumo::MyPreferencesWindowController;
using platform::Array;
using platform::Millis;
using platform::PropertyList;
using preferencestest::kWindow;
using std::nullopt;
using testing::Contains;
using testing::ElementsAre;
using testing::StartsWith;

using PreferencesWindow = preferencestest::PreferencesTest;

std::string versionLineEnd() {
  return std::string(" - v1.0.0 (100) [") + lumo::sourceRevision() + "] ";
}

TEST_F(PreferencesWindow, IsMadeFromItsDescriptionAndIsItsDelegate) {
  load();

  EXPECT_THAT(machine.windows.loaded(), ElementsAre("MyWebViewWindowController", kWindow));
  EXPECT_EQ(sheet().delegate(), controller.get());
  EXPECT_EQ(controller->fStatus1View, &light());
  EXPECT_FALSE(controller->fIsChecking);
  EXPECT_THAT(log.lines(), Contains("MyPreferencesWindowController->windowDidLoad....windowDidLoad......"
                                    "windowDidLoad......windowDidLoad......"));
  EXPECT_THAT(log.lines(), Contains(StartsWith("self.window = ")));
}

TEST_F(PreferencesWindow, WithoutADescriptionThereIsNone) {
  machine.windows.removeDescription(kWindow);
  load();
  machine.dispatch.runUntilIdle();

  EXPECT_EQ(controller->window(), nullptr);
  controller->ibCloseButton();
  controller->ibSetWindowLevel();
  controller->ibResetToFactory1();
  controller->ibResetToFactory2();
  controller->ibSearchJunivaServer();
  controller->ibTestConnection();
  machine.dispatch.advance(Millis{6000});
  EXPECT_FALSE(controller->fIsChecking);
}

TEST_F(PreferencesWindow, ToleratesADescriptionWithoutItsViews) {
  machine.windows.describe(kWindow, fakes::FakeWindow::Kind::Sheet, [](fakes::FakeWindow&) {});
  open();
  controller->ibResetToFactory1();
  sheet().pressAlertButton("Reset To Factory");
  controller->ibCloseButton();

  EXPECT_THAT(codes, ElementsAre(1));
}

TEST_F(PreferencesWindow, ShowsTheVersionLine) {
  load();
  EXPECT_EQ(controller->fVersionString, "");
  machine.dispatch.runUntilIdle();

  EXPECT_EQ(controller->fVersionString,
            "Lumo Browser (" + lumo::ZELKOR_NSStringAdditions::RunningArchitectureDisplayString() + ")" +
                versionLineEnd() + "[XC-g++-12 sdk-webkitgtk2.50]");
  EXPECT_EQ(shown("fVersionString"), controller->fVersionString);
  EXPECT_THAT(log.lines(), Contains(StartsWith("infoDict = {")));
}

class PreferencesWithoutInfo : public preferencestest::PreferencesTest {
 protected:
  PreferencesWithoutInfo() : PreferencesTest(fakes::TestBundle::Info{}) {}
};

TEST_F(PreferencesWithoutInfo, HaveNoVersionLine) {
  open();
  EXPECT_EQ(controller->fVersionString, "");
  EXPECT_EQ(shown("fIpInfoString"), "NOT connected to any network - will use localhost");
}

TEST_F(PreferencesWithoutInfo, NameTheirQueueByAFixedIdentifier) {
  EXPECT_EQ(load().currentTaskQueue1().label(), "com.lumo.LumoBrowser.taskqueue1");
}

class PreferencesOfAnother : public preferencestest::PreferencesTest {
 protected:
  PreferencesOfAnother() : PreferencesTest({{"CFBundleIdentifier", "org.example.Other"}}) {}
};

TEST_F(PreferencesOfAnother, NameTheirQueueByTheBundle) {
  EXPECT_EQ(load().currentTaskQueue1().label(), "org.example.Other.taskqueue1");
  EXPECT_THAT(controller->fVersionString, "");
}

TEST_F(PreferencesWindow, SharesItsQueueWithTheOneBefore) {
  const MyPreferencesWindowController first(platform, {}, nullptr, computer());
  EXPECT_TRUE(load(&first).currentTaskQueue1() == first.currentTaskQueue1());
}

TEST_F(PreferencesWindow, ShowsAddressAndWifiName) {
  interfaces = std::vector<lumo::InterfaceEntry>{
      {"lo", "127.0.0.1"}, {"en0", "10.0.1.6"}, {"en0", "10.0.1.7"}, {"en1", "10.0.1.8"}};
  network.ssid = " Shop \n";
  load();
  machine.dispatch.runUntilIdle();

  EXPECT_EQ(controller->fIpInfoString, "This Computer Network Info: 10.0.1.7 at SSID Shop");
  EXPECT_EQ(shown("fIpInfoString"), controller->fIpInfoString);
  EXPECT_EQ(controller->getIPAddress(), "10.0.1.7");
  EXPECT_EQ(controller->getIPInfo(), controller->fIpInfoString);
}

TEST_F(PreferencesWindow, SaysOfAWiredComputerThatItIsNotConnected) {
  interfaces = std::vector<lumo::InterfaceEntry>{{"en0", "10.0.1.7"}};
  load();
  EXPECT_EQ(controller->getIPInfo(), "NOT connected to any network - will use localhost");
  network.ssid = " \n";
  EXPECT_EQ(controller->getIPInfo(), "NOT connected to any network - will use localhost");
}

TEST_F(PreferencesWindow, SaysOfWifiWithoutAnAddressThatItIsNotConnected) {
  network.ssid = "Shop";
  load();
  EXPECT_EQ(controller->getIPAddress(), "unknown");
  EXPECT_EQ(controller->getIPInfo(), "NOT connected to any network - will use localhost");
}

TEST_F(PreferencesWindow, LocksTheProtectedFieldsAgainAtEachOpening) {
  machine.defaults.setObject(true, lumo::prefEnableLockedFields1);
  load();
  EXPECT_FALSE(form().isLocked(lumo::prefThisUserAgent));
  machine.dispatch.runUntilIdle();

  EXPECT_EQ(stored(lumo::prefEnableLockedFields1), PropertyList(0));
  EXPECT_TRUE(form().isLocked(lumo::prefThisUserAgent));
  EXPECT_FALSE(form().isOn(lumo::prefEnableLockedFields1));
}

TEST_F(PreferencesWindow, StoresWhatIsChangedOnIt) {
  open();
  form().flip(lumo::prefDoNotConfirmOnExit);

  EXPECT_EQ(stored(lumo::prefDoNotConfirmOnExit), PropertyList(true));
  EXPECT_EQ(navBarShown, 0);
}

TEST_F(PreferencesWindow, AChangeOfTheWindowsModesAppliesAtOnce) {
  open();
  for (const char* key : {lumo::prefShowNavigationBar, lumo::prefShowMenuBar, lumo::prefShowWindowTitle,
                          lumo::prefFullSizeContentView, lumo::prefForceFullScreen}) {
    const int before = navBarShown;
    form().flip(key);
    EXPECT_EQ(navBarShown, before + 1) << key;
  }
  EXPECT_EQ(log.count("MyPreferencesWindowController->ibShowNavBar:...."), 5U);
}

TEST_F(PreferencesWindow, AChangeOfTheLevelAppliesAtOnce) {
  open();
  form().flip(lumo::prefWindowAlwaysStatusLevel);
  EXPECT_EQ(browser().level(), 25);
  EXPECT_THAT(log.lines(),
              Contains(StartsWith("MyPreferencesWindowController->ibSetWindowLevel:....parentwindow = 0x")));

  form().flip(lumo::prefWindowAlwaysStatusLevel);
  EXPECT_EQ(browser().level(), 0);
  EXPECT_EQ(navBarShown, 0);
}

TEST_F(PreferencesWindow, WithoutAParentNeitherLevelNorModesAreSet) {
  open();
  controller->ibCloseButton();
  machine.journal.clear();
  log.clear();
  machine.defaults.setObject(true, lumo::prefWindowAlwaysStatusLevel);
  controller->ibSetWindowLevel();
  controller->ibShowNavBar();

  EXPECT_EQ(browser().level(), 0);
  EXPECT_EQ(navBarShown, 0);
  EXPECT_THAT(log.lines(),
              ElementsAre("MyPreferencesWindowController->ibSetWindowLevel:....parentwindow = (null)",
                          "MyPreferencesWindowController->ibShowNavBar:...."));
}

TEST_F(PreferencesWindow, AParentWithoutThatCommandIsLeftAlone) {
  const MyPreferencesWindowController other(platform, {}, nullptr, computer());
  parent->beginSheet(*other.window(), {});
  const_cast<MyPreferencesWindowController&>(other).ibShowNavBar();
  EXPECT_EQ(navBarShown, 0);
}

TEST_F(PreferencesWindow, WithoutAWindowANotificationAsksForTheModes) {
  std::vector<void*> senders;
  machine.notifications.addObserver("ibshownavbarNotification", [&](const platform::Notification& notice) {
    senders.push_back(notice.sender);
    EXPECT_EQ(notice.object, nullopt);
  });
  machine.windows.removeDescription(kWindow);
  load();
  controller->ibShowNavBar();
  EXPECT_THAT(senders, ElementsAre(controller.get()));
}

TEST_F(PreferencesWindow, ItsCloseButtonEndsTheSheetWithOne) {
  open();
  EXPECT_TRUE(sheet().press("ibCloseButton"));

  EXPECT_THAT(codes, ElementsAre(1));
  EXPECT_EQ(controller->window()->sheetParent(), nullptr);
  EXPECT_THAT(log.lines(), ElementsAre("MyPreferencesWindowController->ibCloseButton:...."));
}

TEST_F(PreferencesWindow, EscapeClosesItAsTheButtonDoes) {
  open();
  sheet().requestClose();

  EXPECT_THAT(codes, ElementsAre(1));
  EXPECT_TRUE(log.contains("MyPreferencesWindowController->ibCloseButton:...."));
}

TEST_F(PreferencesWindow, ClosingItWhenItIsNoSheetDoesNothing) {
  open();
  sheet().press("ibCloseButton");
  controller->ibCloseButton();

  EXPECT_THAT(codes, ElementsAre(1));
}

TEST_F(PreferencesWindow, ClosingItTakesWhatHasJustBeenWritten) {
  open();
  form().type(lumo::prefServerAddress, "http://late:9090");
  sheet().press("ibCloseButton");

  EXPECT_EQ(text(lumo::prefServerAddress), "http://late:9090");
}

struct Reset {
  const char* name;
  const char* button;
  const char* operation;
  const char* informativeText;
};

class PreferencesReset : public preferencestest::PreferencesTest, public testing::WithParamInterface<Reset> {
 protected:
  std::string logged(const std::string& end) {
    return std::string("MyPreferencesWindowController->") + GetParam().operation + "...." + end;
  }
  // Values that both resets would change.
  void setUserValues() {
    machine.defaults.registerDefaults({{lumo::prefPathNamesToForceFocus, "/factory"}});
    machine.defaults.setObject("/user", lumo::prefPathNamesToForceFocus);
    machine.defaults.setObject(Array{"a", "b"}, lumo::prefArrayOfPathNamesToDataForLumo);
    machine.defaults.setObject("edited", lumo::prefPathNamesToDataForLumo);
  }
};

INSTANTIATE_TEST_SUITE_P(Groups, PreferencesReset,
                         testing::Values(Reset{"FocusItem", "ibResetToFactory1", "ibResetToFactory1:",
                                               "This will reset the APIs for Setting Focus Item...\n\n"},
                                         Reset{"EndOfSession", "ibResetToFactory2", "ibResetToFactory2:",
                                               "This will reset the APIs for when to End Session...\n\n"}),
                         [](const auto& info) { return info.param.name; });

TEST_P(PreferencesReset, AsksFirst) {
  open();
  EXPECT_TRUE(sheet().press(GetParam().button));

  const platform::Alert* alert = sheet().currentAlert();
  ASSERT_NE(alert, nullptr);
  EXPECT_EQ(alert->style, platform::AlertStyle::Critical);
  EXPECT_EQ(alert->messageText, "Reset To Factory Setting");
  EXPECT_EQ(alert->informativeText, GetParam().informativeText);
  ASSERT_EQ(alert->buttons.size(), 2U);
  EXPECT_EQ(alert->buttons[0].title, "Cancel");
  EXPECT_EQ(alert->buttons[0].tag, 1000);
  EXPECT_EQ(alert->buttons[1].title, "Reset To Factory");
  EXPECT_EQ(alert->buttons[1].tag, 1001);
  EXPECT_THAT(log.lines(),
              ElementsAre(logged(""), "MyPreferencesWindowController->windowWillBeginSheet:...."));
}

TEST_P(PreferencesReset, CancelChangesNothing) {
  setUserValues();
  open();
  sheet().press(GetParam().button);
  log.clear();
  sheet().pressAlertButton("Cancel");

  EXPECT_EQ(text(lumo::prefPathNamesToForceFocus), "/user");
  EXPECT_EQ(text(lumo::prefPathNamesToDataForLumo), "edited");
  EXPECT_THAT(log.lines(), ElementsAre(logged("returnCode = 1000")));
}

TEST_P(PreferencesReset, ResetsItsOwnGroupAlone) {
  setUserValues();
  open();
  sheet().press(GetParam().button);
  log.clear();
  sheet().pressAlertButton("Reset To Factory");

  const bool first = std::string(GetParam().name) == "FocusItem";
  EXPECT_EQ(stored(lumo::prefPathNamesToForceFocus), first ? nullopt : std::optional(PropertyList("/user")));
  EXPECT_EQ(form().text(lumo::prefPathNamesToForceFocus), first ? "/factory" : "/user");
  EXPECT_EQ(text(lumo::prefPathNamesToDataForLumo), first ? "edited" : "a, b");
  EXPECT_EQ(form().text(lumo::prefPathNamesToDataForLumo), first ? "edited" : "a\nb");
  EXPECT_EQ(stored(lumo::prefArrayOfPathNamesToDataForLumo), PropertyList(Array{"a", "b"}));
  std::vector<std::string> expected{logged("returnCode = 1001"), logged("NSAlertSecondButtonReturn")};
  if (!first) {
    expected.push_back(logged("s = a, b"));
  }
  EXPECT_EQ(log.lines(), expected);
}

TEST_P(PreferencesReset, TakesWhatHasJustBeenWrittenBefore) {
  open();
  form().type(lumo::prefServerAddress, "http://late:9090");
  controller->ibResetToFactory1();
  EXPECT_EQ(text(lumo::prefServerAddress), "http://late:9090");
}

TEST_F(PreferencesWindow, TheSecondResetDoesNothingWithoutAFactoryList) {
  machine.defaults.setObject("edited", lumo::prefPathNamesToDataForLumo);
  open();
  for (const bool isText : {false, true}) {
    if (isText) {
      machine.defaults.setObject("no list", lumo::prefArrayOfPathNamesToDataForLumo);
    }
    sheet().press("ibResetToFactory2");
    sheet().pressAlertButton("Reset To Factory");
    EXPECT_EQ(text(lumo::prefPathNamesToDataForLumo), "edited");
  }
}

TEST_F(PreferencesWindow, TellsItsEnd) {
  open();
  controller.reset();
  EXPECT_THAT(log.lines(), ElementsAre("MyPreferencesWindowController->dealloc.... DEALLOC .......DEALLOC "
                                       ".......DEALLOC .......   "));
}

TEST_F(PreferencesWindow, MayEndBeforeItsWorkHasRun) {
  load();
  controller.reset();
  machine.dispatch.advance(Millis{6000});
  EXPECT_EQ(machine.windows.window(kWindow), nullptr);
}

TEST_F(PreferencesWindow, LogsTheOtherCallbacks) {
  open();
  controller->windowDidExpose();
  controller->windowWillBeginSheet();
  controller->URLSession_downloadTask_didWriteData_totalBytesWritten_totalBytesExpectedToWrite();
  EXPECT_THAT(log.lines(), ElementsAre("MyPreferencesWindowController->windowDidExpose:....",
                                       "MyPreferencesWindowController->windowWillBeginSheet:....",
                                       "MyPreferencesWindowController->URLSession:downloadTask:didWriteData:"
                                       "totalBytesWritten:totalBytesExpectedToWrite:...."));
}

}  // namespace

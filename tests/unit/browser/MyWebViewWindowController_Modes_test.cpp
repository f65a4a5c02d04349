#include "tests/unit/browser/browser_fixture.h"

namespace {

using browsertest::kScreen;
using browsertest::kUsualFrame;
using platform::Rect;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr unsigned kFullSize = 32768;
constexpr const char* kToggleLine = "NEED TO TOOGGLE TO SMALLER SIZE....";

using BrowserModes = browsertest::BrowserTest;

TEST_F(BrowserModes, AreAppliedInOrderWithTheMenuBarSetTwice) {
  makeShown();
  for (const char* key : {lumo::prefShowNavigationBar, lumo::prefShowWindowTitle, lumo::prefShowMenuBar,
                          lumo::prefFullSizeContentView, lumo::prefForceFullScreen}) {
    set(key, true);
  }
  browser->adjustWebViewForNavigationBar({});

  EXPECT_THAT(machine.journal.entries(), ElementsAre("application setMenuBarVisible YES", "windows screens",
                                                     "MyWebViewWindowController setToolbarVisible YES",
                                                     "MyWebViewWindowController setTitleVisible YES",
                                                     "MyWebViewWindowController setStyleMask 32783",
                                                     "application setMenuBarVisible YES"));
  EXPECT_THAT(log.lines(), ElementsAre("MyWebViewWindowController->makeWindowFullScreen...."));
}

TEST_F(BrowserModes, SwitchedOffAreAppliedInTheSameOrder) {
  makeShown();
  browser->adjustWebViewForNavigationBar({});

  EXPECT_THAT(machine.journal.entries(),
              ElementsAre("application setMenuBarVisible NO", "windows screens",
                          "MyWebViewWindowController setToolbarVisible NO",
                          "MyWebViewWindowController setTitleVisible NO",
                          "MyWebViewWindowController setStyleMask 15", "application setMenuBarVisible NO"));
}

TEST_F(BrowserModes, EachPreferenceRulesItsOwnPartAlone) {
  makeShown();
  const auto shown = [&] {
    return std::vector<bool>{machine.application.isMenuBarVisible(), window().isToolbarVisible(),
                             window().isTitleVisible(), (window().styleMask() & kFullSize) != 0};
  };
  const char* keys[] = {lumo::prefShowMenuBar, lumo::prefShowNavigationBar, lumo::prefShowWindowTitle,
                        lumo::prefFullSizeContentView};
  for (std::size_t on = 0; on < std::size(keys); ++on) {
    std::vector<bool> expected;
    for (std::size_t key = 0; key < std::size(keys); ++key) {
      set(keys[key], key == on);
      expected.push_back(key == on);
    }
    browser->adjustWebViewForNavigationBar({});
    EXPECT_EQ(shown(), expected) << keys[on];
  }
}

TEST_F(BrowserModes, TheTitleBarPreferenceHasNoVisibleEffect) {
  makeShown();
  set(lumo::prefShowWindowTitleBar, true);
  browser->adjustWebViewForNavigationBar({});
  machine.dispatch.runUntilIdle();
  const auto withTitleBar = machine.journal.entries();
  machine.journal.clear();
  set(lumo::prefShowWindowTitleBar, false);
  browser->adjustWebViewForNavigationBar({});
  machine.dispatch.runUntilIdle();

  EXPECT_EQ(machine.journal.entries(), withTitleBar);
  EXPECT_EQ(window().frame(), kUsualFrame);
  EXPECT_EQ(window().styleMask(), 15U);
}

TEST_F(BrowserModes, TheOtherBitsOfTheStyleMaskAreKept) {
  makeShown();
  window().setStyleMask(7);
  set(lumo::prefFullSizeContentView, true);
  browser->adjustWebViewForNavigationBar({});
  EXPECT_EQ(window().styleMask(), 7 | kFullSize);

  window().setStyleMask(kFullSize | 3);
  set(lumo::prefFullSizeContentView, false);
  browser->adjustWebViewForNavigationBar({});
  EXPECT_EQ(window().styleMask(), 3U);
}

TEST_F(BrowserModes, TheToolbarsActionAndTheNotificationApplyThemToo) {
  makeShown();
  set(lumo::prefShowNavigationBar, true);
  browser->ibShowNavBar({});
  EXPECT_TRUE(window().isToolbarVisible());

  set(lumo::prefShowNavigationBar, false);
  machine.notifications.postNotificationName("ibshownavbarNotification");
  EXPECT_FALSE(window().isToolbarVisible());

  set(lumo::prefShowNavigationBar, true);
  EXPECT_TRUE(window().pressAction("ibShowNavBar:", window().contentView()));
  EXPECT_TRUE(window().isToolbarVisible());
}

TEST_F(BrowserModes, ANotificationFromAnotherQueueIsAppliedOnTheMainQueue) {
  makeShown();
  set(lumo::prefShowNavigationBar, true);
  bool applied = false;
  machine.dispatch.global().async([&] {
    machine.notifications.postNotificationName("ibshownavbarNotification");
    applied = window().isToolbarVisible();
  });
  machine.dispatch.runUntilIdle();

  EXPECT_TRUE(applied);
}

using BrowserFullScreen = browsertest::BrowserTest;

TEST_F(BrowserFullScreen, WithoutAScreenNothingHappens) {
  makeShown();
  machine.windows.setScreens({});
  set(lumo::prefForceFullScreen, true);
  browser->makeWindowFullScreen();
  machine.dispatch.runUntilIdle();

  EXPECT_THAT(windowSteps(), IsEmpty());
  EXPECT_THAT(log.lines(), ElementsAre("MyWebViewWindowController->makeWindowFullScreen...."));
}

TEST_F(BrowserFullScreen, ForcingCoversTheFirstScreenFromTheMainQueue) {
  machine.windows.setScreens({{1920, 0, 1280, 1024}, kScreen});
  makeShown();
  set(lumo::prefForceFullScreen, true);
  browser->makeWindowFullScreen();
  EXPECT_THAT(windowSteps(), IsEmpty());
  machine.dispatch.runUntilIdle();

  EXPECT_THAT(windowSteps(), ElementsAre("setFrame {{1920, 0}, {1280, 1024}} animate"));
  EXPECT_EQ(window().frame(), (Rect{1920, 0, 1280, 1024}));
  EXPECT_FALSE(window().isFullScreen());
}

TEST_F(BrowserFullScreen, ForcingSetsTheFrameAlsoWhenTheWindowCoversTheScreenAlready) {
  makeShown();
  window().resizeByDesktop(kScreen);
  set(lumo::prefForceFullScreen, true);
  browser->makeWindowFullScreen();
  machine.dispatch.runUntilIdle();

  EXPECT_THAT(windowSteps(), ElementsAre("setFrame {{0, 0}, {1920, 1080}} animate"));
  EXPECT_FALSE(log.contains(kToggleLine));
}

TEST_F(BrowserFullScreen, NotForcedAWindowOfExactlyTheScreensSizeIsToggledOnce) {
  makeShown();
  window().resizeByDesktop(kScreen);
  browser->makeWindowFullScreen();
  EXPECT_THAT(windowSteps(), IsEmpty());
  EXPECT_EQ(log.count(kToggleLine), 1U);
  machine.dispatch.runUntilIdle();

  EXPECT_THAT(windowSteps(), ElementsAre("toggleFullScreen"));
  EXPECT_NE(window().frame(), kScreen);
}

TEST_F(BrowserFullScreen, NotForcedASmallerWindowIsLeftAsItIs) {
  makeShown();
  browser->makeWindowFullScreen();
  machine.dispatch.runUntilIdle();

  EXPECT_THAT(windowSteps(), IsEmpty());
  EXPECT_EQ(window().frame(), kUsualFrame);
  EXPECT_FALSE(log.contains(kToggleLine));
}

TEST_F(BrowserFullScreen, NotForcedAWindowOfTheScreensSizeElsewhereIsLeftAsItIs) {
  makeShown();
  window().resizeByDesktop({10, 0, kScreen.width, kScreen.height});
  browser->makeWindowFullScreen();
  machine.dispatch.runUntilIdle();

  EXPECT_THAT(windowSteps(), IsEmpty());
}

TEST_F(BrowserFullScreen, RequestsThatComeBeforeTheToggleDoNotUndoIt) {
  makeShown();
  window().resizeByDesktop(kScreen);
  browser->makeWindowFullScreen();
  browser->adjustWebViewForNavigationBar({});
  machine.dispatch.runUntilIdle();

  EXPECT_EQ(machine.journal.count("MyWebViewWindowController toggleFullScreen"), 1U);
  EXPECT_NE(window().frame(), kScreen);

  window().resizeByDesktop(kScreen);
  browser->makeWindowFullScreen();
  machine.dispatch.runUntilIdle();
  EXPECT_EQ(machine.journal.count("MyWebViewWindowController toggleFullScreen"), 2U);
}

TEST_F(BrowserFullScreen, NoLongerForcedTheWindowIsTakenOutOfIt) {
  set(lumo::prefForceFullScreen, true);
  makeShown();
  EXPECT_EQ(window().frame(), kScreen);

  set(lumo::prefForceFullScreen, false);
  browser->adjustWebViewForNavigationBar({});
  machine.dispatch.runUntilIdle();
  EXPECT_EQ(window().frame(), kUsualFrame);
}

TEST_F(BrowserFullScreen, AChangeThatIsDueAfterTheWindowHasGoneIsDropped) {
  set(lumo::prefForceFullScreen, true);
  make();
  browser.reset();
  machine.dispatch.runUntilIdle();

  EXPECT_THAT(machine.journal.startingWith("MyWebViewWindowController setFrame"), IsEmpty());
}

using BrowserWindowEvents = browsertest::BrowserTest;

TEST_F(BrowserWindowEvents, TheOverlayFollowsTheWindow) {
  makeShown();
  window().resizeByDesktop({30, 40, 800, 600});
  machine.dispatch.runUntilIdle();

  EXPECT_EQ(window().overlay()->frame(), (Rect{30, 40, 800, 600}));
  EXPECT_THAT(machine.journal.entries(), ElementsAre("ibChildWindow setFrame {{30, 40}, {800, 600}}"));
  EXPECT_THAT(
      log.lines(),
      ElementsAre("MyWebViewWindowController->windowDidResize:....notification = {{30, 40}, {800, 600}}..."));
}

TEST_F(BrowserWindowEvents, TheOverlayDoesNotFollowAnotherWindow) {
  makeShown();
  const auto other = machine.windows.loadWindow(browsertest::kPreferencesWindow);
  browser->windowDidResize(*other);

  EXPECT_EQ(window().overlay()->frame(), kUsualFrame);
  EXPECT_THAT(log.lines(), ElementsAre("MyWebViewWindowController->windowDidResize:....notification = "
                                       "{{0, 0}, {560, 640}}..."));
}

TEST_F(BrowserWindowEvents, EnteringTheFullScreenIsOnlyLogged) {
  makeShown();
  browser->windowDidEnterFullScreen(window());

  EXPECT_THAT(log.lines(), ElementsAre("MyWebViewWindowController->windowDidEnterFullScreen:...."));
  EXPECT_THAT(machine.journal.entries(), IsEmpty());
}

// Counts the requests to terminate.
class QuitCounter : public platform::ApplicationDelegate {
 public:
  void applicationWillFinishLaunching() override {}
  void applicationDidFinishLaunching() override {}
  platform::TerminateReply applicationShouldTerminate() override {
    ++requests;
    return platform::TerminateReply::Cancel;
  }
  bool applicationShouldTerminateAfterLastWindowClosed() override { return true; }
  void applicationDidResignActive() override {}
  void applicationWillTerminate() override {}
  void applicationMustTerminate() override {}
  void application_openURLs(const std::vector<std::string>& /*urls*/) override {}
  void application_openFiles(const std::vector<std::string>& /*filenames*/) override {}
  bool applicationOpenUntitledFile() override { return true; }

  int requests = 0;
};

TEST_F(BrowserWindowEvents, TheCloseButtonQuitsTheApplicationInsteadOfClosingTheWindow) {
  QuitCounter delegate;
  machine.application.setDelegate(&delegate);
  makeShown();
  EXPECT_FALSE(window().requestClose());
  EXPECT_EQ(delegate.requests, 0);
  EXPECT_THAT(log.lines(), ElementsAre("MyWebViewWindowController->windowShouldClose:...."));
  machine.dispatch.runUntilIdle();

  EXPECT_EQ(delegate.requests, 1);
  EXPECT_TRUE(window().isVisible());
}

TEST_F(BrowserWindowEvents, AQuitRequestThatIsDueAfterTheWindowHasGoneIsMadeAllTheSame) {
  QuitCounter delegate;
  machine.application.setDelegate(&delegate);
  makeShown();
  window().requestClose();
  browser.reset();
  machine.dispatch.runUntilIdle();

  EXPECT_EQ(delegate.requests, 1);
}

}  // namespace

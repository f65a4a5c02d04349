#include "app/AppDelegate.h"

#include "tests/unit/app/app_delegate_fixture.h"

// Life of the application after class initialisation.

namespace {

using apptest::AppDelegateTest;
using browsertest::hasInOrder;
using browsertest::kBrowserWindow;
using browsertest::kPreferencesWindow;
using lumo::AppDelegate;
using platform::Millis;
using platform::TerminateReply;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kHomeLine =
    "AppDelegate->applicationDidFinishLaunching:....11111111111111111111111111111111111111111........";

using AppDelegateWillFinish = AppDelegateTest;

TEST_F(AppDelegateWillFinish, MakesAndShowsTheBrowserWindowInOrder) {
  set(lumo::prefForceFullScreen, true);
  delegate().applicationWillFinishLaunching();

  EXPECT_THAT(
      machine.journal.entries(),
      hasInOrder({"application setMenuBarVisible NO", "windows loadWindow MyWebViewWindowController",
                  "windows screens", "MyWebViewWindowController makeKeyAndOrderFront", "windows screens"}));
  EXPECT_EQ(machine.journal.entries().front(), "application setMenuBarVisible NO");
  EXPECT_EQ(log.lines().front(), "AppDelegate->applicationWillFinishLaunching:....");
  EXPECT_EQ(log.lines().back(), "MyWebViewWindowController->makeWindowFullScreen....");
  EXPECT_EQ(log.count("MyWebViewWindowController->makeWindowFullScreen...."), 2U);
  ASSERT_NE(delegate().myWebViewWindowController, nullptr);
  EXPECT_EQ(delegate().myWebViewWindowController->window(), machine.window());
  EXPECT_TRUE(machine.window()->isVisible());

  machine.dispatch.runUntilIdle();
  EXPECT_EQ(machine.window()->frame(), browsertest::kScreen);
}

TEST_F(AppDelegateWillFinish, TheNextQuitIsNotGrantedUnasked) {
  delegate().fDoTerminateNow = true;
  delegate().applicationWillFinishLaunching();

  EXPECT_FALSE(delegate().fDoTerminateNow);
}

TEST_F(AppDelegateWillFinish, TheMenuBarIsAsThePreferenceSays) {
  set(lumo::prefShowMenuBar, true);
  delegate().applicationWillFinishLaunching();
  EXPECT_EQ(machine.journal.entries().front(), "application setMenuBarVisible YES");
  EXPECT_TRUE(machine.application.isMenuBarVisible());

  set(lumo::prefShowMenuBar, false);
  AppDelegate second(platform);
  second.applicationWillFinishLaunching();
  EXPECT_FALSE(machine.application.isMenuBarVisible());
}

TEST_F(AppDelegateWillFinish, AWindowOfExactlyTheScreensSizeIsToggledOnce) {
  machine.windows.setScreens({browsertest::kUsualFrame});
  machine.application.launch(delegate());

  EXPECT_EQ(machine.journal.count("MyWebViewWindowController toggleFullScreen"), 1U);
  EXPECT_NE(machine.window()->frame(), browsertest::kUsualFrame);
}

TEST_F(AppDelegateWillFinish, HasNoMenuItemsBeforeTheWindowIsThere) {
  EXPECT_FALSE(machine.application.isMenuItemEnabled("ibReloadPage:"));
  delegate().applicationWillFinishLaunching();

  for (const char* action : {"ibReloadPage:", "ibOpenPreferencesWindow:", "ibBringToFrontButton:"}) {
    EXPECT_TRUE(machine.application.isMenuItemEnabled(action)) << action;
  }
}

class AppDelegateDidFinish : public AppDelegateTest {
 protected:
  // Only the second half of the launch, without what it posts.
  void didFinish() {
    machine.application.setDelegate(&delegate());
    delegate().applicationWillFinishLaunching();
    machine.dispatch.runUntilIdle();
    machine.journal.clear();
    log.clear();
    delegate().applicationDidFinishLaunching();
  }
};

TEST_F(AppDelegateDidFinish, ProvidesServicesAtOnceAndDefersTheRest) {
  set(lumo::prefDoAutoLoadUrlAtStartup, true);
  set(lumo::prefServerAddress, "http://s:9090/");
  didFinish();

  EXPECT_THAT(machine.journal.entries(), ElementsAre("application setServicesProvider"));
  EXPECT_THAT(log.lines(), ElementsAre("AppDelegate->applicationDidFinishLaunching:...."));

  machine.dispatch.runUntilIdle();
  EXPECT_THAT(loads(), ElementsAre("webView1 load http://s:9090/"));
  EXPECT_EQ(machine.journal.count("application activate 3"), 1U);
  EXPECT_EQ(machine.journal.timedStartingWith("application activate").front(), "0 application activate 3");
}

TEST_F(AppDelegateDidFinish, LoadsTheHomePageWhenThePreferenceSaysSo) {
  set(lumo::prefDoAutoLoadUrlAtStartup, true);
  set(lumo::prefServerAddress, "http://s:9090/");
  set(lumo::prefRunningUrlString, "http://yesterday/");
  didFinish();
  machine.dispatch.runUntilIdle();

  EXPECT_EQ(machine.defaults.stringForKey(lumo::prefRunningUrlString), "http://s:9090/");
  EXPECT_THAT(log.lines(),
              hasInOrder({kHomeLine, "MyWebViewWindowController->ibGoButtonWK:....sender = [(null)]"}));
  EXPECT_EQ(log.count(kHomeLine), 1U);
}

TEST_F(AppDelegateDidFinish, WithoutThatPreferenceNothingIsLoadedUntilThePersonActs) {
  set(lumo::prefServerAddress, "http://s:9090/");
  set(lumo::prefRunningUrlString, "http://yesterday/");
  didFinish();
  machine.dispatch.advance(Millis{60000});
  EXPECT_THAT(loads(), IsEmpty());
  EXPECT_FALSE(log.contains(kHomeLine));
  EXPECT_EQ(machine.defaults.stringForKey(lumo::prefRunningUrlString), "http://yesterday/");

  EXPECT_TRUE(machine.application.chooseMenu("ibReloadPage:"));
  EXPECT_THAT(loads(), ElementsAre("webView1 load http://yesterday/"));
}

TEST_F(AppDelegateDidFinish, BringsTheApplicationToTheFrontInAnyCase) {
  didFinish();
  machine.dispatch.runUntilIdle();

  EXPECT_THAT(machine.application.activations(), ElementsAre(3U));
}

TEST_F(AppDelegateDidFinish, WhatIsDueAfterItsEndIsDropped) {
  set(lumo::prefDoAutoLoadUrlAtStartup, true);
  set(lumo::prefServerAddress, "http://s:9090/");
  didFinish();
  shell.reset();
  machine.journal.clear();
  machine.dispatch.runUntilIdle();

  EXPECT_THAT(machine.journal.entries(), IsEmpty());
}

using AppDelegateFront = AppDelegateTest;

TEST_F(AppDelegateFront, BringsAllWindowsForwardAndThenTheMainInterfacesOwn) {
  launch();
  fakes::FakeWindow main({machine.dispatch, machine.journal}, "MainMenu");
  delegate().window = &main;
  delegate().ibBringToFrontButton();

  EXPECT_THAT(machine.journal.entries(), ElementsAre("application activate 3", "MainMenu orderFront"));
}

TEST_F(AppDelegateFront, TakesTheForegroundBackAtOnceWhenItIsToBeActiveAlways) {
  set(lumo::prefKeepAppActiveAlways, true);
  launch();
  machine.application.resignActive();

  EXPECT_THAT(machine.journal.entries(), ElementsAre("application activate 3"));
}

TEST_F(AppDelegateFront, LeavesTheForegroundToOthersOtherwise) {
  launch();
  machine.application.resignActive();
  machine.dispatch.runUntilIdle();

  EXPECT_THAT(machine.journal.entries(), IsEmpty());
}

TEST_F(AppDelegateFront, ThePreferenceIsReadEachTime) {
  launch();
  machine.application.resignActive();
  set(lumo::prefKeepAppActiveAlways, true);
  machine.application.resignActive();
  set(lumo::prefKeepAppActiveAlways, false);
  machine.application.resignActive();

  EXPECT_THAT(machine.journal.entries(), ElementsAre("application activate 3"));
}

using AppDelegateMenu = AppDelegateTest;

TEST_F(AppDelegateMenu, ReloadLoadsTheRunningAddress) {
  set(lumo::prefRunningUrlString, "http://h/order");
  set(lumo::prefServerAddress, "http://s/");
  launch();
  machine.application.chooseMenu("ibReloadPage:");

  EXPECT_THAT(loads(), ElementsAre("webView1 load http://h/order"));
}

TEST_F(AppDelegateMenu, PreferencesAreLoggedTwiceAndShownAsASheetOfTheBrowserWindow) {
  launch();
  machine.application.chooseMenu("ibOpenPreferencesWindow:");

  EXPECT_THAT(log.lines(), hasInOrder({"AppDelegate->ibOpenPreferencesWindow:....",
                                       "AppDelegate->ibOpenPreferencesWindow:....",
                                       "MyWebViewWindowController->ibOpenPreferences:...."}));
  EXPECT_EQ(log.count("AppDelegate->ibOpenPreferencesWindow:...."), 2U);
  ASSERT_NE(machine.window()->currentSheet(), nullptr);
  EXPECT_EQ(machine.window()->currentSheet()->name(), kPreferencesWindow);
  EXPECT_THAT(machine.windows.loaded(), ElementsAre(kBrowserWindow, kPreferencesWindow));
}

TEST_F(AppDelegateMenu, BringToFrontActivatesTheApplication) {
  launch();
  machine.application.chooseMenu("ibBringToFrontButton:");

  EXPECT_THAT(machine.journal.entries(), ElementsAre("application activate 3"));
}

TEST_F(AppDelegateMenu, TheOtherItemsReachTheBrowserAndTheApplication) {
  set(lumo::prefServerAddress, "http://s/");
  launch();
  for (const char* action : {"ibHomeButton:", "ibBackButton:", "ibForwardButton:", "terminate:"}) {
    EXPECT_TRUE(machine.application.chooseMenu(action)) << action;
  }

  EXPECT_THAT(machine.journal.entries(), hasInOrder({"webView1 load http://s/", "webView1 goBack",
                                                     "webView1 goForward", "application terminate"}));
}

using AppDelegateEnd = AppDelegateTest;

TEST_F(AppDelegateEnd, ClosingTheLastWindowEndsTheApplication) {
  launch();
  EXPECT_TRUE(delegate().applicationShouldTerminateAfterLastWindowClosed());
  machine.application.noteLastWindowClosed();

  EXPECT_NE(machine.window()->currentAlert(), nullptr);
  EXPECT_TRUE(log.contains("AppDelegate->applicationShouldTerminate:...."));
}

TEST_F(AppDelegateEnd, TheBrowserWindowsCloseButtonQuitsWhenThePersonAgrees) {
  launch();
  EXPECT_FALSE(machine.window()->requestClose());
  EXPECT_TRUE(machine.window()->isVisible());
  EXPECT_THAT(machine.application.replies(), IsEmpty());
  machine.dispatch.runUntilIdle();

  ASSERT_NE(machine.window()->currentAlert(), nullptr);
  machine.window()->pressAlertButton("Close Window Only");
  machine.dispatch.runUntilIdle();
  EXPECT_TRUE(machine.application.isTerminated());
}

TEST_F(AppDelegateEnd, ASessionsEndTerminatesWithoutADialogue) {
  launch();
  machine.application.mustTerminate();
  machine.dispatch.runUntilIdle();

  EXPECT_TRUE(machine.application.isTerminated());
  EXPECT_EQ(machine.window()->sheetCount(), 0U);
}

TEST_F(AppDelegateEnd, RunsFromLaunchToQuit) {
  set(lumo::prefDoNotConfirmOnExit, true);
  machine.dispatch.global().after(Millis{500}, [&] { machine.application.quit(); });

  EXPECT_EQ(machine.application.run(delegate()), 0);
  EXPECT_EQ(machine.dispatch.now(), Millis{500});
  EXPECT_THAT(machine.application.replies(), ElementsAre(TerminateReply::Cancel, TerminateReply::Now));
}

}  // namespace

#include "tests/unit/app/app_delegate_fixture.h"

// What arrives from other programs and from the other parts of this one.

namespace {

using browsertest::hasInOrder;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

using AppDelegateMessages = apptest::AppDelegateTest;

TEST_F(AppDelegateMessages, OpeningNoFileIsLoggedAndOpensNothing) {
  launch();

  EXPECT_TRUE(machine.application.openUntitledFile());
  EXPECT_THAT(log.lines(), ElementsAre("AppDelegate->applicationOpenUntitledFile:...."));
  EXPECT_THAT(machine.journal.entries(), IsEmpty());
}

TEST_F(AppDelegateMessages, AServicesRequestArrives) {
  platform::Pasteboard pasteboard;
  pasteboard.types = {platform::kStringPboardType};
  EXPECT_FALSE(machine.application.requestService(pasteboard));
  launch();

  EXPECT_TRUE(machine.application.requestService(pasteboard));
  EXPECT_THAT(log.lines(),
              hasInOrder({"AppDelegate->SearchFromPasteboard:userData:error:....",
                          "AppDelegate->SearchFromPasteboard:userData:error:....pboardtypes = ("}));
}

TEST_F(AppDelegateMessages, RequestsToOpenAreLogged) {
  launch();
  machine.application.openURLs({"http://h/a"});
  machine.application.openFiles({"/home/k/b.html"});

  EXPECT_THAT(log.lines(), hasInOrder({"-[AppDelegate application:openURLs:] (",
                                       "AppDelegate->application:openFiles:....filenames = ("}));
}

TEST_F(AppDelegateMessages, BothNotificationsAreHeardFromDidFinishLaunchingToTheEnd) {
  const auto post = [&] {
    machine.notifications.postNotification(
        {"LumoNotificationAddFromString", {}, {{"mystrings", ""}}, nullptr});
    machine.notifications.postNotificationName("LumoNotificationTerminateNow");
  };
  delegate().applicationWillFinishLaunching();
  machine.application.setDelegate(&delegate());
  log.clear();
  post();
  EXPECT_THAT(log.lines(), Not(Contains(StartsWith("AppDelegate->handle"))));

  delegate().applicationDidFinishLaunching();
  log.clear();
  post();
  EXPECT_THAT(log.lines(), Contains(StartsWith("AppDelegate->handleDragDropNotification:....userInfo = {")));
  EXPECT_THAT(log.lines(), Contains("AppDelegate->handleTerminateNowNotifcation:...."));
  EXPECT_TRUE(delegate().fDoTerminateNow);

  machine.dispatch.runUntilIdle();
  shell.reset();
  log.clear();
  post();
  EXPECT_THAT(log.lines(), IsEmpty());
}

}  // namespace

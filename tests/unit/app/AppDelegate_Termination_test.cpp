#include "browser/ReleaseMessage.h"
#include "tests/unit/app/app_delegate_fixture.h"

namespace lumo {
namespace {

using platform::Millis;
using platform::TerminateReply;

class TerminationTest : public apptest::AppDelegateTest {
 protected:
  void SetUp() override { launch(); }
  std::optional<std::string> sent(std::size_t index, const char* key) const {
    return messageValue(machine.bus.posted().at(index), key);
  }
  bool isAsked() { return window().currentAlert() != nullptr; }
};

TEST_F(TerminationTest, WithoutConfirmationTheMessageIsSentAndTheApplicationQuits) {
  set(prefDoNotConfirmOnExit, true);
  machine.application.quit();
  machine.dispatch.runUntilIdle();
  EXPECT_TRUE(machine.application.isTerminated());
  ASSERT_EQ(machine.bus.posted().size(), 1U);
  EXPECT_EQ(sent(0, "status"), "closedwindow");
  EXPECT_EQ(machine.application.replies(), (std::vector{TerminateReply::Cancel, TerminateReply::Now}));
  EXPECT_FALSE(isAsked());
  EXPECT_EQ(log.count("AppDelegate->applicationShouldTerminate:...."), 2U);
  EXPECT_EQ(log.count("AppDelegate->handleTerminateNowNotifcation:...."), 1U);
  EXPECT_NE(log.text().find("Inside AppDelegate => handleTerminateNowNotifcation:"
                            "...NSDistributedNotificationCenter postNotifiction: " +
                            description(machine.bus.posted()[0]) + " \n"),
            std::string::npos);
}

TEST_F(TerminationTest, WithoutConfirmationManyRequestsSendOneMessage) {
  set(prefDoNotConfirmOnExit, true);
  machine.application.quit();
  machine.application.quit();
  machine.application.quit();
  machine.dispatch.runUntilIdle();
  EXPECT_TRUE(machine.application.isTerminated());
  EXPECT_EQ(machine.bus.posted().size(), 1U);
}

TEST_F(TerminationTest, OnAnOrderPageInCapitalsThereAreTwoButtons) {
  set(prefRunningUrlString, "http://h/REGISTRATIONORDERS");
  machine.application.quit();
  ASSERT_TRUE(isAsked());
  const auto& buttons = window().currentAlert()->buttons;
  ASSERT_EQ(buttons.size(), 2U);
  EXPECT_EQ(buttons[0].title, "Cancel");
  EXPECT_EQ(buttons[1].title, "Close Window");

  window().pressAlertButton("Close Window");
  machine.dispatch.runUntilIdle();
  EXPECT_TRUE(machine.application.isTerminated());
  ASSERT_EQ(machine.bus.posted().size(), 1U);
  EXPECT_EQ(sent(0, "status"), "closedwindow");
  EXPECT_EQ(sent(0, "urlstring"), "http://h/REGISTRATIONORDERS");
}

TEST_F(TerminationTest, CancelLeavesTheFlagFalseAndTheWindowOpen) {
  machine.application.quit();
  window().pressAlertButton("Cancel");
  machine.dispatch.advance(Millis{5000});
  EXPECT_FALSE(delegate().fDoTerminateNow);
  EXPECT_FALSE(machine.application.isTerminated());
  EXPECT_TRUE(window().isVisible());
  EXPECT_TRUE(machine.bus.posted().empty());
  EXPECT_TRUE(log.contains("AppDelegate->alertDidEnd:returnCode:contextInfo:....returnCode = 1000"));
  EXPECT_TRUE(log.contains("1000"));
}

TEST_F(TerminationTest, CloseWindowOnlySendsTheMessageWithoutAnAddressWhereNoneIsStored) {
  machine.application.quit();
  ASSERT_TRUE(isAsked());
  EXPECT_EQ(window().currentAlert()->buttons.size(), 3U);
  window().pressAlertButton("Close Window Only");
  machine.dispatch.runUntilIdle();
  EXPECT_TRUE(machine.application.isTerminated());
  ASSERT_EQ(machine.bus.posted().size(), 1U);
  EXPECT_EQ(sent(0, "status"), "closedwindow");
  EXPECT_EQ(sent(0, "urlstring"), std::nullopt);
  EXPECT_TRUE(log.contains("1001"));
}

TEST_F(TerminationTest, CloseWindowAndReleaseOrderSendsTheCancelledReleaseAndThenQuits) {
  set(prefRunningUrlString, "http://h/other");
  bool wasTerminated = true;
  machine.bus.setPosted(
      [&](const platform::DistributedNotification&) { wasTerminated = machine.application.isTerminated(); });
  machine.application.quit();
  window().pressAlertButton("Close Window and Release Order");
  EXPECT_TRUE(delegate().fDoTerminateNow);
  machine.dispatch.advance(Millis{999});
  EXPECT_FALSE(machine.application.isTerminated());
  machine.dispatch.advance(Millis{1});
  EXPECT_TRUE(machine.application.isTerminated());
  ASSERT_EQ(machine.bus.posted().size(), 1U);
  EXPECT_EQ(sent(0, "status"), "cancelled_registered");
  EXPECT_FALSE(wasTerminated);
  EXPECT_TRUE(log.contains("1002"));
}

TEST_F(TerminationTest, ARequestDuringTheReleasesWaitIsGrantedAtOnce) {
  machine.application.quit();
  window().pressAlertButton("Close Window and Release Order");
  machine.dispatch.advance(Millis{500});
  machine.application.quit();
  machine.dispatch.runUntilIdle();
  EXPECT_FALSE(isAsked());
  EXPECT_TRUE(machine.application.isTerminated());
}

TEST_F(TerminationTest, TheSystemsEndDuringTheReleasesWaitLetsTheReleaseBeTheOnlyMessage) {
  machine.application.quit();
  window().pressAlertButton("Close Window and Release Order");
  machine.dispatch.advance(Millis{500});
  machine.application.mustTerminate();
  machine.dispatch.advance(Millis{500});
  EXPECT_TRUE(machine.application.isTerminated());
  ASSERT_EQ(machine.bus.posted().size(), 1U);
  EXPECT_EQ(sent(0, "status"), "cancelled_registered");
}

TEST_F(TerminationTest, TheNotificationQuitsWithoutAMessageOfTheShellsOwn) {
  machine.notifications.postNotificationName("LumoNotificationTerminateNow");
  machine.dispatch.runUntilIdle();
  EXPECT_TRUE(machine.application.isTerminated());
  EXPECT_TRUE(machine.bus.posted().empty());
}

TEST_F(TerminationTest, ASecondRequestWhileTheQuestionStandsAddsNone) {
  machine.application.quit();
  machine.application.quit();
  ASSERT_TRUE(isAsked());
  window().pressAlertButton("Cancel");
  EXPECT_FALSE(isAsked());
  machine.application.quit();
  EXPECT_TRUE(isAsked());
}

TEST_F(TerminationTest, AnotherAnswerIsOnlyLogged) {
  delegate().alertDidEnd_returnCode_contextInfo(7);
  machine.dispatch.advance(Millis{5000});
  EXPECT_TRUE(log.contains("AppDelegate->alertDidEnd:returnCode:contextInfo:....returnCode = 7"));
  EXPECT_TRUE(log.contains("huh??"));
  EXPECT_FALSE(delegate().fDoTerminateNow);
  EXPECT_TRUE(machine.bus.posted().empty());
  EXPECT_FALSE(machine.application.isTerminated());
}

TEST_F(TerminationTest, WhenTheReleaseNeverComesTheNextRequestIsGrantedWithoutAQuestion) {
  delegate().fDoTerminateNow = true;
  machine.application.quit();
  machine.dispatch.runUntilIdle();
  EXPECT_TRUE(machine.application.isTerminated());
  EXPECT_FALSE(isAsked());
}

TEST_F(TerminationTest, TheSystemsEndIsNotAskedAboutAndTheMessageIsSent) {
  machine.application.mustTerminate();
  machine.dispatch.runUntilIdle();
  EXPECT_TRUE(machine.application.isTerminated());
  ASSERT_EQ(machine.bus.posted().size(), 1U);
  EXPECT_EQ(sent(0, "status"), "closedwindow");
}

TEST_F(TerminationTest, TheWindowsCloseButtonAsksToo) {
  EXPECT_FALSE(delegate().myWebViewWindowController->windowShouldClose(window()));
  machine.dispatch.runUntilIdle();
  EXPECT_TRUE(isAsked());
}

}  // namespace
}  // namespace lumo

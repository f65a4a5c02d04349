#include "browser/ReleaseMessage.h"
#include "tests/unit/browser/browser_fixture.h"

namespace lumo {
namespace {

using platform::Millis;

class ReleaseTest : public browsertest::BrowserTest {
 protected:
  void SetUp() override {
    makeShown();
    machine.notifications.addObserver("LumoNotificationTerminateNow", [this](const platform::Notification&) {
      machine.journal.add("terminate now");
    });
  }
  std::vector<std::string> events() const {
    std::vector<std::string> found;
    for (const std::string& entry : machine.journal.timed()) {
      if (entry.find(" bus post") != std::string::npos || entry.find("terminate now") != std::string::npos) {
        found.push_back(entry);
      }
    }
    return found;
  }
  // The journal's lines for a release `wait` after now.
  std::vector<std::string> releasedAfter(Millis wait) const {
    const std::string time = std::to_string((start + wait).count());
    return {time + " bus post lumoXNotification", time + " terminate now"};
  }
  std::optional<std::string> sent(const char* key) const {
    return messageValue(machine.bus.posted().at(0), key);
  }
  // Whether the log tells of the first message, for that operation.
  bool isLogged(const std::string& operation) const {
    const std::string line =
        "Inside MyWebViewWindowController => " + operation +
        "...NSDistributedNotificationCenter postNotifiction: " + description(machine.bus.posted().at(0)) +
        " \n";
    return log.text().find(line) != std::string::npos;
  }

  Millis start{machine.dispatch.now()};
};

TEST_F(ReleaseTest, AnOrderIsReleasedAfter200Milliseconds) {
  set(prefRunningUrlString, "http://h:9090/run");
  start = machine.dispatch.now();
  browser->handleTerminateWithRegistrationOrdersPhotoStationData(
      {{"Lumo-Reg-Code", "A-1"}, {"Lumo-Reg-Name", "Clara"}, {"respurlstring", "http://h/p"}});
  machine.dispatch.advance(Millis{199});
  EXPECT_TRUE(events().empty());
  machine.dispatch.advance(Millis{1});
  EXPECT_EQ(events(), releasedAfter(Millis{200}));
  EXPECT_EQ(sent("status"), "registered");
  EXPECT_EQ(sent("LUMO-REG-CODE"), "A-1");
  EXPECT_EQ(sent("urlstring"), "http://h:9090/run");
  EXPECT_TRUE(log.contains("code = A-1"));
  EXPECT_TRUE(log.contains("name = Clara"));
  EXPECT_TRUE(isLogged("handleTerminateWithRegistrationOrdersPhotoStationData:"));
  EXPECT_NE(log.text().find("MyWebViewWindowController->"
                            "handleTerminateWithRegistrationOrdersPhotoStationData:.... param.allkeys = (\n"
                            "    Lumo-Reg-Code,\n"),
            std::string::npos);
}

TEST_F(ReleaseTest, AnOrderReleasedWithoutRunningAddressHasNoAddress) {
  browser->handleTerminateWithRegistrationOrdersPhotoStationData({{"lumo-reg-", "bare"}});
  machine.dispatch.advance(Millis{200});
  EXPECT_EQ(machine.bus.posted().at(0).userInfo,
            (std::vector<std::pair<std::string, std::string>>{{"senderApp", "LumoBrowser.app"},
                                                              {"email", "noEmailRequired"},
                                                              {"status", "registered"},
                                                              {"LUMO-REG-", "bare"}}));
  EXPECT_TRUE(log.contains("code = (null)"));
  EXPECT_TRUE(log.contains("name = (null)"));
}

TEST_F(ReleaseTest, TenThousandOrdersAreEachReleasedOnce) {
  constexpr int kOrders = 10'000;
  std::vector<std::string> released;
  machine.bus.setPosted([&](const platform::DistributedNotification& message) {
    released.push_back(messageValue(message, "LUMO-REG-CODE").value_or("none"));
  });
  std::vector<std::string> orders;
  for (int order = 0; order < kOrders; ++order) {
    orders.push_back("A-" + std::to_string(order));
    browser->handleTerminateWithRegistrationOrdersPhotoStationData({{"Lumo-Reg-Code", orders.back()}});
    // Some come at the same moment, some while others wait.
    machine.dispatch.advance(Millis{order % 3});
  }
  machine.dispatch.advance(Millis{200});
  EXPECT_EQ(released, orders);
  EXPECT_EQ(machine.journal.count("terminate now"), static_cast<std::size_t>(kOrders));
  EXPECT_EQ(machine.dispatch.pendingTimers(), 0U);
}

TEST_F(ReleaseTest, TheMessageLeavesOnTheMainQueueAndTheEndIsAskedForOnAnother) {
  std::vector<std::string> where;
  const auto place = [this] { return machine.dispatch.main().isCurrent() ? "main" : "other"; };
  machine.bus.setPosted([&](const platform::DistributedNotification&) { where.emplace_back(place()); });
  machine.notifications.addObserver("LumoNotificationTerminateNow",
                                    [&](const platform::Notification&) { where.emplace_back(place()); });
  browser->handleTerminateWithRegistrationOrdersPhotoStationData({});
  browser->handleTerminateWithRegistrationSave();
  machine.dispatch.advance(Millis{1000});
  EXPECT_EQ(where, (std::vector<std::string>{"main", "other", "main", "other"}));
}

TEST_F(ReleaseTest, ASavedOrderIsReleasedAfterOneSecond) {
  start = machine.dispatch.now();
  browser->handleTerminateWithRegistrationSave();
  machine.dispatch.advance(Millis{999});
  EXPECT_TRUE(events().empty());
  machine.dispatch.advance(Millis{1});
  EXPECT_EQ(events(), releasedAfter(Millis{1000}));
  EXPECT_EQ(sent("status"), "registered");
  EXPECT_EQ(sent("urlstring"), std::nullopt);
  EXPECT_FALSE(log.contains("code = (null)"));
  EXPECT_TRUE(isLogged("handleTerminateWithRegistrationSave:"));
}

TEST_F(ReleaseTest, LeavingWithoutSavingIsReleasedAsCancelledAfterOneSecond) {
  start = machine.dispatch.now();
  machine.notifications.postNotificationName("LumoNotificationTerminateWithOutRegistrationSave");
  machine.dispatch.advance(Millis{1000});
  EXPECT_EQ(events(), releasedAfter(Millis{1000}));
  EXPECT_EQ(sent("status"), "cancelled_registered");
  EXPECT_TRUE(isLogged("handleTerminateWithOutRegistrationSave:"));
}

TEST_F(ReleaseTest, TheLoopHandlerAnswersYesAndSendsNothing) {
  EXPECT_TRUE(browser->handleTerminateWithRegistrationOrdersPhotoStationDataLOOP({{"lumo-reg-code", "A"}}));
  machine.dispatch.advance(Millis{5000});
  EXPECT_TRUE(events().empty());
}

TEST_F(ReleaseTest, WithoutABusTheApplicationIsAskedToEndAllTheSame) {
  machine.bus.setPresent(false);
  browser->handleTerminateWithRegistrationSave();
  machine.dispatch.advance(Millis{1000});
  EXPECT_TRUE(machine.journal.contains("terminate now"));
}

TEST_F(ReleaseTest, AFailedConfirmSaveGoesToTheOrderListAfter500Milliseconds) {
  browser->handleTerminateWithRegistrationOrdersConfirmSaveData(
      {{"NSErrorFailingURLKey", "http://h:9090/registrationorders/confirmsave"}});
  machine.dispatch.advance(Millis{499});
  EXPECT_FALSE(runningAddress());
  machine.dispatch.advance(Millis{1});
  const std::string list =
      "http://h:9090/registrationorders/photostationlist/registrationorders/photostationlist";
  EXPECT_EQ(runningAddress(), list);
  EXPECT_EQ(loaded(), std::vector<std::string>{list});
  EXPECT_TRUE(log.contains("redirecturl = http://h:9090/registrationorders/photostationlist"));
  EXPECT_TRUE(events().empty());
}

TEST_F(ReleaseTest, AConfirmSaveWithoutAFailingAddressDoesNothing) {
  browser->handleTerminateWithRegistrationOrdersConfirmSaveData({});
  browser->handleTerminateWithRegistrationOrdersConfirmSaveData({{"NSErrorFailingURLKey", "http://h/x"}});
  machine.dispatch.advance(Millis{500});
  EXPECT_FALSE(runningAddress());
  EXPECT_TRUE(loaded().empty());
}

}  // namespace
}  // namespace lumo

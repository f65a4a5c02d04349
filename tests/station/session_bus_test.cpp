#include <gmock/gmock.h>

#include "station/bus_peer.h"
#include "station/station.h"

// The session bus: notifications that leave over it, and the kiosk without it.

namespace station {

using ::testing::HasSubstr;
using ::testing::Pair;
using ::testing::UnorderedElementsAre;

namespace {

constexpr const char* kRelease = "lumoXNotification";
// The listeners hear it last.
constexpr const char* kLast = "lumoLastNotification";

}  // namespace

class SessionBusTest : public StationTest {
 protected:
  explicit SessionBusTest(const Equipment& equipment = {}) : StationTest(equipment) {}
  void SetUp() override {
    StationTest::SetUp();
    server.set("/next", HttpAnswer{page(kGreen)});
  }
  int linesWith(const std::string& text) const {
    const std::string log = station.log();
    int count = 0;
    for (auto at = log.find(text); at != std::string::npos; at = log.find(text, at + 1)) {
      ++count;
    }
    return count;
  }
  // The notifications of that name, when the last one has come.
  static std::vector<HeardNotification> heard(BusPeer& listener, const std::string& name) {
    auto all = listener.heardUntil(kLast);
    EXPECT_FALSE(all.empty());
    std::erase_if(all, [&](const HeardNotification& notification) { return notification.name != name; });
    return all;
  }
};

TEST_F(SessionBusTest, EachOfFiftySlowListenersGetsTheMessageOnceThoughTheKioskEndsAtOnce) {
  startAtHome();
  std::vector<std::unique_ptr<BusPeer>> listeners;
  for (int number = 0; number < 50; ++number) {
    listeners.push_back(std::make_unique<BusPeer>(station.busAddress()));
    listeners.back()->listen();
  }
  // More than the sockets take: from here on the bus has to keep for them what comes.
  BusPeer other(station.busAddress());
  other.notify("lumoFillingNotification", "text", std::string(1'000'000, 'x'));
  ASSERT_TRUE(other.seesKiosk());
  EXPECT_EQ(station.stop(), "exit status 0");
  other.notify(kLast, "key", "value");
  for (const auto& listener : listeners) {
    const auto messages = heard(*listener, kRelease);
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_THAT(messages[0].texts,
                UnorderedElementsAre(Pair("senderApp", "LumoBrowser.app"), Pair("email", "noEmailRequired"),
                                     Pair("status", "closedwindow"), Pair("urlstring", server.url("/home"))));
  }
}

TEST_F(SessionBusTest, TheKioskGoesOnWhenTheBusIsStartedAgain) {
  startAtHome();
  ASSERT_TRUE(BusPeer(station.busAddress()).seesKiosk());
  station.stopBus();
  EXPECT_TRUE(station.logs("The session bus was lost"));
  EXPECT_TRUE(station.shows(kRed));
  station.startBus();
  BusPeer peer(station.busAddress());
  ASSERT_TRUE(peer.seesKiosk());
  EXPECT_EQ(peer.kioskProcess(), station.kiosk().pid());
  EXPECT_EQ(peer.answer(peer.sendOpen({server.url("/next")})), "");
  EXPECT_TRUE(station.shows(kGreen));
  peer.listen();
  EXPECT_EQ(station.stop(), "exit status 0");
  peer.notify(kLast, "key", "value");
  EXPECT_EQ(heard(peer, kRelease).size(), 1U);
  EXPECT_EQ(linesWith("The session bus was lost"), 1);
}

TEST_F(SessionBusTest, TheKioskOutlivesABusThatComesAndGoes) {
  startAtHome();
  for (int time = 0; time < 3; ++time) {
    ASSERT_TRUE(BusPeer(station.busAddress()).seesKiosk());
    station.stopBus();
    EXPECT_TRUE(waitUntil([&] { return linesWith("The session bus was lost") == time + 1; }));
    station.startBus();
  }
  // The home page is loaded by the engine, whose sandbox talks to the bus as well.
  BusPeer peer(station.busAddress());
  ASSERT_TRUE(peer.seesKiosk());
  EXPECT_EQ(peer.answer(peer.sendOpen({server.url("/next")})), "");
  EXPECT_TRUE(station.shows(kGreen));
  EXPECT_EQ(station.stop(), "exit status 0");
}

TEST_F(SessionBusTest, AKioskThatStartedWithoutBusIsFoundWhenThereIsOne) {
  station.stopBus();
  startAtHome();
  station.startBus();
  BusPeer peer(station.busAddress());
  ASSERT_TRUE(peer.seesKiosk());
  EXPECT_EQ(peer.answer(peer.sendOpen({server.url("/next")})), "");
  EXPECT_TRUE(station.shows(kGreen));
  EXPECT_EQ(station.stop(), "exit status 0");
}

class NoSessionBusTest : public SessionBusTest {
 protected:
  NoSessionBusTest() : SessionBusTest({.bus = false}) {}
};

TEST_F(NoSessionBusTest, IsSaidOnceAndTheKioskGoesOn) {
  startAtHome();
  EXPECT_TRUE(station.logs("No session bus: "));
  // The end posts its message, which finds no bus either.
  EXPECT_EQ(station.stop(), "exit status 0");
  EXPECT_EQ(linesWith("No session bus: "), 1) << station.log();
  EXPECT_THAT(station.log(), HasSubstr("NSDistributedNotificationCenter postNotifiction: "));
}

TEST_F(NoSessionBusTest, AnAddressInAFolderThatDoesNotExistIsLeftOutAndThePageLoads) {
  const std::string address = "unix:path=" + (station.folder() / "no/such/bus").string();
  station.environment["DBUS_SESSION_BUS_ADDRESS"] = address;
  startAtHome();
  EXPECT_EQ(linesWith("The session bus address " + address + " is left out, its folder does not exist"), 1)
      << station.log();
  EXPECT_EQ(station.stop(), "exit status 0");
  EXPECT_EQ(server.count("/home"), 1);
}

TEST_F(NoSessionBusTest, AnAddressThatIsNoneDoesNotKeepThePageAway) {
  for (const char* address : {"foo", "unix:path=relative", "tcp:host=127.0.0.1,port=1"}) {
    station.environment["DBUS_SESSION_BUS_ADDRESS"] = address;
    startAtHome();
    EXPECT_TRUE(station.logs("No session bus: ")) << address;
    EXPECT_EQ(station.stop(), "exit status 0") << address;
  }
}

}  // namespace station

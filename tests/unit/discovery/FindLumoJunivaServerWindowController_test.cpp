#include "discovery/FindLumoJunivaServerWindowController.h"

#include <thread>

#include "tests/unit/discovery/finder_fixture.h"

namespace lumo {
namespace {

using platform::Array;
using platform::Dictionary;
using platform::Millis;
using testing::ElementsAre;

class FinderWindowTest : public discoverytest::FinderTest {
 protected:
  Dictionary record(const std::string& address) {
    return {{"status", "NSStatusAvailable"},
            {"server", "Lumo-Juniva/2.1"},
            {"urlstring", "http://" + address + ":9090"},
            {"ipaddress", address}};
  }
};

TEST_F(FinderWindowTest, ShowsVersionNetworkAndScanButtonWhenItOpens) {
  network.setLocalAddress("10.0.1.7");
  network.ssid = "Shop";
  open();
  const auto version = machine.bundle.bundle().infoString("CFBundleShortVersionString");
  const auto build = machine.bundle.bundle().infoString("CFBundleVersion");
  EXPECT_EQ(finder->fVersionString, "LumoBrowser - v" + version.value() + " (" + build.value() + ")");
  EXPECT_EQ(window().view<fakes::FakeTextField>("fVersionString").stringValue(), finder->fVersionString);
  EXPECT_EQ(finder->fLocalIPAddressString, "10.0.1.7");
  EXPECT_EQ(bottomLine(), "This Computer Network Info: 10.0.1.7 at SSID Shop");
  EXPECT_EQ(finder->fBottomLineString, bottomLine());
  EXPECT_EQ(button("ibScanButton").title(), "Scan for Juniva Server(s)...");
  EXPECT_TRUE(button("ibScanButton").isEnabled());
  EXPECT_EQ(finder->fStatusColor, (platform::Color{0, 0, 0, 1}));
  EXPECT_EQ(status(), "");
  EXPECT_EQ(finder->fPortNumberString, "9090");
  EXPECT_FALSE(finder->fIsSearchingForJunivaServers);
  EXPECT_EQ(finder->fFoundList(), std::nullopt);
  EXPECT_EQ(finder->fIpListInfo(), std::nullopt);
  for (int index = 0; index < 10; ++index) {
    EXPECT_TRUE(choice(index).isHidden());
  }
}

TEST_F(FinderWindowTest, ShowsTheAddressUntilTheSummaryIsThere) {
  network.setLocalAddress("10.0.1.7");
  finder = Finder::make(platform, network.get());
  machine.dispatch.runUntilIdle();
  EXPECT_THAT(
      machine.journal.startingWith("fBottomLineString"),
      ElementsAre("fBottomLineString setStringValue This localhost IP is: 10.0.1.7",
                  "fBottomLineString setStringValue NOT connected to any network - will use localhost"));
}

TEST_F(FinderWindowTest, AWiredComputerIsToldThatItHasNoNetworkAndOneWithoutAddressItsWifi) {
  network.setLocalAddress("10.0.1.7");
  open();
  EXPECT_EQ(bottomLine(), "NOT connected to any network - will use localhost");
  network.setInterfaces("");
  network.setLocalAddress("");
  network.ssid = "Shop";
  EXPECT_EQ(finder->getIPInfo(), "This Computer Network Info: localhost at SSID Shop");
}

TEST_F(FinderWindowTest, WithoutADescriptionItHasNoWindowAndItsOperationsDoNothing) {
  machine.windows.removeDescription(discoverytest::kFinderWindow);
  network.setLocalAddress("10.0.1.7");
  refuseOthers();
  finder = Finder::make(platform, network.get());
  EXPECT_EQ(finder->window(), nullptr);
  finder->ibDoTestButton(nullptr);
  machine.dispatch.advance(Millis{20'000});
  finder->ibCloseButton(nullptr);
  EXPECT_EQ(stored(), std::nullopt);
}

TEST_F(FinderWindowTest, ElementsThatAreMissingOrOfAnotherKindAreSkipped) {
  machine.windows.describe(discoverytest::kFinderWindow, fakes::FakeWindow::Kind::Sheet,
                           [](fakes::FakeWindow& described) {
                             fakes::ViewOptions plain;
                             plain.tag = 3000;
                             described.add<fakes::FakeView>("scan", plain);
                             plain.tag = 5000;
                             described.add<fakes::FakeView>("first", plain);
                             fakes::ViewOptions button;
                             button.tag = 5001;
                             button.hidden = true;
                             described.add<fakes::FakeButton>("ibChoiceButton1", button);
                           });
  network.setLocalAddress("10.0.1.7");
  refuseOthers();
  serve("10.0.1.3");
  serve("10.0.1.4");
  open();
  finder->ibDoTestButton(nullptr);
  machine.dispatch.advance(Millis{20'000});
  EXPECT_EQ(finder->fFoundList()->size(), 2U);
  EXPECT_EQ(choice(1).title(), "Select [10.0.1.4 - Lumo-Juniva/2.1]");
  EXPECT_FALSE(choice(1).isHidden());
  EXPECT_FALSE(window().view<fakes::FakeView>("first").isHidden());
}

TEST_F(FinderWindowTest, TwelveServersGiveTenChoices) {
  network.setLocalAddress("10.0.1.7");
  refuseOthers();
  for (int number = 101; number <= 112; ++number) {
    serve("10.0.1." + std::to_string(number));
  }
  open();
  scan();
  EXPECT_EQ(finder->fFoundList()->size(), 12U);
  for (int index = 0; index < 10; ++index) {
    EXPECT_EQ(choice(index).title(), "Select [10.0.1." + std::to_string(101 + index) + " - Lumo-Juniva/2.1]");
    EXPECT_FALSE(choice(index).isHidden());
  }
  EXPECT_EQ(status(), "");
}

TEST_F(FinderWindowTest, AServerOnThisComputerIsCalledSoAndStoredWithItsNumbers) {
  network.setLocalAddress("10.0.1.1");
  refuseOthers();
  serve("10.0.1.1");
  serve("10.0.1.12");
  open();
  scan();
  EXPECT_EQ(choice(0).title(), "Select [localhost (This Computer) - Lumo-Juniva/2.1]");
  EXPECT_EQ(choice(1).title(), "Select [localhost (This Computer)2 - Lumo-Juniva/2.1]");
  EXPECT_TRUE(choice(2).isHidden());
  ASSERT_TRUE(window().press("ibChoiceButton0"));
  EXPECT_EQ(endedWith, 1);
  EXPECT_EQ(stored(), record("10.0.1.1"));
}

TEST_F(FinderWindowTest, AChoiceStoresItsWholeRecordAndEndsTheSheetWith1) {
  network.setLocalAddress("10.0.1.7");
  refuseOthers();
  serve("10.0.1.20");
  serve("10.0.1.100");
  serve("10.0.1.3");
  open();
  scan();
  ASSERT_TRUE(window().press("ibChoiceButton1"));
  EXPECT_EQ(endedWith, 1);
  EXPECT_EQ(stored(), record("10.0.1.20"));
}

TEST_F(FinderWindowTest, CloseStoresNothingAndEndsTheSheetWith0) {
  machine.defaults.setObject(record("10.0.1.99"), prefSelectedJunivaServerInfo);
  network.setLocalAddress("10.0.1.7");
  refuseOthers();
  serve("10.0.1.20");
  open();
  scan();
  ASSERT_TRUE(window().press("ibCloseButton"));
  EXPECT_EQ(endedWith, 0);
  EXPECT_EQ(stored(), record("10.0.1.99"));
}

TEST_F(FinderWindowTest, CloseBeforeAnyScanEndsTheSheetWith0) {
  open();
  ASSERT_TRUE(window().press("ibCloseButton"));
  EXPECT_EQ(endedWith, 0);
  EXPECT_EQ(stored(), std::nullopt);
}

TEST_F(FinderWindowTest, AChoiceWithoutAFoundListStoresNothing) {
  open();
  finder->ibCloseButton(&choice(0));
  EXPECT_EQ(endedWith, 0);
  EXPECT_EQ(stored(), std::nullopt);
}

TEST_F(FinderWindowTest, AStaleChoiceStoresTheFirstRecord) {
  network.setLocalAddress("10.0.1.7");
  refuseOthers();
  serve("10.0.1.20");
  serve("10.0.1.30");
  open();
  scan();
  finder->ibCloseButton(&choice(7));
  EXPECT_EQ(endedWith, 1);
  EXPECT_EQ(stored(), record("10.0.1.20"));
}

TEST_F(FinderWindowTest, TheListOfAnEarlierScanCountsWhileThereIsNoNewerOne) {
  open();
  finder->fArrayOfJunivaServers = {record("10.0.1.44")};
  finder->ibCloseButton(&choice(0));
  EXPECT_EQ(endedWith, 1);
  EXPECT_EQ(stored(), record("10.0.1.44"));
}

TEST_F(FinderWindowTest, SomethingThatIsNoControlChoosesNothing) {
  open();
  finder->fArrayOfJunivaServers = {record("10.0.1.44")};
  fakes::ViewOptions options;
  options.tag = 5000;
  finder->ibCloseButton(&window().add<fakes::FakeView>("plain", options));
  EXPECT_EQ(endedWith, 0);
  EXPECT_EQ(stored(), std::nullopt);
}

TEST_F(FinderWindowTest, NobodyAsSenderChoosesNothing) {
  open();
  finder->fArrayOfJunivaServers = {record("10.0.1.44")};
  finder->ibCloseButton(nullptr);
  EXPECT_EQ(endedWith, 0);
}

TEST_F(FinderWindowTest, OperationsOfOtherThreadsReachTheWindowOnTheMainQueueOnly) {
  open();
  std::thread([this] {
    finder->updateStatus1("from elsewhere");
    finder->setScanButtonString("Again");
    finder->updateStatus2("never seen");
    finder->updateStatus3("never seen");
    finder->setStatusColor({1, 0, 0, 1});
  }).join();
  EXPECT_EQ(status(), "");
  machine.dispatch.runUntilIdle();
  EXPECT_EQ(status(), "from elsewhere");
  EXPECT_EQ(finder->fScanningResultString, "from elsewhere");
  EXPECT_EQ(button("ibScanButton").title(), "Again");
  EXPECT_EQ(finder->fStatusColor, (platform::Color{0, 0, 0, 1}));
  finder->setStatusString("plainly");
  machine.dispatch.runUntilIdle();
  EXPECT_EQ(status(), "plainly");
}

TEST_F(FinderWindowTest, TheStatusLineIsAwayWhileItIsEmpty) {
  open();
  const auto& line = window().view<fakes::FakeTextField>("fScanningResultString");
  finder->updateStatus1("something");
  machine.dispatch.runUntilIdle();
  EXPECT_FALSE(line.isHidden());
  finder->updateStatus1("");
  machine.dispatch.runUntilIdle();
  EXPECT_TRUE(line.isHidden());
}

TEST_F(FinderWindowTest, TheStatusColourOfADamagedStateIsBlackAgain) {
  open();
  finder->fStatusColor = {1, 1, 1, 1};
  finder->setStatusColor({1, 0, 0, 1});
  machine.dispatch.runUntilIdle();
  EXPECT_EQ(finder->fStatusColor, (platform::Color{0, 0, 0, 1}));
}

TEST_F(FinderWindowTest, ItsQueuesAreNamedAfterTheApplication) {
  open();
  EXPECT_EQ(finder->currentTaskQueue().label(), "com.lumo.LumoBrowser.curTaskQueue");
  EXPECT_TRUE(finder->currentTaskQueue() == finder->currentTaskQueue());
  EXPECT_EQ(finder->mylittleQueue("one").label(), "com.lumo.LumoBrowser.littleQueue.one");
  EXPECT_FALSE(finder->mylittleQueue("one") == finder->mylittleQueue("one"));
}

TEST(FinderQueues, HaveAUsualNameWhereTheBundleHasNone) {
  const fakes::CapturedLog log;
  for (const fakes::TestBundle::Info& info :
       {fakes::TestBundle::Info{}, fakes::TestBundle::Info{{"CFBundleIdentifier", ""}}}) {
    fakes::TestPlatform machine(info);
    platform::Platform platform = machine.platform();
    discoverytest::ScriptedNetwork network;
    const auto finder = FindLumoJunivaServerWindowController::make(platform, network.get());
    EXPECT_EQ(finder->currentTaskQueue().label(), "com.lumo.LumoBrowser.curTaskQueue");
    EXPECT_EQ(finder->mylittleQueue("x").label(), "com.lumo.LumoBrowser.littleQueue.x");
    EXPECT_EQ(finder->fVersionString, "(null) - v(null) ((null))");
    machine.dispatch.runUntilIdle();
  }
}

TEST_F(FinderWindowTest, GoesOnTheMainQueueWhoeverDropsItLast) {
  open();
  const std::weak_ptr<Finder> weak = finder;
  std::thread([last = std::move(finder)]() mutable { last.reset(); }).join();
  EXPECT_TRUE(weak.expired());
  EXPECT_NE(machine.windows.window(discoverytest::kFinderWindow), nullptr);
  machine.dispatch.runUntilIdle();
  EXPECT_EQ(machine.windows.window(discoverytest::kFinderWindow), nullptr);
}

TEST_F(FinderWindowTest, ClosingAndForgettingItInTheMiddleOfAScanStopsTheScan) {
  network.setLocalAddress("10.0.1.7");
  open();
  ASSERT_TRUE(window().press("ibScanButton"));
  machine.dispatch.advance(Millis{100});
  const std::size_t sent = machine.http.requests().size();
  EXPECT_EQ(sent, 51U);
  ASSERT_TRUE(window().press("ibCloseButton"));
  EXPECT_EQ(endedWith, 0);
  finder.reset();
  machine.dispatch.advance(Millis{20'000});
  EXPECT_EQ(machine.http.requests().size(), sent);
  EXPECT_EQ(machine.http.open(), 0U);
  EXPECT_EQ(machine.windows.window(discoverytest::kFinderWindow), nullptr);
}

TEST_F(FinderWindowTest, AScanGoesOnWhileTheSheetIsAlreadyClosed) {
  network.setLocalAddress("10.0.1.7");
  refuseOthers();
  open();
  ASSERT_TRUE(window().press("ibScanButton"));
  machine.dispatch.advance(Millis{100});
  finder->ibCloseButton(nullptr);
  machine.dispatch.advance(Millis{20'000});
  EXPECT_EQ(machine.http.requests().size(), 256U);
  EXPECT_EQ(finder->fFoundList(), Array());
}

}  // namespace
}  // namespace lumo

#include <functional>
#include <string>
#include <vector>

#include "discovery/FindLumoJunivaServerWindowController.h"
#include "tests/unit/discovery/finder_fixture.h"

namespace lumo {
namespace {

using fakes::FakeHttpClient;
using platform::Array;
using platform::Dictionary;
using platform::Millis;
using testing::Contains;
using testing::ElementsAre;
using testing::MatchesRegex;
using testing::Not;

constexpr const char* kNothingFound =
    "\n\n!!  NO Juniva Server Found  !!\n\nPlease make sure juniva server is running your network...";
constexpr const char* kNothingHere = "\n\n!!  Juniva Server is NOT running on this mac !!";

// Keeps every request and answers none.
class SilentClient final : public platform::HttpClient {
 public:
  void get(const std::string& /*url*/, Millis /*timeout*/,
           std::function<void(platform::HttpResult)> done) override {
    kept.push_back(std::move(done));
  }
  std::vector<std::function<void(platform::HttpResult)>> kept;
};

class ScanTest : public discoverytest::FinderTest {
 protected:
  void SetUp() override {
    network.setLocalAddress("10.0.1.7");
    refuseOthers();
  }
  // The time at which the scan button was enabled last.
  std::string enabledAt() const {
    const auto steps = machine.journal.timedStartingWith("ibScanButton setEnabled YES");
    return steps.empty() ? "never" : steps.back();
  }
  std::vector<std::string> addressesFound() {
    std::vector<std::string> addresses;
    for (const auto& server : finder->fFoundList().value_or(Array())) {
      addresses.push_back(*server.as<Dictionary>()->find("ipaddress")->as<std::string>());
    }
    return addresses;
  }
};

TEST_F(ScanTest, ProbesEveryAddressOfTheNetworkInOrderTwoMillisecondsApart) {
  open();
  scan();
  const auto requests = machine.http.requests();
  ASSERT_EQ(requests.size(), 256U);
  for (std::size_t number = 0; number < requests.size(); ++number) {
    EXPECT_EQ(requests[number].url, "http://10.0.1." + std::to_string(number) + ":9090");
    EXPECT_EQ(requests[number].time, Millis{2 * number});
    EXPECT_EQ(requests[number].timeout, Millis{5000});
  }
}

TEST_F(ScanTest, KeepsAllProbesInFlightAtATime) {
  machine.http.setOtherwise({});
  open();
  scan();
  EXPECT_EQ(machine.http.mostOpen(), 256U);
}

TEST_F(ScanTest, TheStatusLineFollowsProbesAnswersAndTheWait) {
  serve("10.0.1.1");
  serve("10.0.1.2", "nginx", Millis{1000});
  serve("10.0.1.3", "nginx", Millis{1000});
  open();
  scan();
  const auto texts = statusTexts();
  EXPECT_EQ(texts[0], "0 Checking 10.0.1.0:9090");
  EXPECT_EQ(texts[1], "0 10.0.1.0:9090 status = NSStatusUnavailable...");
  EXPECT_EQ(texts[2], "2 Checking 10.0.1.1:9090");
  EXPECT_EQ(texts[3], "2 10.0.1.1:9090 status = NSStatusAvailable...");
  EXPECT_THAT(texts, Contains("510 Checking 10.0.1.255:9090"));
  EXPECT_THAT(texts, Contains("1004 10.0.1.2:9090 status = NSStatusUnavailable..."));
  // 254 answers are too few, 255 enough: .2 answers after 1004 ms.
  EXPECT_THAT(texts,
              Contains(MatchesRegex("512 Waiting for Responses\\.\\.\\.[0-5][0-9]\\.[0-9][0-9][0-9]")));
  EXPECT_THAT(texts, Contains(MatchesRegex("712 Waiting for Responses\\.\\.\\..*")));
  EXPECT_THAT(texts, Contains(MatchesRegex("912 Waiting for Responses\\.\\.\\..*")));
  EXPECT_THAT(texts, Not(Contains(MatchesRegex("1112 Waiting for Responses\\.\\.\\..*"))));
  EXPECT_EQ(texts.back(), "1113 ");
}

TEST_F(ScanTest, TheBarFillsWithTheAnswers) {
  serve("10.0.1.9", "Lumo-Juniva/2.1", Millis{4000});
  open();
  ASSERT_TRUE(window().press("ibScanButton"));
  machine.dispatch.runUntilIdle();
  EXPECT_EQ(bar().minValue(), 0);
  EXPECT_EQ(bar().maxValue(), 255);
  EXPECT_EQ(bar().doubleValue(), 1);
  machine.dispatch.advance(Millis{100});
  EXPECT_EQ(bar().doubleValue(), 50);
  machine.dispatch.advance(Millis{20'000});
  EXPECT_EQ(bar().doubleValue(), 256);
  scan();
  EXPECT_THAT(machine.journal.startingWith("fProgressIndicator setDoubleValue 0"), testing::SizeIs(2));
}

TEST_F(ScanTest, TheLastAnswerIsNotWaitedForAndChangesNothingLater) {
  serve("10.0.1.200", "Lumo-Juniva/2.1", Millis{4000});
  serve("10.0.1.9");
  open();
  ASSERT_TRUE(window().press("ibScanButton"));
  machine.dispatch.advance(Millis{513});
  EXPECT_THAT(addressesFound(), ElementsAre("10.0.1.9"));
  EXPECT_EQ(finder->fIpListInfo()->size(), 255U);
  machine.dispatch.advance(Millis{10'000});
  EXPECT_EQ(finder->fIpListInfo()->size(), 256U);
  EXPECT_EQ(finder->fIpListInfo()->at("10.0.1.200"),
            (Dictionary{{"status", "NSStatusAvailable"}, {"server", "Lumo-Juniva/2.1"}}));
  EXPECT_THAT(addressesFound(), ElementsAre("10.0.1.9"));
}

TEST_F(ScanTest, TheButtonIsDisabledFromThePressToTheEnd) {
  machine.http.setOtherwise({});
  open();
  ASSERT_TRUE(window().press("ibScanButton"));
  machine.dispatch.runUntilIdle();
  EXPECT_FALSE(button("ibScanButton").isEnabled());
  EXPECT_TRUE(finder->fIsSearchingForJunivaServers);
  // The last answer that is needed comes 5 s after the probe of .254, at 5508.
  machine.dispatch.advance(Millis{5511});
  EXPECT_FALSE(button("ibScanButton").isEnabled());
  EXPECT_EQ(finder->fFoundList(), std::nullopt);
  machine.dispatch.advance(Millis{1});
  EXPECT_FALSE(finder->fIsSearchingForJunivaServers);
  EXPECT_EQ(finder->fFoundList(), Array());
  machine.dispatch.advance(Millis{1});
  EXPECT_EQ(enabledAt(), "5513 ibScanButton setEnabled YES");
  EXPECT_EQ(status(), kNothingFound);
}

TEST_F(ScanTest, ASecondPressBeforeTheButtonIsDisabledStartsNoSecondScan) {
  open();
  EXPECT_TRUE(window().press("ibScanButton"));
  EXPECT_TRUE(window().press("ibScanButton"));
  machine.dispatch.advance(Millis{20'000});
  EXPECT_EQ(machine.http.requests().size(), 256U);
}

TEST_F(ScanTest, WithoutAnyAnswerTheWaitEndsAfterTenSecondsAndTheButtonStaysDisabled) {
  SilentClient silent;
  platform::Platform muted{
      machine.dispatch, machine.application, machine.windows,       machine.bus,
      silent,           machine.defaults,    machine.notifications, machine.bundle.bundle()};
  finder = Finder::make(muted, network.get());
  parent->beginSheet(*finder->window(), [this](int code) { endedWith = code; });
  machine.dispatch.runUntilIdle();
  machine.journal.clear();
  ASSERT_TRUE(window().press("ibScanButton"));
  // The wait begins at 512. It looks for the last time at 10712, 10.2 s later: 10.0 s are not yet too long.
  machine.dispatch.advance(Millis{10'711});
  EXPECT_THAT(statusTexts().back(), MatchesRegex("10512 Waiting for Responses\\.\\.\\..*"));
  EXPECT_FALSE(log.contains("end..."));
  machine.dispatch.advance(Millis{1});
  EXPECT_THAT(statusTexts().back(), MatchesRegex("10712 Waiting for Responses\\.\\.\\..*"));
  EXPECT_TRUE(log.contains("end..."));
  EXPECT_TRUE(log.contains("total time = 10.20"));
  machine.dispatch.advance(Millis{1});
  EXPECT_EQ(statusTexts().back(), "10713 ");
  machine.dispatch.advance(Millis{60'000});
  EXPECT_EQ(status(), "");
  EXPECT_EQ(finder->fFoundList(), std::nullopt);
  EXPECT_TRUE(finder->fIsSearchingForJunivaServers);
  EXPECT_FALSE(button("ibScanButton").isEnabled());
  EXPECT_FALSE(window().press("ibScanButton"));
  // Whatever comes now is recorded and changes nothing.
  ASSERT_EQ(silent.kept.size(), 256U);
  silent.kept[9](FakeHttpClient::status(200, {{"Server", "lumo-juniva"}}));
  machine.dispatch.advance(Millis{20'000});
  EXPECT_EQ(finder->fIpListInfo()->size(), 1U);
  EXPECT_EQ(finder->fFoundList(), std::nullopt);
  EXPECT_TRUE(choice(0).isHidden());
}

TEST_F(ScanTest, ServersAreListedInOrderOfTheirAddressWhateverTheOrderOfTheirAnswers) {
  serve("10.0.1.100", "Lumo-Juniva/1");
  serve("10.0.1.20", "Lumo-Juniva/2", Millis{2000});
  serve("10.0.1.3", "Lumo-Juniva/3", Millis{3000});
  // One answer is not waited for; it is to be none of theirs.
  machine.http.answer("http://10.0.1.250:9090", FakeHttpClient::error("no route"), Millis{4000});
  open();
  scan();
  EXPECT_THAT(addressesFound(), ElementsAre("10.0.1.3", "10.0.1.20", "10.0.1.100"));
  EXPECT_EQ(choice(0).title(), "Select [10.0.1.3 - Lumo-Juniva/3]");
  EXPECT_EQ(choice(1).title(), "Select [10.0.1.20 - Lumo-Juniva/2]");
  EXPECT_EQ(choice(2).title(), "Select [10.0.1.100 - Lumo-Juniva/1]");
  EXPECT_TRUE(choice(3).isHidden());
}

TEST_F(ScanTest, TheRecordOfAServerHasItsAddress) {
  serve("10.0.1.20", "Lumo-Juniva/2.1");
  open();
  scan();
  EXPECT_EQ(finder->fFoundList(), (Array{Dictionary{{"status", "NSStatusAvailable"},
                                                    {"server", "Lumo-Juniva/2.1"},
                                                    {"urlstring", "http://10.0.1.20:9090"},
                                                    {"ipaddress", "10.0.1.20"}}}));
}

TEST_F(ScanTest, AnyStatusWithTheRightHeaderIsAServerAndOtherServersAreNone) {
  const auto answer = [this](const std::string& address, int status, const std::string& name) {
    machine.http.answer("http://" + address + ":9090", FakeHttpClient::status(status, {{"server", name}}));
  };
  answer("10.0.1.4", 404, "lumo-juniva");
  answer("10.0.1.5", 500, "Lumo-Juniva/2.1");
  answer("10.0.1.6", 200, "nginx");
  machine.http.answer("http://10.0.1.8:9090", FakeHttpClient::status(200));
  open();
  scan();
  EXPECT_THAT(addressesFound(), ElementsAre("10.0.1.4", "10.0.1.5"));
  EXPECT_EQ(finder->fIpListInfo()->at("10.0.1.6"), (Dictionary{{"status", "NSStatusUnavailable"}}));
}

TEST_F(ScanTest, WithoutANetworkThisComputerAloneIsAsked) {
  network.setInterfaces("lo");
  serve("localhost");
  open();
  scan();
  EXPECT_THAT(machine.http.requestedUrls(), ElementsAre("http://localhost:9090"));
  EXPECT_EQ(finder->fMaxNumberOfIpAddressToCheck, 1);
  EXPECT_EQ(statusTexts().front(), "0 Checking localhost:9090");
  EXPECT_THAT(statusTexts(), Contains("0 localhost:9090 status = NSStatusAvailable..."));
  EXPECT_THAT(addressesFound(), ElementsAre("localhost"));
  EXPECT_EQ(choice(0).title(), "Select [localhost (This Computer) - Lumo-Juniva/2.1]");
  EXPECT_EQ(bar().maxValue(), 1);
  EXPECT_EQ(bar().doubleValue(), 1);
}

TEST_F(ScanTest, TheEndTextTellsWhetherThereIsANetwork) {
  open();
  scan();
  EXPECT_EQ(status(), kNothingFound);
  network.setInterfaces("lo");
  scan();
  EXPECT_EQ(status(), kNothingHere);
  network.ssid = "Shop";
  scan();
  EXPECT_EQ(status(), kNothingFound);
}

TEST_F(ScanTest, ANewScanForgetsTheLastOne) {
  serve("10.0.1.20");
  open();
  scan();
  EXPECT_FALSE(choice(0).isHidden());
  machine.http.answer("http://10.0.1.20:9090", FakeHttpClient::error("Connection refused"), Millis{100});
  log.clear();
  ASSERT_TRUE(window().press("ibScanButton"));
  machine.dispatch.runUntilIdle();
  EXPECT_TRUE(choice(0).isHidden());
  EXPECT_EQ(finder->fFoundList(), std::nullopt);
  EXPECT_EQ(finder->fIpListInfo()->size(), 1U);
  EXPECT_TRUE(log.contains("self.fIpListInfo at start.... (null)"));
  EXPECT_TRUE(log.contains(" self.fFoundList at start.... (null)"));
  machine.dispatch.advance(Millis{20'000});
  EXPECT_EQ(finder->fFoundList(), Array());
  EXPECT_TRUE(choice(0).isHidden());
  EXPECT_EQ(status(), kNothingFound);
}

TEST_F(ScanTest, TheLogTellsTheScan) {
  serve("10.0.1.20");
  open();
  scan();
  EXPECT_TRUE(log.contains("FOUND JUNIVA SERVER !!!!"));
  EXPECT_EQ(log.count("FOUND JUNIVA SERVER !!!!"), 1U);
  EXPECT_TRUE(log.contains("start..."));
  EXPECT_TRUE(log.contains("done"));
  EXPECT_TRUE(log.contains("end..."));
  EXPECT_TRUE(log.contains("total time =  0.00"));
  EXPECT_TRUE(log.contains("response = {"));
  EXPECT_TRUE(log.contains("FoundList = ("));
  EXPECT_THAT(log.lines(), Contains(MatchesRegex("startdate = ....-..-.. ..:..:.. \\+0000")));
  EXPECT_THAT(log.lines(), Contains(MatchesRegex("enddate = ....-..-.. ..:..:.. \\+0000")));
}

TEST_F(ScanTest, AnAnswerIsRecordedOnTheMainQueueAndReplacesAnEarlierOne) {
  open();
  finder->updateIpArray_withStatus("10.0.1.9", "NSStatusUnavailable");
  EXPECT_EQ(finder->fIpListInfo(), std::nullopt);
  machine.dispatch.runUntilIdle();
  EXPECT_EQ(finder->fIpListInfo()->at("10.0.1.9"), (Dictionary{{"status", "NSStatusUnavailable"}}));
  finder->updateIpArray_withStatus("10.0.1.9", answerRecord("lumo-juniva"));
  machine.dispatch.runUntilIdle();
  EXPECT_EQ(finder->fIpListInfo()->size(), 1U);
  EXPECT_EQ(finder->fIpListInfo()->at("10.0.1.9"), answerRecord("lumo-juniva"));
  EXPECT_EQ(status(), "10.0.1.9:9090 status = NSStatusAvailable...");
}

TEST_F(ScanTest, AProbeGoesToThePortThatItIsGiven) {
  open();
  finder->doCheckIpAddress_withPort("10.0.1.9", "8080");
  machine.dispatch.runUntilIdle();
  EXPECT_THAT(machine.http.requestedUrls(), ElementsAre("http://10.0.1.9:8080"));
}

}  // namespace
}  // namespace lumo

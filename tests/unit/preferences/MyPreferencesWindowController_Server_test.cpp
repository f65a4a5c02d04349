#include "tests/unit/preferences/preferences_fixture.h"

// Tests of the connection, and the search for servers.

namespace {

using fakes::FakeHttpClient;
using platform::Dictionary;
using platform::Millis;
using preferencestest::kFinder;
using std::nullopt;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

using ConnectionTest = preferencestest::PreferencesTest;

constexpr const char* kPressed = "MyPreferencesWindowController->ibTestConnection:....";
constexpr const char* kRefused =
    "MyPreferencesWindowController->ibTestConnection:....PREVIOUS Still in Session...";

TEST_F(ConnectionTest, RunsWhenTheWindowLoads) {
  machine.defaults.setObject("http://s:9090/r", lumo::prefServerAddress);
  serve("http://s:9090/r");
  load();
  EXPECT_THAT(machine.http.requestedUrls(), IsEmpty());
  machine.dispatch.runUntilIdle();

  EXPECT_THAT(machine.http.requestedUrls(), ElementsAre("http://s:9090/r"));
  EXPECT_THAT(light().history(), ElementsAre("", "NSStatusAvailable"));
  EXPECT_EQ(shown("ibStatusText"), "The photo server answers");
}

TEST_F(ConnectionTest, TellsEachStepInTheLog) {
  machine.defaults.setObject("http://s:9090/r", lumo::prefServerAddress);
  serve("http://s:9090/r");
  open();
  sheet().press("ibTestConnection");
  machine.dispatch.runUntilIdle();

  EXPECT_THAT(log.lines(),
              ElementsAre(kPressed, "tempurl = http://s:9090/r", "tempurl.scheme = http",
                          "MyPreferencesWindowController->ibTestConnection:....New Method on 10.9+...",
                          "MyPreferencesWindowController->ibTestConnection:....End...", "valid connection"));
}

TEST_F(ConnectionTest, AnAddressWithoutASchemeGetsHttpAndIsStored) {
  machine.defaults.setObject("10.1.2.3:9090", lumo::prefServerAddress);
  serve("http://10.1.2.3:9090");
  open();

  EXPECT_THAT(machine.http.requestedUrls(), ElementsAre("http://10.1.2.3:9090"));
  EXPECT_EQ(text(lumo::prefServerAddress), "http://10.1.2.3:9090");
  EXPECT_EQ(form().text(lumo::prefServerAddress), "http://10.1.2.3:9090");
  EXPECT_EQ(light().imageName(), "NSStatusAvailable");
}

TEST_F(ConnectionTest, AnAddressWithHttpsIsRewrittenToo) {
  machine.defaults.setObject("https://s/r", lumo::prefServerAddress);
  open();

  EXPECT_EQ(text(lumo::prefServerAddress), "http://https://s/r");
  EXPECT_EQ(light().imageName(), "NSStatusUnavailable");
}

TEST_F(ConnectionTest, UsesTheDefaultAddressWhereNoOtherIsSet) {
  machine.defaults.setObject("http://fallback:9090", lumo::prefDefaultServerAddress);
  serve("http://fallback:9090");
  open();

  EXPECT_EQ(light().imageName(), "NSStatusAvailable");
  EXPECT_EQ(stored(lumo::prefServerAddress), nullopt);
}

TEST_F(ConnectionTest, WithoutAnyAddressNothingIsAskedAndNothingStored) {
  load();
  machine.dispatch.runUntilIdle();

  EXPECT_THAT(light().history(), ElementsAre("", "NSStatusUnavailable"));
  EXPECT_THAT(machine.http.requestedUrls(), IsEmpty());
  EXPECT_EQ(stored(lumo::prefServerAddress), nullopt);
  EXPECT_FALSE(controller->fIsChecking);
  EXPECT_TRUE(log.contains("error = there is no address to test"));
}

TEST_F(ConnectionTest, WhatIsNoAddressIsUnavailable) {
  machine.defaults.setObject("http://my server", lumo::prefServerAddress);
  load();
  machine.dispatch.runUntilIdle();

  EXPECT_EQ(light().imageName(), "NSStatusUnavailable");
  EXPECT_THAT(machine.http.requestedUrls(), IsEmpty());
  EXPECT_TRUE(log.contains("error = this is no address: http://http://my server"));
}

class ConnectionAnswer : public preferencestest::PreferencesTest, public testing::WithParamInterface<int> {};

TEST_P(ConnectionAnswer, CountsWhateverItsStatus) {
  machine.defaults.setObject("http://s/", lumo::prefServerAddress);
  serve("http://s/", GetParam());
  open();
  EXPECT_EQ(light().imageName(), "NSStatusAvailable");
}

INSTANTIATE_TEST_SUITE_P(Statuses, ConnectionAnswer, testing::Values(200, 302, 401, 404, 500, 503));

TEST_F(ConnectionTest, ATransportErrorIsUnavailable) {
  machine.defaults.setObject("http://s/", lumo::prefServerAddress);
  machine.http.answer("http://s/", FakeHttpClient::error("Connection refused"));
  load();
  machine.dispatch.runUntilIdle();

  EXPECT_EQ(light().imageName(), "NSStatusUnavailable");
  EXPECT_EQ(shown("ibStatusText"), "The photo server cannot be reached");
  EXPECT_TRUE(log.contains("error = Connection refused"));
  EXPECT_FALSE(log.contains("valid connection"));
}

TEST_F(ConnectionTest, WaitsFiveSecondsAtMost) {
  machine.defaults.setObject("http://s/", lumo::prefServerAddress);
  load();
  machine.dispatch.runUntilIdle();
  ASSERT_EQ(machine.http.requests().size(), 1U);
  EXPECT_EQ(machine.http.requests()[0].timeout, Millis{5000});
  EXPECT_EQ(shown("ibStatusText"), "Asking the photo server…");

  machine.dispatch.advance(Millis{4999});
  EXPECT_EQ(light().imageName(), "");
  EXPECT_TRUE(controller->fIsChecking);
  machine.dispatch.advance(Millis{1});
  EXPECT_EQ(light().imageName(), "NSStatusUnavailable");
  EXPECT_FALSE(controller->fIsChecking);
}

TEST_F(ConnectionTest, ASecondPressWhileItRunsBeepsTwiceAndDoesNothing) {
  machine.defaults.setObject("http://s/", lumo::prefServerAddress);
  open();
  serve("http://s/", 200, Millis{300});
  sheet().press("ibTestConnection");
  sheet().press("ibTestConnection");
  EXPECT_EQ(machine.application.beeps(), 2);
  machine.dispatch.advance(Millis{100});
  sheet().press("ibTestConnection");
  EXPECT_EQ(machine.application.beeps(), 4);
  EXPECT_EQ(log.count(kPressed), 3U);
  EXPECT_EQ(log.count(kRefused), 2U);
  machine.dispatch.advance(Millis{200});

  // One of the opening and one of the first press.
  EXPECT_EQ(machine.http.requests().size(), 2U);
  EXPECT_EQ(light().imageName(), "NSStatusAvailable");
  sheet().press("ibTestConnection");
  machine.dispatch.runUntilIdle();
  EXPECT_EQ(machine.http.requests().size(), 3U);
  EXPECT_EQ(machine.application.beeps(), 4);
}

TEST_F(ConnectionTest, KeepsTheLastResultOnTheLightWhileItRuns) {
  machine.defaults.setObject("http://s/", lumo::prefServerAddress);
  open();
  sheet().press("ibTestConnection");
  machine.dispatch.advance(Millis{100});
  EXPECT_EQ(light().imageName(), "NSStatusUnavailable");
  EXPECT_EQ(shown("ibStatusText"), "Asking the photo server…");
}

TEST_F(ConnectionTest, TestsWhatHasJustBeenWritten) {
  open();
  form().type(lumo::prefServerAddress, "http://new/");
  serve("http://new/");
  sheet().press("ibTestConnection");
  machine.dispatch.runUntilIdle();
  EXPECT_EQ(light().imageName(), "NSStatusAvailable");
}

TEST_F(ConnectionTest, MayOutliveTheWindow) {
  machine.defaults.setObject("http://s/", lumo::prefServerAddress);
  load();
  machine.dispatch.advance(Millis{10});
  controller.reset();
  machine.dispatch.advance(Millis{6000});
  EXPECT_EQ(machine.http.open(), 0U);
}

class ServerSearch : public preferencestest::PreferencesTest {
 protected:
  void SetUp() override {
    network.setLocalAddress("10.0.1.7");
    machine.http.setOtherwise([](const std::string&) {
      return FakeHttpClient::Answer{FakeHttpClient::error("Connection refused")};
    });
    open();
  }
  fakes::FakeWindow& finder() { return *machine.windows.window(kFinder); }
  void search() {
    ASSERT_TRUE(sheet().press("ibSearchJunivaServer"));
    machine.dispatch.runUntilIdle();
  }
  // The finder's end, as if a record had just been stored.
  void choose(const Dictionary& record) {
    machine.defaults.setObject(record, lumo::prefSelectedJunivaServerInfo);
    endWith(1);
  }
  void endWith(int code) {
    sheet().endSheet(finder(), code);
    machine.dispatch.runUntilIdle();
  }
  static Dictionary record(const std::string& urlstring) {
    return {{"status", "NSStatusAvailable"}, {"server", "Lumo-Juniva/2.1"}, {"urlstring", urlstring}};
  }
};

TEST_F(ServerSearch, ShowsTheFinderOnThisWindow) {
  search();
  EXPECT_EQ(sheet().currentSheet(), &finder());
  ASSERT_NE(controller->fFindJunivaController, nullptr);
  EXPECT_EQ(controller->fFindJunivaController->window(), &finder());
  EXPECT_EQ(log.lines()[0], "Inside MyPreferencesWindowController => ibSearchJunivaServer:...");
  EXPECT_EQ(log.lines()[1], "MyPreferencesWindowController->windowWillBeginSheet:....");
}

TEST_F(ServerSearch, WithoutADescriptionOfTheFinderNothingHappens) {
  machine.windows.removeDescription(kFinder);
  ASSERT_TRUE(sheet().press("ibSearchJunivaServer"));
  EXPECT_EQ(sheet().currentSheet(), nullptr);
}

TEST_F(ServerSearch, TakesTheServerThatAPersonChooses) {
  serve("http://10.0.1.20:9090");
  machine.http.answer("http://10.0.1.20:9090", FakeHttpClient::status(200, {{"Server", "Lumo-Juniva/2.1"}}));
  search();
  ASSERT_TRUE(finder().press("ibScanButton"));
  machine.dispatch.advance(Millis{20'000});
  ASSERT_TRUE(finder().press("ibChoiceButton0"));
  machine.dispatch.runUntilIdle();

  EXPECT_EQ(text(lumo::prefServerAddress), "http://10.0.1.20:9090/registrationorders");
  EXPECT_EQ(text(lumo::prefJunivaServerUrlString), "http://10.0.1.20:9090/registrationorders");
  EXPECT_EQ(form().text(lumo::prefServerAddress), "http://10.0.1.20:9090/registrationorders");
  EXPECT_TRUE(log.contains("Inside MyPreferencesWindowController => ibSearchJunivaServer:...response = 1"));
}

TEST_F(ServerSearch, AServerOnThisComputerIsStoredAsLocalhost) {
  search();
  choose(record("http://10.0.1.7:9090"));
  EXPECT_EQ(text(lumo::prefServerAddress), "http://localhost:9090/registrationorders");
  EXPECT_EQ(text(lumo::prefJunivaServerUrlString), "http://localhost:9090/registrationorders");
}

TEST_F(ServerSearch, UsesThePathOfThePreferences) {
  machine.defaults.setObject("stations/list", lumo::prefJunivaPhotoStationListPath);
  search();
  choose(record("http://10.0.1.20:9090"));
  EXPECT_EQ(text(lumo::prefServerAddress), "http://10.0.1.20:9090/stations/list");
}

TEST_F(ServerSearch, WithoutAChoiceNothingChanges) {
  machine.defaults.setObject(record("http://10.0.1.20:9090"), lumo::prefSelectedJunivaServerInfo);
  machine.defaults.setObject("http://before", lumo::prefServerAddress);
  for (const int code : {0, 2, -1}) {
    search();
    log.clear();
    endWith(code);
    EXPECT_EQ(text(lumo::prefServerAddress), "http://before");
    EXPECT_EQ(text(lumo::prefJunivaServerUrlString), nullopt);
    EXPECT_THAT(log.lines(),
                ElementsAre("Inside MyPreferencesWindowController => ibSearchJunivaServer:...response = " +
                            std::to_string(code)));
  }
}

TEST_F(ServerSearch, WithoutARecordTheAddressIsTheTextForAMissingObject) {
  search();
  endWith(1);
  EXPECT_EQ(text(lumo::prefServerAddress), "(null)/registrationorders");
}

TEST_F(ServerSearch, ARecordWithABrokenAddressLosesNoSetting) {
  machine.defaults.setObject("http://before", lumo::prefServerAddress);
  search();
  choose(record("http://a b/"));
  EXPECT_EQ(text(lumo::prefServerAddress), "http://before");
  EXPECT_EQ(text(lumo::prefJunivaServerUrlString), nullopt);
  EXPECT_THAT(log.lines(),
              Contains(StartsWith("the chosen server has no usable address, the preferences stay: {")));
}

TEST_F(ServerSearch, TheChoiceIsStoredAlsoWhenTheWindowGoesAtOnce) {
  search();
  machine.defaults.setObject(record("http://10.0.1.20:9090"), lumo::prefSelectedJunivaServerInfo);
  sheet().endSheet(finder(), 1);
  controller.reset();
  machine.dispatch.runUntilIdle();
  EXPECT_EQ(text(lumo::prefServerAddress), "http://10.0.1.20:9090/registrationorders");
}

TEST_F(ServerSearch, EachSearchHasAFinderOfItsOwn) {
  search();
  const std::weak_ptr<lumo::FindLumoJunivaServerWindowController> first = controller->fFindJunivaController;
  endWith(0);
  EXPECT_FALSE(first.expired());
  search();
  EXPECT_TRUE(first.expired());
}

}  // namespace

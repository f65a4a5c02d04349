#include "browser/LoadFailure.h"
#include "tests/unit/browser/browser_fixture.h"

namespace {

using browsertest::hasInOrder;
using fakes::FakeTextField;
using lumo::Sender;
using platform::CachePolicy;
using platform::HeaderFields;
using platform::Millis;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

constexpr const char* kNoRunningAddress =
    "MyWebViewWindowController->ibGoButtonWK:....HMMM prefRunningUrlString returned NIL???????";

class BrowserLoading : public browsertest::BrowserTest {
 protected:
  std::vector<std::string> shownTexts() {
    std::vector<std::string> texts;
    for (const auto& load : page().htmlLoads()) {
      EXPECT_EQ(load.base, std::nullopt);
      texts.push_back(load.html);
    }
    return texts;
  }
};

TEST_F(BrowserLoading, GoAsksTheServerItselfWithinFiveSecondsAndSaysThatThereIsNoScanner) {
  set(lumo::prefRunningUrlString, "http://10.0.0.5:9090/a");
  makeShown().ibGoButton({});

  ASSERT_EQ(page().requests().size(), 1U);
  const platform::UrlRequest& request = page().requests().front();
  EXPECT_EQ(request.url.absoluteString(), "http://10.0.0.5:9090/a");
  EXPECT_EQ(request.cachePolicy, CachePolicy::ReloadIgnoringLocalCacheData);
  EXPECT_EQ(request.timeout, Millis{5000});
  EXPECT_EQ(request.headers, (HeaderFields{{"Glimmerpad-Scan", "no"}}));
  EXPECT_FALSE(browser->hasCamera());
  EXPECT_EQ(runningAddress(), "http://10.0.0.5:9090/a");
}

TEST_F(BrowserLoading, GoTellsInTheLogWhatItDoes) {
  set(lumo::prefRunningUrlString, "http://h/a%20b");
  makeShown().ibGoButton({});

  EXPECT_THAT(log.lines(), ElementsAre("MyWebViewWindowController->ibGoButtonWK:....sender = [(null)]",
                                       "url string at start = http://h/a%20b",
                                       "url string withOUT percent encoding = http://h/a b",
                                       "url.scheme = http", "request.allHTTPHeaderFields = {", "}"));
}

TEST_F(BrowserLoading, GoLogsWhoSentIt) {
  makeShown();
  browser->ibGoButton(Sender("http://x/"));
  window().press("goButton");

  EXPECT_THAT(log.lines(), hasInOrder({"MyWebViewWindowController->ibGoButtonWK:....sender = [http://x/]",
                                       "MyWebViewWindowController->ibGoButtonWK:....sender = [<Button>]"}));
}

TEST_F(BrowserLoading, LocalhostWithAPortIsCompletedAndStored) {
  set(lumo::prefRunningUrlString, "localhost:9090/x");
  makeShown().ibGoButton({});

  EXPECT_THAT(loaded(), ElementsAre("http://localhost:9090/x"));
  EXPECT_EQ(runningAddress(), "http://localhost:9090/x");
  EXPECT_TRUE(log.contains("url.scheme = localhost"));
}

TEST_F(BrowserLoading, AHostNumberWithAPortIsCompletedAndStored) {
  set(lumo::prefRunningUrlString, "10.0.0.5:9090");
  makeShown().ibGoButton({});

  EXPECT_THAT(loaded(), ElementsAre("http://10.0.0.5:9090"));
  EXPECT_EQ(runningAddress(), "http://10.0.0.5:9090");
  EXPECT_TRUE(log.contains("url.scheme = (null)"));
}

TEST_F(BrowserLoading, WithoutARunningAddressAndASenderTheServersAddressIsLoaded) {
  set(lumo::prefServerAddress, "http://s:9090/r");
  makeShown().ibGoButton({});

  EXPECT_THAT(loaded(), ElementsAre("http://s:9090/r"));
  EXPECT_EQ(runningAddress(), std::nullopt);
  EXPECT_THAT(log.lines(), hasInOrder({"url string at start = (null)", kNoRunningAddress}));
  EXPECT_THAT(log.lines(), Not(Contains(StartsWith("url string withOUT percent encoding"))));
}

TEST_F(BrowserLoading, WithoutAnyAddressNothingHappens) {
  makeShown().ibGoButton({});

  EXPECT_THAT(machine.journal.entries(), IsEmpty());
  EXPECT_EQ(runningAddress(), std::nullopt);
  EXPECT_THAT(log.lines(), Not(Contains(StartsWith("url.scheme"))));
}

TEST_F(BrowserLoading, EscapesAndBlanksMixedAreEscapedOnceAsAWhole) {
  set(lumo::prefRunningUrlString, "http://h/a%20b c%25d");
  makeShown().ibGoButton({});

  EXPECT_THAT(loaded(), ElementsAre("http://h/a%20b%20c%25d"));
  EXPECT_EQ(runningAddress(), "http://h/a%20b c%25d");
}

TEST_F(BrowserLoading, ASendersAddressIsUsedWhenNoneIsStored) {
  set(lumo::prefServerAddress, "http://s/");
  makeShown().ibGoButton(Sender("http://x/1"));

  EXPECT_THAT(loaded(), ElementsAre("http://x/1"));
  EXPECT_THAT(
      log.lines(),
      hasInOrder(
          {kNoRunningAddress, "MyWebViewWindowController->ibGoButtonWK:....Checking if sender is NSString...",
           "MyWebViewWindowController->ibGoButtonWK:....Will try to use sender string: [http://x/1]...",
           "url string withOUT percent encoding = http://x/1"}));
}

TEST_F(BrowserLoading, ASendersAddressDoesNotReplaceTheStoredOne) {
  set(lumo::prefRunningUrlString, "http://y/");
  makeShown().ibGoButton(Sender("http://x/"));

  EXPECT_THAT(loaded(), ElementsAre("http://y/"));
  EXPECT_FALSE(log.contains(kNoRunningAddress));
}

TEST_F(BrowserLoading, AControlIsNoAddress) {
  makeShown();
  window().view<FakeTextField>("ibTextField").type("http://typed/");
  browser->ibGoButton(&window().view<FakeTextField>("ibTextField"));

  EXPECT_THAT(loaded(), IsEmpty());
  EXPECT_TRUE(log.contains(kNoRunningAddress));
  EXPECT_FALSE(log.contains("MyWebViewWindowController->ibGoButtonWK:....Checking if sender is NSString..."));
}

TEST_F(BrowserLoading, AnAddressThatIsNoneIsShownInPlaceOfTheSite) {
  set(lumo::prefRunningUrlString, "http://h:port/");
  makeShown().ibGoButton({});

  EXPECT_THAT(loaded(), IsEmpty());
  EXPECT_THAT(shownTexts(), ElementsAre(lumo::readablePage("Invalid url Request = [http://h:port/]")));
  EXPECT_EQ(window().sheetCount(), 0U);
  EXPECT_EQ(runningAddress(), "http://h:port/");
}

TEST_F(BrowserLoading, ACompletedAddressThatIsNoneIsShownAndNotStored) {
  set(lumo::prefRunningUrlString, "localhost:port");
  makeShown().ibGoButton({});

  EXPECT_THAT(shownTexts(), ElementsAre(lumo::readablePage("Invalid url Request = [http://localhost:port]")));
  EXPECT_EQ(runningAddress(), "localhost:port");
}

TEST_F(BrowserLoading, GoLoadsIntoTheCurrentViewFirstWhenBothAreVisible) {
  set(lumo::prefRunningUrlString, "http://h/");
  makeShown();
  legacy().setHidden(false);
  machine.journal.clear();
  browser->ibGoButton({});

  EXPECT_THAT(steps(), ElementsAre("webView1 load http://h/", "ibWebView load http://h/"));
}

TEST_F(BrowserLoading, GoShowsAnInvalidAddressInBothVisibleViews) {
  set(lumo::prefRunningUrlString, "http://h:port/");
  makeShown();
  legacy().setHidden(false);
  machine.journal.clear();
  browser->ibGoButton({});

  EXPECT_THAT(steps(), ElementsAre("webView1 loadHTMLString " +
                                       lumo::readablePage("Invalid url Request = [http://h:port/]"),
                                   "ibWebView loadHTMLString " +
                                       lumo::readablePage("Invalid url Request = [http://h:port/]")));
}

TEST_F(BrowserLoading, HiddenViewsAreLeftAlone) {
  set(lumo::prefServerAddress, "http://s/");
  makeShown();
  page().setHidden(true);
  machine.journal.clear();
  browser->ibGoButton({});
  browser->ibHomeButton({});
  browser->ibBackButton({});
  browser->ibForwardButton({});
  browser->ibTextButton(&window().view<FakeTextField>("ibTextField"));

  EXPECT_THAT(steps(), IsEmpty());
  EXPECT_EQ(runningAddress(), std::nullopt);
}

}  // namespace

#include "tests/unit/browser/browser_fixture.h"

// Home, back, forward, and the navigation bar.

namespace {

using browsertest::hasInOrder;
using fakes::FakeSegmentedControl;
using fakes::FakeTextField;
using lumo::Sender;
using testing::ElementsAre;
using testing::IsEmpty;

using BrowserHome = browsertest::BrowserTest;

TEST_F(BrowserHome, StoresTheServersAddressAndLoadsIt) {
  set(lumo::prefServerAddress, "http://s:9090/r");
  set(lumo::prefRunningUrlString, "http://elsewhere/");
  makeShown().ibHomeButton({});

  EXPECT_THAT(loaded(), ElementsAre("http://s:9090/r"));
  EXPECT_EQ(runningAddress(), "http://s:9090/r");
}

TEST_F(BrowserHome, WithoutAServersAddressTheRunningOneIsLoaded) {
  set(lumo::prefRunningUrlString, "http://elsewhere/");
  makeShown().ibHomeButton({});
  set(lumo::prefServerAddress, "");
  browser->ibHomeButton({});

  EXPECT_THAT(loaded(), ElementsAre("http://elsewhere/", "http://elsewhere/"));
  EXPECT_EQ(runningAddress(), "http://elsewhere/");
}

TEST_F(BrowserHome, HandsItsSenderOn) {
  makeShown().ibHomeButton(Sender("http://x/"));

  EXPECT_THAT(loaded(), ElementsAre("http://x/"));
}

TEST_F(BrowserHome, RunsTwiceWhenBothViewsAreVisible) {
  set(lumo::prefServerAddress, "http://s/");
  makeShown();
  legacy().setHidden(false);
  machine.journal.clear();
  browser->ibHomeButton({});

  EXPECT_THAT(steps(), ElementsAre("webView1 load http://s/", "ibWebView load http://s/",  //
                                   "webView1 load http://s/", "ibWebView load http://s/"));
}

using BrowserHistory = browsertest::BrowserTest;

TEST_F(BrowserHistory, GoesBackAndForwardInTheVisibleView) {
  makeShown();
  browser->ibBackButton({});
  browser->ibForwardButton({});

  EXPECT_THAT(steps(), ElementsAre("webView1 goBack", "webView1 goForward"));
}

TEST_F(BrowserHistory, GoesBackAndForwardInTheLegacyViewFirstWhenBothAreVisible) {
  makeShown();
  legacy().setHidden(false);
  machine.journal.clear();
  browser->ibBackButton({});
  browser->ibForwardButton({});

  EXPECT_THAT(steps(), ElementsAre("ibWebView goBack", "webView1 goBack",  //
                                   "ibWebView goForward", "webView1 goForward"));
}

using BrowserAddressField = browsertest::BrowserTest;

TEST_F(BrowserAddressField, ReloadsTheStoredAddressWhateverIsTyped) {
  set(lumo::prefRunningUrlString, "http://stored/");
  makeShown();
  window().makeFirstResponder(window().view<FakeTextField>("ibTextField"));
  window().view<FakeTextField>("ibTextField").type("http://typed/");
  browser->ibTextButton(&window().view<FakeTextField>("ibTextField"));

  EXPECT_THAT(loaded(), ElementsAre("http://stored/"));
  EXPECT_TRUE(log.contains("MyWebViewWindowController->ibGoButtonWK:....sender = [(null)]"));
}

TEST_F(BrowserAddressField, ShowsTheAddressThatCountsInPlaceOfWhatWasTyped) {
  makeShown();
  auto& field = window().view<FakeTextField>("ibTextField");
  set(lumo::prefRunningUrlString, "localhost:9090/x");
  field.type("http://typed/");
  window().press("ibTextField");
  EXPECT_EQ(field.stringValue(), "http://localhost:9090/x");

  set(lumo::prefRunningUrlString, "http://h:port/");
  window().press("ibTextField");
  EXPECT_EQ(field.stringValue(), "http://h:port/");
}

TEST_F(BrowserAddressField, GivesThePageTheKeyboardBeforeItLoads) {
  set(lumo::prefRunningUrlString, "http://stored/");
  makeShown();
  legacy().setHidden(false);
  machine.journal.clear();
  browser->ibTextButton(&window().view<FakeTextField>("ibTextField"));

  EXPECT_THAT(steps(), ElementsAre("MyWebViewWindowController makeFirstResponder ibWebView",
                                   "MyWebViewWindowController makeFirstResponder webView1",
                                   "webView1 load http://stored/", "ibWebView load http://stored/"));
  EXPECT_EQ(window().firstResponder(), &page());
}

TEST_F(BrowserAddressField, AnotherSenderOnlyReloads) {
  set(lumo::prefRunningUrlString, "http://stored/");
  makeShown();
  browser->ibTextButton({});
  browser->ibTextButton(&window().view<fakes::FakeButton>("goButton"));

  EXPECT_THAT(steps(), ElementsAre("webView1 load http://stored/", "webView1 load http://stored/"));
}

TEST_F(BrowserAddressField, AFieldInNoWindowOnlyReloads) {
  set(lumo::prefRunningUrlString, "http://stored/");
  makeShown();
  FakeTextField field(window().stage(), "loose");
  browser->ibTextButton(&field);

  EXPECT_THAT(steps(), ElementsAre("webView1 load http://stored/"));
}

using BrowserToolbar = browsertest::BrowserTest;

TEST_F(BrowserToolbar, TheGoButtonLoadsTheStoredAddress) {
  set(lumo::prefRunningUrlString, "http://stored/");
  makeShown();
  EXPECT_TRUE(window().press("goButton"));

  EXPECT_THAT(loaded(), ElementsAre("http://stored/"));
  EXPECT_THAT(log.lines(), hasInOrder({"MyWebViewWindowController-ibToolbarGoButton:...",
                                       "MyWebViewWindowController->ibGoButtonWK:....sender = [<Button>]"}));
}

TEST_F(BrowserToolbar, TheHomeButtonLoadsTheServersAddress) {
  set(lumo::prefServerAddress, "http://s/");
  makeShown();
  EXPECT_TRUE(window().press("homeButton"));

  EXPECT_THAT(loaded(), ElementsAre("http://s/"));
}

TEST_F(BrowserToolbar, TheAddressFieldReloadsAndHandsTheKeyboardOn) {
  set(lumo::prefRunningUrlString, "http://stored/");
  makeShown();
  EXPECT_TRUE(window().press("ibTextField"));

  EXPECT_THAT(loaded(), ElementsAre("http://stored/"));
  EXPECT_EQ(window().firstResponder(), &page());
  EXPECT_EQ(log.lines().front(), "MyWebViewWindowController-ibToolbarTextField:...");
}

TEST_F(BrowserToolbar, TheSettingsButtonOpensThePreferences) {
  makeShown();
  EXPECT_TRUE(window().press("settingsButton"));

  ASSERT_NE(window().currentSheet(), nullptr);
  EXPECT_EQ(window().currentSheet()->name(), browsertest::kPreferencesWindow);
  EXPECT_THAT(log.lines(), hasInOrder({"MyWebViewWindowController-ibToolbarSettingsButton:...",
                                       "MyWebViewWindowController->ibOpenPreferences:...."}));
}

struct SegmentRow {
  int segment;
  std::vector<std::string> journal;
  std::vector<std::string> log;
};
class BrowserSegments : public browsertest::BrowserTest, public testing::WithParamInterface<SegmentRow> {};

TEST_P(BrowserSegments, AreBackAndForwardAlone) {
  makeShown();
  window().view<FakeSegmentedControl>("segmentedControl").select(GetParam().segment);
  EXPECT_TRUE(window().press("segmentedControl"));

  EXPECT_EQ(steps(), GetParam().journal);
  EXPECT_EQ(log.lines(), GetParam().log);
}

const std::string kSegments = "MyWebViewWindowController-ibToolbarSegmentedControl1:...";

INSTANTIATE_TEST_SUITE_P(
    Segments, BrowserSegments,
    testing::Values(SegmentRow{0, {"webView1 goBack"}, {kSegments + " segmentcontrol selectedSegment = 0"}},
                    SegmentRow{
                        1, {"webView1 goForward"}, {kSegments + " segmentcontrol selectedSegment = 1"}},
                    SegmentRow{2,
                               {},
                               {kSegments + " segmentcontrol selectedSegment = 2",
                                kSegments + "Unsupported segmentcontrol selectedSegment = 2"}},
                    SegmentRow{-1,
                               {},
                               {kSegments + " segmentcontrol selectedSegment = -1",
                                kSegments + "Unsupported segmentcontrol selectedSegment = -1"}}));

TEST_F(BrowserToolbar, SegmentsOfAnotherControlAreIgnored) {
  makeShown();
  browser->ibToolbarSegmentedControl1(&window().view<fakes::FakeButton>("goButton"));
  browser->ibToolbarSegmentedControl1({});

  EXPECT_THAT(steps(), IsEmpty());
  EXPECT_THAT(log.lines(), IsEmpty());
}

}  // namespace

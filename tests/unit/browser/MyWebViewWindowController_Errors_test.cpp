#include "browser/LoadFailure.h"
#include "tests/unit/browser/browser_fixture.h"

// Failed loads: the error page, the settings after it, and the process of a page that ends.

namespace {

using browsertest::kPreferencesWindow;
using platform::Millis;
using platform::WebError;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

constexpr const char* kPage =
    "Error Encountered at handleWebViewError: !!<br>error code = [-1004] = Could not "
    "connect.<br><br>sender url = http://h/x";

class BrowserFailure : public browsertest::BrowserTest {
 protected:
  void go(const std::string& address) {
    set(lumo::prefRunningUrlString, address);
    browser->ibGoButton({});
  }
  // Loads the address, which then fails before anything was shown.
  void failToLoad(const std::string& address, int code = -1004) {
    go(address);
    page().startNavigation();
    browser->startIndicator();
    machine.dispatch.runUntilIdle();
    log.clear();
    page().failProvisional(WebError{code, "Could not connect.", address});
  }
  void settle() { machine.dispatch.runUntilIdle(); }
  bool isWaiting() {
    return window().view<fakes::FakeProgressIndicator>("ibProgressIndicator").isAnimating();
  }
  std::vector<std::string> pages() {
    std::vector<std::string> texts;
    for (const auto& load : page().htmlLoads()) {
      texts.push_back(load.html);
    }
    return texts;
  }
  std::vector<std::string> linesWith(const std::string& part) const {
    std::vector<std::string> found = log.lines();
    std::erase_if(found, [&](const std::string& line) { return line.find(part) == std::string::npos; });
    return found;
  }
  bool showsPreferences() { return window().currentSheet() != nullptr; }
};

TEST_F(BrowserFailure, ShowsThePageThatTellsOfIt) {
  makeShown();
  failToLoad("http://h/x");
  settle();

  EXPECT_THAT(pages(), ElementsAre(lumo::readablePage(kPage)));
  EXPECT_EQ(page().htmlLoads().back().base, std::nullopt);
  EXPECT_FALSE(isWaiting());
  EXPECT_TRUE(window().isVisible());
}

TEST_F(BrowserFailure, LogsErrorParametersAndQuery) {
  makeShown();
  failToLoad("http://h/a/b;v=2?code=1&x=2");

  EXPECT_THAT(linesWith("didFailProvisional"),
              ElementsAre("MyWebViewWindowController-webView:didFailProvisionalNavigation:withError:...error "
                          "= Error code=-1004 \"Could not connect.\" url=http://h/a/b;v=2?code=1&x=2",
                          "MyWebViewWindowController-webView:didFailProvisionalNavigation:withError:..."
                          "paramsstring = v=2",
                          "MyWebViewWindowController-webView:didFailProvisionalNavigation:withError:...query "
                          "= code=1&x=2"));
}

TEST_F(BrowserFailure, WithoutAnAddressShowsThePageAndLogsTheErrorAlone) {
  makeShown();
  go("http://h/");
  page().startNavigation();
  log.clear();
  page().failProvisional(WebError{3, "Broken.", std::nullopt});
  settle();

  EXPECT_THAT(pages(), ElementsAre(HasSubstr("sender url = (null)")));
  EXPECT_THAT(log.lines(), Not(Contains(HasSubstr("paramsstring"))));
}

TEST_F(BrowserFailure, ACancelledRegistrationSaveShowsNoPage) {
  makeShown();
  failToLoad("http://h/registration/save", platform::kErrorFrameLoadInterrupted);
  machine.dispatch.advance(Millis{1000});

  EXPECT_THAT(pages(), IsEmpty());
  EXPECT_FALSE(isWaiting());
}

TEST_F(BrowserFailure, OfAnOrdersDataIsSilentWithItsCode) {
  makeShown();
  failToLoad("http://h/registrationorders/posdata?code=123");
  settle();
  EXPECT_THAT(pages(), IsEmpty());
  EXPECT_FALSE(isWaiting());

  failToLoad("http://h/registrationorders/posdata");
  settle();
  EXPECT_THAT(pages(), ElementsAre(HasSubstr("sender url = http://h/registrationorders/posdata")));
}

TEST_F(BrowserFailure, OfAPathInTheListAloneShowsThePage) {
  set(lumo::prefPathNamesToDataForLumo, "/registrationam/posdata");
  makeShown();
  failToLoad("http://h/registrationam/posdata?code=1", platform::kErrorFrameLoadInterrupted);
  settle();

  EXPECT_EQ(pages().size(), 1U);
}

TEST_F(BrowserFailure, LenientModeLeavesTheIndicatorSpinning) {
  set(lumo::prefLenientWithFailProvisionalNavigation, true);
  set(lumo::prefShowPrefPanelWhenUrlLoadFailed, true);
  makeShown();
  failToLoad("http://h/x");
  machine.dispatch.advance(Millis{1000});

  EXPECT_TRUE(isWaiting());
  EXPECT_THAT(pages(), IsEmpty());
  EXPECT_FALSE(showsPreferences());
  EXPECT_THAT(log.lines(),
              ElementsAre(StartsWith("MyWebViewWindowController-webView:didFailProvisionalNavigation:"
                                     "withError:...error = "),
                          "MyWebViewWindowController-webView:didFailProvisionalNavigation:withError:...is "
                          "LENIENT... returning..."));
}

TEST_F(BrowserFailure, OfAPageThatHasBegunOnlyStopsTheIndicator) {
  set(lumo::prefShowPrefPanelWhenUrlLoadFailed, true);
  makeShown();
  page().startNavigation("http://h/2");
  page().answerResponse(200);
  browser->startIndicator();
  settle();
  log.clear();
  page().fail(WebError{1, "The connection was lost.", "http://h/2"});
  machine.dispatch.advance(Millis{1000});

  EXPECT_THAT(log.lines(), ElementsAre("MyWebViewWindowController-webView:didFailNavigation:withError:..."
                                       "error = Error code=1 \"The connection was lost.\" url=http://h/2"));
  EXPECT_FALSE(isWaiting());
  EXPECT_THAT(pages(), IsEmpty());
  EXPECT_FALSE(showsPreferences());
}

TEST_F(BrowserFailure, OpensTheSettingsHalfASecondLater) {
  set(lumo::prefShowPrefPanelWhenUrlLoadFailed, true);
  makeShown();
  failToLoad("http://h/x");
  settle();
  EXPECT_THAT(pages(), ElementsAre(lumo::readablePage(kPage)));
  machine.dispatch.advance(Millis{499});
  EXPECT_FALSE(showsPreferences());
  machine.dispatch.advance(Millis{1});

  EXPECT_TRUE(showsPreferences());
  EXPECT_TRUE(log.contains("MyWebViewWindowController->ibOpenPreferences:...."));
}

TEST_F(BrowserFailure, LeavesSettingsThatAreOpenAlone) {
  set(lumo::prefShowPrefPanelWhenUrlLoadFailed, true);
  makeShown();
  failToLoad("http://h/x");
  browser->ibOpenPreferences({});
  machine.dispatch.advance(Millis{600});

  EXPECT_EQ(window().sheetCount(), 1U);
  EXPECT_TRUE(log.contains("MyWebViewWindowController->ibOpenPreferences:....ALREADY VISIBLE...."));
}

TEST_F(BrowserFailure, OpensNoSettingsWhereTheyAreNotWanted) {
  set(lumo::prefShowPrefPanelWhenUrlLoadFailed, false);
  makeShown();
  failToLoad("http://h/x");
  machine.dispatch.advance(Millis{5000});

  EXPECT_FALSE(showsPreferences());
}

TEST_F(BrowserFailure, WithoutAnErrorLogsOneLineAndOpensTheSettingsAllTheSame) {
  set(lumo::prefShowPrefPanelWhenUrlLoadFailed, true);
  makeShown().handleWebViewError(std::nullopt);
  settle();
  EXPECT_THAT(log.lines(), ElementsAre("Unknown Error Found at:", "handleWebViewError:"));
  EXPECT_THAT(pages(), IsEmpty());
  machine.dispatch.advance(Millis{500});

  EXPECT_TRUE(showsPreferences());
}

TEST_F(BrowserFailure, ShowsItsPageInEveryVisibleView) {
  makeShown();
  legacy().setHidden(false);
  browser->handleWebViewError(WebError{-1004, "Could not connect.", "http://h/x"});
  settle();
  EXPECT_EQ(legacy().htmlLoads().size(), 1U);
  EXPECT_THAT(pages(), ElementsAre(lumo::readablePage(kPage)));

  page().setHidden(true);
  browser->handleWebViewError(WebError{-1004, "Could not connect.", "http://h/x"});
  settle();
  EXPECT_EQ(legacy().htmlLoads().size(), 2U);
  EXPECT_EQ(pages().size(), 1U);
}

TEST_F(BrowserFailure, DoesNotReplaceAPageThatWasAskedForMeanwhile) {
  makeShown();
  failToLoad("http://h/x");
  go("http://h/next");
  settle();

  EXPECT_THAT(pages(), IsEmpty());
  EXPECT_TRUE(page().finish());
  EXPECT_EQ(page().url()->absoluteString(), "http://h/next");
}

TEST_F(BrowserFailure, ItsPageIsReplacedByTheNextOne) {
  makeShown();
  failToLoad("http://h/x");
  settle();
  go("http://h/next");
  EXPECT_TRUE(page().finish());

  EXPECT_EQ(page().url()->absoluteString(), "http://h/next");
  EXPECT_EQ(pages().size(), 1U);
}

TEST_F(BrowserFailure, OfAWindowThatIsNoMoreIsNobodysAffair) {
  set(lumo::prefShowPrefPanelWhenUrlLoadFailed, true);
  makeShown();
  failToLoad("http://h/x");
  browser.reset();
  machine.dispatch.advance(Millis{1000});

  EXPECT_THAT(machine.windows.loaded(), Not(Contains(kPreferencesWindow)));
}

TEST_F(BrowserFailure, AProcessThatEndsIsLoggedAndNothingElse) {
  set(lumo::prefShowPrefPanelWhenUrlLoadFailed, true);
  makeShown();
  ASSERT_TRUE(page().browse("http://h/1"));
  browser->startIndicator();
  settle();
  log.clear();
  machine.journal.clear();
  page().terminateProcess();
  machine.dispatch.advance(Millis{1000});

  EXPECT_THAT(log.lines(), ElementsAre("MyWebViewWindowController-webViewWebContentProcessDidTerminate:..."));
  EXPECT_TRUE(isWaiting());
  EXPECT_THAT(machine.journal.entries(), IsEmpty());
  go("http://h/2");
  EXPECT_TRUE(page().finish());
}

}  // namespace

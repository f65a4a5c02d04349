#include "browser/LegacyWebViewDelegate.h"

#include <algorithm>

#include "browser/LoadFailure.h"
#include "browser/ReleaseMessage.h"
#include "tests/unit/browser/browser_fixture.h"

// The browser window while its legacy view is shown.

namespace lumo {
namespace {

using browsertest::hasInOrder;
using browsertest::kBrowserWindow;
using platform::HeaderFields;
using platform::Millis;
using platform::WebError;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class LegacyViewTest : public browsertest::BrowserTest {
 protected:
  // With the legacy view in the place of the usual one, and its first page behind it.
  void SetUp() override {
    makeShown();
    browserWindow = &window();
    view = &legacy();
    page().setHidden(true);
    view->setHidden(false);
    browser->fFirstTime = false;
    log.clear();
  }
  void go(const std::string& address) {
    set(prefRunningUrlString, address);
    browser->ibGoButton({});
  }
  std::vector<std::string> loaded() const {
    std::vector<std::string> addresses;
    for (const platform::UrlRequest& request : view->requests()) {
      addresses.push_back(request.url.absoluteString());
    }
    return addresses;
  }
  void settle() { machine.dispatch.runUntilIdle(); }
  bool isWaiting() const {
    return browserWindow->view<fakes::FakeProgressIndicator>("ibProgressIndicator").isAnimating();
  }
  // The fields of the one message that was sent within two seconds; none when there was another number.
  std::optional<platform::DistributedNotification> released() {
    machine.dispatch.advance(Millis{2000});
    const auto& posted = machine.bus.posted();
    return posted.size() == 1 ? std::optional(posted.front()) : std::nullopt;
  }

  fakes::FakeWindow* browserWindow = nullptr;
  fakes::FakeWebView* view = nullptr;
};

TEST_F(LegacyViewTest, TheVeryFirstPageIsLoadedTwiceWithTheSameRequest) {
  browser->fFirstTime = true;
  go("http://h:9090/orders");
  ASSERT_TRUE(view->finish());
  ASSERT_EQ(view->requests().size(), 2U);
  const platform::UrlRequest& again = view->requests()[1];
  EXPECT_EQ(again.url.absoluteString(), "http://h:9090/orders");
  EXPECT_EQ(again.headers, view->requests()[0].headers);
  EXPECT_EQ(again.cachePolicy, platform::CachePolicy::ReloadIgnoringLocalCacheData);
  EXPECT_EQ(again.timeout, Millis{5000});
  EXPECT_FALSE(browser->fFirstTime);

  ASSERT_TRUE(view->finish());
  EXPECT_EQ(view->requests().size(), 2U);
}

TEST_F(LegacyViewTest, AFirstPageThatWasRedirectedIsLoadedAgainFromWhereItCame) {
  browser->fFirstTime = true;
  go("http://h/old");
  view->answerResponse(200, {}, "http://h/new");
  ASSERT_TRUE(view->finish());
  EXPECT_THAT(loaded(), ElementsAre("http://h/old", "http://h/new"));
}

TEST_F(LegacyViewTest, TheFirstFrameThatHasLoadedCountsAsTheFirstPage) {
  browser->fFirstTime = true;
  go("http://h/frames");
  view->answerResponse(200);
  view->browseInnerFrame("http://h/inner");
  EXPECT_THAT(loaded(), ElementsAre("http://h/frames", "http://h/inner"));
}

TEST_F(LegacyViewTest, TheFirstPageIsLoadedAgainIntoEveryViewThatShows) {
  browser->fFirstTime = true;
  page().setHidden(false);
  go("http://h/orders");
  const std::size_t before = page().requests().size();
  ASSERT_TRUE(view->finish());
  EXPECT_THAT(loaded(), ElementsAre("http://h/orders", "http://h/orders"));
  EXPECT_EQ(page().requests().size(), before + 1);
}

TEST_F(LegacyViewTest, AnErrorPageIsNotLoadedAgain) {
  browser->fFirstTime = true;
  go("http://h/orders");
  view->failProvisional(WebError{-1004, "Could not connect.", "http://h/orders"});
  settle();
  ASSERT_EQ(view->htmlLoads().size(), 1U);
  ASSERT_TRUE(view->finish());
  EXPECT_THAT(loaded(), ElementsAre("http://h/orders"));
  EXPECT_FALSE(browser->fFirstTime);
}

TEST_F(LegacyViewTest, ALoadIsLogged) {
  go("http://h/orders");
  log.clear();
  view->startNavigation();
  EXPECT_THAT(log.lines(),
              ElementsAre("MyWebViewWindowController->webView:didStartProvisionalLoadForFrame:....",
                          "req = <NSMutableURLRequest: {URL: http://h/orders}>", "headers = {",
                          "    Glimmerpad-Scan = no;", "}", "cache policy = 1"));
  settle();
  EXPECT_TRUE(isWaiting());
  view->answerResponse(200, {{"Server", "lumo-juniva"}});
  log.clear();
  ASSERT_TRUE(view->finish());
  const std::string operation = "MyWebViewWindowController->webView:didFinishLoadForFrame:....";
  EXPECT_THAT(log.lines(),
              hasInOrder({"req = <NSMutableURLRequest: {URL: http://h/orders}>", "allHeaderFields = {",
                          "    Server = lumo-juniva;",
                          operation + "req = <NSMutableURLRequest: {URL: http://h/orders}>",
                          operation + "url = http://h/orders", operation + "url.path = /orders"}));
  EXPECT_THAT(log.lines(), Contains(HasSubstr(operation + "sender = ")));
  EXPECT_THAT(log.lines(), Contains(HasSubstr(operation + "frame = ")));
  EXPECT_THAT(log.lines(), Contains(HasSubstr("response before = ")));
  settle();
  EXPECT_FALSE(isWaiting());
}

TEST_F(LegacyViewTest, ARedirectIsLogged) {
  go("http://h/old");
  view->startNavigation();
  log.clear();
  view->answerResponse(200, {}, "http://h/new");
  EXPECT_THAT(log.lines(), hasInOrder({"MyWebViewWindowController->"
                                       "webView:didReceiveServerRedirectForProvisionalLoadForFrame:....",
                                       "req = <NSMutableURLRequest: {URL: http://h/new}>", "headers = {"}));
}

TEST_F(LegacyViewTest, ATitleIsLoggedAndTheWindowKeepsItsOwn) {
  const std::string title = browserWindow->title();
  ASSERT_TRUE(view->browse("http://h/orders"));
  log.clear();
  view->receiveTitle("Orders");
  EXPECT_THAT(log.lines(),
              Contains("MyWebViewWindowController->webView:didReceiveTitle:forFrame:....title = Orders"));
  EXPECT_EQ(log.lines().back(), "");
  EXPECT_EQ(browserWindow->title(), title);
}

TEST_F(LegacyViewTest, ThePageThatIsLeftIsLogged) {
  ASSERT_TRUE(view->browse("http://h/1"));
  log.clear();
  ASSERT_TRUE(view->browse("http://h/2"));
  EXPECT_THAT(log.lines(),
              Contains(HasSubstr("MyWebViewWindowController->webView:willCloseFrame:....sender = ")));
  EXPECT_THAT(log.lines(),
              Contains(HasSubstr("MyWebViewWindowController->webView:willCloseFrame:....frame = ")));
  EXPECT_THAT(log.lines(), Contains("req = <NSMutableURLRequest: {URL: http://h/1}>"));
}

TEST_F(LegacyViewTest, TheCloseHeaderClosesTheWindowAndTheApplicationKeepsRunning) {
  ASSERT_TRUE(view->browse("http://h/done", 200, {{"Glimmerpad-Plus-Scanner", "Close"}}));
  EXPECT_TRUE(log.contains("Found Glimmerpad-Plus-Scanner = Close"));
  EXPECT_TRUE(browserWindow->isVisible());
  machine.dispatch.advance(Millis{10'000});
  EXPECT_FALSE(browserWindow->isVisible());
  EXPECT_FALSE(log.contains("MyWebViewWindowController->windowShouldClose:...."));
  EXPECT_FALSE(machine.journal.contains("application terminate"));
  EXPECT_THAT(machine.bus.posted(), IsEmpty());
}

TEST_F(LegacyViewTest, TheCloseHeaderOfAnInnerFrameCountsToo) {
  ASSERT_TRUE(view->browse("http://h/frames"));
  view->browseInnerFrame("http://h/done", 200, {{"Glimmerpad-Plus-Scanner", "close"}});
  settle();
  EXPECT_FALSE(browserWindow->isVisible());
}

TEST_F(LegacyViewTest, OtherScannerHeadersOnlyLog) {
  ASSERT_TRUE(view->browse("http://h/1", 200, {{"Glimmerpad-Plus-Scanner", "start"}}));
  ASSERT_TRUE(view->browse("http://h/2", 200, {{"glimmerpad-plus-scanner", "close"}}));
  settle();
  EXPECT_TRUE(log.contains("Found Glimmerpad-Plus-Scanner = start"));
  EXPECT_FALSE(log.contains("Found Glimmerpad-Plus-Scanner = close"));
  EXPECT_FALSE(log.contains("MyWebViewWindowController->doTheScanProcess...."));
  EXPECT_TRUE(browserWindow->isVisible());
}

TEST_F(LegacyViewTest, AWindowThatIsNoMoreIsNotClosed) {
  ASSERT_TRUE(view->browse("http://h/done", 200, {{"Glimmerpad-Plus-Scanner", "close"}}));
  browser.reset();
  settle();
  EXPECT_THAT(machine.bus.posted(), IsEmpty());
}

// What the usual view's policy would act upon.
TEST_F(LegacyViewTest, NothingIsDecidedBeforeAPageShows) {
  set(prefPathNamesToDataForLumo, "studio");
  set(prefPathNamesToForceFocus, "receipt");
  EXPECT_TRUE(view->browse("http://h:9090/receipt", 200, {{"Glimmerpad-Plus-Print", "Receipt"}}));
  EXPECT_TRUE(view->browse("http://h:9090/studio"));
  EXPECT_TRUE(view->browse("http://h:9090/registration/save"));
  machine.dispatch.advance(Millis{900});
  EXPECT_THAT(view->scripts(), Not(Contains(HasSubstr("querySelectorAll"))));
  EXPECT_FALSE(browser->fIsPrintingReceipt);
  EXPECT_THAT(machine.bus.posted(), IsEmpty());
}

struct RouteCase {
  const char* path;
  // Empty when nothing is released.
  const char* status;
  bool hasOrder = false;
  const char* line = nullptr;
};

class LegacyRouteTest : public LegacyViewTest, public testing::WithParamInterface<RouteCase> {
 protected:
  const HeaderFields fields{{"lumo-reg-code", "A-7"}, {"Server", "lumo-juniva"}};

  void expectIsFollowed() {
    const RouteCase& expected = GetParam();
    if (expected.line != nullptr) {
      EXPECT_TRUE(log.contains(expected.line)) << log.text();
    } else {
      EXPECT_THAT(log.text(), Not(HasSubstr("closing window for path")));
    }
    const auto message = released();
    ASSERT_EQ(message.has_value(), *expected.status != '\0');
    if (!message) {
      EXPECT_THAT(machine.bus.posted(), IsEmpty());
      return;
    }
    EXPECT_EQ(messageValue(*message, "status"), expected.status);
    EXPECT_EQ(messageValue(*message, "LUMO-REG-CODE"),
              expected.hasOrder ? std::optional<std::string>("A-7") : std::nullopt);
    // The fields as they came: the page's address is not among them.
    EXPECT_EQ(messageValue(*message, "respurlstring"), std::nullopt);
  }
};

TEST_P(LegacyRouteTest, IsFollowedWhenThePageHasLoaded) {
  ASSERT_TRUE(view->browse("http://h:9090" + std::string(GetParam().path) + "?code=A-7", 200, fields));
  expectIsFollowed();
}

TEST_P(LegacyRouteTest, IsFollowedWhenAnInnerFrameHasLoaded) {
  ASSERT_TRUE(view->browse("http://h:9090/frames"));
  view->browseInnerFrame("http://h:9090" + std::string(GetParam().path), 200, fields);
  expectIsFollowed();
}

std::string nameOfRoute(const testing::TestParamInfo<RouteCase>& info) {
  std::string name = info.param.path;
  std::replace(name.begin(), name.end(), '/', '_');
  return "Path" + name;
}

INSTANTIATE_TEST_SUITE_P(
    Table, LegacyRouteTest,
    testing::Values(
        RouteCase{"/registrationorders/save", "", false, "need to handle [/registrationorders/save]"},
        RouteCase{"/registrationorders/confirmsave", "", false,
                  "need to handle [/registrationorders/confirmsave]"},
        RouteCase{"/registration/save", "registered"}, RouteCase{"/Registration/SAVE", "registered"},
        RouteCase{"/registrationorders/photostationdata", "registered", true},
        RouteCase{"/registrationorders/posdata", "registered", true},
        RouteCase{"/registrationam/photostationdata", "registered", true,
                  "webView:didFinishLoadForFrame:-> closing window for path = "
                  "/registrationam/photostationdata"},
        RouteCase{"/registrationam/posdata", "registered", true,
                  "webView:didFinishLoadForFrame:-> closing window for path = /registrationam/posdata"},
        RouteCase{"/registrationbookeo/photostationdata", "registered", true,
                  "webView:didFinishLoadForFrame:-> closing window for path = "
                  "/registrationbookeo/photostationdata"},
        RouteCase{"/registrationbookeo/posdata", "registered", true,
                  "webView:didFinishLoadForFrame:-> closing window for path = /registrationbookeo/posdata"},
        RouteCase{"/gradorders/gowndata", "registered", true,
                  "webView:didFinishLoadForFrame:-> closing window for path = /gradorders/gowndata"},
        RouteCase{"/GradOrders/GownData", "registered", true,
                  "webView:didFinishLoadForFrame:-> closing window for path = /GradOrders/GownData"},
        RouteCase{"/registrationorders/posdata/", ""}, RouteCase{"/a/registration/save", ""},
        RouteCase{"/posdata", ""}, RouteCase{"/", ""}),
    nameOfRoute);

TEST_F(LegacyViewTest, APageThatIsNotHttpHasNoFieldsButItsRoute) {
  go("file:///registration/save");
  view->answerFileResponse();
  ASSERT_TRUE(view->finish());
  EXPECT_TRUE(log.contains("unable to convert NSURLResponse to NSHTTPURLResponse"));
  const auto message = released();
  ASSERT_TRUE(message);
  EXPECT_EQ(messageValue(*message, "status"), "registered");
}

TEST_F(LegacyViewTest, EveryFailureShowsTheErrorPage) {
  // The usual view would be silent about these.
  set(prefLenientWithFailProvisionalNavigation, true);
  go("http://h/registration/save");
  view->startNavigation();
  browser->startIndicator();
  settle();
  log.clear();
  view->failProvisional(WebError{102, "Frame load interrupted", "http://h/registration/save"});
  const std::string provisional =
      "MyWebViewWindowController->webView:didFailProvisionalLoadWithError:forFrame:....";
  EXPECT_THAT(log.lines(), Contains(HasSubstr(provisional + "sender = ")));
  EXPECT_THAT(log.lines(), Contains(HasSubstr(provisional + "frame = ")));
  EXPECT_TRUE(log.contains(provisional + "ERROR = Frame load interrupted"));
  settle();
  EXPECT_FALSE(isWaiting());
  ASSERT_EQ(view->htmlLoads().size(), 1U);
  EXPECT_EQ(
      view->htmlLoads()[0].html,
      lumo::readablePage("Error Encountered at handleWebViewError: !!<br>error code = [102] = Frame load "
                         "interrupted<br><br>sender url = http://h/registration/save"));

  go("http://h/orders");
  view->answerResponse(200);
  log.clear();
  view->fail(WebError{56, "Connection reset", "http://h/orders"});
  const std::string later = "MyWebViewWindowController->webView:didFailLoadWithError:forFrame:....";
  EXPECT_EQ(log.lines().front(), later);
  EXPECT_THAT(log.lines(), Contains(HasSubstr(later + "frame = ")));
  EXPECT_TRUE(log.contains(later + "ERROR = Connection reset"));
  settle();
  EXPECT_EQ(view->htmlLoads().size(), 2U);
}

TEST_F(LegacyViewTest, AnInnerFrameThatFailsShowsTheErrorPageToo) {
  ASSERT_TRUE(view->browse("http://h/frames"));
  view->failInnerFrame("http://h/inner", WebError{39, "Could not connect", "http://h/inner"});
  settle();
  ASSERT_EQ(view->htmlLoads().size(), 1U);
  EXPECT_THAT(view->htmlLoads()[0].html, HasSubstr("sender url = http://h/inner"));
}

TEST_F(LegacyViewTest, ANewWindowIsASecondKioskWindowAndThePageOpensInTheFirst) {
  ASSERT_TRUE(view->browse("http://h/orders"));
  log.clear();
  EXPECT_EQ(view->requestNewWindow("http://h/popup"), view);
  EXPECT_THAT(loaded(), ElementsAre("http://h/popup"));
  EXPECT_THAT(machine.windows.loaded(), ElementsAre(kBrowserWindow, kBrowserWindow));
  ASSERT_NE(browser->myWebViewWindowController, nullptr);
  EXPECT_TRUE(browser->myWebViewWindowController->window()->isVisible());
  EXPECT_EQ(browser->myWebViewWindowController->webviewProcessQueue().label(),
            browser->webviewProcessQueue().label());
  const std::string operation = "MyWebViewWindowController->webView:createWebViewWithRequest:....";
  EXPECT_THAT(log.lines(), Contains(HasSubstr(operation + "sender = ")));
  EXPECT_TRUE(log.contains(operation + "request = <NSMutableURLRequest: {URL: http://h/popup}>"));
}

TEST_F(LegacyViewTest, AnotherNewWindowReplacesTheSecondOne) {
  ASSERT_TRUE(view->browse("http://h/orders"));
  view->requestNewWindow("http://h/1");
  view->requestNewWindow("http://h/2");
  EXPECT_EQ(machine.windows.loaded().size(), 3U);
  EXPECT_TRUE(browser->myWebViewWindowController->window()->isVisible());
  settle();
  browser.reset();
  EXPECT_EQ(machine.window(), nullptr) << "a window outlives its owner";
}

TEST_F(LegacyViewTest, AModalDialogueOpensInTheViewThatAsks) {
  LegacyWebViewDelegate delegate(platform, *browser);
  const platform::UrlRequest request{*platform::Url::parse("http://h/modal"), {}, Millis{0}, {}};
  EXPECT_EQ(delegate.webView_createWebViewModalDialogWithRequest(*view, request), view);
  delegate.webViewRunModal(*view);
  delegate.webViewClose(*view);
  const std::string sender = description(static_cast<const platform::View&>(*view));
  const std::string create = "MyWebViewWindowController->webView:createWebViewModalDialogWithRequest:....";
  EXPECT_THAT(log.lines(), ElementsAre(create + "sender = " + sender,
                                       create + "request = <NSMutableURLRequest: {URL: http://h/modal}>",
                                       "MyWebViewWindowController->webViewRunModal:....sender = " + sender,
                                       "MyWebViewWindowController->webViewClose:....sender = " + sender));
  EXPECT_EQ(browser->myWebViewWindowController, nullptr);
}

TEST_F(LegacyViewTest, APageThatClosesItselfIsLogged) {
  view->closeByScript();
  EXPECT_THAT(log.lines(), ElementsAre(HasSubstr("MyWebViewWindowController->webViewClose:....sender = ")));
  EXPECT_TRUE(browserWindow->isVisible());
}

TEST_F(LegacyViewTest, PanelsAreThoseOfTheWindow) {
  const auto alert = view->runAlertPanel("Ready");
  browserWindow->pressAlertButton("OK");
  EXPECT_TRUE(alert->answered);
  const auto confirm = view->runConfirmPanel("Sure?");
  browserWindow->pressAlertButton("Cancel");
  EXPECT_TRUE(confirm->answered);
  EXPECT_FALSE(confirm->confirmed);
  const auto prompt = view->runTextPanel("Name?", "Max");
  browserWindow->pressAlertButton("OK", "Eva");
  EXPECT_EQ(prompt->text, "Eva");
}

TEST_F(LegacyViewTest, AProcessThatEndsIsLoggedAndTheNextAddressLoads) {
  ASSERT_TRUE(view->browse("http://h/1"));
  log.clear();
  view->terminateProcess();
  EXPECT_THAT(log.lines(), ElementsAre("MyWebViewWindowController-webViewWebContentProcessDidTerminate:..."));
  go("http://h/2");
  EXPECT_TRUE(view->finish());
}

TEST_F(LegacyViewTest, RequestsOfAPageGoOutAsTheyAreAndAreLogged) {
  ASSERT_TRUE(view->browse("http://h/orders"));
  log.clear();
  view->loadResource("http://h/new.png", "http://h/old.png");
  const std::string first =
      "MyWebViewWindowController->webView:identifierForInitialRequest:fromDataSource:....";
  const std::string sends =
      "MyWebViewWindowController->webView:resource:willSendRequest:redirectResponse:fromDataSource:....";
  EXPECT_THAT(
      log.lines(),
      hasInOrder({first + "request = <NSMutableURLRequest: {URL: http://h/old.png}>", "",
                  sends + "identifier = (null)",
                  sends + "request = <NSMutableURLRequest: {URL: http://h/old.png}>",
                  sends + "redirectResponse = (null)", "",
                  sends + "request = <NSMutableURLRequest: {URL: http://h/new.png}>",
                  "MyWebViewWindowController->webView:resource:didReceiveResponse:fromDataSource:....",
                  "MyWebViewWindowController->webView:resource:didFinishLoadingFromDataSource:...."}));
  for (const std::string& line : {first + "sender = ", first + "dataSource = ", sends + "sender = ",
                                  sends + "redirectResponse = <WK", sends + "dataSource = "}) {
    EXPECT_THAT(log.lines(), Contains(HasSubstr(line)));
  }
  log.clear();
  view->loadResource("http://h/gone.png", std::nullopt,
                     WebError{39, "Could not connect", "http://h/gone.png"});
  EXPECT_TRUE(log.contains(
      "MyWebViewWindowController->webView:resource:didFailLoadingWithError:fromDataSource:...."));
  settle();
  EXPECT_THAT(view->htmlLoads(), IsEmpty()) << "a picture is no frame";
}

TEST_F(LegacyViewTest, AChangeOfTheAddressWithinThePageIsLogged) {
  ASSERT_TRUE(view->browse("http://h/orders"));
  log.clear();
  view->changeLocation("http://h/orders#2");
  EXPECT_THAT(log.lines(),
              ElementsAre("MyWebViewWindowController->webView:didChangeLocationWithinPageForFrame:...."));
}

TEST_F(LegacyViewTest, WhatHasNoOtherEffectIsLogged) {
  using Call = void (LegacyWebViewDelegate::*)(platform::WebView&, const platform::WebFrame&);
  const std::pair<Call, const char*> calls[] = {
      {&LegacyWebViewDelegate::webView_didCommitLoadForFrame, "webView:didCommitLoadForFrame:"},
      {&LegacyWebViewDelegate::webView_didReceiveIcon_forFrame, "webView:didReceiveIcon:forFrame:"},
      {&LegacyWebViewDelegate::webView_didCancelClientRedirectForFrame,
       "webView:didCancelClientRedirectForFrame:"},
      {&LegacyWebViewDelegate::webView_willPerformClientRedirectToURL_delay_fireDate_forFrame,
       "webView:willPerformClientRedirectToURL:delay:fireDate:forFrame:"},
      {&LegacyWebViewDelegate::webView_didClearWindowObject_forFrame,
       "webView:didClearWindowObject:forFrame:"},
      {&LegacyWebViewDelegate::webView_resource_didReceiveContentLength_fromDataSource,
       "webView:resource:didReceiveContentLength:fromDataSource:"},
      {&LegacyWebViewDelegate::webView_plugInFailedWithError_dataSource,
       "webView:plugInFailedWithError:dataSource:"},
      {&LegacyWebViewDelegate::webView_resource_didReceiveAuthenticationChallenge_fromDataSource,
       "webView:resource:didReceiveAuthenticationChallenge:fromDataSource:"},
      {&LegacyWebViewDelegate::webView_resource_didCancelAuthenticationChallenge_fromDataSource,
       "webView:resource:didCancelAuthenticationChallenge:fromDataSource:"},
  };
  LegacyWebViewDelegate delegate(platform, *browser);
  for (const auto& [call, name] : calls) {
    log.clear();
    (delegate.*call)(*view, platform::WebFrame{});
    EXPECT_THAT(log.lines(), ElementsAre("MyWebViewWindowController->" + std::string(name) + "...."));
  }
}

TEST(LegacyRouteTableTest, AnAbsentPathHasNoRoute) {
  EXPECT_EQ(legacyRoute(std::nullopt), nullptr);
}

}  // namespace
}  // namespace lumo

#include <gmock/gmock.h>
#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include "tests/fakes/test_platform.h"

namespace {

using fakes::FakeWebView;
using platform::DecisionHandler;
using platform::Millis;
using platform::NavigationPolicy;
using platform::Url;
using platform::UrlRequest;
using platform::WebError;
using platform::WebView;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kHome = "http://10.0.0.5:9090/home";
constexpr const char* kNext = "http://10.0.0.5:9090/next";

// Allows everything at once, unless it is told to keep or to cancel, and notes what it hears.
class Delegate : public platform::WebViewDelegate {
 public:
  void webView_decidePolicyForNavigationAction_decisionHandler(WebView&,
                                                               const platform::NavigationAction& action,
                                                               DecisionHandler decide) override {
    heard.push_back("action " + action.request.url.absoluteString());
    answer(std::move(decide));
  }
  void webView_decidePolicyForNavigationResponse_decisionHandler(WebView& view,
                                                                 const platform::NavigationResponse& response,
                                                                 DecisionHandler decide) override {
    heard.push_back("response " + std::to_string(response.statusCode) + " at " +
                    (view.url() ? view.url()->absoluteString() : "nothing"));
    answer(std::move(decide));
  }
  void webView_didStartProvisionalNavigation(WebView&) override { heard.push_back("start"); }
  void webView_didFinishNavigation(WebView&) override { heard.push_back("finish"); }
  void webView_didFailProvisionalNavigation_withError(WebView&, const WebError& error) override {
    heard.push_back("provisional failure " + std::to_string(error.code) + " " +
                    error.failingUrlString.value_or("nowhere"));
  }
  void webView_didFailNavigation_withError(WebView&, const WebError& error) override {
    heard.push_back("failure " + std::to_string(error.code));
  }
  void webViewWebContentProcessDidTerminate(WebView&) override { heard.push_back("terminated"); }
  void webView_runJavaScriptAlertPanelWithMessage_initiatedByFrame_completionHandler(
      WebView&, const std::string&, const UrlRequest& frame, platform::Block done) override {
    heard.push_back("alert in " + frame.url.absoluteString());
    done();
  }
  void webView_runJavaScriptConfirmPanelWithMessage_initiatedByFrame_completionHandler(
      WebView&, const std::string&, const UrlRequest&, std::function<void(bool)> done) override {
    keptConfirm = std::move(done);
  }
  void webView_runJavaScriptTextInputPanelWithPrompt_defaultText_initiatedByFrame_completionHandler(
      WebView&, const std::string&, const std::string& defaultText, const UrlRequest&,
      std::function<void(std::optional<std::string>)> done) override {
    done(defaultText + "!");
  }
  WebView* webView_createWebViewWithRequest(WebView& view, const UrlRequest&) override { return &view; }
  void webViewDidClose(WebView&) override { heard.push_back("close"); }

  std::optional<NavigationPolicy> policy = NavigationPolicy::Allow;
  DecisionHandler kept;
  std::function<void(bool)> keptConfirm;
  std::vector<std::string> heard;

 private:
  void answer(DecisionHandler decide) {
    if (policy) {
      decide(*policy);
    } else {
      kept = std::move(decide);
    }
  }
};

class FakeWebViewTest : public testing::Test {
 protected:
  FakeWebViewTest() { view.setDelegate(&delegate); }
  UrlRequest request(const std::string& address) {
    return {*Url::parse(address), platform::CachePolicy::ReloadIgnoringLocalCacheData, Millis{5000}, {}};
  }

  fakes::TestPlatform machine;
  FakeWebView view{{machine.dispatch, machine.journal}, "page"};
  Delegate delegate;
};

TEST_F(FakeWebViewTest, ALoadOnlyWaitsUntilTheTestDrivesIt) {
  view.load(request(kHome));
  machine.dispatch.advance(Millis{60000});
  EXPECT_THAT(delegate.heard, IsEmpty());
  EXPECT_FALSE(view.url());

  EXPECT_EQ(view.startNavigation(), NavigationPolicy::Allow);
  EXPECT_EQ(view.answerResponse(200), NavigationPolicy::Allow);
  EXPECT_TRUE(view.finish());
  EXPECT_THAT(delegate.heard, ElementsAre("action http://10.0.0.5:9090/home", "start",
                                          "response 200 at http://10.0.0.5:9090/home", "finish"));
  EXPECT_EQ(view.url()->absoluteString(), kHome);
}

TEST_F(FakeWebViewTest, TheAddressIsTheNewOneOnlyDuringTheDecision) {
  view.browse(kHome);
  view.startNavigation(std::string(kNext));
  EXPECT_EQ(view.url()->absoluteString(), kHome);
  delegate.policy.reset();
  EXPECT_FALSE(view.answerResponse(200));
  EXPECT_EQ(delegate.heard.back(), "response 200 at http://10.0.0.5:9090/next");
  EXPECT_EQ(view.url()->absoluteString(), kHome);
  delegate.kept(NavigationPolicy::Allow);
  EXPECT_EQ(view.lastPolicy(), NavigationPolicy::Allow);
  EXPECT_EQ(view.url()->absoluteString(), kNext);
}

TEST_F(FakeWebViewTest, ACancelledResponseFailsWith102OnTheMainQueue) {
  view.browse(kHome);
  view.startNavigation(std::string(kNext));
  delegate.policy = NavigationPolicy::Cancel;
  delegate.heard.clear();
  EXPECT_EQ(view.answerResponse(200), NavigationPolicy::Cancel);
  EXPECT_EQ(delegate.heard.size(), 1U);
  machine.dispatch.runUntilIdle();

  EXPECT_EQ(delegate.heard.back(), "provisional failure 102 http://10.0.0.5:9090/next");
  EXPECT_FALSE(view.finish());
  EXPECT_EQ(view.url()->absoluteString(), kHome);
}

TEST_F(FakeWebViewTest, ADecisionThatIsDroppedCountsAsCancel) {
  delegate.policy.reset();
  view.load(request(kHome));
  EXPECT_FALSE(view.startNavigation());
  EXPECT_FALSE(view.lastPolicy());
  delegate.kept = nullptr;
  EXPECT_EQ(view.lastPolicy(), NavigationPolicy::Cancel);
}

TEST_F(FakeWebViewTest, ADecisionThatIsAnsweredTwiceFailsTheTest) {
  delegate.policy.reset();
  view.load(request(kHome));
  view.startNavigation();
  delegate.kept(NavigationPolicy::Allow);
  EXPECT_NONFATAL_FAILURE(delegate.kept(NavigationPolicy::Allow), "a navigation action was answered twice");
}

TEST_F(FakeWebViewTest, ADecisionAboutAReplacedLoadChangesNothing) {
  delegate.policy.reset();
  view.load(request(kHome));
  view.startNavigation();
  view.load(request(kNext));
  delegate.kept(NavigationPolicy::Allow);
  EXPECT_THAT(delegate.heard, ElementsAre("action http://10.0.0.5:9090/home"));

  delegate.policy = NavigationPolicy::Allow;
  EXPECT_TRUE(view.finish());
  EXPECT_EQ(view.url()->absoluteString(), kNext);
}

TEST_F(FakeWebViewTest, ARedirectedAnswerHasItsOwnAddressAndASubframeChangesNothing) {
  view.load(request(kHome));
  view.answerResponse(200, {{"Server", "Juniva"}}, kNext);
  EXPECT_EQ(view.answerSubframeResponse("http://10.0.0.5:9090/frame", 404), NavigationPolicy::Allow);
  EXPECT_EQ(delegate.heard.back(), "response 404 at http://10.0.0.5:9090/next");
  EXPECT_EQ(view.url()->absoluteString(), kNext);
}

TEST_F(FakeWebViewTest, FailuresBeforeAndAfterTheCommitAreToldApart) {
  view.load(request(kHome));
  view.failProvisional(platform::kErrorTimedOut);
  EXPECT_EQ(delegate.heard.back(), "provisional failure -1001 http://10.0.0.5:9090/home");
  view.load(request(kHome));
  view.answerResponse(200);
  view.fail({302, "stopped", {}});
  EXPECT_EQ(delegate.heard.back(), "failure 302");
  EXPECT_FALSE(view.finish());
}

TEST_F(FakeWebViewTest, ATextOfTheSystemsOwnHasNoAddressWithoutABase) {
  view.browse(kHome);
  delegate.heard.clear();
  view.loadHTMLString("<p>Invalid</p>", std::nullopt);
  EXPECT_TRUE(view.finish());
  EXPECT_THAT(delegate.heard, ElementsAre("action about:blank", "start", "finish"));
  EXPECT_FALSE(view.url());
  EXPECT_EQ(view.htmlLoads().front().html, "<p>Invalid</p>");
}

TEST_F(FakeWebViewTest, PanelsKeepTheirAnswers) {
  view.browse(kHome);
  EXPECT_TRUE(view.runAlertPanel("Hello")->answered);
  EXPECT_EQ(delegate.heard.back(), "alert in http://10.0.0.5:9090/home");
  const auto confirm = view.runConfirmPanel("Sure?");
  EXPECT_FALSE(confirm->answered);
  delegate.keptConfirm(true);
  EXPECT_TRUE(confirm->answered && confirm->confirmed);
  EXPECT_NONFATAL_FAILURE(delegate.keptConfirm(true), "answered twice");
  EXPECT_EQ(view.runTextPanel("Name", "Ann")->text, "Ann!");
}

TEST_F(FakeWebViewTest, ANewWindowRequestLoadsInTheViewThatTheDelegateNames) {
  EXPECT_EQ(view.requestNewWindow(kNext), &view);
  EXPECT_EQ(view.requests().back().url.absoluteString(), kNext);
}

TEST_F(FakeWebViewTest, ScriptsAreAnsweredOnTheMainQueueByTheNewestRule) {
  std::vector<std::string> results;
  const auto keep = [&](const auto& result, const auto& error) {
    results.push_back(error    ? "error " + error->localizedDescription
                      : result ? description(*result)
                               : "undefined");
  };
  view.answerScript("focus", 1);
  view.failScript("focus('b')", {5, "no field", {}});
  view.evaluateJavaScript("focus('a')", keep);
  view.evaluateJavaScript("focus('b')", keep);
  view.evaluateJavaScript("other()", keep);
  EXPECT_THAT(results, IsEmpty());
  machine.dispatch.runUntilIdle();
  EXPECT_THAT(results, ElementsAre("1", "error no field", "undefined"));
}

TEST_F(FakeWebViewTest, TheUserAgentNeedsNoProcess) {
  FakeWebView dormant{{machine.dispatch, machine.journal}, "legacy", {}, true};
  dormant.setEngineUserAgent("Engine/1");
  std::optional<platform::PropertyList> agent;
  dormant.evaluateJavaScript("navigator.userAgent", [&](auto result, auto) { agent = result; });
  EXPECT_EQ(agent, platform::PropertyList("Engine/1"));
  dormant.setCustomUserAgent("Engine/1 Kiosk");
  EXPECT_EQ(dormant.stringByEvaluatingJavaScriptFromString("navigator.userAgent"), "Engine/1 Kiosk");
  EXPECT_FALSE(dormant.stringByEvaluatingJavaScriptFromString("1+1"));
  dormant.setHidden(true);
  EXPECT_TRUE(dormant.isDormant());
  dormant.setHidden(false);
  EXPECT_FALSE(dormant.isDormant());
}

TEST_F(FakeWebViewTest, ARuleForTheUserAgentIsAnsweredLaterAndWakesNobody) {
  FakeWebView dormant{{machine.dispatch, machine.journal}, "legacy", {}, true};
  dormant.failScript("navigator.userAgent", {7, "no answer", std::nullopt});
  std::optional<WebError> failure;
  dormant.evaluateJavaScript("navigator.userAgent", [&](auto, auto error) { failure = error; });
  EXPECT_FALSE(failure);
  machine.dispatch.runUntilIdle();
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->code, 7);
  EXPECT_TRUE(dormant.isDormant());
}

TEST_F(FakeWebViewTest, ASnapshotThatNeverComesIsGivenUpAfterTenSeconds) {
  std::vector<std::string> taken;
  const auto keep = [&](const std::optional<platform::Image>& image) {
    taken.push_back(std::to_string(machine.dispatch.now().count()) + (image ? " picture" : " none"));
  };
  view.scriptSnapshot(FakeWebView::picture(505, 700), Millis{250});
  view.scriptEndlessSnapshot();
  view.takeSnapshot(keep);
  view.takeSnapshot(keep);
  view.takeSnapshot(keep);
  machine.dispatch.advance(Millis{60000});
  EXPECT_THAT(taken, ElementsAre("0 picture", "250 picture", "10000 none"));
}

}  // namespace

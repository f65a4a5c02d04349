#include <optional>

#include "tests/unit/browser/browser_fixture.h"

namespace {

using fakes::FakeWebView;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

const std::string kEngineAgent = "Mozilla/5.0 (X11; Linux x86_64) AppleWebKit/605.1.15 (KHTML, like Gecko)";

using BrowserUserAgent = browsertest::BrowserTest;

TEST_F(BrowserUserAgent, WithoutASuffixTheUserAgentStaysTheEngines) {
  make();
  machine.dispatch.runUntilIdle();

  EXPECT_EQ(page().customUserAgent(), kEngineAgent);
  EXPECT_EQ(legacy().customUserAgent(), kEngineAgent);
  EXPECT_TRUE(log.contains("self.ibWKWebView.customUserAgent = " + kEngineAgent));
}

TEST_F(BrowserUserAgent, TheSuffixFollowsTheEnginesUserAgentAfterOneBlank) {
  set(lumo::prefThisUserAgent, "X");
  make();
  machine.dispatch.runUntilIdle();

  EXPECT_EQ(page().customUserAgent(), kEngineAgent + " X");
  EXPECT_EQ(legacy().customUserAgent(), kEngineAgent + " X");
  EXPECT_TRUE(log.contains("self.ibWebView.customUserAgent = " + kEngineAgent + " X"));
  EXPECT_TRUE(log.contains("self.ibWKWebView.customUserAgent = " + kEngineAgent + " X"));
}

TEST_F(BrowserUserAgent, AnEmptySuffixIsOneAllTheSame) {
  set(lumo::prefThisUserAgent, "");
  make();
  machine.dispatch.runUntilIdle();

  EXPECT_EQ(page().customUserAgent(), kEngineAgent + " ");
}

TEST_F(BrowserUserAgent, TheUserAgentIsThereBeforeTheFirstLoad) {
  set(lumo::prefThisUserAgent, "X");
  set(lumo::prefServerAddress, "http://s/");
  make().ibHomeButton({});

  EXPECT_TRUE(machine.journal.isBefore("webView1 setCustomUserAgent " + kEngineAgent + " X",
                                       "webView1 load http://s/"));
}

TEST_F(BrowserUserAgent, AUserAgentThatFailsStaysUnchanged) {
  describeWithWebView([](FakeWebView& view) {
    view.failScript("navigator.userAgent", {1, "no answer", std::nullopt});
  });
  set(lumo::prefThisUserAgent, "X");
  make();
  machine.dispatch.runUntilIdle();

  const auto& view = window().view<FakeWebView>("ibWKWebView");
  EXPECT_THAT(view.scripts(), ElementsAre("navigator.userAgent"));
  EXPECT_EQ(view.customUserAgent(), std::nullopt);
  EXPECT_THAT(log.lines(), Not(Contains(StartsWith("self.ibWKWebView.customUserAgent"))));
}

TEST_F(BrowserUserAgent, AUserAgentThatIsNoTextStaysUnchanged) {
  for (const auto& answer :
       {std::optional<platform::PropertyList>(), std::optional<platform::PropertyList>(7)}) {
    describeWithWebView([&](FakeWebView& view) { view.answerScript("navigator.userAgent", answer); });
    make();
    machine.dispatch.runUntilIdle();

    EXPECT_EQ(window().view<FakeWebView>("ibWKWebView").customUserAgent(), std::nullopt);
  }
}

TEST_F(BrowserUserAgent, AUserAgentThatComesLateIsSetThen) {
  describeWithWebView([](FakeWebView& view) { view.answerScript("navigator.userAgent", "Late"); });
  set(lumo::prefThisUserAgent, "X");
  make();
  const auto& view = window().view<FakeWebView>("ibWKWebView");
  EXPECT_EQ(view.customUserAgent(), std::nullopt);
  machine.dispatch.runUntilIdle();

  EXPECT_EQ(view.customUserAgent(), "Late X");
}

TEST_F(BrowserUserAgent, AUserAgentThatComesAfterTheWindowHasGoneIsDropped) {
  describeWithWebView([](FakeWebView& view) { view.answerScript("navigator.userAgent", "Late"); });
  make();
  browser.reset();
  machine.dispatch.runUntilIdle();

  EXPECT_THAT(machine.journal.startingWith("ibWKWebView setCustomUserAgent"), IsEmpty());
}

}  // namespace

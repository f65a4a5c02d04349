#include "browser/FieldFocus.h"
#include "tests/unit/browser/browser_fixture.h"

namespace lumo {
namespace {

using platform::Millis;

class CompletionTest : public browsertest::BrowserTest {
 protected:
  void SetUp() override {
    makeShown();
    set(prefPathNamesToForceFocus, "login, kiosk");
    set(prefFirstFocusWebFieldByIdentifier, "code");
  }
  // The scripts that ran, but for the question for the user agent at the window's start.
  std::vector<std::string> scripts() {
    std::vector<std::string> ran = page().scripts();
    std::erase(ran, "navigator.userAgent");
    return ran;
  }
};

TEST_F(CompletionTest, TheFieldIsFocused10MillisecondsAfterAListedPageHasLoaded) {
  page().browse("http://h:9090/Login?next=1");
  const std::string operation = "MyWebViewWindowController-webView:didFinishNavigation:";
  EXPECT_TRUE(log.contains(operation + "...webView.URL = http://h:9090/Login?next=1"));
  EXPECT_TRUE(log.contains(operation + "...webView.URL.query = next=1"));
  EXPECT_TRUE(log.contains(operation + "...path = [/Login]"));
  machine.dispatch.advance(Millis{9});
  EXPECT_TRUE(scripts().empty());
  machine.dispatch.advance(Millis{1});
  EXPECT_EQ(scripts(), std::vector<std::string>{focusScript("code")});
}

TEST_F(CompletionTest, APageThatIsNotListedRunsNoScript) {
  page().browse("http://h:9090/album");
  machine.dispatch.advance(Millis{1000});
  EXPECT_TRUE(scripts().empty());
  EXPECT_FALSE(log.contains("MyWebViewWindowController-webView:didFinishNavigation:...path = [/album]"));
}

TEST_F(CompletionTest, WithoutAnIdentifierTheTextOfNothingIsLookedFor) {
  machine.defaults.removeObject(prefFirstFocusWebFieldByIdentifier);
  page().browse("http://h:9090/kiosk");
  machine.dispatch.advance(Millis{10});
  EXPECT_EQ(scripts(), std::vector<std::string>{focusScript(std::nullopt)});
}

TEST_F(CompletionTest, TheScriptsResultAndErrorAreLogged) {
  page().answerScript("inputFields", platform::PropertyList(std::string("done")));
  page().browse("http://h:9090/login");
  machine.dispatch.advance(Millis{10});
  EXPECT_TRUE(log.contains("result = done"));

  page().failScript("inputFields", platform::WebError{4, "SyntaxError", std::nullopt});
  page().browse("http://h:9090/kiosk");
  machine.dispatch.advance(Millis{10});
  EXPECT_TRUE(log.contains("error = Error code=4 \"SyntaxError\" url=(null)"));
}

TEST_F(CompletionTest, APageThatIsGoneMeanwhileGetsNoFocus) {
  page().browse("http://h:9090/login");
  machine.dispatch.advance(Millis{9});
  machine.journal.clear();
  browser.reset();
  ASSERT_EQ(machine.webView(), nullptr);
  machine.dispatch.advance(Millis{1000});
  EXPECT_TRUE(machine.journal.startingWith("webView1").empty());
}

TEST_F(CompletionTest, TheUserAgentIsLoggedWithEveryPage) {
  page().setCustomUserAgent("Kiosk/1");
  page().browse("http://h:9090/album");
  EXPECT_TRUE(log.contains(
      "MyWebViewWindowController-webView:didFinishNavigation:...webView.customUserAgent = [Kiosk/1]"));
}

TEST_F(CompletionTest, TheStartOfALoadIsLogged) {
  page().startNavigation("http://h:9090/album");
  EXPECT_TRUE(log.contains("MyWebViewWindowController-webView:didStartProvisionalNavigation:..."));
}

}  // namespace
}  // namespace lumo

#include "tests/unit/browser/browser_fixture.h"

// What a page's scripts ask the person, as sheets on the window, and the windows that pages ask for.

namespace {

using browsertest::kBrowserWindow;
using platform::AlertStyle;
using testing::ElementsAre;

class BrowserPanel : public browsertest::BrowserTest {
 protected:
  void SetUp() override {
    makeShown();
    ASSERT_TRUE(page().browse("http://h/order"));
    log.clear();
  }
  std::vector<std::string> buttons() {
    std::vector<std::string> titles;
    for (const platform::AlertButton& button : window().currentAlert()->buttons) {
      titles.push_back(button.title);
    }
    return titles;
  }
};

TEST_F(BrowserPanel, AnAlertHasThePagesTextAndOneButton) {
  const auto panel = page().runAlertPanel("Take your card");
  ASSERT_NE(window().currentAlert(), nullptr);
  EXPECT_EQ(window().currentAlert()->messageText, "Take your card");
  EXPECT_EQ(window().currentAlert()->style, platform::Alert{}.style);
  EXPECT_THAT(buttons(), ElementsAre("OK"));
  EXPECT_FALSE(panel->answered);
  window().pressAlertButton("OK");
  EXPECT_TRUE(panel->answered);
  EXPECT_THAT(log.lines(), ElementsAre("MyWebViewWindowController-webView:runJavaScriptAlertPanelWithMessage:"
                                       "initiatedByFrame:completionHandler:...",
                                       "MyWebViewWindowController-webView:runJavaScriptAlertPanelWithMessage:"
                                       "initiatedByFrame:completionHandler:...frame.request = "
                                       "<NSMutableURLRequest: {URL: http://h/order}>"));
}

TEST_F(BrowserPanel, AConfirmPanelAsksWithOkAndCancel) {
  const auto panel = page().runConfirmPanel("Leave?");
  ASSERT_NE(window().currentAlert(), nullptr);
  EXPECT_EQ(window().currentAlert()->messageText, "Leave?");
  EXPECT_EQ(window().currentAlert()->style, AlertStyle::Informational);
  EXPECT_THAT(buttons(), ElementsAre("OK", "Cancel"));
  EXPECT_FALSE(panel->answered);
  window().pressAlertButton("OK");
  EXPECT_TRUE(panel->answered);
  EXPECT_TRUE(panel->confirmed);
  EXPECT_THAT(log.lines(),
              ElementsAre("MyWebViewWindowController-webView:runJavaScriptConfirmPanelWithMessage:"
                          "initiatedByFrame:completionHandler:...",
                          "MyWebViewWindowController-webView:runJavaScriptConfirmPanelWithMessage:"
                          "initiatedByFrame:completionHandler:...frame.request = "
                          "<NSMutableURLRequest: {URL: http://h/order}>"));
}

TEST_F(BrowserPanel, AConfirmPanelAnsweredWithCancelGivesNoToThePage) {
  const auto panel = page().runConfirmPanel("Leave?");
  window().pressAlertButton("Cancel");

  EXPECT_TRUE(panel->answered);
  EXPECT_FALSE(panel->confirmed);
}

TEST_F(BrowserPanel, APromptGivesTheTextThatWasWritten) {
  const auto panel = page().runTextPanel("Your name?", "Max");
  ASSERT_NE(window().currentAlert(), nullptr);
  EXPECT_EQ(window().currentAlert()->messageText, "Your name?");
  EXPECT_EQ(window().currentAlert()->textFieldValue, "Max");
  EXPECT_TRUE(window().currentAlert()->hasTextField);
  EXPECT_THAT(buttons(), ElementsAre("OK", "Cancel"));
  window().pressAlertButton("OK", "Eva");
  EXPECT_EQ(panel->text, "Eva");
  EXPECT_THAT(log.lines(),
              ElementsAre("MyWebViewWindowController-webView:runJavaScriptTextInputPanelWithPrompt:"
                          "defaultText:initiatedByFrame:completionHandler:...",
                          "MyWebViewWindowController-webView:runJavaScriptTextInputPanelWithPrompt:"
                          "defaultText:initiatedByFrame:completionHandler:...frame.request = "
                          "<NSMutableURLRequest: {URL: http://h/order}>"));
}

TEST_F(BrowserPanel, APromptThatIsCancelledGivesNothing) {
  const auto panel = page().runTextPanel("Your name?", "Max");
  window().pressAlertButton("Cancel", "Eva");

  EXPECT_TRUE(panel->answered);
  EXPECT_EQ(panel->text, std::nullopt);
}

TEST_F(BrowserPanel, PanelsWaitTheirTurn) {
  const auto first = page().runAlertPanel("One");
  const auto second = page().runConfirmPanel("Two");
  EXPECT_EQ(window().currentAlert()->messageText, "One");
  window().pressAlertButton("OK");
  EXPECT_EQ(window().currentAlert()->messageText, "Two");
  EXPECT_FALSE(second->answered);
  window().pressAlertButton("OK");
  EXPECT_TRUE(second->confirmed);
}

TEST_F(BrowserPanel, AWindowThatClosesItselfIsLogged) {
  page().closeByScript();

  EXPECT_THAT(log.lines(), ElementsAre("MyWebViewWindowController-webViewDidClose:..."));
  EXPECT_TRUE(window().isVisible());
}

TEST_F(BrowserPanel, ANewWindowOpensInTheSameView) {
  EXPECT_EQ(page().requestNewWindow("http://h/popup"), &page());
  EXPECT_EQ(page().requests().back().url.absoluteString(), "http://h/popup");
  EXPECT_THAT(machine.windows.loaded(), ElementsAre(kBrowserWindow));
  EXPECT_TRUE(
      log.contains("MyWebViewWindowController->webView:createWebViewWithRequest:....request = "
                   "<NSMutableURLRequest: {URL: http://h/popup}>"));
}

}  // namespace

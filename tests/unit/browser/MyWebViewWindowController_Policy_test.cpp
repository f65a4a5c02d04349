#include "browser/ReleaseMessage.h"
#include "tests/unit/browser/browser_fixture.h"

namespace lumo {
namespace {

using platform::Millis;
using platform::NavigationPolicy;
using testing::HasSubstr;

constexpr const char* kOrders = "/registrationorders/photostationdata,posdata";
constexpr const char* kResponse = "webView:decidePolicyForNavigationResponse:decisionHandler:";

class PolicyTest : public browsertest::BrowserTest {
 protected:
  void SetUp() override {
    makeShown();
    set(prefPathNamesToDataForLumo, kOrders);
  }
  // What the browser answers to the server's answer at `address`.
  std::optional<NavigationPolicy> answer(const std::string& address, platform::HeaderFields fields = {}) {
    page().startNavigation(address);
    return page().answerResponse(200, std::move(fields));
  }
  std::size_t messages() const { return machine.bus.posted().size(); }
  std::optional<std::string> sent(const char* key) const {
    return messageValue(machine.bus.posted().at(0), key);
  }
};

TEST_F(PolicyTest, EveryActionIsAllowedWithoutACamera) {
  EXPECT_EQ(page().startNavigation("http://h:9090/a"), NavigationPolicy::Allow);
  EXPECT_THAT(log.text(),
              HasSubstr("MyWebViewWindowController-webView:decidePolicyForNavigationAction:decisionHandler:"
                        "...navigationAction = <WKNavigationAction: "));
  EXPECT_FALSE(log.contains("already set..."));
}

TEST_F(PolicyTest, AnOrdinaryPageIsShown) {
  EXPECT_EQ(answer("http://h:9090/album?x=1"), NavigationPolicy::Allow);
  machine.dispatch.advance(Millis{2000});
  EXPECT_EQ(messages(), 0U);
  const std::string operation = std::string("MyWebViewWindowController-") + kResponse;
  EXPECT_TRUE(log.contains(operation + "..."));
  EXPECT_THAT(log.text(), HasSubstr(operation + "...navigationResponse = <WKNavigationResponse: "));
  EXPECT_TRUE(log.contains(operation + "...response = http://h:9090/album?x=1"));
  EXPECT_TRUE(log.contains(operation + "...path = [/album]"));
  EXPECT_THAT(log.text(), HasSubstr(std::string(kResponse) + "-> mSet = ("));
}

TEST_F(PolicyTest, AListedPathReleasesTheOrderAndIsNotShown) {
  EXPECT_EQ(answer("http://h:9090/RegistrationOrders/PhotoStationData/?code=7",
                   {{"lumo-reg-code", "7"}, {"respurlstring", "http://other/"}}),
            NavigationPolicy::Cancel);
  EXPECT_TRUE(log.contains(std::string(kResponse) +
                           "-> closing window for path = /RegistrationOrders/PhotoStationData/"));
  machine.dispatch.advance(Millis{199});
  EXPECT_EQ(messages(), 0U);
  machine.dispatch.advance(Millis{1});
  ASSERT_EQ(messages(), 1U);
  EXPECT_EQ(sent("status"), "registered");
  EXPECT_EQ(sent("LUMO-REG-CODE"), "7");
  EXPECT_EQ(sent("respurlstring"), "http://h:9090/RegistrationOrders/PhotoStationData/?code=7");
  machine.dispatch.advance(Millis{5000});
  EXPECT_EQ(messages(), 1U);
}

TEST_F(PolicyTest, AListedLastComponentReleasesTheOrder) {
  EXPECT_EQ(answer("http://h:9090/a/b/posdata"), NavigationPolicy::Cancel);
  machine.dispatch.advance(Millis{200});
  EXPECT_EQ(messages(), 1U);
}

TEST_F(PolicyTest, RegistrationSaveReleasesAlsoWithAnEmptyRouteList) {
  for (const char* list : {"", static_cast<const char*>(nullptr)}) {
    machine.bus.clear();
    if (list == nullptr) {
      machine.defaults.removeObject(prefPathNamesToDataForLumo);
    } else {
      set(prefPathNamesToDataForLumo, list);
    }
    EXPECT_EQ(answer("http://h:9090/registration/save", {{"lumo-reg-code", "7"}}), NavigationPolicy::Cancel);
    machine.dispatch.advance(Millis{999});
    EXPECT_EQ(messages(), 0U);
    machine.dispatch.advance(Millis{1});
    ASSERT_EQ(messages(), 1U);
    EXPECT_EQ(sent("status"), "registered");
    EXPECT_EQ(sent("LUMO-REG-CODE"), std::nullopt);
  }
}

TEST_F(PolicyTest, AnAnswerThatIsNotHttpFollowsThePathAlone) {
  page().startNavigation("file:///srv/posdata");
  EXPECT_EQ(page().answerFileResponse(), NavigationPolicy::Cancel);
  machine.dispatch.advance(Millis{200});
  ASSERT_EQ(messages(), 1U);
  EXPECT_EQ(sent("respurlstring"), "file:///srv/posdata");
}

TEST_F(PolicyTest, AnAnswerForAFrameIsJudgedByThePagesAddress) {
  page().browse("http://h:9090/album");
  EXPECT_EQ(page().answerSubframeResponse("http://h:9090/a/posdata", 200), NavigationPolicy::Allow);
  machine.dispatch.advance(Millis{2000});
  EXPECT_EQ(messages(), 0U);
}

TEST_F(PolicyTest, TheScannerHeaderStartsTheScanAndKeepsTheReturnPage) {
  EXPECT_EQ(
      answer("http://h:9090/scan", {{"Glimmerpad-Plus-Scanner", "START"}, {"Scan-Return", "orders/start"}}),
      NavigationPolicy::Allow);
  EXPECT_TRUE(log.contains("MyWebViewWindowController->doTheScanProcess...."));
  EXPECT_EQ(machine.defaults.stringForKey(prefScanReturnStringFormat), "orders/start");
}

TEST_F(PolicyTest, AScanWithoutAReturnPageForgetsTheOldOne) {
  set(prefScanReturnStringFormat, "old");
  answer("http://h:9090/scan", {{"Glimmerpad-Plus-Scanner", "start"}});
  EXPECT_EQ(machine.defaults.stringForKey(prefScanReturnStringFormat), std::nullopt);
}

TEST_F(PolicyTest, TheScannerHeadersNameMustMatchExactly) {
  set(prefScanReturnStringFormat, "old");
  EXPECT_EQ(answer("http://h:9090/scan", {{"glimmerpad-plus-scanner", "start"}, {"Scan-Return", "new"}}),
            NavigationPolicy::Allow);
  EXPECT_FALSE(log.contains("MyWebViewWindowController->doTheScanProcess...."));
  EXPECT_EQ(machine.defaults.stringForKey(prefScanReturnStringFormat), "old");
}

TEST_F(PolicyTest, AScanOnAListedPathReleasesNothing) {
  EXPECT_EQ(answer("http://h:9090/posdata", {{"Glimmerpad-Plus-Scanner", "start"}}), NavigationPolicy::Allow);
  machine.dispatch.advance(Millis{2000});
  EXPECT_EQ(messages(), 0U);
}

TEST_F(PolicyTest, AReceiptIsPrinted330MillisecondsAfterItsAnswerWasAllowed) {
  EXPECT_EQ(answer("http://h:9090/receipt", {{"Glimmerpad-Plus-Print", "receipt"}, {"Scan-Return", "start"}}),
            NavigationPolicy::Allow);
  EXPECT_EQ(machine.defaults.stringForKey(prefScanReturnStringFormat), "start");
  machine.dispatch.advance(Millis{329});
  EXPECT_FALSE(browser->fIsPrintingReceipt);
  machine.dispatch.advance(Millis{1});
  EXPECT_TRUE(browser->fIsPrintingReceipt);
}

TEST_F(PolicyTest, AReceiptWithoutAReturnPageForgetsTheOldOne) {
  set(prefScanReturnStringFormat, "old");
  answer("http://h:9090/receipt", {{"Glimmerpad-Plus-Print", "Receipt"}});
  EXPECT_EQ(machine.defaults.stringForKey(prefScanReturnStringFormat), std::nullopt);
}

TEST_F(PolicyTest, ReceiptsWaitOneAfterTheOther) {
  answer("http://h:9090/receipt", {{"Glimmerpad-Plus-Print", "Receipt"}});
  bool reached = false;
  browser->webviewProcessQueue().async([&reached] { reached = true; });
  machine.dispatch.advance(Millis{329});
  EXPECT_FALSE(reached);
  machine.dispatch.advance(Millis{1});
  EXPECT_TRUE(reached);
}

TEST_F(PolicyTest, AWindowThatIsGonePrintsNothing) {
  answer("http://h:9090/receipt", {{"Glimmerpad-Plus-Print", "Receipt"}});
  browser.reset();
  machine.dispatch.advance(Millis{1000});
  EXPECT_TRUE(machine.webView() == nullptr || machine.webView()->snapshotFrames().empty());
}

}  // namespace
}  // namespace lumo

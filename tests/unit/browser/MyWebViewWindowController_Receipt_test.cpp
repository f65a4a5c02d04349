#include <gmock/gmock.h>

#include "browser/ReceiptLayout.h"
#include "tests/unit/browser/receipt_fixture.h"

namespace browsertest {
namespace {

using fakes::FakeWebView;
using platform::Millis;
using platform::Rect;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr Rect kPage{0, 0, 1024, 768};
constexpr Rect kReceipt{259.5, 0, 505, 14047.2080078125};
constexpr const char* kLanding = "http://127.0.0.1:9090/start";
constexpr const char* kMarker = "no-printers-available";
constexpr const char* kAlertAnswered =
    "-[MyWebViewWindowController doPrintThisPageAndReturnToPage:]_block_invoke with response ";

// Notes each run with its argument, keeps the file that it was given and says the next of the prepared
// answers, at last always the same.
constexpr const char* kScript = R"(#!/bin/sh
echo "$#:$1" >> "$HOME/runs"
count=$(wc -l < "$HOME/runs")
cp "$1" "$HOME/printed.$count"
cat "$HOME/answer.$count" 2>/dev/null || cat "$HOME/answer" 2>/dev/null || true
)";

class ReceiptTest : public BrowserTest {
 protected:
  void SetUp() override {
    home.installScript(kScript);
    home.write("answer", "request id is receipt-1 (1 file(s))\n");
  }
  // One more receipt on the way; nothing has run yet.
  void print(const lumo::ReturnPage& page = std::string(kLanding)) {
    browser->doPrintThisPageAndReturnToPage(page);
  }
  void pass(int milliseconds) { machine.dispatch.advance(Millis{milliseconds}); }
  int runs() const { return static_cast<int>(home.lines("runs").size()); }
  fakes::FakeOverlay& overlay() { return dynamic_cast<fakes::FakeOverlay&>(*window().overlay()); }
  const platform::RotationAnimation* spin() {
    return window().view<fakes::FakeImageView>("progressimage").animation("rotation");
  }

  TestHome home;
};

TEST_F(ReceiptTest, AReceiptGoesItsWayToTheMillisecond) {
  makeShown();
  page().scriptSnapshot(FakeWebView::picture(505, 14047), Millis{120});
  const Millis start = machine.dispatch.now();
  print();
  pass(500);
  const auto at = [&](int milliseconds, const std::string& entry) {
    return std::to_string((start + Millis{milliseconds}).count()) + " " + entry;
  };
  std::vector<std::string> entries = machine.journal.timed();
  std::erase_if(entries,
                [](const std::string& entry) { return entry.find("setLayer") != std::string::npos; });
  EXPECT_THAT(
      entries,
      ElementsAre(at(0, "webView1 setFrame {{259.5, 0}, {505, 14047.2080078125}}"),
                  at(0, "webView1 takeSnapshot"), at(0, "MyWebViewWindowController setLevel 0"),
                  at(0, "ibChildWindow orderFrontRegardless"),
                  at(0, "ibChildWindow setFrame {{100, 80}, {1024, 768}}"),
                  at(0, "progressimage addAnimation rotation 0 to -6.283185307179586 1000ms forever"),
                  at(120, "webView1 setFrame {{0, 0}, {1024, 768}}"),
                  at(120, std::string("webView1 load ") + kLanding),
                  at(500, "MyWebViewWindowController makeKeyAndOrderFront"),
                  at(500, "progressimage removeAnimation rotation"), at(500, "ibChildWindow orderOut")));
  EXPECT_EQ(runs(), 1);
}

TEST_F(ReceiptTest, ThePageIsPicturedAsAReceiptAndThenLaidOutAsBefore) {
  makeShown();
  const auto height = browser->ibWebViewContraintHeight.lock();
  ASSERT_TRUE(height);
  EXPECT_EQ(height->constant, browser->ibWebViewOriginalConstant);
  page().scriptSnapshot(FakeWebView::picture(505, 14047), Millis{120});
  print();
  pass(119);
  EXPECT_EQ(page().frame(), kReceipt);
  EXPECT_EQ(kPage.height + height->constant, lumo::kReceiptHeight);
  pass(1);
  EXPECT_THAT(page().snapshotFrames(), ElementsAre(kReceipt));
  EXPECT_EQ(page().frame(), kPage);
  EXPECT_EQ(height->constant, browser->ibWebViewOriginalConstant);
}

TEST_F(ReceiptTest, AWindowThatIsResizedMeanwhileIsFilledAfterwards) {
  makeShown();
  page().scriptSnapshot(FakeWebView::picture(505, 14047), Millis{120});
  print();
  pass(50);
  window().resizeByDesktop({0, 0, 1920, 1080});
  pass(50);
  EXPECT_EQ(page().frame(), kReceipt);
  pass(20);
  EXPECT_EQ(page().frame(), (Rect{0, 0, 1920, 1080}));
}

TEST_F(ReceiptTest, TheScriptGetsAFreshJpegAsItsOnlyArgument) {
  home.write("Desktop/Snapshot.jpg", "the receipt of another customer");
  makeShown();
  page().scriptSnapshot(FakeWebView::picture(505, 1000));
  print();
  pass(500);
  EXPECT_THAT(home.lines("runs"), ElementsAre("1:" + home.snapshot().string()));
  EXPECT_TRUE(home.read("printed.1").starts_with("\xFF\xD8\xFF"));
  EXPECT_EQ(home.read("printed.1"), home.read("Desktop/Snapshot.jpg"));
  EXPECT_TRUE(log.contains("the print script said: request id is receipt-1 (1 file(s))"));
}

TEST_F(ReceiptTest, TheScriptOfTheBundleServesWhereThereIsNoOther) {
  std::filesystem::remove(home.path() / "Desktop/printtocups2.sh");
  std::filesystem::permissions(machine.bundle.addResource("printtocups2.sh", kScript),
                               std::filesystem::perms::owner_all);
  makeShown();
  print();
  pass(500);
  EXPECT_EQ(runs(), 1);
}

TEST_F(ReceiptTest, WithoutAScriptTheTextForItIsRunAndNobodyIsAsked) {
  std::filesystem::remove(home.path() / "Desktop/printtocups2.sh");
  makeShown();
  print();
  pass(500);
  EXPECT_TRUE(overlay().shownAlerts().empty());
  EXPECT_TRUE(window().shownAlerts().empty());
  EXPECT_FALSE(browser->fIsPrintingReceipt);
  EXPECT_FALSE(overlay().isVisible());
  EXPECT_THAT(log.text(), HasSubstr("(null) " + home.snapshot().string()));
  EXPECT_THAT(loaded(), ElementsAre(kLanding));
}

TEST_F(ReceiptTest, TheLandingPageIsAskedForPlainlyWhileTheReceiptIsStillPrinted) {
  home.write("answer", kMarker);
  makeShown();
  print();
  pass(0);
  ASSERT_EQ(page().requests().size(), 1U);
  const platform::UrlRequest& request = page().requests().front();
  EXPECT_EQ(request.url.absoluteString(), kLanding);
  EXPECT_EQ(request.cachePolicy, platform::CachePolicy::UseProtocolCachePolicy);
  EXPECT_EQ(request.timeout, Millis{0});
  EXPECT_TRUE(request.headers.empty());
  EXPECT_EQ(runs(), 0);
  pass(500);
  ASSERT_NE(overlay().currentAlert(), nullptr);
  EXPECT_TRUE(page().finish());
  EXPECT_EQ(page().url()->absoluteString(), kLanding);
}

TEST_F(ReceiptTest, AReturnPageMayBeATextOrAnAddress) {
  makeShown();
  browser->returnToLandingPageAfterPrinting(std::string("http://127.0.0.1:9090/text"));
  browser->returnToLandingPageAfterPrinting(*platform::Url::parse("http://127.0.0.1:9090/url"));
  pass(0);
  EXPECT_THAT(loaded(), ElementsAre("http://127.0.0.1:9090/text", "http://127.0.0.1:9090/url"));
  EXPECT_TRUE(window().shownAlerts().empty());
}

TEST_F(ReceiptTest, WithoutAReturnPageAnAlertOnTheBrowserWindowSaysSo) {
  makeShown();
  for (const lumo::ReturnPage& none :
       {lumo::ReturnPage{}, lumo::ReturnPage{""}, lumo::ReturnPage{"http://127.0.0.1:(null)/start"}}) {
    browser->returnToLandingPageAfterPrinting(none);
    pass(0);
    ASSERT_NE(window().currentAlert(), nullptr);
    EXPECT_EQ(window().currentAlert()->messageText, "NO PAGE TO RETURN To ???????");
    EXPECT_EQ(window().currentAlert()->style, platform::AlertStyle::Critical);
    machine.journal.clear();
    window().pressAlertButton("OK");
    pass(0);
    EXPECT_THAT(machine.journal.startingWith("webView1"), ElementsAre());
  }
  EXPECT_TRUE(loaded().empty());
}

TEST_F(ReceiptTest, AReceiptWithoutAReturnPageIsPrintedAllTheSame) {
  makeShown();
  print({});
  pass(500);
  EXPECT_EQ(runs(), 1);
  EXPECT_FALSE(overlay().isVisible());
  EXPECT_EQ(window().currentAlert()->messageText, "NO PAGE TO RETURN To ???????");
}

TEST_F(ReceiptTest, TheOverlayCoversTheBrowserUntilTheReceiptIsPrinted) {
  home.write("answer.1", kMarker);
  makeShown();
  EXPECT_FALSE(overlay().isVisible());
  EXPECT_FALSE(browser->fIsPrintingReceipt);
  print();
  pass(0);
  EXPECT_TRUE(overlay().isVisible());
  EXPECT_TRUE(browser->fIsPrintingReceipt);
  EXPECT_EQ(overlay().frame(), window().frame());
  ASSERT_NE(spin(), nullptr);
  EXPECT_TRUE(spin()->forever);
  pass(5000);
  EXPECT_TRUE(overlay().isVisible());
  EXPECT_TRUE(browser->fIsPrintingReceipt);
  overlay().pressAlertButton("Try Again");
  pass(0);
  EXPECT_EQ(runs(), 2);
  EXPECT_FALSE(overlay().isVisible());
  EXPECT_FALSE(browser->fIsPrintingReceipt);
  EXPECT_EQ(spin(), nullptr);
}

TEST_F(ReceiptTest, WithoutItsImageTheOverlayItselfTurns) {
  describe([](fakes::FakeWindow& described) {
    described.setInitialFrame(kUsualFrame);
    described.addOverlay();
  });
  makeShown();
  print();
  pass(0);
  ASSERT_NE(overlay().contentView().animation("rotation"), nullptr);
  pass(500);
  EXPECT_EQ(overlay().contentView().animation("rotation"), nullptr);
  EXPECT_EQ(runs(), 1);
}

TEST_F(ReceiptTest, WithoutAnOverlayTheReceiptIsPrintedAndTheWindowAsks) {
  home.write("answer.1", kMarker);
  describe([](fakes::FakeWindow& described) { described.setInitialFrame(kUsualFrame); });
  makeShown();
  ASSERT_EQ(browser->ibChildWindow, nullptr);
  print();
  pass(500);
  ASSERT_NE(window().currentAlert(), nullptr);
  window().pressAlertButton("Try Again");
  pass(0);
  EXPECT_EQ(runs(), 2);
  EXPECT_FALSE(browser->fIsPrintingReceipt);
}

TEST_F(ReceiptTest, AnOverlayThatIsHiddenLeavesTheAlertToTheBrowserWindow) {
  home.write("answer.1", kMarker);
  makeShown();
  print();
  pass(499);
  overlay().orderOut();
  pass(1);
  EXPECT_EQ(overlay().currentAlert(), nullptr);
  ASSERT_NE(window().currentAlert(), nullptr);
  EXPECT_EQ(window().currentAlert()->messageText, "No Receipt Printer Detected");
}

TEST_F(ReceiptTest, TheWindowIsOfTheNormalLevelMeanwhileAndGetsItsOwnBack) {
  set(lumo::prefWindowAlwaysStatusLevel, platform::PropertyList(true));
  makeShown();
  ASSERT_EQ(window().level(), platform::kStatusWindowLevel);
  print();
  pass(499);
  EXPECT_EQ(window().level(), platform::kNormalWindowLevel);
  EXPECT_EQ(overlay().level(), platform::kStatusWindowLevel);
  pass(1);
  EXPECT_EQ(window().level(), platform::kStatusWindowLevel);
}

TEST_F(ReceiptTest, NoPrinterTwiceAsksTwiceAndThenPrints) {
  home.write("answer.1", "lpstat: No destinations added.\nno-printers-available\n");
  home.write("answer.2", kMarker);
  makeShown();
  print();
  pass(500);
  ASSERT_NE(overlay().currentAlert(), nullptr);
  EXPECT_EQ(overlay().currentAlert()->messageText, "No Receipt Printer Detected");
  EXPECT_EQ(overlay().currentAlert()->informativeText, "Please connect a receipt printer and try again.");
  overlay().pressAlertButton("Try Again");
  pass(0);
  EXPECT_EQ(runs(), 2);
  ASSERT_NE(overlay().currentAlert(), nullptr);
  overlay().pressAlertButton("Try Again");
  pass(0);
  EXPECT_EQ(runs(), 3);
  EXPECT_EQ(overlay().shownAlerts().size(), 2U);
  EXPECT_EQ(overlay().currentAlert(), nullptr);
  EXPECT_EQ(log.count(std::string(kAlertAnswered) + "1"), 2U);
  EXPECT_FALSE(browser->fIsPrintingReceipt);
  // Every run prints the same picture.
  EXPECT_EQ(home.read("printed.1"), home.read("printed.3"));
}

TEST_F(ReceiptTest, RetriesHaveNoLimit) {
  home.write("answer", kMarker);
  makeShown();
  print();
  pass(500);
  for (int retry = 1; retry <= 25; ++retry) {
    ASSERT_NE(overlay().currentAlert(), nullptr) << retry;
    overlay().pressAlertButton("Try Again");
    pass(0);
    ASSERT_EQ(runs(), retry + 1);
  }
  overlay().pressAlertButton("Do Not Print Receipt");
  pass(0);
  EXPECT_EQ(runs(), 26);
}

TEST_F(ReceiptTest, DoNotPrintEndsItWithoutAnotherRun) {
  home.write("answer", kMarker);
  makeShown();
  print();
  pass(500);
  overlay().pressAlertButton("Do Not Print Receipt");
  pass(60000);
  EXPECT_EQ(runs(), 1);
  EXPECT_EQ(overlay().shownAlerts().size(), 1U);
  EXPECT_EQ(log.count(std::string(kAlertAnswered) + "0"), 1U);
  EXPECT_FALSE(browser->fIsPrintingReceipt);
  EXPECT_FALSE(overlay().isVisible());
}

TEST_F(ReceiptTest, ARetryThatSaysNothingEndsIt) {
  home.write("answer.1", kMarker);
  home.write("answer", "");
  makeShown();
  print();
  pass(500);
  overlay().pressAlertButton("Try Again");
  pass(0);
  EXPECT_EQ(runs(), 2);
  EXPECT_EQ(overlay().currentAlert(), nullptr);
  EXPECT_FALSE(browser->fIsPrintingReceipt);
  EXPECT_TRUE(log.contains("the print script said: (null)"));
}

TEST_F(ReceiptTest, AnOpenAlertKeepsTheQueueAndNoThread) {
  home.write("answer.1", kMarker);
  makeShown();
  print();
  pass(500);
  std::string order;
  browser->webviewProcessQueue().async([&] { order = "after the alert"; });
  // Everything that could run has run: whoever waits does so without a thread.
  pass(3600 * 1000);
  EXPECT_EQ(machine.dispatch.pendingBlocks(), 0U);
  EXPECT_EQ(machine.dispatch.pendingTimers(), 0U);
  EXPECT_EQ(order, "");
  overlay().pressAlertButton("Try Again");
  pass(0);
  EXPECT_EQ(order, "after the alert");
}

TEST_F(ReceiptTest, ASecondReceiptWaitsForTheAlertOfTheFirst) {
  home.write("answer.1", kMarker);
  makeShown();
  print();
  pass(500);
  print(std::string("http://127.0.0.1:9090/second"));
  pass(60000);
  EXPECT_EQ(runs(), 1);
  // The second page has its picture and is left already.
  EXPECT_THAT(loaded(), ElementsAre(kLanding, "http://127.0.0.1:9090/second"));
  overlay().pressAlertButton("Do Not Print Receipt");
  pass(499);
  EXPECT_EQ(runs(), 1);
  EXPECT_TRUE(overlay().isVisible());
  EXPECT_TRUE(browser->fIsPrintingReceipt);
  pass(1);
  EXPECT_EQ(runs(), 2);
  EXPECT_FALSE(overlay().isVisible());
  EXPECT_FALSE(browser->fIsPrintingReceipt);
}

TEST_F(ReceiptTest, TwoReceiptsInARowArePrintedInTheirOrder) {
  makeShown();
  page().scriptSnapshot(FakeWebView::picture(505, 100));
  page().scriptSnapshot(FakeWebView::picture(505, 200));
  print(std::string("http://127.0.0.1:9090/one"));
  print(std::string("http://127.0.0.1:9090/two"));
  pass(2000);
  EXPECT_EQ(runs(), 2);
  EXPECT_LT(home.read("printed.1").size(), home.read("printed.2").size());
  EXPECT_THAT(loaded(), ElementsAre("http://127.0.0.1:9090/one", "http://127.0.0.1:9090/two"));
  EXPECT_FALSE(overlay().isVisible());
  EXPECT_EQ(page().frame(), kPage);
}

TEST_F(ReceiptTest, ASecondReceiptBeforeTheFirstPictureDoesNotTakeTheReceiptForTheUsualPage) {
  makeShown();
  page().scriptSnapshot(FakeWebView::picture(505, 100), Millis{400});
  page().scriptSnapshot(FakeWebView::picture(505, 200), Millis{400});
  print();
  pass(200);
  print();
  pass(200);
  // The first one is pictured, the second not yet.
  EXPECT_EQ(page().frame(), kReceipt);
  pass(200);
  EXPECT_EQ(page().frame(), kPage);
  EXPECT_THAT(page().snapshotFrames(), ElementsAre(kReceipt, kReceipt));
  EXPECT_EQ(browser->ibWebViewContraintHeight.lock()->constant, browser->ibWebViewOriginalConstant);
  pass(1000);
  EXPECT_EQ(runs(), 2);
}

TEST_F(ReceiptTest, AFailedPicturePrintsNothingAndReturns) {
  home.write("Desktop/Snapshot.jpg", "the receipt of another customer");
  makeShown();
  page().scriptSnapshot(std::nullopt, Millis{30});
  print();
  pass(30);
  EXPECT_EQ(page().frame(), kPage);
  EXPECT_THAT(loaded(), ElementsAre(kLanding));
  EXPECT_TRUE(overlay().isVisible());
  pass(470);
  EXPECT_EQ(runs(), 0);
  EXPECT_TRUE(log.contains("there is no picture of this receipt, so nothing is printed"));
  EXPECT_EQ(home.read("Desktop/Snapshot.jpg"), "the receipt of another customer");
  EXPECT_FALSE(overlay().isVisible());
  EXPECT_FALSE(browser->fIsPrintingReceipt);
  EXPECT_TRUE(overlay().shownAlerts().empty());
}

TEST_F(ReceiptTest, AnEmptyPicturePrintsNothingAndReturns) {
  makeShown();
  page().scriptSnapshot(platform::Image{});
  print();
  pass(500);
  EXPECT_EQ(runs(), 0);
  EXPECT_THAT(loaded(), ElementsAre(kLanding));
  EXPECT_FALSE(std::filesystem::exists(home.snapshot()));
  EXPECT_FALSE(overlay().isVisible());
}

TEST_F(ReceiptTest, APictureThatNeverComesIsGivenUp) {
  makeShown();
  page().scriptEndlessSnapshot();
  print();
  pass(9999);
  EXPECT_EQ(page().frame(), kReceipt);
  EXPECT_TRUE(overlay().isVisible());
  pass(1);
  EXPECT_EQ(page().frame(), kPage);
  EXPECT_THAT(loaded(), ElementsAre(kLanding));
  EXPECT_EQ(runs(), 0);
  EXPECT_FALSE(overlay().isVisible());
}

TEST_F(ReceiptTest, AnUnwritableSnapshotRunsNoScript) {
  home.write("Desktop/Snapshot.jpg/occupied", "");
  makeShown();
  print();
  pass(500);
  EXPECT_EQ(runs(), 0);
  EXPECT_TRUE(log.contains("there is no picture of this receipt, so nothing is printed"));
  EXPECT_FALSE(browser->fIsPrintingReceipt);
}

TEST_F(ReceiptTest, AHugeOutputIsReadToItsEnd) {
  home.installScript("#!/bin/sh\nhead -c 1000000 /dev/zero | tr '\\0' x\necho no-printers-available\n");
  makeShown();
  print();
  pass(500);
  EXPECT_NE(overlay().currentAlert(), nullptr);
  EXPECT_TRUE(log.contains("the print script said: " + std::string(200, 'x')));
}

TEST_F(ReceiptTest, AScriptThatFailsEndsTheReceipt) {
  home.installScript("#!/bin/sh\nexit 7\n");
  makeShown();
  print();
  pass(500);
  EXPECT_TRUE(overlay().shownAlerts().empty());
  EXPECT_FALSE(overlay().isVisible());
  EXPECT_FALSE(browser->fIsPrintingReceipt);
}

TEST_F(ReceiptTest, AControllerThatGoesTakesItsReceiptAlongAndLeavesTheQueueFree) {
  home.write("answer", kMarker);
  makeShown();
  platform::SerialQueue queue = browser->webviewProcessQueue();
  for (const int when : {0, 10, 499, 500}) {
    make().showWindow();
    pass(0);
    platform::SerialQueue last = browser->webviewProcessQueue();
    print();
    pass(when);
    browser.reset();
    pass(20000);
    bool free = false;
    last.async([&] { free = true; });
    pass(0);
    EXPECT_TRUE(free) << "gone after " << when << " ms";
  }
}

TEST_F(ReceiptTest, WithoutAWindowNothingHappens) {
  machine.windows.removeDescription(kBrowserWindow);
  make();
  print();
  browser->returnToLandingPageAfterPrinting({});
  pass(20000);
  EXPECT_FALSE(browser->fIsPrintingReceipt);
  EXPECT_EQ(runs(), 0);
}

// The command line is not quoted, so the shell runs what stands before the blank.
class ReceiptInABlankHomeTest : public BrowserTest {
 protected:
  TestHome home{"photo desk"};
};

TEST_F(ReceiptInABlankHomeTest, ABlankInTheHomesPathPrintsNothingAndIsTold) {
  home.installScript(kScript);
  makeShown();
  browser->doPrintThisPageAndReturnToPage(std::string(kLanding));
  machine.dispatch.advance(Millis{500});
  EXPECT_TRUE(std::filesystem::exists(home.snapshot()));
  EXPECT_FALSE(std::filesystem::exists(home.path() / "runs"));
  EXPECT_TRUE(
      log.contains("the shell will not take this path as one word, and the receipt is not printed: [" +
                   home.snapshot().string() + "]"));
  EXPECT_FALSE(browser->fIsPrintingReceipt);
  EXPECT_THAT(loaded(), ElementsAre(kLanding));
}

}  // namespace
}  // namespace browsertest

#include <csignal>
#include <fstream>
#include <sstream>

#include "station/print_service.h"
#include "station/station.h"

// Receipts from the page to the paper, with a real print service.

namespace station {

namespace fs = std::filesystem;

namespace {

constexpr const char* kOverlayText = "Your receipt is being printed…";
constexpr const char* kNoPrinter = "No Receipt Printer Detected";
// Of a receipt's page, in pixels.
constexpr int kBar = 40;
constexpr int kReceiptWidth = 505;

std::string bar(Colour colour) {
  std::ostringstream text;
  text << "<div style='height:" << kBar << "px;background:rgb(" << int(colour.red) << "," << int(colour.green)
       << "," << int(colour.blue) << ")'></div>";
  return text.str();
}

// A bar in the colour, some lines and a red bar; after that nothing.
HttpAnswer receipt(Colour colour, const std::string& returnTo, int lines = 5) {
  std::string content =
      "<!doctype html><meta charset=utf-8><style>body{margin:0;font:28px "
      "sans-serif;background:#fff}</style>" +
      bar(colour);
  for (int line = 1; line <= lines; ++line) {
    content += "<p>" + std::to_string(line) + " print 10 x 15 cm, glossy 0.39</p>";
  }
  return {content + bar(kRed), {{"Glimmerpad-Plus-Print", "Receipt"}, {"Scan-Return", returnTo}}};
}

}  // namespace

// With the print service, but no printer at first.
class ReceiptStationTest : public StationTest {
 protected:
  void SetUp() override {
    if (!PrintService::isPossible()) {
      GTEST_SKIP() << "the PDF printer is for root alone";
    }
    StationTest::SetUp();
    printers = std::make_unique<PrintService>();
    station.environment["CUPS_SERVER"] = printers->server();
    const std::string goes = "<script>addEventListener('keydown', () => location = '/receipt')</script>";
    const std::string tells =
        "<script>addEventListener('keydown', event => fetch('/heard?' + event.key));"
        "addEventListener('click', () => fetch('/heard?click'))</script>";
    server.set("/home", HttpAnswer{page(kRed, goes)});
    server.set("/receipt", receipt(kGreen, "landing"));
    server.set("/landing", HttpAnswer{page(kBlue, tells)});
    server.set("/heard", HttpAnswer{"ok"});
  }
  void TearDown() override {
    if (HasFailure() && printers != nullptr) {
      std::cerr << printers->log();
    }
    StationTest::TearDown();
  }
  void startAndAskForAReceipt() {
    startAtHome();
    station.key("F8");
    ASSERT_TRUE(waitUntil([this] { return server.count("/receipt") == 1; }));
  }
  bool isCovered() { return station.control("label", kOverlayText).has_value(); }
  bool asksForAPrinter() {
    return waitUntil([this] { return station.control("alert dialog", kNoPrinter).has_value(); });
  }
  bool heard(const std::string& what) {
    for (const HttpRequest& request : server.requests("/heard")) {
      if (request.target == "/heard?" + what) {
        return true;
      }
    }
    return false;
  }
  void clickThePage() {
    const Area frame = station.screen().frame(station.window());
    station.click(frame.x + frame.width / 2, frame.y + frame.height * 3 / 4);
  }
  // The landing page shows, and is the customer's.
  void expectThePageIsFree() {
    EXPECT_TRUE(waitUntil([this] { return !isCovered(); })) << "the overlay stays";
    EXPECT_TRUE(station.shows(kBlue));
    clickThePage();
    EXPECT_TRUE(waitUntil([this] { return heard("click"); })) << "no click reaches the page";
    station.key("F4");
    EXPECT_TRUE(waitUntil([this] { return heard("F4"); })) << "no key reaches the page";
  }
  // A script in the place of the shipped one.
  void installScript(const std::string& text) {
    const fs::path script = station.folder() / "home/Desktop/printtocups2.sh";
    fs::create_directories(script.parent_path());
    std::ofstream(script) << text;
    fs::permissions(script, fs::perms::owner_all);
  }
  std::vector<fs::path> waitForJobs(std::size_t count) {
    EXPECT_TRUE(waitUntil([&] { return printers->jobs().size() == count; })) << printers->jobs().size();
    return printers->jobs();
  }

  std::unique_ptr<PrintService> printers;
};

TEST_F(ReceiptStationTest, TheReceiptFillsTheRollAndHasNoBlankEnd) {
  printers->addPrinter("roll", 80);
  startAndAskForAReceipt();
  const auto jobs = waitForJobs(1);
  ASSERT_EQ(jobs.size(), 1U);
  const auto pages = printers->pages(jobs[0]);
  ASSERT_EQ(pages.size(), 1U);
  const PrintedPage& paper = pages[0];
  EXPECT_NEAR(paper.width, 226, 1);
  const int barHeight = kBar * paper.width / kReceiptWidth;
  EXPECT_TRUE(paper.rowIs(2, kGreen.red, kGreen.green, kGreen.blue)) << "the top is cut or not full";
  EXPECT_TRUE(paper.rowIs(barHeight + 5, 255, 255, 255));
  EXPECT_TRUE(paper.rowIs(paper.height - barHeight / 2, kRed.red, kRed.green, kRed.blue)) << "a blank end";
  EXPECT_LT(paper.height, 500);
  EXPECT_GT(paper.darkPoints(), 500) << "no text";
  // The page itself was pictured in its whole length.
  EXPECT_TRUE(fs::exists(station.folder() / "home/Desktop/Snapshot.jpg"));
  expectThePageIsFree();
  EXPECT_EQ(server.count("/landing"), 1);
  EXPECT_EQ(station.stop(), "exit status 0");
}

TEST_F(ReceiptStationTest, ALongReceiptIsOneLongPage) {
  printers->addPrinter("roll", 80);
  server.set("/receipt", receipt(kGreen, "landing", 150));
  startAndAskForAReceipt();
  const auto jobs = waitForJobs(1);
  ASSERT_EQ(jobs.size(), 1U);
  const auto pages = printers->pages(jobs[0]);
  ASSERT_EQ(pages.size(), 1U);
  const PrintedPage& paper = pages[0];
  EXPECT_GT(paper.height, 4000);
  EXPECT_TRUE(paper.rowIs(2, kGreen.red, kGreen.green, kGreen.blue));
  EXPECT_TRUE(paper.rowIs(paper.height - 5, kRed.red, kRed.green, kRed.blue));
}

TEST_F(ReceiptStationTest, ThePageIsBackBeforeAPrinterIsFoundAndTryAgainPrints) {
  startAndAskForAReceipt();
  ASSERT_TRUE(asksForAPrinter());
  EXPECT_TRUE(isCovered());
  EXPECT_TRUE(waitUntil([this] { return server.count("/landing") == 1; }));
  // Again without a printer: asked again.
  ASSERT_TRUE(station.press("Try Again"));
  ASSERT_TRUE(station.logs("_block_invoke with response 1"));
  ASSERT_TRUE(asksForAPrinter());
  // Neither clicks nor keys get past the alert and the layer.
  clickThePage();
  station.key("F4");
  printers->addPrinter("roll", 58);
  ASSERT_TRUE(station.press("Try Again"));
  const auto jobs = waitForJobs(1);
  ASSERT_EQ(jobs.size(), 1U);
  EXPECT_NEAR(printers->pages(jobs[0]).at(0).width, 164, 1);
  EXPECT_EQ(server.count("/heard"), 0);
  expectThePageIsFree();
}

TEST_F(ReceiptStationTest, ADisabledPrinterIsNone) {
  printers->addPrinter("roll");
  printers->disable("roll");
  startAndAskForAReceipt();
  EXPECT_TRUE(asksForAPrinter());
}

TEST_F(ReceiptStationTest, DoNotPrintReceiptEndsIt) {
  startAndAskForAReceipt();
  ASSERT_TRUE(asksForAPrinter());
  ASSERT_TRUE(station.press("Do Not Print Receipt"));
  ASSERT_TRUE(station.logs("_block_invoke with response 0"));
  expectThePageIsFree();
  EXPECT_TRUE(printers->jobs().empty());
  EXPECT_FALSE(station.control("alert dialog", kNoPrinter));
}

TEST_F(ReceiptStationTest, TwoReceiptsInARowArePrintedInTheirOrder) {
  printers->addPrinter("roll");
  // The first one's return page is the second receipt.
  server.set("/receipt", receipt(kGreen, "second"));
  server.set("/second", receipt(kBlue, "landing"));
  startAndAskForAReceipt();
  const auto jobs = waitForJobs(2);
  ASSERT_EQ(jobs.size(), 2U);
  EXPECT_TRUE(printers->pages(jobs[0]).at(0).rowIs(2, kGreen.red, kGreen.green, kGreen.blue));
  EXPECT_TRUE(printers->pages(jobs[1]).at(0).rowIs(2, kBlue.red, kBlue.green, kBlue.blue));
  expectThePageIsFree();
}

TEST_F(ReceiptStationTest, AScriptThatHangsLeavesTheWindowAnswering) {
  installScript(
      "#!/bin/sh\necho $$ > \"$HOME/hanging.new\"\nmv \"$HOME/hanging.new\" \"$HOME/hanging\"\nexec sleep "
      "60\n");
  startAndAskForAReceipt();
  const fs::path hanging = station.folder() / "home/hanging";
  ASSERT_TRUE(waitUntil([&] { return fs::exists(hanging); }));
  EXPECT_TRUE(waitUntil([this] { return server.count("/landing") == 1; })) << "the page waits for the script";
  // Answered on the kiosk's main thread.
  EXPECT_TRUE(isCovered());
  EXPECT_TRUE(station.control("button", "Home"));
  clickThePage();
  EXPECT_EQ(server.count("/heard"), 0);
  pid_t script = 0;
  std::ifstream(hanging) >> script;
  ASSERT_GT(script, 0);
  ASSERT_EQ(kill(script, SIGKILL), 0);
  expectThePageIsFree();
}

TEST_F(ReceiptStationTest, TheKioskEndsThoughTheScriptHangs) {
  installScript("#!/bin/sh\n: > \"$HOME/hanging\"\nexec sleep 60\n");
  startAndAskForAReceipt();
  ASSERT_TRUE(waitUntil([&] { return fs::exists(station.folder() / "home/hanging"); }));
  EXPECT_EQ(station.stop(), "exit status 0");
}

// What a script says or does, other than that there is no printer, ends the receipt.
class ReceiptScriptTest : public ReceiptStationTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(ReceiptScriptTest, TheScriptEndsTheReceipt) {
  installScript(std::string("#!/bin/sh\n") + GetParam());
  startAndAskForAReceipt();
  EXPECT_TRUE(waitUntil([this] { return server.count("/landing") == 1; }));
  ASSERT_TRUE(station.logs("the print script said: "));
  expectThePageIsFree();
  EXPECT_FALSE(station.control("alert dialog", kNoPrinter));
}

std::string nameOfScript(const ::testing::TestParamInfo<const char*>& info) {
  const char* names[] = {"AMegabyte", "Nothing", "AFailure", "ACrash"};
  return names[info.index];
}

INSTANTIATE_TEST_SUITE_P(Scripts, ReceiptScriptTest,
                         ::testing::Values("head -c 1000000 /dev/zero | tr '\\0' x\n", "exit 0\n", "exit 3\n",
                                           "kill -9 $$\n"),
                         nameOfScript);

}  // namespace station

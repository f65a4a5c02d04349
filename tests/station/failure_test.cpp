#include <cstdlib>
#include <fstream>
#include <regex>
#include <sstream>
#include <stdexcept>

#include <gmock/gmock.h>

#include "station/bus_peer.h"
#include "station/process_tree.h"
#include "station/station.h"

// Loads that fail, and what the person at the counter sees of it.

namespace station {

using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::Not;
using ::testing::StartsWith;

namespace {

constexpr const char* kFailure = "webView:didFailProvisionalNavigation:withError:...error = ";
// The page that the kiosk itself has made has no address.
constexpr const char* kErrorPageShown = "webView:didFinishNavigation:...webView.URL = (null)\n";
constexpr const char* kOpensSettings = "MyWebViewWindowController->ibOpenPreferences:....";

// A server with a certificate that nobody vouches for.
class UntrustedServer {
 public:
  explicit UntrustedServer(const Station& station) : output_(station.folder() / "tls.txt") {
    const std::string key = station.folder() / "key.pem";
    const std::string certificate = station.folder() / "certificate.pem";
    const std::string made =
        ChildProcess({"openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1",
                      "-nodes", "-days", "1", "-subj", "/CN=127.0.0.1", "-keyout", key, "-out", certificate},
                     station.environment, station.folder() / "tools.txt")
            .end();
    if (made != "exit status 0") {
      throw std::runtime_error("no certificate: " + made);
    }
    server_ = std::make_unique<ChildProcess>(
        std::vector<std::string>{"openssl", "s_server", "-accept", "127.0.0.1:0", "-key", key, "-cert",
                                 certificate, "-www"},
        station.environment, output_);
    waitUntil([this] {
      std::ifstream in(output_);
      const std::string text((std::istreambuf_iterator<char>(in)), {});
      std::smatch found;
      if (std::regex_search(text, found, std::regex("ACCEPT 127.0.0.1:([0-9]+)\n"))) {
        port_ = found[1];
      }
      return !port_.empty();
    });
  }
  std::string url(const std::string& path) const { return "https://127.0.0.1:" + port_ + path; }

 private:
  std::filesystem::path output_;
  std::unique_ptr<ChildProcess> server_;
  std::string port_;
};

}  // namespace

class FailureTest : public StationTest {
 protected:
  // The text of the page, as a person would copy it.
  std::string pageText() {
    const std::filesystem::path file = station.folder() / "page.txt";
    waitUntil([&] {
      station.key("ctrl+a");
      std::filesystem::remove(file);
      ChildProcess({"timeout", "5", "xclip", "-o", "-selection", "primary"}, station.environment, file).end();
      std::ifstream in(file);
      text_.assign((std::istreambuf_iterator<char>(in)), {});
      return text_.find("sender url") != std::string::npos;
    });
    return text_;
  }
  std::vector<std::string> linesWith(const std::string& text) const {
    std::vector<std::string> found;
    std::istringstream lines(station.log());
    for (std::string line; std::getline(lines, line);) {
      if (line.find(text) != std::string::npos) {
        found.push_back(line);
      }
    }
    return found;
  }
  // Returns when the kiosk has heard of it.
  void open(const std::string& address) {
    ASSERT_EQ(
        ChildProcess({LUMO_CTL, "open", address}, station.environment, station.folder() / "tools.txt").end(),
        "exit status 0");
  }
  // Asks for all of them at once, as other programs do, and returns when the kiosk has heard of them.
  void openAtOnce(const std::vector<std::string>& addresses) {
    BusPeer peer(station.busAddress());
    ASSERT_TRUE(peer.seesKiosk());
    std::vector<std::uint32_t> calls;
    calls.reserve(addresses.size());
    for (const std::string& address : addresses) {
      calls.push_back(peer.sendOpen({address}));
    }
    for (const std::uint32_t call : calls) {
      EXPECT_EQ(peer.answer(call), "");
    }
  }
  // Opens the settings and closes them again, which takes as long as anything that was on its way.
  void settle() {
    ASSERT_TRUE(station.press("Settings"));
    ASSERT_TRUE(closeSettings());
  }
  bool closeSettings() {
    return waitUntil([this] {
             const auto settings = station.control("dialog", "Settings");
             const auto close = settings ? settings->find("button", "Close") : std::nullopt;
             return close && close->press();
           }) &&
           waitUntil([this] { return !station.control("dialog", "Settings"); });
  }
  // Starts on an address that fails: the page tells of it and the settings open half a second later.
  void expectErrorPage(const std::string& address, const std::string& codeAndText) {
    station.prefer("prefShowPrefPanelWhenUrlLoadFailed", true);
    station.prefer("prefServerAddress", address);
    station.start();
    ASSERT_TRUE(waitUntil([this] { return station.control("dialog", "Settings").has_value(); }));
    const auto failures = linesWith(kFailure);
    const auto openings = linesWith(kOpensSettings);
    ASSERT_EQ(failures.size(), 1U);
    ASSERT_EQ(openings.size(), 1U);
    const long waited = between(failures[0], openings[0]);
    EXPECT_GE(waited, 490);
    EXPECT_LT(waited, 5000);
    ASSERT_TRUE(closeSettings());
    const std::string text = pageText();
    EXPECT_THAT(text, StartsWith("Error Encountered at handleWebViewError: !!\nerror code = ["));
    EXPECT_THAT(text, MatchesRegex("[^[]*\\[" + codeAndText + "\n\nsender url = [^\n]*\n?"));
    EXPECT_EQ(text.substr(text.find("sender url = ") + 13, address.size()), address);
    EXPECT_EQ(linesWith(kOpensSettings).size(), 1U);
    EXPECT_THAT(station.log(), HasSubstr(kErrorPageShown));

    station.prefer("prefServerAddress", server.url("/home"));
    ASSERT_TRUE(station.press("Home"));
    EXPECT_TRUE(station.shows(kRed)) << "there is no way back from the error page";
  }

  // Milliseconds from one line of the log to another.
  static long between(const std::string& earlier, const std::string& later) {
    constexpr long kDay = 24L * 60 * 60 * 1000;
    return (timeOf(later) - timeOf(earlier) + kDay) % kDay;
  }

 private:
  static long timeOf(const std::string& line) {
    const auto number = [&line](std::size_t at, std::size_t length) {
      return std::strtol(line.substr(at, length).c_str(), nullptr, 10);
    };
    return ((number(11, 2) * 60 + number(14, 2)) * 60 + number(17, 2)) * 1000 + number(20, 3);
  }

  std::string text_;
};

TEST_F(FailureTest, AServerThatIsNotThereShowsTheErrorPage) {
  const RefusingPort nobody;
  expectErrorPage(nobody.url("/home"), "[0-9]+\\] = Could not connect[^\n]*refused[^\n]*");
}

TEST_F(FailureTest, AConnectionThatIsResetShowsTheErrorPage) {
  HttpAnswer reset;
  reset.reset = true;
  server.set("/reset", reset);
  expectErrorPage(server.url("/reset"), "[0-9]+\\] = [^\n]+");
}

TEST_F(FailureTest, AnUnknownHostShowsTheErrorPage) {
  expectErrorPage("http://nowhere.invalid/home", "[0-9]+\\] = [^\n]*nowhere.invalid[^\n]*");
}

TEST_F(FailureTest, ABadCertificateShowsTheErrorPage) {
  const UntrustedServer untrusted(station);
  expectErrorPage(untrusted.url("/home"), "[0-9]+\\] = [^\n]*certificate[^\n]*");
}

TEST_F(FailureTest, AServerThatIsSilentForFiveSecondsShowsTheErrorPage) {
  server.setSilent("/silent");
  expectErrorPage(server.url("/silent"), "-1001\\] = The request timed out.");
}

TEST_F(FailureTest, AnAddressWithMarksOfAPageShowsAsItIs) {
  const RefusingPort nobody;
  expectErrorPage(nobody.url("/?a=1&copy=2&lt"), "[0-9]+\\] = [^\n]+");
}

TEST_F(FailureTest, OfTwoAddressesAtOnceTheLastOneShows) {
  server.set("/first", HttpAnswer{page(kBlue)});
  server.set("/last", HttpAnswer{page(kGreen)});
  startAtHome();
  openAtOnce({server.url("/first"), server.url("/last")});
  EXPECT_TRUE(station.shows(kGreen));
  settle();
  EXPECT_TRUE(station.shows(kGreen));
  EXPECT_EQ(station.storedText("prefRunningUrlString"), server.url("/last"));
  EXPECT_THAT(station.log(), Not(HasSubstr(kErrorPageShown)));
}

TEST_F(FailureTest, TheFailureOfTheFirstOfTwoAddressesAtOnceReplacesNothing) {
  const RefusingPort nobody;
  server.set("/last", HttpAnswer{page(kGreen)});
  startAtHome();
  openAtOnce({nobody.url("/first"), server.url("/last")});
  EXPECT_TRUE(station.shows(kGreen));
  settle();
  EXPECT_TRUE(station.shows(kGreen)) << "the failure of the first took the place of the last";
  EXPECT_EQ(station.storedText("prefRunningUrlString"), server.url("/last"));
}

TEST_F(FailureTest, ASilentFirstOfTwoAddressesAtOnceIsGivenUp) {
  server.setSilent("/first");
  server.set("/last", HttpAnswer{page(kGreen)});
  startAtHome();
  openAtOnce({server.url("/first"), server.url("/last")});
  EXPECT_TRUE(station.shows(kGreen));
  settle();
  EXPECT_TRUE(station.shows(kGreen));
  EXPECT_THAT(station.log(), Not(HasSubstr(kErrorPageShown)));
}

TEST_F(FailureTest, AnAddressThatIsOpenedWhileAnErrorPageComesShows) {
  const RefusingPort nobody;
  server.set("/next", HttpAnswer{page(kGreen)});
  station.prefer("prefServerAddress", nobody.url("/home"));
  station.start();
  ASSERT_TRUE(station.logs(kFailure));
  open(server.url("/next"));
  EXPECT_TRUE(station.shows(kGreen));
  settle();
  EXPECT_TRUE(station.shows(kGreen));
}

TEST_F(FailureTest, AnAddressThatIsOpenedOverAnErrorPageShows) {
  const RefusingPort nobody;
  server.set("/next", HttpAnswer{page(kGreen)});
  station.prefer("prefServerAddress", nobody.url("/home"));
  station.start();
  ASSERT_TRUE(station.logs(kErrorPageShown));
  open(server.url("/next"));
  EXPECT_TRUE(station.shows(kGreen));
  settle();
  EXPECT_TRUE(station.shows(kGreen));
}

TEST_F(FailureTest, LenientKiosksShowNoErrorPage) {
  const RefusingPort nobody;
  startAtHome();
  station.prefer("prefLenientWithFailProvisionalNavigation", true);
  station.prefer("prefServerAddress", nobody.url("/home"));
  ASSERT_TRUE(station.press("Home"));
  ASSERT_TRUE(station.logs("...is LENIENT... returning..."));
  settle();
  EXPECT_TRUE(station.shows(kRed));
  EXPECT_THAT(station.log(), Not(HasSubstr(kErrorPageShown)));
}

TEST_F(FailureTest, AProcessOfThePageThatEndsLeavesTheKioskUsable) {
  startAtHome();
  ASSERT_GT(killPages(station.kiosk().pid()), 0);
  ASSERT_TRUE(station.logs("MyWebViewWindowController-webViewWebContentProcessDidTerminate:..."));
  EXPECT_TRUE(station.kiosk().isRunning());
  EXPECT_EQ(server.count("/home"), 1) << "something was loaded without being asked for";
  ASSERT_TRUE(station.press("Home"));
  EXPECT_TRUE(waitUntil([this] { return server.count("/home") == 2; }));
  EXPECT_TRUE(station.shows(kRed));
}

TEST_F(FailureTest, TheEnginesNetworkProcessThatEndsLeavesThePageAndTheKioskUsable) {
  startAtHome();
  ASSERT_EQ(killNetwork(station.kiosk().pid()), 1);
  settle();
  EXPECT_TRUE(station.shows(kRed));
  ASSERT_TRUE(station.press("Home"));
  EXPECT_TRUE(waitUntil([this] { return server.count("/home") == 2; }));
  EXPECT_TRUE(station.shows(kRed));
  EXPECT_THAT(station.log(), Not(HasSubstr(kErrorPageShown)));
}

TEST_F(FailureTest, TheEnginesNetworkProcessThatEndsWhileAPageComesLeavesTheErrorPage) {
  server.setSilent("/silent");
  startAtHome();
  station.prefer("prefServerAddress", server.url("/silent"));
  ASSERT_TRUE(station.press("Home"));
  ASSERT_TRUE(waitUntil([this] { return server.count("/silent") == 1; }));
  ASSERT_EQ(killNetwork(station.kiosk().pid()), 1);
  ASSERT_TRUE(station.logs(kErrorPageShown));
  station.prefer("prefServerAddress", server.url("/home"));
  ASSERT_TRUE(station.press("Home"));
  EXPECT_TRUE(waitUntil([this] { return server.count("/home") == 2; }));
  EXPECT_TRUE(station.shows(kRed));
}

TEST_F(FailureTest, APageWhoseScriptNeverEndsGivesWayToTheHomePage) {
  // It is seen before it stands still, and stands still from the moment in which it asks.
  server.set(
      "/endless",
      HttpAnswer{page(kGreen,
                      "<script>setTimeout(() => { const asked = new XMLHttpRequest();"
                      " asked.open('GET', '/begins', false); asked.send(); for (;;); }, 500)</script>")});
  startAtHome();
  openAtOnce({server.url("/endless")});
  ASSERT_TRUE(station.shows(kGreen));
  ASSERT_TRUE(waitUntil([this] { return server.count("/begins") == 1; }));
  ASSERT_TRUE(station.press("Home"));
  ASSERT_TRUE(station.logs("the web process does not answer and is ended", 2 * kPatience));
  EXPECT_TRUE(station.shows(kRed));
  EXPECT_THAT(station.log(), Not(HasSubstr(kErrorPageShown)));
}

TEST_F(FailureTest, TheIndicatorMovesWhileAPageComes) {
  const auto bar = [this] {
    const Area frame = station.screen().frame(station.window());
    const auto view = station.control("group", "Page");
    const Area web = view ? view->extents() : Area{};
    return Area{frame.x + web.x, frame.y + web.y, web.width, 4};
  };
  server.setSilent("/silent");
  startAtHome();
  const Area strip = bar();
  ASSERT_GT(strip.width, 0);
  EXPECT_TRUE(waitUntil([&] { return station.screen().otherThan(kRed, strip) == 0; }));
  station.prefer("prefServerAddress", server.url("/silent"));
  ASSERT_TRUE(station.press("Home"));
  EXPECT_TRUE(waitUntil([&] { return station.screen().otherThan(kRed, strip) > strip.width; }));
  // Slim: what is below shows the page.
  const Area below{strip.x, strip.y + 8, strip.width, 40};
  EXPECT_EQ(station.screen().otherThan(kRed, below), 0);
  ASSERT_TRUE(station.logs(kFailure));
  EXPECT_TRUE(waitUntil([&] { return station.screen().otherThan({255, 255, 255}, strip) == 0; }));
}

}  // namespace station

#include <cstdlib>

#include <gmock/gmock.h>

#include "station/station.h"

// Pages, the commands that load them, and what becomes of those that do not come.

namespace station {

using ::testing::HasSubstr;

namespace {

constexpr const char* kProvisionalFailure = "webView:didFailProvisionalNavigation:withError:...error = ";
constexpr const char* kStart = "webView:didStartProvisionalNavigation:";

// The time at which a line was written, in milliseconds of its day: "2026-11-21 05:21:46.049 …".
long timeOf(const std::string& line) {
  const auto number = [&line](std::size_t at, std::size_t length) {
    return std::strtol(line.substr(at, length).c_str(), nullptr, 10);
  };
  return ((number(11, 2) * 60 + number(14, 2)) * 60 + number(17, 2)) * 1000 + number(20, 3);
}

}  // namespace

class LoadingTest : public StationTest {
 protected:
  // The first line of the log with the text; empty when there is none.
  std::string lineWith(const std::string& text) const {
    const std::string log = station.log();
    const auto at = log.find(text);
    if (at == std::string::npos) {
      return "";
    }
    const auto begin = log.rfind('\n', at) + 1;
    return log.substr(begin, log.find('\n', at) - begin);
  }
};

TEST_F(LoadingTest, GoAsksTheServerForAPageThatMayBeCached) {
  server.set("/home", [this](const HttpRequest&) {
    return HttpAnswer{page(server.count("/home") == 1 ? kRed : kGreen), {{"Cache-Control", "max-age=3600"}}};
  });
  startAtHome();
  ASSERT_TRUE(station.press("Go"));
  EXPECT_TRUE(station.shows(kGreen));
  const auto requests = server.requests("/home");
  ASSERT_EQ(requests.size(), 2U);
  EXPECT_EQ(requests[1].header("Glimmerpad-Scan"), "no");
}

TEST_F(LoadingTest, GivesASilentServerUpAfterFiveSeconds) {
  server.setSilent("/silent");
  station.prefer("prefServerAddress", server.url("/silent"));
  station.start();
  ASSERT_TRUE(station.logs(kProvisionalFailure));
  const std::string failure = lineWith(kProvisionalFailure);
  EXPECT_THAT(failure, HasSubstr("-1001"));
  EXPECT_THAT(failure, HasSubstr(server.url("/silent")));
  constexpr long day = 24L * 60 * 60 * 1000;
  const long waited = (timeOf(failure) - timeOf(lineWith(kStart)) + day) % day;
  // The line of the start is written a little after the start.
  EXPECT_GE(waited, 4800);
  EXPECT_LT(waited, 10'000);
  EXPECT_EQ(server.count("/silent"), 1);
}

TEST_F(LoadingTest, TellsOfAServerThatIsNotThere) {
  const RefusingPort nobody;
  station.prefer("prefServerAddress", nobody.url("/home"));
  station.start();
  ASSERT_TRUE(station.logs(kProvisionalFailure));
  EXPECT_THAT(lineWith(kProvisionalFailure), HasSubstr(nobody.url("/home")));
}

TEST_F(LoadingTest, TellsOfAPortThatTheEngineRefuses) {
  station.prefer("prefServerAddress", "http://127.0.0.1:1/");
  station.start();
  ASSERT_TRUE(station.logs(kProvisionalFailure));
  EXPECT_THAT(lineWith(kProvisionalFailure), HasSubstr("http://127.0.0.1:1/"));
}

TEST_F(LoadingTest, ComesBackFromAFailure) {
  const RefusingPort nobody;
  station.prefer("prefServerAddress", nobody.url("/home"));
  station.start();
  ASSERT_TRUE(station.logs(kProvisionalFailure));
  station.prefer("prefServerAddress", server.url("/home"));
  ASSERT_TRUE(station.press("Home"));
  EXPECT_TRUE(station.shows(kRed));
}

TEST_F(LoadingTest, ShowsThatAnAddressIsInvalid) {
  // A reader who takes what looks right would ask this server.
  const std::string invalid = server.url("") + "x/home";
  station.prefer("prefServerAddress", invalid);
  station.start();
  ASSERT_TRUE(waitUntil([this] { return station.window() != 0; }));
  // Dark on white in the upper part of the page: neither all white nor all of the window's colour before the
  // page comes.
  EXPECT_TRUE(waitUntil([this] {
    const Area frame = station.screen().frame(station.window());
    const Area top{frame.x, frame.y + frame.height - 720, 900, 120};
    const int dark = station.screen().otherThan({255, 255, 255}, top);
    return dark > 100 && dark < top.width * top.height / 2;
  })) << "the page has no text";
  EXPECT_TRUE(server.requests().empty());

  station.prefer("prefServerAddress", server.url("/home"));
  ASSERT_TRUE(station.press("Home"));
  EXPECT_TRUE(station.shows(kRed));
}

TEST_F(LoadingTest, TheTextInTheAddressFieldIsNotAnAddress) {
  startAtHome();
  const auto field = station.control("text box", "Address");
  ASSERT_TRUE(field);
  ASSERT_TRUE(station.clickOn(*field));
  ASSERT_TRUE(waitUntil([&] { return field->isFocused(); }));
  station.key("ctrl+a");
  station.type(server.url("/other"));
  ASSERT_TRUE(waitUntil([&] { return field->text() == server.url("/other"); })) << field->text();
  station.key("Return");
  EXPECT_TRUE(waitUntil([&] { return server.count("/home") == 2; }));
  ASSERT_TRUE(station.logs("ibToolbarTextField:"));
  EXPECT_EQ(station.stop(), "exit status 0");
  EXPECT_EQ(server.count("/home"), 2);
  EXPECT_EQ(server.count("/other"), 0);
}

class NavigationTest : public StationTest {
 protected:
  // From the red home page to the green next one, as a customer does.
  void followLink() {
    const std::string link = "<a href='/next' style='position:fixed;inset:0'>Next</a>";
    server.set("/home", HttpAnswer{page(kRed, link)});
    server.set("/next", HttpAnswer{page(kGreen)});
    startAtHome();
    const Area frame = station.screen().frame(station.window());
    station.click(frame.x + frame.width / 2, frame.y + frame.height / 2);
    ASSERT_TRUE(station.shows(kGreen)) << "the link leads nowhere";
    ASSERT_EQ(server.count("/next"), 1);
  }
};

TEST_F(NavigationTest, OnlyTheKiosksOwnRequestsHaveTheScanHeader) {
  followLink();
  EXPECT_EQ(server.requests("/home")[0].header("Glimmerpad-Scan"), "no");
  EXPECT_EQ(server.requests("/next")[0].header("Glimmerpad-Scan"), std::nullopt);
}

TEST_F(NavigationTest, GoesBackAndForward) {
  followLink();
  ASSERT_TRUE(station.press("Back"));
  EXPECT_TRUE(station.shows(kRed));
  ASSERT_TRUE(station.press("Forward"));
  EXPECT_TRUE(station.shows(kGreen));
}

TEST_F(NavigationTest, GoesHome) {
  followLink();
  ASSERT_TRUE(station.press("Home"));
  EXPECT_TRUE(station.shows(kRed));
  EXPECT_EQ(server.count("/home"), 2);
}

TEST_F(NavigationTest, ReloadLoadsTheRunningAddress) {
  followLink();
  station.key("ctrl+r");
  EXPECT_TRUE(station.shows(kRed));
  EXPECT_EQ(station.stop(), "exit status 0");
  EXPECT_EQ(server.count("/home"), 2);
  EXPECT_EQ(server.count("/next"), 1);
  EXPECT_EQ(station.storedText("prefRunningUrlString"), server.url("/home"));
}

}  // namespace station

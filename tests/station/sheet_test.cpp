#include <gmock/gmock.h>

#include "station/station.h"

// Sheets and what is behind them.

namespace station {

namespace {

// The control with the keyboard, if it is below this one.
bool hasFocusIn(const Accessible& top) {
  bool found = false;
  top.walk([&found](const Accessible& item, int) { found = found || item.isFocused(); });
  return found;
}

}  // namespace

class SheetTest : public StationTest {
 protected:
  void SetUp() override {
    StationTest::SetUp();
    server.set("/home", HttpAnswer{page(kRed,
                                        "<input autofocus><script>addEventListener('keydown', event => "
                                        "fetch('/key?' + event.key))</script>")});
    server.set("/key", HttpAnswer{"ok"});
  }
  bool heardKey(const std::string& name) {
    for (const HttpRequest& request : server.requests("/key")) {
      if (request.target == "/key?" + name) {
        return true;
      }
    }
    return false;
  }
  // How often the browser asked for the page; the settings' test of the connection does not count.
  int loads() {
    int count = 0;
    for (const HttpRequest& request : server.requests("/home")) {
      count += request.header("Glimmerpad-Scan") ? 1 : 0;
    }
    return count;
  }
  bool openSettings() {
    return station.press("Settings") &&
           waitUntil([this] { return station.control("dialog", "Settings").has_value(); });
  }
};

TEST_F(SheetTest, SettingsKeepTheKeyboardToThemselves) {
  startAtHome();
  station.key("F8");
  ASSERT_TRUE(waitUntil([this] { return heardKey("F8"); })) << "the page has no keyboard to lose";
  ASSERT_TRUE(openSettings());
  const auto settings = station.control("dialog", "Settings");
  ASSERT_TRUE(waitUntil([&] { return hasFocusIn(*settings); }));
  for (int press = 0; press < 12; ++press) {
    station.key("Tab");
    EXPECT_TRUE(hasFocusIn(*settings)) << "the keyboard left the sheet with Tab number " << press + 1;
  }
  station.key("F9");
  const auto pageView = station.control("group", "Page");
  ASSERT_TRUE(pageView);
  EXPECT_FALSE(pageView->isSensitive());
  const auto home = station.control("button", "Home");
  ASSERT_TRUE(home);
  EXPECT_FALSE(home->isSensitive());

  // Its own button, not the title bar's.
  const auto close = settings->find("button", "Close");
  ASSERT_TRUE(close);
  ASSERT_TRUE(close->press());
  ASSERT_TRUE(station.logs("User Entered: 1"));
  EXPECT_TRUE(waitUntil([this] { return !station.control("dialog", "Settings"); }));
  EXPECT_TRUE(station.control("group", "Page")->isSensitive());
  // The page has the keyboard again, and has heard nothing meanwhile.
  station.key("F4");
  EXPECT_TRUE(waitUntil([this] { return heardKey("F4"); }));
  EXPECT_FALSE(heardKey("F9"));
  EXPECT_FALSE(heardKey("Tab"));
}

TEST_F(SheetTest, SettingsOpenOnceAndAgain) {
  startAtHome();
  for (int time = 0; time < 2; ++time) {
    ASSERT_TRUE(openSettings());
    ASSERT_TRUE(station.control("dialog", "Settings")->find("button", "Close")->press());
    ASSERT_TRUE(waitUntil([this] { return !station.control("dialog", "Settings"); }));
  }
}

TEST_F(SheetTest, TheKeysOfTheMenuAreOffMeanwhile) {
  startAtHome();
  ASSERT_TRUE(openSettings());
  station.key("ctrl+r");
  ASSERT_TRUE(station.control("dialog", "Settings")->find("button", "Close")->press());
  ASSERT_TRUE(waitUntil([this] { return !station.control("dialog", "Settings"); }));
  station.key("ctrl+r");
  ASSERT_TRUE(waitUntil([this] { return loads() == 2; }));
  EXPECT_EQ(station.stop(), "exit status 0");
  EXPECT_EQ(loads(), 2);
}

TEST_F(SheetTest, APagesAlertWaitsForItsButton) {
  server.set("/home", HttpAnswer{page(kRed,
                                      "<script>addEventListener('keydown', () => {"
                                      "alert('Take your card'); fetch('/taken')})</script>")});
  startAtHome();
  station.key("F8");
  ASSERT_TRUE(waitUntil([this] { return station.control("alert dialog", "Take your card").has_value(); }));
  EXPECT_EQ(server.count("/taken"), 0);
  ASSERT_TRUE(station.press("OK"));
  EXPECT_TRUE(waitUntil([this] { return server.count("/taken") == 1; }));
  EXPECT_FALSE(station.control("alert dialog", "Take your card"));
}

TEST_F(SheetTest, EscapeAnswersAPagesQuestionWithNo) {
  server.set("/home", HttpAnswer{page(kRed,
                                      "<script>addEventListener('keydown', () => "
                                      "fetch('/answer?' + confirm('Leave?')))</script>")});
  startAtHome();
  station.key("F8");
  ASSERT_TRUE(waitUntil([this] { return station.control("alert dialog", "Leave?").has_value(); }));
  station.key("Escape");
  ASSERT_TRUE(waitUntil([this] { return server.count("/answer") == 1; }));
  EXPECT_EQ(server.requests("/answer")[0].target, "/answer?false");
}

TEST_F(SheetTest, APagesQuestionIsAnsweredByItsButtons) {
  server.set("/home", HttpAnswer{page(kRed,
                                      "<script>addEventListener('keydown', () => "
                                      "fetch('/answer?' + confirm('Print a receipt?')))</script>")});
  startAtHome();
  int answers = 0;
  for (const auto& [button, answer] : {std::pair("OK", "true"), std::pair("Cancel", "false")}) {
    station.key("F8");
    ASSERT_TRUE(
        waitUntil([this] { return station.control("alert dialog", "Print a receipt?").has_value(); }));
    ASSERT_TRUE(station.press(button));
    ++answers;
    ASSERT_TRUE(waitUntil([&] { return server.count("/answer") == answers; }));
    EXPECT_EQ(server.requests("/answer").back().target, std::string("/answer?") + answer);
    EXPECT_FALSE(station.control("alert dialog", "Print a receipt?"));
  }
}

TEST_F(SheetTest, APagesPromptTakesWhatIsWritten) {
  server.set("/home", HttpAnswer{page(kRed,
                                      "<script>addEventListener('keydown', () => "
                                      "fetch('/answer?' + prompt('Your name?', 'Max')))</script>")});
  startAtHome();
  station.key("F8");
  ASSERT_TRUE(waitUntil([this] { return station.control("alert dialog", "Your name?").has_value(); }));
  // The field has the keyboard, and the text that it came with is replaced.
  station.key("ctrl+a");
  station.type("Eva");
  ASSERT_TRUE(station.press("OK"));
  ASSERT_TRUE(waitUntil([this] { return server.count("/answer") == 1; }));
  EXPECT_EQ(server.requests("/answer").back().target, "/answer?Eva");

  station.key("F8");
  ASSERT_TRUE(waitUntil([this] { return station.control("alert dialog", "Your name?").has_value(); }));
  ASSERT_TRUE(station.press("Cancel"));
  ASSERT_TRUE(waitUntil([this] { return server.count("/answer") == 2; }));
  EXPECT_EQ(server.requests("/answer").back().target, "/answer?null");
}

// A page that is all link, to be clicked anywhere.
TEST_F(SheetTest, ALinkToANewWindowStaysInTheWindow) {
  server.set("/home", HttpAnswer{page(
                          kRed, "<a href='/next' target='_blank' style='position:fixed;inset:0'>Next</a>")});
  server.set("/next", HttpAnswer{page(kGreen)});
  startAtHome();
  const Area frame = station.screen().frame(station.window());
  station.click(frame.x + frame.width / 2, frame.y + frame.height / 2);
  EXPECT_TRUE(station.shows(kGreen));
  EXPECT_EQ(station.screen().windowsOf(station.kiosk().pid()).size(), 1U);
  EXPECT_EQ(server.count("/next"), 1);
}

TEST_F(SheetTest, ThePageHasNoContextMenu) {
  server.set("/home", HttpAnswer{page(kRed,
                                      "<script>addEventListener('contextmenu', () => fetch('/asked'))"
                                      "</script>")});
  server.set("/asked", HttpAnswer{"ok"});
  startAtHome();
  const Area frame = station.screen().frame(station.window());
  const Area around{frame.x + frame.width / 2 - 200, frame.y + frame.height / 2 - 150, 400, 300};
  station.click(around.x + 200, around.y + 150, 3);
  ASSERT_TRUE(waitUntil([this] { return server.count("/asked") == 1; }));
  ASSERT_TRUE(openSettings());
  ASSERT_TRUE(station.control("dialog", "Settings")->find("button", "Close")->press());
  ASSERT_TRUE(waitUntil([this] { return !station.control("dialog", "Settings"); }));
  EXPECT_TRUE(waitUntil([&] { return station.screen().otherThan(kRed, around) == 0; }));
  EXPECT_EQ(station.screen().windowsOf(station.kiosk().pid()).size(), 1U);
}

}  // namespace station

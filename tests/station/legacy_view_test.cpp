#include <gmock/gmock.h>

#include "station/listener.h"
#include "station/process_tree.h"
#include "station/station.h"

// The kiosk while its legacy view is shown.

namespace station {

using ::testing::HasSubstr;
using ::testing::Not;

namespace {

constexpr const char* kOrder = "/registrationorders/photostationdata";

std::optional<std::string> valueOf(const platform::DistributedNotification& message, const std::string& key) {
  for (const auto& [name, value] : message.userInfo) {
    if (name == key) {
      return value;
    }
  }
  return std::nullopt;
}

// The whole page leads on with a click.
std::string link(const std::string& target, const std::string& attributes = "") {
  return "<a href='" + target + "' " + attributes + " style='position:fixed;inset:0'>Next</a>";
}

}  // namespace

class LegacyViewStationTest : public StationTest {
 protected:
  void SetUp() override {
    StationTest::SetUp();
    listener = std::make_unique<Listener>(station.environment.at("DBUS_SESSION_BUS_ADDRESS"));
  }
  // Waits until the home page has come for the second time, so that what follows is the person's doing.
  void startWithLegacyView() {
    station.startWith({LUMO_LEGACY_KIOSK});
    ASSERT_TRUE(waitUntil([this] { return finishedLoads() >= 2; }));
    ASSERT_TRUE(station.shows(kRed)) << station.sight();
  }
  int finishedLoads() const {
    const std::string text = "webView:didFinishLoadForFrame:....url.path = /home\n";
    const std::string log = station.log();
    int count = 0;
    for (auto at = log.find(text); at != std::string::npos; at = log.find(text, at + 1)) {
      ++count;
    }
    return count;
  }
  void clickThePage() {
    const Area frame = station.screen().frame(station.window());
    station.click(frame.x + frame.width / 2, frame.y + frame.height / 2);
  }
  // The page has gone and something dark on white has come in its place.
  bool showsAnErrorPage() {
    return waitUntil([this] {
      const Area frame = station.screen().frame(station.window());
      const Area top{frame.x, frame.y + frame.height - 720, 600, 60};
      const int dark = station.screen().otherThan({255, 255, 255}, top);
      return dark > 100 && dark < top.width * top.height / 2;
    });
  }
  // The one message of a kiosk that has come to its end.
  platform::DistributedNotification released() {
    EXPECT_EQ(station.kiosk().end(), "exit status 0");
    const auto heard = listener->heardToTheEnd();
    EXPECT_EQ(heard.size(), 1U);
    return heard.empty() ? platform::DistributedNotification() : heard.front();
  }

  std::unique_ptr<Listener> listener;
};

TEST_F(LegacyViewStationTest, TheVeryFirstPageIsLoadedTwice) {
  server.set("/next", HttpAnswer{page(kGreen)});
  server.set("/home", HttpAnswer{page(kRed, link("/next"))});
  startWithLegacyView();
  EXPECT_EQ(server.count("/home"), 2);
  for (const HttpRequest& request : server.requests("/home")) {
    EXPECT_EQ(request.header("Glimmerpad-Scan"), "no");
  }
  clickThePage();
  EXPECT_TRUE(station.shows(kGreen)) << "the view does not take the pointer";
  ASSERT_TRUE(station.press("Home"));
  EXPECT_TRUE(station.shows(kRed));
  EXPECT_EQ(station.stop(), "exit status 0");
  EXPECT_EQ(server.count("/next"), 1);
  EXPECT_EQ(server.count("/home"), 3);
}

TEST_F(LegacyViewStationTest, TheViewCoversThePageWhateverTheWindowDoes) {
  startWithLegacyView();
  const auto isCovered = [this] {
    const auto view = station.control("group", "Page");
    const Area frame = station.screen().frame(station.window());
    const Area web = view ? view->extents() : Area{};
    // Below the window's bars the view reaches all three edges.
    return web.width == frame.width && web.y + web.height == frame.height && web.y < 200 &&
           station.screen().otherThan(
               kRed, {frame.x + 8, frame.y + web.y + 8, web.width - 16, web.height - 16}) == 0;
  };
  EXPECT_TRUE(waitUntil(isCovered));
  const Area before = station.screen().frame(station.window());
  ASSERT_EQ(station.use({"xdotool", "windowsize", std::to_string(station.window()), "900", "700"}),
            "exit status 0");
  ASSERT_TRUE(waitUntil([&] { return !(station.screen().frame(station.window()) == before); }));
  EXPECT_TRUE(waitUntil(isCovered));
}

TEST_F(LegacyViewStationTest, ARouteReleasesWhenItsPageHasLoaded) {
  server.set(kOrder,
             HttpAnswer{page(kGreen), {{"lumo-reg-code", "A-7"}, {"lumo-reg-ordertext", "2+prints"}}});
  server.set("/home", HttpAnswer{page(kRed, link(std::string(kOrder) + "?code=A-7"))});
  startWithLegacyView();
  clickThePage();
  const auto message = released();
  EXPECT_EQ(valueOf(message, "status"), "registered");
  EXPECT_EQ(valueOf(message, "LUMO-REG-CODE"), "A-7");
  EXPECT_EQ(valueOf(message, "LUMO-REG-ORDERTEXT"), "2 prints");
  // The fields are those of the answer alone.
  EXPECT_EQ(valueOf(message, "respurlstring"), std::nullopt);
  EXPECT_EQ(server.count(kOrder), 1);
}

TEST_F(LegacyViewStationTest, ARouteOfAFrameInsideThePageReleases) {
  server.set("/gradorders/gowndata", HttpAnswer{"gowns", {{"lumo-reg-code", "G-1"}}});
  server.set("/frames", HttpAnswer{page(kGreen, "<iframe src=/gradorders/gowndata></iframe>")});
  server.set("/home", HttpAnswer{page(kRed, link("/frames"))});
  startWithLegacyView();
  clickThePage();
  const auto message = released();
  EXPECT_EQ(valueOf(message, "status"), "registered");
  EXPECT_EQ(valueOf(message, "LUMO-REG-CODE"), "G-1");
  EXPECT_THAT(station.log(), HasSubstr("webView:didFinishLoadForFrame:-> closing window for path = "
                                       "/gradorders/gowndata\n"));
}

TEST_F(LegacyViewStationTest, ASavedRegistrationReleases) {
  server.set("/registration/save", HttpAnswer{page(kGreen)});
  server.set("/home", HttpAnswer{page(kRed, link("/registration/save"))});
  startWithLegacyView();
  clickThePage();
  EXPECT_EQ(valueOf(released(), "status"), "registered");
}

TEST_F(LegacyViewStationTest, TheCloseHeaderClosesTheWindowAndTheKioskKeepsRunning) {
  server.set("/done", HttpAnswer{page(kGreen), {{"Glimmerpad-Plus-Scanner", "Close"}}});
  server.set("/home", HttpAnswer{page(kRed, link("/done"))});
  startWithLegacyView();
  clickThePage();
  EXPECT_TRUE(waitUntil([this] { return station.screen().windowsOf(station.kiosk().pid()).empty(); }));
  EXPECT_TRUE(station.logs("Found Glimmerpad-Plus-Scanner = Close\n"));
  // Still there for other programs, and nothing has been told.
  EXPECT_EQ(station.use({LUMO_CTL, "status"}), "exit status 0");
  EXPECT_TRUE(station.kiosk().isRunning());
  EXPECT_TRUE(listener->heard().empty());
  EXPECT_THAT(station.log(), Not(HasSubstr("windowShouldClose:")));
  EXPECT_EQ(station.stop(), "exit status 0");
  const auto heard = listener->heardToTheEnd();
  ASSERT_EQ(heard.size(), 1U);
  EXPECT_EQ(valueOf(heard[0], "status"), "closedwindow");
}

TEST_F(LegacyViewStationTest, EveryFailureShowsTheErrorPage) {
  HttpAnswer reset;
  reset.reset = true;
  // The usual view is silent about this one, and this kiosk about all of them.
  station.prefer("prefLenientWithFailProvisionalNavigation", true);
  server.set("/registration/save", reset);
  server.set("/home", HttpAnswer{page(kRed, link("/registration/save"))});
  startWithLegacyView();
  clickThePage();
  EXPECT_TRUE(station.logs("webView:didFailProvisionalLoadWithError:forFrame:....ERROR = "));
  EXPECT_TRUE(showsAnErrorPage());
  ASSERT_TRUE(station.press("Home"));
  EXPECT_TRUE(station.shows(kRed)) << "there is no way back from the error page";
}

TEST_F(LegacyViewStationTest, AFrameInsideThePageThatFailsShowsTheErrorPage) {
  HttpAnswer reset;
  reset.reset = true;
  server.set("/inner", reset);
  server.set("/frames", HttpAnswer{page(kGreen, "<iframe src=/inner></iframe>")});
  server.set("/home", HttpAnswer{page(kRed, link("/frames"))});
  startWithLegacyView();
  clickThePage();
  EXPECT_TRUE(station.logs("webView:didFailProvisionalLoadWithError:forFrame:....ERROR = "));
  EXPECT_TRUE(showsAnErrorPage());
}

TEST_F(LegacyViewStationTest, AServerThatIsNotThereShowsTheErrorPageAndTheSettings) {
  const RefusingPort nobody;
  station.prefer("prefShowPrefPanelWhenUrlLoadFailed", true);
  station.prefer("prefServerAddress", nobody.url("/home"));
  station.startWith({LUMO_LEGACY_KIOSK});
  EXPECT_TRUE(waitUntil([this] { return station.control("dialog", "Settings").has_value(); }));
  EXPECT_TRUE(station.logs("webView:didFailProvisionalLoadWithError:forFrame:....ERROR = "));
  // The error page is no first page that would be loaded again.
  EXPECT_THAT(station.log(), Not(HasSubstr("url = about:blank")));
}

TEST_F(LegacyViewStationTest, ANewWindowIsASecondKioskWindowAndThePageOpensInTheFirst) {
  server.set("/popup", HttpAnswer{page(kGreen)});
  server.set("/home", HttpAnswer{page(kRed, link("/popup", "target=_blank"))});
  startWithLegacyView();
  const WindowId first = station.window();
  clickThePage();
  EXPECT_TRUE(waitUntil([this] { return station.screen().windowsOf(station.kiosk().pid()).size() == 2; }));
  EXPECT_TRUE(waitUntil([this] { return server.count("/popup") == 1; }));
  // The new one is in front; brought to the front, the first one has the page.
  EXPECT_NE(station.window(), first);
  station.screen().activate(first);
  EXPECT_TRUE(waitUntil([&] { return station.screen().windowsOf(station.kiosk().pid()).back() == first; }));
  const Area frame = station.screen().frame(first);
  EXPECT_TRUE(waitUntil(
      [&] { return station.screen().at(frame.x + frame.width / 2, frame.y + frame.height / 2) == kGreen; }));
  EXPECT_THAT(station.log(), HasSubstr("webView:createWebViewWithRequest:....request = "));
  EXPECT_EQ(station.stop(), "exit status 0");
}

TEST_F(LegacyViewStationTest, AProcessOfThePageThatEndsLeavesTheKioskUsable) {
  startWithLegacyView();
  ASSERT_GT(killPages(station.kiosk().pid()), 0);
  ASSERT_TRUE(station.logs("MyWebViewWindowController-webViewWebContentProcessDidTerminate:..."));
  ASSERT_TRUE(station.press("Home"));
  EXPECT_TRUE(station.shows(kRed));
}

}  // namespace station

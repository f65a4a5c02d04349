#include <gmock/gmock.h>

#include "station/listener.h"
#include "station/station.h"

// What the photo server's headers and paths make the kiosk do.

namespace station {

using ::testing::HasSubstr;
using ::testing::Not;

namespace {

// What the log says when a page that the kiosk itself has made is shown.
constexpr const char* kErrorPageShown = "webView:didFinishNavigation:...webView.URL = (null)\n";
constexpr const char* kOrder = "/registrationorders/photostationdata";

std::optional<std::string> valueOf(const platform::DistributedNotification& message, const std::string& key) {
  for (const auto& [name, value] : message.userInfo) {
    if (name == key) {
      return value;
    }
  }
  return std::nullopt;
}

std::string script(const std::string& text) {
  return "<script>addEventListener('load', () => setTimeout(() => {" + text + "}, 50))</script>";
}

}  // namespace

// A kiosk on a server whose home page leads on by itself, and a program that hears what the kiosk tells.
class RoutesTest : public StationTest {
 protected:
  void SetUp() override {
    StationTest::SetUp();
    listener = std::make_unique<Listener>(station.environment.at("DBUS_SESSION_BUS_ADDRESS"));
    // A page that is never to be seen.
    order.body = page(kGreen, "<script>fetch('/rendered')</script>");
    order.headers = {{"lumo-reg-code", "A-7"}, {"lumo-reg-name", "Clara"}};
  }
  // The home page does `text` when it has loaded.
  void leadOn(const std::string& text) { server.set("/home", HttpAnswer{page(kRed, script(text))}); }
  // Plays the kiosk to its end and gives the one message that it sent.
  platform::DistributedNotification released() {
    station.start();
    EXPECT_EQ(station.kiosk().end(), "exit status 0");
    const auto heard = listener->heardToTheEnd();
    EXPECT_EQ(heard.size(), 1U);
    EXPECT_EQ(server.count("/rendered"), 0);
    return heard.empty() ? platform::DistributedNotification() : heard.front();
  }

  HttpAnswer order;
  std::unique_ptr<Listener> listener;
};

TEST_F(RoutesTest, AReleasePathByALinkReleasesOnceAndIsNotShown) {
  server.set(kOrder, order);
  leadOn("location.href = '" + std::string(kOrder) + "?code=A-7'");
  const auto message = released();
  EXPECT_EQ(message.name, "lumoXNotification");
  EXPECT_EQ(valueOf(message, "status"), "registered");
  EXPECT_EQ(valueOf(message, "LUMO-REG-CODE"), "A-7");
  EXPECT_EQ(valueOf(message, "LUMO-REG-NAME"), "Clara");
  EXPECT_EQ(valueOf(message, "respurlstring"), server.url(std::string(kOrder) + "?code=A-7"));
  EXPECT_EQ(valueOf(message, "urlstring"), server.url("/home"));
  EXPECT_EQ(server.count(kOrder), 1);
  EXPECT_THAT(station.log(), Not(HasSubstr(kErrorPageShown)));
}

TEST_F(RoutesTest, AReleasePathByARedirectReleasesOnceAndIsNotShown) {
  server.set(kOrder, order);
  server.set("/done", HttpAnswer{"", {{"Location", std::string(kOrder) + "?code=A-7"}}, 302});
  leadOn("location.href = '/done'");
  const auto message = released();
  EXPECT_EQ(valueOf(message, "LUMO-REG-CODE"), "A-7");
  EXPECT_EQ(valueOf(message, "respurlstring"), server.url(std::string(kOrder) + "?code=A-7"));
  EXPECT_EQ(server.count(kOrder), 1);
}

TEST_F(RoutesTest, AReleasePathByAFormReleasesOnceAndIsNotShown) {
  server.set(kOrder, order);
  server.set("/home", HttpAnswer{page(kRed, "<form id=f method=post action='" + std::string(kOrder) +
                                                "'><input name=code value=A-7></form>" +
                                                script("document.getElementById('f').submit()"))});
  const auto message = released();
  EXPECT_EQ(valueOf(message, "LUMO-REG-CODE"), "A-7");
  EXPECT_EQ(server.count(kOrder), 1);
  EXPECT_EQ(server.requests(kOrder).at(0).method, "POST");
}

TEST_F(RoutesTest, ASavedRegistrationReleasesWithoutAnErrorPage) {
  server.set("/registration/save", order);
  leadOn("location.href = '/registration/save'");
  const auto message = released();
  EXPECT_EQ(valueOf(message, "status"), "registered");
  EXPECT_EQ(valueOf(message, "LUMO-REG-CODE"), std::nullopt);
  EXPECT_THAT(station.log(), Not(HasSubstr(kErrorPageShown)));
}

TEST_F(RoutesTest, AListedPathOfTheOwnersReleases) {
  station.prefer("prefPathNamesToDataForLumo", " Studio/Done , other");
  server.set("/studio/done/", order);
  leadOn("location.href = '/studio/done/'");
  EXPECT_EQ(valueOf(released(), "LUMO-REG-CODE"), "A-7");
}

TEST_F(RoutesTest, HeaderFieldsArriveWhateverTheyHold) {
  order.headers = {{"LUMO-REG-Code", "A-7"},
                   {"Lumo-Reg-OrderText", "12+Main+Street"},
                   {"lumo-reg-utf8", "Zo\xC3\xAB \xE2\x82\xAC"},
                   {"lumo-reg-latin1", "Zo\xEB"},
                   {"lumo-reg-empty", ""},
                   {"lumo-reg-twice", "one"},
                   {"lumo-reg-twice", "two"},
                   {"lumo-reg-long", std::string(60000, 'x')}};
  server.set(kOrder, order);
  leadOn("location.href = '" + std::string(kOrder) + "'");
  const auto message = released();
  EXPECT_EQ(valueOf(message, "LUMO-REG-CODE"), "A-7");
  EXPECT_EQ(valueOf(message, "LUMO-REG-ORDERTEXT"), "12 Main Street");
  EXPECT_EQ(valueOf(message, "LUMO-REG-UTF8"), "Zo\xC3\xAB \xE2\x82\xAC");
  // The engine's HTTP library replaces bytes that are no UTF-8 before anybody sees them.
  EXPECT_EQ(valueOf(message, "LUMO-REG-LATIN1"), "Zo\uFFFD");
  EXPECT_EQ(valueOf(message, "LUMO-REG-EMPTY"), "");
  EXPECT_EQ(valueOf(message, "LUMO-REG-TWICE"), "one, two");
  EXPECT_EQ(valueOf(message, "LUMO-REG-LONG"), std::string(60000, 'x'));
}

TEST_F(RoutesTest, FieldsBeyondWhatTheEngineTakesShowTheErrorPageAndNoneIsCut) {
  // The engine of Debian 12 refuses an answer whose fields have 64 KiB or more; newer ones take it.
  const std::string text(65536, 'x');
  order.headers = {{"lumo-reg-long", text}};
  server.set(kOrder, order);
  leadOn("location.href = '" + std::string(kOrder) + "'");
  station.start();
  const auto logged = [this](const std::string& words) {
    return station.log().find(words) != std::string::npos;
  };
  ASSERT_TRUE(waitUntil([&] { return logged("Header too big") || logged("LUMO-REG-LONG = " + text); }));
  if (logged("Header too big")) {
    EXPECT_TRUE(station.shows(Colour{255, 255, 255}));
    EXPECT_EQ(station.stop(), "exit status 0");
  }
  EXPECT_EQ(server.count("/rendered"), 0);
}

TEST_F(RoutesTest, TheScannerHeaderIsFollowedAndItsReturnPageKept) {
  server.set("/scan",
             HttpAnswer{page(kGreen), {{"Glimmerpad-Plus-Scanner", "START"}, {"Scan-Return", "orders"}}});
  leadOn("location.href = '/scan'");
  station.start();
  EXPECT_TRUE(station.shows(kGreen));
  EXPECT_TRUE(station.logs("doTheScanProcess"));
  EXPECT_EQ(station.storedText("prefScanReturnStringFormat"), "orders");
}

TEST_F(RoutesTest, HeadersWhoseNamesAreWrittenInAnotherCaseAreNotFollowed) {
  server.set("/scan", HttpAnswer{page(kGreen),
                                 {{"glimmerpad-plus-scanner", "start"},
                                  {"GLIMMERPAD-PLUS-PRINT", "Receipt"},
                                  {"scan-return", "orders"}}});
  leadOn("location.href = '/scan'");
  station.start();
  EXPECT_TRUE(station.shows(kGreen));
  EXPECT_TRUE(station.logs("glimmerpad-plus-scanner")) << "the engine has changed the name";
  EXPECT_EQ(station.stop(), "exit status 0");
  EXPECT_THAT(station.log(), Not(HasSubstr("doTheScanProcess")));
  EXPECT_THAT(station.log(), Not(HasSubstr("doPrintThisPageAndReturnToPage:")));
  EXPECT_EQ(station.storedText("prefScanReturnStringFormat"), std::nullopt);
}

TEST_F(RoutesTest, HeadersThatComeTwiceOrEmptyAreNoWishes) {
  server.set("/scan", HttpAnswer{page(kGreen),
                                 {{"Glimmerpad-Plus-Scanner", "start"},
                                  {"Glimmerpad-Plus-Scanner", "start"},
                                  {"Glimmerpad-Plus-Print", ""}}});
  leadOn("location.href = '/scan'");
  station.start();
  EXPECT_TRUE(station.shows(kGreen));
  EXPECT_TRUE(station.logs("start, start"));
  EXPECT_EQ(station.stop(), "exit status 0");
  EXPECT_THAT(station.log(), Not(HasSubstr("doTheScanProcess")));
  EXPECT_THAT(station.log(), Not(HasSubstr("doPrintThisPageAndReturnToPage:")));
}

TEST_F(RoutesTest, TheNamedFieldOfAListedPageHasTheKeyboard) {
  station.prefer("prefPathNamesToForceFocus", "/login/, elsewhere");
  station.prefer("prefFirstFocusWebFieldByIdentifier", "code");
  server.set("/login/",
             HttpAnswer{page(kGreen,
                             "<input id=other><input id=code onfocus=\"fetch('/focused')\" oninput=\"if "
                             "(value == 'abc') fetch('/typed')\">")});
  leadOn("location.href = '/login/'");
  station.start();
  ASSERT_TRUE(waitUntil([this] { return server.count("/focused") == 1; }));
  station.type("abc");
  EXPECT_TRUE(waitUntil([this] { return server.count("/typed") == 1; }));
}

}  // namespace station

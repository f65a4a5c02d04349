#include <algorithm>
#include <fstream>

#include <gmock/gmock.h>

#include "station/bus_peer.h"
#include "station/station.h"

// The ways in which other programs give the kiosk an address.

namespace station {

using ::testing::AnyOf;
using ::testing::HasSubstr;
using ::testing::Not;

namespace {

namespace fs = std::filesystem;

constexpr const char* kServices = "com.lumo.LumoBrowser.Services";
constexpr const char* kRunning = "prefRunningUrlString";

GVariant* texts(const std::vector<std::string>& items) {
  GVariantBuilder list;
  g_variant_builder_init(&list, G_VARIANT_TYPE("as"));
  for (const std::string& item : items) {
    g_variant_builder_add(&list, "s", item.c_str());
  }
  return g_variant_builder_end(&list);
}

}  // namespace

class WaysInTest : public StationTest {
 protected:
  void SetUp() override {
    StationTest::SetUp();
    server.set("/next", HttpAnswer{page(kGreen)});
    server.set("/seen", HttpAnswer{.body = "", .type = "image/png"});
  }

  BusPeer& peer() {
    if (!peer_) {
      peer_ = std::make_unique<BusPeer>(station.busAddress());
    }
    return *peer_;
  }
  std::optional<std::string> requestService(const std::string& text) {
    return peer().answer(peer().sendToKiosk(
        kServices, "SearchFromPasteboard",
        g_variant_new("(@as@asss)", texts({"NSStringPboardType"}), texts({}), text.c_str(), "")));
  }
  // What was asked for is on the screen and in the preferences, and nothing more can come.
  void expectLoaded(const std::string& path) {
    EXPECT_TRUE(station.shows(kGreen));
    EXPECT_EQ(station.storedText(kRunning), server.url(path));
    EXPECT_THAT(station.stop(), AnyOf("exit status 0", "gone"));
    EXPECT_LE(server.count("/home"), 1);
  }
  // The server has been asked for it once.
  void expectLoadedOnce(const std::string& path = "/next") {
    expectLoaded(path);
    EXPECT_EQ(server.count(path), 1);
  }
  // A page in a file, which tells the server each time it is shown.
  fs::path file(const std::string& name, Colour colour, const std::string& mark) {
    fs::path path = station.folder() / "home" / name;
    fs::create_directories(path.parent_path());
    std::ofstream(path) << page(colour, "<img src='" + server.url("/seen?") + mark + "'>");
    return path;
  }
  int timesSeen(const std::string& mark) const {
    const auto requests = server.requests("/seen");
    return static_cast<int>(std::ranges::count(requests, "/seen?" + mark, &HttpRequest::target));
  }
  // Puts the desktop entry where desktops look, with lumoctl in the search path, and makes it the one for
  // links. The bus gets what it needs to start the kiosk.
  void installDesktopEntry() {
    const fs::path data = station.folder() / "data";
    const fs::path programs = station.folder() / "programs";
    for (const fs::path& folder : {data / "applications", data / "dbus-1/services", programs}) {
      fs::create_directories(folder);
    }
    fs::copy_file(fs::path(LUMO_PACKAGING) / "com.lumo.LumoBrowser.desktop",
                  data / "applications/com.lumo.LumoBrowser.desktop");
    std::ofstream(data / "dbus-1/services/com.lumo.LumoBrowser.service")
        << "[D-BUS Service]\nName=com.lumo.LumoBrowser\nExec=" << LUMO_KIOSK << "\n";
    std::ofstream(station.configurationFolder() / "mimeapps.list")
        << "[Default Applications]\nx-scheme-handler/lumobrowser=com.lumo.LumoBrowser.desktop\n"
           "text/html=com.lumo.LumoBrowser.desktop\n";
    fs::create_symlink(LUMO_CTL, programs / "lumoctl");
    station.environment["PATH"] = programs.string() + ":" + station.environment["PATH"];
  }
  // The kiosk that a way in has started.
  void adoptKiosk() {
    ASSERT_TRUE(peer().seesKiosk());
    station.adopt(peer().kioskProcess());
  }

 private:
  std::unique_ptr<BusPeer> peer_;
};

TEST_F(WaysInTest, TheOperatorsCommand) {
  startAtHome();
  EXPECT_EQ(station.use({LUMO_CTL, "open", server.url("/next")}), "exit status 0") << station.said();
  expectLoadedOnce();
}

TEST_F(WaysInTest, ABareCallOverTheBus) {
  startAtHome();
  EXPECT_EQ(peer().answer(peer().sendOpen({server.url("/next")})), "");
  expectLoadedOnce();
}

TEST_F(WaysInTest, ALinkThatTheDesktopOpens) {
  installDesktopEntry();
  startAtHome();
  EXPECT_EQ(station.use({"gio", "open", "lumobrowser://" + server.url("/next")}), "exit status 0")
      << station.said();
  expectLoadedOnce();
}

TEST_F(WaysInTest, ALinkThatAnotherDesktopOpens) {
  installDesktopEntry();
  startAtHome();
  EXPECT_EQ(station.use({"xdg-open", "lumobrowser://" + server.url("/next")}), "exit status 0")
      << station.said();
  expectLoadedOnce();
}

TEST_F(WaysInTest, AServicesRequest) {
  startAtHome();
  EXPECT_EQ(requestService(server.url("/next")), "");
  expectLoadedOnce();
}

TEST_F(WaysInTest, APlaceholderStandsForThePhotoServerOnEveryWay) {
  installDesktopEntry();
  int number = 0;
  const auto next = [&] {
    std::string path = "/next" + std::to_string(++number);
    server.set(path, HttpAnswer{page(number % 2 == 0 ? kBlue : kGreen)});
    return path;
  };
  const auto expectShown = [&](const std::string& path) {
    EXPECT_TRUE(station.shows(number % 2 == 0 ? kBlue : kGreen)) << path;
    EXPECT_EQ(station.storedText(kRunning), server.url(path));
  };
  startAtHome();
  for (const char* link : {"lumobrowser://[junivaserver]", "lumobrowser:/%5Bjunivaserver%5D",
                           "lumobrowser://%5bdorvinserver%5d", "http://[junivaserver]", "[dorvinserver]"}) {
    std::string path = next();
    EXPECT_EQ(station.use({LUMO_CTL, "open", link + path}), "exit status 0") << station.said();
    expectShown(path);
    path = next();
    EXPECT_EQ(peer().answer(peer().sendOpen({link + path})), "");
    expectShown(path);
  }
  // A services request is a text that somebody selected: no launcher has escaped it.
  for (const char* text : {"lumobrowser://[junivaserver]", " http://[dorvinserver]"}) {
    const std::string path = next();
    EXPECT_EQ(requestService(text + path + "\n"), "");
    expectShown(path);
  }
  for (const char* opener : {"gio", "xdg-open"}) {
    for (const char* link : {"lumobrowser://[junivaserver]", "lumobrowser://%5Bjunivaserver%5D"}) {
      const std::string path = next();
      std::vector<std::string> command{opener, link + path};
      if (command[0] == "gio") {
        command.insert(command.begin() + 1, "open");
      }
      EXPECT_EQ(station.use(command), "exit status 0") << station.said();
      expectShown(path);
    }
  }
  EXPECT_EQ(station.stop(), "exit status 0");
  for (; number > 0; --number) {
    EXPECT_EQ(server.count("/next" + std::to_string(number)), 1) << number;
  }
}

TEST_F(WaysInTest, AFileWithBlanksInItsName) {
  const fs::path path = file("My Photos/a page.html", kGreen, "path");
  const fs::path other = file("My Photos/another page.html", kBlue, "address");
  std::string address = "file://" + other.string();
  for (auto at = address.find(' '); at != std::string::npos; at = address.find(' ')) {
    address.replace(at, 1, "%20");
  }
  startAtHome();
  EXPECT_EQ(station.use({LUMO_CTL, "open", path}), "exit status 0") << station.said();
  EXPECT_TRUE(station.shows(kGreen));
  EXPECT_THAT(station.storedText(kRunning).value_or(""), HasSubstr("/My%20Photos/a%20page.html"));
  EXPECT_EQ(station.use({LUMO_CTL, "open", address}), "exit status 0") << station.said();
  EXPECT_TRUE(station.shows(kBlue));
  EXPECT_EQ(station.storedText(kRunning), address);
  EXPECT_TRUE(waitUntil([this] { return timesSeen("address") == 1; }));
  EXPECT_EQ(station.stop(), "exit status 0");
  EXPECT_EQ(timesSeen("path"), 1);
  EXPECT_EQ(timesSeen("address"), 1);
}

TEST_F(WaysInTest, AFileWithBlanksInItsNameThatTheDesktopOpens) {
  installDesktopEntry();
  const fs::path path = file("My Photos/a page.html", kGreen, "path");
  startAtHome();
  EXPECT_EQ(station.use({"gio", "open", path}), "exit status 0") << station.said();
  EXPECT_TRUE(station.shows(kGreen));
  EXPECT_THAT(station.storedText(kRunning).value_or(""), HasSubstr("/My%20Photos/a%20page.html"));
}

TEST_F(WaysInTest, OfSeveralFilesOnlyTheFirstIsOpened) {
  const std::string first = "file://" + file("first.html", kGreen, "first").string();
  const std::string second = "file://" + file("second.html", kBlue, "second").string();
  startAtHome();
  EXPECT_EQ(peer().answer(peer().sendOpen({first, second})), "");
  EXPECT_TRUE(station.shows(kGreen));
  EXPECT_TRUE(waitUntil([this] { return timesSeen("first") == 1; }));
  EXPECT_EQ(station.storedText(kRunning), first);
  EXPECT_EQ(station.stop(), "exit status 0");
  EXPECT_EQ(timesSeen("second"), 0);
  EXPECT_THAT(station.log(), Not(HasSubstr("didStartProvisionalNavigation:....url = " + second)));
}

TEST_F(WaysInTest, OfSeveralAddressesEachIsAcceptedAndTheLastIsLoaded) {
  const std::string one = server.url("/one");
  const std::string two = server.url("/two");
  server.set("/one", HttpAnswer{page(kBlue)});
  server.set("/two", HttpAnswer{page(kBlue)});
  startAtHome();
  EXPECT_EQ(peer().answer(peer().sendOpen({one, two, server.url("/next")})), "");
  expectLoaded("/next");
  // Each leads to the address that was accepted last; how many get as far as the server is a matter of time.
  EXPECT_GE(server.count("/next"), 1);
  EXPECT_LE(server.count("/next"), 3);
  EXPECT_EQ(server.count("/one") + server.count("/two"), 0);
  const std::string log = station.log();
  std::size_t at = 0;
  for (const std::string& address : {one, two, server.url("/next")}) {
    at = log.find("prefRunningUrlString will be set with: [" + address + "]..........", at);
    EXPECT_NE(at, std::string::npos) << address;
  }
}

TEST_F(WaysInTest, AFileAndAStringOfOneServicesRequestAreBothLoadedTheStringLast) {
  const fs::path path = file("a page.html", kBlue, "file");
  startAtHome();
  const auto call =
      peer().sendToKiosk(kServices, "SearchFromPasteboard",
                         g_variant_new("(@as@asss)", texts({"NSFilenamesPboardType", "NSStringPboardType"}),
                                       texts({path}), server.url("/next").c_str(), ""));
  EXPECT_EQ(peer().answer(call), "");
  expectLoadedOnce();
  EXPECT_THAT(station.log(), HasSubstr("filearray class type = NSArray"));
}

TEST_F(WaysInTest, WhatIsNoAddressIsRefusedAndNothingChanges) {
  startAtHome();
  EXPECT_EQ(station.use({LUMO_CTL, "open", "no address"}), "exit status 1");
  EXPECT_EQ(station.said(), "lumoctl: \"no address\" is refused: it is no address\n");
  EXPECT_EQ(peer().answer(peer().sendOpen({"no address", "http://h/a b"})), "");
  EXPECT_EQ(peer().answer(peer().sendOpen({server.url("/next")})), "");
  expectLoadedOnce();
  EXPECT_THAT(station.log(), Not(HasSubstr("will be set with: [no address]")));
}

TEST_F(WaysInTest, TheOperatorsCommandStartsTheKioskAndItsAddressWins) {
  EXPECT_EQ(station.use({LUMO_CTL, "open", server.url("/next")}), "exit status 0") << station.said();
  adoptKiosk();
  expectLoadedOnce();
}

TEST_F(WaysInTest, ALinkThatTheDesktopOpensStartsTheKioskAndWins) {
  installDesktopEntry();
  EXPECT_EQ(station.use({"gio", "open", "lumobrowser://[junivaserver]/next"}), "exit status 0")
      << station.said();
  adoptKiosk();
  expectLoadedOnce();
}

TEST_F(WaysInTest, ALinkThatAnotherDesktopOpensStartsTheKioskAndWins) {
  installDesktopEntry();
  EXPECT_EQ(station.use({"xdg-open", "lumobrowser://[junivaserver]/next"}), "exit status 0")
      << station.said();
  adoptKiosk();
  expectLoadedOnce();
}

TEST_F(WaysInTest, ManyAtOnceStartOneKioskThatGetsThemAll) {
  std::vector<std::unique_ptr<ChildProcess>> callers;
  callers.reserve(5);
  for (int number = 0; number < 5; ++number) {
    callers.push_back(std::make_unique<ChildProcess>(
        std::vector<std::string>{LUMO_CTL, "open", server.url("/next?" + std::to_string(number))},
        station.environment, station.folder() / "said.txt"));
  }
  for (const auto& caller : callers) {
    EXPECT_EQ(caller->end(), "exit status 0") << station.said();
  }
  adoptKiosk();
  EXPECT_TRUE(station.shows(kGreen));
  for (int number = 0; number < 5; ++number) {
    EXPECT_TRUE(station.logs("will be set with: [" + server.url("/next?" + std::to_string(number)) + "]"));
  }
  station.stop();
  EXPECT_LE(server.count("/home"), 1);
}

class WaysInWithoutDisplayTest : public StationTest {
 protected:
  WaysInWithoutDisplayTest() : StationTest({.screen = false}) {}
};

TEST_F(WaysInWithoutDisplayTest, TheOperatorsCommandSaysThatTheKioskCannotBeStarted) {
  EXPECT_EQ(station.use({LUMO_CTL, "open", server.url("/next")}), "exit status 1");
  EXPECT_EQ(station.said(),
            "lumoctl: the kiosk ended with status 1 while it started; its log is "
            "~/Library/Logs/Lumo/LumoBrowser.log\n");
  EXPECT_THAT(station.log(), HasSubstr("There is no display to show a window on."));
}

}  // namespace station

#include <algorithm>
#include <csignal>
#include <fstream>

#include <gmock/gmock.h>

#include "platform/property_list_file.h"
#include "platform/strings.h"
#include "station/bus_peer.h"
#include "station/exit_fixture.h"
#include "station/process_tree.h"

// Ends that nobody is asked about: a session's end, and a kiosk that is killed.

namespace station {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;

// Whoever ends a session waits no longer before it kills.
constexpr milliseconds kBeforeItIsKilled{2000};
constexpr const char* kTold = "NSDistributedNotificationCenter postNotifiction: ";

}  // namespace

class SuddenEndTest : public ExitTest {
 protected:
  void SetUp() override {
    ExitTest::SetUp();
    station.prefer("prefThisUserAgent", "Counter 4");
    server.set("/next", HttpAnswer{page(kGreen)});
  }
  BusPeer& peer() {
    if (!peer_) {
      peer_ = std::make_unique<BusPeer>(station.busAddress());
    }
    return *peer_;
  }
  void open(const std::string& path) {
    ASSERT_TRUE(peer().seesKiosk());
    EXPECT_EQ(peer().answer(peer().sendOpen({server.url(path)})), "");
  }
  bool hasControl(const std::string& role, const std::string& name) {
    return waitUntil([&] { return station.control(role, name).has_value(); });
  }
  // The preference file can be read and holds what it held, and the log has nothing but whole lines of text.
  void expectWholeFiles() {
    EXPECT_EQ(station.storedText("prefThisUserAgent"), "Counter 4");
    EXPECT_EQ(station.storedText("prefServerAddress"), server.url("/home"));
    const std::string log = station.log();
    EXPECT_TRUE(platform::isValidUtf8(log));
    EXPECT_EQ(log.find('\0'), std::string::npos);
    EXPECT_THAT(log, ::testing::EndsWith("\n"));
  }

 private:
  std::unique_ptr<BusPeer> peer_;
};

// --- a session's end

class SessionsEndTest;

struct Moment {
  const char* name;
  // Brings the kiosk, which shows its home page, there.
  void (SessionsEndTest::*reach)();
};

void PrintTo(const Moment& moment, std::ostream* out) {
  *out << moment.name;
}

class SessionsEndTest : public SuddenEndTest, public ::testing::WithParamInterface<Moment> {
 public:
  void stay() {}
  void loadForEver() {
    server.setSilent("/silent");
    open("/silent");
    ASSERT_TRUE(waitUntil([this] { return server.count("/silent") == 1; }));
  }
  void runAScriptThatHangs() {
    server.set("/busy", HttpAnswer{"ok"});
    server.set("/hangs", HttpAnswer{page(kBlue,
                                         "<script>onload = () => requestAnimationFrame(() => "
                                         "fetch('/busy').then(() => { for (;;); }))</script>")});
    open("/hangs");
    ASSERT_TRUE(waitUntil([this] { return server.count("/busy") == 1; }));
  }
  void letThePageAsk() {
    server.set("/asks", HttpAnswer{page(kBlue, "<script>confirm('Really?')</script>")});
    open("/asks");
    ASSERT_TRUE(waitUntil([this] { return server.count("/asks") == 1; }));
    ASSERT_TRUE(hasControl("alert dialog", "Really?")) << description(*station.controls());
  }
  void openTheSettings() {
    station.key("ctrl+comma");
    ASSERT_TRUE(hasControl("dialog", "Settings"));
  }
  void askWhetherToQuit() {
    station.key("ctrl+q");
    ASSERT_TRUE(isAskedSoon());
  }
  // A script that talks to a printer which has no paper.
  void printAReceipt() {
    const fs::path desktop = station.folder() / "home/Desktop";
    fs::create_directories(desktop);
    std::ofstream(desktop / "printtocups2.sh") << "#!/bin/sh\n: >\"$HOME/printing\"\nexec sleep 600\n";
    fs::permissions(desktop / "printtocups2.sh", fs::perms::owner_all);
    HttpAnswer receipt{page(kBlue)};
    receipt.headers = {{"Glimmerpad-Plus-Print", "Receipt"}, {"Scan-Return", "home"}};
    server.set("/receipt", receipt);
    open("/receipt");
    ASSERT_TRUE(waitUntil([this] { return fs::exists(station.folder() / "home/printing"); }));
  }
};

INSTANTIATE_TEST_SUITE_P(All, SessionsEndTest,
                         ::testing::Values(Moment{"OnAPage", &SessionsEndTest::stay},
                                           Moment{"WhileAPageLoads", &SessionsEndTest::loadForEver},
                                           Moment{"WhileAScriptOfThePageHangs",
                                                  &SessionsEndTest::runAScriptThatHangs},
                                           Moment{"WhileThePageAsks", &SessionsEndTest::letThePageAsk},
                                           Moment{"OverTheSettings", &SessionsEndTest::openTheSettings},
                                           Moment{"OverTheQuestion", &SessionsEndTest::askWhetherToQuit},
                                           Moment{"WhileAReceiptIsPrinted", &SessionsEndTest::printAReceipt}),
                         [](const auto& info) { return info.param.name; });

TEST_P(SessionsEndTest, IsToldOnceWithinTwoSecondsAndLeavesEverythingWhole) {
  startAtHome();
  (this->*GetParam().reach)();
  ASSERT_FALSE(HasFatalFailure());
  const auto address = runningAddress();
  ASSERT_TRUE(address);
  station.kiosk().send(SIGTERM);
  EXPECT_EQ(station.kiosk().end(kBeforeItIsKilled), "exit status 0");
  EXPECT_THAT(listener->heardToTheEnd(), ElementsAre(releaseOf("closedwindow", address)));
  expectWholeFiles();
  EXPECT_EQ(runningAddress(), address);
  EXPECT_THAT(station.log(), HasSubstr(kTold));
}

TEST_F(SuddenEndTest, OfAllProgramsOfASessionAtOnceIsToldOnce) {
  startAtHome();
  const auto below = processesBelow(station.kiosk().pid());
  ASSERT_GE(below.size(), 2U);
  for (const pid_t process : below) {
    ::kill(process, SIGTERM);
  }
  station.kiosk().send(SIGTERM);
  EXPECT_EQ(station.kiosk().end(kBeforeItIsKilled), "exit status 0");
  EXPECT_THAT(listener->heardToTheEnd(), ElementsAre(releaseOf("closedwindow", server.url("/home"))));
  expectWholeFiles();
}

TEST_F(SuddenEndTest, AfterTheBusHasGoneEndsWithinTwoSeconds) {
  startAtHome();
  ASSERT_TRUE(peer().seesKiosk());
  station.stopBus();
  station.kiosk().send(SIGTERM);
  EXPECT_EQ(station.kiosk().end(kBeforeItIsKilled), "exit status 0");
  expectWholeFiles();
}

TEST_F(SuddenEndTest, ABusThatHangsHoldsItUpForNoMoreThanItsTimeLimit) {
  startAtHome();
  ASSERT_TRUE(peer().seesKiosk());
  station.haltBus();
  station.kiosk().send(SIGTERM);
  // What the halted bus has not read fits into its socket, so that the kiosk need not wait.
  EXPECT_EQ(station.kiosk().end(kBeforeItIsKilled), "exit status 0");
  expectWholeFiles();
}

TEST_F(SuddenEndTest, AHangupIsASessionsEnd) {
  startAtHome();
  station.kiosk().send(SIGHUP);
  EXPECT_EQ(station.kiosk().end(kBeforeItIsKilled), "exit status 0");
  EXPECT_THAT(listener->heardToTheEnd(), ElementsAre(releaseOf("closedwindow", server.url("/home"))));
  expectWholeFiles();
}

TEST_F(SuddenEndTest, ALostScreenIsToldBeforeTheKioskEnds) {
  startAtHome();
  station.breakScreen();
  EXPECT_EQ(station.kiosk().end(kBeforeItIsKilled), "exit status 1");
  EXPECT_THAT(listener->heardToTheEnd(), ElementsAre(releaseOf("closedwindow", server.url("/home"))));
  expectWholeFiles();
}

// --- killed

class KilledTest : public SuddenEndTest {
 protected:
  void kill() {
    station.kiosk().send(SIGKILL);
    EXPECT_EQ(station.kiosk().end(), "signal 9");
    // The engine's processes see that it has gone. The kernel shortens names to 15 characters.
    EXPECT_TRUE(waitUntil([] {
      const auto names = childrenNames();
      return std::ranges::none_of(names, [](const std::string& name) {
        return name.starts_with("WebKit") || name == "bwrap" || name == "xdg-dbus-proxy";
      });
    })) << ::testing::PrintToString(childrenNames());
  }
  int logLines() const {
    const std::string log = station.log();
    return static_cast<int>(std::count(log.begin(), log.end(), '\n'));
  }
};

TEST_F(KilledTest, AtAnyMomentOfItsStartItStartsWellTheNextTime) {
  // What a start has written to the log by then, from nothing to the loaded page.
  for (const int lines : {0, 1, 4, 12, 25, 40}) {
    SCOPED_TRACE(lines);
    fs::remove(station.logFile());
    station.start();
    ASSERT_TRUE(waitUntil([&] { return logLines() >= lines; })) << station.log();
    kill();
    EXPECT_EQ(station.storedText("prefThisUserAgent"), "Counter 4");
    EXPECT_EQ(station.storedText("prefServerAddress"), server.url("/home"));
  }
  startAtHome();
  EXPECT_EQ(station.stop(), "exit status 0");
  expectWholeFiles();
  EXPECT_THAT(station.log(), Not(HasSubstr("damaged")));
}

TEST_F(KilledTest, WhileItStoresAddressesTheNextStartFindsOneOfThemWhole) {
  for (int round = 1; round <= 4; ++round) {
    SCOPED_TRACE(round);
    startAtHome();
    const auto before = logLines();
    BusPeer peer(station.busAddress());
    ASSERT_TRUE(peer.seesKiosk());
    for (int number = 0; number < 100; ++number) {
      peer.sendOpen({server.url("/next?" + std::string(1000, 'x') + std::to_string(number))});
    }
    // Another moment in each round: the addresses are being taken, stored and loaded.
    ASSERT_TRUE(waitUntil([&] { return logLines() > before + 50 * round; }));
    kill();
    expectWholeFiles();
    EXPECT_THAT(runningAddress().value_or("none"),
                ::testing::AnyOf(server.url("/home"), ::testing::StartsWith(server.url("/next?x"))));
  }
  startAtHome();
  EXPECT_THAT(station.log(), Not(HasSubstr("damaged")));
  EXPECT_EQ(station.stop(), "exit status 0");
  // What the writer left behind is gone with the next one.
  for (const auto& entry : fs::directory_iterator(station.configurationFolder() / "lumo")) {
    EXPECT_THAT(entry.path().string(), Not(HasSubstr(".new"))) << entry.path();
  }
}

}  // namespace station

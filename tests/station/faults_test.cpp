#include <fstream>

#include <gmock/gmock.h>
#include <unistd.h>

#include "station/bus_peer.h"
#include "station/exit_fixture.h"
#include "station/surroundings.h"

// Machines on which something is missing or wrong.

namespace station {

using ::testing::AnyOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

namespace {

namespace fs = std::filesystem;

void write(const fs::path& file, const std::string& text) {
  std::ofstream(file, std::ios::binary) << text;
}

std::string factoryFile(const std::string& address) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
         "<key>prefServerAddress</key><string>" +
         address + "</string><key>prefDoAutoLoadUrlAtStartup</key><true/></dict></plist>\n";
}

}  // namespace

class FaultsTest : public ExitTest {
 protected:
  explicit FaultsTest(const Equipment& equipment = {}) : ExitTest(equipment) {}
  void SetUp() override {
    ExitTest::SetUp();
    server.set("/next", HttpAnswer{page(kGreen)});
  }
  void open(const std::string& path) {
    BusPeer peer(station.busAddress());
    ASSERT_TRUE(peer.seesKiosk());
    EXPECT_EQ(peer.answer(peer.sendOpen({server.url(path)})), "");
  }
  void startAtHomeWith(const std::vector<std::string>& command) {
    station.startWith(command);
    ASSERT_TRUE(station.shows(kRed)) << station.sight() << station.output() << station.log();
  }
  // A copy of the built bundle, with lumoctl beside it, in a folder of that name.
  fs::path copyBundle(const std::string& name) const {
    fs::path bundle = station.folder() / name / "LumoBrowser.app";
    fs::create_directories(bundle.parent_path());
    fs::copy(fs::path(LUMO_KIOSK).parent_path(), bundle, fs::copy_options::recursive);
    fs::copy_file(LUMO_CTL, bundle.parent_path() / "lumoctl");
    return bundle;
  }
};

// --- the bundle

TEST_F(FaultsTest, ABundleThatWasMovedWhileClosedStartsInAFolderWithABlank) {
  const fs::path before = copyBundle("programs");
  startAtHomeWith({before / "lumobrowser"});
  EXPECT_EQ(station.stop(), "exit status 0");

  const fs::path folder = station.folder() / "Programs of Clara";
  fs::rename(before.parent_path(), folder);
  startAtHomeWith({folder / "LumoBrowser.app/lumobrowser"});
  EXPECT_THAT(station.log(), Not(HasSubstr("No FactoryDefault.plist found")));
  EXPECT_EQ(station.use({folder / "lumoctl", "status"}), "exit status 0");
  EXPECT_THAT(station.said(), HasSubstr("bundle: " + (folder / "LumoBrowser.app").string() + "\n"));
  EXPECT_EQ(station.stop(), "exit status 0");

  // The command finds the one beside it.
  EXPECT_EQ(station.use({folder / "lumoctl", "open", server.url("/next")}), "exit status 0")
      << station.said();
  BusPeer peer(station.busAddress());
  ASSERT_TRUE(peer.seesKiosk());
  station.adopt(peer.kioskProcess());
  EXPECT_TRUE(station.shows(kGreen));
  EXPECT_EQ(fs::read_symlink("/proc/" + std::to_string(station.kiosk().pid()) + "/exe"),
            folder / "LumoBrowser.app/lumobrowser");
  EXPECT_THAT(station.stop(), AnyOf("exit status 0", "gone"));
}

TEST_F(FaultsTest, AReceiptOfABundleInAFolderWithABlankIsSaidToBeImpossibleAndTheKioskGoesOn) {
  HttpAnswer receipt{page(kGreen)};
  receipt.headers = {{"Glimmerpad-Plus-Print", "Receipt"}, {"Scan-Return", "landing"}};
  server.set("/receipt", receipt);
  server.set("/landing", HttpAnswer{page(kBlue)});
  startAtHomeWith({copyBundle("Programs of Clara") / "lumobrowser"});
  open("/receipt");
  EXPECT_TRUE(station.logs("The script's path has a blank"));
  EXPECT_TRUE(waitUntil([this] { return server.count("/landing") == 1; }));
  EXPECT_TRUE(station.shows(kBlue));
  EXPECT_EQ(station.stop(), "exit status 0");
}

TEST_F(FaultsTest, ADamagedOrMissingFactoryFileIsSaidAndThePersonsValuesHold) {
  const fs::path bundle = copyBundle("programs");
  const fs::path file = bundle / "Resources/FactoryDefaults.plist";
  const std::string whole = factoryFile("http://127.0.0.1:1/");
  for (const std::string& text :
       {std::string("no property list"), whole.substr(0, whole.size() / 2), std::string(),
        std::string("bplist00\xff\xff\xff\xff"), std::string("<plist><array/></plist>")}) {
    SCOPED_TRACE(text);
    fs::remove(station.logFile());
    write(file, text);
    ASSERT_NO_FATAL_FAILURE(startAtHomeWith({bundle / "lumobrowser"}));
    EXPECT_THAT(station.output(), HasSubstr("No FactoryDefault.plist found????"));
    EXPECT_EQ(station.stop(), "exit status 0");
    EXPECT_EQ(station.use({bundle.parent_path() / "lumoctl", "defaults", "list"}), "exit status 0");
    fs::remove(station.folder() / "kiosk.txt");
  }
  fs::remove(file);
  fs::remove(bundle / "Info.plist");
  ASSERT_NO_FATAL_FAILURE(startAtHomeWith({bundle / "lumobrowser"}));
  EXPECT_THAT(station.output(), HasSubstr("No FactoryDefault.plist found????"));
  EXPECT_TRUE(station.logs("Info.plist is missing or damaged"));
  EXPECT_EQ(station.stop(), "exit status 0");
}

// --- the machine

TEST_F(FaultsTest, WithoutAnyFontTheKioskSaysWhatIsMissingAndEnds) {
  station.startWith(
      inOwnMounts("for folder in /usr/share/fonts /usr/local/share/fonts /usr/share/texmf/fonts; do\n"
                  "  if [ -d \"$folder\" ]; then mount -t tmpfs none \"$folder\"; fi\ndone",
                  {}, LUMO_KIOSK));
  EXPECT_EQ(station.kiosk().end(), "exit status 1");
  EXPECT_THAT(station.log(), HasSubstr("] There is no font to write with"));
}

TEST_F(FaultsTest, AClockThatIsWrongAndPutRightMeanwhileStopsNothing) {
  // The loader finds the library of the machine's own kind.
  station.environment["LD_PRELOAD"] = "/usr/$LIB/faketime/libfaketime.so.1";
  station.environment["FAKETIME_DONT_FAKE_MONOTONIC"] = "1";
  station.environment["FAKETIME_NO_CACHE"] = "1";
  const fs::path clock = station.folder() / "clock";
  station.environment["FAKETIME_TIMESTAMP_FILE"] = clock;
  station.environment["TZ"] = "UTC";
  write(clock, "@1980-01-01 00:00:00\n");
  startAtHome();
  EXPECT_THAT(station.log(), HasSubstr("1980-01-01 00:0"));
  open("/next");
  EXPECT_TRUE(station.shows(kGreen));
  EXPECT_EQ(runningAddress(), server.url("/next"));

  write(clock, "@2031-05-06 07:08:09\n");
  open("/home");
  EXPECT_TRUE(station.shows(kRed));
  EXPECT_TRUE(station.logs("2031-05-06 07:0"));
  EXPECT_EQ(runningAddress(), server.url("/home"));
  // And back: the wait of the release is no matter of the clock.
  write(clock, "@1980-01-01 00:00:00\n");
  ASSERT_NO_FATAL_FAILURE(quitWith("Close Window and Release Order"));
  EXPECT_THAT(listener->heardToTheEnd(), ElementsAre(releaseOf("cancelled_registered", server.url("/home"))));
}

// --- users

class HomelessTest : public StationTest {
 protected:
  HomelessTest() : StationTest({.bus = false}) {}
  // Lets the stranger in.
  void give(const fs::path& path) const {
    if (geteuid() == 0) {
      ASSERT_EQ(chown(path.c_str(), kStranger, kStranger), 0) << path;
    }
  }
};

TEST_F(HomelessTest, WithoutAHomeTheFactoryValuesHoldAndTheLogStaysOnStandardError) {
  const fs::path bundle = station.folder() / "LumoBrowser.app";
  fs::copy(fs::path(LUMO_KIOSK).parent_path(), bundle, fs::copy_options::recursive);
  write(bundle / "Resources/FactoryDefaults.plist", factoryFile(server.url("/home")));
  const fs::path here = station.folder() / "here";
  fs::create_directory(here);
  fs::permissions(station.folder(), fs::perms::owner_all | fs::perms::others_exec);
  give(here);
  give(station.folder() / "runtime");
  for (const char* name : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME"}) {
    station.environment.erase(name);
  }
  station.startWith(
      asUser(kStranger, {"sh", "-c", "cd \"$1\" && exec \"$0\"", bundle / "lumobrowser", here}));
  ASSERT_TRUE(station.shows(kRed)) << station.output();
  EXPECT_THAT(station.output(), HasSubstr("There is no home folder, the log stays on standard error\n"));
  EXPECT_THAT(station.output(), HasSubstr("The preferences have no place, "));
  EXPECT_EQ(station.stop(), "exit status 0");
  EXPECT_THAT(station.output(), HasSubstr("AppDelegate->handleTerminateNowNotifcation:....\n"));
  // Nothing was left in the folder in which it was started.
  EXPECT_TRUE(fs::is_empty(here));
}

class TwoUsersTest : public FaultsTest {
 protected:
  // Everything in the folder of the other one's station that the kiosk writes to, and the bus.
  static void giveAll(const Station& other) {
    for (const char* name : {"home", "config", "data", "cache", "state", "runtime", "config/lumo",
                             "config/lumo/com.lumo.LumoBrowser.plist", ""}) {
      const fs::path path = other.folder() / name;
      ASSERT_EQ(chown(path.c_str(), kNobody, kNobody), 0) << path;
    }
  }
};

TEST_F(TwoUsersTest, OfOneMachineHaveAKioskEachAndNeitherHearsOfTheOther) {
  if (geteuid() != 0) {
    GTEST_SKIP() << "another user's programs are for root to start";
  }
  Station other({.bus = false});
  const fs::path bundle = other.folder() / "LumoBrowser.app";
  fs::copy(fs::path(LUMO_KIOSK).parent_path(), bundle, fs::copy_options::recursive);
  fs::copy_file(LUMO_CTL, other.folder() / "lumoctl");
  server.set("/other", HttpAnswer{page(kBlue)});
  other.prefer("prefServerAddress", server.url("/other"));
  other.prefer("prefDoAutoLoadUrlAtStartup", true);
  ASSERT_NO_FATAL_FAILURE(giveAll(other));
  other.startBus([](const auto& command) { return asUser(kNobody, command); });

  startAtHome();
  // Newer systems leave the account of a session a capability, with which the engine's sandbox would not
  // start.
  auto command = asUser(kNobody, {bundle / "lumobrowser"});
  command.insert(command.begin() + 1, {"--inh-caps=+chown", "--ambient-caps=+chown"});
  other.startWith(command);
  ASSERT_TRUE(other.shows(kBlue)) << other.sight() << other.output() << other.log();
  EXPECT_TRUE(station.shows(kRed));
  EXPECT_TRUE(station.kiosk().isRunning());

  EXPECT_EQ(other.use(asUser(kNobody, {other.folder() / "lumoctl", "open", server.url("/next")})),
            "exit status 0")
      << other.said();
  EXPECT_TRUE(other.shows(kGreen));
  EXPECT_TRUE(station.shows(kRed));
  EXPECT_EQ(other.storedText("prefRunningUrlString"), server.url("/next"));
  EXPECT_EQ(runningAddress(), server.url("/home"));

  EXPECT_EQ(other.stop(), "exit status 0");
  EXPECT_THAT(other.log(), HasSubstr("urlstring = \"" + server.url("/next")));
  EXPECT_THAT(listener->heard(), IsEmpty());
  EXPECT_TRUE(station.kiosk().isRunning());
  EXPECT_EQ(station.stop(), "exit status 0");
  EXPECT_THAT(listener->heardToTheEnd(), ElementsAre(releaseOf("closedwindow", server.url("/home"))));
}

}  // namespace station

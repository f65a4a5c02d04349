#include <filesystem>
#include <fstream>

#include <fcntl.h>
#include <gmock/gmock.h>

#include "platform/file_descriptor.h"
#include "platform/property_list_file.h"
#include "station/bus_peer.h"
#include "station/exit_fixture.h"
#include "station/surroundings.h"

// Disks that are full or cannot be written, and preferences that were damaged.

namespace station {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

namespace {

namespace fs = std::filesystem;

constexpr const char* kRunning = "prefRunningUrlString";
constexpr const char* kNoRoom = "No space left on device";

std::string contents(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

int timesIn(const std::string& text, const std::string& part) {
  int count = 0;
  for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
    ++count;
  }
  return count;
}

}  // namespace

class DiskTest : public ExitTest {
 protected:
  void SetUp() override {
    ExitTest::SetUp();
    server.set("/next", HttpAnswer{page(kGreen)});
    server.set("/third", HttpAnswer{page(kBlue)});
    station.prefer("prefThisUserAgent", "Counter 4");
  }
  void open(const std::string& path) {
    BusPeer peer(station.busAddress());
    ASSERT_TRUE(peer.seesKiosk());
    EXPECT_EQ(peer.answer(peer.sendOpen({server.url(path)})), "");
  }
};

// --- no writing at all

class ReadOnlyDiskTest : public DiskTest {
 protected:
  // Starts the kiosk where none of its folders can be written.
  void startReadOnly() {
    station.startWith(
        inOwnMounts("for name in home config data cache state; do\n"
                    "  mount -o bind,ro \"$1/$name\" \"$1/$name\"\ndone",
                    {station.folder()}, LUMO_KIOSK));
    ASSERT_TRUE(station.shows(kRed)) << station.output();
  }
};

TEST_F(ReadOnlyDiskTest, IsSaidOnceAndTheKioskDoesItsWorkWithoutKeepingAnything) {
  const std::string before = contents(station.configurationFolder() / "lumo/com.lumo.LumoBrowser.plist");
  startReadOnly();
  open("/next");
  EXPECT_TRUE(station.shows(kGreen));
  EXPECT_EQ(station.stop(), "exit status 0");
  EXPECT_THAT(listener->heardToTheEnd(), ElementsAre(releaseOf("closedwindow", server.url("/next"))));
  EXPECT_EQ(contents(station.configurationFolder() / "lumo/com.lumo.LumoBrowser.plist"), before);
  // The log has no place either, so it stays where the kiosk was started from.
  EXPECT_FALSE(fs::exists(station.logFile()));
  EXPECT_EQ(timesIn(station.output(), "UserDefaults: cannot "), 1) << station.output();
  EXPECT_THAT(station.output(), HasSubstr("Read-only file system"));
  EXPECT_THAT(station.output(), HasSubstr("the log stays on standard error"));
}

TEST_F(ReadOnlyDiskTest, LeavesTheLogOfEarlierDaysAlone) {
  startAtHome();
  EXPECT_EQ(station.stop(), "exit status 0");
  const std::string before = station.log();
  startReadOnly();
  EXPECT_EQ(station.stop(), "exit status 0");
  EXPECT_EQ(station.log(), before);
  EXPECT_THAT(station.output(), HasSubstr("the log stays on standard error"));
}

// --- no room

class FullDiskTest : public DiskTest {
 protected:
  // Starts the kiosk with the folders of that name on a disk of their own, which nobody else sees. `filled`:
  // there is no room on it from the beginning.
  void startOnDisk(const std::string& folders, bool filled) {
    const fs::path place = station.folder() / "disk";
    fs::create_directory(place);
    station.startWith(inOwnMounts(
        "mount -t tmpfs -o size=8m none \"$1/disk\"\n"
        "for name in $2; do\n"
        "  cp -a \"$1/$name\" \"$1/disk/$name\"\n  mount --bind \"$1/disk/$name\" \"$1/$name\"\ndone\n"
        "if [ $3 = 1 ]; then cat /dev/zero >\"$1/disk/filler\" 2>/dev/null || :; fi\n"
        ": >\"$1/disk/ready\" || :",
        {station.folder(), folders, filled ? "1" : "0"}, LUMO_KIOSK));
    const fs::path within = "/proc/" + std::to_string(station.kiosk().pid()) + "/root" + place.string() + "/";
    ASSERT_TRUE(waitUntil([&] { return fs::exists(within / "ready"); })) << station.output();
    // Keeps the disk when the kiosk has ended.
    disk_.reset(::open(within.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    ASSERT_TRUE(disk_);
    ASSERT_TRUE(station.shows(kRed)) << station.output() << log();
  }
  fs::path onDisk(const std::string& path) const {
    return "/proc/self/fd/" + std::to_string(disk_.get()) + "/" + path;
  }
  // Takes the last byte of the disk.
  void fill() {
    std::ofstream out(onDisk("filler"), std::ios::binary | std::ios::app);
    const std::string bytes(4096, 'x');
    while (out.write(bytes.data(), static_cast<std::streamsize>(bytes.size())).flush()) {
    }
  }
  void makeRoom() { fs::remove(onDisk("filler")); }
  std::string log() const { return contents(onDisk("home/Library/Logs/Lumo/LumoBrowser.log")); }
  bool logs(const std::string& text) const {
    return waitUntil([&] { return log().find(text) != std::string::npos; });
  }
  std::optional<std::string> storedText(const std::string& key) const {
    const auto list = platform::propertyListFromFile(onDisk("config/lumo/com.lumo.LumoBrowser.plist"));
    const auto* values = list ? list->as<platform::Dictionary>() : nullptr;
    const auto* value = values == nullptr ? nullptr : values->find(key);
    return value == nullptr ? std::nullopt : platform::stringValue(*value);
  }

 private:
  platform::FileDescriptor disk_;
};

TEST_F(FullDiskTest, ThePreferencesStayWholeAndTheLogSaysSoOnce) {
  startOnDisk("config", false);
  ASSERT_EQ(storedText(kRunning), server.url("/home"));
  fill();
  open("/next");
  EXPECT_TRUE(station.shows(kGreen));
  EXPECT_TRUE(station.logs("UserDefaults: cannot write "));
  EXPECT_THAT(station.log(), HasSubstr(kNoRoom));
  EXPECT_EQ(storedText(kRunning), server.url("/home"));
  EXPECT_EQ(storedText("prefThisUserAgent"), "Counter 4");
  EXPECT_EQ(timesIn(station.log(), "UserDefaults: cannot "), 1);

  makeRoom();
  open("/third");
  EXPECT_TRUE(station.shows(kBlue));
  EXPECT_EQ(storedText(kRunning), server.url("/third"));
  EXPECT_EQ(storedText("prefThisUserAgent"), "Counter 4");
  EXPECT_EQ(station.stop(), "exit status 0");
  EXPECT_THAT(listener->heardToTheEnd(), ElementsAre(releaseOf("closedwindow", server.url("/third"))));
}

TEST_F(FullDiskTest, TheKioskGoesOnAndTellsOfItWhenThereIsRoomAgain) {
  startOnDisk("home config data cache state", false);
  fill();
  // Each is some hundred bytes of log.
  for (int number = 0; number < 20; ++number) {
    open("/next?" + std::to_string(number));
  }
  EXPECT_TRUE(station.shows(kGreen));
  const std::string full = log();
  EXPECT_THAT(full, Not(HasSubstr("next?19]")));
  EXPECT_EQ(storedText(kRunning), server.url("/home"));

  makeRoom();
  open("/third");
  EXPECT_TRUE(station.shows(kBlue));
  EXPECT_TRUE(logs(std::string(" lost here: ") + kNoRoom + "\n"));
  // What was there stays, and nothing is written into the middle of a line.
  EXPECT_EQ(log().substr(0, full.size()), full);
  EXPECT_EQ(timesIn(log(), " lost here: "), 1);
  EXPECT_EQ(storedText(kRunning), server.url("/third"));
  EXPECT_EQ(station.stop(), "exit status 0");
  EXPECT_THAT(listener->heardToTheEnd(), ElementsAre(releaseOf("closedwindow", server.url("/third"))));
}

TEST_F(FullDiskTest, AStartWithoutRoomShowsThePageAndAnEndWithoutRoomIsTold) {
  startOnDisk("home config data cache state", true);
  open("/next");
  EXPECT_TRUE(station.shows(kGreen));
  EXPECT_EQ(storedText("prefThisUserAgent"), "Counter 4");
  EXPECT_EQ(storedText(kRunning), std::nullopt);
  EXPECT_EQ(station.stop(), "exit status 0");
  EXPECT_THAT(listener->heardToTheEnd(), ElementsAre(releaseOf("closedwindow", server.url("/next"))));
}

// --- damage

TEST_F(DiskTest, DamagedPreferencesAreSetAsideAndTheFactoryValuesHold) {
  const fs::path file = station.configurationFolder() / "lumo/com.lumo.LumoBrowser.plist";
  const std::string whole = contents(file);
  std::ofstream(file) << whole.substr(0, whole.size() / 2);
  station.start();
  EXPECT_TRUE(station.logs("is damaged; it is kept as "));
  // The factory values load the server on this machine's usual port; what shows then is none of this test's.
  ASSERT_TRUE(waitUntil([this] { return station.control("button", "Home").has_value(); }));
  open("/next");
  EXPECT_TRUE(station.shows(kGreen));
  EXPECT_EQ(station.storedText(kRunning), server.url("/next"));
  EXPECT_EQ(station.storedText("prefThisUserAgent"), std::nullopt);
  int kept = 0;
  for (const auto& entry : fs::directory_iterator(file.parent_path())) {
    if (entry.path().filename().string().find(".damaged-") != std::string::npos) {
      ++kept;
      EXPECT_EQ(contents(entry.path()), whole.substr(0, whole.size() / 2));
    }
  }
  EXPECT_EQ(kept, 1);
  EXPECT_EQ(station.stop(), "exit status 0");
}

}  // namespace station

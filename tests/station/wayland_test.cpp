#include <cstdlib>

#include <gmock/gmock.h>
#include <signal.h>
#include <unistd.h>

#include "station/exit_fixture.h"
#include "station/station.h"

// The kiosk on Wayland, in a compositor that shows one program. The compositor's own output is a window on
// the station's X screen, where it can be looked at.

namespace station {

class WaylandTest : public ExitTest {
 protected:
  WaylandTest() : ExitTest({.windowManager = false}) {}

  void SetUp() override {
    ExitTest::SetUp();
    station.prefer("prefForceFullScreen", true);
    station.environment["WLR_BACKENDS"] = "x11";
    station.environment["WLR_RENDERER"] = "pixman";
  }
  // The compositor for that program.
  static std::vector<std::string> compositor(const std::vector<std::string>& program) {
    std::vector<std::string> command;
    if (geteuid() == 0) {
      // It refuses to run as root.
      command = {"unshare", "--user", "--map-user=1000", "--map-group=1000", "--"};
    }
    command.insert(command.end(), {"cage", "--"});
    command.insert(command.end(), program.begin(), program.end());
    return command;
  }
  // The compositor's output on the screen; empty while there is none.
  Area output() {
    const auto windows = station.screen().windows();
    return windows.empty() ? Area{} : station.screen().frame(windows.back());
  }
  bool showsHomeOnTheWholeScreen() {
    return waitUntil([this] {
      const Area area = output();
      return area.width > 0 &&
             station.screen().at(area.x + area.width / 2, area.y + area.height / 2) == kRed &&
             station.screen().at(area.x + 1, area.y + area.height - 2) == kRed &&
             station.screen().at(area.x + area.width - 2, area.y + area.height - 2) == kRed;
    });
  }
  int countInLog(const std::string& text) const {
    const std::string log = station.log();
    int count = 0;
    for (auto at = log.find(text); at != std::string::npos; at = log.find(text, at + 1)) {
      ++count;
    }
    return count;
  }
  // As its own lines in the log tell: "… LumoBrowser[PID:THREAD] …".
  pid_t kioskProcess() const {
    const std::string mark = "LumoBrowser[";
    const std::string log = station.log();
    const auto at = log.find(mark);
    return at == std::string::npos ? 0 : std::atoi(log.c_str() + at + mark.size());
  }
};

TEST_F(WaylandTest, ShowsTheHomePageOnTheWholeScreen) {
  station.prefer("prefWindowAlwaysStatusLevel", true);
  if (geteuid() == 0) {
    // The bus and the kiosk would not agree about who they are.
    station.environment["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=" + (station.folder() / "no-bus").string();
  }
  station.startWith(compositor({LUMO_KIOSK}));
  EXPECT_TRUE(showsHomeOnTheWholeScreen());
  // Wayland has no window levels.
  EXPECT_EQ(countInLog("this desktop has no window levels"), 1);

  const pid_t kiosk = kioskProcess();
  ASSERT_GT(kiosk, 0);
  kill(kiosk, SIGTERM);
  // The compositor ends with its program, as that did.
  EXPECT_EQ(station.kiosk().end(), "exit status 0");
  EXPECT_EQ(server.count("/home"), 1);
}

TEST_F(WaylandTest, ALostCompositorIsToldBeforeTheKioskEnds) {
  ChildProcess compositorProcess(compositor({"sleep", "infinity"}), station.environment,
                                 station.folder() / "compositor.txt");
  const std::filesystem::path socket = station.folder() / "runtime" / "wayland-0";
  ASSERT_TRUE(waitUntil([&] { return std::filesystem::is_socket(socket); }));
  station.environment["WAYLAND_DISPLAY"] = socket.filename();
  station.environment["GDK_BACKEND"] = "wayland";
  station.start();
  ASSERT_TRUE(showsHomeOnTheWholeScreen());
  compositorProcess.send(SIGKILL);
  EXPECT_EQ(station.kiosk().end(), "exit status 1");
  EXPECT_THAT(listener->heardToTheEnd(),
              ::testing::ElementsAre(releaseOf("closedwindow", server.url("/home"))));
  EXPECT_EQ(countInLog("The screen was lost"), 1);
}

}  // namespace station

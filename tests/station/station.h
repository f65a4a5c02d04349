#pragma once

#include <csignal>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include <gtest/gtest.h>

#include "platform/property_list.h"
#include "station/accessible.h"
#include "station/child_process.h"
#include "station/screen.h"
#include "station/test_server.h"
#include "station/touch_screen.h"
#include "station/waiting.h"

namespace station {

// What a station has. A window manager needs a screen.
struct Equipment {
  bool screen = true;
  bool windowManager = true;
  bool bus = true;
  // Whether the screen can be touched.
  bool touch = false;
};

// A photo station for one test: a home of its own, a virtual screen, a session bus, and the built kiosk on
// it. Nothing of whoever runs the tests is seen or touched. For one thread.
class Station {
 public:
  using Preference = std::variant<bool, std::string>;

  // Throws std::runtime_error when a part does not start.
  explicit Station(const Equipment& equipment = {});
  ~Station();
  Station(const Station&) = delete;
  Station& operator=(const Station&) = delete;

  // Writes the preference file, which holds what was given here so far and nothing else.
  void prefer(const std::string& key, Preference value);
  // What the file has for the key now; absent for none.
  std::optional<platform::PropertyList> stored(const std::string& key) const;
  // The same for text; absent for something else too.
  std::optional<std::string> storedText(const std::string& key) const;

  // The environment that programs of this station start with.
  Environment environment;
  // Starts the kiosk. One at a time.
  void start();
  // Starts `command` in place of the kiosk alone; the kiosk is somewhere below it.
  void startWith(const std::vector<std::string>& command);
  // Another copy beside it, with its own output file.
  std::unique_ptr<ChildProcess> startCopy();
  // Takes over a kiosk that another program has started.
  void adopt(pid_t kiosk);
  ChildProcess& kiosk() { return *kiosk_; }
  // Ends it as a session's end does, and says how it went.
  std::string stop();

  // The log file's text.
  std::string log() const;
  // Waits until the log holds the text.
  bool logs(const std::string& text, std::chrono::milliseconds bound = kPatience) const;
  // What the kiosk and its copies wrote outside the log.
  std::string output() const;
  std::string copyOutput() const;

  Screen& screen() { return *screen_; }
  const std::string& display() const { return environment.at("DISPLAY"); }
  // The kiosk's window, 0 while there is none.
  WindowId window();
  // How long the kiosk's window takes for a sign of life. What the machine kept the kiosk and the X server
  // waiting meanwhile does not count. Absent when it takes longer than anybody waits.
  std::optional<std::chrono::microseconds> answersAfter();
  // Waits until the middle of the kiosk's window has the colour.
  bool shows(Colour colour);
  // The kiosk's windows and the colours in their middles, for people who look into a failure.
  std::string sight();
  // Runs a program of the station's, lumoctl for example, and says how it ended.
  std::string use(const std::vector<std::string>& command);
  // What the last one wrote.
  std::string said() const;

  // A session bus at the address of the environment, which ends when it is stopped. `through`, when given,
  // makes of its command the one that starts it.
  using Starter = std::function<std::vector<std::string>(const std::vector<std::string>&)>;
  void startBus(const Starter& through = {});
  void stopBus();
  // From here on the bus takes nothing in and gives nothing out, though it is there.
  void haltBus() { bus_->send(SIGSTOP); }
  const std::string& busAddress() const { return environment.at("DBUS_SESSION_BUS_ADDRESS"); }

  // Takes the screen away as a crash of the X server would.
  void breakScreen();

  // Presses keys or types text or clicks, where the keyboard or the pointer is then.
  void key(const std::string& combination);
  void type(const std::string& text);
  void click(int x, int y, int button = 1);
  // Touches the screen, where it can be.
  void tap(int x, int y) { touchScreen_->tap(x, y); }

  // The kiosk's controls; absent while it is not on the accessibility bus.
  std::optional<Accessible> controls();
  // The control, when it shows now; the first of several from the top.
  std::optional<Accessible> control(const std::string& role, const std::string& name);
  // Waits until the button shows and is sensitive, then presses it.
  bool press(const std::string& name);
  // Clicks on it.
  bool clickOn(const Accessible& control);
  bool tapOn(const Accessible& control);

  const std::filesystem::path& folder() const { return folder_; }
  std::filesystem::path logFile() const;
  std::filesystem::path configurationFolder() const { return folder_ / "config"; }
  // Copies what explains a failure into the folder: log, outputs, controls, a picture of the screen.
  void keepEvidence(const std::filesystem::path& target);

 private:
  void startScreen(bool touch);
  void startWindowManager();
  void run(const std::vector<std::string>& command);
  // A point of the control on the screen; absent when it has none.
  std::optional<Area> pointIn(const Accessible& control);
  std::filesystem::path preferenceFile() const;

  std::filesystem::path folder_;
  std::vector<std::pair<std::string, Preference>> preferences_;
  std::unique_ptr<ChildProcess> bus_;
  std::unique_ptr<TouchScreen> touchScreen_;
  std::unique_ptr<ChildProcess> xServer_;
  std::unique_ptr<ChildProcess> windowManager_;
  std::unique_ptr<Screen> screen_;
  std::unique_ptr<ChildProcess> kiosk_;
  std::optional<Accessible> program_;
};

// A test with a station and a photo server. The kiosk starts with the page "/home", which is red, and quits
// without a question. What explains a failure is kept below the build folder.
class StationTest : public ::testing::Test {
 protected:
  explicit StationTest(const Equipment& equipment = {}) : station(equipment) {}
  void SetUp() override;
  void TearDown() override;

  // Starts the kiosk and waits for its home page on the screen.
  void startAtHome();

  TestServer server;
  Station station;
};

// A page that is all of one colour.
std::string page(Colour colour, const std::string& content = "");

}  // namespace station

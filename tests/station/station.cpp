#include "station/station.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include <stdlib.h>
#include <unistd.h>

#include "platform/file_descriptor.h"
#include "platform/property_list_file.h"
#include "station/local_socket.h"

namespace station {

namespace fs = std::filesystem;

namespace {

// How many there are. Orphans of theirs are nobody's in particular.
int stations = 0;

const std::string kScreenSize = "1280x1024";
constexpr const char* kScreenDepth = "x24";

std::string contents(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

std::string escaped(const std::string& text) {
  std::string result;
  for (const char c : text) {
    result += c == '&' ? "&amp;" : c == '<' ? "&lt;" : std::string(1, c);
  }
  return result;
}

fs::path madeFolder() {
  char name[] = "/tmp/lumo-station-XXXXXX";
  if (mkdtemp(name) == nullptr) {
    throw std::runtime_error("no folder for the station");
  }
  return name;
}

}  // namespace

Station::Station(const Equipment& equipment) : folder_(madeFolder()) {
  ++stations;
  adoptOrphans();
  for (const char* name : {"home", "config", "data", "cache", "state", "runtime"}) {
    fs::create_directory(folder_ / name);
  }
  // The runtime folder must be its owner's alone (XDG Base Directory).
  fs::permissions(folder_ / "runtime", fs::perms::owner_all);
  const char* path = std::getenv("PATH");
  environment = {{"PATH", path == nullptr ? "/usr/bin:/bin" : path},
                 {"HOME", folder_ / "home"},
                 {"XDG_CONFIG_HOME", configurationFolder()},
                 {"XDG_DATA_HOME", folder_ / "data"},
                 {"XDG_CACHE_HOME", folder_ / "cache"},
                 {"XDG_STATE_HOME", folder_ / "state"},
                 {"XDG_RUNTIME_DIR", folder_ / "runtime"},
                 {"LANG", "C.UTF-8"}};
  if (equipment.screen) {
    startScreen(equipment.touch);
  }
  if (equipment.screen && equipment.windowManager) {
    startWindowManager();
  }
  if (equipment.bus) {
    startBus();
  } else {
    // Without any address the library would look for a bus elsewhere, or start one.
    environment["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=" + (folder_ / "no-bus").string();
  }
}

Station::~Station() {
  program_.reset();
  kiosk_.reset();
  windowManager_.reset();
  screen_.reset();
  bus_.reset();
  xServer_.reset();
  if (--stations == 0) {
    endChildren();
  }
  std::error_code ignored;
  fs::remove_all(folder_, ignored);
}

void Station::startScreen(bool touch) {
  int ends[2];
  if (pipe(ends) != 0) {
    throw std::runtime_error("no pipe");
  }
  const platform::FileDescriptor readEnd(ends[0]);
  platform::FileDescriptor writeEnd(ends[1]);
  std::vector<std::string> command{"Xvfb", "-screen", "0", kScreenSize + kScreenDepth};
  if (touch) {
    touchScreen_ = std::make_unique<TouchScreen>(folder_, kScreenSize);
    command = touchScreen_->command();
  }
  // Other users of the machine may show windows on it.
  command.insert(command.end(), {"-displayfd", "3", "-nolisten", "tcp", "-noreset", "-ac"});
  xServer_ = std::make_unique<ChildProcess>(command, environment, folder_ / "screen.txt", writeEnd.get());
  writeEnd.reset();
  // It writes its number and a line break when it is ready.
  std::string number;
  char byte = 0;
  while (read(readEnd.get(), &byte, 1) == 1 && byte != '\n') {
    number += byte;
  }
  if (number.empty()) {
    throw std::runtime_error("no virtual screen: " + contents(folder_ / "screen.txt"));
  }
  environment["DISPLAY"] = ":" + number;
  screen_ = std::make_unique<Screen>(":" + number);
}

void Station::startWindowManager() {
  windowManager_ = std::make_unique<ChildProcess>(std::vector<std::string>{"openbox", "--sm-disable"},
                                                  environment, folder_ / "windows.txt");
  if (!waitUntil([this] { return screen_->isManaged(); })) {
    throw std::runtime_error("no window manager: " + contents(folder_ / "windows.txt"));
  }
}

void Station::startBus(const Starter& through) {
  const fs::path socket = folder_ / "bus";
  const std::vector<std::string> command{"dbus-daemon", "--session", "--nofork", "--nopidfile",
                                         "--address=unix:path=" + socket.string()};
  bus_ =
      std::make_unique<ChildProcess>(through ? through(command) : command, environment, folder_ / "bus.txt");
  // The socket is there a moment before anybody listens on it.
  if (!waitUntil([&socket] { return static_cast<bool>(connectedTo(socket)); })) {
    throw std::runtime_error("no session bus: " + contents(folder_ / "bus.txt"));
  }
  environment["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=" + socket.string();
}

void Station::stopBus() {
  bus_.reset();
  fs::remove(folder_ / "bus");
}

fs::path Station::preferenceFile() const {
  return configurationFolder() / "lumo" / "com.lumo.LumoBrowser.plist";
}

fs::path Station::logFile() const {
  return folder_ / "home/Library/Logs/Lumo/LumoBrowser.log";
}

void Station::prefer(const std::string& key, Preference value) {
  std::erase_if(preferences_, [&key](const auto& entry) { return entry.first == key; });
  preferences_.emplace_back(key, std::move(value));
  const fs::path file = preferenceFile();
  fs::create_directories(file.parent_path());
  const fs::path fresh = file.string() + ".fresh";
  std::ofstream out(fresh);
  out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<dict>\n";
  for (const auto& [name, preference] : preferences_) {
    out << "<key>" << name << "</key>";
    if (const bool* truth = std::get_if<bool>(&preference)) {
      out << (*truth ? "<true/>\n" : "<false/>\n");
    } else {
      out << "<string>" << escaped(std::get<std::string>(preference)) << "</string>\n";
    }
  }
  out << "</dict>\n</plist>\n";
  out.close();
  fs::rename(fresh, file);
}

std::optional<platform::PropertyList> Station::stored(const std::string& key) const {
  const auto list = platform::propertyListFromFile(preferenceFile());
  const auto* values = list ? list->as<platform::Dictionary>() : nullptr;
  const platform::PropertyList* value = values == nullptr ? nullptr : values->find(key);
  return value == nullptr ? std::nullopt : std::optional(*value);
}

std::optional<std::string> Station::storedText(const std::string& key) const {
  const auto value = stored(key);
  const std::string* text = value ? value->as<std::string>() : nullptr;
  return text == nullptr ? std::nullopt : std::optional(*text);
}

void Station::start() {
  startWith({LUMO_KIOSK});
}

void Station::startWith(const std::vector<std::string>& command) {
  program_.reset();
  kiosk_ = std::make_unique<ChildProcess>(command, environment, folder_ / "kiosk.txt");
}

void Station::adopt(pid_t kiosk) {
  program_.reset();
  kiosk_ = std::make_unique<ChildProcess>(kiosk);
}

std::unique_ptr<ChildProcess> Station::startCopy() {
  return std::make_unique<ChildProcess>(std::vector<std::string>{LUMO_KIOSK}, environment,
                                        folder_ / "copy.txt");
}

std::string Station::stop() {
  kiosk_->send(SIGTERM);
  return kiosk_->end();
}

std::string Station::log() const {
  return contents(logFile());
}

bool Station::logs(const std::string& text, std::chrono::milliseconds bound) const {
  return waitUntil([this, &text] { return log().find(text) != std::string::npos; }, bound);
}

std::string Station::output() const {
  return contents(folder_ / "kiosk.txt");
}

std::string Station::copyOutput() const {
  return contents(folder_ / "copy.txt");
}

WindowId Station::window() {
  const std::vector<WindowId> windows = screen_->windowsOf(kiosk_->pid());
  return windows.empty() ? 0 : windows.back();
}

std::optional<std::chrono::microseconds> Station::answersAfter() {
  const auto kept = [this] { return kiosk_->keptWaiting() + xServer_->keptWaiting(); };
  const auto before = kept();
  const auto taken = screen_->ping(window(), kPatience);
  return taken ? std::optional(*taken - (kept() - before)) : std::nullopt;
}

bool Station::shows(Colour colour) {
  return waitUntil([this, colour] {
    const WindowId shown = window();
    const Area frame = shown == 0 ? Area{} : screen_->frame(shown);
    return frame.width > 0 && screen_->at(frame.x + frame.width / 2, frame.y + frame.height / 2) == colour;
  });
}

std::string Station::sight() {
  std::ostringstream text;
  for (const WindowId shown : screen_->windowsOf(kiosk_->pid())) {
    const Area frame = screen_->frame(shown);
    const Colour middle = screen_->at(frame.x + frame.width / 2, frame.y + frame.height / 2);
    text << "window " << shown << " at " << frame << " with " << int{middle.red} << "," << int{middle.green}
         << "," << int{middle.blue} << " in its middle; ";
  }
  return text.str();
}

std::string Station::use(const std::vector<std::string>& command) {
  fs::remove(folder_ / "said.txt");
  return ChildProcess(command, environment, folder_ / "said.txt").end();
}

std::string Station::said() const {
  return contents(folder_ / "said.txt");
}

void Station::breakScreen() {
  screen_.reset();
  xServer_.reset();
}

void Station::run(const std::vector<std::string>& command) {
  const std::string end = ChildProcess(command, environment, folder_ / "tools.txt").end();
  if (end != "exit status 0") {
    throw std::runtime_error(command.front() + ": " + end + ": " + contents(folder_ / "tools.txt"));
  }
}

void Station::key(const std::string& combination) {
  run({"xdotool", "key", combination});
}

void Station::type(const std::string& text) {
  run({"xdotool", "type", text});
}

void Station::click(int x, int y, int button) {
  run({"xdotool", "mousemove", std::to_string(x), std::to_string(y), "click", std::to_string(button)});
}

std::optional<Accessible> Station::controls() {
  if (!program_) {
    program_ = accessibleProgram(environment.at("DBUS_SESSION_BUS_ADDRESS"), kiosk_->pid());
  }
  return program_;
}

std::optional<Accessible> Station::control(const std::string& role, const std::string& name) {
  const auto program = controls();
  return program ? program->find(role, name) : std::nullopt;
}

bool Station::press(const std::string& name) {
  return waitUntil([&] {
    const auto found = control("button", name);
    return found && found->isSensitive() && found->press();
  });
}

std::optional<Area> Station::pointIn(const Accessible& control) {
  const Area area = control.extents();
  const Area frame = screen_->frame(window());
  if (area.width <= 0 || frame.width <= 0) {
    return std::nullopt;
  }
  // Newer toolkits leave paddings out and tell places too far to the upper left.
  return Area{frame.x + area.x + area.width * 3 / 4, frame.y + area.y + area.height * 3 / 4, 1, 1};
}

bool Station::clickOn(const Accessible& control) {
  const auto point = pointIn(control);
  if (point) {
    click(point->x, point->y);
  }
  return point.has_value();
}

bool Station::tapOn(const Accessible& control) {
  const auto point = pointIn(control);
  if (point) {
    tap(point->x, point->y);
  }
  return point.has_value();
}

void Station::keepEvidence(const fs::path& target) {
  std::error_code ignored;
  fs::remove_all(target, ignored);
  fs::create_directories(target);
  for (const char* name : {"kiosk.txt", "copy.txt", "screen.txt", "xorg.txt", "windows.txt", "bus.txt",
                           "tools.txt", "said.txt"}) {
    fs::copy_file(folder_ / name, target / name, ignored);
  }
  fs::copy_file(logFile(), target / "LumoBrowser.log", ignored);
  fs::copy_file(preferenceFile(), target / "preferences.plist", ignored);
  if (kiosk_ != nullptr && kiosk_->isRunning()) {
    if (const auto program = controls()) {
      std::ofstream(target / "controls.txt") << description(*program);
    }
  }
  if (screen_ != nullptr) {
    ChildProcess({"sh", "-c", "xprop -root; xwininfo -root -tree"}, environment, target / "desktop.txt")
        .end();
    for (const WindowId shown : screen_->windows()) {
      ChildProcess({"xprop", "-id", std::to_string(shown)}, environment, target / "desktop.txt").end();
    }
    ChildProcess({"import", "-silent", "-window", "root", target / "screen.png"}, environment,
                 folder_ / "tools.txt")
        .end();
  }
}

void StationTest::SetUp() {
  server.set("/home", HttpAnswer{page(kRed)});
  station.prefer("prefDoAutoLoadUrlAtStartup", true);
  station.prefer("prefDoNotConfirmOnExit", true);
  station.prefer("prefServerAddress", server.url("/home"));
}

void StationTest::TearDown() {
  if (HasFailure()) {
    const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
    std::string name = std::string(test->test_suite_name()) + "." + test->name();
    std::replace(name.begin(), name.end(), '/', '.');
    const fs::path folder = fs::path(LUMO_BUILD_DIR) / "station" / name;
    station.keepEvidence(folder);
    std::cerr << "What explains the failure is in " << folder.string() << "\n";
  }
}

void StationTest::startAtHome() {
  station.start();
  ASSERT_TRUE(station.shows(kRed)) << "the home page does not show: " << station.sight();
}

std::string page(Colour colour, const std::string& content) {
  std::ostringstream text;
  text << "<!doctype html><html><head><title>A "
          "page</title><style>html,body{height:100%;margin:0;background:rgb("
       << int(colour.red) << "," << int(colour.green) << "," << int(colour.blue) << ")}</style></head><body>"
       << content << "</body></html>";
  return text.str();
}

}  // namespace station

#include "station/drag_source.h"

#include <fstream>
#include <sstream>
#include <stdexcept>

namespace station {

namespace {

// Below the kiosk's window, where the screen is free.
constexpr int kLeft = 40;
constexpr int kAboveBottom = 80;

}  // namespace

DragSource::DragSource(Station& station, const std::vector<std::string>& arguments)
    : station_(station), output_(station.folder() / "drag.txt") {
  std::filesystem::remove(output_);
  std::vector<std::string> command{LUMO_DRAG_SOURCE};
  command.insert(command.end(), arguments.begin(), arguments.end());
  program_ = std::make_unique<ChildProcess>(command, station.environment, output_);
  const int top = station.screen().area().height - kAboveBottom;
  const auto window = [this] {
    const auto windows = station_.screen().windowsOf(program_->pid());
    return windows.empty() ? WindowId{0} : windows.front();
  };
  if (!waitUntil([&] { return window() != 0; })) {
    throw std::runtime_error("the drag source does not show: " + said());
  }
  mouse({"windowmove", std::to_string(window()), std::to_string(kLeft), std::to_string(top)});
  if (!waitUntil([&] {
        frame_ = station_.screen().frame(window());
        return frame_.x == kLeft && frame_.y == top;
      })) {
    throw std::runtime_error("the drag source's window cannot be moved");
  }
}

void DragSource::mouse(const std::vector<std::string>& commands) {
  std::vector<std::string> command{"xdotool"};
  command.insert(command.end(), commands.begin(), commands.end());
  ChildProcess(command, station_.environment, station_.folder() / "tools.txt").end();
}

bool DragSource::pickUp() {
  const int x = frame_.x + frame_.width / 2;
  const int y = frame_.y + frame_.height / 2;
  mouse({"mousemove", std::to_string(x), std::to_string(y), "mousedown", "1"});
  return moveTo(x + 30, y, [this] { return says("began"); });
}

bool DragSource::moveTo(int x, int y, const std::function<bool()>& reached) {
  int step = 0;
  return waitUntil([&] {
    if (reached()) {
      return true;
    }
    mouse({"mousemove", std::to_string(x + (step++ % 2) * 3), std::to_string(y)});
    return false;
  });
}

void DragSource::letGo() {
  mouse({"mouseup", "1"});
}

std::string DragSource::said() const {
  std::ifstream in(output_);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

bool DragSource::says(const std::string& line) const {
  return ("\n" + said()).find("\n" + line + "\n") != std::string::npos;
}

}  // namespace station

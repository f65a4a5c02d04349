#include "station/page_processes.h"

#include <cctype>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>

#include <signal.h>

namespace station {

namespace {

// What /proc/PID/stat tells of a process: its name and its parent.
struct Process {
  std::string name;
  pid_t parent = 0;
};

std::map<pid_t, Process> processes() {
  std::map<pid_t, Process> found;
  for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
    const std::string folder = entry.path().filename();
    std::ifstream in(entry.path() / "stat");
    std::string text;
    const auto isOne =
        std::isdigit(static_cast<unsigned char>(folder.front())) != 0 && std::getline(in, text);
    const auto open = text.find('(');
    const auto close = text.rfind(')');
    if (isOne && close != std::string::npos) {
      const pid_t parent = static_cast<pid_t>(std::strtol(text.c_str() + close + 4, nullptr, 10));
      found[static_cast<pid_t>(std::stoi(folder))] = {text.substr(open + 1, close - open - 1), parent};
    }
  }
  return found;
}

}  // namespace

int killPages(pid_t kiosk) {
  int count = 0;
  auto all = processes();
  for (const auto& [process, what] : all) {
    pid_t above = what.parent;
    while (above > 1 && above != kiosk) {
      above = all[above].parent;
    }
    // The kernel keeps fifteen characters of a name.
    if (above == kiosk && what.name == "WebKitWebProces" && kill(process, SIGKILL) == 0) {
      ++count;
    }
  }
  return count;
}

}  // namespace station

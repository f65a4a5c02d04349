#include "tests/station/process_tree.h"

#include <algorithm>
#include <cctype>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>

#include <signal.h>

namespace station {

namespace fs = std::filesystem;

namespace {

struct Process {
  std::string name;
  pid_t parent = 0;
};

// What /proc/PID/stat tells (proc(5)): the name stands in brackets and may have brackets itself.
std::map<pid_t, Process> processes() {
  std::map<pid_t, Process> found;
  std::error_code gone;
  for (const auto& entry : fs::directory_iterator("/proc", gone)) {
    const std::string folder = entry.path().filename();
    std::ifstream in(entry.path() / "stat");
    std::string text;
    if (std::isdigit(static_cast<unsigned char>(folder.front())) == 0 || !std::getline(in, text)) {
      continue;
    }
    const auto open = text.find('(');
    const auto close = text.rfind(')');
    if (open != std::string::npos && close != std::string::npos) {
      const pid_t parent = static_cast<pid_t>(std::strtol(text.c_str() + close + 4, nullptr, 10));
      found[static_cast<pid_t>(std::stoi(folder))] = {text.substr(open + 1, close - open - 1), parent};
    }
  }
  return found;
}

bool isBelow(const std::map<pid_t, Process>& all, pid_t process, pid_t first) {
  for (auto at = all.find(process); at != all.end() && at->first > 1; at = all.find(at->second.parent)) {
    if (at->second.parent == first) {
      return true;
    }
  }
  return false;
}

std::size_t number(const fs::path& file, const std::string& label) {
  std::ifstream in(file);
  for (std::string line; std::getline(in, line);) {
    if (line.starts_with(label)) {
      return std::strtoul(line.c_str() + label.size(), nullptr, 10);
    }
  }
  return 0;
}

}  // namespace

ProcessTree measure(pid_t first) {
  ProcessTree tree;
  const auto all = processes();
  for (const auto& entry : all) {
    if (entry.first == first || isBelow(all, entry.first, first)) {
      tree.memory += number(fs::path("/proc") / std::to_string(entry.first) / "smaps_rollup", "Pss:");
    }
  }
  const fs::path own = fs::path("/proc") / std::to_string(first);
  std::error_code gone;
  tree.openFiles = static_cast<std::size_t>(
      std::distance(fs::directory_iterator(own / "fd", gone), fs::directory_iterator()));
  tree.threads = number(own / "status", "Threads:");
  return tree;
}

std::vector<pid_t> processesBelow(pid_t first, const std::string& name) {
  std::vector<pid_t> found;
  const auto all = processes();
  for (const auto& [process, what] : all) {
    if (what.name == name.substr(0, 15) && isBelow(all, process, first)) {
      found.push_back(process);
    }
  }
  return found;
}

int signalPages(pid_t kiosk, int signal) {
  const auto pages = processesBelow(kiosk, "WebKitWebProcess");
  return static_cast<int>(
      std::count_if(pages.begin(), pages.end(), [signal](pid_t page) { return kill(page, signal) == 0; }));
}

int killPages(pid_t kiosk) {
  return signalPages(kiosk, SIGKILL);
}

}  // namespace station

#include "tests/station/process_tree.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>

#include <signal.h>

namespace station {

namespace fs = std::filesystem;

namespace {

std::size_t number(const fs::path& file, const std::string& label) {
  std::ifstream in(file);
  for (std::string line; std::getline(in, line);) {
    if (line.starts_with(label)) {
      return std::strtoul(line.c_str() + label.size(), nullptr, 10);
    }
  }
  return 0;
}

int signalNamed(pid_t kiosk, const std::string& name, int signal) {
  const auto all = processesBelow(kiosk);
  return static_cast<int>(std::count_if(all.begin(), all.end(), [&](pid_t process) {
    std::ifstream in("/proc/" + std::to_string(process) + "/comm");
    std::string comm;
    // The kernel keeps fifteen characters of a name.
    return std::getline(in, comm) && comm == name.substr(0, 15) && kill(process, signal) == 0;
  }));
}

}  // namespace

// A process has them with each of its threads.
std::vector<pid_t> childrenOf(pid_t process) {
  std::vector<pid_t> found;
  // It may end meanwhile.
  std::error_code gone;
  fs::directory_iterator thread("/proc/" + std::to_string(process) + "/task", gone);
  for (; !gone && thread != fs::directory_iterator(); thread.increment(gone)) {
    std::ifstream list(thread->path() / "children");
    for (pid_t child = 0; list >> child;) {
      found.push_back(child);
    }
  }
  return found;
}

std::vector<pid_t> processesBelow(pid_t process) {
  std::vector<pid_t> found = childrenOf(process);
  for (std::size_t at = 0; at < found.size(); ++at) {
    for (const pid_t child : childrenOf(found[at])) {
      found.push_back(child);
    }
  }
  return found;
}

ProcessTree measure(pid_t first) {
  ProcessTree tree;
  std::vector<pid_t> all = processesBelow(first);
  all.push_back(first);
  for (const pid_t process : all) {
    tree.memory += number(fs::path("/proc") / std::to_string(process) / "smaps_rollup", "Pss:");
  }
  const fs::path own = fs::path("/proc") / std::to_string(first);
  std::error_code gone;
  tree.openFiles = static_cast<std::size_t>(
      std::distance(fs::directory_iterator(own / "fd", gone), fs::directory_iterator()));
  tree.threads = number(own / "status", "Threads:");
  return tree;
}

int signalPages(pid_t kiosk, int signal) {
  return signalNamed(kiosk, "WebKitWebProcess", signal);
}

int killPages(pid_t kiosk) {
  return signalPages(kiosk, SIGKILL);
}

int killNetwork(pid_t kiosk) {
  return signalNamed(kiosk, "WebKitNetworkProcess", SIGKILL);
}

}  // namespace station

#pragma once

#include <chrono>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

#include "station/waiting.h"

namespace station {

using Environment = std::map<std::string, std::string>;

// A program that the test runs. It ends with this object at the latest, and with the test program however
// that ends. For the thread that made it.
class ChildProcess {
 public:
  // Starts `command` (looked up in the test's own PATH) with exactly this environment. Its standard output
  // and error are appended to `output`. `passed`, when given, is a descriptor that the child gets under the
  // number
  // 3. Throws std::runtime_error when it cannot be started.
  ChildProcess(const std::vector<std::string>& command, const Environment& environment,
               const std::filesystem::path& output, int passed = -1);
  // One that runs already, started by some other program.
  explicit ChildProcess(pid_t running) : pid_(running) {}
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  pid_t pid() const { return pid_; }
  bool isRunning();
  // How long its main thread has been ready to run while the machine was busy with others.
  std::chrono::microseconds keptWaiting() const;
  // Nothing happens once it has ended.
  void send(int signal);
  // How it ended: "exit status 0", "signal 11"; "still running" after the bound; "gone" when only its parent
  // could tell.
  std::string end(std::chrono::milliseconds bound = kPatience);

 private:
  pid_t pid_ = -1;
  std::optional<int> status_;
  bool gone_ = false;
};

// Whatever the test's children leave behind becomes a child of the test program from here on, so that it can
// be found and ended.
void adoptOrphans();
// The names of the programs that the test program has as children now, ended ones not counted.
std::vector<std::string> childrenNames();
// Ends all children of the test program.
void endChildren();

}  // namespace station

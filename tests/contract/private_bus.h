#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/file_descriptor.h"

// A session bus of the test's own, at an address that stays the same when it is started again.
class PrivateBus {
 public:
  PrivateBus() {
    char name[] = "/tmp/lumo-bus-XXXXXX";
    if (mkdtemp(name) == nullptr) {
      throw std::runtime_error("no folder for the bus");
    }
    folder_ = name;
    start();
  }
  ~PrivateBus() {
    stop();
    std::filesystem::remove_all(folder_);
  }
  PrivateBus(const PrivateBus&) = delete;
  PrivateBus& operator=(const PrivateBus&) = delete;

  std::string address() const { return "unix:path=" + (folder_ / "socket").string(); }
  const std::filesystem::path& folder() const { return folder_; }

  // Returns when the bus can be reached.
  void start() {
    int ends[2];
    if (pipe(ends) != 0) {
      throw std::runtime_error("no pipe");
    }
    const platform::FileDescriptor readEnd(ends[0]);
    platform::FileDescriptor writeEnd(ends[1]);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addclose(&actions, readEnd.get());
    // It complains there about limits that it cannot raise.
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    const std::string where = "--address=" + address();
    const std::string print = "--print-address=" + std::to_string(writeEnd.get());
    const char* arguments[] = {"dbus-daemon", "--session",   "--nofork", "--nopidfile",
                               where.c_str(), print.c_str(), nullptr};
    if (posix_spawnp(&process_, "dbus-daemon", &actions, nullptr, const_cast<char**>(arguments), environ) !=
        0) {
      process_ = -1;
    }
    posix_spawn_file_actions_destroy(&actions);
    writeEnd.reset();
    pollfd ready = {readEnd.get(), POLLIN, 0};
    char byte = 0;
    if (process_ < 0 || poll(&ready, 1, 10'000) != 1 || read(readEnd.get(), &byte, 1) != 1) {
      throw std::runtime_error("dbus-daemon did not start");
    }
  }
  void stop() {
    if (process_ > 0) {
      kill(process_, SIGKILL);
      waitpid(process_, nullptr, 0);
      process_ = -1;
      std::filesystem::remove(folder_ / "socket");
    }
  }
  // The bus keeps its connections and does nothing.
  void freeze() { kill(process_, SIGSTOP); }
  void thaw() { kill(process_, SIGCONT); }

 private:
  std::filesystem::path folder_;
  pid_t process_ = -1;
};

// Sets a variable of the environment for the life of this object.
class ScopedEnvironment {
 public:
  ScopedEnvironment(const char* name, const std::string& value) : name_(name) {
    const char* before = getenv(name);
    had_ = before != nullptr;
    before_ = had_ ? before : "";
    setenv(name, value.c_str(), 1);
  }
  ~ScopedEnvironment() {
    if (had_) {
      setenv(name_, before_.c_str(), 1);
    } else {
      unsetenv(name_);
    }
  }
  ScopedEnvironment(const ScopedEnvironment&) = delete;
  ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

 private:
  const char* name_;
  bool had_;
  std::string before_;
};

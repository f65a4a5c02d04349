#pragma once

#include <csignal>
#include <stdexcept>
#include <string>

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/file_descriptor.h"

// An X server of the test's own without a window manager, on a display number that it finds free itself. It
// goes with the process. To be made before there are threads.
class PrivateDisplay {
 public:
  PrivateDisplay() {
    // Servers that look for a free number at the same moment can find the same one; the loser ends.
    for (int attempt = 0; attempt < 5 && !start(); ++attempt) {
    }
    if (name_.empty()) {
      throw std::runtime_error("Xvfb did not start");
    }
  }
  // The server ends after the process: a toolkit whose display goes first ends its process with an error.
  ~PrivateDisplay() = default;
  PrivateDisplay(const PrivateDisplay&) = delete;
  PrivateDisplay& operator=(const PrivateDisplay&) = delete;

  const std::string& name() const { return name_; }

 private:
  bool start() {
    int ends[2];
    if (pipe(ends) != 0) {
      return false;
    }
    const platform::FileDescriptor readEnd(ends[0]);
    platform::FileDescriptor writeEnd(ends[1]);
    const std::string number = std::to_string(writeEnd.get());
    process_ = fork();
    if (process_ == 0) {
      prctl(PR_SET_PDEATHSIG, SIGTERM);
      // It complains there about keyboard symbols that nobody uses.
      dup2(open("/dev/null", O_WRONLY | O_CLOEXEC), STDERR_FILENO);
      execlp("Xvfb", "Xvfb", "-displayfd", number.c_str(), "-screen", "0", "1280x1024x24", "-nolisten", "tcp",
             nullptr);
      _exit(127);
    }
    writeEnd.reset();
    // The server writes its number and the line break one after the other.
    pollfd ready = {readEnd.get(), POLLIN, 0};
    std::string told;
    char byte = 0;
    while (process_ > 0 && poll(&ready, 1, 30'000) == 1 && read(readEnd.get(), &byte, 1) == 1 &&
           byte != '\n') {
      told += byte;
    }
    if (told.empty() || byte != '\n') {
      stop();
      return false;
    }
    name_ = ":" + told;
    return true;
  }

  void stop() {
    if (process_ > 0) {
      kill(process_, SIGTERM);
      waitpid(process_, nullptr, 0);
      process_ = -1;
    }
  }

  pid_t process_ = -1;
  std::string name_;
};

#pragma once

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/notification_center.h"
#include "support/ZELKOR_Log.h"
#include "tests/fakes/sim_dispatch.h"

namespace logtest {

inline std::string contents(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream bytes;
  bytes << file.rdbuf();
  return bytes.str();
}

inline void write(const std::filesystem::path& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

inline std::vector<std::string> lines(const std::string& text) {
  std::vector<std::string> result;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    result.push_back(line);
  }
  return result;
}

// Standard error goes into a file until the end, then where it went before.
class StandardErrorCapture {
 public:
  explicit StandardErrorCapture(std::filesystem::path file)
      : file_(std::move(file)), before_(dup(STDERR_FILENO)) {
    const int descriptor = open(file_.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_TRUNC, 0600);
    dup2(descriptor, STDERR_FILENO);
    close(descriptor);
  }
  ~StandardErrorCapture() {
    dup2(before_, STDERR_FILENO);
    close(before_);
  }
  StandardErrorCapture(const StandardErrorCapture&) = delete;
  StandardErrorCapture& operator=(const StandardErrorCapture&) = delete;

  std::string text() const { return contents(file_); }

 private:
  std::filesystem::path file_;
  int before_;
};

// A fresh log on simulated time, a folder of its own, standard error captured.
class LogTest : public testing::Test {
 protected:
  LogTest() { lumo::ZELKOR_Log::initialize(dispatch_, center_, "MyApp"); }
  ~LogTest() override { std::filesystem::remove_all(folder_); }

  static std::filesystem::path makeFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "log-test-XXXXXX").string();
    return mkdtemp(pattern.data());
  }
  std::string path(const std::string& name) const { return (folder_ / name).string(); }
  // What standard error has received, each NSLog line without its head.
  std::vector<std::string> diagnostics() const {
    std::vector<std::string> result;
    for (const std::string& line : lines(standardError_->text())) {
      const auto head = line.find("] ");
      result.push_back(head == std::string::npos || !line.starts_with("20") ? line : line.substr(head + 2));
    }
    return result;
  }
  void run() { dispatch_.runUntilIdle(); }

  const std::filesystem::path folder_ = makeFolder();
  std::unique_ptr<StandardErrorCapture> standardError_ =
      std::make_unique<StandardErrorCapture>(folder_ / "standard-error");
  fakes::SimDispatch dispatch_;
  platform::NotificationCenter center_;
};

// Runs `body` in a child process and returns its exit status, or 128 and the signal that killed it.
inline int inChild(const std::function<int()>& body) {
  const pid_t child = fork();
  if (child == 0) {
    _exit(body());
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace logtest

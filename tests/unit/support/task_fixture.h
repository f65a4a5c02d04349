#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/ZELKOR_Task.h"
#include "tests/fakes/captured_log.h"
#include "tests/fakes/test_platform.h"
#include "tests/unit/platform/temporary_folder.h"

namespace tasktest {

// Answers each request to terminate, and no more.
class Delegate : public platform::ApplicationDelegate {
 public:
  void applicationWillFinishLaunching() override {}
  void applicationDidFinishLaunching() override {}
  platform::TerminateReply applicationShouldTerminate() override { return reply; }
  bool applicationShouldTerminateAfterLastWindowClosed() override { return false; }
  void applicationDidResignActive() override {}
  void applicationWillTerminate() override {}
  void applicationMustTerminate() override {}
  void application_openURLs(const std::vector<std::string>&) override {}
  void application_openFiles(const std::vector<std::string>&) override {}
  bool applicationOpenUntitledFile() override { return true; }

  platform::TerminateReply reply = platform::TerminateReply::Now;
};

// Tools are real; the rest of the machine is played. The test's thread is the main queue, and a tool's end is
// told when the test lets the queues run.
class TaskTest : public testing::Test {
 protected:
  using Task = lumo::ZELKOR_Task;
  using Strings = Task::Strings;

  TaskTest() { machine.application.setDelegate(&delegate); }

  // Lets the queues run until `reached`, on which other threads work. False when that takes too long.
  bool runUntil(const std::function<bool()>& reached) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!reached()) {
      if (std::chrono::steady_clock::now() > end) {
        return false;
      }
      machine.dispatch.runUntilIdle();
      std::this_thread::yield();
    }
    return true;
  }
  // Whether a line begins like this.
  bool hasLine(std::string_view beginning) const {
    for (const std::string& line : log.lines()) {
      if (line.starts_with(beginning)) {
        return true;
      }
    }
    return false;
  }
  static std::string id(const platform::Task& task) {
    return "[" + std::to_string(task.processIdentifier()) + "]";
  }

  static constexpr const char* kMissing = "/no/such/tool";

  const fakes::CapturedLog log;
  Delegate delegate;
  fakes::TestPlatform machine;
  const platform::Platform platform = machine.platform();
  const TemporaryFolder folder;
};

}  // namespace tasktest

#include "support/ZELKOR_Task.h"

#include <atomic>
#include <thread>

#include "tests/unit/support/task_fixture.h"

namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

class LaunchTest : public tasktest::TaskTest {
 protected:
  std::shared_ptr<platform::Task> launch(const std::string& path, const Strings& arguments = {},
                                         Task::TerminationHandler handler = nullptr) {
    return Task::launchToolAtPath_withArguments_completionHandler(platform, path, arguments,
                                                                  std::move(handler));
  }
};

TEST_F(LaunchTest, GivesTheStartedTaskAndTellsItsEnd) {
  int status = -1;
  int identifier = 0;
  bool onGlobalQueue = false;
  const auto task = launch("/bin/sh", {"-c", "exit 3"}, [&](platform::Task& ended) {
    status = ended.waitUntilExit().status;
    identifier = ended.processIdentifier();
    onGlobalQueue = machine.dispatch.global().isCurrent();
  });
  ASSERT_TRUE(task);
  EXPECT_EQ(status, -1);
  machine.dispatch.runUntilIdle();
  EXPECT_EQ(status, 3);
  EXPECT_EQ(identifier, task->processIdentifier());
  EXPECT_TRUE(onGlobalQueue);
  EXPECT_THAT(log.lines(), ElementsAre("starting task /bin/sh -c exit 3",
                                       "STARTED TASK STARTED TASK STARTED TASK /bin/sh " + id(*task)));
}

TEST_F(LaunchTest, ReturnsWhileTheToolStillRuns) {
  const auto go = (folder / "go").string();
  ASSERT_EQ(std::system(("mkfifo " + go).c_str()), 0);
  bool ended = false;
  ASSERT_TRUE(launch("/bin/sh", {"-c", "read line <" + go}, [&](platform::Task&) { ended = true; }));
  EXPECT_FALSE(ended);
  writeFile(go, "\n");
  machine.dispatch.runUntilIdle();
  EXPECT_TRUE(ended);
}

TEST_F(LaunchTest, SeveralToolsRunAtOnce) {
  const auto go = (folder / "go").string();
  ASSERT_EQ(std::system(("mkfifo " + go).c_str()), 0);
  std::vector<int> ended;
  // The first one waits for the second.
  ASSERT_TRUE(launch("/bin/sh", {"-c", "read line <" + go}, [&](platform::Task&) { ended.push_back(1); }));
  ASSERT_TRUE(launch("/bin/sh", {"-c", "echo >" + go}, [&](platform::Task&) { ended.push_back(2); }));
  machine.dispatch.runUntilIdle();
  EXPECT_THAT(ended, ElementsAre(1, 2));
}

TEST_F(LaunchTest, PassesArgumentsWithoutAShell) {
  const auto out = (folder / "out").string();
  ASSERT_TRUE(launch("/usr/bin/touch", {out + " $HOME *"}));
  machine.dispatch.runUntilIdle();
  EXPECT_THAT(folder.names(), ElementsAre("out $HOME *"));
}

TEST_F(LaunchTest, WhatAToolSaysGoesWhereTheProgramsGoes) {
  testing::internal::CaptureStdout();
  ASSERT_TRUE(launch("/bin/sh", {"-c", "echo result; echo complaint >&2"}));
  machine.dispatch.runUntilIdle();
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "result\n");
  EXPECT_TRUE(log.contains("complaint")) << log.text();
}

TEST_F(LaunchTest, AFileThatCannotBeStartedGivesNoTaskAndALine) {
  writeFile(folder / "data", "no program");
  for (const std::string& path : {(folder / "data").string(), folder.path().string()}) {
    bool called = false;
    EXPECT_EQ(launch(path, {}, [&](platform::Task&) { called = true; }), nullptr);
    machine.dispatch.runUntilIdle();
    EXPECT_FALSE(called);
    EXPECT_TRUE(hasLine("Task: cannot start " + path + ": ")) << log.text();
  }
  EXPECT_EQ(machine.windows.currentAlert(), nullptr);
}

TEST_F(LaunchTest, AnArgumentWithAZeroByteStartsNothing) {
  writeFile(folder / "kept", "");
  EXPECT_EQ(launch("/bin/rm", {(folder / "kept").string() + std::string("\0.jpg", 5)}), nullptr);
  EXPECT_TRUE(log.contains("/bin/rm is not started: an argument has a zero byte")) << log.text();
  EXPECT_THAT(folder.names(), ElementsAre("kept"));
}

class MissingToolTest : public LaunchTest {
 protected:
  void press() { machine.windows.pressAlertButton("Quit and Fix Problem"); }
};

TEST_F(MissingToolTest, ItsAlertSaysWhatIsMissing) {
  const platform::Alert alert = Task::missingToolAlert("/usr/local/bin/ffmpeg");
  EXPECT_EQ(alert.messageText, "WARNING! Unable to Required Execute Command!");
  EXPECT_EQ(alert.informativeText,
            "\nLaunchPath Expected At:\n/usr/local/bin/ffmpeg\n\nCommmand Tool Missing or Not Installed "
            "yet?\n");
  ASSERT_EQ(alert.buttons.size(), 1U);
  EXPECT_EQ(alert.buttons.front().title, "Quit and Fix Problem");
  EXPECT_EQ(alert.buttons.front().tag, platform::kAlertFirstButtonReturn);
}

TEST_F(MissingToolTest, FromABackgroundThreadTheCallerWaitsForTheAnswerAndTheApplicationTerminates) {
  std::shared_ptr<platform::Task> task = nullptr;
  std::atomic<bool> returned{false};
  bool called = false;
  std::thread caller([&] {
    task = launch(kMissing, {"a", "b"}, [&](platform::Task&) { called = true; });
    returned = true;
  });
  ASSERT_TRUE(runUntil([this] { return machine.windows.currentAlert() != nullptr; }));
  EXPECT_EQ(machine.windows.currentAlert()->informativeText,
            Task::missingToolAlert(kMissing).informativeText);
  EXPECT_FALSE(returned);
  EXPECT_TRUE(machine.application.replies().empty());
  press();
  caller.join();
  EXPECT_EQ(task, nullptr);
  EXPECT_THAT(machine.application.replies(), ElementsAre(platform::TerminateReply::Now));
  machine.dispatch.runUntilIdle();
  EXPECT_TRUE(machine.application.isTerminated());
  EXPECT_FALSE(called);
}

TEST_F(MissingToolTest, TellsFiveLinesBetweenTheOthers) {
  std::thread caller([this] { launch(kMissing, {"a", "b"}); });
  ASSERT_TRUE(runUntil([this] { return machine.windows.currentAlert() != nullptr; }));
  press();
  caller.join();
  const std::string rule(75, '!');
  // A line that is a line break shows as two.
  EXPECT_THAT(log.lines(),
              ElementsAre("starting task /no/such/tool a b", "", "", rule,
                          "!!!!!!!!  UNABLE TO FIND LAUNCHPATH = /no/such/tool  !!!!!!!!", rule, "", ""));
}

TEST_F(MissingToolTest, FromTheMainQueueTheCallNeverReturns) {
  machine.dispatch.main().after(1000ms, [this] { press(); });
  bool returned = false;
  EXPECT_THROW(
      {
        launch(kMissing);
        returned = true;
      },
      fakes::ProcessExit);
  EXPECT_FALSE(returned);
  // Not before the alert was answered.
  EXPECT_GE(machine.dispatch.now(), 1000ms);
  EXPECT_TRUE(machine.application.isTerminated());
  EXPECT_EQ(machine.application.exitStatus(), 0);
}

TEST_F(MissingToolTest, FromTheMainQueueItWaitsAlsoWhereTheQuitIsPutOff) {
  delegate.reply = platform::TerminateReply::Cancel;
  machine.dispatch.main().after(1000ms, [this] { press(); });
  machine.dispatch.main().after(5000ms, [this] {
    delegate.reply = platform::TerminateReply::Now;
    machine.application.terminate();
  });
  EXPECT_THROW(launch(kMissing), fakes::ProcessExit);
  EXPECT_EQ(machine.dispatch.now(), 5000ms);
}

TEST_F(MissingToolTest, ACallerInTheBackgroundGoesOnWhereTheQuitIsCancelled) {
  delegate.reply = platform::TerminateReply::Cancel;
  std::thread caller([this] { EXPECT_EQ(launch(kMissing), nullptr); });
  ASSERT_TRUE(runUntil([this] { return machine.windows.currentAlert() != nullptr; }));
  press();
  caller.join();
  EXPECT_FALSE(machine.application.isTerminated());
}

TEST_F(MissingToolTest, AnAlertThatGoesUnansweredTerminatesAsWell) {
  std::thread caller([this] { launch(kMissing); });
  ASSERT_TRUE(runUntil([this] { return machine.windows.currentAlert() != nullptr; }));
  machine.windows.dropAlerts();
  caller.join();
  machine.dispatch.runUntilIdle();
  EXPECT_TRUE(machine.application.isTerminated());
}

TEST_F(MissingToolTest, SeveralCallersAreAllAnswered) {
  std::atomic<int> returned{0};
  std::vector<std::thread> callers;
  callers.reserve(3);
  for (int i = 0; i < 3; ++i) {
    callers.emplace_back([&] {
      launch(kMissing);
      ++returned;
    });
  }
  for (int i = 0; i < 3; ++i) {
    ASSERT_TRUE(runUntil([this] { return machine.windows.currentAlert() != nullptr; }));
    press();
  }
  for (std::thread& caller : callers) {
    caller.join();
  }
  EXPECT_EQ(returned, 3);
}

}  // namespace

#include "platform/task.h"

#include <chrono>
#include <future>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/unit/platform/child_process.h"
#include "tests/unit/platform/temporary_folder.h"

namespace {

using platform::Task;
using platform::TaskResult;

std::optional<TaskResult> shell(const std::string& command) {
  return Task::run("/bin/sh", {"-c", command});
}

TEST(Task, GivesOutputAndStatus) {
  const auto result = shell("echo one; echo two");
  ASSERT_TRUE(result);
  EXPECT_EQ(result->standardOutput, "one\ntwo\n");
  EXPECT_EQ(result->status, 0);
  EXPECT_EQ(result->signal, std::nullopt);
  EXPECT_EQ(shell("exit 3")->status, 3);
}

TEST(Task, PassesArgumentsAsTheyAre) {
  const auto result = Task::run("/usr/bin/printf", {"[%s]", "a b", "", "$HOME", "*", "\"'\\"});
  ASSERT_TRUE(result);
  EXPECT_EQ(result->standardOutput, "[a b][][$HOME][*][\"'\\]");
}

TEST(Task, TellsTheSignalThatKilled) {
  const auto result = shell("kill -TERM $$");
  ASSERT_TRUE(result);
  EXPECT_EQ(result->signal, SIGTERM);
  EXPECT_EQ(result->status, 128 + SIGTERM);
}

TEST(Task, ReadsMoreThanAPipeHolds) {
  const auto result = shell("head -c 3000000 /dev/zero");
  ASSERT_TRUE(result);
  EXPECT_EQ(result->standardOutput.size(), 3000000U);
  EXPECT_EQ(result->standardOutput.find_first_not_of('\0'), std::string::npos);
}

TEST(Task, ReadsWhatABackgroundProcessWrites) {
  const auto result = shell("(cat >/dev/null </dev/null; echo late) & echo early");
  ASSERT_TRUE(result);
  EXPECT_THAT(result->standardOutput,
              testing::AllOf(testing::HasSubstr("early"), testing::HasSubstr("late")));
}

TEST(Task, IsAbsentWhenNothingStarts) {
  const TemporaryFolder folder;
  writeFile(folder / "data", "no program");
  for (const auto& program : {std::string("/no/such/program"), std::string(), (folder / "data").string()}) {
    testing::internal::CaptureStderr();
    EXPECT_FALSE(Task::run(program, {}));
    EXPECT_FALSE(Task::launch(program, {}));
    EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::HasSubstr("cannot start " + program));
  }
}

TEST(Task, LaunchReturnsWhileTheProgramRuns) {
  const TemporaryFolder folder;
  const auto go = (folder / "go").string();
  ASSERT_EQ(::system(("mkfifo " + go).c_str()), 0);
  const auto task = Task::launch("/bin/sh", {"-c", "read line <" + go + "; exit $line"});
  ASSERT_TRUE(task);
  EXPECT_GT(task->processIdentifier(), 0);
  EXPECT_EQ(::kill(task->processIdentifier(), 0), 0);
  writeFile(go, "5\n");
  EXPECT_EQ(task->waitUntilExit().status, 5);
  EXPECT_EQ(task->waitUntilExit().status, 5);
}

TEST(Task, TakesNoOtherChildsStatus) {
  const auto other = ::fork();
  ASSERT_GE(other, 0);
  if (other == 0) {
    ::_exit(42);
  }
  std::vector<std::future<int>> tasks;
  tasks.reserve(20);
  for (int i = 0; i < 20; ++i) {
    tasks.push_back(
        std::async(std::launch::async, [i] { return shell("exit " + std::to_string(i))->status; }));
  }
  for (int i = 0; i < 20; ++i) {
    EXPECT_EQ(tasks[static_cast<std::size_t>(i)].get(), i);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(other, &status, 0), other);
  EXPECT_EQ(WEXITSTATUS(status), 42);
}

TEST(Task, AStatusThatTheSystemThrewAwayIsMinusOneAndALine) {
  testing::internal::CaptureStderr();
  // Whoever ignores the signal of ended children gets no status of theirs.
  EXPECT_EQ(inChild([] {
              ::signal(SIGCHLD, SIG_IGN);
              const auto result = shell("echo told; exit 3");
              if (!result || result->standardOutput != "told\n") return 1;
              return result->status == -1 && !result->signal ? 0 : 2;
            }),
            0);
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              testing::ContainsRegex("Task: process [0-9]+ ended without a status: No child processes"));
}

TEST(Task, ManyOutputsAtOnceAllEnd) {
  // A child that held the writing end of another one's pipe would keep that one's reader waiting.
  std::vector<std::future<std::string>> tasks;
  tasks.reserve(16);
  for (int i = 0; i < 16; ++i) {
    tasks.push_back(
        std::async(std::launch::async, [i] { return shell("echo " + std::to_string(i))->standardOutput; }));
  }
  for (int i = 0; i < 16; ++i) {
    EXPECT_EQ(tasks[static_cast<std::size_t>(i)].get(), std::to_string(i) + "\n");
  }
}

TEST(Task, ChildrenHaveTheUsualSignals) {
  sigset_t blocked;
  sigset_t before;
  sigemptyset(&blocked);
  sigaddset(&blocked, SIGTERM);
  sigaddset(&blocked, SIGCHLD);
  ASSERT_EQ(::pthread_sigmask(SIG_BLOCK, &blocked, &before), 0);
  const auto oldHandler = ::signal(SIGPIPE, SIG_IGN);
  const auto result = Task::run("/bin/grep", {"-E", "^Sig(Blk|Ign)", "/proc/self/status"});
  ::signal(SIGPIPE, oldHandler);
  ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
  ASSERT_TRUE(result);
  EXPECT_THAT(result->standardOutput, testing::HasSubstr("SigBlk:\t0000000000000000"));
  const auto ignored = result->standardOutput.find("SigIgn:\t") + 8;
  const auto mask = std::stoull(result->standardOutput.substr(ignored, 16), nullptr, 16);
  EXPECT_EQ(mask & (1ULL << (SIGPIPE - 1)), 0U);
}

TEST(Task, ChildrenGetNoFileOfThisProgram) {
  // Descriptor 3 and above, without close-on-exec, as a careless library would leave them.
  const int leak = ::dup(STDERR_FILENO);
  ASSERT_GT(leak, STDERR_FILENO);
  const auto result = Task::run("/bin/ls", {"/proc/self/fd"});
  ::close(leak);
  ASSERT_TRUE(result);
  // The last one is the folder that the program reads.
  EXPECT_EQ(result->standardOutput, "0\n1\n2\n3\n");
}

TEST(Task, KeepsOwnSettingsFromChildren) {
  ::setenv("LUMO_TEST_KEPT", "1", 1);
  ::setenv("LUMO_TEST_KEPT_NOT", "2", 1);
  const std::string command = "echo ${LUMO_TEST_KEPT-none} ${LUMO_TEST_KEPT_NOT-none}";
  EXPECT_EQ(shell(command)->standardOutput, "1 2\n");
  Task::setEnvironmentKeptFromChildren({"LUMO_TEST_KEPT"});
  EXPECT_EQ(shell(command)->standardOutput, "none 2\n");
  const TemporaryFolder folder;
  const auto out = (folder / "out").string();
  ASSERT_EQ(Task::launch("/bin/sh", {"-c", "(" + command + ") >" + out})->waitUntilExit().status, 0);
  EXPECT_EQ(readFile(out), "none 2\n");
  Task::setEnvironmentKeptFromChildren({});
  ::unsetenv("LUMO_TEST_KEPT");
  ::unsetenv("LUMO_TEST_KEPT_NOT");
}

TEST(Task, SignalsDoNotInterruptTheWait) {
  // A handler without SA_RESTART makes the calls return early.
  struct sigaction action {};
  struct sigaction before {};
  action.sa_handler = [](int) {};
  ASSERT_EQ(::sigaction(SIGUSR1, &action, &before), 0);
  const TemporaryFolder folder;
  const auto go = (folder / "go").string();
  ASSERT_EQ(::system(("mkfifo " + go).c_str()), 0);
  std::promise<pthread_t> waiting;
  auto result = std::async(std::launch::async, [&] {
    waiting.set_value(::pthread_self());
    return shell("read line <" + go + "; echo $line");
  });
  const auto thread = waiting.get_future().get();
  for (int i = 0; i < 1000; ++i) {
    ::pthread_kill(thread, SIGUSR1);
    std::this_thread::yield();
  }
  writeFile(go, "done\n");
  const auto ended = result.get();
  ::sigaction(SIGUSR1, &before, nullptr);
  ASSERT_TRUE(ended);
  EXPECT_EQ(ended->standardOutput, "done\n");
  EXPECT_EQ(ended->status, 0);
}

}  // namespace

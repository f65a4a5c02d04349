#include <chrono>
#include <csignal>
#include <fstream>
#include <map>
#include <sstream>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/log.h"
#include "support/ZELKOR_Log.h"
#include "tests/unit/support/log_fixture.h"

using logtest::contents;
using logtest::inChild;
using logtest::lines;
using lumo::ZELKOR_Log;
using platform::NSLog;
using testing::ElementsAre;
using testing::EndsWith;
using namespace std::chrono_literals;

namespace {

// What concerns the whole process (its standard error, limits, its end) is tried in a child.
class ZELKOR_LogProcessTest : public logtest::LogTest {
 protected:
  bool openRedirected() {
    ZELKOR_Log::setShouldLogToStdErr(false);
    return ZELKOR_Log::setLogFile(path("Foo.log"));
  }
};

bool appends(int descriptor) {
  const int flags = fcntl(descriptor, F_GETFL);
  return flags >= 0 && (flags & O_APPEND) != 0 && (flags & O_ACCMODE) == O_WRONLY;
}

bool isFile(int descriptor, const std::string& path) {
  struct stat open {};
  struct stat named {};
  return fstat(descriptor, &open) == 0 && stat(path.c_str(), &named) == 0 && open.st_dev == named.st_dev &&
         open.st_ino == named.st_ino;
}

}  // namespace

TEST_F(ZELKOR_LogProcessTest, EveryLineOfEightThreadsLandsWholeAndInOrder) {
  constexpr int kThreads = 8;
  constexpr int kLines = 1000;
  EXPECT_EQ(
      inChild([&] {
        if (!openRedirected()) {
          return 1;
        }
        std::vector<std::thread> threads;
        threads.reserve(kThreads);
        for (int t = 0; t < kThreads; ++t) {
          threads.emplace_back([t] {
            const std::string filling(static_cast<std::size_t>(50 + 40 * t), static_cast<char>('a' + t));
            for (int i = 0; i < kLines; ++i) {
              NSLog("thread %d line %d %@ end", t, i, filling);
              if (i % 10 == 0) {
                ZELKOR_Log::debug2("debug " + std::to_string(t) + " " + std::to_string(i / 10) + " end");
              }
            }
          });
        }
        for (std::thread& thread : threads) {
          thread.join();
        }
        run();
        return 0;
      }),
      0);
  std::map<std::pair<std::string, int>, int> next;
  int count = 0;
  for (const std::string& line : lines(contents(path("Foo.log")))) {
    const auto text = line.find("] ");
    ASSERT_NE(text, std::string::npos) << line;
    std::istringstream words(line.substr(text + 2));
    std::string kind;
    int thread = -1;
    int number = -1;
    words >> kind;
    if (kind == "thread") {
      std::string ignored;
      std::string filling;
      words >> thread >> ignored >> number >> filling;
      ASSERT_EQ(filling,
                std::string(static_cast<std::size_t>(50 + 40 * thread), static_cast<char>('a' + thread)));
    } else {
      ASSERT_EQ(kind, "debug") << line;
      words >> thread >> number;
    }
    ASSERT_THAT(line, EndsWith(" end"));
    ASSERT_EQ(number, (next[{kind, thread}]++)) << line;
    ++count;
  }
  EXPECT_EQ(count, kThreads * (kLines + kLines / 10));
  EXPECT_EQ(standardError_->text(), "");
}

TEST_F(ZELKOR_LogProcessTest, StandardErrorIsStillDescriptorTwoAndChildrenInheritIt) {
  EXPECT_EQ(inChild([&] {
              if (!openRedirected() || !appends(STDERR_FILENO) || !isFile(STDERR_FILENO, path("Foo.log")) ||
                  fileno(stderr) != STDERR_FILENO || (fcntl(STDERR_FILENO, F_GETFD) & FD_CLOEXEC) != 0) {
                return 1;
              }
              NSLog("from the kiosk");
              std::fputs("from the C library\n", stderr);
              return std::system("echo from a child >&2; ls -l /proc/self/fd | grep -c Foo.log >&2");
            }),
            0);
  EXPECT_THAT(lines(contents(path("Foo.log"))),
              ElementsAre(EndsWith("] from the kiosk"), "from the C library", "from a child", "1"));
}

TEST_F(ZELKOR_LogProcessTest, StandardErrorIsRedirectedAlsoWhenItWasClosedAtTheStart) {
  for (const int first : {STDERR_FILENO, STDIN_FILENO}) {
    std::filesystem::remove(path("Foo.log"));
    EXPECT_EQ(inChild([&] {
                for (int descriptor = first; descriptor <= STDERR_FILENO; ++descriptor) {
                  close(descriptor);
                }
                ZELKOR_Log::setShouldNotifyForLogUpdates(false);
                if (!openRedirected() || !appends(STDERR_FILENO) || !isFile(STDERR_FILENO, path("Foo.log"))) {
                  return 1;
                }
                // None of the others became a way into the log.
                if (isFile(STDIN_FILENO, path("Foo.log")) || isFile(STDOUT_FILENO, path("Foo.log"))) {
                  return 2;
                }
                NSLog("line %d", 1);
                ZELKOR_Log::debug2("line 2");
                run();
                NSLog("line %d", 3);
                return 0;
              }),
              0);
    EXPECT_THAT(lines(contents(path("Foo.log"))),
                ElementsAre(EndsWith("] line 1"), EndsWith("] line 2"), EndsWith("] line 3")));
  }
}

TEST_F(ZELKOR_LogProcessTest, StandardErrorStaysWhereItIsWhileLoggingToItIsOn) {
  EXPECT_EQ(inChild([&] {
              if (!ZELKOR_Log::setLogFile(path("Foo.log")) || isFile(STDERR_FILENO, path("Foo.log"))) {
                return 1;
              }
              NSLog("to standard error");
              ZELKOR_Log::debug2("to both");
              run();
              return 0;
            }),
            0);
  EXPECT_THAT(diagnostics(), ElementsAre("to standard error", "DEBUG2: MyApp: to both"));
  EXPECT_THAT(lines(contents(path("Foo.log"))), ElementsAre(EndsWith("] to both")));
}

TEST_F(ZELKOR_LogProcessTest, AFullDiskStopsNobody) {
  EXPECT_EQ(inChild([&] {
              std::signal(SIGXFSZ, SIG_IGN);
              rlimit limit{};
              getrlimit(RLIMIT_FSIZE, &limit);
              limit.rlim_cur = 10000;
              setrlimit(RLIMIT_FSIZE, &limit);
              if (!openRedirected()) {
                return 1;
              }
              for (int i = 0; i < 200; ++i) {
                ZELKOR_Log::debug2(std::string(100, 'd'));
                NSLog("%@", std::string(100, 'n'));
                run();
              }
              if (std::filesystem::file_size(path("Foo.log")) != 10000) {
                return 2;
              }
              // The disk has room again.
              limit.rlim_cur = limit.rlim_max;
              setrlimit(RLIMIT_FSIZE, &limit);
              NSLog("room again");
              ZELKOR_Log::debug2("room again");
              run();
              return 0;
            }),
            0);
  const auto all = lines(contents(path("Foo.log")));
  ASSERT_GT(all.size(), 2U);
  EXPECT_THAT(all[all.size() - 2], EndsWith("] room again"));
  EXPECT_THAT(all.back(), EndsWith("] room again"));
}

TEST_F(ZELKOR_LogProcessTest, AFullDiskAtTheRollStillEmptiesTheLiveFile) {
  logtest::write(path("Foo.log"), std::string(1048576, 'n'));
  EXPECT_EQ(inChild([&] {
              std::signal(SIGXFSZ, SIG_IGN);
              const rlimit limit{10000, 10000};
              setrlimit(RLIMIT_FSIZE, &limit);
              return openRedirected() ? 0 : 1;
            }),
            0);
  EXPECT_THAT(diagnostics(),
              ElementsAre("Rolling log file.", "Error writing old log file to " + path("Foo_old.log"),
                          "Starting new log file at " + path("Foo.log")));
  EXPECT_EQ(contents(path("Foo.log")), "");
}

TEST_F(ZELKOR_LogProcessTest, AnUnwritableFolderStopsNobodyAndStandardErrorStays) {
  std::filesystem::create_directory(path("locked"));
  std::filesystem::permissions(folder_, std::filesystem::perms(0755));
  std::filesystem::permissions(path("locked"), std::filesystem::perms(0555));
  EXPECT_EQ(inChild([&] {
              // The superuser may write anywhere.
              if (geteuid() == 0 && seteuid(65534) != 0) {
                return 1;
              }
              ZELKOR_Log::debug2("pending");
              run();
              ZELKOR_Log::setShouldLogToStdErr(false);
              if (ZELKOR_Log::setLogFile(path("locked/Lumo/Foo.log")) ||
                  ZELKOR_Log::setLogFile(path("locked/Foo.log"))) {
                return 2;
              }
              NSLog("still here");
              return 0;
            }),
            0);
  EXPECT_THAT(diagnostics(),
              ElementsAre("DEBUG2: MyApp: pending",
                          "error with createDirectoryAtPath for [" + path("locked/Lumo/Foo.log") + "]:",
                          "ERROR = Permission denied", "still here"));
}

TEST_F(ZELKOR_LogProcessTest, RedirectionThatFailsLeavesStandardErrorInItsPlace) {
  EXPECT_EQ(inChild([&] {
              // Room for the log's own stream and the copy of standard error, not for the reopening.
              const int free = dup(STDERR_FILENO);
              close(free);
              const std::string file = path("Foo.log");
              rlimit limit{};
              getrlimit(RLIMIT_NOFILE, &limit);
              const rlimit small{static_cast<rlim_t>(free) + 2, limit.rlim_max};
              ZELKOR_Log::setShouldLogToStdErr(false);
              setrlimit(RLIMIT_NOFILE, &small);
              const bool opened = ZELKOR_Log::setLogFile(file);
              setrlimit(RLIMIT_NOFILE, &limit);
              if (!opened || !isFile(STDERR_FILENO, path("standard-error"))) {
                return 1;
              }
              NSLog("still here");
              ZELKOR_Log::debug2("in the file");
              run();
              return 0;
            }),
            0);
  EXPECT_THAT(diagnostics(),
              ElementsAre("Standard error stays where it is: Too many open files", "still here"));
  EXPECT_THAT(lines(contents(path("Foo.log"))), ElementsAre(EndsWith("] in the file")));
}

TEST_F(ZELKOR_LogProcessTest, FatalBlocksItsThreadForGood) {
  int begun[2];
  ASSERT_EQ(pipe(begun), 0);
  const pid_t child = fork();
  if (child == 0) {
    (void)!::write(begun[1], "x", 1);
    ZELKOR_Log::fatal("the end");
  }
  close(begun[1]);
  char mark = 0;
  ASSERT_EQ(read(begun[0], &mark, 1), 1);
  close(begun[0]);
  // Nothing is left for the child but to sleep; had the call returned or ended, it would be gone.
  const auto asleep = [child] {
    const std::string line = contents("/proc/" + std::to_string(child) + "/stat");
    const auto name = line.rfind(") ");
    return name != std::string::npos && line[name + 2] == 'S';
  };
  const auto limit = std::chrono::steady_clock::now() + 10s;
  while (!asleep() && std::chrono::steady_clock::now() < limit) {
    std::this_thread::yield();
  }
  EXPECT_TRUE(asleep());
  EXPECT_EQ(waitpid(child, nullptr, WNOHANG), 0);
  kill(child, SIGKILL);
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(standardError_->text(), "");
}

#include "support/ShellOutput.h"

#include <algorithm>
#include <cerrno>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/fakes/captured_log.h"

namespace {

using lumo::kShellOutputChunk;

// An output of a known length that counts how often it is asked.
struct Output {
  std::string bytes;
  std::size_t given = 0;
  int reads = 0;

  std::size_t operator()(char* to, std::size_t count) {
    ++reads;
    const std::size_t part = std::min(count, bytes.size() - given);
    std::copy_n(bytes.data() + given, part, to);
    given += part;
    return part;
  }
};

TEST(ShellOutput, IsReadInChunksToTheFirstShortOne) {
  struct Row {
    std::size_t length;
    int reads;
  };
  EXPECT_EQ(kShellOutputChunk, 262144U);
  const std::vector<Row> rows = {{0, 1},      {1, 1},      {262143, 1}, {262144, 2},
                                 {262145, 2}, {524287, 2}, {524288, 3}, {1048576, 5}};
  for (const Row& row : rows) {
    Output output;
    for (std::size_t i = 0; i < row.length; ++i) {
      output.bytes.push_back(static_cast<char>('a' + i % 23));
    }
    const std::string text =
        lumo::shellOutputFrom([&](char* to, std::size_t count) { return output(to, count); });
    EXPECT_TRUE(text == output.bytes) << row.length;
    EXPECT_EQ(output.reads, row.reads) << row.length;
  }
}

TEST(ShellOutput, EndsAtTheFirstShortReadEvenWhenMoreWouldCome) {
  int reads = 0;
  const std::string text = lumo::shellOutputFrom([&](char* to, std::size_t) {
    ++reads;
    *to = 'x';
    return std::size_t{1};
  });
  EXPECT_EQ(text, "x");
  EXPECT_EQ(reads, 1);
}

TEST(ShellOutput, TellsPathsThatTheShellWouldTakeApart) {
  for (const std::string path : {"/home/kiosk/Desktop/printtocups2.sh", "/opt/lumo-1.0+2/a_b@c,d:e=f%/x",
                                 "/home/j\u00fcrg/\u5199\u771f.sh"}) {
    EXPECT_TRUE(lumo::isOneShellWord(path)) << path;
  }
  for (const std::string path :
       {"",      "/a b", "/a\tb", "/a\nb", "/a;b", "/a&b", "/a|b", "/a$b", "/a`b", "/a'b", "/a\"b",
        "/a\\b", "/a*b", "/a?b",  "/a[b",  "/a(b", "/a<b", "/a>b", "/a#b", "/a!b", "/a{b"}) {
    EXPECT_FALSE(lumo::isOneShellWord(path)) << path;
  }
}

bool isBlocked() {
  sigset_t now;
  pthread_sigmask(SIG_SETMASK, nullptr, &now);
  return sigismember(&now, SIGCHLD) == 1;
}

TEST(ShellOutput, ChildSignalsAreHeldFromThisThreadAlone) {
  const fakes::CapturedLog log;
  struct sigaction before {};
  struct sigaction during {};
  sigaction(SIGCHLD, nullptr, &before);
  EXPECT_FALSE(isBlocked());
  {
    const lumo::ChildSignalHeld held;
    EXPECT_TRUE(isBlocked());
    sigaction(SIGCHLD, nullptr, &during);
    EXPECT_EQ(during.sa_handler, before.sa_handler);
    { const lumo::ChildSignalHeld again; }
    EXPECT_TRUE(isBlocked());
  }
  EXPECT_FALSE(isBlocked());
  EXPECT_EQ(log.text(), "");
}

TEST(ShellOutput, AFailedResetOfTheChildSignalIsLogged) {
  const fakes::CapturedLog log;
  {
    const lumo::ChildSignalHeld outer;
    const lumo::ChildSignalHeld failing([](int, const sigset_t*, sigset_t*) { return EINVAL; });
  }
  EXPECT_TRUE(log.contains("error reseting SIGCHLD"));
  EXPECT_FALSE(isBlocked());
}

}  // namespace

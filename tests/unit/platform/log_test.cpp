#include "platform/log.h"

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <map>
#include <regex>
#include <thread>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

#include "platform/file_descriptor.h"
#include "platform/log_sink.h"
#include "platform/strings.h"

namespace {

using namespace platform;

// Standard error is another descriptor while this lives.
class StandardError {
 public:
  explicit StandardError(int descriptor) : before_(::dup(STDERR_FILENO)) {
    ::dup2(descriptor, STDERR_FILENO);
  }
  ~StandardError() { ::dup2(before_.get(), STDERR_FILENO); }
  StandardError(const StandardError&) = delete;
  StandardError& operator=(const StandardError&) = delete;

 private:
  FileDescriptor before_;
};

// Both ends of something that bytes go through.
struct Channel {
  FileDescriptor reader;
  FileDescriptor writer;

  static Channel pipe() {
    int ends[2];
    EXPECT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
  }
  // Keeps the borders between writes.
  static Channel packets() {
    int ends[2];
    EXPECT_EQ(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends), 0);
    return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
  }
  // The next bytes, at most a buffer full; empty at the end or when none come within 10 s.
  std::string next() const {
    pollfd waiting{reader.get(), POLLIN, 0};
    std::string buffer(1 << 16, '\0');
    if (::poll(&waiting, 1, 10000) != 1) {
      return {};
    }
    const ssize_t count = ::read(reader.get(), buffer.data(), buffer.size());
    buffer.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return buffer;
  }
};

std::string lineOf(const std::function<void()>& log) {
  const Channel channel = Channel::packets();
  const StandardError redirected(channel.writer.get());
  log();
  return channel.next();
}

TEST(Log, WritesOneLineWithOneWrite) {
  const std::string line = lineOf([] { NSLog("%@->%@....", "AppDelegate", "ibGoButton:"); });
  const std::regex form(R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} LumoBrowser\[(\d+):(\d+)\] (.*)\n)");
  std::smatch parts;
  ASSERT_TRUE(std::regex_match(line, parts, form)) << line;
  EXPECT_EQ(parts[1], std::to_string(::getpid()));
  EXPECT_EQ(parts[2], std::to_string(::gettid()));
  EXPECT_EQ(parts[3], "AppDelegate->ibGoButton:....");
}

TEST(Log, NamesTheThread) {
  std::string line;
  pid_t thread = 0;
  line = lineOf([&] {
    std::thread([&] {
      thread = ::gettid();
      logLine("x");
    }).join();
  });
  EXPECT_NE(line.find("[" + std::to_string(::getpid()) + ":" + std::to_string(thread) + "] x\n"),
            std::string::npos)
      << line;
}

TEST(Log, WritesLocalTime) {
  const char* zone = std::getenv("TZ");
  const std::string before = zone == nullptr ? "" : zone;
  ::setenv("TZ", "KSK-05:30", 1);
  ::tzset();
  const std::time_t earliest = std::time(nullptr);
  const std::string line = lineOf([] { logLine("x"); });
  std::tm parts{};
  parts.tm_isdst = -1;
  ASSERT_NE(::strptime(line.c_str(), "%Y-%m-%d %H:%M:%S", &parts), nullptr) << line;
  const std::time_t written = std::mktime(&parts);
  zone == nullptr ? ::unsetenv("TZ") : ::setenv("TZ", before.c_str(), 1);
  ::tzset();
  EXPECT_GE(written, earliest);
  EXPECT_LE(written, std::time(nullptr));
}

TEST(Log, KeepsLineBreaksAndRepairsText) {
  EXPECT_TRUE(lineOf([] { logLine("a\nb\n"); }).ends_with("] a\nb\n\n"));
  EXPECT_TRUE(lineOf([] { logLine(""); }).ends_with("] \n"));
  EXPECT_TRUE(lineOf([] { logLine("100%@"); }).ends_with("] 100%@\n"));
  EXPECT_TRUE(lineOf([] { NSLog("%@", "ä\xFFz"); }).ends_with("] ä\uFFFDz\n"));
}

TEST(Log, TakesAnotherProcessName) {
  setLogProcessName("lumoctl");
  const std::string line = lineOf([] { logLine("x"); });
  setLogProcessName("LumoBrowser");
  EXPECT_NE(line.find(" lumoctl["), std::string::npos) << line;
  EXPECT_NE(lineOf([] { logLine("x"); }).find(" LumoBrowser["), std::string::npos);
}

TEST(Log, KeepsTheErrorNumberOfItsCaller) {
  lineOf([] {
    errno = ENOENT;
    logLine("x");
    EXPECT_EQ(errno, ENOENT);
  });
}

TEST(Log, IgnoresDescriptorsThatTakeNothing) {
  {
    const FileDescriptor full(::open("/dev/full", O_WRONLY | O_CLOEXEC));
    ASSERT_TRUE(full);
    const StandardError redirected(full.get());
    errno = 0;
    logLine("no space left");
    EXPECT_EQ(errno, 0);
  }
  {
    const FileDescriptor readOnly(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    const StandardError redirected(readOnly.get());
    logLine("not open for writing");
  }
  EXPECT_TRUE(lineOf([] { logLine("still here"); }).ends_with("] still here\n"));
}

// A file of at most `size` bytes, as on a disk that is full then.
class SmallFile {
 public:
  explicit SmallFile(std::size_t size) : file_(::memfd_create("log", MFD_CLOEXEC | MFD_ALLOW_SEALING)) {
    EXPECT_EQ(::ftruncate(file_.get(), static_cast<off_t>(size)), 0);
    EXPECT_EQ(::fcntl(file_.get(), F_ADD_SEALS, F_SEAL_GROW), 0);
  }
  int get() const { return file_.get(); }
  std::string written() const {
    std::string bytes(static_cast<std::size_t>(::lseek(file_.get(), 0, SEEK_CUR)), '\0');
    EXPECT_EQ(::pread(file_.get(), bytes.data(), bytes.size(), 0), static_cast<ssize_t>(bytes.size()));
    return bytes;
  }

 private:
  FileDescriptor file_;
};

TEST(Log, TellsHowManyLinesAFullDiskTook) {
  {
    const FileDescriptor full(::open("/dev/full", O_WRONLY | O_CLOEXEC));
    const StandardError redirected(full.get());
    for (const char* text : {"first", "second", "third"}) {
      logLine(text);
    }
  }
  const auto lines = componentsSeparatedBy(lineOf([] { logLine("room again"); }), "\n");
  ASSERT_EQ(lines.size(), 3U);
  EXPECT_TRUE(lines[0].ends_with("] 3 lines were lost here: No space left on device")) << lines[0];
  EXPECT_TRUE(lines[1].ends_with("] room again")) << lines[1];
  // It is said once.
  EXPECT_EQ(lineOf([] { logLine("more"); }).find("lost"), std::string::npos);
}

TEST(Log, NeverContinuesALineThatTheDiskHadNoRoomFor) {
  const SmallFile small(4096);
  {
    const StandardError redirected(small.get());
    logLine("whole");
    logLine(std::string(8000, 'x'));
    logLine("lost");
  }
  const std::string before = small.written();
  ASSERT_EQ(before.size(), 4096U);
  EXPECT_TRUE(before.ends_with("xxx"));
  const std::string after = lineOf([] { logLine("room again"); });
  EXPECT_TRUE(after.starts_with("\n")) << after;
  EXPECT_NE(after.find("] 2 lines were lost here: "), std::string::npos) << after;
  EXPECT_TRUE(after.ends_with("] room again\n")) << after;
  EXPECT_TRUE(lineOf([] { logLine("more"); }).ends_with("] more\n"));
}

TEST(Log, GivesItsLinesToWhoeverTakesThem) {
  std::vector<std::string> taken;
  EXPECT_EQ(lineOf([&] {
              setLogSink([&taken](const std::string& text) { taken.push_back(text); });
              NSLog("%@ %i", "a\xFF", 1);
              setLogSink(nullptr);
              logLine("written");
            }).find("a\uFFFD"),
            std::string::npos);
  EXPECT_EQ(taken, std::vector<std::string>{"a\uFFFD 1"});
}

TEST(Log, SurvivesAPipeThatNobodyReads) {
  Channel channel = Channel::pipe();
  channel.reader.reset();
  sigset_t pending;
  {
    const StandardError redirected(channel.writer.get());
    logLine("lost");
    logLine("lost too");
  }
  sigpending(&pending);
  EXPECT_EQ(sigismember(&pending, SIGPIPE), 0);
  sigset_t blocked;
  pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
  EXPECT_EQ(sigismember(&blocked, SIGPIPE), 0);
  EXPECT_NE(lineOf([] { logLine("heard"); }).find("] 2 lines were lost here: Broken pipe\n"),
            std::string::npos);
}

// Lines longer than the pipe are written in pieces, which those of other threads must not part.
TEST(Log, NeverMixesTheLinesOfThreads) {
  constexpr int threadCount = 4;
  constexpr int lineCount = 40;
  Channel channel = Channel::pipe();
  ::fcntl(channel.writer.get(), F_SETPIPE_SZ, 4096);
  std::string all;
  std::thread reader;
  {
    const StandardError redirected(channel.writer.get());
    channel.writer.reset();
    reader = std::thread([&] {
      for (std::string bytes = channel.next(); !bytes.empty(); bytes = channel.next()) {
        all += bytes;
      }
    });
    std::vector<std::thread> writers;
    writers.reserve(threadCount);
    for (int number = 0; number < threadCount; ++number) {
      writers.emplace_back([number] {
        const std::string text(9000, static_cast<char>('a' + number));
        for (int line = 0; line < lineCount; ++line) {
          logLine(text);
        }
      });
    }
    for (auto& writer : writers) {
      writer.join();
    }
  }
  reader.join();
  std::map<char, int> counts;
  const auto lines = componentsSeparatedBy(all, "\n");
  ASSERT_EQ(lines.size(), static_cast<std::size_t>(threadCount * lineCount + 1));
  for (std::size_t index = 0; index + 1 < lines.size(); ++index) {
    const std::string text = lines[index].substr(lines[index].find("] ") + 2);
    ASSERT_EQ(text, std::string(9000, text[0]));
    ++counts[text[0]];
  }
  for (int number = 0; number < threadCount; ++number) {
    EXPECT_EQ(counts[static_cast<char>('a' + number)], lineCount);
  }
}

std::atomic<int> signalsTaken = 0;

// A signal handler may interrupt a write that waits for the reader.
TEST(Log, GoesOnAfterASignal) {
  signalsTaken = 0;
  struct sigaction action {};
  struct sigaction before {};
  action.sa_handler = [](int) { ++signalsTaken; };
  ASSERT_EQ(::sigaction(SIGUSR1, &action, &before), 0);
  Channel channel = Channel::pipe();
  ::fcntl(channel.writer.get(), F_SETPIPE_SZ, 4096);
  std::string all;
  {
    const StandardError redirected(channel.writer.get());
    channel.writer.reset();
    std::thread writer([] { logLine(std::string(20000, 'x')); });
    // What can be read shows that the writer is inside its write.
    all = channel.next();
    for (int sent = 1; sent <= 3; ++sent) {
      ::pthread_kill(writer.native_handle(), SIGUSR1);
      for (long turn = 0; signalsTaken < sent && turn < 100'000'000; ++turn) {
        std::this_thread::yield();
      }
      all += channel.next();
    }
    while (!all.ends_with('\n')) {
      const std::string bytes = channel.next();
      if (bytes.empty()) {
        break;
      }
      all += bytes;
    }
    writer.join();
  }
  ::sigaction(SIGUSR1, &before, nullptr);
  EXPECT_EQ(signalsTaken, 3);
  EXPECT_TRUE(all.ends_with("] " + std::string(20000, 'x') + "\n"));
}

}  // namespace

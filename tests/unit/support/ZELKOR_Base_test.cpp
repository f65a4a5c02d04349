#include "support/ZELKOR_Base.h"

#include <cerrno>
#include <filesystem>
#include <string>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/ZELKOR_Log.h"
#include "tests/fakes/captured_log.h"
#include "tests/unit/platform/child_process.h"
#include "tests/unit/platform/temporary_folder.h"

namespace {

using lumo::ZELKOR_Base;
using lumo::ZELKOR_Log;
using testing::MatchesRegex;

std::int64_t number(const platform::Dictionary& dictionary, const char* key) {
  const auto* value = dictionary.find(key);
  EXPECT_NE(value, nullptr) << key;
  return value != nullptr ? *value->as<std::int64_t>() : -1;
}

TEST(ZELKOR_Base, TellsTheFreeMemoryOfThisMachine) {
  const auto memory = ZELKOR_Base::vmStats();
  ASSERT_TRUE(memory);
  EXPECT_EQ(memory->size(), 3U);
  EXPECT_GT(number(*memory, "freePages"), 0);
  EXPECT_EQ(number(*memory, "freeBytes"), number(*memory, "freePages") * ::sysconf(_SC_PAGESIZE));
  EXPECT_EQ(number(*memory, "freeMB"), number(*memory, "freeBytes") >> 20);
  EXPECT_LE(number(*memory, "freeBytes"), ::sysconf(_SC_PHYS_PAGES) * ::sysconf(_SC_PAGESIZE));
}

TEST(ZELKOR_Base, TheLogTellsTheWiredMemoryAsWell) {
  const auto memory = ZELKOR_Log::vmStats();
  ASSERT_TRUE(memory);
  EXPECT_EQ(memory->size(), 4U);
  EXPECT_GE(number(*memory, "wiredMB"), 0);
}

TEST(ZELKOR_Base, TellsModelAndMachine) {
  const auto text = ZELKOR_Base::hostModelAndArch();
  ASSERT_TRUE(text);
  EXPECT_THAT(*text, MatchesRegex(".+ \\([a-z0-9_]+\\)"));
  EXPECT_EQ(ZELKOR_Log::hostModelAndArch(), text);
}

TEST(ZELKOR_Base, SummaryAndBannerAreThoseOfTheReceivingClass) {
  const std::string rest = "; [0-9]+ CPU; LittleEndian \\(64-bit\\); .+ \\(.+\\)";
  const std::string front = "Mac OS X .+ \\(Linux .+\\) foundation \\([0-9]+\\.[0-9]{3}\\);\n[0-9]+MB ";
  const std::string base = front + "\\([0-9]+MB free\\)" + rest;
  const std::string log = front + "\\([0-9]+MB wired, [0-9]+MB free\\)" + rest;
  EXPECT_THAT(ZELKOR_Base::systemVersionInfo(), MatchesRegex(base));
  EXPECT_THAT(ZELKOR_Log::systemVersionInfo(), MatchesRegex(log));
  const std::string banner = "\\^{80}\nsupport_tests starting up\n";
  EXPECT_THAT(ZELKOR_Base::startupInfo(), MatchesRegex(banner + base));
  EXPECT_THAT(ZELKOR_Log::startupInfo(), MatchesRegex(banner + log));
}

TEST(SafeTempFile, WithoutADescriptorLeavesAnEmptyFileBehind) {
  const TemporaryFolder folder;
  const ScopedEnvironment place("TMPDIR", folder.path().c_str());
  const int next = ::dup(STDERR_FILENO);
  ::close(next);
  const auto path = ZELKOR_Base::safeTempFile(nullptr);
  ASSERT_TRUE(path);
  EXPECT_THAT(*path, MatchesRegex(folder.path().string() + "/[A-Za-z0-9]{16}"));
  struct stat status {};
  ASSERT_EQ(::stat(path->c_str(), &status), 0);
  EXPECT_EQ(status.st_size, 0);
  EXPECT_EQ(status.st_mode & 0777U, 0600U);
  // The file was closed.
  const int after = ::dup(STDERR_FILENO);
  EXPECT_EQ(after, next);
  ::close(after);
}

TEST(SafeTempFile, WithADescriptorGivesTheOpenFile) {
  const TemporaryFolder folder;
  const ScopedEnvironment place("TMPDIR", folder.path().c_str());
  int descriptor = -1;
  const auto path = ZELKOR_Log::safeTempFile(&descriptor);
  ASSERT_TRUE(path);
  ASSERT_GE(descriptor, 0);
  EXPECT_EQ(::write(descriptor, "text", 4), 4);
  EXPECT_EQ(::fcntl(descriptor, F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
  ::close(descriptor);
  EXPECT_EQ(readFile(*path), "text");
  EXPECT_NE(ZELKOR_Base::safeTempFile(nullptr), path);
}

TEST(SafeTempFile, GoesToTheSystemsFolderWithoutOneOfTheUsers) {
  for (const char* value : {static_cast<const char*>(nullptr), ""}) {
    const ScopedEnvironment place("TMPDIR", value);
    const auto path = ZELKOR_Base::safeTempFile(nullptr);
    ASSERT_TRUE(path);
    std::filesystem::remove(*path);
    EXPECT_THAT(*path, MatchesRegex("/tmp/[A-Za-z0-9]{16}"));
  }
}

TEST(SafeTempFile, AFailureGivesNothingAndALine) {
  const TemporaryFolder folder;
  const std::string missing = (folder / "missing").string();
  const ScopedEnvironment place("TMPDIR", missing.c_str());
  const fakes::CapturedLog log;
  int descriptor = 7;
  EXPECT_EQ(ZELKOR_Base::safeTempFile(&descriptor), std::nullopt);
  EXPECT_EQ(descriptor, -1);
  EXPECT_TRUE(log.contains("ERROR: failed to create temporary file " + missing +
                           "/XXXXXXXXXXXXXXXX (Error 2: No such file or directory)"));
  EXPECT_EQ(ZELKOR_Base::safeTempFile(nullptr), std::nullopt);
}

}  // namespace

#include "platform/file_io.h"

#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/unit/platform/temporary_folder.h"

namespace {

using platform::fileContents;
using platform::makeFolder;
using platform::replaceFile;

TEST(FileContents, AreGivenUpToTheLimit) {
  const TemporaryFolder folder;
  const auto path = folder / "file";
  writeFile(path, "0123456789");
  std::error_code error = std::make_error_code(std::errc::io_error);
  const auto contents = fileContents(path, 10, error);
  ASSERT_TRUE(contents);
  EXPECT_FALSE(error);
  EXPECT_EQ(contents->bytes, "0123456789");
  EXPECT_EQ(contents->status.st_size, 10);
  EXPECT_FALSE(fileContents(path, 9, error));
  EXPECT_EQ(error, std::errc::file_too_large);
}

// Such files say that they have no bytes, as one that grows while it is read says too few.
TEST(FileContents, OfAFileThatHasMoreThanItSaysAreBoundedToo) {
  struct stat status {};
  ASSERT_EQ(::stat("/proc/self/status", &status), 0);
  ASSERT_EQ(status.st_size, 0);
  std::error_code error;
  EXPECT_FALSE(fileContents("/proc/self/status", 100, error));
  EXPECT_EQ(error, std::errc::file_too_large);
  EXPECT_TRUE(fileContents("/proc/self/status", 100'000, error));
  EXPECT_FALSE(error);
}

TEST(FileContents, AreAbsentWithTheReason) {
  const TemporaryFolder folder;
  ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
  const std::vector<std::pair<std::filesystem::path, std::errc>> rows{
      {folder / "missing", std::errc::no_such_file_or_directory},
      {folder.path(), std::errc::is_a_directory},
      {folder / "pipe", std::errc::invalid_argument},
      // It opens, and the first read fails: nothing is mapped at the process's address 0.
      {"/proc/self/mem", std::errc::io_error},
  };
  for (const auto& [path, reason] : rows) {
    std::error_code error;
    EXPECT_FALSE(fileContents(path, 100, error)) << path;
    EXPECT_EQ(error, reason) << path << " " << error.message();
  }
}

TEST(ReplaceFile, TakesThePlaceOfWhatAKilledWriterLeftAndKeepsTheMode) {
  const TemporaryFolder folder;
  writeFile(folder / "file", "old");
  std::filesystem::permissions(folder / "file", static_cast<std::filesystem::perms>(0640));
  writeFile(folder / "new", "half a fi");
  EXPECT_FALSE(replaceFile(folder / "file", folder / "new", "whole"));
  EXPECT_EQ(readFile(folder / "file"), "whole");
  EXPECT_EQ(std::filesystem::status(folder / "file").permissions(),
            static_cast<std::filesystem::perms>(0640));
  EXPECT_EQ(folder.names(), std::vector<std::string>{"file"});
}

TEST(ReplaceFile, LeavesTheOldOneAndNothingElseWhereItFails) {
  const TemporaryFolder folder;
  writeFile(folder / "file", "old");
  EXPECT_EQ(replaceFile(folder / "file", folder / "missing/new", "x"), std::errc::no_such_file_or_directory);
  EXPECT_EQ(readFile(folder / "file"), "old");
  // A folder in the file's place cannot be replaced by one.
  std::filesystem::create_directory(folder / "folder");
  EXPECT_EQ(replaceFile(folder / "folder", folder / "new", "x"), std::errc::is_a_directory);
  EXPECT_EQ(folder.names("new").size(), 0U);
}

TEST(MakeFolder, MakesWhatIsMissingForThisUserAlone) {
  const TemporaryFolder folder;
  EXPECT_FALSE(makeFolder(folder / "a/b/c"));
  for (const char* made : {"a", "a/b", "a/b/c"}) {
    EXPECT_EQ(std::filesystem::status(folder / made).permissions(), std::filesystem::perms::owner_all)
        << made;
  }
  EXPECT_FALSE(makeFolder(folder / "a/b/c"));
  EXPECT_FALSE(makeFolder(""));
}

TEST(MakeFolder, TellsWhyThereIsNone) {
  const TemporaryFolder folder;
  writeFile(folder / "file", "x");
  EXPECT_EQ(makeFolder(folder / "file"), std::errc::file_exists);
  EXPECT_EQ(makeFolder(folder / "file/a/b"), std::errc::not_a_directory);
  // The kernel's own folder takes none, whoever asks.
  EXPECT_EQ(makeFolder("/proc/none/a/b"), std::errc::no_such_file_or_directory);
}

}  // namespace

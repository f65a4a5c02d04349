#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/ZELKOR_Log.h"
#include "tests/unit/support/log_fixture.h"

using logtest::contents;
using logtest::write;
using lumo::ZELKOR_Log;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr std::size_t kMiB = 1048576;
constexpr std::size_t kKept = 10485760;

class ZELKOR_LogRollingTest : public logtest::LogTest {
 protected:
  // The lines of a complete roll.
  std::vector<std::string> rolled(const std::string& from, const std::string& into) const {
    return {"Rolling log file.", "Rolled previous log file into " + path(into),
            "Starting new log file at " + path(from)};
  }
};

}  // namespace

TEST_F(ZELKOR_LogRollingTest, AFileOfExactlyOneMebibyteIsRolledAtStart) {
  const std::string old(kMiB, 'o');
  write(path("Foo.log"), old);
  ASSERT_TRUE(ZELKOR_Log::setLogFile(path("Foo.log")));
  EXPECT_EQ(diagnostics(), rolled("Foo.log", "Foo_old.log"));
  EXPECT_EQ(contents(path("Foo_old.log")), old);
  EXPECT_EQ(contents(path("Foo.log")), "");
}

TEST_F(ZELKOR_LogRollingTest, AFileOfOneByteLessIsNotRolled) {
  const std::string old(kMiB - 1, 'o');
  write(path("Foo.log"), old);
  ASSERT_TRUE(ZELKOR_Log::setLogFile(path("Foo.log")));
  EXPECT_THAT(diagnostics(), IsEmpty());
  EXPECT_FALSE(std::filesystem::exists(path("Foo_old.log")));
  EXPECT_EQ(contents(path("Foo.log")), old);
}

TEST_F(ZELKOR_LogRollingTest, AMissingFileIsLeftAlone) {
  ZELKOR_Log::rollLogFileIfNecessary(path("Foo.log"));
  ZELKOR_Log::rollLogFile_toPath_atSize(path("Foo.log"), path("Bar.log"), 0);
  ZELKOR_Log::rollLogFileIfNecessary(std::nullopt);
  EXPECT_THAT(diagnostics(), IsEmpty());
  EXPECT_FALSE(std::filesystem::exists(path("Foo.log")));
  EXPECT_FALSE(std::filesystem::exists(path("Bar.log")));
}

TEST_F(ZELKOR_LogRollingTest, TheOldFileIsNamedAfterTheLiveOne) {
  struct Row {
    const char* live;
    const char* old;
  };
  for (const Row& row : {Row{"Foo.log", "Foo_old.log"}, Row{"Foo", "Foo_old.log"},
                         Row{"a.b.txt", "a.b_old.txt"}, Row{".profile", ".profile_old.log"}}) {
    write(path(row.live), "text\n");
    ZELKOR_Log::rollLogFile_toPath_atSize(path(row.live), std::nullopt, 5);
    EXPECT_EQ(contents(path(row.old)), "text\n") << row.live;
    EXPECT_EQ(contents(path(row.live)), "") << row.live;
    std::filesystem::remove(path(row.old));
  }
}

TEST_F(ZELKOR_LogRollingTest, TheLiveFileIsAppendedToTheGivenDestination) {
  write(path("Foo.log"), "new\n");
  write(path("Bar.log"), "old\n");
  ZELKOR_Log::rollLogFile_toPath_atSize(path("Foo.log"), path("Bar.log"), 4);
  EXPECT_EQ(contents(path("Bar.log")), "old\nnew\n");
  EXPECT_EQ(diagnostics(), rolled("Foo.log", "Bar.log"));
  struct stat status {};
  ASSERT_EQ(stat(path("Bar.log").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0664U);
}

TEST_F(ZELKOR_LogRollingTest, TenMebibytesAreKeptWhole) {
  const std::string old(kKept - 4, 'o');
  write(path("Foo_old.log"), old);
  write(path("Foo.log"), "new\n");
  ZELKOR_Log::rollLogFile_toPath_atSize(path("Foo.log"), std::nullopt, 4);
  EXPECT_TRUE(contents(path("Foo_old.log")) == old + "new\n");
}

TEST_F(ZELKOR_LogRollingTest, OneByteMoreIsCutAtTheFirstLineBreak) {
  // The cut point is the very first byte here; the break there counts.
  for (const std::string head : {"\n", "first\n"}) {
    const std::string rest = std::string(kKept + 1 - head.size() - 4, 'o');
    write(path("Foo_old.log"), head + rest);
    write(path("Foo.log"), "new\n");
    ZELKOR_Log::rollLogFile_toPath_atSize(path("Foo.log"), std::nullopt, 4);
    EXPECT_TRUE(contents(path("Foo_old.log")) == rest + "new\n") << head;
  }
}

TEST_F(ZELKOR_LogRollingTest, TheCutIsAtTheFirstLineBreakAtOrAfterTheCutPoint) {
  // 100 bytes too many, the cut point is inside the line of 'b'.
  const std::string tail = std::string(kKept + 101 - 60 - 80 - 4, 'o');
  write(path("Foo_old.log"), std::string(59, 'a') + "\n" + std::string(79, 'b') + "\n" + tail);
  write(path("Foo.log"), "new\n");
  ZELKOR_Log::rollLogFile_toPath_atSize(path("Foo.log"), std::nullopt, 4);
  EXPECT_TRUE(contents(path("Foo_old.log")) == tail + "new\n");
}

TEST_F(ZELKOR_LogRollingTest, WithoutALineBreakAfterTheCutPointTheOldFileBecomesEmpty) {
  write(path("Foo_old.log"), "line\n" + std::string(kKept, 'o'));
  write(path("Foo.log"), std::string(kMiB, 'n'));
  ASSERT_TRUE(ZELKOR_Log::setLogFile(path("Foo.log")));
  EXPECT_EQ(contents(path("Foo_old.log")), "");
  EXPECT_EQ(contents(path("Foo.log")), "");
  EXPECT_EQ(diagnostics(), rolled("Foo.log", "Foo_old.log"));
}

TEST_F(ZELKOR_LogRollingTest, ALiveFileOfAnySizeIsReadFromItsEndOnly) {
  write(path("Foo.log"), "");
  ASSERT_EQ(truncate(path("Foo.log").c_str(), off_t{64} << 30), 0);
  {
    std::ofstream live(path("Foo.log"), std::ios::app);
    live << "\nlast line\n";
  }
  ASSERT_TRUE(ZELKOR_Log::setLogFile(path("Foo.log")));
  EXPECT_EQ(contents(path("Foo_old.log")), "last line\n");
  EXPECT_EQ(contents(path("Foo.log")), "");
}

TEST_F(ZELKOR_LogRollingTest, TheLiveFileIsEmptiedAlsoWhenTheOldOneCannotBeWritten) {
  std::filesystem::create_directory(path("Foo_old.log"));
  write(path("Foo.log"), std::string(kMiB, 'n'));
  ASSERT_TRUE(ZELKOR_Log::setLogFile(path("Foo.log")));
  EXPECT_THAT(diagnostics(),
              ElementsAre("Rolling log file.", "Error writing old log file to " + path("Foo_old.log"),
                          "Starting new log file at " + path("Foo.log")));
  EXPECT_EQ(contents(path("Foo.log")), "");
}

TEST_F(ZELKOR_LogRollingTest, APipeInThePlaceOfTheOldFileHoldsNobodyUp) {
  ASSERT_EQ(mkfifo(path("Foo_old.log").c_str(), 0600), 0);
  write(path("Foo.log"), std::string(kMiB, 'n'));
  ASSERT_TRUE(ZELKOR_Log::setLogFile(path("Foo.log")));
  EXPECT_THAT(diagnostics(),
              ElementsAre("Rolling log file.", "Error writing old log file to " + path("Foo_old.log"),
                          "Starting new log file at " + path("Foo.log")));
}

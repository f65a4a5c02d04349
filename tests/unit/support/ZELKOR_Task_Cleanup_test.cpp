#include <ctime>
#include <filesystem>
#include <optional>

#include <sys/stat.h>

#include "platform/format.h"
#include "tests/unit/platform/child_process.h"
#include "tests/unit/support/task_fixture.h"

// Clean-ups of real trees with the installed find.

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

class CleanUpTest : public tasktest::TaskTest {
 protected:
  // A new file in the tree, with its folders.
  void add(const std::string& name) {
    fs::create_directories((tree() / name).parent_path());
    writeFile(tree() / name, "x");
  }
  fs::path tree() const { return folder / "tree"; }
  std::string path() const { return tree().string(); }
  // Everything below the tree, in any order.
  Strings left() const {
    Strings names;
    for (const auto& entry : fs::recursive_directory_iterator(tree())) {
      names.push_back(fs::relative(entry.path(), tree()).string());
    }
    return names;
  }
  // Lets the clean-up run to its end.
  void finish() { machine.dispatch.runUntilIdle(); }
  bool endedWith(int status) const {
    for (const std::string& line : log.lines()) {
      if (line.starts_with("/usr/bin/find [") &&
          line.ends_with("] did complete with exit status " + std::to_string(status))) {
        return true;
      }
    }
    return false;
  }
};

TEST_F(CleanUpTest, RemovesFilesOfTheKindsAndOfNoOther) {
  for (const char* name :
       {"a.jpg", "B.JPG", "c.png", "d.txt", "jpg", "e.jpg.txt", "in/f.jpg", "in/in/g.png"}) {
    add(name);
  }
  Task::removeFilesInDirectory_ofKind_minDaysOld(platform, path() + "///", {"jpg", "png"}, 0);
  finish();
  EXPECT_THAT(left(), UnorderedElementsAre("d.txt", "jpg", "e.jpg.txt", "in", "in/in"));
  EXPECT_TRUE(endedWith(0)) << log.text();
  EXPECT_FALSE(hasLine("starting task /usr/bin/find -H " + path() + "/")) << log.text();
}

TEST_F(CleanUpTest, WithoutAnExtensionRemovesEveryFile) {
  for (const char* name : {"a.jpg", "b", "in/c.txt", ".hidden"}) {
    add(name);
  }
  Task::removeFilesInDirectory_ofKind_minDaysOld(platform, path(), {}, 0);
  finish();
  EXPECT_THAT(left(), ElementsAre("in"));
}

TEST_F(CleanUpTest, GoesDownToTheDepthAndNoFurther) {
  for (const char* name : {"a.jpg", "in/b.jpg", "in/in/c.jpg"}) {
    add(name);
  }
  Task::removeFilesInDirectory_ofKind_daysOld_maxDepth(platform, path(), {"jpg"}, 0, 2);
  finish();
  EXPECT_THAT(left(), UnorderedElementsAre("in", "in/in", "in/in/c.jpg"));
}

TEST_F(CleanUpTest, TakesPatternsAsTheyAre) {
  for (const char* name : {"IMG_1.jpg", "img_2.png", "other.jpg", "a b.tmp", "$HOME"}) {
    add(name);
  }
  Task::removeFilesInDirectory_matchingPatterns_daysOld_maxDepth(platform, path(), {"IMG_*", "a b*", "$HOME"},
                                                                 std::nullopt, std::nullopt);
  finish();
  EXPECT_THAT(left(), ElementsAre("other.jpg"));
}

TEST_F(CleanUpTest, RemovesFoldersOnlyWhenTheyAreEmptyAndNeverTheFolderItself) {
  add("full/file");
  fs::create_directories(tree() / "empty");
  fs::create_directories(tree() / "outer/inner");
  Task::removeSubdirectoriesAtPath_matchingPatterns_daysOld_maxDepth(platform, path(), {}, 0, std::nullopt);
  finish();
  EXPECT_FALSE(fs::exists(tree() / "empty"));
  EXPECT_FALSE(fs::exists(tree() / "outer/inner"));
  EXPECT_TRUE(fs::exists(tree() / "full/file"));
  EXPECT_TRUE(fs::exists(tree()));
  // It could not remove them all.
  EXPECT_TRUE(endedWith(1)) << log.text();
}

TEST_F(CleanUpTest, FoldersAreChosenByPattern) {
  fs::create_directories(tree() / "cache1");
  fs::create_directories(tree() / "kept");
  add("cache.jpg");
  Task::removeSubdirectoriesAtPath_matchingPatterns_daysOld_maxDepth(platform, path(), {"cache*"},
                                                                     std::nullopt, 1);
  finish();
  EXPECT_THAT(left(), UnorderedElementsAre("kept", "cache.jpg"));
  EXPECT_TRUE(endedWith(0)) << log.text();
}

TEST_F(CleanUpTest, WithoutACommandOnlyListsWhatItFinds) {
  add("a.jpg");
  add("b.txt");
  testing::internal::CaptureStdout();
  Task::findAtPath_fileType_matchingPatterns_daysOld_maxDepth_performingCommand(
      platform, path(), "f", {"*.jpg"}, std::nullopt, std::nullopt, std::nullopt);
  finish();
  EXPECT_EQ(testing::internal::GetCapturedStdout(), path() + "/a.jpg\n");
  EXPECT_THAT(left(), UnorderedElementsAre("a.jpg", "b.txt"));
}

TEST_F(CleanUpTest, AnAgeAloneAndAGroupAloneAreUnderstood) {
  add("a.jpg");
  add("b.txt");
  testing::internal::CaptureStdout();
  Task::findAtPath_fileType_matchingPatterns_daysOld_maxDepth_performingCommand(
      platform, path(), std::nullopt, {"a*"}, 0, std::nullopt, std::nullopt);
  finish();
  Task::findAtPath_fileType_matchingPatterns_daysOld_maxDepth_performingCommand(
      platform, path(), "no type", {"a*", "c*"}, std::nullopt, std::nullopt, std::nullopt);
  finish();
  EXPECT_EQ(testing::internal::GetCapturedStdout(), path() + "/a.jpg\n" + path() + "/a.jpg\n");
}

TEST_F(CleanUpTest, AnEmptyFolderNameDoesNothing) {
  Task::removeFilesInDirectory_ofKind_minDaysOld(platform, "", {"jpg"}, 0);
  finish();
  EXPECT_THAT(log.lines(), ElementsAre());
}

TEST_F(CleanUpTest, AFolderThatIsMissingIsToldInTheLog) {
  Task::removeFilesInDirectory_ofKind_minDaysOld(platform, path(), {"jpg"}, 0);
  finish();
  EXPECT_TRUE(hasLine("/usr/bin/find: ")) << log.text();
  EXPECT_TRUE(endedWith(1)) << log.text();
}

// Runs what follows with a find to which now is another time.
class AgeTest : public CleanUpTest {
 protected:
  static constexpr std::time_t kDay = 86400;

  void SetUp() override {
    for (const auto& entry : fs::directory_iterator("/usr/lib")) {
      const fs::path library = entry.path() / "faketime/libfaketime.so.1";
      if (fs::exists(library)) {
        library_ = library.string();
      }
    }
    ASSERT_FALSE(library_.empty()) << "libfaketime is missing; scripts/setup test installs it";
    fs::create_directories(tree());
  }

  static timespec changed(const fs::path& file) {
    struct stat status {};
    EXPECT_EQ(::stat(file.c_str(), &status), 0) << file;
    return status.st_ctim;
  }
  // Lets the files' clock reach the next second after the present one, and answers that second. The kernel's
  // time for files may be a few milliseconds ahead of std::time.
  std::time_t nextSecond() {
    const fs::path probe = folder / "probe";
    writeFile(probe, "x");
    const std::time_t next = changed(probe).tv_sec + 1;
    EXPECT_TRUE(runUntil([&] {
      writeFile(probe, "x");
      const timespec now = changed(probe);
      return now.tv_sec > next || (now.tv_sec == next && now.tv_nsec > 0);
    }));
    return next;
  }
  // Removes what is `days` old or older when it is `now`.
  void removeAt(std::time_t now, std::uint32_t days) {
    std::tm parts{};
    ::gmtime_r(&now, &parts);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &parts);
    const ScopedEnvironment library("LD_PRELOAD", library_.c_str());
    const ScopedEnvironment time("FAKETIME", text);
    // Files keep the times that they have.
    const ScopedEnvironment files("NO_FAKE_STAT", "1");
    const ScopedEnvironment zone("TZ", "UTC");
    Task::removeFilesInDirectory_ofKind_minDaysOld(platform, path(), {"jpg"}, days);
    finish();
  }

 private:
  std::string library_;
};

TEST_F(AgeTest, RemovesWhatIsOlderAndNothingYounger) {
  add("old.jpg");
  add("in/old.jpg");
  add("old.txt");
  // A date in the file's properties makes it no younger.
  add("old-but-dated-tomorrow.jpg");
  fs::last_write_time(tree() / "old-but-dated-tomorrow.jpg",
                      fs::file_time_type::clock::now() + std::chrono::hours(24));
  const std::time_t border = nextSecond();
  add("young.jpg");
  add("in/young.jpg");
  // Copied now, with the date of the original.
  add("copied.jpg");
  fs::last_write_time(tree() / "copied.jpg", fs::file_time_type::clock::now() - std::chrono::hours(24 * 365));
  removeAt(border + 7 * kDay, 7);
  EXPECT_THAT(left(), UnorderedElementsAre("old.txt", "young.jpg", "in", "in/young.jpg", "copied.jpg"))
      << log.text();
}

TEST_F(AgeTest, OneDayIsOneDay) {
  add("old.jpg");
  const std::time_t border = nextSecond();
  add("young.jpg");
  removeAt(border + kDay, 1);
  EXPECT_THAT(left(), ElementsAre("young.jpg")) << log.text();
}

TEST_F(AgeTest, WhatIsASecondTooYoungStays) {
  add("a.jpg");
  removeAt(changed(tree() / "a.jpg").tv_sec + 7 * kDay, 7);
  EXPECT_THAT(left(), ElementsAre("a.jpg"));
}

TEST_F(AgeTest, WhatWasMadeTodayStaysWhateverItsDate) {
  add("a.jpg");
  fs::last_write_time(tree() / "a.jpg", fs::file_time_type::clock::now() - std::chrono::hours(24 * 365));
  Task::removeFilesInDirectory_ofKind_minDaysOld(platform, path(), {"jpg"}, 1);
  finish();
  EXPECT_THAT(left(), ElementsAre("a.jpg"));
}

// Whether the installed find knows them is the machine's affair; either way the log tells what was run.
TEST_F(AgeTest, TheLogTellsWhichTimeCounts) {
  Task::removeFilesInDirectory_ofKind_minDaysOld(platform, path(), {"jpg"}, 3);
  finish();
  const bool told =
      log.contains("/usr/bin/find knows no birth times here: what was changed in the last 3 days stays");
  EXPECT_TRUE(log.contains("starting task /usr/bin/find -H " + path() + " -type f -and -not " +
                           (told ? "-newerct" : "-newerBt") +
                           " 3 days ago -iname *.jpg -mindepth 1 -exec rm {} +"))
      << log.text();
  EXPECT_TRUE(endedWith(0)) << log.text();
}

}  // namespace

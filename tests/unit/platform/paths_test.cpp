#include "platform/paths.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include "tests/unit/platform/child_process.h"

namespace {

using namespace platform;

struct Row {
  const char* path;
  const char* result;
};

TEST(Paths, ExpandsTheTilde) {
  const ScopedEnvironment home("HOME", "/home/kiosk/");
  for (const auto& [path, result] : std::vector<Row>{{"~", "/home/kiosk"},
                                                     {"~/", "/home/kiosk"},
                                                     {"~/Desktop", "/home/kiosk/Desktop"},
                                                     {"~/a/", "/home/kiosk/a"},
                                                     {"~nobody-of-that-name/a", "~nobody-of-that-name/a"},
                                                     {"/a/~", "/a/~"},
                                                     {"a/", "a/"},
                                                     {"", ""}}) {
    EXPECT_EQ(expandingTilde(path), result) << path;
  }
}

TEST(Paths, FindsHomesInTheUserDatabase) {
  const struct passwd* entry = ::getpwuid(::getuid());
  ASSERT_TRUE(entry != nullptr);
  const std::string home = standardizingPath(entry->pw_dir);
  EXPECT_EQ(standardizingPath("~" + std::string(entry->pw_name) + "/x"), home + "/x");
  {
    const ScopedEnvironment unset("HOME", nullptr);
    EXPECT_EQ(expandingTilde("~/x"), home + "/x");
  }
  {
    const ScopedEnvironment relative("HOME", "somewhere");
    EXPECT_EQ(expandingTilde("~/x"), home + "/x");
  }
}

TEST(Paths, Standardizes) {
  const ScopedEnvironment home("HOME", "/home/kiosk");
  for (const auto& [path, result] : std::vector<Row>{{"~/Library/Logs/", "/home/kiosk/Library/Logs"},
                                                     {"/a//b/./c/../d/", "/a/b/d"},
                                                     {"/..", "/"},
                                                     {"/../a", "/a"},
                                                     {"//", "/"},
                                                     {"a/./b//c/", "a/b/c"},
                                                     {"a/..", "."},
                                                     {"./a", "a"},
                                                     {"../a/../../b", "../../b"},
                                                     {".", "."},
                                                     {"/a/...", "/a/..."},
                                                     {"", ""}}) {
    EXPECT_EQ(standardizingPath(path), result) << path;
  }
}

TEST(Paths, DeletesTheLastComponent) {
  for (const auto& [path, result] : std::vector<Row>{{"/tmp/scratch.tiff", "/tmp"},
                                                     {"/tmp/lock/", "/tmp"},
                                                     {"/tmp/", "/"},
                                                     {"/tmp", "/"},
                                                     {"/", "/"},
                                                     {"//", "/"},
                                                     {"/a//b", "/a"},
                                                     {"a/b", "a"},
                                                     {"scratch.tiff", ""},
                                                     {"", ""}}) {
    EXPECT_EQ(deletingLastPathComponent(path), result) << path;
  }
}

TEST(Paths, TakesExtensions) {
  struct Case {
    const char* path;
    const char* extension;
    const char* without;
  };
  for (const auto& [path, extension, without] :
       std::vector<Case>{{"/tmp/scratch.tiff", "tiff", "/tmp/scratch"},
                         {"/tmp/scratch", "", "/tmp/scratch"},
                         {"/tmp/", "", "/tmp"},
                         {"scratch..tiff", "tiff", "scratch."},
                         {"scratch.bundle/", "bundle", "scratch"},
                         {".tiff", "", ".tiff"},
                         {"..tiff", "", "..tiff"},
                         {".profile.bak", "bak", ".profile"},
                         {"/a.b/c", "", "/a.b/c"},
                         {"a.", "", "a."},
                         {"archive.tar.gz", "gz", "archive.tar"},
                         {"..", "", ".."},
                         {"/", "", "/"},
                         {"", "", ""}}) {
    EXPECT_EQ(pathExtension(path), extension) << path;
    EXPECT_EQ(deletingPathExtension(path), without) << path;
  }
}

TEST(Paths, AppendsComponents) {
  struct Case {
    const char* path;
    const char* component;
    const char* result;
  };
  for (const auto& [path, component, result] : std::vector<Case>{{"/tmp", "a", "/tmp/a"},
                                                                 {"/tmp/", "a", "/tmp/a"},
                                                                 {"/tmp//", "/a/b/", "/tmp/a/b"},
                                                                 {"/", "a", "/a"},
                                                                 {"", "a", "a"},
                                                                 {"/tmp/", "", "/tmp"},
                                                                 {"a", "/", "a"},
                                                                 {"", "", ""}}) {
    EXPECT_EQ(appendingPathComponent(path, component), result) << path << " + " << component;
  }
}

TEST(Paths, AppendsExtensions) {
  EXPECT_EQ(appendingPathExtension("/tmp/scratch.old", "tiff"), "/tmp/scratch.old.tiff");
  EXPECT_EQ(appendingPathExtension("/tmp/", "tiff"), "/tmp.tiff");
  EXPECT_EQ(appendingPathExtension("scratch", "tiff"), "scratch.tiff");
  EXPECT_EQ(appendingPathExtension("/", "tiff"), "/");
  EXPECT_EQ(appendingPathExtension("", "tiff"), "");
}

}  // namespace

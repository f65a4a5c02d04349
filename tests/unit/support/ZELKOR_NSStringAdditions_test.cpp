#include "support/ZELKOR_NSStringAdditions.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/utsname.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/fakes/captured_log.h"
#include "tests/unit/platform/temporary_folder.h"

namespace additions = lumo::ZELKOR_NSStringAdditions;

namespace {

using testing::HasSubstr;

// A home and a bundle in a folder of their own.
class ScriptTest : public testing::Test {
 protected:
  void SetUp() override {
    std::filesystem::create_directories(home() / "Desktop");
    std::filesystem::create_directories(app() / "Resources");
    const char* old = getenv("HOME");
    oldHome_ = old == nullptr ? std::string() : old;
    setenv("HOME", home().c_str(), 1);
  }
  void TearDown() override { setenv("HOME", oldHome_.c_str(), 1); }

  std::filesystem::path home() const { return folder.path() / "home"; }
  std::filesystem::path station() const { return folder.path() / "station"; }
  std::filesystem::path app() const { return station() / "LumoBrowser.app"; }
  static std::string put(const std::filesystem::path& file) {
    std::ofstream(file) << "echo hello\n";
    return file.string();
  }
  std::string find(const std::string& name = "print.sh") const {
    return additions::getPathToScript(name, platform::Bundle(app()));
  }

  TemporaryFolder folder;
  fakes::CapturedLog log;

 private:
  std::string oldHome_;
};

TEST_F(ScriptTest, TheDesktopsCopyIsUsedBeforeAllOthers) {
  put(app() / "Resources/print.sh");
  put(app() / "print.sh");
  put(station() / "print.sh");
  const std::string desktop = put(home() / "Desktop/print.sh");
  EXPECT_EQ(find(), desktop);
  EXPECT_TRUE(log.contains("bundlePath is " + station().string()));
  EXPECT_TRUE(log.contains("Searching for shell script file in alternate paths first ..."));
  EXPECT_TRUE(log.contains("FOUND alternate path for shell script at: " + desktop));
}

TEST_F(ScriptTest, TheCopyBesideTheBundleIsUsedBeforeTheBundles) {
  put(app() / "Resources/print.sh");
  put(app() / "print.sh");
  const std::string beside = put(station() / "print.sh");
  EXPECT_EQ(find(), beside);
  EXPECT_TRUE(log.contains("FOUND alternate path for shell script at: " + beside));
}

TEST_F(ScriptTest, TheCopyBesideTheExecutableIsUsedBeforeTheResource) {
  const std::string resource = put(app() / "Resources/print.sh");
  EXPECT_EQ(find(), resource);
  const std::string auxiliary = put(app() / "print.sh");
  EXPECT_EQ(find(), auxiliary);
}

TEST_F(ScriptTest, AScriptFoundNowhereIsTheTextOfNothing) {
  EXPECT_EQ(find(), "(null)");
  EXPECT_THAT(log.text(),
              HasSubstr("\n\nrunShellScript FAILED => UNABLE to find script named: [print.sh]!\n\n"));
  EXPECT_EQ(find("../print.sh"), "(null)");
}

class ShellTest : public testing::Test {
 protected:
  static constexpr const char* kOperation = "-[NSString(LumoNSStringAdditions) outputWhenRunAsShellCommand]";
  fakes::CapturedLog log;
};

TEST_F(ShellTest, GivesWhatTheCommandPrints) {
  EXPECT_EQ(additions::outputWhenRunAsShellCommand("echo one; echo two | tr t T; exit 3"), "one\nTwo\n");
  EXPECT_EQ(additions::runAsShellCmd2("echo one; exit 3"), "one\n");
  EXPECT_TRUE(log.lines().empty());
}

TEST_F(ShellTest, AnEmptyCommandGivesNothingAtOnce) {
  EXPECT_EQ(additions::outputWhenRunAsShellCommand(""), std::nullopt);
  EXPECT_TRUE(log.lines().empty());
}

TEST_F(ShellTest, ACommandThatPrintsNothingGivesNothing) {
  EXPECT_EQ(additions::outputWhenRunAsShellCommand("true"), std::nullopt);
  EXPECT_TRUE(log.contains(std::string(kOperation) + " failed for command \"true\""));
  EXPECT_EQ(additions::runAsShellCmd2("true"), std::nullopt);
}

TEST_F(ShellTest, ACommandThatCannotBeStartedGivesNothing) {
  // Longer than the system takes as one argument.
  const std::string command = "echo " + std::string(200000, 'x');
  EXPECT_EQ(additions::outputWhenRunAsShellCommand(command), std::nullopt);
  EXPECT_THAT(log.text(), HasSubstr(std::string(kOperation) + " failed to run  \"echo xxx"));
}

TEST_F(ShellTest, ReadsOutputOfEveryLengthToItsEnd) {
  for (const int length : {1, 262143, 262144, 262145, 1048576}) {
    const auto output = additions::outputWhenRunAsShellCommand("head -c " + std::to_string(length) +
                                                               " /dev/zero | tr '\\0' x");
    ASSERT_TRUE(output);
    EXPECT_EQ(*output, std::string(static_cast<std::size_t>(length), 'x'));
  }
}

TEST_F(ShellTest, ALetterAcrossTheReadersBuffersIsNotLost) {
  // One byte and then letters of two, so that every even boundary cuts one.
  const auto output =
      additions::outputWhenRunAsShellCommand("printf a; yes 'éé' | head -n 100000 | tr -d '\\n'");
  ASSERT_TRUE(output);
  EXPECT_EQ(output->size(), 400001U);
  EXPECT_EQ(output->find("\xEF\xBF\xBD"), std::string::npos);
}

TEST_F(ShellTest, BytesThatAreNoTextAreMarked) {
  EXPECT_EQ(additions::outputWhenRunAsShellCommand("printf 'a\\377b'"),
            "a\xEF\xBF\xBD"
            "b");
}

TEST_F(ShellTest, AnotherChildsExitStatusIsKept) {
  const pid_t other = fork();
  if (other == 0) {
    _exit(7);
  }
  EXPECT_EQ(additions::outputWhenRunAsShellCommand("sleep 0; echo x"), "x\n");
  int status = 0;
  ASSERT_EQ(waitpid(other, &status, 0), other);
  EXPECT_EQ(WEXITSTATUS(status), 7);
}

TEST_F(ShellTest, AScriptWhosePathHasABlankIsCutAtIt) {
  const TemporaryFolder folder;
  const std::string script = (folder.path() / "my script.sh").string();
  std::ofstream(script) << "echo hello\n";
  EXPECT_EQ(additions::outputWhenRunAsShellCommand("sh " + script + " 2>/dev/null"), std::nullopt);
  EXPECT_THAT(log.text(), HasSubstr("failed for command"));
}

TEST(ValidateAsPathTest, CleansWhatAPersonTypes) {
  const struct {
    const char* typed;
    const char* path;
  } rows[] = {{" /Users/kiosk/Order Files/ ", "Users/kiosk/OrderFiles"},
              {"/", ""},
              {"///", ""},
              {"", ""},
              {"a b/c", "ab/c"},
              {"a//b", "a//b"},
              {"\n\t/x/\n", "x"},
              {"/ /x", "/x"},
              {"no/slash", "no/slash"}};
  for (const auto& row : rows) {
    fakes::CapturedLog log;
    EXPECT_EQ(additions::validateAsPath(row.typed), row.path) << row.typed;
    EXPECT_THAT(log.text(),
                HasSubstr("validateAsPath->  old[" + std::string(row.typed) + "] = new[" + row.path + "]"));
  }
}

TEST(AppVersionTest, NamesTheApplicationAndWhatBuiltIt) {
  const TemporaryFolder folder;
  std::ofstream(folder.path() / "Info.plist")
      << "<plist version=\"1.0\"><dict><key>CFBundleName</key><string>Short</string>"
         "<key>CFBundleDisplayName</key><string>Lumo Browser</string>"
         "<key>CFBundleShortVersionString</key><string>1.2</string><key>CFBundleVersion</key><string>34</"
         "string>"
         "<key>DTXcode</key><string>12.2</string><key>DTSDKName</key><string>2.50</string></dict></plist>";
  platform::UserDefaults defaults;
  const std::string version = additions::getAppVersionString(platform::Bundle(folder.path()), defaults);
  EXPECT_THAT(version, testing::MatchesRegex(
                           "Lumo Browser - v1\\.2 \\(34\\) \\[[0-9a-f]{7}\\] \\[XC-12\\.2 sdk-2\\.50\\]"));
  EXPECT_EQ(defaults.stringForKey("prefAppVersion"), version);
}

TEST(AppVersionTest, ShowsWhatIsMissing) {
  const TemporaryFolder folder;
  std::ofstream(folder.path() / "Info.plist")
      << "<plist version=\"1.0\"><dict><key>CFBundleName</key><string>Short</string></dict></plist>";
  platform::UserDefaults defaults;
  EXPECT_THAT(
      additions::getAppVersionString(platform::Bundle(folder.path()), defaults),
      testing::MatchesRegex("Short - v\\(null\\) \\(\\?\\?\\) \\[[0-9a-f]{7}\\] \\[XC-\\?\\? sdk-\\?\\?\\]"));
}

TEST(ArchitectureTest, IsTheKernelsMachineName) {
  fakes::CapturedLog log;
  utsname system = {};
  ASSERT_EQ(uname(&system), 0);
  EXPECT_EQ(additions::RunningArchitecture(), system.machine);
  EXPECT_TRUE(log.contains("Running Architecture = (" + std::string(system.machine) + ")"));
  EXPECT_EQ(additions::processIsTranslated(), 0);
  EXPECT_EQ(additions::RunningArchitectureDisplayString(),
            additions::architectureDisplayString(system.machine, 0));
}

TEST(ArchitectureTest, TheTextForPeopleFollowsFromNameAndTranslation) {
  EXPECT_EQ(additions::architectureDisplayString("arm64", 0), "Apple Silicon");
  EXPECT_EQ(additions::architectureDisplayString("ARM64", 1), "Apple Silicon");
  EXPECT_EQ(additions::architectureDisplayString("x86_64", 0), "Intel");
  EXPECT_EQ(additions::architectureDisplayString("X86_64", 1), "Rosetta");
  EXPECT_EQ(additions::architectureDisplayString("x86_64", -1), "Rosetta");
  EXPECT_EQ(additions::architectureDisplayString("aarch64", 0), "UnknownRunningArchitecture");
  EXPECT_EQ(additions::architectureDisplayString("", 0), "UnknownRunningArchitecture");
}

}  // namespace

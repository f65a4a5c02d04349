#include <cerrno>
#include <filesystem>
#include <future>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include "platform/format.h"
#include "platform/task.h"
#include "support/ZELKOR_NSStringAdditions.h"
#include "tests/fakes/captured_log.h"
#include "tests/unit/platform/child_process.h"
#include "tests/unit/platform/temporary_folder.h"

namespace {

namespace additions = lumo::ZELKOR_NSStringAdditions;
using additions::outputWhenRunAsShellCommand;
using additions::runAsShellCmd2;
using testing::HasSubstr;

// Both runners, for what they have in common.
class ShellRunners : public testing::TestWithParam<std::optional<std::string> (*)(const std::string&)> {
 protected:
  static std::optional<std::string> run(const std::string& command) { return GetParam()(command); }
};

TEST_P(ShellRunners, GiveWhatTheCommandPrints) {
  EXPECT_EQ(run("echo one; echo 'two  three'"), "one\ntwo  three\n");
  EXPECT_EQ(run("printf '%s' \"a b\" | tr ab xy"), "x y");
}

TEST_P(ShellRunners, GiveTheOutputOfACommandThatFails) {
  EXPECT_EQ(run("echo no-printers-available; exit 3"), "no-printers-available\n");
  EXPECT_EQ(run("echo before; kill -KILL $$"), "before\n");
}

TEST_P(ShellRunners, GiveNothingForACommandThatPrintsNothing) {
  const fakes::CapturedLog log;
  EXPECT_EQ(run("true"), std::nullopt);
  EXPECT_EQ(run("exit 1"), std::nullopt);
  EXPECT_EQ(run(""), std::nullopt);
}

TEST_P(ShellRunners, LeaveStandardErrorToTheLog) {
  const fakes::CapturedLog log;
  EXPECT_EQ(run("echo trouble >&2; echo fine"), "fine\n");
  EXPECT_TRUE(log.contains("trouble"));
}

TEST_P(ShellRunners, GiveAMegabyteWhole) {
  const auto text = run("head -c 1048576 /dev/zero | tr '\\0' m");
  ASSERT_TRUE(text);
  EXPECT_TRUE(*text == std::string(1048576, 'm'));
}

TEST_P(ShellRunners, GiveOutputAroundTheChunkSizeWhole) {
  for (const std::size_t length : {262143U, 262144U, 262145U, 524288U}) {
    const auto text = run("head -c " + std::to_string(length) + " /dev/zero | tr '\\0' c");
    ASSERT_TRUE(text);
    EXPECT_TRUE(*text == std::string(length, 'c')) << length;
  }
}

TEST_P(ShellRunners, KeepALetterThatLiesAcrossTwoChunks) {
  for (const std::size_t before : {262141U, 262142U, 262143U, 262144U}) {
    const auto text = run("head -c " + std::to_string(before) +
                          " /dev/zero | tr '\\0' c; printf '\\360\\237\\226\\250 ok'");
    ASSERT_TRUE(text);
    EXPECT_TRUE(*text == std::string(before, 'c') + "\U0001F5A8 ok") << before;
  }
}

TEST_P(ShellRunners, ReadOnThroughBytesThatAreNoText) {
  EXPECT_EQ(run("printf 'K\\374che: no-printers-available\\377'"), "K\uFFFDche: no-printers-available\uFFFD");
  EXPECT_EQ(run("printf 'cut \\360\\237\\226'"), "cut \uFFFD");
}

TEST_P(ShellRunners, ReadOnWhileAnOutputComesSlowly) {
  const TemporaryFolder folder;
  const std::string go = (folder / "go").string();
  ASSERT_EQ(::mkfifo(go.c_str(), 0600), 0);
  const auto runner = GetParam();
  auto text = std::async(std::launch::async, [&] {
    return runner("echo early; read line <" + go + "; echo $line; sleep 0; echo end");
  });
  writeFile(go, "late\n");
  EXPECT_EQ(text.get(), "early\nlate\nend\n");
}

TEST_P(ShellRunners, TakeNoOtherChildsStatus) {
  const auto runner = GetParam();
  std::vector<pid_t> others(10);
  // Before there are threads, beside which a sanitizer takes no fork.
  for (std::size_t i = 0; i < others.size(); ++i) {
    others[i] = startChild([i] { return static_cast<int>(i); });
  }
  std::vector<std::future<std::optional<std::string>>> runs(others.size());
  for (std::size_t i = 0; i < runs.size(); ++i) {
    runs[i] = std::async(std::launch::async, [runner, i] { return runner("echo " + std::to_string(i)); });
  }
  for (std::size_t i = 0; i < runs.size(); ++i) {
    EXPECT_EQ(runs[i].get(), std::to_string(i) + "\n");
    EXPECT_EQ(endOfChild(others[i]), static_cast<int>(i));
  }
}

TEST_P(ShellRunners, KeepTheProgramsOwnSettingsFromTheCommand) {
  const ScopedEnvironment renderer("GSK_RENDERER", "cairo");
  const ScopedEnvironment debug("GDK_DEBUG", "gl-disable");
  platform::Task::setEnvironmentKeptFromChildren({"GSK_RENDERER", "GDK_DEBUG"});
  EXPECT_EQ(run("echo ${GSK_RENDERER-unset} ${GDK_DEBUG-unset}"), "unset unset\n");
  platform::Task::setEnvironmentKeptFromChildren({});
}

TEST_P(ShellRunners, LeaveNoChildAndNoDescriptorBehind) {
  const auto runner = GetParam();
  EXPECT_EQ(inChild([runner] {
              const auto descriptors = [] {
                using Entries = std::filesystem::directory_iterator;
                return std::distance(Entries("/proc/self/fd"), Entries());
              };
              const auto before = descriptors();
              for (int i = 0; i < 20; ++i) {
                runner("echo x");
              }
              if (descriptors() != before) {
                return 1;
              }
              // The second runner's children are waited for elsewhere.
              for (int i = 0; i < 1000000; ++i) {
                siginfo_t info{};
                if (::waitid(P_ALL, 0, &info, WEXITED | WNOWAIT | WNOHANG) != 0 && errno == ECHILD) {
                  return 0;
                }
                std::this_thread::yield();
              }
              return 2;
            }),
            0);
}

INSTANTIATE_TEST_SUITE_P(, ShellRunners, testing::Values(&outputWhenRunAsShellCommand, &runAsShellCmd2),
                         [](const auto& info) { return info.index == 0 ? "Output" : "Second"; });

constexpr const char* kSignature = "-[NSString(LumoNSStringAdditions) outputWhenRunAsShellCommand]";

TEST(ZELKOR_NSStringAdditions, ACommandThatPrintsNothingIsLogged) {
  const fakes::CapturedLog log;
  EXPECT_EQ(outputWhenRunAsShellCommand("exit 1"), std::nullopt);
  EXPECT_TRUE(log.contains(std::string(kSignature) + " failed for command \"exit 1\""));
}

TEST(ZELKOR_NSStringAdditions, TheEmptyCommandIsNotEvenTried) {
  const fakes::CapturedLog log;
  EXPECT_EQ(outputWhenRunAsShellCommand(""), std::nullopt);
  EXPECT_EQ(log.text(), "");
}

TEST(ZELKOR_NSStringAdditions, AShellThatCannotBeStartedIsLogged) {
  const fakes::CapturedLog log;
  struct rlimit before {};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
  struct rlimit none = before;
  none.rlim_cur = 3;
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
  const auto first = outputWhenRunAsShellCommand("echo x");
  const auto second = runAsShellCmd2("echo x");
  ::setrlimit(RLIMIT_NOFILE, &before);
  EXPECT_EQ(first, std::nullopt);
  EXPECT_EQ(second, std::nullopt);
  EXPECT_TRUE(log.contains(std::string(kSignature) + " failed to run  \"echo x\""));
}

TEST(ZELKOR_NSStringAdditions, ACommandThatIsTooLongForTheSystemIsLogged) {
  const fakes::CapturedLog log;
  const std::string command = "echo " + std::string(200000, 'x');
  EXPECT_EQ(outputWhenRunAsShellCommand(command), std::nullopt);
  EXPECT_EQ(runAsShellCmd2(command), std::nullopt);
  EXPECT_THAT(log.text(), HasSubstr(std::string(kSignature) + " failed to run  \"echo xxx"));
}

TEST(ZELKOR_NSStringAdditions, TheFirstRunnerWaitsForTheShellsEnd) {
  const TemporaryFolder folder;
  const std::string done = (folder / "done").string();
  EXPECT_EQ(
      outputWhenRunAsShellCommand("echo out; exec >/dev/null; head -c 2000000 /dev/zero | wc -c >" + done),
      "out\n");
  EXPECT_EQ(readFile(done), "2000000\n");
}

TEST(ZELKOR_NSStringAdditions, TheSecondRunnerDoesNotWaitForTheShellsEnd) {
  const TemporaryFolder folder;
  const std::string go = (folder / "go").string();
  ASSERT_EQ(::mkfifo(go.c_str(), 0600), 0);
  // The shell waits for what is written only when the runner has returned.
  EXPECT_EQ(runAsShellCmd2("echo out; exec >/dev/null; read line <" + go), "out\n");
  writeFile(go, "go\n");
}

// Finding and running a script as printing does.
class Script : public testing::Test {
 protected:
  void install(const std::filesystem::path& file, const std::string& text) {
    std::filesystem::create_directories(file.parent_path());
    writeFile(file, "#!/bin/sh\necho " + text + " \"$1\"\n");
    std::filesystem::permissions(file, std::filesystem::perms::owner_all);
  }
  platform::Bundle bundle() const { return platform::Bundle(place / "LumoBrowser.app"); }
  std::string found() const { return additions::getPathToScript(kName, bundle()); }

  static constexpr const char* kName = "printtocups2.sh";
  const TemporaryFolder folder;
  const std::filesystem::path home = folder / "home";
  std::filesystem::path place = folder / "applications";
  const ScopedEnvironment homeVariable{"HOME", home.c_str()};
  const fakes::CapturedLog log;
};

TEST_F(Script, OnTheDesktopComesFirst) {
  install(home / "Desktop" / kName, "desktop");
  install(place / kName, "beside");
  install(place / "LumoBrowser.app" / kName, "auxiliary");
  install(place / "LumoBrowser.app/Resources" / kName, "resource");
  const std::string desktop = (home / "Desktop" / kName).string();
  EXPECT_EQ(found(), desktop);
  EXPECT_TRUE(log.contains("bundlePath is " + place.string()));
  EXPECT_TRUE(log.contains("Searching for shell script file in alternate paths first ..."));
  EXPECT_TRUE(log.contains("FOUND alternate path for shell script at: " + desktop));
  EXPECT_EQ(outputWhenRunAsShellCommand(found() + " /x/Snapshot.jpg"), "desktop /x/Snapshot.jpg\n");
}

TEST_F(Script, BesideTheBundleComesBeforeTheBundlesOwn) {
  install(place / kName, "beside");
  install(place / "LumoBrowser.app" / kName, "auxiliary");
  EXPECT_EQ(found(), (place / kName).string());
  EXPECT_TRUE(log.contains("FOUND alternate path for shell script at: " + (place / kName).string()));
}

TEST_F(Script, BesideTheExecutableComesBeforeTheResource) {
  install(place / "LumoBrowser.app" / kName, "auxiliary");
  install(place / "LumoBrowser.app/Resources" / kName, "resource");
  EXPECT_EQ(found(), (place / "LumoBrowser.app" / kName).string());
  EXPECT_THAT(log.text(), testing::Not(HasSubstr("FOUND alternate path")));
}

TEST_F(Script, AmongTheResourcesComesLast) {
  install(place / "LumoBrowser.app/Resources" / kName, "resource");
  EXPECT_EQ(found(), (place / "LumoBrowser.app/Resources" / kName).string());
}

TEST_F(Script, FoundNowhereIsATextAndALineInTheLog) {
  std::filesystem::create_directories(place);
  EXPECT_EQ(found(), "(null)");
  EXPECT_THAT(log.text(),
              HasSubstr("\n\nrunShellScript FAILED => UNABLE to find script named: [printtocups2.sh]!\n\n"));
}

TEST_F(Script, OfANameThatLeavesTheBundleIsNotFoundInIt) {
  install(place / "LumoBrowser.app/inside.sh", "inside");
  install(folder / "outside.sh", "outside");
  EXPECT_EQ(additions::getPathToScript("Resources/../inside.sh", bundle()), "(null)");
}

TEST_F(Script, RunAsItStandsTheTextForFoundNowhereFails) {
  EXPECT_EQ(outputWhenRunAsShellCommand(platform::stringWithFormat("%@ %@", found(), "/x/Snapshot.jpg")),
            std::nullopt);
  EXPECT_TRUE(log.contains(std::string(kSignature) + " failed for command \"(null) /x/Snapshot.jpg\""));
}

TEST_F(Script, WithABlankInItsPathIsFoundButCutOffByTheShell) {
  place = folder / "Photo Station";
  install(place / kName, "never printed");
  const std::string path = found();
  EXPECT_EQ(path, (place / kName).string());
  EXPECT_TRUE(
      log.contains("The script's path has a blank or a sign that means something to the shell; an unquoted "
                   "command line will not find it: " +
                   path));
  EXPECT_EQ(outputWhenRunAsShellCommand(path + " /x/Snapshot.jpg"), std::nullopt);
  // The shell's own complaint names the first half.
  EXPECT_THAT(log.text(), HasSubstr((folder / "Photo: ").string() + "not found"));
  EXPECT_TRUE(log.contains(std::string(kSignature) + " failed for command \"" + path + " /x/Snapshot.jpg\""));
}

TEST_F(Script, WithAPlainPathIsNotComplainedOf) {
  install(place / kName, "fine");
  found();
  EXPECT_THAT(log.text(), testing::Not(HasSubstr("The script's path")));
}

}  // namespace

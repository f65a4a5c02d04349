#include <cstdlib>
#include <filesystem>
#include <optional>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <unistd.h>

#include "app/AppDelegate.h"
#include "app/PreferenceKeys.h"
#include "platform/file_descriptor.h"
#include "platform/log.h"
#include "support/ZELKOR_Log.h"
#include "tests/fakes/captured_log.h"
#include "tests/fakes/test_platform.h"
#include "tests/unit/platform/child_process.h"
#include "tests/unit/platform/temporary_folder.h"

// Class initialisation: single instance, factory defaults, log file.

namespace {

using fakes::FakeApplication;
using lumo::AppDelegate;
using platform::Array;
using platform::Dictionary;
using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr const char* kNoFactoryFile = "AppDelegate->initialize....No FactoryDefault.plist found????";
constexpr const char* kBeforeRedirection =
    "AppDelegate-initialize...RELEASE TARGET - Trying to Redirect NSLogs to file...";
constexpr const char* kAfterRedirection = "AppDelegate-initialize...Should be REDIRECTING NSLOGs to file...";
constexpr const char* kAnotherInstance =
    "Inside AppDelegate => checkForDuplicateRunningInstances...Another Instance of this app is already "
    "running...";
// Another copy, older than this one.
constexpr int kFirstCopy = 17;

std::string propertyList(const std::string& content) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n" + content + "\n</plist>\n";
}

// A fresh log and a home folder of its own.
class AppDelegateInitialize : public testing::Test {
 protected:
  explicit AppDelegateInitialize(const fakes::TestBundle::Info& info = fakes::TestBundle::usualInfo())
      : machine(info) {
    if (const char* home = std::getenv("HOME")) {
      homeBefore_ = home;
    }
    setenv("HOME", home.path().c_str(), 1);
    lumo::ZELKOR_Log::initialize(machine.dispatch, machine.notifications, "LumoBrowser");
  }
  ~AppDelegateInitialize() override {
    // Closes the log file.
    lumo::ZELKOR_Log::initialize(machine.dispatch, machine.notifications, "LumoBrowser");
    if (homeBefore_) {
      setenv("HOME", homeBefore_->c_str(), 1);
    } else {
      unsetenv("HOME");
    }
  }

  void addFactoryFile(const std::string& dictionary) {
    machine.bundle.addResource("FactoryDefaults.plist", propertyList("<dict>" + dictionary + "</dict>"));
  }
  void initialize() {
    AppDelegate::initialize(machine.application, machine.bundle.bundle(), machine.defaults);
  }
  // The same for a copy that ends in it; answers its exit status.
  std::optional<int> initializeAndExit() {
    try {
      initialize();
    } catch (const fakes::ProcessExit& exit) {
      return exit.status;
    }
    return std::nullopt;
  }
  std::filesystem::path logFile(const std::string& name = "LumoBrowser.log") const {
    return home / "Library/Logs/Lumo" / name;
  }

  TemporaryFolder home;
  fakes::CapturedLog log;
  fakes::TestPlatform machine;

 private:
  std::optional<std::string> homeBefore_;
};

TEST_F(AppDelegateInitialize, GoesThroughItsStepsInOrder) {
  addFactoryFile("<key>prefArrayOfPathNamesToDataForLumo</key><array><string>/a</string></array>");
  initialize();

  EXPECT_THAT(log.lines(), ElementsAre("AppDelegate->initialize....", "AppDelegate->initialize....s = /a",
                                       kBeforeRedirection));
  EXPECT_THAT(readFile(logFile()), EndsWith(std::string(kAfterRedirection) + "\n"));
  EXPECT_THAT(machine.journal.entries(), IsEmpty());
}

TEST_F(AppDelegateInitialize, FromThenOnEveryLineGoesToTheLogFileAlone) {
  initialize();
  const std::string before = log.text();
  platform::NSLog("a later line");
  lumo::ZELKOR_Log::debug2("a line of the log");
  machine.dispatch.runUntilIdle();

  EXPECT_EQ(log.text(), before);
  EXPECT_THAT(readFile(logFile()), HasSubstr("] a later line\n"));
  EXPECT_THAT(readFile(logFile()), HasSubstr("a line of the log\n"));
  EXPECT_THAT(readFile(logFile()), Not(HasSubstr(kBeforeRedirection)));
}

TEST_F(AppDelegateInitialize, SaysWhyTheLogStaysOnStandardError) {
  writeFile(home / "Library", "");
  initialize();

  EXPECT_THAT(log.lines(),
              Contains(logFile().string() + " cannot be opened, the log stays on standard error"));
  EXPECT_EQ(log.lines().back(), kAfterRedirection);
}

// As user 54321, whom the system does not know.
bool becomeNobodyKnown() {
  const std::string map = "54321 " + std::to_string(geteuid()) + " 1";
  const platform::FileDescriptor file(
      unshare(CLONE_NEWUSER) == 0 ? open("/proc/self/uid_map", O_WRONLY | O_CLOEXEC) : -1);
  return file && write(file.get(), map.data(), map.size()) == static_cast<ssize_t>(map.size());
}

TEST_F(AppDelegateInitialize, AUserWithoutAHomeGetsTheLogOnStandardError) {
  EXPECT_EQ(inChild([this] {
              if (!becomeNobodyKnown()) return 1;
              unsetenv("HOME");
              initialize();
              platform::NSLog("a later line");
              return 0;
            }),
            0);
  EXPECT_THAT(log.lines(),
              ElementsAre("AppDelegate->initialize....", kNoFactoryFile, kBeforeRedirection,
                          "There is no home folder, the log stays on standard error", "a later line"));
}

// Another bundle name, which names the log file.
class AppDelegateLogFileName : public AppDelegateInitialize {
 protected:
  AppDelegateLogFileName()
      : AppDelegateInitialize(
            {{"CFBundleIdentifier", "com.lumo.LumoBrowser"}, {"CFBundleName", "Counter Kiosk 2.1"}}) {}
};

TEST_F(AppDelegateLogFileName, IsTheBundlesNameWithTheExtensionLog) {
  initialize();

  EXPECT_THAT(readFile(logFile("Counter Kiosk 2.1.log")), HasSubstr(kAfterRedirection));
}

class AppDelegateLogFileWithoutAName : public AppDelegateInitialize {
 protected:
  AppDelegateLogFileWithoutAName() : AppDelegateInitialize(fakes::TestBundle::Info{}) {}
};

TEST_F(AppDelegateLogFileWithoutAName, IsTheSystemsOwnName) {
  initialize();

  EXPECT_TRUE(std::filesystem::exists(logFile("LumoBrowser.log")));
}

using AppDelegateSingleInstance = AppDelegateInitialize;

TEST_F(AppDelegateSingleInstance, ASecondCopyBeepsBringsTheFirstForwardAndExitsWithZero) {
  machine.application.setOthers(std::vector{kFirstCopy});

  EXPECT_EQ(initializeAndExit(), 0);
  EXPECT_THAT(machine.journal.entries(),
              ElementsAre("application beep", "application activateOther 17 2", "application exitProcess 0"));
  EXPECT_THAT(machine.application.otherActivations(), ElementsAre(FakeApplication::OtherActivation{
                                                          kFirstCopy, platform::kActivateIgnoringOtherApps}));
  EXPECT_THAT(log.lines(), ElementsAre("AppDelegate->initialize....", kAnotherInstance));
}

TEST_F(AppDelegateSingleInstance, ASecondCopyShowsNothingAndSendsTheFirstNothing) {
  addFactoryFile("<key>prefServerAddress</key><string>http://s/</string>");
  machine.application.setOthers(std::vector{kFirstCopy});
  initializeAndExit();
  machine.dispatch.runUntilIdle();

  EXPECT_THAT(machine.windows.loaded(), IsEmpty());
  EXPECT_THAT(machine.bus.posted(), IsEmpty());
  EXPECT_EQ(machine.defaults.stringForKey(lumo::prefServerAddress), std::nullopt);
  EXPECT_FALSE(std::filesystem::exists(logFile()));
}

TEST_F(AppDelegateSingleInstance, OfSeveralOthersTheFirstOfTheListComesForward) {
  machine.application.setOthers(std::vector{FakeApplication::kOwnIdentifier, 23, kFirstCopy});

  EXPECT_EQ(initializeAndExit(), 0);
  EXPECT_THAT(machine.application.otherActivations(), ElementsAre(FakeApplication::OtherActivation{23, 2}));
  EXPECT_EQ(machine.application.beeps(), 1);
}

TEST_F(AppDelegateSingleInstance, AListOfTwoWithoutAnotherCopyEndsTheProcessAllTheSame) {
  machine.application.setOthers(std::vector{FakeApplication::kOwnIdentifier});

  EXPECT_EQ(initializeAndExit(), 0);
  EXPECT_THAT(machine.journal.entries(), ElementsAre("application exitProcess 0"));
  EXPECT_FALSE(log.contains(kAnotherInstance));
}

TEST_F(AppDelegateSingleInstance, TheOnlyCopyGoesOn) {
  EXPECT_EQ(initializeAndExit(), std::nullopt);
  EXPECT_THAT(machine.journal.entries(), IsEmpty());
}

TEST_F(AppDelegateSingleInstance, ACopyThatCannotTellGoesOn) {
  machine.application.setOthers(std::nullopt);

  EXPECT_EQ(initializeAndExit(), std::nullopt);
  EXPECT_THAT(machine.journal.entries(), IsEmpty());
}

using AppDelegateFactoryDefaults = AppDelegateInitialize;

TEST_F(AppDelegateFactoryDefaults, AreRegisteredWithTheReleasePathsJoined) {
  addFactoryFile(
      "<key>prefArrayOfPathNamesToDataForLumo</key>"
      "<array><string>a</string><string>b</string><string>c</string></array>"
      "<key>prefServerAddress</key><string>http://s:9090</string><key>prefShowMenuBar</key><true/>");
  initialize();

  EXPECT_EQ(machine.defaults.stringForKey(lumo::prefPathNamesToDataForLumo), "a, b, c");
  EXPECT_EQ(machine.defaults.stringForKey(lumo::prefServerAddress), "http://s:9090");
  EXPECT_TRUE(machine.defaults.boolForKey(lumo::prefShowMenuBar));
  EXPECT_EQ(machine.defaults.objectForKey(lumo::prefArrayOfPathNamesToDataForLumo),
            platform::PropertyList(Array{"a", "b", "c"}));
  EXPECT_TRUE(log.contains("AppDelegate->initialize....s = a, b, c"));
  EXPECT_FALSE(log.contains(kNoFactoryFile));
}

TEST_F(AppDelegateFactoryDefaults, AnEmptyArrayOfReleasePathsGivesTheEmptyText) {
  addFactoryFile("<key>prefArrayOfPathNamesToDataForLumo</key><array/>");
  initialize();

  EXPECT_EQ(machine.defaults.stringForKey(lumo::prefPathNamesToDataForLumo), "");
  EXPECT_TRUE(log.contains("AppDelegate->initialize....s = "));
}

TEST_F(AppDelegateFactoryDefaults, TheJoinedArrayReplacesATextOfTheFilesOwn) {
  addFactoryFile(
      "<key>prefPathNamesToDataForLumo</key><string>/own</string>"
      "<key>prefArrayOfPathNamesToDataForLumo</key><array><string>/a</string></array>");
  initialize();

  EXPECT_EQ(machine.defaults.stringForKey(lumo::prefPathNamesToDataForLumo), "/a");
}

TEST_F(AppDelegateFactoryDefaults, WithoutAnArrayTheFilesOwnTextStays) {
  addFactoryFile(
      "<key>prefPathNamesToDataForLumo</key><string>/own</string>"
      "<key>prefArrayOfPathNamesToDataForLumo</key><string>/no array</string>");
  initialize();

  EXPECT_EQ(machine.defaults.stringForKey(lumo::prefPathNamesToDataForLumo), "/own");
  EXPECT_THAT(log.lines(), Not(Contains(HasSubstr("....s = "))));
}

TEST_F(AppDelegateFactoryDefaults, AreOnlyAFallbackAndNeverWritten) {
  addFactoryFile("<key>prefServerAddress</key><string>http://factory</string>");
  machine.defaults.setObject("http://user", lumo::prefServerAddress);
  initialize();
  EXPECT_EQ(machine.defaults.stringForKey(lumo::prefServerAddress), "http://user");

  machine.defaults.removeObject(lumo::prefServerAddress);
  EXPECT_EQ(machine.defaults.stringForKey(lumo::prefServerAddress), "http://factory");
  EXPECT_TRUE(machine.defaults.userValues().empty());
}

// What counts as no factory file: absent, or a file of this content.
class AppDelegateBadFactoryFile : public AppDelegateInitialize,
                                  public testing::WithParamInterface<std::optional<std::string>> {};

TEST_P(AppDelegateBadFactoryFile, IsLoggedAndEveryPreferenceIsUnset) {
  if (GetParam()) {
    machine.bundle.addResource("FactoryDefaults.plist", *GetParam());
  }
  initialize();

  EXPECT_EQ(log.count(kNoFactoryFile), 1U);
  EXPECT_EQ(log.lines().back(), kBeforeRedirection);
  for (const lumo::PreferenceKey& key : lumo::preferenceKeys()) {
    EXPECT_EQ(machine.defaults.objectForKey(key.name), std::nullopt) << key.name;
    EXPECT_FALSE(machine.defaults.boolForKey(key.name)) << key.name;
  }
  EXPECT_EQ(machine.defaults.stringForKey(lumo::prefServerAddress), std::nullopt);
  EXPECT_EQ(machine.defaults.stringForKey(lumo::prefDefaultServerAddress), std::nullopt);
  EXPECT_THAT(readFile(logFile()), HasSubstr(kAfterRedirection));
}

INSTANTIATE_TEST_SUITE_P(
    Contents, AppDelegateBadFactoryFile,
    testing::Values(std::nullopt, "", "not a property list", propertyList("<dict/>"),
                    propertyList("<array><string>prefServerAddress</string></array>"),
                    "<plist version=\"1.0\"><dict><key>prefServerAddress</key><string>http://cut"));

TEST(AppDelegateRegistrationDefaults, LeaveTheFactoryValuesAsTheyAre) {
  const fakes::CapturedLog log;
  const Dictionary factory{{"prefArrayOfPathNamesToDataForLumo", Array{"/a", "/b"}}, {"other", 3}};
  const Dictionary values = lumo::registrationDefaults(factory);

  EXPECT_EQ(factory.find(lumo::prefPathNamesToDataForLumo), nullptr);
  ASSERT_NE(values.find(lumo::prefPathNamesToDataForLumo), nullptr);
  EXPECT_EQ(*values.find(lumo::prefPathNamesToDataForLumo), platform::PropertyList("/a, /b"));
  ASSERT_NE(values.find("other"), nullptr);
  EXPECT_EQ(*values.find("other"), platform::PropertyList(3));
}

}  // namespace

#include "support/ZELKOR_NSStringAdditions.h"

#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/utsname.h>

#include "app/PreferenceKeys.h"
#include "platform/format.h"
#include "support/SourceRevision.h"
#include "tests/fakes/captured_log.h"
#include "tests/fakes/test_platform.h"

namespace {

namespace additions = lumo::ZELKOR_NSStringAdditions;

TEST(ZELKOR_NSStringAdditions, ValidateAsPathCleansWhatAPersonTyped) {
  const std::vector<std::pair<std::string, std::string>> rows = {
      {" /Users/kiosk/Order Files/ ", "Users/kiosk/OrderFiles"},
      {"/", ""},
      {"a b/c", "ab/c"},
      {"", ""},
      {" \t\n", ""},
      {"///", ""},
      {"/a//b/", "a//b"},
      {"\n//orders/2026 \n", "orders/2026"},
      {"/a/ /", "a/"},
      {"/ /x", "/x"},
      {"a\tb", "a\tb"},
      {"\u00a0/K\u00fcche/ ", "K\u00fcche"},
  };
  for (const auto& [typed, cleaned] : rows) {
    const fakes::CapturedLog log;
    EXPECT_EQ(additions::validateAsPath(typed), cleaned) << typed;
    EXPECT_THAT(log.text(), testing::HasSubstr(platform::stringWithFormat(
                                "validateAsPath->  old[%@] = new[%@]\n", typed, cleaned)));
  }
}

TEST(ZELKOR_NSStringAdditions, TheSourceRevisionIsSevenHexadecimalDigits) {
  EXPECT_THAT(lumo::sourceRevision(), testing::MatchesRegex("[0-9a-f]{7}"));
}

std::string versionOf(const fakes::TestBundle::Info& info) {
  fakes::TestBundle bundle(info);
  platform::UserDefaults defaults;
  std::string version = additions::getAppVersionString(bundle.bundle(), defaults);
  EXPECT_EQ(defaults.stringForKey("prefAppVersion"), version);
  return version;
}

TEST(ZELKOR_NSStringAdditions, TheVersionStringHasEverythingAndIsStored) {
  const std::string revision = lumo::sourceRevision();
  EXPECT_EQ(versionOf({{"CFBundleDisplayName", "Lumo Browser"},
                       {"CFBundleName", "LumoBrowser"},
                       {"CFBundleShortVersionString", "1.2.3"},
                       {"CFBundleVersion", "45"},
                       {"DTXcode", "GNU 12.2.0"},
                       {"DTSDKName", "webkitgtk-2.50.1"}}),
            "Lumo Browser - v1.2.3 (45) [" + revision + "] [XC-GNU 12.2.0 sdk-webkitgtk-2.50.1]");
}

TEST(ZELKOR_NSStringAdditions, WhatIsMissingFromTheVersionStringIsMarked) {
  const std::string revision = lumo::sourceRevision();
  EXPECT_EQ(versionOf({{"CFBundleName", "LumoBrowser"}, {"CFBundleShortVersionString", "1.2"}}),
            "LumoBrowser - v1.2 (?\?) [" + revision + "] [XC-?? sdk-??]");
  EXPECT_EQ(versionOf({{"x", "y"}}), "(null) - v(null) (?\?) [" + revision + "] [XC-?? sdk-??]");
}

TEST(ZELKOR_NSStringAdditions, TheArchitectureIsTheKernelsMachineName) {
  const fakes::CapturedLog log;
  struct utsname system {};
  ASSERT_EQ(::uname(&system), 0);
  EXPECT_EQ(additions::RunningArchitecture(), static_cast<const char*>(system.machine));
  EXPECT_TRUE(log.contains("Running Architecture = (" + additions::RunningArchitecture() + ")"));
}

TEST(ZELKOR_NSStringAdditions, LinuxTranslatesNoProcess) {
  EXPECT_EQ(additions::processIsTranslated(), 0);
}

TEST(ZELKOR_NSStringAdditions, TheArchitectureHasANameForPeople) {
  struct Row {
    const char* machine;
    int isTranslated;
    const char* text;
  };
  const std::vector<Row> rows = {
      {"arm64", 0, "Apple Silicon"},
      {"ARM64", 1, "Apple Silicon"},
      {"x86_64", 0, "Intel"},
      {"X86_64", 0, "Intel"},
      {"x86_64", 1, "Rosetta"},
      {"x86_64", -1, "Rosetta"},
      {"aarch64", 0, "UnknownRunningArchitecture"},
      {"i686", 0, "UnknownRunningArchitecture"},
      {"", 0, "UnknownRunningArchitecture"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(additions::architectureDisplayString(row.machine, row.isTranslated), row.text) << row.machine;
  }
  const fakes::CapturedLog log;
  EXPECT_EQ(additions::RunningArchitectureDisplayString(),
            additions::architectureDisplayString(additions::RunningArchitecture(), 0));
}

}  // namespace

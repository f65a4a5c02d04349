#include "preferences/VersionLine.h"

#include <gtest/gtest.h>

namespace {

using platform::Dictionary;

Dictionary usual() {
  return {{"CFBundleDisplayName", "Lumo Browser"},
          {"CFBundleShortVersionString", "1.0.0"},
          {"CFBundleVersion", "100"},
          {"DTXcode", "g++-12"},
          {"DTSDKName", "webkitgtk2.50"}};
}

TEST(VersionLine, TellsAllOfIt) {
  EXPECT_EQ(lumo::versionLine(usual(), "Intel", "0123abc"),
            "Lumo Browser (Intel) - v1.0.0 (100) [0123abc] [XC-g++-12 sdk-webkitgtk2.50]");
}

TEST(VersionLine, WithoutACompilerHasQuestionMarksInItsLastBracket) {
  Dictionary info = usual();
  info.remove("DTXcode");
  EXPECT_EQ(lumo::versionLine(info, "Intel", "0123abc"),
            "Lumo Browser (Intel) - v1.0.0 (100) [0123abc] [XC-?? sdk-webkitgtk2.50]");
}

TEST(VersionLine, SaysOfEachOtherPartThatItIsMissing) {
  EXPECT_EQ(lumo::versionLine({{"Other", "x"}}, "Intel", "0123abc"),
            "(null) (Intel) - v(null) (?\?) [0123abc] [XC-?? sdk-??]");
}

}  // namespace

#include "support/FindArguments.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using lumo::argumentsForGnuFind;
using lumo::findArguments;
using lumo::FindRequest;
using Strings = std::vector<std::string>;

TEST(FindArguments, AreThoseOfTheRequestInTheirOrder) {
  const FindRequest request{"/tmp/x/", "f", {"*.jpg", "*.png"}, 7, 2, "rm"};
  EXPECT_EQ(findArguments(request),
            (Strings{"-H",        "/tmp/x", "-type",     "f",     "-and",  "-not",   "-newerBt", "7 days ago",
                     "-and",      "(",      "-iname",    "*.jpg", "-or",   "-iname", "*.png",    ")",
                     "-maxdepth", "2",      "-mindepth", "1",     "-exec", "rm",     "{}",       "+"}));
}

TEST(FindArguments, WithNothingAskedForListTheFolder) {
  EXPECT_EQ(findArguments({"/data"}), (Strings{"-H", "/data", "-mindepth", "1"}));
}

TEST(FindArguments, AFolderLosesTheSlashesAtItsEndAndTheRootKeepsOne) {
  struct Row {
    std::string folder;
    std::string argument;
  };
  for (const Row& row : std::vector<Row>{{"/data///", "/data"},
                                         {"/data", "/data"},
                                         {"/data//x/", "/data//x"},
                                         {"/", "/"},
                                         {"////", "/"},
                                         {"data/", "data"}}) {
    EXPECT_EQ(findArguments({row.folder}), (Strings{"-H", row.argument, "-mindepth", "1"}));
  }
}

TEST(FindArguments, AnEmptyFolderGivesNone) {
  EXPECT_EQ(findArguments({"", "f", {"*"}, 7, 2, "rm"}), Strings{});
}

TEST(FindArguments, OnlyTheTypesOfFindAreTaken) {
  for (const std::string type : {"f", "d", "b", "c", "l", "p", "s"}) {
    EXPECT_EQ(findArguments({"/x", type}), (Strings{"-H", "/x", "-type", type, "-mindepth", "1"}));
  }
  for (const std::string type : {"", "F", "x", "ff", "f ", "-delete", "D"}) {
    EXPECT_EQ(findArguments({"/x", type}), (Strings{"-H", "/x", "-mindepth", "1"})) << type;
  }
}

TEST(FindArguments, OneDayIsADayAndEveryOtherNumberDays) {
  struct Row {
    std::uint32_t days;
    std::string text;
  };
  for (const Row& row :
       std::vector<Row>{{1, "1 day ago"},
                        {0, "0 days ago"},
                        {2, "2 days ago"},
                        {std::numeric_limits<std::uint32_t>::max(), "4294967295 days ago"}}) {
    EXPECT_EQ(findArguments({"/x", std::nullopt, {}, row.days}),
              (Strings{"-H", "/x", "-and", "-not", "-newerBt", row.text, "-mindepth", "1"}));
  }
}

TEST(FindArguments, OnePatternHasNoAndBeforeIt) {
  EXPECT_EQ(findArguments({"/x", "f", {"*.jpg"}}),
            (Strings{"-H", "/x", "-type", "f", "-iname", "*.jpg", "-mindepth", "1"}));
}

TEST(FindArguments, TwoPatternsAndMoreAreAGroupWithOrBetweenThem) {
  EXPECT_EQ(findArguments({"/x", "f", {"a", "b"}}),
            (Strings{"-H", "/x", "-type", "f", "-and", "(", "-iname", "a", "-or", "-iname", "b", ")",
                     "-mindepth", "1"}));
  EXPECT_EQ(findArguments({"/x", std::nullopt, {"a", "a", "a"}}),
            (Strings{"-H", "/x", "-and", "(", "-iname", "a", "-or", "-iname", "a", "-or", "-iname", "a", ")",
                     "-mindepth", "1"}));
}

TEST(FindArguments, TheDepthIsLimitedOnlyWhereThatIsAskedForAndTheFolderItselfIsNeverMeant) {
  EXPECT_EQ(findArguments({"/x", std::nullopt, {}, std::nullopt, 0}),
            (Strings{"-H", "/x", "-maxdepth", "0", "-mindepth", "1"}));
  EXPECT_EQ(findArguments({"/x", std::nullopt, {}, std::nullopt, 4294967295U}),
            (Strings{"-H", "/x", "-maxdepth", "4294967295", "-mindepth", "1"}));
}

TEST(FindArguments, ACommandGetsAllThatWasFoundAtOnce) {
  EXPECT_EQ(findArguments({"/x", "d", {}, std::nullopt, std::nullopt, "rmdir"}),
            (Strings{"-H", "/x", "-type", "d", "-mindepth", "1", "-exec", "rmdir", "{}", "+"}));
}

TEST(FindArguments, ExtensionsBecomePatternsInTheirOrder) {
  EXPECT_EQ(lumo::patternsForExtensions({"jpg", "PNG", "tar.gz", ""}),
            (Strings{"*.jpg", "*.PNG", "*.tar.gz", "*."}));
  EXPECT_EQ(lumo::patternsForExtensions({}), Strings{});
}

TEST(GnuFindArguments, StayAsTheyAreWhereItTakesThem) {
  const Strings arguments = findArguments({"/x", "f", {"a", "b"}, 7, 2, "rm"});
  EXPECT_EQ(argumentsForGnuFind(arguments, true), arguments);
  EXPECT_EQ(argumentsForGnuFind({}, false), Strings{});
  EXPECT_EQ(argumentsForGnuFind({"-H", "/x"}, false), (Strings{"-H", "/x"}));
}

TEST(GnuFindArguments, TakeTheLastChangeWhereBirthTimesAreNotKnown) {
  EXPECT_EQ(argumentsForGnuFind(findArguments({"/x", "f", {"*.jpg"}, 7, std::nullopt, "rm"}), false),
            (Strings{"-H", "/x", "-type", "f", "-and", "-not", "-newerct", "7 days ago", "-iname", "*.jpg",
                     "-mindepth", "1", "-exec", "rm", "{}", "+"}));
}

TEST(GnuFindArguments, LeaveAPatternOfThatTextAlone) {
  const Strings arguments = findArguments({"/x", "f", {"-newerBt"}});
  EXPECT_EQ(argumentsForGnuFind(arguments, false), arguments);
}

TEST(GnuFindArguments, BeginWithNoAnd) {
  EXPECT_EQ(argumentsForGnuFind(findArguments({"/x", std::nullopt, {}, 1}), true),
            (Strings{"-H", "/x", "-not", "-newerBt", "1 day ago", "-mindepth", "1"}));
  EXPECT_EQ(argumentsForGnuFind(findArguments({"/x", std::nullopt, {"a", "b"}}), false),
            (Strings{"-H", "/x", "(", "-iname", "a", "-or", "-iname", "b", ")", "-mindepth", "1"}));
}

TEST(GnuFindArguments, AFolderIsNeverTakenForAPartOfTheExpression) {
  for (const std::string folder : {"-delete", "-x", "(", ")", ",", "!", "!x"}) {
    EXPECT_EQ(argumentsForGnuFind(findArguments({folder}), true),
              (Strings{"-H", "./" + folder, "-mindepth", "1"}));
  }
  EXPECT_EQ(argumentsForGnuFind(findArguments({"x-y"}), true), (Strings{"-H", "x-y", "-mindepth", "1"}));
}

}  // namespace

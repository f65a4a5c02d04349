#include "browser/FieldFocus.h"

#include <gtest/gtest.h>

namespace lumo {
namespace {

struct FocusCase {
  std::optional<std::string> path;
  std::optional<std::string> list;
  bool matches;
};

TEST(FocusPathTest, MatchesAsListed) {
  const FocusCase cases[] = {
      // Trailing slashes count on both sides, leading ones, blanks and case do not.
      {"/LOGIN/", " /login/ , //kiosk ", true},
      {"/login", " /login/ , //kiosk ", false},
      {"/kiosk", " /login/ , //kiosk ", true},
      {"//kiosk", "kiosk", true},
      {"///kiosk", "kiosk", false},
      {"/kiosk", "///kiosk", false},
      {"///kiosk", "///kiosk", true},
      {"/a", "a,b", true},
      {"/b", "a,\n\tb\n", true},
      {"/c", "a,b", false},
      {"/a/b", "a/b", true},
      {"/a b", "a b", true},
      // An empty item is none, also for the root.
      {"/", "a,,b", false},
      {"/", "/", false},
      {"/a", "", false},
      {"/a", std::nullopt, false},
      {std::nullopt, "a", false},
      {"", ",", false},
  };
  for (const FocusCase& c : cases) {
    EXPECT_EQ(isFocusPath(c.path, c.list), c.matches)
        << c.path.value_or("(none)") << " in " << c.list.value_or("(none)");
  }
}

TEST(FocusScriptTest, FocusesFromTheLastFieldToTheFirst) {
  EXPECT_EQ(focusScript("email"),
            "var inputFields = document.querySelectorAll(\"input[id='email']\");" + std::string(37, ' ') +
                "for (var i = inputFields.length >>> 0; i--;) { inputFields[i].focus();}");
}

TEST(FocusScriptTest, LooksForTheTextOfNothingWhenNoIdentifierIsSet) {
  EXPECT_NE(focusScript(std::nullopt).find("\"input[id='(null)']\""), std::string::npos);
}

}  // namespace
}  // namespace lumo

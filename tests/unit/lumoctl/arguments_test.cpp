#include "tools/lumoctl/arguments.h"

#include <gtest/gtest.h>

namespace lumoctl {
namespace {

using Words = std::vector<std::string>;

TEST(LumoctlArguments, NameEveryCommand) {
  const std::pair<Words, Command> cases[] = {
      {{"--help"}, Help{}},
      {{"-h"}, Help{}},
      {{"--version"}, Version{}},
      {{"open"}, Open{}},
      {{"open", "a", "b"}, Open{{"a", "b"}, false}},
      {{"open", "--selection"}, Open{{}, true}},
      {{"open", "--", "-x", "--selection", "--"}, Open{{"-x", "--selection", "--"}, false}},
      {{"open", ""}, Open{{""}, false}},
      {{"defaults", "read"}, DefaultsRead{}},
      {{"defaults", "read", "k"}, DefaultsRead{"k"}},
      {{"defaults", "write", "k", "v"}, DefaultsWrite{"k", "v", false}},
      {{"defaults", "write", "k", "-int", "3"}, DefaultsWrite{"k", 3, false}},
      {{"defaults", "write", "k", "-array-add", "v"}, DefaultsWrite{"k", platform::Array{"v"}, true}},
      {{"defaults", "delete", "k"}, DefaultsDelete{"k"}},
      {{"defaults", "list"}, DefaultsList{}},
      {{"defaults", "export", "-"}, DefaultsExport{"-"}},
      {{"defaults", "import", "f"}, DefaultsImport{"f"}},
      {{"listen"}, Listen{}},
      {{"status"}, Status{}},
  };
  for (const auto& [words, command] : cases) {
    EXPECT_TRUE(parseArguments(words) == command) << testing::PrintToString(words);
  }
}

TEST(LumoctlArguments, AreRefusedWithALine) {
  const Words cases[] = {
      {},
      {""},
      {"opne"},
      {"open", "--selektion"},
      {"open", "-x"},
      {"open", "--selection", "a"},
      {"open", "a", "--selection"},
      {"defaults"},
      {"defaults", "reed"},
      {"defaults", "read", ""},
      {"defaults", "read", "a", "b"},
      {"defaults", "write"},
      {"defaults", "write", "", "v"},
      {"defaults", "write", "k"},
      {"defaults", "write", "k", "a", "b"},
      {"defaults", "delete"},
      {"defaults", "delete", "a", "b"},
      {"defaults", "list", "a"},
      {"defaults", "export"},
      {"defaults", "import", "a", "b"},
      {"listen", "a"},
      {"status", "a"},
  };
  for (const auto& words : cases) {
    const auto command = parseArguments(words);
    const auto* error = std::get_if<UsageError>(&command);
    ASSERT_NE(error, nullptr) << testing::PrintToString(words);
    EXPECT_FALSE(error->message.empty());
    EXPECT_EQ(error->message.find('\n'), std::string::npos);
  }
}

}  // namespace
}  // namespace lumoctl

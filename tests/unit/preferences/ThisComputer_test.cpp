#include "preferences/ThisComputer.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

namespace {

using lumo::addressOfInterface;
using lumo::InterfaceEntry;
using std::nullopt;

TEST(AddressOfInterface, IsTheLastOneOfThatName) {
  const std::vector<InterfaceEntry> entries{{"lo", "127.0.0.1"}, {"en0", "10.0.1.7"}, {"en0", nullopt},
                                            {"en0", "10.0.1.8"}, {"en0", nullopt},    {"en00", "10.0.1.9"},
                                            {"en1", "10.0.1.10"}};
  EXPECT_EQ(addressOfInterface("en0", entries), "10.0.1.8");
}

TEST(AddressOfInterface, IsUnknownWithoutAnEntryOrAList) {
  EXPECT_EQ(addressOfInterface("en0", std::vector<InterfaceEntry>{{"en0", nullopt}, {"en1", "10.0.1.7"}}),
            "unknown");
  EXPECT_EQ(addressOfInterface("en0", std::vector<InterfaceEntry>{}), "unknown");
  EXPECT_EQ(addressOfInterface("en0", nullopt), "unknown");
}

TEST(ThisComputer, TellsTheAddressOfItsLoopback) {
  const auto entries = lumo::thisComputer().interfaces();
  ASSERT_TRUE(entries);
  EXPECT_EQ(addressOfInterface("lo", entries), "127.0.0.1");
}

TEST(ThisComputer, HasNoInterfacesWhereTheSystemDoesNotTell) {
  rlimit before = {};
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
  rlimit none = before;
  none.rlim_cur = 0;
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
  const auto entries = lumo::thisComputer().interfaces();
  setrlimit(RLIMIT_NOFILE, &before);
  EXPECT_FALSE(entries);
}

}  // namespace

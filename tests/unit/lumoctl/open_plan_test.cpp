#include "tools/lumoctl/open_plan.h"

#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace lumoctl {
namespace {

const ServerAddresses kServers{"http://10.0.0.5:9090/orders", std::nullopt};

OpenPlan plan(const std::vector<std::string>& items, const ServerAddresses& servers = kServers) {
  const std::set<std::string> files{"/home/a b.jpg", "/srv/x.html", "/home/page", "/home/-x"};
  return planOpen(items, "/home", servers, [&](const std::string& path) { return files.contains(path); });
}

TEST(FileAddress, EscapesEveryByteWithAMeaning) {
  EXPECT_EQ(fileAddress("/a-b._~/C9"), "file:///a-b._~/C9");
  EXPECT_EQ(fileAddress("/a b%#?[ü]\xff"), "file:///a%20b%25%23%3F%5B%C3%BC%5D%FF");
}

TEST(OpenPlan, MakesAbsoluteAddressesOfFiles) {
  const std::pair<const char*, const char*> cases[] = {
      {"a b.jpg", "file:///home/a%20b.jpg"},   {"./a b.jpg", "file:///home/a%20b.jpg"},
      {"../srv/x.html", "file:///srv/x.html"}, {"/srv/./x.html", "file:///srv/x.html"},
      {"page", "file:///home/page"},           {"-x", "file:///home/-x"},
  };
  for (const auto& [item, address] : cases) {
    const auto made = plan({item});
    EXPECT_FALSE(made.refusal) << *made.refusal;
    EXPECT_THAT(made.addresses, testing::ElementsAre(address));
  }
}

TEST(OpenPlan, LeavesAddressesAsTheyAre) {
  for (const char* address :
       {"http://h/p?q#f", "10.0.0.5:9090/x", "example.com", "lumobrowser://[junivaserver]/x",
        "lumobrowser://%5Bjunivaserver%5D/x", "file:///not/there", "FILE:/x", "localhost:9090/x"}) {
    const auto made = plan({address});
    EXPECT_FALSE(made.refusal) << *made.refusal;
    EXPECT_THAT(made.addresses, testing::ElementsAre(address));
  }
}

TEST(OpenPlan, RefusesTheWholeForOneThatIsRefused) {
  for (const char* item : {"", "  ", "foo bar", "http://a b", "./nothing", "/nothing", "../nothing",
                           "file://elsewhere/x", "file:x", "http://h:99999/", "\xff"}) {
    const auto made = plan({"http://h/", item});
    ASSERT_TRUE(made.refusal) << item;
    EXPECT_TRUE(made.addresses.empty());
    EXPECT_EQ(made.refusal->find('\n'), std::string::npos);
  }
}

TEST(OpenPlan, RefusesAPlaceholderWithoutAServer) {
  const auto made = plan({"[junivaserver]/x"}, {});
  ASSERT_TRUE(made.refusal);
  EXPECT_THAT(*made.refusal, testing::HasSubstr("no photo server is set"));
  EXPECT_FALSE(plan({"[junivaserver]/x"}, {std::nullopt, "http://h"}).refusal);
}

TEST(OpenPlan, ShowsARefusedTextOnOneShortLine) {
  const auto refusal = refusalOf("a\nb " + std::string(100'000, 'x'), kServers);
  ASSERT_TRUE(refusal);
  EXPECT_LT(refusal->size(), 400U);
  EXPECT_EQ(refusal->find('\n'), std::string::npos);
}

TEST(OpenPlan, IsEmptyForNothing) {
  EXPECT_TRUE(plan({}).addresses.empty());
  EXPECT_FALSE(plan({}).refusal);
}

}  // namespace
}  // namespace lumoctl

#include "preferences/ServerAddress.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/fakes/captured_log.h"

namespace {

using platform::Dictionary;
using platform::PropertyList;
using std::nullopt;

using Text = std::optional<std::string>;

struct Tested {
  const char* name;
  Text server;
  Text fallback;
  std::string address;
  bool isRewritten;
};

class AddressToTest : public testing::TestWithParam<Tested> {};

TEST_P(AddressToTest, IsMadeOfTheServersAddress) {
  const fakes::CapturedLog quiet;
  const auto tested = lumo::addressToTest(GetParam().server, GetParam().fallback);

  ASSERT_TRUE(tested);
  EXPECT_EQ(tested->address, GetParam().address);
  EXPECT_EQ(tested->isRewritten, GetParam().isRewritten);
}

INSTANTIATE_TEST_SUITE_P(
    Preferences, AddressToTest,
    testing::Values(Tested{"Http", "http://s:9090/r", nullopt, "http://s:9090/r", false},
                    Tested{"HttpInCapitals", "HTTP://s", nullopt, "HTTP://s", false},
                    Tested{"File", "File:///tmp/a.html", nullopt, "File:///tmp/a.html", false},
                    Tested{"WithoutScheme", "10.1.2.3:9090", nullopt, "http://10.1.2.3:9090", true},
                    Tested{"NameWithoutScheme", "server", nullopt, "http://server", true},
                    Tested{"LocalhostIsNoScheme", "localhost:9090", nullopt, "http://localhost:9090", true},
                    Tested{"HttpsGetsHttpInFront", "https://s/", nullopt, "http://https://s/", true},
                    Tested{"AnotherScheme", "ftp://s/", nullopt, "http://ftp://s/", true},
                    Tested{"NoAddressAtAll", "a b", nullopt, "http://a b", true},
                    Tested{"TheServersOneComesFirst", "http://a", "http://b", "http://a", false},
                    Tested{"TheDefaultOneElse", nullopt, "http://b", "http://b", false},
                    Tested{"TheDefaultOneIsRewrittenToo", nullopt, "b:1", "http://b:1", true},
                    Tested{"TheEmptyOneCountsAsNone", "", "http://b", "http://b", false}),
    [](const auto& info) { return info.param.name; });

TEST(NoAddressToTest, WhereNeitherIsSet) {
  EXPECT_EQ(lumo::addressToTest(nullopt, nullopt), nullopt);
  EXPECT_EQ(lumo::addressToTest("", ""), nullopt);
}

TEST(TheLogOfAnAddressToTest, HasItsUrlAndItsScheme) {
  const fakes::CapturedLog log;
  lumo::addressToTest("https://s/", nullopt);
  lumo::addressToTest("a b", nullopt);

  EXPECT_THAT(log.lines(), testing::ElementsAre("tempurl = https://s/", "tempurl.scheme = https",
                                                "tempurl = (null)", "tempurl.scheme = (null)"));
}

Dictionary found(const std::string& urlstring) {
  return {{"status", "NSStatusAvailable"}, {"urlstring", urlstring}};
}

TEST(ChosenServerAddress, HasThePathOfTheStationListAtItsEnd) {
  EXPECT_EQ(lumo::chosenServerAddress(found("http://10.0.1.20:9090"), "10.0.1.7", nullopt),
            "http://10.0.1.20:9090/registrationorders");
  EXPECT_EQ(lumo::chosenServerAddress(found("http://10.0.1.20:9090/"), "10.0.1.7", PropertyList("a/b")),
            "http://10.0.1.20:9090/a/b");
  EXPECT_EQ(lumo::chosenServerAddress(found("http://10.0.1.20:9090"), "10.0.1.7", PropertyList(5)),
            "http://10.0.1.20:9090/5");
}

TEST(ChosenServerAddress, OfThisComputerIsLocalhost) {
  EXPECT_EQ(lumo::chosenServerAddress(found("http://10.0.1.7:9090"), " 10.0.1.7\n", nullopt),
            "http://localhost:9090/registrationorders");
}

TEST(ChosenServerAddress, LocalhostStandsAlsoInsideALongerAddress) {
  EXPECT_EQ(lumo::chosenServerAddress(found("http://10.0.1.12:9090/?from=10.0.1.1"), "10.0.1.1", nullopt),
            "http://localhost2:9090/registrationorders?from=localhost");
}

TEST(ChosenServerAddress, OnlyAnAddressOfFourPartsIsReplaced) {
  for (const char* local : {"localhost", "10.0.1", "10.0.1.7.1", ""}) {
    EXPECT_EQ(lumo::chosenServerAddress(found("http://10.0.1.7:9090"), local, nullopt),
              "http://10.0.1.7:9090/registrationorders")
        << local;
  }
}

TEST(ChosenServerAddress, WithoutARecordIsTheTextForAMissingObject) {
  EXPECT_EQ(lumo::chosenServerAddress(nullopt, "10.0.1.7", nullopt), "(null)/registrationorders");
  EXPECT_EQ(lumo::chosenServerAddress(Dictionary{{"server", "x"}}, "10.0.1.7", nullopt),
            "(null)/registrationorders");
}

TEST(ChosenServerAddress, IsAbsentWhereTheRecordHoldsNone) {
  EXPECT_EQ(lumo::chosenServerAddress(found("http://a b/"), "10.0.1.7", nullopt), nullopt);
}

}  // namespace

#include "discovery/ServerScan.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/format.h"
#include "tests/fakes/fake_http_client.h"

namespace lumo {
namespace {

using fakes::FakeHttpClient;
using platform::Array;
using platform::Dictionary;
using testing::ElementsAre;

TEST(ScanRange, IsTheNetworkOfTheLocalAddress) {
  const ScanRange range = scanRange("10.0.1.7");
  EXPECT_EQ(range.addressTemplate, "10.0.1.[xval]");
  EXPECT_EQ(range.maximum, 255);
  EXPECT_TRUE(range.isSubnet);
  EXPECT_EQ(scanAddress(range, 0), "10.0.1.0");
  EXPECT_EQ(scanAddress(range, 7), "10.0.1.7");
  EXPECT_EQ(scanAddress(range, 255), "10.0.1.255");
}

TEST(ScanRange, IsThisComputerAloneWithoutANetwork) {
  for (const char* local : {"localhost", "LocalHost"}) {
    const ScanRange range = scanRange(local);
    EXPECT_EQ(range.addressTemplate, "localhost");
    EXPECT_EQ(range.maximum, 1);
    EXPECT_FALSE(range.isSubnet);
    EXPECT_EQ(scanAddress(range, 0), "localhost");
  }
}

TEST(ScanRange, TakesPartsThatAreNoNumbersAsTheyAre) {
  EXPECT_EQ(scanAddress(scanRange("a.b.c.d"), 3), "a.b.c.3");
  EXPECT_EQ(scanAddress(scanRange("..."), 3), "...3");
}

TEST(PauseBeforeProbe, IsTwoMillisecondsAndShorterOnlyToMakeUpForLateness) {
  using platform::Millis;
  EXPECT_EQ(pauseBeforeProbe(1, Millis{0}), Millis{2});
  EXPECT_EQ(pauseBeforeProbe(255, Millis{508}), Millis{2});
  EXPECT_EQ(pauseBeforeProbe(255, Millis{509}), Millis{1});
  // However late they are, probes do not come all at once.
  EXPECT_EQ(pauseBeforeProbe(255, Millis{510}), Millis{1});
  EXPECT_EQ(pauseBeforeProbe(255, Millis{60'000}), Millis{1});
  // Early never is.
  EXPECT_EQ(pauseBeforeProbe(255, Millis{0}), Millis{2});
}

struct ServerCase {
  const char* name;
  platform::HttpResult result;
  std::optional<std::string> server;
};

void PrintTo(const ServerCase& one, std::ostream* out) {
  *out << one.name;
}

class PhotoServerName : public testing::TestWithParam<ServerCase> {};

TEST_P(PhotoServerName, IsTheServerFieldThatNamesAJuniva) {
  EXPECT_EQ(photoServerName(GetParam().result), GetParam().server);
}

platform::HttpResult served(const std::string& field, const std::string& value, int status = 200) {
  return FakeHttpClient::status(status, {{"Date", "today"}, {field, value}});
}

INSTANTIATE_TEST_SUITE_P(
    All, PhotoServerName,
    testing::Values(
        ServerCase{"Usual", served("Server", "lumo-juniva"), "lumo-juniva"},
        ServerCase{"Version", served("Server", "Lumo-Juniva/2.1"), "Lumo-Juniva/2.1"},
        ServerCase{"Capitals", served("Server", "LUMO-JUNIVA"), "LUMO-JUNIVA"},
        ServerCase{"Within", served("Server", "proxy (Lumo-Juniva 3) x"), "proxy (Lumo-Juniva 3) x"},
        ServerCase{"SmallFieldName", served("server", "Lumo-Juniva/2.1"), "Lumo-Juniva/2.1"},
        ServerCase{"OddFieldName", served("sErVeR", "Lumo-Juniva/2.1"), "Lumo-Juniva/2.1"},
        ServerCase{"NotFound", served("Server", "Lumo-Juniva/2.1", 404), "Lumo-Juniva/2.1"},
        ServerCase{"Failing", served("Server", "Lumo-Juniva/2.1", 500), "Lumo-Juniva/2.1"},
        ServerCase{"NotUsAscii", served("Server", "Lumo-Juniva M\u00fcller"), "Lumo-Juniva M\u00fcller"},
        ServerCase{"Other", served("Server", "nginx"), std::nullopt},
        ServerCase{"Parted", served("Server", "lumo juniva"), std::nullopt},
        ServerCase{"Empty", served("Server", ""), std::nullopt},
        ServerCase{"OtherField", served("X-Server", "lumo-juniva"), std::nullopt},
        ServerCase{"NoFields", FakeHttpClient::status(200), std::nullopt},
        ServerCase{"Refused", FakeHttpClient::error("Connection refused"), std::nullopt},
        ServerCase{"ErrorWithHeader", {"cut off", 200, {{"Server", "lumo-juniva"}}}, std::nullopt},
        ServerCase{"NoHttp", {std::nullopt, 0, {{"Server", "lumo-juniva"}}}, std::nullopt}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(AnswerRecord, HasTheNameOfAServerOnly) {
  EXPECT_EQ(answerRecord("Lumo-Juniva/2.1"),
            (Dictionary{{"status", "NSStatusAvailable"}, {"server", "Lumo-Juniva/2.1"}}));
  EXPECT_EQ(answerRecord(std::nullopt), (Dictionary{{"status", "NSStatusUnavailable"}}));
}

TEST(FoundServers, AreTheAvailableOnesInOrderOfTheirAddress) {
  Answers answers;
  for (const char* address : {"10.0.1.100", "10.0.1.20", "10.0.1.3", "localhost", "10.0.1.12"}) {
    answers[address] = answerRecord("lumo-juniva at " + std::string(address));
  }
  answers["10.0.1.4"] = answerRecord(std::nullopt);
  answers["10.0.1.5"] = Dictionary{{"status", "nsstatusAVAILABLE"}};
  answers["10.0.1.6"] = Dictionary{{"server", "lumo-juniva"}};
  std::vector<std::string> addresses;
  for (const auto& server : foundServers(answers, "9090")) {
    addresses.push_back(*server.as<Dictionary>()->find("ipaddress")->as<std::string>());
  }
  EXPECT_THAT(addresses,
              ElementsAre("10.0.1.3", "10.0.1.5", "10.0.1.12", "10.0.1.20", "10.0.1.100", "localhost"));
}

TEST(FoundServers, AreRecordsOfFourEntries) {
  Answers answers;
  answers["10.0.1.20"] = answerRecord("Lumo-Juniva/2.1");
  EXPECT_EQ(foundServers(answers, "9090"), (Array{Dictionary{{"status", "NSStatusAvailable"},
                                                             {"server", "Lumo-Juniva/2.1"},
                                                             {"urlstring", "http://10.0.1.20:9090"},
                                                             {"ipaddress", "10.0.1.20"}}}));
  EXPECT_EQ(foundServers({}, "9090"), Array());
}

TEST(AddressOrder, KeepsTextsApartThatAreTheSameNumbers) {
  const AddressOrder less;
  EXPECT_TRUE(less("9.0.0.0", "10.0.0.0"));
  EXPECT_FALSE(less("10.0.0.0", "9.0.0.0"));
  EXPECT_FALSE(less("10.0.0.1", "10.0.0.1"));
  EXPECT_TRUE(less("10.0.0.01", "10.0.0.1"));
  EXPECT_FALSE(less("10.0.0.1", "10.0.0.01"));
  EXPECT_TRUE(less("10.0.0.1", "10.0.0"));
  EXPECT_TRUE(less("10.0.0.1", "10.0.0.x"));
  EXPECT_FALSE(less("10.0.0.99999999999", "10.0.0.1"));
}

TEST(NothingFoundText, DependsOnWhetherThereIsANetwork) {
  const std::string network =
      "\n\n!!  NO Juniva Server Found  !!\n\nPlease make sure juniva server is running your network...";
  const std::string alone = "\n\n!!  Juniva Server is NOT running on this mac !!";
  EXPECT_EQ(nothingFoundText("10.0.1.7", false), network);
  EXPECT_EQ(nothingFoundText("10.0.1.7", true), network);
  EXPECT_EQ(nothingFoundText("localhost", true), network);
  EXPECT_EQ(nothingFoundText("localhost", false), alone);
  EXPECT_EQ(nothingFoundText("LOCALHOST", false), alone);
}

TEST(ChoiceTitle, PutsThisComputerIntoWords) {
  const auto title = [](const char* address, const char* server, const char* local) {
    return choiceTitle({{"ipaddress", address}, {"server", server}}, local);
  };
  EXPECT_EQ(title("10.0.1.20", "Lumo-Juniva/2.1", "10.0.1.7"), "Select [10.0.1.20 - Lumo-Juniva/2.1]");
  EXPECT_EQ(title("10.0.1.7", "Lumo-Juniva/2.1", "10.0.1.7"),
            "Select [localhost (This Computer) - Lumo-Juniva/2.1]");
  // A plain replacement of text.
  EXPECT_EQ(title("10.0.1.12", "Lumo-Juniva/2.1", "10.0.1.1"),
            "Select [localhost (This Computer)2 - Lumo-Juniva/2.1]");
  EXPECT_EQ(title("10.0.1.20", "lumo-juniva on 10.0.1.7", "10.0.1.7"),
            "Select [10.0.1.20 - lumo-juniva on localhost (This Computer)]");
  EXPECT_EQ(title("localhost", "lumo-juniva", "localhost"),
            "Select [localhost (This Computer) - lumo-juniva]");
}

TEST(ChoiceIndex, IsTheTagLess5000In16Bits) {
  EXPECT_EQ(choiceIndex(5000), 0);
  EXPECT_EQ(choiceIndex(5009), 9);
  EXPECT_EQ(choiceIndex(0), -5000);
  EXPECT_EQ(choiceIndex(4999), -1);
  EXPECT_EQ(choiceIndex(5000 + 65536), 0);
  EXPECT_EQ(choiceIndex(5000 + 32768), -32768);
}

TEST(ChosenRecord, IsTheOneAtThePlaceElseTheFirst) {
  const Array servers{"a", "b"};
  EXPECT_EQ(chosenRecord(servers, 0), platform::PropertyList("a"));
  EXPECT_EQ(chosenRecord(servers, 1), platform::PropertyList("b"));
  EXPECT_EQ(chosenRecord(servers, 2), platform::PropertyList("a"));
  EXPECT_EQ(chosenRecord(servers, -1), std::nullopt);
  EXPECT_EQ(chosenRecord({}, 0), std::nullopt);
}

}  // namespace
}  // namespace lumo

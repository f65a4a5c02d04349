#include "discovery/LocalNetwork.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "discovery/FindLumoJunivaServerWindowController.h"
#include "tests/fakes/captured_log.h"
#include "tests/unit/discovery/scripted_network.h"

namespace lumo {
namespace {

using discoverytest::ScriptedNetwork;
using testing::ElementsAre;
using testing::HasSubstr;
using Finder = FindLumoJunivaServerWindowController;

class LocalNetworkTest : public testing::Test {
 protected:
  fakes::CapturedLog log;
  ScriptedNetwork network;
};

TEST_F(LocalNetworkTest, InterfacesAreAskedInTheOrderPrintedAndTheFirstThatAnswersCounts) {
  network.setInterfaces("lo0 en0 en1 en2\n");
  network.setAddress("en1", "10.0.1.7\n");
  network.setAddress("en2", "10.9.9.9\n");
  EXPECT_EQ(Finder::getLocalIPAddress(network.get()), "10.0.1.7");
  EXPECT_THAT(network.asked(), ElementsAre("lo0", "en0", "en1"));
  EXPECT_TRUE(log.contains("getLocalIPAddress => interface[en1] =>[10.0.1.7]"));
  EXPECT_TRUE(log.contains("ifsArray = ("));
  EXPECT_TRUE(log.contains("running command [" + interfaceAddressCommand("en1") + "]"));
  EXPECT_FALSE(log.contains("running command [" + interfaceAddressCommand("en2") + "]"));
}

TEST_F(LocalNetworkTest, TheAddressIsTrimmedBeforeItsPartsAreCounted) {
  network.setInterfaces(" en0 \n");
  network.setAddress("en0", " \t10.0.1.7 \r\n\n");
  EXPECT_EQ(Finder::getLocalIPAddress(network.get()), "10.0.1.7");
  EXPECT_THAT(network.asked(), ElementsAre("en0"));
}

TEST_F(LocalNetworkTest, WithoutAListFourUsualNamesAreAskedInTheirOrder) {
  EXPECT_EQ(Finder::getLocalIPAddress(network.get()), "localhost");
  EXPECT_THAT(network.asked(), ElementsAre("en2", "en0", "en1", "en2"));
  EXPECT_TRUE(log.contains(
      "FindLumoJunivaServerWindowController-getLocalIPAddress => Unable to find valid ipaddress???"));
}

TEST_F(LocalNetworkTest, OutputThatOnlyHasBlanksCountsAsNone) {
  network.setInterfaces("en0 en1");
  network.setAddress("en0", " \n");
  network.setAddress("en1", "10.0.1.8");
  EXPECT_EQ(Finder::getLocalIPAddress(network.get()), "10.0.1.8");
}

TEST_F(LocalNetworkTest, TheListIsSplitAtEverySingleBlank) {
  network.setInterfaces("en0  en1");
  Finder::getLocalIPAddress(network.get());
  EXPECT_THAT(network.asked(), ElementsAre("en0", "", "en1"));
}

struct AddressCase {
  const char* printed;
  const char* address;
};

class DecidingOutput : public testing::TestWithParam<AddressCase> {};

TEST_P(DecidingOutput, IsAnAddressWithFourPartsAndEndsTheSearchInAnyCase) {
  const fakes::CapturedLog log;
  ScriptedNetwork network;
  network.setInterfaces("en0 en1");
  network.setAddress("en0", GetParam().printed);
  network.setAddress("en1", "10.0.1.7");
  EXPECT_EQ(Finder::getLocalIPAddress(network.get()), GetParam().address);
  EXPECT_THAT(network.asked(), ElementsAre("en0"));
  const bool odd = std::string(GetParam().address) == "localhost";
  EXPECT_EQ(log.contains("FindLumoJunivaServerWindowController-getLocalIPAddress => got back odd info: [" +
                         std::string(GetParam().printed) + "]"),
            odd);
  EXPECT_EQ(
      log.contains(
          "FindLumoJunivaServerWindowController-getLocalIPAddress => Unable to find valid ipaddress???"),
      odd);
}

INSTANTIATE_TEST_SUITE_P(All, DecidingOutput,
                         testing::Values(AddressCase{"10.0.1.7", "10.0.1.7"},
                                         AddressCase{"a.b.c.d", "a.b.c.d"}, AddressCase{"...", "..."},
                                         AddressCase{"fe80::1", "localhost"},
                                         AddressCase{"10.0.1", "localhost"},
                                         AddressCase{"10.0.1.7.8", "localhost"},
                                         AddressCase{"unknown", "localhost"}));

TEST_F(LocalNetworkTest, TheWifiNameIsTrimmedAndOneOfBlanksIsNone) {
  EXPECT_EQ(Finder::getWifiName(network.get()), std::nullopt);
  network.ssid = "";
  EXPECT_EQ(Finder::getWifiName(network.get()), std::nullopt);
  network.ssid = " \t\n ";
  EXPECT_EQ(Finder::getWifiName(network.get()), std::nullopt);
  network.ssid = " Shop Floor\n";
  EXPECT_EQ(Finder::getWifiName(network.get()), "Shop Floor");
}

TEST_F(LocalNetworkTest, TheSummaryNeedsAnAddressAndAWifiName) {
  const std::string none = "NOT connected to any network - will use localhost";
  EXPECT_EQ(networkSummary("10.0.1.7", "Shop"), "This Computer Network Info: 10.0.1.7 at SSID Shop");
  EXPECT_EQ(networkSummary("localhost", "Shop"), "This Computer Network Info: localhost at SSID Shop");
  EXPECT_EQ(networkSummary("10.0.1.7", std::nullopt), none);
  EXPECT_EQ(networkSummary("10.0.1.7", ""), none);
  EXPECT_EQ(networkSummary("UNKNOWN", "Shop"), none);
  EXPECT_EQ(networkSummary("unknown", "Shop"), none);
  EXPECT_EQ(networkSummary(std::nullopt, "Shop"), none);
  EXPECT_EQ(networkSummary(std::nullopt, std::nullopt), none);
}

TEST_F(LocalNetworkTest, ANameInACommandStaysOneWordOfTheShells) {
  EXPECT_THAT(interfaceAddressCommand("wlp2s0"), HasSubstr("dev 'wlp2s0' "));
  EXPECT_THAT(interfaceAddressCommand("$(reboot)"), HasSubstr("dev '$(reboot)' "));
  EXPECT_THAT(interfaceAddressCommand("a';b"), HasSubstr("dev 'a'\\'';b' "));
}

TEST_F(LocalNetworkTest, ACommandGivesItsOutputAsItIs) {
  const LocalNetwork real = networkOfThisComputer();
  EXPECT_EQ(real.outputOfShellCommand("printf ' one two\\n\\n'"), " one two\n\n");
  EXPECT_TRUE(log.contains("returning output =  one two"));
  log.clear();
  EXPECT_EQ(real.outputOfShellCommand("printf x; exit 3"), "x");
  log.clear();
  EXPECT_EQ(real.outputOfShellCommand("true"), std::nullopt);
  EXPECT_EQ(real.outputOfShellCommand("printf '\\377'"), std::nullopt);
  EXPECT_EQ(real.outputOfShellCommand("/no/such/tool 2>&-"), std::nullopt);
  EXPECT_TRUE(log.lines().empty());
}

const std::string kTitles =
    "Iface\tDestination\tGateway \tFlags\tRefCnt\tUse\tMetric\tMask\t\tMTU\tWindow\tIRTT\n";

std::string route(const std::string& interface, const std::string& destination, const std::string& flags,
                  int metric, const std::string& mask) {
  return interface + "\t" + destination + "\t010200C0\t" + flags + "\t0\t0\t" + std::to_string(metric) +
         "\t" + mask + "\t0\t0\t0\n";
}

TEST_F(LocalNetworkTest, TheDefaultRouteIsTheOneWithTheLowestMetric) {
  const std::string wired = route("eth0", "00000000", "0003", 100, "00000000");
  const std::string wireless = route("wlan0", "00000000", "0003", 50, "00000000");
  const std::string subnet = route("eth1", "000200C0", "0001", 0, "00FFFFFF");
  const std::string half = route("tun0", "00000000", "0003", 0, "00000080");
  const std::string down = route("eth2", "00000000", "0002", 0, "00000000");
  const std::string unreachable = route("lo", "00000000", "0201", 0, "00000000");
  EXPECT_EQ(defaultRouteInterface(kTitles + subnet + wired + wireless), "wlan0");
  EXPECT_EQ(defaultRouteInterface(kTitles + half + down + unreachable + wired), "eth0");
  EXPECT_EQ(defaultRouteInterface(kTitles + wired + route("eth9", "00000000", "0003", 100, "00000000")),
            "eth0");
  EXPECT_EQ(defaultRouteInterface(kTitles + subnet), std::nullopt);
  EXPECT_EQ(defaultRouteInterface(kTitles), std::nullopt);
  EXPECT_EQ(defaultRouteInterface(""), std::nullopt);
  EXPECT_EQ(defaultRouteInterface("\n\xff\xfe garbage\neth0 00000000\n"), std::nullopt);
}

TEST_F(LocalNetworkTest, TheMainInterfaceIsEn0AndElseTheDefaultRoutes) {
  const std::string routes = kTitles + route("eth0", "00000000", "0003", 0, "00000000");
  EXPECT_EQ(mainInterface({"lo", "en0", "eth0"}, routes), "en0");
  EXPECT_EQ(mainInterface({"lo", "en00", "eth0"}, routes), "eth0");
  EXPECT_EQ(mainInterface({"lo", "eth0"}, kTitles), "en0");
  EXPECT_EQ(mainInterface({}, ""), "en0");
}

}  // namespace
}  // namespace lumo

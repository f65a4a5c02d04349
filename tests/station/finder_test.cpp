#include <algorithm>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "station/private_network.h"
#include "station/station.h"

// The search for photo servers, as an operator sees it, in networks that the tests make.

namespace station {

using platform::Dictionary;
using platform::PropertyList;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::Pair;

namespace {

constexpr const char* kSettings = "Settings";
constexpr const char* kSearchButton = "Search for Servers…";
constexpr const char* kFinder = "Find a photo server";
constexpr const char* kScanButton = "Scan for Juniva Server(s)...";
constexpr const char* kNoneFound =
    "\n\n!!  NO Juniva Server Found  !!\n\nPlease make sure juniva server is running your network...";
constexpr const char* kOrders = "/registrationorders";
constexpr int kPort = 9090;
// What is behind the status line.
constexpr Colour kPaper{239, 237, 234};
// What one search takes at most: each probe has its five seconds.
constexpr std::chrono::milliseconds kLongestScan{8000};

std::string address(int last) {
  return "10.0.1." + std::to_string(last);
}

std::string choice(const std::string& place) {
  return "Select [" + place + " - Lumo-Juniva/2.1]";
}

Dictionary record(const std::string& address) {
  return {{"status", "NSStatusAvailable"},
          {"server", "Lumo-Juniva/2.1"},
          {"urlstring", "http://" + address + ":9090"},
          {"ipaddress", address}};
}

// Whether these are the others' addresses of the network. The first one, .0, may be among them: some kernels
// take it for everybody's, as they all do with the last.
bool areAllNeighbours(const std::set<std::string>& addresses) {
  std::set<std::string> expected;
  for (int last = 1; last <= 254; ++last) {
    expected.insert(address(last));
  }
  expected.erase(PrivateNetwork::kCounter);
  std::set<std::string> found = addresses;
  found.erase(address(0));
  return found == expected;
}

std::set<std::string> targets(const std::set<std::pair<std::string, int>>& connections) {
  std::set<std::string> found;
  for (const auto& [target, port] : connections) {
    found.insert(target);
  }
  return found;
}

}  // namespace

// Screen and session stay on the machine's own network, where X servers know of each other; one elsewhere
// would take another's display. Only the kiosk is at the counter.
class ServerFinderTest : protected OnPrivateNetwork, public StationTest {
 protected:
  void SetUp() override {
    StationTest::SetUp();
    network.inCounter([this] { home = std::make_unique<TestServer>(); });
    home->set("/home", HttpAnswer{page(kRed)});
    station.prefer("prefServerAddress", home->url("/home"));
  }

  // A photo server at this address of the shop's, whose page of orders is green.
  TestServer& serveAt(int last) {
    network.addShopAddress(address(last));
    network.inShop([this, last] { servers.push_back(std::make_unique<TestServer>(address(last), kPort)); });
    return begin(*servers.back());
  }
  // One on this computer.
  TestServer& serveHere() {
    network.inCounter([this] { servers.push_back(std::make_unique<TestServer>("0.0.0.0", kPort)); });
    return begin(*servers.back());
  }

  void startKiosk() {
    station.startWith(network.atCounter(LUMO_KIOSK));
    ASSERT_TRUE(station.shows(kRed)) << "the home page does not show: " << station.sight();
  }

  std::optional<Accessible> finder() { return station.control("dialog", kFinder); }
  // Opens the finder from the settings and waits until it knows the network.
  void openFinder(const std::string& itsAddress = PrivateNetwork::kCounter) {
    ASSERT_NO_FATAL_FAILURE(startKiosk());
    ASSERT_TRUE(station.press(kSettings));
    ASSERT_TRUE(station.press(kSearchButton)) << description(*station.controls());
    ASSERT_TRUE(waitUntil([this] { return finder().has_value(); }));
    // A search anywhere but in the test's network must not begin.
    const std::string known = itsAddress == "localhost" ? "Unable to find valid ipaddress???"
                                                        : "interface[counter0] =>[" + itsAddress + "]";
    ASSERT_TRUE(station.logs(known));
  }
  void beginScan() {
    ASSERT_TRUE(station.press(kScanButton));
    ASSERT_TRUE(station.logs("start...\n"));
  }
  // The finder's buttons that a person can press.
  std::vector<std::string> buttons() {
    std::vector<std::string> names;
    if (const auto sheet = finder()) {
      sheet->walk([&names](const Accessible& item, int) {
        if (item.role() == "button" && item.isSensitive()) {
          names.push_back(item.name());
        }
      });
    }
    return names;
  }
  std::vector<std::string> choices() {
    std::vector<std::string> names = buttons();
    std::erase_if(names, [](const std::string& name) { return !name.starts_with("Select ["); });
    return names;
  }
  // Waits until these are the choices; they come one after the other.
  void expectChoices(const std::vector<std::string>& expected) {
    waitUntil([&] { return choices() == expected; });
    EXPECT_THAT(choices(), ElementsAreArray(expected));
  }
  // Waits until the finder shows this text, and there is nothing to choose.
  void expectNone(const std::string& text) {
    EXPECT_TRUE(waitUntil([&] {
      bool found = false;
      if (const auto sheet = finder()) {
        sheet->walk([&](const Accessible& item, int) {
          found = found || item.name() == text || item.text() == text;
        });
      }
      return found;
    })) << description(*station.controls());
    EXPECT_THAT(choices(), IsEmpty());
  }
  // Searches and waits for the end, which enables the button again.
  void scan() {
    beginScan();
    const auto start = std::chrono::steady_clock::now();
    ASSERT_TRUE(station.logs("total time = "));
    EXPECT_LT(std::chrono::steady_clock::now() - start, kLongestScan);
    ASSERT_TRUE(waitUntil([this] {
      const auto now = buttons();
      return std::find(now.begin(), now.end(), kScanButton) != now.end();
    }));
  }
  // Whether the sheet is away and has ended with this code.
  bool endsWith(int code) {
    return station.logs("ibSearchJunivaServer:...response = " + std::to_string(code)) &&
           waitUntil([this] { return !finder(); });
  }
  bool isPreferred(const std::string& url) {
    return waitUntil([&] { return station.storedText("prefServerAddress") == url; });
  }
  // All that the kiosk sent went through the cable to the shop, to the search's port, and nowhere else.
  void expectNothingLeft() {
    EXPECT_TRUE(waitUntil([this] {
      const auto packets = network.packets();
      return packets.at("counter: counter0").sent == packets.at("shop: shop0").received;
    }));
    const auto packets = network.packets();
    std::set<std::string> links;
    for (const auto& [link, counts] : packets) {
      links.insert(link);
    }
    EXPECT_THAT(links, ElementsAre("counter: counter0", "counter: lo", "shop: lo", "shop: shop0"));
    EXPECT_THAT(network.waysOut(), IsEmpty());
    const auto traffic = network.traffic();
    EXPECT_THAT(traffic.other, IsEmpty());
    for (const auto& [target, port] : traffic.connected) {
      EXPECT_TRUE(target.starts_with("10.0.1.")) << target;
      EXPECT_EQ(port, kPort) << target;
    }
    for (const std::string& target : traffic.sought) {
      EXPECT_TRUE(target.starts_with("10.0.1.")) << target;
    }
  }

  std::unique_ptr<TestServer> home;
  std::vector<std::unique_ptr<TestServer>> servers;

 private:
  static TestServer& begin(TestServer& server) {
    server.set("/", HttpAnswer{"", {{"Server", "Lumo-Juniva/2.1"}}});
    server.set(kOrders, HttpAnswer{page(kGreen), {{"Server", "Lumo-Juniva/2.1"}}});
    return server;
  }
};

TEST_F(ServerFinderTest, FindsThreeServersAmongSilentAddressesAndTakesTheOneThatIsPressed) {
  TestServer& first = serveAt(20);
  TestServer& second = serveAt(133);
  TestServer& third = serveAt(60);
  openFinder();
  scan();
  expectChoices({choice(address(20)), choice(address(60)), choice(address(133))});
  for (TestServer* server : {&first, &second, &third}) {
    EXPECT_EQ(server->count(""), 1);
    EXPECT_EQ(server->requests()[0].method, "GET");
    EXPECT_EQ(server->requests()[0].target, "/");
  }
  // Everybody else was called for, by the kernel, which had no answer.
  EXPECT_TRUE(areAllNeighbours(network.traffic().sought));
  EXPECT_THAT(network.traffic().connected,
              ElementsAre(Pair(address(133), kPort), Pair(address(20), kPort), Pair(address(60), kPort)));
  expectNothingLeft();

  ASSERT_TRUE(station.press(choice(address(133))));
  EXPECT_TRUE(endsWith(1));
  EXPECT_TRUE(isPreferred("http://10.0.1.133:9090/registrationorders"));
  EXPECT_EQ(station.stored("prefSelectedJunivaServerInfo"), PropertyList(record(address(133))));
  expectNothingLeft();
}

TEST_F(ServerFinderTest, FindsThreeServersWhereAllOtherAddressesRefuse) {
  serveAt(20);
  serveAt(133);
  serveAt(60);
  network.refuseElsewhere();
  openFinder();
  scan();
  expectChoices({choice(address(20)), choice(address(60)), choice(address(133))});
  EXPECT_TRUE(areAllNeighbours(targets(network.traffic().connected)));
  expectNothingLeft();
}

TEST_F(ServerFinderTest, SaysThatThereIsNoneAndCanSearchAgain) {
  network.refuseElsewhere();
  openFinder();
  scan();
  expectNone(kNoneFound);
  expectNothingLeft();

  // Somebody starts the server.
  serveAt(44);
  ASSERT_TRUE(station.press(kScanButton));
  expectChoices({choice(address(44))});
  const auto close = finder()->find("button", "Close");
  ASSERT_TRUE(close);
  ASSERT_TRUE(close->press());
  EXPECT_TRUE(endsWith(0));
  EXPECT_EQ(station.storedText("prefServerAddress"), home->url("/home"));
  EXPECT_EQ(station.stored("prefSelectedJunivaServerInfo"), std::nullopt);
}

TEST_F(ServerFinderTest, OffersTenOfTwelveServers) {
  std::vector<std::string> offered;
  for (int last = 101; last <= 112; ++last) {
    serveAt(last);
    if (offered.size() < 10) {
      offered.push_back(choice(address(last)));
    }
  }
  network.refuseElsewhere();
  openFinder();
  scan();
  expectChoices(offered);
  for (const auto& server : servers) {
    EXPECT_EQ(server->count("/"), 1);
  }
  ASSERT_TRUE(station.press(choice(address(110))));
  EXPECT_TRUE(endsWith(1));
  EXPECT_TRUE(isPreferred("http://10.0.1.110:9090/registrationorders"));
  expectNothingLeft();
}

TEST_F(ServerFinderTest, ShowsAServerOnThisComputerAsLocalhostStoresItsNumbersAndLoadsItFromLocalhost) {
  TestServer& own = serveHere();
  serveAt(133);
  network.refuseElsewhere();
  openFinder();
  scan();
  expectChoices({choice("localhost (This Computer)"), choice(address(133))});
  ASSERT_TRUE(station.press(choice("localhost (This Computer)")));
  EXPECT_TRUE(endsWith(1));
  EXPECT_TRUE(isPreferred("http://localhost:9090/registrationorders"));
  EXPECT_EQ(station.stored("prefSelectedJunivaServerInfo"), PropertyList(record(PrivateNetwork::kCounter)));

  const auto close = station.control("dialog", kSettings)->find("button", "Close");
  ASSERT_TRUE(close);
  ASSERT_TRUE(close->press());
  ASSERT_TRUE(station.press("Home"));
  EXPECT_TRUE(station.shows(kGreen));
  const auto loads = own.requests(kOrders);
  ASSERT_THAT(loads, Not(IsEmpty()));
  EXPECT_EQ(loads.back().header("Host"), "localhost:9090");
  expectNothingLeft();
}

TEST_F(ServerFinderTest, AsksThisComputerAloneWithoutANetwork) {
  serveAt(20);
  network.changeCounter("address del 10.0.1.7/24 dev counter0");
  openFinder("localhost");
  scan();
  expectNone("\n\n!!  Juniva Server is NOT running on this mac !!");
  TestServer& own = serveHere();
  ASSERT_TRUE(station.press(kScanButton));
  expectChoices({choice("localhost (This Computer)")});
  EXPECT_EQ(own.count("/"), 1);
  EXPECT_THAT(network.traffic().sought, IsEmpty());
  EXPECT_THAT(network.traffic().connected, IsEmpty());
}

TEST_F(ServerFinderTest, SearchesTheNetworkOfTheFirstAddressOfTheFirstInterfaceThatIsConnected) {
  // Listed before the interface with the cable: one that is off, one whose cable is out, one without an
  // address.
  network.changeCounter("link add name off0 index 10 type veth peer name off1");
  network.changeCounter("address add 10.0.8.1/24 dev off0");
  network.changeCounter("link add name out0 index 11 type veth peer name out1");
  network.changeCounter("address add 10.0.9.1/24 dev out0");
  network.changeCounter("link set out0 up");
  network.changeCounter("link add name bare0 index 12 type veth peer name bare1");
  network.changeCounter("link set bare1 up");
  network.changeCounter("link set bare0 up");
  network.changeCounter("address add 10.0.1.8/24 dev counter0");
  openFinder();
  EXPECT_THAT(station.log(), AllOf(HasSubstr("running command [/sbin/ip -4 address show dev 'off0' up"),
                                   HasSubstr("running command [/sbin/ip -4 address show dev 'out0' up"),
                                   HasSubstr("running command [/sbin/ip -4 address show dev 'bare0' up"),
                                   HasSubstr("getLocalIPAddress => interface[counter0] =>[10.0.1.7]")));
  EXPECT_THAT(station.log(), Not(HasSubstr("@if")));
}

TEST_F(ServerFinderTest, GivesProbesThatAreTakenAndNeverAnsweredTheirFiveSeconds) {
  network.refuseElsewhere();
  network.inShop([this] { servers.push_back(std::make_unique<TestServer>("0.0.0.0", kPort)); });
  servers.back()->setSilent("/");
  openFinder();
  scan();
  expectNone(kNoneFound);
  EXPECT_TRUE(areAllNeighbours(targets(network.traffic().connected)));
  expectNothingLeft();
}

TEST_F(ServerFinderTest, TheWindowAnswersAndDrawsThroughoutASearch) {
  serveAt(20);
  openFinder();
  const auto sheet = finder()->extents();
  const Area frame = station.screen().frame(station.window());
  const Area card{frame.x + sheet.x, frame.y + sheet.y, sheet.width, sheet.height};
  ASSERT_GT(card.width, 0);
  beginScan();
  std::chrono::microseconds longest{};
  int answers = 0;
  int changes = 0;
  int picture = 0;
  const bool ended = waitUntil([&] {
    const auto taken = station.answersAfter();
    longest = std::max(longest, taken.value_or(kPatience));
    ++answers;
    const int now = station.screen().otherThan(kPaper, card);
    changes += std::exchange(picture, now) == now ? 0 : 1;
    return station.log().find("total time = ") != std::string::npos;
  });
  EXPECT_TRUE(ended);
  EXPECT_LT(longest, std::chrono::milliseconds(50));
  EXPECT_GT(answers, 20);
  EXPECT_GT(changes, 10);
}

TEST_F(ServerFinderTest, ClosingInTheMiddleOfAScanEndsItAndLeavesTheKioskAlone) {
  openFinder();
  beginScan();
  const auto close = finder()->find("button", "Close");
  ASSERT_TRUE(close);
  ASSERT_TRUE(close->press());
  EXPECT_TRUE(endsWith(0));
  const auto settings = station.control("dialog", kSettings)->find("button", "Close");
  ASSERT_TRUE(settings);
  ASSERT_TRUE(settings->press());
  ASSERT_TRUE(station.press("Home"));
  EXPECT_TRUE(waitUntil([this] { return home->count("/home") == 2; }));
  EXPECT_EQ(station.stop(), "exit status 0");
  expectNothingLeft();
}

}  // namespace station

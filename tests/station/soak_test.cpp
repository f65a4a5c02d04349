#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <random>
#include <stdexcept>
#include <thread>

#include <gmock/gmock.h>

#include "station/bus_peer.h"
#include "station/listener.h"
#include "station/private_network.h"
#include "station/process_tree.h"
#include "station/station.h"

// Many orders on one counter, with everything that goes wrong in a shop's day.

namespace station {

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr const char* kReleasePath = "/registrationorders/photostationdata";
constexpr const char* kShop = "10.0.1.20";
constexpr int kPort = 9090;
// A port of the shop's that nobody listens on.
constexpr const char* kNobody = "http://10.0.1.20:9091/n=";
constexpr const char* kFailure = "webView:didFailProvisionalNavigation:withError:...error = ";
// A measurement is taken after the last order of each hundred.
constexpr int kHundred = 100;
// It is over when the memory has not become less for so long.
constexpr std::chrono::seconds kQuiet{5};
constexpr std::chrono::seconds kLongestRest{30};
// The engine starts a new process after a kill; it happens early in each hundred, so that each measurement
// finds one that has as many orders behind it.
constexpr int kCrashesUntil = 20;

// What becomes of an order.
enum class Fate {
  Confirmed,
  Cancelled,
  Receipt,
  PrinterAway,
  Refused,
  ServerAway,
  NetworkAway,
  PageCrashes,
  BusAway,
  Count
};
constexpr std::array kNames{
    "confirmed",          "cancelled",        "with a receipt", "without a printer first",
    "nobody there first", "server restarted", "network gone",   "page crashed",
    "bus restarted"};
static_assert(kNames.size() == static_cast<std::size_t>(Fate::Count));

std::string whenLoaded(const std::string& script) {
  return "<script>addEventListener('load', () => {" + script + "})</script>";
}

// The `n` of "?n=…".
std::string numberOf(const HttpRequest& request) {
  const auto at = request.target.find("n=");
  return at == std::string::npos ? "" : request.target.substr(at + 2);
}

// Asks the kiosk's main loop over and over how long it takes to answer; a thread of its own.
class StallWatch {
 public:
  explicit StallWatch(std::string bus) : bus_(std::move(bus)), thread_([this] { watch(); }) {}
  ~StallWatch() {
    ended_ = true;
    thread_.join();
  }
  milliseconds longest() const { return milliseconds(longest_); }
  int questions() const { return questions_; }

 private:
  void watch() {
    while (!ended_) {
      try {
        BusPeer peer(bus_);
        while (!ended_ && peer.kioskProcess() != 0 && ask(peer)) {
        }
      } catch (const std::runtime_error&) {
        // The bus is away; it comes back.
      }
      std::this_thread::yield();
    }
  }
  // The properties of an interface are told by the main loop, and asking for them has no effect.
  bool ask(BusPeer& peer) {
    const auto asked = Clock::now();
    const auto answer = peer.answer(peer.sendToKiosk("org.freedesktop.DBus.Properties", "GetAll",
                                                     g_variant_new("(s)", "org.freedesktop.Application")));
    if (!answer || !answer->empty()) {
      return false;
    }
    const auto took = std::chrono::duration_cast<milliseconds>(Clock::now() - asked).count();
    longest_ = std::max<long>(longest_, took);
    ++questions_;
    // Twenty questions a second are enough to meet a stall that a person would notice.
    waitUntil([this] { return ended_.load(); }, milliseconds(50));
    return true;
  }

  std::string bus_;
  std::atomic<bool> ended_{false};
  std::atomic<long> longest_{0};
  std::atomic<int> questions_{0};
  std::thread thread_;
};

}  // namespace

// The kiosk stands at the counter's end of a cable, the photo server at the other.
class SoakTest : protected OnPrivateNetwork, public StationTest {
 protected:
  // LUMO_ORDERS has the number of a long run.
  static int orders() {
    const char* wanted = std::getenv("LUMO_ORDERS");
    const int number = wanted == nullptr ? 0 : std::atoi(wanted);
    return number > 0 ? number : static_cast<int>(Fate::Count);
  }

  void SetUp() override {
    StationTest::SetUp();
    network.addShopAddress(kShop);
    network.inShop([this] { photoServer = std::make_unique<TestServer>(kShop, kPort); });
    TestServer& server = *photoServer;
    server.set("/home", HttpAnswer{page(kRed)});
    station.prefer("prefServerAddress", server.url("/home"));
    const auto leadTo = [](const std::string& path) {
      return [path](const HttpRequest& request) {
        return HttpAnswer{
            page(kBlue, whenLoaded("location.href = '" + path + "?n=" + numberOf(request) + "'"))};
      };
    };
    server.set("/order", leadTo("/details"));
    server.set("/details", [](const HttpRequest& request) {
      return HttpAnswer{page(kBlue, "<form id=f method=post action='/review?n=" + numberOf(request) +
                                        "'><input id=customer-name name=name value=Clara></form>" +
                                        whenLoaded("document.getElementById('f').submit()"))};
    });
    server.set("/review", leadTo("/confirmation"));
    server.set("/confirmation", HttpAnswer{page(kGreen)});
    server.set("/begun", leadTo("/landing"));
    server.set("/landing", HttpAnswer{page(kGreen)});
    server.set("/receipt", [](const HttpRequest& request) {
      return HttpAnswer{page({255, 255, 255}, "Order " + numberOf(request)),
                        {{"Glimmerpad-Plus-Print", "Receipt"}, {"Scan-Return", "landing"}}};
    });
    server.set("/finish", leadTo(kReleasePath));
    server.set(kReleasePath, [](const HttpRequest& request) {
      return HttpAnswer{"", {{"lumo-reg-code", numberOf(request)}}};
    });
    installScript();
    listen();
  }

  // In the place of the shipped one: prints to a file while there is a printer.
  void installScript() {
    const fs::path script = station.folder() / "home/Desktop/printtocups2.sh";
    fs::create_directories(script.parent_path());
    std::ofstream(script) << "#!/bin/sh\nif [ -e " << noPrinter() << " ]; then echo away >>" << missed()
                          << "; echo no-printers-available; exit; fi\n"
                          << "[ -s \"$1\" ] && echo printed >>" << paper() << "\n";
    fs::permissions(script, fs::perms::owner_all);
  }
  fs::path noPrinter() const { return station.folder() / "no-printer"; }
  fs::path paper() const { return station.folder() / "paper"; }
  fs::path missed() const { return station.folder() / "missed"; }
  static int linesOf(const fs::path& file) {
    std::ifstream in(file);
    return static_cast<int>(std::count(std::istreambuf_iterator<char>(in), {}, '\n'));
  }
  int printed() const { return linesOf(paper()); }

  void startAtTheCounter() {
    station.startWith(network.atCounter(LUMO_KIOSK));
    ASSERT_TRUE(station.shows(kRed)) << "the home page does not show: " << station.sight();
  }
  void listen() { listener = std::make_unique<Listener>(station.busAddress()); }
  // Messages of a bus that ended are with those of the next one.
  void keepWhatWasHeard() {
    const auto& heard = listener->heard();
    messages.insert(messages.end(), heard.begin(), heard.end());
  }
  void open(const std::string& address) {
    BusPeer peer(station.busAddress());
    ASSERT_TRUE(peer.seesKiosk());
    ASSERT_EQ(peer.answer(peer.sendOpen({address})), "");
  }
  bool asked(const std::string& path, const std::string& number) {
    return waitUntil([&] {
      const auto requests = photoServer->requests(path);
      return std::any_of(requests.begin(), requests.end(),
                         [&](const HttpRequest& request) { return numberOf(request) == number; });
    });
  }
  void confirm(const std::string& number) {
    ASSERT_NO_FATAL_FAILURE(open(photoServer->url("/order?n=" + number)));
    ASSERT_TRUE(asked("/confirmation", number));
  }
  void expectFailureOf(const std::string& address) {
    ASSERT_NO_FATAL_FAILURE(open(address));
    ASSERT_TRUE(waitUntil([&] {
      const std::string log = wholeLog();
      const auto at = log.find(address);
      return at != std::string::npos && log.find(kFailure, at) != std::string::npos;
    })) << "the failure of "
        << address << " was not told";
  }
  void restartBus() {
    keepWhatWasHeard();
    listener.reset();
    station.stopBus();
    station.startBus();
    listen();
    ASSERT_TRUE(BusPeer(station.busAddress()).seesKiosk());
  }

  void play(Fate fate, const std::string& number) {
    switch (fate) {
      case Fate::Confirmed:
        confirm(number);
        return;
      case Fate::Cancelled:
        open(photoServer->url("/begun?n=" + number));
        ASSERT_TRUE(asked("/landing", number));
        return;
      case Fate::Receipt: {
        const int before = printed();
        const int landings = photoServer->count("/landing");
        open(photoServer->url("/receipt?n=" + number));
        ASSERT_TRUE(waitUntil([&] { return photoServer->count("/landing") > landings; }));
        ASSERT_TRUE(waitUntil([&] { return printed() == before + 1; }));
        return;
      }
      case Fate::PrinterAway: {
        const int before = printed();
        const int landings = photoServer->count("/landing");
        const int misses = linesOf(missed());
        std::ofstream(noPrinter()) << "";
        open(photoServer->url("/receipt?n=" + number));
        ASSERT_TRUE(waitUntil([&] { return linesOf(missed()) > misses; }));
        fs::remove(noPrinter());
        // The first button has the keyboard; accessibility ends with the first bus.
        ASSERT_TRUE(waitUntil([&] {
          if (printed() == before) {
            station.key("Return");
          }
          return printed() == before + 1;
        }));
        ASSERT_GT(photoServer->count("/landing"), landings);
        return;
      }
      case Fate::Refused: {
        ASSERT_NO_FATAL_FAILURE(expectFailureOf(kNobody + number));
        confirm(number);
        return;
      }
      case Fate::ServerAway:
        network.inShop([this] { photoServer->stop(); });
        ASSERT_NO_FATAL_FAILURE(expectFailureOf(photoServer->url("/away?n=" + number)));
        network.inShop([this] { photoServer->start(); });
        confirm(number);
        return;
      case Fate::NetworkAway:
        network.changeCounter("link set counter0 down");
        ASSERT_NO_FATAL_FAILURE(expectFailureOf(photoServer->url("/unreachable?n=" + number)));
        network.changeCounter("link set counter0 up");
        confirm(number);
        return;
      case Fate::PageCrashes:
        ASSERT_GT(killPages(station.kiosk().pid()), 0);
        confirm(number);
        return;
      case Fate::BusAway:
        ASSERT_NO_FATAL_FAILURE(restartBus());
        confirm(number);
        return;
      case Fate::Count:
        break;
    }
    FAIL() << "no such order";
  }
  // What the kiosk holds once its pages have cleared up after `order`, which they do when nobody needs them.
  ProcessTree restAfter(int order) {
    const std::string number = "rest" + std::to_string(order);
    open(photoServer->url("/begun?n=" + number));
    EXPECT_TRUE(asked("/landing", number));
    ProcessTree lowest = measure(station.kiosk().pid());
    const auto start = Clock::now();
    auto since = start;
    while (Clock::now() - since < kQuiet && Clock::now() - start < kLongestRest) {
      waitUntil([] { return false; }, milliseconds(200));
      const ProcessTree now = measure(station.kiosk().pid());
      if (now.memory < lowest.memory) {
        lowest = now;
        since = Clock::now();
      }
    }
    return lowest;
  }
  // The log is rolled meanwhile.
  std::string wholeLog() const {
    std::ifstream in(station.logFile().parent_path() / "LumoBrowser_old.log");
    return std::string((std::istreambuf_iterator<char>(in)), {}) + station.log();
  }

  std::unique_ptr<TestServer> photoServer;
  std::unique_ptr<Listener> listener;
  std::vector<platform::DistributedNotification> messages;
};

TEST_F(SoakTest, OneKioskPlaysEveryKindOfOrderAndHoldsNoMoreForIt) {
  startAtTheCounter();
  ASSERT_FALSE(HasFatalFailure());
  std::mt19937 random(9090);
  std::array<int, kNames.size()> played{};
  std::vector<ProcessTree> measured;
  milliseconds longest{0};
  int questions = 0;
  {
    const StallWatch watch(station.busAddress());
    for (int order = 1; order <= orders(); ++order) {
      // Each kind once, then mostly what customers do.
      int kind = order - 1;
      if (order > static_cast<int>(Fate::Count)) {
        kind = static_cast<int>(random() % 40);
        const bool crashes = kind == static_cast<int>(Fate::PageCrashes);
        if (kind >= static_cast<int>(Fate::Count) || (crashes && order % kHundred >= kCrashesUntil)) {
          kind = static_cast<int>(random() % 3);
        }
      }
      SCOPED_TRACE("order " + std::to_string(order) + ", " + kNames[static_cast<std::size_t>(kind)]);
      ASSERT_NO_FATAL_FAILURE(play(static_cast<Fate>(kind), std::to_string(order)));
      ASSERT_TRUE(station.kiosk().isRunning());
      ++played[static_cast<std::size_t>(kind)];
      if (order % kHundred == 0) {
        measured.push_back(restAfter(order));
        const ProcessTree& now = measured.back();
        std::cout << "[ soak ] " << order << " orders: " << now.memory / 1024 << " MiB, " << now.openFiles
                  << " open files, " << now.threads << " threads\n"
                  << std::flush;
      }
    }
    longest = watch.longest();
    questions = watch.questions();
  }
  EXPECT_EQ(station.stop(), "exit status 0");
  listener->heardToTheEnd();
  keepWhatWasHeard();
  // No order of these ends the kiosk, so the one message is that of its end.
  EXPECT_EQ(messages.size(), 1U);
  for (std::size_t kind = 0; kind < played.size(); ++kind) {
    std::cout << "[ soak ] " << played[kind] << " " << kNames[kind] << "\n";
  }
  std::cout << "[ soak ] longest of " << questions << " answers of the main loop: " << longest.count()
            << " ms\n";
  EXPECT_GT(questions, orders());
  if (measured.size() > 1) {
    const ProcessTree& first = measured.front();
    const ProcessTree& last = measured.back();
    EXPECT_LT(last.memory, first.memory + first.memory / 20) << "KiB; it grows";
    EXPECT_LE(last.openFiles, first.openFiles + 2);
    EXPECT_LE(last.threads, first.threads + 2);
  }
}

TEST_F(SoakTest, OrdersThatEndTheKioskAreEachHeardOnce) {
  const int rounds = std::max(2, orders() / 10);
  for (int round = 1; round <= rounds; ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    ASSERT_NO_FATAL_FAILURE(startAtTheCounter());
    open(photoServer->url("/finish?n=" + std::to_string(round)));
    ASSERT_EQ(station.kiosk().end(), "exit status 0");
    const auto& heard = listener->heardToTheEnd();
    ASSERT_EQ(heard.size(), static_cast<std::size_t>(round));
    EXPECT_THAT(heard.back().userInfo,
                ::testing::Contains(::testing::Pair("LUMO-REG-CODE", std::to_string(round))));
  }
  std::cout << "[ soak ] " << listener->heard().size() << " releases heard of " << rounds << "\n";
}

}  // namespace station

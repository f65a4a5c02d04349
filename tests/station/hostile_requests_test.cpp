#include <algorithm>
#include <atomic>
#include <chrono>
#include <fstream>
#include <thread>

#include <gmock/gmock.h>

#include "station/bus_peer.h"
#include "station/station.h"

// Requests over the bus that no sensible program sends.

namespace station {

using ::testing::HasSubstr;
using ::testing::Not;

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr const char* kApplication = "org.freedesktop.Application";
constexpr const char* kServices = "com.lumo.LumoBrowser.Services";
constexpr const char* kInvalid = "org.freedesktop.DBus.Error.InvalidArgs";
constexpr std::size_t kHuge = std::size_t{10} * 1000 * 1000;
// A person would call the window stuck.
constexpr milliseconds kLongestStall{2000};

GVariant* noData() {
  return g_variant_new_array(G_VARIANT_TYPE("{sv}"), nullptr, 0);
}

GVariant* oneText(const std::string& text) {
  const char* items[] = {text.c_str()};
  return g_variant_new_strv(items, 1);
}

// What the process holds of the machine's memory, in bytes.
std::size_t memoryOf(pid_t process) {
  std::ifstream status("/proc/" + std::to_string(process) + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmRSS:")) {
      return std::stoul(line.substr(6)) * 1024;
    }
  }
  return 0;
}

}  // namespace

class HostileRequestsTest : public StationTest {
 protected:
  void SetUp() override {
    StationTest::SetUp();
    server.set("/next", HttpAnswer{page(kGreen)});
    startAtHome();
    ASSERT_FALSE(HasFatalFailure());
    peer_ = std::make_unique<BusPeer>(station.busAddress());
    ASSERT_TRUE(peer().seesKiosk());
  }
  BusPeer& peer() { return *peer_; }
  // The kiosk goes on as if nothing had been.
  void expectUnharmed() {
    BusPeer other(station.busAddress());
    EXPECT_EQ(other.answer(other.sendOpen({server.url("/next")})), "");
    EXPECT_TRUE(station.shows(kGreen));
    EXPECT_EQ(station.storedText("prefRunningUrlString"), server.url("/next"));
    EXPECT_EQ(station.stop(), "exit status 0");
    EXPECT_EQ(server.count("/next"), 1);
  }
  int linesWith(const std::string& text) const {
    const std::string log = station.log();
    int count = 0;
    for (auto at = log.find(text); at != std::string::npos; at = log.find(text, at + 1)) {
      ++count;
    }
    return count;
  }

 private:
  std::unique_ptr<BusPeer> peer_;
};

TEST_F(HostileRequestsTest, TextsOfTenMegabytesAreRefusedAndNotKept) {
  const std::string huge(kHuge, 'x');
  EXPECT_EQ(peer().answer(peer().sendOpen({"http://" + huge})), kInvalid);
  const std::size_t before = memoryOf(station.kiosk().pid());
  for (int request = 0; request < 5; ++request) {
    EXPECT_EQ(peer().answer(peer().sendOpen({"http://" + huge})), kInvalid);
    EXPECT_EQ(peer().answer(peer().sendToKiosk(
                  kServices, "SearchFromPasteboard",
                  g_variant_new("(@as@asss)", oneText("NSStringPboardType"), oneText(huge), "", ""))),
              kInvalid);
    EXPECT_EQ(peer().answer(peer().sendToKiosk(
                  kServices, "SearchFromPasteboard",
                  g_variant_new("(@as@asss)", oneText("NSStringPboardType"), oneText(""), huge.c_str(), ""))),
              kInvalid);
  }
  // Many times as much has gone by.
  EXPECT_LT(memoryOf(station.kiosk().pid()), before + 2 * kHuge);
  EXPECT_EQ(linesWith("refused: the request is too large"), 16);
  EXPECT_LT(station.log().size(), kHuge / 10);
  expectUnharmed();
}

TEST_F(HostileRequestsTest, TheBusItselfThrowsOutWhoeverSendsWhatIsNoUtf8) {
  peer().sendBrokenOpen(server.url("/next") + "???");
  EXPECT_TRUE(peer().isDropped());
  EXPECT_THAT(station.log(), Not(HasSubstr("application:openURLs:")));
  expectUnharmed();
}

TEST_F(HostileRequestsTest, AnEmptyListIsTakenAndOpensNothing) {
  EXPECT_EQ(peer().answer(peer().sendOpen({})), "");
  EXPECT_TRUE(station.logs("-[AppDelegate application:openURLs:] (\n)"));
  EXPECT_EQ(peer().answer(peer().sendOpen({""})), "");
  EXPECT_EQ(linesWith("will be set with"), 0);
  expectUnharmed();
}

TEST_F(HostileRequestsTest, WrongTypesAndNamesAreRefusedEachWithALine) {
  const std::vector<std::pair<std::uint32_t, const char*>> calls{
      {peer().sendToKiosk(kApplication, "Open", g_variant_new("(s)", "http://h/")), kInvalid},
      {peer().sendToKiosk(kApplication, "Open", nullptr), kInvalid},
      {peer().sendToKiosk(kApplication, "Open", g_variant_new("(asas)", nullptr, nullptr)), kInvalid},
      {peer().sendToKiosk(kServices, "SearchFromPasteboard", g_variant_new("(u)", 1U)), kInvalid},
      {peer().sendToKiosk(kApplication, "ActivateAction",
                          g_variant_new("(s@av@a{sv})", "quit",
                                        g_variant_new_array(G_VARIANT_TYPE_VARIANT, nullptr, 0), noData())),
       kInvalid},
      {peer().sendToKiosk(kApplication, "Close", nullptr), "org.freedesktop.DBus.Error.UnknownMethod"},
  };
  for (const auto& [call, error] : calls) {
    EXPECT_EQ(peer().answer(call), error);
  }
  EXPECT_EQ(linesWith(" refused: "), static_cast<int>(calls.size())) << station.log();
  expectUnharmed();
}

TEST_F(HostileRequestsTest, AThousandCallsAtOnceAreAnsweredAndTheWindowStaysAlive) {
  server.set("/many", HttpAnswer{page(kBlue)});
  const auto button = station.control("button", "Home");
  ASSERT_TRUE(button);
  std::vector<std::uint32_t> calls;
  calls.reserve(1000);
  const auto start = Clock::now();
  for (int number = 0; number < 1000; ++number) {
    calls.push_back(peer().sendOpen({server.url("/many?" + std::to_string(number))}));
  }
  EXPECT_LT(Clock::now() - start, std::chrono::seconds(1));
  // What the window answers while they are worked off: each question waits for the kiosk's main loop.
  milliseconds longest{0};
  int questions = 0;
  std::atomic<bool> answered = false;
  std::thread reader([&] {
    for (const std::uint32_t call : calls) {
      EXPECT_TRUE(peer().answer(call));
    }
    answered = true;
  });
  const std::string last = server.url("/many?999");
  while (!answered || station.log().find("ibGoButtonWK:....sender = [" + last + "]") == std::string::npos) {
    const auto asked = Clock::now();
    if (asked - start > kPatience) {
      ADD_FAILURE() << "the last address is not loaded";
      break;
    }
    EXPECT_EQ(button->name(), "Home");
    longest = std::max(longest, std::chrono::duration_cast<milliseconds>(Clock::now() - asked));
    ++questions;
  }
  reader.join();
  RecordProperty("LongestStallMilliseconds", static_cast<int>(longest.count()));
  std::cout << questions << " questions, the longest answer took " << longest.count() << " ms, all "
            << std::chrono::duration_cast<milliseconds>(Clock::now() - start).count() << " ms\n";
  EXPECT_GT(questions, 3);
  EXPECT_LT(longest, kLongestStall);
  EXPECT_TRUE(station.shows(kBlue));
  EXPECT_EQ(station.storedText("prefRunningUrlString"), last);
  EXPECT_EQ(server.requests("/many").back().target, "/many?999");
  expectUnharmed();
}

}  // namespace station

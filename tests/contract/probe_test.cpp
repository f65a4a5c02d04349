#include <chrono>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "discovery/FindLumoJunivaServerWindowController.h"
#include "platform/linux/linux_http_client.h"
#include "tests/contract/dispatch_harness.h"
#include "tests/contract/http_peer.h"
#include "tests/contract/resident_bytes.h"
#include "tests/fakes/captured_log.h"
#include "tests/fakes/test_platform.h"
#include "tests/unit/discovery/scripted_network.h"

// The probe of the server search against servers that mean it well and ill, over the real client.

namespace {

using namespace std::chrono_literals;

constexpr const char* kServer = "Server: Lumo-Juniva/2.1\r\n";
constexpr std::size_t kMegabyte = std::size_t{1} << 20;

class ProbeTest : public testing::Test {
 protected:
  using Finder = lumo::FindLumoJunivaServerWindowController;

  // The worker that drops the last reference has the main queue end the finder, which nobody serves later.
  void TearDown() override {
    finder.reset();
    EXPECT_TRUE(queues.runUntil(
        [this] { return machine.windows.window("FindLumoJunivaServerWindowController") == nullptr; }));
  }

  // A server at an address of its own, which answers the probe like this.
  void serve(const std::string& name, HttpPeer::Answer answer) {
    HttpPeer& peer = peerFor(name);
    peer.answer("/", std::move(answer));
    peer.start();
  }
  void serve(const std::string& name, const std::string& bytes) {
    serve(name, [bytes](PeerConnection& connection) { connection.send(bytes); });
  }
  // One whose port refuses until it is started.
  HttpPeer& peerFor(const std::string& name) {
    const std::string address = "127.0.1." + std::to_string(peers.size() + 1);
    addresses[name] = address;
    return peers.emplace_back(address);
  }
  // Probes all servers at a time and waits for their answers. Each has its five seconds.
  void probeAll() {
    auto peer = peers.begin();
    for (std::size_t number = 1; number <= peers.size(); ++number, ++peer) {
      finder->doCheckIpAddress_withPort("127.0.1." + std::to_string(number), peer->port());
    }
    const auto start = std::chrono::steady_clock::now();
    ASSERT_TRUE(queues.runUntil([this] {
      const auto answers = finder->fIpListInfo();
      return answers && answers->size() == peers.size();
    })) << "a probe has no end";
    // The bound is far from the five seconds, because the machine may be busy, and far from no end at all.
    EXPECT_LT(std::chrono::steady_clock::now() - start, 20s);
  }
  platform::Dictionary answerOf(const std::string& name) {
    const auto answers = finder->fIpListInfo();
    return answers && answers->contains(addresses.at(name)) ? answers->at(addresses.at(name))
                                                            : platform::Dictionary();
  }

  fakes::CapturedLog log;
  LinuxHarness queues;
  fakes::TestPlatform machine;
  std::list<HttpPeer> peers;
  std::map<std::string, std::string> addresses;
  platform::LinuxHttpClient http;
  platform::Platform platform{
      queues.dispatch(), machine.application,   machine.windows,        machine.bus, http,
      machine.defaults,  machine.notifications, machine.bundle.bundle()};
  discoverytest::ScriptedNetwork network;
  std::shared_ptr<Finder> finder = Finder::make(platform, network.get());
};

const platform::Dictionary kUnavailable{{"status", "NSStatusUnavailable"}};
const platform::Dictionary kAvailable{{"status", "NSStatusAvailable"}, {"server", "Lumo-Juniva/2.1"}};

}  // namespace

TEST_F(ProbeTest, FindsAServerWhateverItsStatusAndBody) {
  serve("usual", std::string("HTTP/1.1 200 OK\r\n") + kServer + "Content-Length: 4\r\n\r\nbody");
  serve("not found", std::string("HTTP/1.1 404 Not Found\r\n") + kServer + "\r\n");
  serve("broken", std::string("HTTP/1.1 500 Internal Server Error\r\n") + kServer + "\r\n");
  serve("old", std::string("HTTP/1.0 200 OK\r\n") + kServer + "\r\nbody");
  serve("small letters", "HTTP/1.1 200 OK\r\nserver: Lumo-Juniva/2.1\r\n\r\n");
  serve("other", "HTTP/1.1 200 OK\r\nServer: nginx\r\n\r\n");
  serve("nameless", "HTTP/1.1 200 OK\r\n\r\n");
  peerFor("refusing");
  probeAll();
  for (const char* name : {"usual", "not found", "broken", "old", "small letters"}) {
    EXPECT_EQ(answerOf(name), kAvailable) << name;
  }
  for (const char* name : {"other", "nameless", "refusing"}) {
    EXPECT_EQ(answerOf(name), kUnavailable) << name;
  }
}

TEST_F(ProbeTest, TakesTheHeaderOfTheFinalAnswer) {
  HttpPeer& gateway = peerFor("gateway");
  gateway.answer("/",
                 "HTTP/1.1 302 Found\r\nServer: nginx\r\nLocation: /orders\r\nContent-Length: 0\r\n\r\n");
  gateway.answer("/orders", std::string("HTTP/1.1 200 OK\r\n") + kServer + "\r\n");
  gateway.start();
  HttpPeer& leaving = peerFor("leaving");
  leaving.answer("/", std::string("HTTP/1.1 302 Found\r\n") + kServer +
                          "Location: /orders\r\nContent-Length: 0\r\n\r\n");
  leaving.answer("/orders", "HTTP/1.1 200 OK\r\nServer: nginx\r\n\r\n");
  leaving.start();
  serve("circling",
        std::string("HTTP/1.1 302 Found\r\n") + kServer + "Location: /\r\nContent-Length: 0\r\n\r\n");
  probeAll();
  EXPECT_EQ(answerOf("gateway"), kAvailable);
  EXPECT_EQ(answerOf("leaving"), kUnavailable);
  EXPECT_EQ(answerOf("circling"), kUnavailable);
}

TEST_F(ProbeTest, TakesGarbageForNoServer) {
  serve("greeting", "220 lumo-juniva ready\r\n");
  serve("zeroes", std::string(100, '\0'));
  // What a TLS server says to a plain request.
  serve("TLS", std::string("\x15\x03\x01\x00\x02\x02\x46", 7));
  serve("nothing", "");
  serve("no colon", std::string("HTTP/1.1 200 OK\r\n") + kServer + "lumo-juniva\r\n\r\n");
  serve("cut off header", std::string("HTTP/1.1 200 OK\r\n") + kServer);
  serve("cut off body", std::string("HTTP/1.1 200 OK\r\n") + kServer + "Content-Length: 100\r\n\r\ncut off");
  serve("no status", std::string("HTTP/1.1\r\n") + kServer + "\r\n");
  probeAll();
  for (const auto& [name, address] : addresses) {
    EXPECT_EQ(answerOf(name), kUnavailable) << name;
  }
}

TEST_F(ProbeTest, EndsOversizedHeadersAtOnceAndKeepsNothingOfThem) {
  serve("long line",
        std::string("HTTP/1.1 200 OK\r\n") + kServer + "X-Long: " + std::string(kMegabyte, 'x') + "\r\n\r\n");
  std::string lines = std::string("HTTP/1.1 200 OK\r\n") + kServer;
  for (int number = 0; lines.size() < kMegabyte; ++number) {
    lines += "X" + std::to_string(number) + ": y\r\n";
  }
  serve("many lines", lines + "\r\n");
  serve("long name", "HTTP/1.1 200 OK\r\nServer: Lumo-Juniva " + std::string(kMegabyte, 'x') + "\r\n\r\n");
  serve("endless", [](PeerConnection& connection) {
    connection.send(std::string("HTTP/1.1 200 OK\r\n") + kServer);
    const std::string line = "X-Fill: " + std::string(1000, 'x') + "\r\n";
    while (connection.send(line)) {
    }
  });
  const std::size_t before = residentBytes();
  const auto start = std::chrono::steady_clock::now();
  probeAll();
  EXPECT_LT(std::chrono::steady_clock::now() - start, 4s);
  EXPECT_LT(residentBytes(), before + kGrowth);
  for (const auto& [name, address] : addresses) {
    EXPECT_EQ(answerOf(name), kUnavailable) << name;
  }
}

TEST_F(ProbeTest, EndsWhatWouldNeverEndAfterFiveSecondsWithoutGrowing) {
  serve("endless body", [](PeerConnection& connection) {
    connection.send(std::string("HTTP/1.1 200 OK\r\n") + kServer + "\r\n");
    const std::string block(64 << 10, 'x');
    while (connection.send(block) && connection.staysFor(1ms)) {
    }
  });
  serve("slow header", [](PeerConnection& connection) {
    connection.send(std::string("HTTP/1.1 200 OK\r\n") + kServer + "X-Slow: ");
    while (connection.staysFor(20ms) && connection.send("x")) {
    }
  });
  serve("slow redirects", [](PeerConnection& connection) {
    if (connection.staysFor(1500ms)) {
      connection.send(std::string("HTTP/1.1 302 Found\r\n") + kServer +
                      "Location: /\r\nContent-Length: 0\r\n\r\n");
    }
  });
  serve("silent", [](PeerConnection& connection) { connection.waitUntilClientGoes(); });
  // A TLS server that waits for the rest of a handshake.
  serve("silent TLS", [](PeerConnection& connection) {
    connection.send(std::string("\x16\x03\x03", 3));
    connection.waitUntilClientGoes();
  });
  // The first exchange of all has the library's own memory made.
  serve("usual", std::string("HTTP/1.1 200 OK\r\n") + kServer + "\r\n");
  const auto start = std::chrono::steady_clock::now();
  const std::size_t before = residentBytes();
  probeAll();
  EXPECT_GE(std::chrono::steady_clock::now() - start, 5s);
  EXPECT_LT(residentBytes(), before + kGrowth);
  EXPECT_EQ(answerOf("usual"), kAvailable);
  for (const char* name : {"endless body", "slow header", "slow redirects", "silent"}) {
    EXPECT_EQ(answerOf(name), kUnavailable) << name;
  }
  EXPECT_EQ(answerOf("silent TLS"), kUnavailable);
}

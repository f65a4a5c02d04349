#include "platform/linux/linux_http_client.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/contract/http_peer.h"
#include "tests/contract/private_bus.h"
#include "tests/contract/resident_bytes.h"

using platform::HeaderFields;
using platform::HttpResult;
using platform::Millis;
using namespace std::chrono_literals;

namespace {

constexpr const char* kNoResult = "the test waited in vain";

class Results {
 public:
  std::function<void(HttpResult)> take() {
    return [this](const HttpResult& result) {
      const std::lock_guard lock(mutex_);
      results_.push_back(result);
      threads_.push_back(std::this_thread::get_id());
      changed_.notify_all();
    };
  }
  bool waitFor(std::size_t count) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, 20s, [&] { return results_.size() >= count; });
  }
  std::vector<HttpResult> all() {
    const std::lock_guard lock(mutex_);
    return results_;
  }
  std::thread::id thread() {
    const std::lock_guard lock(mutex_);
    return threads_.front();
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<HttpResult> results_;
  std::vector<std::thread::id> threads_;
};

class LinuxHttpClientTest : public testing::Test {
 protected:
  HttpResult resultOf(const std::string& url, Millis timeout = 10s) {
    Results results;
    platform::LinuxHttpClient client;
    client.get(url, timeout, results.take());
    return results.waitFor(1) ? results.all().front() : HttpResult{kNoResult, 0, {}};
  }
  // The result of asking a server that sends these bytes.
  HttpResult resultOfBytes(const std::string& bytes, Millis timeout = 10s) {
    HttpPeer peer;
    peer.answer("/", bytes);
    peer.start();
    return resultOf(peer.url("/"), timeout);
  }
  void expectError(const HttpResult& result) {
    ASSERT_TRUE(result.error);
    EXPECT_NE(*result.error, kNoResult);
    EXPECT_NE(*result.error, "");
    EXPECT_EQ(result.statusCode, 0);
    EXPECT_TRUE(result.headers.empty());
  }
};

}  // namespace

TEST_F(LinuxHttpClientTest, GivesFieldsInTheOrderReceivedWithRepeatsJoined) {
  const HttpResult result = resultOfBytes(
      "HTTP/1.1 200 OK\r\nVia: one\r\nServer:Lumo-Juniva/2.1  \r\nvia:\ttwo\r\nX-Folded: begin\r\n  end\r\n"
      "X-Latin: M\xfcller\r\nX-Empty:\r\n\r\nbody");
  EXPECT_EQ(result.error, std::nullopt);
  const HeaderFields fields{{"Via", "one, two"},
                            {"Server", "Lumo-Juniva/2.1"},
                            {"X-Folded", "begin end"},
                            {"X-Latin", "M\uFFFDller"},
                            {"X-Empty", ""}};
  EXPECT_EQ(result.headers, fields);
}

TEST_F(LinuxHttpClientTest, AnswersOnAThreadOfItsOwn) {
  HttpPeer peer;
  peer.answer("/", "HTTP/1.1 200 OK\r\n\r\n");
  peer.start();
  Results results;
  platform::LinuxHttpClient client;
  client.get(peer.url("/"), 10s, results.take());
  ASSERT_TRUE(results.waitFor(1));
  EXPECT_NE(results.thread(), std::this_thread::get_id());
}

TEST_F(LinuxHttpClientTest, FollowsRedirectsToTheFinalAnswersHeader) {
  HttpPeer peer;
  peer.answer("/first",
              "HTTP/1.1 302 Found\r\nServer: gateway\r\nX-First: 1\r\nLocation: /second\r\n"
              "Content-Length: 0\r\n\r\n");
  peer.answer("/second",
              "HTTP/1.1 100 Continue\r\nX-Interim: 1\r\n\r\nHTTP/1.1 404 Not Found\r\nServer: "
              "Lumo-Juniva/2.1\r\nTransfer-Encoding: chunked\r\n\r\n0\r\nX-Trailer: 1\r\n\r\n");
  peer.start();
  const HttpResult result = resultOf(peer.url("/first"));
  EXPECT_EQ(result.error, std::nullopt);
  EXPECT_EQ(result.statusCode, 404);
  const HeaderFields fields{{"Server", "Lumo-Juniva/2.1"}, {"Transfer-Encoding", "chunked"}};
  EXPECT_EQ(result.headers, fields);
}

TEST_F(LinuxHttpClientTest, GivesUpOnEndlessRedirects) {
  HttpPeer peer;
  peer.answer("/", "HTTP/1.1 302 Found\r\nLocation: /\r\nContent-Length: 0\r\n\r\n");
  peer.start();
  expectError(resultOf(peer.url("/")));
  EXPECT_LT(peer.requests(), 100);
}

TEST_F(LinuxHttpClientTest, FollowsNoRedirectToAFile) {
  expectError(
      resultOfBytes("HTTP/1.1 302 Found\r\nLocation: file:///etc/hostname\r\nContent-Length: 0\r\n\r\n"));
}

TEST_F(LinuxHttpClientTest, TakesGarbageForAnError) {
  expectError(resultOfBytes("Glimmerpad ready\r\n\r\n"));
  expectError(resultOfBytes(std::string("\0\xff\0\xff\r\n\r\n", 8)));
  // What a TLS server says to a plain request.
  expectError(resultOfBytes(std::string("\x15\x03\x01\x00\x02\x02\x46", 7)));
  expectError(resultOfBytes(""));
  expectError(resultOfBytes("HTTP/1.1 200 OK\r\nno colon here\r\n\r\n"));
  expectError(resultOfBytes("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\ncut off"));
  EXPECT_EQ(resultOfBytes("HTTP/1.1 200 OK\r\nServer: Lumo-Juniva/2.1\r\n").error,
            "the header of the answer is cut off");
}

TEST_F(LinuxHttpClientTest, TakesAPlainServerBehindHttpsForAnError) {
  HttpPeer peer;
  peer.start();
  const auto start = std::chrono::steady_clock::now();
  expectError(resultOf(peer.url("/", "https"), 20s));
  EXPECT_LT(std::chrono::steady_clock::now() - start, 10s);
}

TEST_F(LinuxHttpClientTest, RefusesOtherAddresses) {
  for (const char* url :
       {"", "10.0.0.5:9090", "ftp://127.0.0.1/", "lumobrowser://x", "http://", "http://a b/",
        "dict://127.0.0.1:1/", "HTTP:/x", "file://elsewhere/etc/hostname", "file:relative"}) {
    SCOPED_TRACE(url);
    expectError(resultOf(url));
  }
  expectError(resultOf(std::string("http://127.0.0.1:1/\0x", 21)));
}

TEST_F(LinuxHttpClientTest, UsesNoProxy) {
  const ScopedEnvironment lower("http_proxy", "http://127.0.0.1:1");
  const ScopedEnvironment all("ALL_PROXY", "http://127.0.0.1:1");
  EXPECT_EQ(resultOfBytes("HTTP/1.1 204 No Content\r\n\r\n").statusCode, 204);
}

TEST_F(LinuxHttpClientTest, EndsASlowHeaderWithItsTime) {
  HttpPeer peer;
  peer.answer("/", [](PeerConnection& connection) {
    connection.send("HTTP/1.1 200 OK\r\nServer: Lumo-Ju");
    connection.waitUntilClientGoes();
  });
  peer.start();
  const auto start = std::chrono::steady_clock::now();
  expectError(resultOf(peer.url("/"), 100ms));
  const auto elapsed = std::chrono::steady_clock::now() - start;
  EXPECT_GE(elapsed, 100ms);
  EXPECT_LT(elapsed, 5s);
}

TEST_F(LinuxHttpClientTest, EndsAnEndlessBodyWithItsTimeAndKeepsNothingOfIt) {
  std::atomic<std::size_t> sent{0};
  HttpPeer peer;
  peer.answer("/", [&sent](PeerConnection& connection) {
    connection.send("HTTP/1.1 200 OK\r\nServer: Lumo-Juniva/2.1\r\n\r\n");
    const std::string block(1 << 20, 'x');
    while (connection.send(block)) {
      sent += block.size();
    }
  });
  peer.start();
  const std::size_t before = residentBytes();
  expectError(resultOf(peer.url("/"), 500ms));
  EXPECT_LT(residentBytes(), before + kGrowth) << sent << " bytes were sent";
}

TEST_F(LinuxHttpClientTest, EndsAnEndlessHeaderWithoutKeepingIt) {
  HttpPeer peer;
  peer.answer("/", [](PeerConnection& connection) {
    connection.send("HTTP/1.1 200 OK\r\nServer: Lumo-Juniva/2.1\r\n");
    const std::string line = "X-Fill: " + std::string(1000, 'x') + "\r\n";
    while (connection.send(line)) {
    }
  });
  peer.start();
  const std::size_t before = residentBytes();
  const HttpResult result = resultOf(peer.url("/"), 20s);
  expectError(result);
  EXPECT_EQ(result.error, "the header of the answer is too large");
  EXPECT_LT(residentBytes(), before + kGrowth);
}

TEST_F(LinuxHttpClientTest, EndsAnOversizedHeader) {
  // One line of a megabyte, then a megabyte of different short lines.
  expectError(resultOfBytes("HTTP/1.1 200 OK\r\nX-Long: " + std::string(1 << 20, 'x') + "\r\n\r\n"));
  std::string lines = "HTTP/1.1 200 OK\r\n";
  for (int number = 0; lines.size() < (1 << 20); ++number) {
    lines += "X" + std::to_string(number) + ": y\r\n";
  }
  expectError(resultOfBytes(lines + "\r\n"));
}

TEST_F(LinuxHttpClientTest, Drives256RequestsAtATime) {
  std::mutex mutex;
  std::condition_variable changed;
  int arrived = 0;
  HttpPeer peer;
  peer.answer("/", [&](PeerConnection& connection) {
    std::unique_lock lock(mutex);
    ++arrived;
    changed.notify_all();
    // None is answered before all are there.
    if (changed.wait_for(lock, 20s, [&] { return arrived == 256; })) {
      lock.unlock();
      connection.send("HTTP/1.1 200 OK\r\nServer: Lumo-Juniva/2.1\r\n\r\n");
    }
  });
  peer.start();
  Results results;
  platform::LinuxHttpClient client;
  for (int request = 0; request < 256; ++request) {
    client.get(peer.url("/"), 20s, results.take());
  }
  ASSERT_TRUE(results.waitFor(256));
  const auto all = results.all();
  EXPECT_EQ(all.size(), 256U);
  EXPECT_TRUE(std::ranges::all_of(all, [](const HttpResult& result) { return result.statusCode == 200; }));
}

TEST_F(LinuxHttpClientTest, TakesRequestsFromManyThreadsAndFromItsOwnCallbacks) {
  HttpPeer peer;
  peer.answer("/", "HTTP/1.1 200 OK\r\n\r\n");
  peer.start();
  Results results;
  platform::LinuxHttpClient client;
  std::vector<std::thread> threads;
  threads.reserve(4);
  for (int thread = 0; thread < 4; ++thread) {
    threads.emplace_back([&] {
      for (int request = 0; request < 8; ++request) {
        client.get(peer.url("/"), 10s, [&](const HttpResult& result) {
          results.take()(result);
          client.get(peer.url("/"), 10s, results.take());
        });
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  ASSERT_TRUE(results.waitFor(64));
  EXPECT_EQ(results.all().size(), 64U);
}

TEST_F(LinuxHttpClientTest, CancelsWhatIsOpenWhenItGoes) {
  std::mutex mutex;
  std::condition_variable changed;
  int arrived = 0;
  HttpPeer peer;
  peer.answer("/", [&](PeerConnection& connection) {
    {
      const std::lock_guard lock(mutex);
      ++arrived;
      changed.notify_all();
    }
    connection.waitUntilClientGoes();
  });
  peer.start();
  Results results;
  {
    platform::LinuxHttpClient client;
    for (int request = 0; request < 10; ++request) {
      client.get(peer.url("/"), 60s, results.take());
    }
    std::unique_lock lock(mutex);
    ASSERT_TRUE(changed.wait_for(lock, 20s, [&] { return arrived == 10; }));
    lock.unlock();
    // Perhaps not started yet when the client goes.
    client.get(peer.url("/"), 60s, results.take());
  }
  const auto all = results.all();
  EXPECT_EQ(all.size(), 11U);
  EXPECT_TRUE(std::ranges::all_of(all, [](const HttpResult& result) { return result.error == "cancelled"; }));
}

TEST_F(LinuxHttpClientTest, TellsWhetherAFileCanBeRead) {
  char name[] = "/tmp/lumo-file-XXXXXX";
  const std::filesystem::path folder = mkdtemp(name);
  std::ofstream(folder / "a b#c.html") << "<p>page</p>";
  const std::string base = "file://" + folder.string();
  for (const std::string& url : {base + "/a%20b%23c.html", base + "/a%20b%23c.html?query#fragment",
                                 "FILE://localhost" + folder.string() + "/a%20b%23c.html"}) {
    const HttpResult result = resultOf(url);
    EXPECT_EQ(result.error, std::nullopt) << url;
    EXPECT_EQ(result.statusCode, 0);
    EXPECT_TRUE(result.headers.empty());
  }
  expectError(resultOf(base + "/missing.html"));
  expectError(resultOf(base));
  expectError(resultOf(base + "/%"));
  expectError(resultOf(base + "/a%00"));
  // Neither of these two would ever be read to its end.
  ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
  EXPECT_EQ(resultOf(base + "/pipe").error, std::nullopt);
  EXPECT_EQ(resultOf("file:///dev/zero").error, std::nullopt);
  std::filesystem::remove_all(folder);
}

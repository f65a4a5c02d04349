#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/contract/web_recorder.h"

// A web view of the engine that covers its window, and a server on the loopback interface. The base of one
// suite for each subject.
class EngineTest : public ToolkitTest<LinuxToolkit> {
 protected:
  void SetUp() override {
    ToolkitTest<LinuxToolkit>::SetUp();
    page("/", "<p>home</p>");
    page("/next", "<p>next</p>");
    delegate.server = peer.url("");
    web = harness.windows().makeWebView(all);
    web->setDelegate(&delegate);
    window->contentView().addSubviewAbove(*web, nullptr);
  }
  void TearDown() override { web.reset(); }

  // Answers `path` with a page and these fields, and counts and keeps the requests.
  void page(const std::string& path, const std::string& body, const std::string& fields = "") {
    peer.answer(path, [this, path, body, fields](PeerConnection& connection) {
      {
        const std::lock_guard lock(mutex);
        headers[path].push_back(connection.header());
      }
      connection.send("HTTP/1.1 200 OK\r\nContent-Type: text/html; charset=utf-8\r\nConnection: close\r\n" +
                      fields + "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body);
    });
  }
  void silentPage(const std::string& path) {
    peer.answer(path, [this, path](PeerConnection& connection) {
      {
        const std::lock_guard lock(mutex);
        headers[path].push_back(connection.header());
      }
      connection.waitUntilClientGoes();
    });
  }
  std::vector<std::string> requestsOf(const std::string& path) {
    const std::lock_guard lock(mutex);
    return headers[path];
  }
  platform::UrlRequest request(const std::string& path) {
    return {*platform::Url::parse(peer.url(path)),
            platform::CachePolicy::UseProtocolCachePolicy,
            platform::Millis{0},
            {}};
  }
  bool heard(const std::string& entry) {
    return harness.runUntil([&] { return delegate.hasHeard(entry); });
  }
  void load(const std::string& path) {
    delegate.heard.clear();
    web->load(request(path));
    ASSERT_TRUE(heard("finish at " + path)) << testing::PrintToString(delegate.heard);
  }
  // Serves the main loop for so long.
  bool letPass(platform::Millis time) {
    bool passed = false;
    harness.dispatch().main().after(time, [&] { passed = true; });
    return harness.runUntil([&] { return passed; });
  }
  // Loads what the server is silent about, and waits until it has been asked once.
  bool reachesServer(const std::string& path, platform::Millis timeout = platform::Millis{0}) {
    platform::UrlRequest asked = request(path);
    asked.timeout = timeout;
    web->load(asked);
    return harness.runUntil([&] { return requestsOf(path).size() == 1; });
  }
  // The value of a script; fails when it does not come.
  std::optional<platform::PropertyList> value(const std::string& script) {
    std::optional<platform::PropertyList> found;
    bool done = false;
    web->evaluateJavaScript(
        script, [&](std::optional<platform::PropertyList> result, std::optional<platform::WebError> error) {
          EXPECT_FALSE(done);
          EXPECT_FALSE(error) << error->localizedDescription;
          found = std::move(result);
          done = true;
        });
    EXPECT_TRUE(harness.runUntil([&] { return done; })) << script;
    return found;
  }
  WebKitWebView* engine() { return WEBKIT_WEB_VIEW(LinuxToolkit::widget(*web)); }

  std::mutex mutex;
  std::map<std::string, std::vector<std::string>> headers;
  HttpPeer peer;
  WebRecorder delegate;
  std::unique_ptr<platform::WebView> web;
};

#include "platform/linux/linux_web_view.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <semaphore>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <libsoup/soup.h>
#include <unistd.h>

#include "platform/strings.h"
#include "tests/contract/engine_test.h"
#include "tests/fakes/captured_log.h"
#include "tests/station/process_tree.h"

// The web engine against a server on the loopback interface.

namespace {

using platform::CachePolicy;
using platform::HeaderFields;
using platform::Millis;
using platform::NavigationPolicy;
using platform::PropertyList;
using platform::Url;
using platform::UrlRequest;
using platform::WebError;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class LinuxWebViewTest : public EngineTest {
 protected:
  void setLongestSilence(Millis silence) {
    dynamic_cast<platform::LinuxWebView&>(*web).setLongestSilence(silence);
  }
};

TEST_F(LinuxWebViewTest, AsksTheServerWithTheGivenFieldsAndAgent) {
  peer.start();
  web->setCustomUserAgent("Lumo/1.0\r\n (Kiosk)");
  UrlRequest asked = request("/");
  asked.headers = {{"X-Lumo-Station", "4711"}, {"X-Other", "a, b"}};
  web->load(asked);
  ASSERT_TRUE(heard("finish at /"));
  EXPECT_THAT(delegate.heard, ElementsAre("action /", "start at /", "response 200 at /", "finish at /"));
  ASSERT_EQ(requestsOf("/").size(), 1U);
  EXPECT_THAT(requestsOf("/").front(), HasSubstr("X-Lumo-Station: 4711\r\n"));
  EXPECT_THAT(requestsOf("/").front(), HasSubstr("X-Other: a, b\r\n"));
  EXPECT_THAT(requestsOf("/").front(), HasSubstr("User-Agent: Lumo/1.0 (Kiosk)\r\n"));
  EXPECT_EQ(value("navigator.userAgent"), PropertyList("Lumo/1.0 (Kiosk)"));
  EXPECT_EQ(value("'' + navigator.userAgent"), PropertyList("Lumo/1.0 (Kiosk)"));
}

TEST_F(LinuxWebViewTest, ALoadThatIgnoresTheCacheReachesTheServerEachTime) {
  page("/kept", "<p>kept</p>",
       "Cache-Control: max-age=3600\r\nLast-Modified: Thu, 01 Jan 2026 00:00:00 GMT\r\n");
  peer.start();
  UrlRequest asked = request("/kept");
  asked.cachePolicy = CachePolicy::ReloadIgnoringLocalCacheData;
  for (std::size_t times = 1; times <= 3; ++times) {
    web->load(asked);
    EXPECT_TRUE(harness.runUntil([&] { return delegate.count("finish at /kept") == times; }));
    EXPECT_EQ(requestsOf("/kept").size(), times);
  }
}

TEST_F(LinuxWebViewTest, AServerThatIsSilentTimesOut) {
  silentPage("/silent");
  peer.start();
  UrlRequest asked = request("/silent");
  asked.timeout = Millis{300};
  web->load(asked);
  ASSERT_TRUE(heard("provisional failure -1001"));
  EXPECT_EQ(delegate.errors.back().failingUrlString, peer.url("/silent"));
  web->load(request("/"));
  ASSERT_TRUE(heard("finish at /"));
  EXPECT_THAT(delegate.heard, ElementsAre("action /silent", "start at /silent", "provisional failure -1001",
                                          "action /", "start at /", "response 200 at /", "finish at /"));
}

TEST_F(LinuxWebViewTest, AnAddressOnItsWayToAProcessThatEndsIsAskedForAgain) {
  peer.start();
  load("/");
  // As when the address comes between the end of the process and the moment in which the engine notices.
  ASSERT_GT(station::signalPages(getpid(), SIGSTOP), 0);
  UrlRequest asked = request("/next");
  asked.headers = {{"X-Lumo-Station", "4711"}};
  web->load(asked);
  ASSERT_GT(station::killPages(getpid()), 0);
  ASSERT_TRUE(heard("finish at /next")) << testing::PrintToString(delegate.heard);
  EXPECT_THAT(requestsOf("/next").back(), HasSubstr("X-Lumo-Station: 4711\r\n"));
}

TEST_F(LinuxWebViewTest, AnAddressWhoseProcessEndsEachTimeHasFailed) {
  silentPage("/silent");
  peer.start();
  load("/");
  web->load(request("/silent"));
  std::size_t killed = 0;
  ASSERT_TRUE(harness.runUntil([&] {
    if (requestsOf("/silent").size() > killed) {
      ++killed;
      EXPECT_GT(station::killPages(getpid()), 0);
    }
    return delegate.hasHeard("provisional failure 2");
  })) << testing::PrintToString(delegate.heard);
  EXPECT_EQ(delegate.errors.back().failingUrlString, peer.url("/silent"));
  // It was asked for three times; one of them may have gone to the process that the engine keeps ready.
  EXPECT_EQ(delegate.count("terminated"), 3U);
  load("/next");
}

TEST_F(LinuxWebViewTest, APageThatIsThereIsNotLoadedAgainWhenItsProcessEnds) {
  peer.start();
  load("/");
  ASSERT_GT(station::killPages(getpid()), 0);
  ASSERT_TRUE(heard("terminated"));
  EXPECT_TRUE(letPass(Millis{200}));
  EXPECT_EQ(requestsOf("/").size(), 1U);
  load("/next");
}

TEST_F(LinuxWebViewTest, APageThatHasBegunToComeDoesNotTimeOut) {
  std::atomic<bool> goOn{false};
  peer.answer("/slow", [&](PeerConnection& connection) {
    connection.send("HTTP/1.1 200 OK\r\nContent-Type: text/html\r\nConnection: close\r\n\r\n<p>begin" +
                    std::string(4096, ' '));
    goOn.wait(false);
    connection.send("<p>end");
  });
  peer.start();
  // The time-out is for the server and not for the start of a process.
  load("/");
  UrlRequest asked = request("/slow");
  asked.timeout = Millis{1500};
  web->load(asked);
  EXPECT_TRUE(heard("response 200 at /slow"));
  EXPECT_TRUE(letPass(Millis{1700}));
  goOn = true;
  goOn.notify_all();
  EXPECT_TRUE(heard("finish at /slow")) << testing::PrintToString(delegate.heard);
  EXPECT_THAT(delegate.errors, IsEmpty());
}

TEST_F(LinuxWebViewTest, AServerThatCannotBeReachedFails) {
  // The peer does not listen yet.
  web->load(request("/"));
  ASSERT_TRUE(harness.runUntil([&] { return !delegate.errors.empty(); }));
  const WebError error = delegate.errors.back();
  EXPECT_NE(error.code, platform::kErrorTimedOut);
  EXPECT_NE(error.code, platform::kErrorFrameLoadInterrupted);
  EXPECT_FALSE(error.localizedDescription.empty());
  EXPECT_EQ(error.failingUrlString, peer.url("/"));
  web->load({*Url::parse("http://nowhere.invalid/"), {}, Millis{0}, {}});
  ASSERT_TRUE(harness.runUntil([&] { return delegate.errors.size() == 2; }));
  EXPECT_EQ(delegate.errors.back().failingUrlString, "http://nowhere.invalid/");
  peer.start();
  load("/");
  EXPECT_EQ(delegate.errors.size(), 2U);
}

TEST_F(LinuxWebViewTest, AnAddressThatTheEngineRefusesFailsInsteadOfShowingAnEmptyPage) {
  peer.start();
  load("/");
  delegate.heard.clear();
  web->load({*Url::parse("http://127.0.0.1:1/"), {}, Millis{0}, {}});
  ASSERT_TRUE(harness.runUntil([&] { return !delegate.errors.empty(); }));
  EXPECT_EQ(delegate.errors.back().failingUrlString, "http://127.0.0.1:1/");
  EXPECT_TRUE(delegate.heard.back().starts_with("provisional failure")) << delegate.heard.back();
  load("/next");
  EXPECT_EQ(delegate.errors.size(), 1U);
}

TEST_F(LinuxWebViewTest, ALoadThatANewOneReplacesIsNotReported) {
  silentPage("/silent");
  peer.start();
  ASSERT_TRUE(reachesServer("/silent"));
  web->load(request("/"));
  ASSERT_TRUE(heard("finish at /"));
  EXPECT_EQ(value("document.body.textContent"), PropertyList("home"));
  EXPECT_THAT(delegate.errors, IsEmpty());
  EXPECT_EQ(delegate.heard.size(), 6U) << testing::PrintToString(delegate.heard);
  EXPECT_EQ(delegate.heard.back(), "finish at /");
}

TEST_F(LinuxWebViewTest, AFailureThatIsOnItsWayWhenANewerLoadBeginsIsNotReported) {
  std::atomic<int> broken{0};
  peer.answer("/broken", [&](PeerConnection&) {
    ++broken;
    broken.notify_all();
  });
  peer.start();
  load("/");
  for (int round = 1; round <= 20; ++round) {
    delegate.heard.clear();
    web->load(request("/broken"));
    ASSERT_TRUE(heard("start at /broken"));
    // The engine hears of the broken connection now; this thread does not yet.
    broken.wait(round - 1);
    delegate.errors.clear();
    web->load(request("/next"));
    ASSERT_TRUE(heard("finish at /next")) << round << testing::PrintToString(delegate.heard);
    ASSERT_TRUE(delegate.errors.empty()) << round << testing::PrintToString(delegate.heard);
    EXPECT_EQ(value("document.body.textContent"), PropertyList("next")) << round;
  }
}

TEST_F(LinuxWebViewTest, APageOfTheSystemsOwnOnItsWayWhenALoadBeginsIsNotTakenForIt) {
  std::counting_semaphore<> shown{0};
  peer.answer("/picture", [&](PeerConnection&) { shown.release(); });
  silentPage("/silent");
  peer.start();
  load("/");
  const std::string html = "<img src='" + peer.url("/picture") + "'>";
  std::size_t failures = 0;
  for (const auto& base : {std::optional<Url>(), Url::parse(peer.url("/"))}) {
    delegate.heard.clear();
    // The engine's process stands still until it has been told to go on with the older page.
    bool told = false;
    delegate.actionDecided = [&] {
      EXPECT_GT(station::signalPages(getpid(), SIGSTOP), 0);
      harness.dispatch().main().after(Millis{100}, [&] { told = true; });
    };
    web->loadHTMLString(html, base);
    ASSERT_TRUE(harness.runUntil([&] { return told; }));
    ASSERT_GT(station::signalPages(getpid(), SIGCONT), 0);
    // It shows the older page now; this thread has not heard of it.
    ASSERT_TRUE(shown.try_acquire_for(std::chrono::seconds(30)));
    UrlRequest asked = request("/silent");
    asked.timeout = Millis{300};
    web->load(asked);
    ASSERT_TRUE(heard("provisional failure -1001")) << testing::PrintToString(delegate.heard);
    EXPECT_EQ(delegate.errors.size(), ++failures) << testing::PrintToString(delegate.heard);
    load("/next");
  }
}

TEST_F(LinuxWebViewTest, AnAddressThatIsAskedForAgainWhileItsAnswerIsDecidedShowsOnce) {
  peer.start();
  load("/");
  // How far the first one has come when the second is asked for.
  std::vector<std::string> stages = {"response 200 at /next"};
  // A load that is given up just when its answer comes makes libsoup 3.6 use freed memory: the engine's
  // network process ends.
  if (!soup_check_version(3, 4, 0)) {
    stages.insert(stages.begin(), {"", "action /next", "start at /next"});
  }
  for (const std::string& reached : stages) {
    for (int round = 1; round <= 10; ++round) {
      delegate.heard.clear();
      delegate.keepsResponses = true;
      web->load(request("/next"));
      ASSERT_TRUE(reached.empty() || heard(reached));
      web->load(request("/next"));
      ASSERT_TRUE(heard("response 200 at /next"));
      delegate.keepsResponses = false;
      delegate.kept(NavigationPolicy::Allow);
      ASSERT_TRUE(heard("finish at /next")) << reached << round << testing::PrintToString(delegate.heard);
      ASSERT_TRUE(delegate.errors.empty()) << reached << round << testing::PrintToString(delegate.heard);
      EXPECT_EQ(value("document.body.textContent"), PropertyList("next")) << reached << round;
    }
  }
}

TEST_F(LinuxWebViewTest, AnAddressThatTheEngineWritesInAnotherWayFailsAllTheSame) {
  const HttpPeer nobody;
  std::size_t failures = 0;
  for (const char* path : {"", "/#part", "/a%7Cb", "/%C3%A4?x=%20y#z"}) {
    web->load({*Url::parse(nobody.url(path)), {}, Millis{0}, {}});
    ++failures;
    ASSERT_TRUE(harness.runUntil([&] { return delegate.errors.size() == failures; }))
        << path << testing::PrintToString(delegate.heard);
  }
}

TEST_F(LinuxWebViewTest, AnAddressToWhichTheServerSendsItOnFailsAllTheSame) {
  const HttpPeer nobody;
  peer.answer("/moved", "HTTP/1.1 302 Found\r\nLocation: " + nobody.url("/x") +
                            "\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
  peer.start();
  web->load(request("/moved"));
  ASSERT_TRUE(harness.runUntil([&] { return !delegate.errors.empty(); }));
  EXPECT_EQ(delegate.errors.back().failingUrlString, nobody.url("/x"));
}

TEST_F(LinuxWebViewTest, ALoadThatReplacesAnotherKeepsItsOwnTimeOut) {
  silentPage("/silent");
  silentPage("/other");
  peer.start();
  ASSERT_TRUE(reachesServer("/silent"));
  UrlRequest asked = request("/other");
  asked.timeout = Millis{300};
  web->load(asked);
  ASSERT_TRUE(heard("provisional failure -1001"));
  EXPECT_EQ(delegate.errors.size(), 1U);
  EXPECT_EQ(delegate.errors.back().failingUrlString, peer.url("/other"));
}

TEST_F(LinuxWebViewTest, ACancelledActionLoadsNothing) {
  peer.start();
  load("/");
  delegate.actionPolicy = NavigationPolicy::Cancel;
  delegate.heard.clear();
  web->load(request("/next"));
  EXPECT_TRUE(heard("action /next"));
  delegate.actionPolicy = NavigationPolicy::Allow;
  load("/");
  EXPECT_THAT(requestsOf("/next"), IsEmpty());
  EXPECT_THAT(delegate.errors, IsEmpty());
}

TEST_F(LinuxWebViewTest, AnAddressOfWhichTheEngineSaysNothingIsAskedForAgain) {
  peer.start();
  load("/");
  setLongestSilence(Millis{1000});
  ASSERT_GT(station::signalPages(getpid(), SIGSTOP), 0);
  const fakes::CapturedLog log;
  web->load(request("/next"));
  ASSERT_TRUE(harness.runUntil([&] { return log.contains(peer.url("/next") + " is asked for again"); }));
  ASSERT_GT(station::signalPages(getpid(), SIGCONT), 0);
  ASSERT_TRUE(heard("finish at /next")) << testing::PrintToString(delegate.heard);
  EXPECT_THAT(delegate.errors, IsEmpty());
  EXPECT_EQ(value("document.body.textContent"), PropertyList("next"));
}

TEST_F(LinuxWebViewTest, AnAddressThatTheEngineHasBegunAndDoesNotGiveUpIsAskedForAgain) {
  silentPage("/silent");
  peer.start();
  load("/");
  const fakes::CapturedLog log;
  ASSERT_TRUE(reachesServer("/silent", Millis{300}));
  ASSERT_GT(station::signalPages(getpid(), SIGSTOP), 0);
  ASSERT_TRUE(harness.runUntil([&] { return log.contains(peer.url("/silent") + " is asked for again"); }));
  EXPECT_TRUE(log.contains("the web process does not answer and is ended")) << log.text();
  EXPECT_THAT(delegate.errors, IsEmpty());
  // The process that the engine kept ready for the next page, where there was one, stands still too.
  station::signalPages(getpid(), SIGCONT);
  // The second time it is heard that the server is silent.
  ASSERT_TRUE(heard("provisional failure -1001")) << testing::PrintToString(delegate.heard);
  EXPECT_EQ(delegate.errors.size(), 1U);
  EXPECT_EQ(requestsOf("/silent").size(), 2U);
}

TEST_F(LinuxWebViewTest, APageWhoseScriptNeverEndsGivesWayToWhatIsAskedForNext) {
  peer.start();
  load("/");
  web->evaluateJavaScript("for (;;) {}", [](const auto&, const auto&) {});
  // The engine needs three seconds to find that the process does not answer.
  setLongestSilence(Millis{4000});
  const fakes::CapturedLog log;
  web->load(request("/next"));
  ASSERT_TRUE(heard("finish at /next")) << log.text() << testing::PrintToString(delegate.heard);
  EXPECT_TRUE(log.contains("the web process does not answer and is ended")) << log.text();
  EXPECT_TRUE(log.contains(peer.url("/next") + " is asked for again")) << log.text();
  EXPECT_THAT(delegate.errors, IsEmpty());
  EXPECT_EQ(value("document.body.textContent"), PropertyList("next"));
}

TEST_F(LinuxWebViewTest, AProcessThatHasShownNothingYetIsWaitedFor) {
  peer.start();
  // The engine needs three seconds to find that the process does not answer.
  setLongestSilence(Millis{4000});
  delegate.actionDecided = [&] { EXPECT_GT(station::signalPages(getpid(), SIGSTOP), 0); };
  const fakes::CapturedLog log;
  // One that the newer engines have begun by then is given up after its time-out.
  UrlRequest asked = request("/next");
  asked.timeout = Millis{2000};
  web->load(asked);
  ASSERT_TRUE(harness.runUntil([&] { return log.contains(peer.url("/next") + " is asked for again"); }))
      << log.text();
  ASSERT_GT(station::signalPages(getpid(), SIGCONT), 0);
  ASSERT_TRUE(heard("finish at /next")) << log.text() << testing::PrintToString(delegate.heard);
  EXPECT_FALSE(log.contains("the web process does not answer and is ended")) << log.text();
  EXPECT_THAT(delegate.heard, Not(Contains("terminated")));
  EXPECT_THAT(delegate.errors, IsEmpty());
}

TEST_F(LinuxWebViewTest, WhatIsAskedForWhileAPanelIsOpenComesAfterItsAnswer) {
  peer.start();
  load("/");
  bool wentOn = false;
  web->evaluateJavaScript("alert('Hallo')", [&](const auto&, const auto&) { wentOn = true; });
  ASSERT_TRUE(heard("alert Hallo of /"));
  setLongestSilence(Millis{4000});
  const fakes::CapturedLog log;
  web->load(request("/next"));
  ASSERT_TRUE(letPass(Millis{5000}));
  EXPECT_FALSE(wentOn);
  EXPECT_EQ(log.text(), "");
  std::exchange(delegate.alertDone, nullptr)();
  ASSERT_TRUE(heard("finish at /next")) << testing::PrintToString(delegate.heard);
  EXPECT_EQ(delegate.count("start at /next"), 1U);
  EXPECT_EQ(log.text(), "");
  EXPECT_THAT(delegate.errors, IsEmpty());
}

TEST_F(LinuxWebViewTest, AnOpenPanelStopsTheTimeOut) {
  silentPage("/silent");
  peer.start();
  load("/");
  ASSERT_TRUE(reachesServer("/silent", Millis{2000}));
  web->evaluateJavaScript("alert('Hallo')", [](const auto&, const auto&) {});
  ASSERT_TRUE(heard("alert Hallo of /silent")) << testing::PrintToString(delegate.heard);
  ASSERT_TRUE(letPass(Millis{5000}));
  EXPECT_THAT(delegate.errors, IsEmpty());
  std::exchange(delegate.alertDone, nullptr)();
  ASSERT_TRUE(heard("provisional failure -1001")) << testing::PrintToString(delegate.heard);
  EXPECT_EQ(requestsOf("/silent").size(), 1U);
}

TEST_F(LinuxWebViewTest, AnAddressWithoutATimeOutIsWaitedForAsLongAsTheEngineLoadsIt) {
  std::binary_semaphore answers{0};
  peer.answer("/slow", [&](PeerConnection& connection) {
    answers.acquire();
    connection.send(
        "HTTP/1.1 200 OK\r\nContent-Type: text/html\r\nContent-Length: 4\r\nConnection: close\r\n\r\nslow");
  });
  peer.start();
  load("/");
  delegate.actionDecided = [&] { setLongestSilence(Millis{50}); };
  const fakes::CapturedLog log;
  web->load(request("/slow"));
  ASSERT_TRUE(heard("start at /slow"));
  ASSERT_TRUE(letPass(Millis{500}));
  answers.release();
  ASSERT_TRUE(heard("finish at /slow")) << testing::PrintToString(delegate.heard);
  EXPECT_EQ(log.text(), "");
  EXPECT_EQ(peer.requests(), 2);
}

TEST_F(LinuxWebViewTest, AnAddressOfWhichTheEngineNeverSaysAnythingHasFailed) {
  peer.start();
  load("/");
  setLongestSilence(Millis{100});
  ASSERT_GT(station::signalPages(getpid(), SIGSTOP), 0);
  const fakes::CapturedLog log;
  web->load(request("/next"));
  ASSERT_TRUE(heard("provisional failure 2")) << testing::PrintToString(delegate.heard);
  EXPECT_EQ(delegate.errors.back().failingUrlString, peer.url("/next"));
  EXPECT_EQ(log.lines().size(), 2U) << log.text();
  setLongestSilence(Millis{20'000});
  ASSERT_GT(station::signalPages(getpid(), SIGCONT), 0);
  load("/");
}

TEST_F(LinuxWebViewTest, NothingIsAskedForAgainThatWasRefusedOrIsPartOfThePage) {
  peer.start();
  load("/");
  setLongestSilence(Millis{100});
  const fakes::CapturedLog log;
  delegate.actionPolicy = NavigationPolicy::Cancel;
  delegate.heard.clear();
  web->load(request("/next"));
  ASSERT_TRUE(heard("action /next"));
  ASSERT_TRUE(letPass(Millis{300}));
  delegate.actionPolicy = NavigationPolicy::Allow;
  load("/");
  web->load(request("/#part"));
  ASSERT_TRUE(letPass(Millis{300}));
  EXPECT_EQ(log.text(), "");
  EXPECT_THAT(requestsOf("/next"), IsEmpty());
  EXPECT_THAT(delegate.errors, IsEmpty());
}

TEST_F(LinuxWebViewTest, ACancelledResponseFailsWith102AndLeavesThePage) {
  peer.start();
  load("/");
  delegate.responsePolicy = NavigationPolicy::Cancel;
  delegate.heard.clear();
  web->load(request("/next"));
  ASSERT_TRUE(heard("provisional failure 102"));
  EXPECT_EQ(value("document.body.textContent"), PropertyList("home"));
  EXPECT_THAT(delegate.heard, ElementsAre("action /next", "start at /next", "response 200 at /next",
                                          "provisional failure 102"));
  EXPECT_EQ(delegate.address(*web), "/");
}

TEST_F(LinuxWebViewTest, AnAnswerWithoutContentFailsWith102AndLeavesThePage) {
  peer.answer("/nothing", [](PeerConnection& connection) {
    connection.send("HTTP/1.1 204 No Content\r\nConnection: close\r\n\r\n");
  });
  peer.start();
  load("/");
  web->load(request("/nothing"));
  ASSERT_TRUE(heard("provisional failure 102")) << testing::PrintToString(delegate.heard);
  EXPECT_EQ(value("document.body.textContent"), PropertyList("home"));
}

TEST_F(LinuxWebViewTest, ADecisionThatIsDroppedCountsAsCancel) {
  peer.start();
  delegate.dropsResponses = true;
  web->load(request("/"));
  EXPECT_TRUE(heard("provisional failure 102"));
}

TEST_F(LinuxWebViewTest, ADecisionMayComeLaterAndOnce) {
  peer.start();
  delegate.keepsResponses = true;
  web->load(request("/"));
  ASSERT_TRUE(harness.runUntil([&] { return delegate.kept != nullptr; }));
  delegate.kept(NavigationPolicy::Allow);
  EXPECT_TRUE(heard("finish at /"));
  delegate.kept = nullptr;
  EXPECT_EQ(value("document.body.textContent"), PropertyList("home"));
}

TEST_F(LinuxWebViewTest, TheAddressIsALinksOnlyWhileItsResponseIsDecided) {
  peer.start();
  load("/");
  delegate.heard.clear();
  delegate.keepsResponses = true;
  value("void (location.href = '/next')");
  ASSERT_TRUE(heard("response 200 at /next")) << testing::PrintToString(delegate.heard);
  EXPECT_TRUE(delegate.hasHeard("start at /")) << testing::PrintToString(delegate.heard);
  EXPECT_EQ(delegate.address(*web), "/");
  delegate.kept(NavigationPolicy::Allow);
  EXPECT_TRUE(heard("finish at /next"));
  EXPECT_EQ(delegate.address(*web), "/next");
}

TEST_F(LinuxWebViewTest, FieldsComeAsTheServerSentThem) {
  page("/fields", "x",
       "X-Name: Grüße aus Köln\r\nX-Two: one\r\nx-lower: y\r\nX-Two: two\r\nX-Latin: caf\xE9\r\n");
  peer.start();
  load("/fields");
  const HeaderFields& fields = delegate.responses.back().headers;
  const auto field = [&](const std::string& name) {
    const std::string* found = platform::headerValue(fields, name);
    return found == nullptr ? "nothing" : *found;
  };
  EXPECT_EQ(field("X-Name"), "Grüße aus Köln");
  EXPECT_EQ(field("X-Two"), "one, two");
  EXPECT_EQ(field("x-lower"), "y");
  EXPECT_TRUE(platform::isValidUtf8(field("X-Latin"))) << field("X-Latin");
  EXPECT_EQ(field("X-Missing"), "nothing");
}

TEST_F(LinuxWebViewTest, FramesInsideThePageAreAskedForToo) {
  page("/framed", "<p>outer</p><iframe src='/inner'></iframe>");
  page("/inner", "<p>inner</p>", "X-Inner: yes\r\n");
  peer.start();
  load("/framed");
  EXPECT_THAT(delegate.heard, Contains("inner response 200 at /framed"));
  EXPECT_FALSE(delegate.responses.back().isMainFrame);
  EXPECT_EQ(delegate.responses.back().url->absoluteString(), peer.url("/inner"));
  EXPECT_EQ(delegate.count("finish at /framed"), 1U);
}

TEST_F(LinuxWebViewTest, WithoutTheCacheEveryLoadReachesTheServer) {
  page("/kept", "<p>kept</p>", "Cache-Control: max-age=3600\r\n");
  peer.start();
  web->disableCache();
  load("/kept");
  load("/");
  load("/kept");
  EXPECT_EQ(requestsOf("/kept").size(), 2U);
}

}  // namespace

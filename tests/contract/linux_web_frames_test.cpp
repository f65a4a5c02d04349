#include <algorithm>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/contract/engine_test.h"
#include "tests/contract/frame_recorder.h"

// What the web engine's pages are made of, told to a frame delegate.

namespace {

using platform::WebFrame;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

class LinuxWebFramesTest : public EngineTest {
 protected:
  void SetUp() override {
    EngineTest::SetUp();
    frames.server = peer.url("");
    web->setFrameDelegate(&frames);
  }
  bool told(const std::string& entry) {
    return harness.runUntil([&] { return frames.hasHeard(entry); });
  }
  // What was told of the frames inside the page, in its order.
  std::vector<std::string> inner() const {
    std::vector<std::string> found;
    for (const std::string& entry : frames.heard) {
      if (entry.starts_with("inner ")) {
        found.push_back(entry);
      }
    }
    return found;
  }
  void redirectPage(const std::string& path, const std::string& target) {
    peer.answer(path, "HTTP/1.1 302 Found\r\nLocation: " + target +
                          "\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
  }

  FrameRecorder frames;
};

TEST_F(LinuxWebFramesTest, TellsOfEveryFrameOfAPage) {
  page("/frames", "<title>Frames</title><iframe src=/inner></iframe><p>outer</p>");
  page("/inner", "<p>inner</p>", "Glimmerpad-Plus-Scanner: close\r\n");
  peer.start();
  web->load(request("/frames"));
  ASSERT_TRUE(harness.runUntil([&] { return frames.finished.size() == 2; }))
      << testing::PrintToString(frames.heard);
  EXPECT_THAT(inner(), ElementsAre("inner start /inner", "inner commit /inner", "inner finish /inner"));
  EXPECT_THAT(frames.heard, Contains("title Frames /frames"));
  EXPECT_EQ(frames.heard.front(), "start /frames");
  EXPECT_THAT(frames.heard, Contains("finish /frames"));
  for (const WebFrame& frame : frames.finished) {
    ASSERT_TRUE(frame.response);
    EXPECT_EQ(platform::headerValue(frame.response->headers, "Glimmerpad-Plus-Scanner") == nullptr,
              frame.isMain);
  }
}

TEST_F(LinuxWebFramesTest, TellsOfTwoFramesOfTheSameAddress) {
  page("/frames", "<iframe src=/inner></iframe><iframe src=/inner></iframe>");
  page("/inner", "<p>inner</p>", "Cache-Control: no-store\r\n");
  peer.start();
  web->load(request("/frames"));
  EXPECT_TRUE(harness.runUntil([&] {
    return std::count(frames.heard.begin(), frames.heard.end(), "inner finish /inner") == 2;
  })) << testing::PrintToString(frames.heard);
}

TEST_F(LinuxWebFramesTest, TellsWhereAFrameWasSentTo) {
  page("/frames", "<iframe src=/old></iframe>");
  redirectPage("/old", "/inner");
  page("/inner", "<p>inner</p>");
  peer.start();
  web->load(request("/frames"));
  ASSERT_TRUE(told("inner finish /inner")) << testing::PrintToString(frames.heard);
  EXPECT_THAT(inner(), ElementsAre("inner start /old", "inner redirect /inner", "inner commit /inner",
                                   "inner finish /inner"));
}

TEST_F(LinuxWebFramesTest, TellsOfAFrameThatFails) {
  page("/frames", "<iframe src=/gone></iframe>");
  peer.answer("/gone", "");
  peer.start();
  web->load(request("/frames"));
  ASSERT_TRUE(harness.runUntil([&] { return !frames.errors.empty(); }));
  EXPECT_EQ(frames.errors[0].failingUrlString, peer.url("/gone"));
  EXPECT_THAT(inner(), ElementsAre("inner start /gone", StartsWith("inner provisional failure")));
  EXPECT_THAT(frames.resourcesOf("#/gone"), ElementsAre("#/gone sends /gone", "#/gone failed"));
}

TEST_F(LinuxWebFramesTest, PicturesAreNoFrames) {
  page("/pictures", "<img src=/picture><img src=/old>");
  page("/picture", "x");
  redirectPage("/old", "/picture2");
  page("/picture2", "x");
  peer.start();
  load("/pictures");
  ASSERT_TRUE(harness.runUntil([&] {
    return frames.resourcesOf("#/picture").size() == 3 && frames.resourcesOf("#/old").size() == 4;
  })) << testing::PrintToString(frames.resources);
  EXPECT_THAT(inner(), IsEmpty());
  EXPECT_THAT(frames.resourcesOf("#/picture"),
              ElementsAre("#/picture sends /picture", "#/picture answered 200", "#/picture finished"));
  EXPECT_THAT(frames.resourcesOf("#/old"), ElementsAre("#/old sends /old", "#/old sends /picture2 after 302",
                                                       "#/old answered 200", "#/old finished"));
}

TEST_F(LinuxWebFramesTest, TheMainFramesRequestIsWhatItWasGiven) {
  redirectPage("/old", "/next");
  peer.start();
  platform::UrlRequest asked = request("/old");
  asked.headers = {{"Glimmerpad-Scan", "no"}};
  asked.timeout = platform::Millis{5000};
  asked.cachePolicy = platform::CachePolicy::ReloadIgnoringLocalCacheData;
  web->load(asked);
  ASSERT_TRUE(told("finish /next")) << testing::PrintToString(frames.heard);
  EXPECT_THAT(frames.heard, ElementsAre("start /old", "redirect /next", "commit /next", "finish /next"));
  const WebFrame& frame = frames.finished.at(0);
  EXPECT_TRUE(frame.isMain);
  EXPECT_EQ(frame.request->headers, asked.headers);
  EXPECT_EQ(frame.request->timeout, asked.timeout);
  EXPECT_EQ(frame.request->cachePolicy, asked.cachePolicy);
  EXPECT_EQ(frame.response->statusCode, 200);
}

TEST_F(LinuxWebFramesTest, AnAddressThatThePageChangesIsTold) {
  peer.start();
  load("/");
  frames.heard.clear();
  value("history.pushState({}, '', '/#2'), 1");
  EXPECT_TRUE(told("moved /#2")) << testing::PrintToString(frames.heard);
}

TEST_F(LinuxWebFramesTest, ALinkIsALoadOfThePagesOwn) {
  peer.start();
  load("/");
  frames.heard.clear();
  value("location.href = '/next', 1");
  ASSERT_TRUE(told("finish /next")) << testing::PrintToString(frames.heard);
  EXPECT_THAT(frames.heard, ElementsAre("start /next", "close /", "commit /next", "finish /next"));
}

TEST_F(LinuxWebFramesTest, ALoadThatIsReplacedIsNoFailure) {
  silentPage("/silent");
  peer.start();
  ASSERT_TRUE(reachesServer("/silent"));
  load("/next");
  EXPECT_TRUE(told("finish /next"));
  EXPECT_THAT(frames.errors, IsEmpty());
  EXPECT_THAT(frames.heard, Not(Contains("finish /silent")));
}

TEST_F(LinuxWebFramesTest, ADelegateThatGoesHearsNothingMore) {
  page("/pictures", "<img src=/silent>");
  silentPage("/silent");
  peer.start();
  web->load(request("/pictures"));
  ASSERT_TRUE(harness.runUntil([&] { return requestsOf("/silent").size() == 1; }));
  web->setFrameDelegate(nullptr);
  frames.heard.clear();
  frames.resources.clear();
  load("/next");
  EXPECT_THAT(frames.heard, IsEmpty());
  EXPECT_THAT(frames.resources, IsEmpty());
}

TEST_F(LinuxWebFramesTest, AProcessThatEndsTakesItsResourcesAlong) {
  page("/pictures", "<img src=/silent>");
  silentPage("/silent");
  peer.start();
  web->load(request("/pictures"));
  ASSERT_TRUE(harness.runUntil([&] { return requestsOf("/silent").size() == 1; }));
  webkit_web_view_terminate_web_process(engine());
  ASSERT_TRUE(heard("terminated"));
  frames.resources.clear();
  load("/next");
  EXPECT_THAT(frames.resourcesOf("#/silent"), IsEmpty());
}

}  // namespace

#include <atomic>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/strings.h"
#include "tests/contract/web_recorder.h"

// The web engine against a server on the loopback interface.

namespace {

using platform::CachePolicy;
using platform::HeaderFields;
using platform::Image;
using platform::Millis;
using platform::NavigationPolicy;
using platform::PropertyList;
using platform::Rect;
using platform::Url;
using platform::UrlRequest;
using platform::WebError;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class LinuxWebViewTest : public ToolkitTest<LinuxToolkit> {
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
  UrlRequest request(const std::string& path) {
    return {*Url::parse(peer.url(path)), CachePolicy::UseProtocolCachePolicy, Millis{0}, {}};
  }
  bool heard(const std::string& entry) {
    return harness.runUntil([&] { return delegate.hasHeard(entry); });
  }
  void load(const std::string& path) {
    delegate.heard.clear();
    web->load(request(path));
    ASSERT_TRUE(heard("finish at " + path)) << testing::PrintToString(delegate.heard);
  }
  // The value of a script; fails when it does not come.
  std::optional<PropertyList> value(const std::string& script) {
    std::optional<PropertyList> found;
    bool done = false;
    web->evaluateJavaScript(script, [&](std::optional<PropertyList> result, std::optional<WebError> error) {
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

TEST_F(LinuxWebViewTest, APageThatHasBegunToComeDoesNotTimeOut) {
  std::atomic<bool> goOn{false};
  peer.answer("/slow", [&](PeerConnection& connection) {
    connection.send("HTTP/1.1 200 OK\r\nContent-Type: text/html\r\nConnection: close\r\n\r\n<p>begin" +
                    std::string(4096, ' '));
    goOn.wait(false);
    connection.send("<p>end");
  });
  peer.start();
  UrlRequest asked = request("/slow");
  asked.timeout = Millis{400};
  web->load(asked);
  EXPECT_TRUE(heard("response 200 at /slow"));
  bool later = false;
  harness.dispatch().main().after(Millis{900}, [&] { later = true; });
  EXPECT_TRUE(harness.runUntil([&] { return later; }));
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
  web->load(request("/silent"));
  ASSERT_TRUE(harness.runUntil([&] { return requestsOf("/silent").size() == 1; }));
  web->load(request("/"));
  ASSERT_TRUE(heard("finish at /"));
  EXPECT_EQ(value("document.body.textContent"), PropertyList("home"));
  EXPECT_THAT(delegate.errors, IsEmpty());
  EXPECT_EQ(delegate.heard.size(), 6U) << testing::PrintToString(delegate.heard);
  EXPECT_EQ(delegate.heard.back(), "finish at /");
}

TEST_F(LinuxWebViewTest, ALoadThatReplacesAnotherKeepsItsOwnTimeOut) {
  silentPage("/silent");
  silentPage("/other");
  peer.start();
  web->load(request("/silent"));
  ASSERT_TRUE(harness.runUntil([&] { return requestsOf("/silent").size() == 1; }));
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

TEST_F(LinuxWebViewTest, ShowsATextOfTheSystemsOwn) {
  peer.start();
  web->loadHTMLString("<p>Störung</p>", std::nullopt);
  ASSERT_TRUE(heard("finish at nothing")) << testing::PrintToString(delegate.heard);
  EXPECT_EQ(value("document.body.textContent"), PropertyList("Störung"));
  EXPECT_FALSE(web->url());
  web->loadHTMLString("<p>based</p>", Url::parse(peer.url("/next")));
  ASSERT_TRUE(heard("finish at /next")) << testing::PrintToString(delegate.heard);
  EXPECT_EQ(value("document.body.textContent"), PropertyList("based"));
  EXPECT_THAT(requestsOf("/next"), IsEmpty());
  EXPECT_THAT(delegate.errors, IsEmpty());
  load("/");
}

TEST_F(LinuxWebViewTest, ScriptsGiveTheirValues) {
  peer.start();
  load("/");
  EXPECT_EQ(value("undefined"), std::nullopt);
  EXPECT_EQ(value("null"), std::nullopt);
  EXPECT_EQ(value("1 === 1"), PropertyList(true));
  EXPECT_EQ(value("6 * 7"), PropertyList(42));
  EXPECT_EQ(value("1.5"), PropertyList(1.5));
  EXPECT_EQ(value("'Grüße'"), PropertyList("Grüße"));
  EXPECT_EQ(value("[1, 'two', [true]]"),
            PropertyList(platform::Array{PropertyList(1), PropertyList("two"),
                                         PropertyList(platform::Array{PropertyList(true)})}));
  EXPECT_EQ(
      value("({a: 1, b: {c: 'd'}})"),
      PropertyList(platform::Dictionary{
          {"a", PropertyList(1)}, {"b", PropertyList(platform::Dictionary{{"c", PropertyList("d")}})}}));
}

TEST_F(LinuxWebViewTest, AScriptThatThrowsGivesAnErrorOnce) {
  peer.start();
  load("/");
  std::vector<std::string> errors;
  for (const char* script : {"throw new Error('broken')", "1 +", "nobody.knows"}) {
    web->evaluateJavaScript(script, [&](std::optional<PropertyList> result, std::optional<WebError> error) {
      EXPECT_FALSE(result);
      errors.push_back(error ? error->localizedDescription : "no error");
    });
  }
  EXPECT_TRUE(harness.runUntil([&] { return errors.size() == 3; }));
  EXPECT_THAT(errors, Contains(HasSubstr("broken")));
  EXPECT_THAT(errors, Not(Contains("no error")));
}

TEST_F(LinuxWebViewTest, APictureHasTheSizeOfTheLaidOutView) {
  page("/long", "<body style='margin:0;background:#00f'><div style='height:14047px;background:#f00'></div>");
  peer.start();
  web->setFrame({0, 0, 505, 14047});
  load("/long");
  EXPECT_TRUE(harness.runUntil([&] { return gtk_widget_get_height(LinuxToolkit::widget(*web)) == 14047; }));
  std::optional<Image> picture;
  int answers = 0;
  web->takeSnapshot([&](std::optional<Image> image) {
    picture = std::move(image);
    ++answers;
  });
  ASSERT_TRUE(harness.runUntil([&] { return answers > 0; }));
  ASSERT_TRUE(picture);
  EXPECT_EQ(picture->width, 505);
  EXPECT_EQ(picture->height, 14047);
  ASSERT_EQ(picture->pixels.size(), 505U * 14047U * 4U);
  const auto pixel = [&](std::size_t x, std::size_t y) {
    const std::size_t at = (y * 505 + x) * 4;
    return std::vector{
        std::to_integer<int>(picture->pixels[at]), std::to_integer<int>(picture->pixels[at + 1]),
        std::to_integer<int>(picture->pixels[at + 2]), std::to_integer<int>(picture->pixels[at + 3])};
  };
  EXPECT_THAT(pixel(10, 10), ElementsAre(255, 0, 0, 255));
  EXPECT_THAT(pixel(500, 14040), ElementsAre(255, 0, 0, 255));
  EXPECT_EQ(window->frame().height, 480);
  EXPECT_EQ(answers, 1);
}

TEST_F(LinuxWebViewTest, GoesBackAndForward) {
  peer.start();
  web->goBack();
  load("/");
  load("/next");
  delegate.heard.clear();
  web->goBack();
  EXPECT_TRUE(heard("finish at /"));
  web->goForward();
  EXPECT_TRUE(heard("finish at /next"));
  EXPECT_EQ(web->estimatedProgress(), 1);
}

TEST_F(LinuxWebViewTest, PanelsOfThePageGetTheirAnswers) {
  peer.start();
  load("/");
  std::vector<std::optional<PropertyList>> values;
  const auto run = [&](const std::string& script) {
    web->evaluateJavaScript(script, [&](std::optional<PropertyList> result, std::optional<WebError> error) {
      EXPECT_FALSE(error);
      values.push_back(std::move(result));
    });
  };
  const auto asked = [&](const std::string& entry) { EXPECT_TRUE(heard(entry)) << entry; };
  const auto answered = [&](std::size_t count) {
    EXPECT_TRUE(harness.runUntil([&] { return values.size() == count; })) << count;
  };
  run("alert('Hallo'); 'went on'");
  asked("alert Hallo of /");
  EXPECT_THAT(values, IsEmpty());
  std::exchange(delegate.alertDone, nullptr)();
  answered(1);
  run("confirm('Sure?')");
  asked("confirm Sure?");
  std::exchange(delegate.confirmDone, nullptr)(true);
  answered(2);
  run("confirm('Still?')");
  asked("confirm Still?");
  std::exchange(delegate.confirmDone, nullptr)(false);
  answered(3);
  run("prompt('Name?', 'Max')");
  asked("prompt Name? Max");
  std::exchange(delegate.promptDone, nullptr)("Grüße");
  answered(4);
  run("prompt('Name?', 'Eva')");
  asked("prompt Name? Eva");
  std::exchange(delegate.promptDone, nullptr)(std::nullopt);
  answered(5);
  // A question whose handler is dropped does not keep the page waiting.
  run("confirm('Dropped?')");
  asked("confirm Dropped?");
  delegate.confirmDone = nullptr;
  answered(6);
  EXPECT_THAT(values, ElementsAre(PropertyList("went on"), PropertyList(true), PropertyList(false),
                                  PropertyList("Grüße"), std::nullopt, PropertyList(false)));
}

TEST_F(LinuxWebViewTest, ANewWindowIsTheDelegatesAffair) {
  page("/opener", "<a id='link' target='_blank' href='/next'>x</a>");
  peer.start();
  load("/opener");
  value("void document.getElementById('link').click()");
  EXPECT_TRUE(heard("new window /next"));
  delegate.newWindow = web.get();
  value("void document.getElementById('link').click()");
  EXPECT_TRUE(heard("finish at /next"));
  EXPECT_EQ(delegate.count("new window /next"), 2U);
  EXPECT_EQ(requestsOf("/next").size(), 1U);
}

TEST_F(LinuxWebViewTest, AProcessThatEndsIsReportedAndTheNextLoadWorks) {
  peer.start();
  load("/");
  webkit_web_view_terminate_web_process(engine());
  ASSERT_TRUE(heard("terminated"));
  EXPECT_EQ(delegate.count("terminated"), 1U);
  load("/next");
  EXPECT_EQ(value("document.body.textContent"), PropertyList("next"));
}

TEST_F(LinuxWebViewTest, AProcessThatEndsDuringALoadLeavesNothingBehind) {
  silentPage("/silent");
  peer.start();
  load("/");
  UrlRequest asked = request("/silent");
  asked.timeout = Millis{200};
  web->load(asked);
  ASSERT_TRUE(harness.runUntil([&] { return requestsOf("/silent").size() == 1; }));
  webkit_web_view_terminate_web_process(engine());
  ASSERT_TRUE(heard("terminated"));
  load("/next");
  bool later = false;
  harness.dispatch().main().after(Millis{400}, [&] { later = true; });
  EXPECT_TRUE(harness.runUntil([&] { return later; }));
  EXPECT_FALSE(delegate.hasHeard("provisional failure -1001"));
}

TEST_F(LinuxWebViewTest, AViewThatGoesAnswersNobodyAnyMore) {
  silentPage("/silent");
  peer.start();
  UrlRequest asked = request("/silent");
  asked.timeout = Millis{100};
  web->load(asked);
  ASSERT_TRUE(harness.runUntil([&] { return requestsOf("/silent").size() == 1; }));
  web.reset();
  delegate.heard.clear();
  bool later = false;
  harness.dispatch().main().after(Millis{300}, [&] { later = true; });
  EXPECT_TRUE(harness.runUntil([&] { return later; }));
  EXPECT_THAT(delegate.heard, IsEmpty());
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

TEST(DormantWebViewTest, CostsNothingUntilItIsUsed) {
  LinuxToolkit harness;
  const auto window = harness.windows().loadWindow("MyWebViewWindowController");
  ASSERT_NE(window, nullptr);
  window->makeKeyAndOrderFront();
  ASSERT_TRUE(harness.runUntil([&] { return window->contentView().frame().width > 0; }));
  auto* legacy = dynamic_cast<platform::WebView*>(window->viewNamed("ibWebView"));
  ASSERT_NE(legacy, nullptr);
  GtkWidget* place = LinuxToolkit::widget(*legacy);
  legacy->setHidden(true);
  legacy->setCustomUserAgent("Lumo/2.0");
  EXPECT_EQ(legacy->stringByEvaluatingJavaScriptFromString("navigator.userAgent"), "Lumo/2.0");
  std::optional<PropertyList> agent;
  legacy->evaluateJavaScript(
      "navigator.userAgent",
      [&](std::optional<PropertyList> result, std::optional<WebError>) { agent = std::move(result); });
  EXPECT_EQ(agent, PropertyList("Lumo/2.0"));
  EXPECT_FALSE(legacy->url());
  EXPECT_EQ(legacy->estimatedProgress(), 0);
  legacy->goBack();
  EXPECT_EQ(gtk_widget_get_first_child(place), nullptr);

  legacy->setHidden(false);
  ASSERT_NE(gtk_widget_get_first_child(place), nullptr);
  HttpPeer peer;
  std::atomic<bool> named{false};
  peer.answer("/", [&](PeerConnection& connection) {
    named = connection.header().find("User-Agent: Lumo/2.0\r\n") != std::string::npos;
    connection.send("HTTP/1.1 200 OK\r\nContent-Length: 1\r\n\r\nx");
  });
  peer.start();
  WebRecorder delegate;
  legacy->setDelegate(&delegate);
  legacy->load({*Url::parse(peer.url("/")), {}, Millis{0}, {}});
  EXPECT_TRUE(harness.runUntil([&] { return delegate.hasHeard("finish at " + peer.url("/")); }));
  EXPECT_TRUE(named);
  legacy->setDelegate(nullptr);
}

}  // namespace

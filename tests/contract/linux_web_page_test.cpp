#include <atomic>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/contract/engine_test.h"

// What is inside a page of the web engine: its scripts, its panels, its process and its picture.

namespace {

using platform::Image;
using platform::Millis;
using platform::PropertyList;
using platform::Rect;
using platform::Url;
using platform::WebError;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class LinuxWebPageTest : public EngineTest {};

TEST_F(LinuxWebPageTest, ShowsATextOfTheSystemsOwn) {
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

TEST_F(LinuxWebPageTest, ScriptsGiveTheirValues) {
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

TEST_F(LinuxWebPageTest, AScriptThatThrowsGivesAnErrorOnce) {
  peer.start();
  load("/");
  std::vector<std::string> errors;
  for (const char* script : {"throw new Error('broken')", "1 +", "nobody.knows"}) {
    web->evaluateJavaScript(
        script, [&](const std::optional<PropertyList>& result, const std::optional<WebError>& error) {
          EXPECT_FALSE(result);
          errors.push_back(error ? error->localizedDescription : "no error");
        });
  }
  EXPECT_TRUE(harness.runUntil([&] { return errors.size() == 3; }));
  EXPECT_THAT(errors, Contains(HasSubstr("broken")));
  EXPECT_THAT(errors, Not(Contains("no error")));
}

TEST_F(LinuxWebPageTest, APictureHasTheSizeOfTheLaidOutView) {
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

TEST_F(LinuxWebPageTest, APictureRightAfterANewFrameIsOfThePageLaidOutInIt) {
  page("/wide",
       "<style>body{margin:0}div{height:20000px;background:#f00}"
       "@media (width: 505px){div{background:#0f0}}</style><div></div>");
  peer.start();
  load("/wide");
  const Rect usual = web->frame();
  std::vector<std::vector<int>> pictures;
  const auto note = [&](const std::optional<Image>& image) {
    ASSERT_TRUE(image);
    const auto* last = image->pixels.data() + image->pixels.size() - 4;
    pictures.push_back(
        {image->width, image->height, std::to_integer<int>(last[0]), std::to_integer<int>(last[1])});
  };
  web->setFrame({10, 0, 505, 14047.2080078125});
  web->takeSnapshot(note);
  web->takeSnapshot(note);
  ASSERT_TRUE(harness.runUntil([&] { return pictures.size() == 2; }));
  web->setFrame(usual);
  web->takeSnapshot(note);
  ASSERT_TRUE(harness.runUntil([&] { return pictures.size() == 3; }));
  EXPECT_THAT(pictures, ElementsAre(ElementsAre(505, 14047, 0, 255), ElementsAre(505, 14047, 0, 255),
                                    ElementsAre(usual.width, usual.height, 255, 0)));
}

TEST_F(LinuxWebPageTest, GoesBackAndForward) {
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

TEST_F(LinuxWebPageTest, PanelsOfThePageGetTheirAnswers) {
  peer.start();
  load("/");
  std::vector<std::optional<PropertyList>> values;
  const auto run = [&](const std::string& script) {
    web->evaluateJavaScript(script,
                            [&](std::optional<PropertyList> result, const std::optional<WebError>& error) {
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

TEST_F(LinuxWebPageTest, ANewWindowIsTheDelegatesAffair) {
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

TEST_F(LinuxWebPageTest, AProcessThatEndsIsReportedAndTheNextLoadWorks) {
  peer.start();
  load("/");
  webkit_web_view_terminate_web_process(engine());
  ASSERT_TRUE(heard("terminated"));
  EXPECT_EQ(delegate.count("terminated"), 1U);
  load("/next");
  EXPECT_EQ(value("document.body.textContent"), PropertyList("next"));
}

TEST_F(LinuxWebPageTest, AProcessThatEndsDuringALoadLeavesNothingBehind) {
  silentPage("/silent");
  peer.start();
  load("/");
  ASSERT_TRUE(reachesServer("/silent", Millis{1000}));
  webkit_web_view_terminate_web_process(engine());
  ASSERT_TRUE(heard("terminated"));
  load("/next");
  EXPECT_TRUE(letPass(Millis{1100}));
  EXPECT_FALSE(delegate.hasHeard("provisional failure -1001"));
}

TEST_F(LinuxWebPageTest, AViewThatGoesAnswersNobodyAnyMore) {
  silentPage("/silent");
  peer.start();
  ASSERT_TRUE(reachesServer("/silent", Millis{1000}));
  web.reset();
  delegate.heard.clear();
  EXPECT_TRUE(letPass(Millis{1100}));
  EXPECT_THAT(delegate.heard, IsEmpty());
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
      [&](std::optional<PropertyList> result, const std::optional<WebError>&) { agent = std::move(result); });
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

#include <map>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/contract/frame_recorder.h"
#include "tests/contract/web_recorder.h"

namespace {

using platform::HeaderFields;
using platform::Millis;
using platform::NavigationPolicy;
using platform::PropertyList;
using platform::Url;
using platform::WebError;
using testing::ElementsAre;
using testing::IsEmpty;

// A web view with a server. All pages are set before the first load.
class WebHarness {
 public:
  virtual ~WebHarness() = default;
  virtual platform::WebView& view() = 0;
  virtual bool runUntil(const std::function<bool()>& reached) = 0;
  virtual std::string server() = 0;
  virtual void serve(const std::string& path, int status, const HeaderFields& fields) = 0;
  // Lets what the view was given to load go on until it has nothing more to tell.
  virtual void settle() = 0;
};

class FakeWeb : public WebHarness {
 public:
  platform::WebView& view() override { return view_; }
  bool runUntil(const std::function<bool()>& reached) override { return queues_.runUntil(reached); }
  std::string server() override { return "http://10.0.0.5:9090"; }
  void serve(const std::string& path, int status, const HeaderFields& fields) override {
    pages_[server() + path] = {status, fields};
  }
  void settle() override {
    const bool isText = view_.requests().size() == loads_;
    loads_ = view_.requests().size();
    if (view_.startNavigation() == NavigationPolicy::Allow) {
      if (!isText) {
        const auto& [status, fields] = pages_.at(view_.requests().back().url.absoluteString());
        view_.answerResponse(status, fields);
      }
      if (isText || view_.lastPolicy() == NavigationPolicy::Allow) {
        view_.finish();
      }
    }
    queues_.runUntil([] { return true; });
  }

 private:
  SimHarness queues_;
  fakes::Journal journal_{queues_.dispatch()};
  fakes::FakeWebView view_{{queues_.dispatch(), journal_}, "page"};
  std::map<std::string, std::pair<int, HeaderFields>> pages_;
  std::size_t loads_ = 0;
};

class LinuxWeb : public WebHarness {
 public:
  LinuxWeb() {
    window_->makeKeyAndOrderFront();
    window_->contentView().addSubviewAbove(*view_, nullptr);
  }
  platform::WebView& view() override {
    if (!started_) {
      started_ = true;
      peer_.start();
    }
    return *view_;
  }
  bool runUntil(const std::function<bool()>& reached) override { return toolkit_.runUntil(reached); }
  std::string server() override { return peer_.url(""); }
  void serve(const std::string& path, int status, const HeaderFields& fields) override {
    std::string answer =
        "HTTP/1.1 " + std::to_string(status) +
        " Some Reason\r\nContent-Type: text/html\r\nContent-Length: 1\r\nConnection: close\r\n";
    for (const auto& [name, value] : fields) {
      answer.append(name).append(": ").append(value).append("\r\n");
    }
    peer_.answer(path, answer + "\r\nx");
  }
  // A script is answered after everything that was on its way.
  void settle() override {
    bool loading = true;
    EXPECT_TRUE(runUntil([&] { return webkit_web_view_is_loading(engine()) == FALSE; }));
    view_->evaluateJavaScript("1", [&](auto, auto) { loading = false; });
    EXPECT_TRUE(runUntil([&] { return !loading; }));
  }

 private:
  WebKitWebView* engine() { return WEBKIT_WEB_VIEW(LinuxToolkit::widget(*view_)); }

  LinuxToolkit toolkit_;
  HttpPeer peer_;
  bool started_ = false;
  std::unique_ptr<platform::Window> window_ = toolkit_.windows().loadWindow("Contract");
  std::unique_ptr<platform::WebView> view_ = toolkit_.windows().makeWebView({0, 0, 640, 480});
};

template <class Harness>
class WebViewContract : public testing::Test {
 protected:
  void SetUp() override {
    harness.serve("/", 200, {});
    harness.serve("/fields", 404, {{"X-Print", "receipt"}, {"x-lower", "y"}});
    delegate.server = harness.server();
    harness.view().setDelegate(&delegate);
  }
  void TearDown() override { harness.view().setDelegate(nullptr); }

  void load(const std::string& path) {
    harness.view().load({*Url::parse(harness.server() + path), {}, Millis{0}, {}});
    harness.settle();
  }

  WebRecorder delegate;
  Harness harness;
};

using Webs = testing::Types<FakeWeb, LinuxWeb>;
TYPED_TEST_SUITE(WebViewContract, Webs);

TYPED_TEST(WebViewContract, TellsOfALoadInItsOrder) {
  EXPECT_FALSE(this->harness.view().url());
  this->load("/");
  EXPECT_EQ(this->delegate.heard.front(), "action /");
  EXPECT_EQ(this->delegate.count("response 200 at /"), 1U);
  EXPECT_EQ(this->delegate.heard.back(), "finish at /");
  EXPECT_EQ(this->delegate.heard.size(), 4U);
  EXPECT_EQ(this->delegate.address(this->harness.view()), "/");
}

TYPED_TEST(WebViewContract, TellsStatusAndFieldsOfAnAnswer) {
  this->load("/fields");
  ASSERT_EQ(this->delegate.responses.size(), 1U);
  const platform::NavigationResponse& response = this->delegate.responses.front();
  EXPECT_TRUE(response.isHttp);
  EXPECT_TRUE(response.isMainFrame);
  EXPECT_EQ(response.statusCode, 404);
  EXPECT_EQ(response.url->absoluteString(), this->harness.server() + "/fields");
  ASSERT_NE(platform::headerValue(response.headers, "X-Print"), nullptr);
  EXPECT_EQ(*platform::headerValue(response.headers, "X-Print"), "receipt");
  ASSERT_NE(platform::headerValue(response.headers, "x-lower"), nullptr);
  EXPECT_EQ(platform::headerValue(response.headers, "X-Lower"), nullptr);
  EXPECT_EQ(this->delegate.heard.back(), "finish at /fields");
}

TYPED_TEST(WebViewContract, ACancelledActionTellsNothingMore) {
  this->delegate.actionPolicy = NavigationPolicy::Cancel;
  this->load("/");
  EXPECT_THAT(this->delegate.heard, ElementsAre("action /"));
  EXPECT_FALSE(this->harness.view().url());
}

TYPED_TEST(WebViewContract, ACancelledResponseFailsWith102) {
  this->load("/");
  this->delegate.heard.clear();
  this->delegate.responsePolicy = NavigationPolicy::Cancel;
  this->load("/fields");
  EXPECT_EQ(this->delegate.heard.back(), "provisional failure 102");
  EXPECT_FALSE(this->delegate.hasHeard("finish at /fields"));
  ASSERT_EQ(this->delegate.errors.size(), 1U);
  EXPECT_EQ(this->delegate.errors.front().failingUrlString, this->harness.server() + "/fields");
  EXPECT_EQ(this->delegate.address(this->harness.view()), "/");
}

TYPED_TEST(WebViewContract, ADecisionThatIsDroppedCountsAsCancel) {
  this->delegate.dropsResponses = true;
  this->load("/");
  EXPECT_EQ(this->delegate.heard.back(), "provisional failure 102");
}

TYPED_TEST(WebViewContract, ATextOfTheSystemsOwnHasTheAddressThatItIsGiven) {
  this->load("/");
  this->delegate.heard.clear();
  this->harness.view().loadHTMLString("<p>text</p>", std::nullopt);
  this->harness.settle();
  EXPECT_FALSE(this->harness.view().url());
  EXPECT_THAT(this->delegate.heard,
              ElementsAre("action about:blank", testing::StartsWith("start at"), "finish at nothing"));
  this->harness.view().loadHTMLString("<p>text</p>", Url::parse(this->harness.server() + "/base"));
  this->harness.settle();
  EXPECT_EQ(this->delegate.address(this->harness.view()), "/base");
  EXPECT_EQ(this->delegate.heard.back(), "finish at /base");
  EXPECT_THAT(this->delegate.errors, IsEmpty());
}

TYPED_TEST(WebViewContract, TellsOfItsMainFrame) {
  FrameRecorder frames;
  frames.server = this->harness.server();
  this->harness.view().setFrameDelegate(&frames);
  this->load("/");
  EXPECT_THAT(frames.heard, ElementsAre("start /", "commit /", "finish /"));
  frames.heard.clear();
  this->load("/fields");
  EXPECT_THAT(frames.heard, ElementsAre("start /fields", "close /", "commit /fields", "finish /fields"));
  ASSERT_EQ(frames.finished.size(), 2U);
  EXPECT_TRUE(frames.finished[1].isMain);
  ASSERT_TRUE(frames.finished[1].response);
  EXPECT_EQ(frames.finished[1].response->statusCode, 404);
  EXPECT_NE(platform::headerValue(frames.finished[1].response->headers, "X-Print"), nullptr);
  frames.heard.clear();
  this->delegate.responsePolicy = NavigationPolicy::Cancel;
  this->load("/");
  EXPECT_THAT(frames.heard, ElementsAre("start /", "provisional failure 102 /"));
  this->harness.view().setFrameDelegate(nullptr);
}

TYPED_TEST(WebViewContract, TheFrameOfATextOfTheSystemsOwnHasNoRequest) {
  FrameRecorder frames;
  this->harness.view().setFrameDelegate(&frames);
  this->harness.view().loadHTMLString("<p>text</p>", std::nullopt);
  this->harness.settle();
  EXPECT_THAT(frames.heard, ElementsAre("start nothing", "commit nothing", "finish nothing"));
  ASSERT_EQ(frames.finished.size(), 1U);
  EXPECT_FALSE(frames.finished[0].response && frames.finished[0].response->isHttp);
  this->harness.view().setFrameDelegate(nullptr);
}

TYPED_TEST(WebViewContract, AnswersForItsAgentAtOnce) {
  platform::WebView& view = this->harness.view();
  EXPECT_FALSE(view.customUserAgent());
  const auto usual = view.stringByEvaluatingJavaScriptFromString("navigator.userAgent");
  ASSERT_TRUE(usual);
  EXPECT_TRUE(usual->starts_with("Mozilla/5.0 (")) << *usual;
  view.setCustomUserAgent("Kiosk/1.0\r\n (Lumo)");
  EXPECT_EQ(view.customUserAgent(), "Kiosk/1.0 (Lumo)");
  EXPECT_EQ(view.stringByEvaluatingJavaScriptFromString("navigator.userAgent"), "Kiosk/1.0 (Lumo)");
  EXPECT_FALSE(view.stringByEvaluatingJavaScriptFromString("1 + 1"));
  std::vector<std::optional<PropertyList>> values;
  view.evaluateJavaScript("navigator.userAgent",
                          [&](std::optional<PropertyList> value, const std::optional<WebError>& error) {
                            EXPECT_FALSE(error);
                            values.push_back(std::move(value));
                          });
  EXPECT_THAT(values, ElementsAre(PropertyList("Kiosk/1.0 (Lumo)")));
}

TYPED_TEST(WebViewContract, APictureComesOnceOnTheMainQueue) {
  this->load("/");
  int pictures = 0;
  this->harness.view().takeSnapshot([&](const std::optional<platform::Image>& image) {
    ASSERT_TRUE(image);
    EXPECT_EQ(image->pixels.size(), static_cast<std::size_t>(image->width * image->height * 4));
    ++pictures;
  });
  EXPECT_EQ(pictures, 0);
  EXPECT_TRUE(this->harness.runUntil([&] { return pictures > 0; }));
  EXPECT_EQ(pictures, 1);
}

}  // namespace

#include <algorithm>
#include <optional>

#include "dropview/MyDragDropView.h"
#include "tests/fakes/fake_drop_view.h"
#include "tests/unit/browser/browser_fixture.h"

namespace {

using browsertest::hasInOrder;
using browsertest::kBrowserWindow;
using browsertest::kUsualFrame;
using fakes::FakeView;
using fakes::FakeWebView;
using fakes::FakeWindow;
using platform::Color;
using platform::Rect;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

const std::string kEngineAgent = "Mozilla/5.0 (X11; Linux x86_64) AppleWebKit/605.1.15 (KHTML, like Gecko)";

using BrowserSetUp = browsertest::BrowserTest;

TEST_F(BrowserSetUp, HidesTheLegacyViewAndPutsTheCurrentOneAboveIt) {
  make();

  EXPECT_THAT(machine.journal.entries(),
              hasInOrder({"windows loadWindow MyWebViewWindowController", "ibWebView setHidden YES",
                          "windows makeWebView webView1",
                          "MyWebViewWindowController contentView addSubview webView1 above ibWebView",
                          "webView1 setHidden NO", "webView1 setFrame {{0, 0}, {1024, 768}}",
                          "MyWebViewWindowController setLevel 25"}));
  EXPECT_TRUE(legacy().isHidden());
  EXPECT_TRUE(legacy().isDormant());
  EXPECT_FALSE(page().isHidden());
  EXPECT_EQ(page().frame(), (Rect{0, 0, 1024, 768}));
  EXPECT_EQ(browser->ibWKWebView, &page());
  EXPECT_EQ(page().delegate(), browser.get());
}

TEST_F(BrowserSetUp, ThePageFollowsTheWindowsSize) {
  makeShown();
  window().resizeByDesktop({0, 0, 1300, 900});

  EXPECT_EQ(page().frame(), (Rect{0, 0, 1300, 900}));
}

TEST_F(BrowserSetUp, UsesTheWebViewOfTheDescriptionWhenThereIsOne) {
  describeWithWebView();
  make();

  auto& view = window().view<FakeWebView>("ibWKWebView");
  EXPECT_EQ(machine.webView(), nullptr);
  EXPECT_EQ(browser->ibWKWebView, &view);
  EXPECT_EQ(view.delegate(), browser.get());
  EXPECT_EQ(view.frame(), (Rect{0, 0, 1024, 768}));
}

TEST_F(BrowserSetUp, FindsItsOutlets) {
  make();

  EXPECT_EQ(browser->ibTextField, window().viewNamed("ibTextField"));
  EXPECT_EQ(browser->ibWebView, window().viewNamed("ibWebView"));
  EXPECT_EQ(browser->ibProgressIndicator, window().viewNamed("ibProgressIndicator"));
  EXPECT_EQ(browser->ibProgressIndicator2, window().viewNamed("ibProgressIndicator2"));
  EXPECT_EQ(browser->ibChildWindow, window().overlay());
  EXPECT_EQ(window().delegate(), browser.get());
  EXPECT_EQ(browser->myPreferencesWindowController, nullptr);
}

TEST_F(BrowserSetUp, GoesThroughItsStepsInOrder) {
  set(lumo::prefClearCacheAtLaunch, true);
  make();

  EXPECT_THAT(
      machine.journal.entries(),
      hasInOrder({"MyWebViewWindowController setLevel 25", "application setMenuBarVisible NO",
                  "windows screens", "MyWebViewWindowController setToolbarVisible NO",
                  "MyWebViewWindowController setTitleVisible NO", "MyWebViewWindowController setStyleMask 15",
                  "application setMenuBarVisible NO", "MyWebViewWindowController setLevel 0",
                  "ibWebView setCustomUserAgent " + kEngineAgent,
                  "webView1 evaluateJavaScript navigator.userAgent", "webView1 disableCache",
                  "ibChildWindow setOpaque NO", "ibChildWindow setBackgroundColor none",
                  "ibChildWindow setAlphaValue 1", "ibChildWindow setFrame {{100, 80}, {1024, 768}}",
                  "ibChildWindow setLevel 25", "progressview setOpacity 0.7"}));
  EXPECT_THAT(log.lines(), hasInOrder({"MyWebViewWindowController->awakeFromNib....",
                                       "MyWebViewWindowController->windowDidLoad....",
                                       "MyWebViewWindowController->makeWindowFullScreen....",
                                       "self.ibWebView.customUserAgent = " + kEngineAgent,
                                       "self.window.frame = {{100, 80}, {1024, 768}}"}));
  EXPECT_EQ(log.count("MyWebViewWindowController->awakeFromNib...."), 1U);
  EXPECT_EQ(log.count("MyWebViewWindowController->windowDidLoad...."), 1U);
  EXPECT_EQ(log.count("MyWebViewWindowController->makeWindowFullScreen...."), 1U);
}

TEST_F(BrowserSetUp, BeginsWithNoPageLoadedAndNoReceiptUnderWay) {
  make();

  EXPECT_TRUE(browser->fFirstTime);
  EXPECT_FALSE(browser->fIsPrintingReceipt);
  EXPECT_EQ(browser->ibWebViewOriginalConstant, 0);
  EXPECT_THAT(page().requests(), IsEmpty());
  EXPECT_FALSE(window().isVisible());
}

TEST_F(BrowserSetUp, ShowingTheWindowGivesThePageTheKeyboard) {
  make().showWindow();

  EXPECT_TRUE(window().isVisible());
  EXPECT_EQ(window().firstResponder(), &page());
}

struct LevelRow {
  std::optional<bool> always;
  int level;
};
class BrowserSetUpLevel : public BrowserSetUp, public testing::WithParamInterface<LevelRow> {};

TEST_P(BrowserSetUpLevel, IsTheStatusLevelFirstAndThenWhatThePreferenceSays) {
  if (GetParam().always) {
    set(lumo::prefWindowAlwaysStatusLevel, *GetParam().always);
  }
  make();

  EXPECT_THAT(machine.journal.startingWith("MyWebViewWindowController setLevel"),
              ElementsAre("MyWebViewWindowController setLevel 25",
                          "MyWebViewWindowController setLevel " + std::to_string(GetParam().level)));
  EXPECT_EQ(window().level(), GetParam().level);
}

INSTANTIATE_TEST_SUITE_P(Preferences, BrowserSetUpLevel,
                         testing::Values(LevelRow{true, 25}, LevelRow{false, 0}, LevelRow{std::nullopt, 0}));

TEST_F(BrowserSetUp, ClearsTheCacheOnlyWhenThePreferenceSaysSo) {
  make();
  EXPECT_FALSE(page().isCacheDisabled());

  set(lumo::prefClearCacheAtLaunch, true);
  make();
  EXPECT_TRUE(page().isCacheDisabled());
}

TEST_F(BrowserSetUp, TheOverlayIsClearAndCoversTheWindowAtTheStatusLevel) {
  make();

  const fakes::FakeOverlay& overlay = *window().overlay();
  EXPECT_FALSE(overlay.isOpaque());
  EXPECT_EQ(overlay.backgroundColor(), std::nullopt);
  EXPECT_EQ(overlay.alphaValue(), 1.0);
  EXPECT_EQ(overlay.frame(), kUsualFrame);
  EXPECT_EQ(overlay.level(), 25);
  EXPECT_FALSE(overlay.isVisible());
}

TEST_F(BrowserSetUp, TheOverlaysShadeIsLightGreyAndSeeThrough) {
  make();

  const auto& shade = window().view<FakeView>("progressview");
  EXPECT_EQ(shade.backgroundColor(), (Color{2.0 / 3, 2.0 / 3, 2.0 / 3, 1}));
  EXPECT_EQ(shade.opacity(), 0.7);
}

TEST_F(BrowserSetUp, DoesWithoutAShadeInTheOverlay) {
  describe([](FakeWindow& described) { described.addOverlay(); });
  make();

  EXPECT_EQ(window().overlay()->level(), 25);
}

TEST_F(BrowserSetUp, TheDropViewCoversThePageAndTakesDropsFromThen) {
  make();

  auto& place = window().view<fakes::FakeDropView>("ibDragDropView");
  const auto dropView = browser->ibDragDropView.lock();
  ASSERT_NE(dropView, nullptr);
  EXPECT_EQ(place.destination(), dropView.get());
  EXPECT_EQ(place.registeredTypes().size(), 2U);
  EXPECT_EQ(dropView->frame(), window().contentView().frame());
  const auto views = window().contentView().subviews();
  EXPECT_LT(std::find(views.begin(), views.end(), &page()), std::find(views.begin(), views.end(), &place));
  EXPECT_THAT(log.lines(),
              hasInOrder({"[MyDragDropView awakeFromNib]", "MyWebViewWindowController->awakeFromNib...."}));
}

TEST_F(BrowserSetUp, TheDropViewGoesWithItsWindow) {
  const std::weak_ptr<lumo::MyDragDropView> dropView = make().ibDragDropView;
  EXPECT_FALSE(dropView.expired());
  browser.reset();
  EXPECT_TRUE(dropView.expired());
}

TEST_F(BrowserSetUp, DoesWithAnEmptyDescription) {
  describe([](FakeWindow& described) { described.setInitialFrame(kUsualFrame); });
  makeShown();
  browser->ibHomeButton({});
  browser->ibBackButton({});
  window().resizeByDesktop({0, 0, 640, 480});
  machine.dispatch.runUntilIdle();

  EXPECT_EQ(browser->ibWebView, nullptr);
  EXPECT_EQ(browser->ibChildWindow, nullptr);
  EXPECT_TRUE(browser->ibDragDropView.expired());
  EXPECT_EQ(page().frame(), (Rect{0, 0, 640, 480}));
  EXPECT_THAT(machine.journal.entries(), Contains("webView1 goBack"));
}

TEST_F(BrowserSetUp, WithoutADescriptionItsCommandsDoNothing) {
  machine.windows.removeDescription(kBrowserWindow);
  set(lumo::prefServerAddress, "http://s/");
  make().showWindow();
  browser->adjustWebViewForNavigationBar({});
  browser->makeWindowFullScreen();
  browser->ibHomeButton({});
  browser->ibGoButton({});
  browser->ibBackButton({});
  browser->ibForwardButton({});
  browser->ibTextButton({});
  browser->ibOpenPreferences({});
  machine.notifications.postNotificationName("ibshownavbarNotification");
  machine.dispatch.runUntilIdle();

  EXPECT_EQ(browser->window(), nullptr);
  EXPECT_THAT(machine.windows.loaded(), ElementsAre(kBrowserWindow));
  EXPECT_EQ(runningAddress(), std::nullopt);
}

TEST_F(BrowserSetUp, HearsNothingMoreOnceItIsGone) {
  makeShown();
  machine.notifications.postNotificationName("ibshownavbarNotification");
  machine.notifications.postNotificationName("LumoNotificationTerminateWithOutRegistrationSave");
  EXPECT_THAT(log.lines(),
              Contains(StartsWith("MyWebViewWindowController->handleTerminateWithOutRegistrationSave:....")));
  EXPECT_FALSE(machine.journal.entries().empty());

  browser.reset();
  log.clear();
  machine.journal.clear();
  machine.notifications.postNotificationName("ibshownavbarNotification");
  machine.notifications.postNotificationName("LumoNotificationTerminateWithOutRegistrationSave");
  machine.dispatch.runUntilIdle();
  EXPECT_THAT(log.lines(), IsEmpty());
  EXPECT_THAT(machine.journal.entries(), IsEmpty());
}

TEST_F(BrowserSetUp, AllBrowserWindowsShareOneQueue) {
  make();
  const lumo::MyWebViewWindowController second(platform, *browser);

  EXPECT_EQ(browser->webviewProcessQueue(), browser->webviewProcessQueue());
  EXPECT_EQ(second.webviewProcessQueue(), browser->webviewProcessQueue());
  EXPECT_EQ(machine.windows.webViews().size(), 2U);
}

struct LabelRow {
  std::optional<std::string> identifier;
  std::string label;
};
class BrowserQueueLabel : public testing::TestWithParam<LabelRow> {};

TEST_P(BrowserQueueLabel, IsTheBundlesIdentifierAndTheSelectorsName) {
  const fakes::CapturedLog log;
  fakes::TestBundle::Info info;
  if (GetParam().identifier) {
    info.emplace_back("CFBundleIdentifier", *GetParam().identifier);
  }
  fakes::TestPlatform machine(info);
  platform::Platform platform = machine.platform();
  const lumo::MyWebViewWindowController browser(platform);

  EXPECT_EQ(browser.webviewProcessQueue().label(), GetParam().label);
}

INSTANTIATE_TEST_SUITE_P(
    Identifiers, BrowserQueueLabel,
    testing::Values(LabelRow{"org.example.Kiosk", "org.example.Kiosk.taskqueue1.webviewProcessQueue"},
                    LabelRow{"", "com.lumo.LumoBrowser.taskqueue1.webviewProcessQueue"},
                    LabelRow{std::nullopt, "com.lumo.LumoBrowser.taskqueue1.webviewProcessQueue"}));

}  // namespace

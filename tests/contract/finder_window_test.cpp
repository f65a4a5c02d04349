#include <optional>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/PreferenceKeys.h"
#include "discovery/FindLumoJunivaServerWindowController.h"
#include "tests/contract/toolkit_harness.h"
#include "tests/fakes/captured_log.h"
#include "tests/fakes/test_platform.h"
#include "tests/unit/discovery/scripted_network.h"

// The server finder's real window over a scripted network.

namespace {

using fakes::FakeHttpClient;

class FinderSheetTest : public testing::Test {
 protected:
  using Finder = lumo::FindLumoJunivaServerWindowController;

  void SetUp() override {
    network.setLocalAddress("10.0.1.7");
    http.setOtherwise(
        [](const std::string&) { return FakeHttpClient::Answer{FakeHttpClient::error("no route")}; });
    ASSERT_NE(parent, nullptr);
    parent->makeKeyAndOrderFront();
    finder = Finder::make(platform, network.get());
    ASSERT_NE(finder->window(), nullptr);
    parent->beginSheet(*finder->window(), [this](int code) { endedWith = code; });
    ASSERT_TRUE(harness.runUntil([&] { return sheet().frame().width > 0; }));
  }
  void TearDown() override {
    finder.reset();
    // Requests that are open have their answers before the client goes.
    EXPECT_TRUE(harness.runUntil([&] { return http.open() == 0; }));
  }

  void serve(const std::string& address, const std::string& name) {
    http.answer("http://" + address + ":9090", FakeHttpClient::status(200, {{"Server", name}}));
  }
  void scan() {
    harness.press(sheet(), "ibScanButton");
    ASSERT_TRUE(harness.runUntil(
        [&] { return finder->fFoundList() && gtk_widget_is_sensitive(widget("ibScanButton")) != FALSE; }));
  }
  platform::Window& sheet() { return *finder->window(); }
  GtkWidget* widget(const std::string& name) { return LinuxToolkit::widget(sheet(), name); }
  bool isSeen(const std::string& name) { return gtk_widget_get_mapped(widget(name)) != FALSE; }

  fakes::CapturedLog log;
  LinuxToolkit harness;
  fakes::TestPlatform machine;
  FakeHttpClient http{harness.dispatch()};
  platform::Platform platform{
      harness.dispatch(), machine.application,   harness.windows(),      machine.bus, http,
      machine.defaults,   machine.notifications, machine.bundle.bundle()};
  discoverytest::ScriptedNetwork network;
  std::unique_ptr<platform::Window> parent = harness.windows().loadWindow("MyWebViewWindowController");
  std::shared_ptr<Finder> finder;
  std::optional<int> endedWith;
};

TEST_F(FinderSheetTest, HasEveryElementUnderItsTagAndName) {
  EXPECT_EQ(sheet().viewWithTag(3000), sheet().viewNamed("ibScanButton"));
  for (int index = 0; index < 10; ++index) {
    platform::View* choice = sheet().viewWithTag(5000 + index);
    ASSERT_NE(choice, nullptr);
    EXPECT_TRUE(choice->isKindOf(platform::ViewKind::Button));
    EXPECT_EQ(choice, sheet().viewNamed("ibChoiceButton" + std::to_string(index)));
    EXPECT_TRUE(choice->isHidden());
  }
  EXPECT_LT(sheet().viewNamed("ibCloseButton")->tag().value(), 5000);
  for (const char* name : {"fScanningResultString", "fBottomLineString", "fVersionString"}) {
    EXPECT_NE(dynamic_cast<platform::TextField*>(sheet().viewNamed(name)), nullptr) << name;
  }
  EXPECT_NE(dynamic_cast<platform::ProgressIndicator*>(sheet().viewNamed("fProgressIndicator")), nullptr);
}

TEST_F(FinderSheetTest, OffersTheScanFirstWithItsTexts) {
  EXPECT_TRUE(harness.runUntil(
      [&] { return finder->fBottomLineString == "NOT connected to any network - will use localhost"; }));
  EXPECT_STREQ(gtk_button_get_label(GTK_BUTTON(widget("ibScanButton"))), "Scan for Juniva Server(s)...");
  EXPECT_EQ(gtk_label_get_text(GTK_LABEL(widget("fBottomLineString"))), finder->fBottomLineString);
  EXPECT_EQ(gtk_label_get_text(GTK_LABEL(widget("fVersionString"))), finder->fVersionString);
  EXPECT_EQ(gtk_window_get_focus(LinuxToolkit::toplevel(*parent)), widget("ibScanButton"));
}

TEST_F(FinderSheetTest, ShowsStatusLineAndBarOnlyWhileTheyHaveSomethingToSay) {
  EXPECT_FALSE(isSeen("fScanningResultString"));
  EXPECT_FALSE(isSeen("fProgressIndicator"));
  harness.press(sheet(), "ibScanButton");
  EXPECT_TRUE(
      harness.runUntil([&] { return isSeen("fScanningResultString") && isSeen("fProgressIndicator"); }));
  ASSERT_TRUE(harness.runUntil(
      [&] { return finder->fFoundList() && gtk_widget_is_sensitive(widget("ibScanButton")) != FALSE; }));
  EXPECT_FALSE(isSeen("fProgressIndicator"));
}

TEST_F(FinderSheetTest, ListsTheServersAndTakesTheOneThatIsPressed) {
  serve("10.0.1.30", "Lumo-Juniva/2.1");
  serve("10.0.1.7", "Lumo-Juniva/2.1");
  scan();
  ASSERT_TRUE(harness.runUntil([&] { return isSeen("ibChoiceButton1"); }));
  EXPECT_FALSE(isSeen("ibChoiceButton2"));
  EXPECT_STREQ(gtk_button_get_label(GTK_BUTTON(widget("ibChoiceButton0"))),
               "Select [localhost (This Computer) - Lumo-Juniva/2.1]");
  EXPECT_EQ(gtk_progress_bar_get_fraction(GTK_PROGRESS_BAR(widget("fProgressIndicator"))), 1);
  harness.press(sheet(), "ibChoiceButton1");
  EXPECT_EQ(endedWith, 1);
  const auto record = machine.defaults.dictionaryForKey(lumo::prefSelectedJunivaServerInfo);
  ASSERT_TRUE(record);
  EXPECT_EQ(*record->find("urlstring"), platform::PropertyList("http://10.0.1.30:9090"));
}

TEST_F(FinderSheetTest, SaysThatThereIsNoneInBlackLetters) {
  scan();
  const std::string text =
      "\n\n!!  NO Juniva Server Found  !!\n\nPlease make sure juniva server is running your network...";
  EXPECT_TRUE(harness.runUntil(
      [&] { return gtk_label_get_text(GTK_LABEL(widget("fScanningResultString"))) == text; }));
  EXPECT_TRUE(isSeen("fScanningResultString"));
  GdkRGBA colour;
  // What newer toolkits have in its place is not in Debian 12's.
  G_GNUC_BEGIN_IGNORE_DEPRECATIONS
  gtk_style_context_get_color(gtk_widget_get_style_context(widget("fScanningResultString")), &colour);
  G_GNUC_END_IGNORE_DEPRECATIONS
  EXPECT_EQ(colour.red + colour.green + colour.blue, 0);
  EXPECT_EQ(colour.alpha, 1);
}

TEST_F(FinderSheetTest, StaysInItsWindowWithTenServersOfLongNames) {
  const platform::Rect before = sheet().frame();
  for (int number = 1; number <= 12; ++number) {
    serve("10.0.1." + std::to_string(number), "Lumo-Juniva " + std::string(20'000, 'x'));
  }
  scan();
  ASSERT_TRUE(harness.runUntil([&] { return sheet().frame().height > before.height; }));
  EXPECT_EQ(sheet().frame().width, before.width);
  EXPECT_LE(sheet().frame().height, parent->frame().height);
  EXPECT_EQ(dynamic_cast<platform::Button&>(*sheet().viewWithTag(5009)).title().size(),
            std::string("Select [10.0.1.10 - Lumo-Juniva ]").size() + 20'000);
}

}  // namespace

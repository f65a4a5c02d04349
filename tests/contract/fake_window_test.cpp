#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/fakes/captured_log.h"
#include "tests/fakes/test_platform.h"

namespace {

using fakes::FakeButton;
using fakes::FakeTextField;
using fakes::FakeView;
using fakes::FakeWebView;
using fakes::FakeWindow;
using platform::Alert;
using platform::AlertResponse;
using platform::Rect;
using testing::ElementsAre;

Alert question(const std::string& text) {
  Alert alert;
  alert.messageText = text;
  alert.addButtonWithTitle("OK");
  alert.addButtonWithTitle("Cancel");
  return alert;
}

class Delegate : public platform::WindowDelegate {
 public:
  bool windowShouldClose(platform::Window&) override { return closes; }
  void windowDidResize(platform::Window&) override { ++resized; }
  void windowDidEnterFullScreen(platform::Window&) override { ++fullScreens; }

  bool closes = false;
  int resized = 0;
  int fullScreens = 0;
};

class FakeWindowTest : public testing::Test {
 protected:
  std::unique_ptr<FakeWindow> load(const std::string& name) {
    auto window = machine.windows.loadWindow(name);
    return std::unique_ptr<FakeWindow>(dynamic_cast<FakeWindow*>(window.release()));
  }

  fakes::TestPlatform machine;
  Delegate delegate;
  std::unique_ptr<FakeWindow> window = load("MyWebViewWindowController");
  std::unique_ptr<FakeWindow> sheet = load("MyPreferencesWindowController");
};

TEST_F(FakeWindowTest, ShowsOneAlertAtATimeAndTheNextBeforeTheAnswerArrives) {
  std::vector<std::string> answers;
  window->beginAlert(question("first"), [&](const AlertResponse& response) {
    answers.push_back("first " + std::to_string(response.code) + ", then " +
                      window->currentAlert()->messageText);
  });
  window->beginAlert(question("second"), [&](const AlertResponse& response) {
    answers.push_back("second " + std::to_string(response.code) + " " + response.text);
  });
  ASSERT_NE(window->currentAlert(), nullptr);
  EXPECT_EQ(window->currentAlert()->messageText, "first");
  EXPECT_EQ(window->shownAlerts().size(), 1U);

  window->answerAlert(platform::kAlertSecondButtonReturn);
  window->pressAlertButton("OK", "typed");

  EXPECT_THAT(answers, ElementsAre("first 1001, then second", "second 1000 typed"));
  EXPECT_EQ(window->currentAlert(), nullptr);
}

TEST_F(FakeWindowTest, RefusesAnAnswerThatNoButtonGives) {
  EXPECT_THROW(window->answerAlert(1000), std::logic_error);
  window->beginAlert(question("first"), {});
  EXPECT_THROW(window->answerAlert(1002), std::logic_error);
  EXPECT_THROW(window->pressAlertButton("Retry"), std::logic_error);
  EXPECT_NE(window->currentAlert(), nullptr);
}

TEST_F(FakeWindowTest, TheOverlayHasAlertsOfItsOwn) {
  window->beginAlert(question("below"), {});
  window->overlay()->beginAlert(question("above"), {});

  EXPECT_EQ(window->currentAlert()->messageText, "below");
  EXPECT_EQ(window->overlay()->currentAlert()->messageText, "above");
}

TEST_F(FakeWindowTest, ASheetWaitsForAnAlertAndIsVisibleInItsTurn) {
  std::vector<int> codes;
  window->beginAlert(question("first"), {});
  window->beginSheet(*sheet, [&](int code) { codes.push_back(code); });
  EXPECT_EQ(sheet->sheetParent(), window.get());
  EXPECT_FALSE(sheet->isVisible());

  window->answerAlert(1000);
  EXPECT_TRUE(sheet->isVisible());
  EXPECT_EQ(window->currentSheet(), sheet.get());

  window->endSheet(*sheet, 7);
  EXPECT_THAT(codes, ElementsAre(7));
  EXPECT_FALSE(sheet->isVisible());
  EXPECT_EQ(sheet->sheetParent(), nullptr);
  window->endSheet(*sheet, 8);
  EXPECT_THAT(codes, ElementsAre(7));
}

TEST_F(FakeWindowTest, ASheetThatGoesMakesRoomForTheNextAlert) {
  window->beginSheet(*sheet, [](int) { FAIL() << "a sheet that went was not ended"; });
  window->beginAlert(question("next"), {});
  sheet.reset();

  ASSERT_NE(window->currentAlert(), nullptr);
  EXPECT_EQ(window->currentAlert()->messageText, "next");
}

TEST_F(FakeWindowTest, AUsualWindowIsNoSheet) {
  const auto other = load("MyWebViewWindowController");
  const fakes::CapturedLog log;
  window->beginSheet(*other, {});

  EXPECT_EQ(other->sheetParent(), nullptr);
  EXPECT_EQ(log.lines().size(), 1U);
}

TEST_F(FakeWindowTest, AClosingPersonAsksTheDelegateFirst) {
  window->setDelegate(&delegate);
  window->makeKeyAndOrderFront();
  EXPECT_FALSE(window->requestClose());
  EXPECT_TRUE(window->isVisible());
  delegate.closes = true;
  EXPECT_TRUE(window->requestClose());
  EXPECT_FALSE(window->isVisible());
}

TEST_F(FakeWindowTest, PerformsTheActionOfAPressedControl) {
  platform::View* sender = nullptr;
  window->setAction("ibToolbarGoButton:", [&](platform::View& view) { sender = &view; });

  EXPECT_TRUE(window->press("goButton"));
  EXPECT_EQ(sender, window->viewNamed("goButton"));
}

TEST_F(FakeWindowTest, AControlThatAPersonCannotReachIsNotPressed) {
  int presses = 0;
  window->setAction("ibToolbarGoButton:", [&](platform::View&) { ++presses; });
  auto& button = window->view<FakeButton>("goButton");

  button.setEnabled(false);
  EXPECT_FALSE(window->press("goButton"));
  button.setEnabled(true);
  window->view<FakeView>("toolbar").setHidden(true);
  EXPECT_FALSE(window->press("goButton"));
  window->view<FakeView>("toolbar").setHidden(false);
  window->beginAlert(question("first"), {});
  EXPECT_FALSE(window->press("goButton"));
  window->answerAlert(1000);

  EXPECT_TRUE(window->press("goButton"));
  EXPECT_EQ(presses, 1);
}

TEST_F(FakeWindowTest, AnActionWithoutAHandlerIsLogged) {
  const fakes::CapturedLog log;
  EXPECT_FALSE(window->pressAction("ibNothing:", window->contentView()));
  EXPECT_THAT(log.lines(), ElementsAre("nothing is set for the action ibNothing:"));
}

TEST_F(FakeWindowTest, WhatCoversTheContentFollowsTheWindowAndTheDelegateHearsOfIt) {
  window->setDelegate(&delegate);
  window->makeKeyAndOrderFront();
  machine.dispatch.runUntilIdle();
  delegate.resized = 0;
  window->setFrame({0, 0, 1920, 1080}, true);
  EXPECT_EQ(delegate.resized, 0);
  machine.dispatch.runUntilIdle();

  EXPECT_EQ(delegate.resized, 1);
  EXPECT_EQ(window->viewNamed("ibWebView")->frame(), (Rect{0, 0, 1920, 1080}));
  window->setFrame({10, 0, 1920, 1080}, false);
  machine.dispatch.runUntilIdle();
  EXPECT_EQ(delegate.resized, 1);
}

TEST_F(FakeWindowTest, TogglesIntoTheFullScreenAndOutOfAWindowThatCoversTheScreen) {
  window->setDelegate(&delegate);
  const Rect usual = window->frame();
  window->toggleFullScreen();
  machine.dispatch.runUntilIdle();
  EXPECT_TRUE(window->isFullScreen());
  EXPECT_EQ(delegate.fullScreens, 1);
  window->toggleFullScreen();
  EXPECT_FALSE(window->isFullScreen());
  EXPECT_EQ(window->frame(), usual);

  window->setFrame(machine.windows.screens().front(), true);
  window->toggleFullScreen();
  EXPECT_FALSE(window->isFullScreen());
  EXPECT_EQ(window->frame(), usual);
}

TEST_F(FakeWindowTest, GivesTheKeyboardOnlyToViewsThatCanTakeIt) {
  auto& field = window->view<FakeTextField>("ibTextField");
  EXPECT_TRUE(window->makeFirstResponder(field));
  EXPECT_EQ(window->firstResponder(), &field);
  EXPECT_FALSE(window->makeFirstResponder(window->view<FakeView>("toolbar")));
  EXPECT_TRUE(window->makeFirstResponder(*window->viewNamed("ibWebView")));
  field.setHidden(true);
  EXPECT_FALSE(window->makeFirstResponder(field));
  EXPECT_FALSE(window->makeFirstResponder(sheet->view<FakeButton>("ibCloseButton")));
}

TEST_F(FakeWindowTest, FindsViewsByNameAndTag) {
  const auto finder = load("FindLumoJunivaServerWindowController");
  EXPECT_EQ(finder->viewWithTag(3000), finder->viewNamed("ibScanButton"));
  EXPECT_EQ(finder->viewWithTag(5009), finder->viewNamed("ibChoiceButton9"));
  EXPECT_EQ(finder->viewWithTag(5010), nullptr);
  EXPECT_EQ(finder->viewNamed("ibWKWebView"), nullptr);
  EXPECT_THROW(finder->view<FakeTextField>("ibScanButton"), std::logic_error);
}

TEST_F(FakeWindowTest, ViewsAndWindowsMayGoInAnyOrder) {
  auto web = machine.windows.makeWebView({0, 0, 10, 10});
  window->contentView().addSubviewAbove(*web, window->viewNamed("ibWebView"));
  EXPECT_EQ(web->window(), window.get());
  EXPECT_EQ(window->contentView().subviews().at(1), web.get());
  window.reset();
  EXPECT_EQ(web->superview(), nullptr);
  EXPECT_EQ(web->window(), nullptr);
  EXPECT_EQ(machine.window(), nullptr);
  EXPECT_EQ(machine.webView(), dynamic_cast<FakeWebView*>(web.get()));
  web.reset();
  EXPECT_EQ(machine.webView(), nullptr);
}

TEST_F(FakeWindowTest, AMissingDescriptionGivesNoWindowAndALine) {
  machine.windows.removeDescription("MyPreferencesWindowController");
  const fakes::CapturedLog log;
  EXPECT_EQ(machine.windows.loadWindow("MyPreferencesWindowController"), nullptr);
  EXPECT_THAT(log.lines(), ElementsAre("there is no window description MyPreferencesWindowController"));
}

TEST_F(FakeWindowTest, OneJournalKeepsTheOrderOfAllObjects) {
  machine.journal.clear();
  window->setLevel(25);
  machine.application.beep();
  machine.dispatch.advance(platform::Millis{30});
  window->overlay()->orderFrontRegardless();
  machine.bus.postNotification({"lumoXNotification", {}, {}});

  EXPECT_THAT(machine.journal.timed(),
              ElementsAre("0 MyWebViewWindowController setLevel 25", "0 application beep",
                          "30 ibChildWindow orderFrontRegardless", "30 bus post lumoXNotification"));
  EXPECT_TRUE(machine.journal.isBefore("application beep", "bus post lumoXNotification"));
  EXPECT_FALSE(machine.journal.isBefore("bus post lumoXNotification", "application beep"));
  EXPECT_FALSE(machine.journal.isBefore("application beep", "application terminate"));
  EXPECT_FALSE(machine.journal.isBefore("application terminate", "application beep"));
}

}  // namespace

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/contract/toolkit_harness.h"
#include "tests/fakes/captured_log.h"

namespace {

using platform::Alert;
using platform::AlertResponse;
using platform::Rect;
using platform::View;
using platform::Window;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

Alert question(const std::string& text, const std::vector<std::string>& buttons = {"OK", "Cancel"}) {
  Alert alert;
  alert.messageText = text;
  for (const std::string& button : buttons) {
    alert.addButtonWithTitle(button);
  }
  return alert;
}

class Delegate : public platform::WindowDelegate {
 public:
  bool windowShouldClose(Window&) override {
    ++asked;
    return closes;
  }
  void windowDidResize(Window& window) override { sizes.push_back(window.contentView().frame()); }
  void windowDidEnterFullScreen(Window&) override {}

  bool closes = false;
  int asked = 0;
  std::vector<Rect> sizes;
};

template <class Harness>
class WindowContract : public ToolkitTest<Harness> {
 protected:
  std::unique_ptr<Window> makeSheet() { return this->harness.windows().loadWindow("ContractSheet"); }
  // Notes an alert's answer: "TEXT CODE" and what was written.
  platform::AlertCompletion noting(const std::string& text) {
    return [this, text](const AlertResponse& response) {
      answers.push_back(text + " " + std::to_string(response.code) +
                        (response.text.empty() ? "" : " " + response.text));
    };
  }
  std::function<void(int)> notingCode(const std::string& text) {
    return [this, text](int code) { answers.push_back(text + " " + std::to_string(code)); };
  }
  std::vector<std::string> shown() { return this->harness.shownAlerts(*this->window); }
  void answer(const std::string& text, const std::string& button, const std::string& written = "") {
    this->harness.answer(*this->window, text, button, written);
  }

  Delegate delegate;
  std::vector<std::string> answers;
};

TYPED_TEST_SUITE(WindowContract, Toolkits);

TYPED_TEST(WindowContract, AMissingDescriptionGivesNoWindowAndALine) {
  const fakes::CapturedLog log;
  EXPECT_EQ(this->harness.windows().loadWindow("Nowhere"), nullptr);
  EXPECT_TRUE(log.contains("there is no window description Nowhere")) << log.text();
}

TYPED_TEST(WindowContract, AnActionReachesItsHandlerWithItsSender) {
  std::vector<View*> senders;
  const auto note = [&](View& sender) { senders.push_back(&sender); };
  this->window->setAction("press:", note);
  this->window->setAction("enter:", note);
  this->harness.press(*this->window, "button");
  this->harness.press(*this->window, "field");
  EXPECT_THAT(senders, ElementsAre(&this->view("button"), &this->view("field")));
}

TYPED_TEST(WindowContract, ASegmentedControlTellsTheSegmentThatWasPressed) {
  std::vector<int> segments;
  this->window->setAction("choose:", [&](View& sender) {
    EXPECT_EQ(&sender, &this->view("segments"));
    segments.push_back(dynamic_cast<platform::SegmentedControl&>(sender).selectedSegment());
  });
  for (const int segment : {1, 0, 2}) {
    this->harness.pressSegment(*this->window, "segments", segment);
  }
  EXPECT_THAT(segments, ElementsAre(1, 0, 2));
}

TYPED_TEST(WindowContract, AnActionThatNothingIsSetForIsLogged) {
  const fakes::CapturedLog log;
  this->harness.press(*this->window, "unset");
  EXPECT_THAT(log.lines(), ElementsAre("nothing is set for the action nobody:"));
  this->window->setAction("press:", [](View&) { FAIL(); });
  this->window->setAction("press:", {});
  this->harness.press(*this->window, "button");
  EXPECT_THAT(log.lines(),
              ElementsAre("nothing is set for the action nobody:", "nothing is set for the action press:"));
}

TYPED_TEST(WindowContract, KeepsTitleLevelAndStyle) {
  EXPECT_EQ(this->window->title(), "Contract");
  this->window->setTitle("Prüfung");
  EXPECT_EQ(this->window->title(), "Prüfung");
  EXPECT_EQ(this->window->level(), platform::kNormalWindowLevel);
  this->window->setLevel(platform::kStatusWindowLevel);
  EXPECT_EQ(this->window->level(), platform::kStatusWindowLevel);
  const unsigned mask = this->window->styleMask();
  EXPECT_EQ(mask & platform::kStyleMaskFullSizeContentView, 0U);
  this->window->setStyleMask(mask | platform::kStyleMaskFullSizeContentView);
  EXPECT_EQ(this->window->styleMask(), mask | platform::kStyleMaskFullSizeContentView);
}

TYPED_TEST(WindowContract, TellsItsDelegateOfEachChangeOfSizeOnceItIsThere) {
  // The first layout is news too, and may still be on its way.
  bool told = false;
  this->harness.dispatch().main().async([&] { told = true; });
  EXPECT_TRUE(this->harness.runUntil([&] { return told; }));
  this->window->setDelegate(&this->delegate);
  const Rect bigger{0, 0, 700, 500};
  const Rect smaller{0, 0, 500, 400};
  this->window->setFrame(bigger, false);
  EXPECT_TRUE(this->harness.runUntil([&] { return this->delegate.sizes.size() == 1; }));
  this->window->setFrame(smaller, true);
  EXPECT_TRUE(this->harness.runUntil([&] { return this->delegate.sizes.size() == 2; }));
  EXPECT_EQ(this->window->frame(), smaller);
  // What changes no size is no news, nor is the same size again.
  this->window->setTitle("Other");
  this->view("first").setHidden(true);
  this->view("field").setHidden(true);
  this->window->setFrame(smaller, false);
  bool over = false;
  this->view("second").animateOpacity(0, platform::Millis{100}, [&] { over = true; });
  EXPECT_TRUE(this->harness.runUntil([&] { return over; }));
  EXPECT_THAT(this->delegate.sizes, ElementsAre(bigger, smaller));

  this->window->setDelegate(nullptr);
  this->window->setFrame(bigger, false);
  EXPECT_TRUE(this->harness.runUntil([&] { return this->window->contentView().frame() == bigger; }));
  EXPECT_EQ(this->delegate.sizes.size(), 2U);
}

TYPED_TEST(WindowContract, CoversTheScreenWhenItIsGivenItsFrame) {
  ASSERT_FALSE(this->harness.windows().screens().empty());
  const Rect screen = this->harness.windows().screens().front();
  this->window->setFrame({40, 30, 500, 400}, false);
  EXPECT_TRUE(this->harness.runUntil([&] { return this->window->frame() == Rect{40, 30, 500, 400}; }));
  this->window->setFrame(screen, true);
  EXPECT_TRUE(this->harness.runUntil([&] { return this->window->frame() == screen; }))
      << platform::description(this->window->frame());
  EXPECT_TRUE(this->harness.runUntil([&] {
    return this->window->contentView().frame() == Rect{0, 0, screen.width, screen.height};
  }));
  this->window->toggleFullScreen();
  EXPECT_TRUE(this->harness.runUntil([&] {
    return this->window->frame() == Rect{40, 30, 500, 400};
  })) << platform::description(this->window->frame());
}

TYPED_TEST(WindowContract, APersonClosesItWhenTheDelegateAllows) {
  this->window->setDelegate(&this->delegate);
  this->harness.requestClose(*this->window);
  EXPECT_TRUE(this->harness.runUntil([&] { return this->delegate.asked == 1; }));
  EXPECT_TRUE(this->window->isVisible());
  this->delegate.closes = true;
  this->harness.requestClose(*this->window);
  EXPECT_TRUE(this->harness.runUntil([&] { return !this->window->isVisible(); }));
  this->window->makeKeyAndOrderFront();
  EXPECT_TRUE(this->window->isVisible());
  this->window->close();
  EXPECT_FALSE(this->window->isVisible());
  EXPECT_EQ(this->delegate.asked, 2);
}

TYPED_TEST(WindowContract, GivesTheKeyboardOnlyToWhatCanTakeIt) {
  EXPECT_TRUE(this->window->makeFirstResponder(this->view("field")));
  EXPECT_TRUE(this->window->makeFirstResponder(this->view("button")));
  EXPECT_FALSE(this->window->makeFirstResponder(this->view("first")));
  this->view("field").setHidden(true);
  EXPECT_FALSE(this->window->makeFirstResponder(this->view("field")));
  dynamic_cast<platform::Button&>(this->view("button")).setEnabled(false);
  EXPECT_FALSE(this->window->makeFirstResponder(this->view("button")));
  const auto sheet = this->makeSheet();
  EXPECT_FALSE(this->window->makeFirstResponder(*sheet->viewNamed("name")));
}

TYPED_TEST(WindowContract, ShowsOneAlertAtATimeInTheirOrder) {
  this->window->beginAlert(question("first"), this->noting("first"));
  this->window->beginAlert(question("second"), this->noting("second"));
  this->window->beginAlert(question("third"), this->noting("third"));
  EXPECT_THAT(this->shown(), ElementsAre("first"));
  this->answer("first", "Cancel");
  EXPECT_THAT(this->shown(), ElementsAre("second"));
  this->answer("second", "OK");
  EXPECT_THAT(this->shown(), ElementsAre("third"));
  this->answer("third", "OK");
  EXPECT_THAT(this->shown(), IsEmpty());
  EXPECT_THAT(this->answers, ElementsAre("first 1001", "second 1000", "third 1000"));
}

TYPED_TEST(WindowContract, TheNextAlertIsThereWhenTheAnswerArrives) {
  std::vector<std::string> seen;
  this->window->beginAlert(question("first"), [&](const AlertResponse&) { seen = this->shown(); });
  this->window->beginAlert(question("second"), {});
  this->answer("first", "OK");
  EXPECT_THAT(seen, ElementsAre("second"));
  this->answer("second", "OK");
  EXPECT_THAT(this->shown(), IsEmpty());
}

TYPED_TEST(WindowContract, AnAnswerMayAskTheNextQuestion) {
  this->window->beginAlert(question("first"), [&](const AlertResponse&) {
    this->window->beginAlert(question("second"), this->noting("second"));
  });
  this->answer("first", "OK");
  EXPECT_THAT(this->shown(), ElementsAre("second"));
  this->answer("second", "OK");
  EXPECT_THAT(this->answers, ElementsAre("second 1000"));
}

TYPED_TEST(WindowContract, AnAlertGivesTheTagOfItsButtonAndTheTextOfItsField) {
  Alert alert = question("name", {});
  alert.addButtonWithTitle("Take", 7);
  alert.addButtonWithTitle("Cancel", 0);
  alert.hasTextField = true;
  alert.textFieldValue = "suggested";
  this->window->beginAlert(alert, this->noting("name"));
  this->answer("name", "Take", "wirklich");
  EXPECT_THAT(this->answers, ElementsAre("name 7 wirklich"));
}

TYPED_TEST(WindowContract, TheOverlayHasAlertsOfItsOwn) {
  ASSERT_NE(this->window->overlay(), nullptr);
  this->window->beginAlert(question("below"), this->noting("below"));
  this->window->overlay()->beginAlert(question("above"), this->noting("above"));
  EXPECT_THAT(this->shown(), ElementsAre("below", "above"));
  this->answer("above", "OK");
  EXPECT_THAT(this->shown(), ElementsAre("below"));
  this->answer("below", "OK");
  EXPECT_THAT(this->answers, ElementsAre("above 1000", "below 1000"));
}

TYPED_TEST(WindowContract, AnAlertOfTheApplicationWaitsForNoSheetAndNoOtherAlert) {
  const auto sheet = this->makeSheet();
  this->window->beginSheet(*sheet, this->notingCode("sheet"));
  sheet->beginAlert(question("below"), this->noting("below"));
  this->harness.windows().beginApplicationAlert(question("above", {"Quit"}), this->noting("above"));
  EXPECT_THAT(this->shown(), UnorderedElementsAre("below", "above"));
  this->answer("above", "Quit");
  EXPECT_THAT(this->answers, ElementsAre("above 1000"));
  EXPECT_THAT(this->shown(), ElementsAre("below"));
  this->answer("below", "OK");
  this->window->endSheet(*sheet, 1);
  EXPECT_THAT(this->answers, ElementsAre("above 1000", "below 1000", "sheet 1"));
}

TYPED_TEST(WindowContract, AlertsOfTheApplicationWaitForEachOther) {
  for (const char* text : {"first", "second"}) {
    this->harness.windows().beginApplicationAlert(question(text), this->noting(text));
  }
  EXPECT_THAT(this->shown(), ElementsAre("first"));
  this->answer("first", "Cancel");
  EXPECT_THAT(this->shown(), ElementsAre("second"));
  this->answer("second", "OK");
  EXPECT_THAT(this->answers, ElementsAre("first 1001", "second 1000"));
}

TYPED_TEST(WindowContract, TheOverlayIsAWindowOfItsOwn) {
  platform::Overlay& overlay = *this->window->overlay();
  EXPECT_FALSE(overlay.isVisible());
  overlay.orderFrontRegardless();
  EXPECT_TRUE(overlay.isVisible());
  overlay.setLevel(26);
  EXPECT_EQ(overlay.level(), 26);
  overlay.setFrame(this->window->frame());
  EXPECT_EQ(overlay.frame(), this->window->frame());
  EXPECT_EQ(overlay.contentView().superview(), nullptr);
  EXPECT_EQ(overlay.contentView().window(), this->window.get());
  ASSERT_EQ(overlay.contentView().subviews().size(), 1U);
  EXPECT_EQ(overlay.contentView().subviews().front()->identifier(), "shade");
  overlay.orderOut();
  EXPECT_FALSE(overlay.isVisible());
}

TYPED_TEST(WindowContract, ASheetIsEndedOnceWithItsCode) {
  const auto sheet = this->makeSheet();
  EXPECT_FALSE(sheet->isVisible());
  this->window->beginSheet(*sheet, this->notingCode("sheet"));
  EXPECT_TRUE(sheet->isVisible());
  EXPECT_EQ(sheet->sheetParent(), this->window.get());
  this->window->endSheet(*sheet, 7);
  EXPECT_FALSE(sheet->isVisible());
  EXPECT_EQ(sheet->sheetParent(), nullptr);
  this->window->endSheet(*sheet, 8);
  EXPECT_THAT(this->answers, ElementsAre("sheet 7"));
  this->window->beginSheet(*sheet, this->notingCode("again"));
  EXPECT_TRUE(sheet->isVisible());
  this->window->endSheet(*sheet, 9);
  EXPECT_THAT(this->answers, ElementsAre("sheet 7", "again 9"));
}

TYPED_TEST(WindowContract, ASheetsControlsActOnTheSheet) {
  const auto sheet = this->makeSheet();
  sheet->setAction("close:", [&](View& sender) {
    EXPECT_EQ(&sender, sheet->viewNamed("close"));
    EXPECT_EQ(sender.window(), sheet.get());
    this->window->endSheet(*sheet, 3);
  });
  this->window->beginSheet(*sheet, this->notingCode("sheet"));
  EXPECT_TRUE(this->harness.runUntil([&] {
    this->harness.press(*sheet, "close");
    return !this->answers.empty();
  }));
  EXPECT_THAT(this->answers, ElementsAre("sheet 3"));
}

TYPED_TEST(WindowContract, WhatIsBehindASheetIsNotUsed) {
  int presses = 0;
  this->window->setAction("press:", [&](View&) { ++presses; });
  const auto sheet = this->makeSheet();
  this->window->beginSheet(*sheet, {});
  this->harness.press(*this->window, "button");
  EXPECT_EQ(presses, 0);
  this->window->endSheet(*sheet, 0);
  this->harness.press(*this->window, "button");
  EXPECT_EQ(presses, 1);
}

TYPED_TEST(WindowContract, SheetsAndAlertsOfAWindowWaitForEachOther) {
  const auto sheet = this->makeSheet();
  this->window->beginAlert(question("first"), {});
  this->window->beginSheet(*sheet, this->notingCode("sheet"));
  this->window->beginAlert(question("last"), {});
  EXPECT_FALSE(sheet->isVisible());
  EXPECT_EQ(sheet->sheetParent(), this->window.get());
  this->answer("first", "OK");
  EXPECT_TRUE(sheet->isVisible());
  EXPECT_THAT(this->shown(), IsEmpty());
  this->window->endSheet(*sheet, 1);
  EXPECT_THAT(this->shown(), ElementsAre("last"));
  EXPECT_FALSE(sheet->isVisible());
}

TYPED_TEST(WindowContract, AWaitingSheetThatIsEndedIsNeverShown) {
  const auto sheet = this->makeSheet();
  this->window->beginAlert(question("first"), {});
  this->window->beginSheet(*sheet, this->notingCode("sheet"));
  this->window->endSheet(*sheet, 4);
  EXPECT_THAT(this->answers, ElementsAre("sheet 4"));
  this->answer("first", "OK");
  EXPECT_FALSE(sheet->isVisible());
  EXPECT_EQ(sheet->sheetParent(), nullptr);
}

TYPED_TEST(WindowContract, AnAlertOfASheetStandsAboveIt) {
  const auto sheet = this->makeSheet();
  this->window->beginSheet(*sheet, this->notingCode("sheet"));
  sheet->beginAlert(question("above"), this->noting("above"));
  EXPECT_THAT(this->shown(), ElementsAre("above"));
  EXPECT_TRUE(sheet->isVisible());
  this->answer("above", "OK");
  EXPECT_TRUE(sheet->isVisible());
  sheet->beginAlert(question("lost"), this->noting("lost"));
  this->window->beginAlert(question("next"), this->noting("next"));
  this->window->endSheet(*sheet, 5);
  EXPECT_THAT(this->shown(), ElementsAre("next"));
  EXPECT_THAT(this->answers, ElementsAre("above 1000", "sheet 5"));
}

TYPED_TEST(WindowContract, ASheetMayHaveASheet) {
  const auto sheet = this->makeSheet();
  auto upper = this->makeSheet();
  this->window->beginSheet(*sheet, this->notingCode("sheet"));
  sheet->beginSheet(*upper, this->notingCode("upper"));
  EXPECT_TRUE(upper->isVisible());
  EXPECT_EQ(upper->sheetParent(), sheet.get());
  sheet->endSheet(*upper, 1);
  EXPECT_TRUE(sheet->isVisible());
  sheet->beginSheet(*upper, this->notingCode("upper"));
  // A sheet takes what stands on it along, without an answer.
  this->window->endSheet(*sheet, 2);
  EXPECT_FALSE(upper->isVisible());
  EXPECT_EQ(upper->sheetParent(), nullptr);
  EXPECT_THAT(this->answers, ElementsAre("upper 1", "sheet 2"));
}

TYPED_TEST(WindowContract, ASheetThatGoesMakesRoom) {
  auto sheet = this->makeSheet();
  this->window->beginSheet(*sheet, this->notingCode("sheet"));
  this->window->beginAlert(question("next"), {});
  sheet.reset();
  EXPECT_THAT(this->shown(), ElementsAre("next"));
  EXPECT_THAT(this->answers, IsEmpty());
}

TYPED_TEST(WindowContract, AWindowThatGoesTakesItsQuestionsAlong) {
  const auto sheet = this->makeSheet();
  const auto upper = this->makeSheet();
  this->window->beginSheet(*sheet, this->notingCode("sheet"));
  sheet->beginSheet(*upper, this->notingCode("upper"));
  this->window->beginAlert(question("waiting"), this->noting("waiting"));
  this->window.reset();
  EXPECT_EQ(sheet->sheetParent(), nullptr);
  EXPECT_FALSE(sheet->isVisible());
  EXPECT_FALSE(upper->isVisible());
  EXPECT_THAT(this->answers, IsEmpty());
  // The sheet can be shown elsewhere.
  this->window = this->harness.windows().loadWindow("Contract");
  this->window->makeKeyAndOrderFront();
  this->window->beginSheet(*sheet, this->notingCode("sheet"));
  EXPECT_TRUE(sheet->isVisible());
}

TYPED_TEST(WindowContract, OnlyASheetIsShownAsASheet) {
  const auto other = this->harness.windows().loadWindow("Contract");
  const auto sheet = this->makeSheet();
  this->window->beginSheet(*sheet, this->notingCode("sheet"));
  const fakes::CapturedLog log;
  this->window->beginSheet(*other, this->notingCode("other"));
  this->window->beginSheet(*sheet, this->notingCode("twice"));
  EXPECT_EQ(log.lines().size(), 2U) << log.text();
  EXPECT_EQ(other->sheetParent(), nullptr);
  other->endSheet(*sheet, 1);
  EXPECT_TRUE(sheet->isVisible());
  EXPECT_THAT(this->answers, IsEmpty());
}

TYPED_TEST(WindowContract, EscapeAsksTheDelegateOfASheet) {
  const auto sheet = this->makeSheet();
  this->window->beginSheet(*sheet, this->notingCode("sheet"));
  this->harness.pressEscape(*sheet);
  EXPECT_THAT(this->answers, IsEmpty()) << "without a delegate";

  sheet->setDelegate(&this->delegate);
  this->harness.pressEscape(*sheet);
  EXPECT_EQ(this->delegate.asked, 1);
  EXPECT_THAT(this->answers, IsEmpty());
  this->delegate.closes = true;
  this->harness.pressEscape(*sheet);
  EXPECT_THAT(this->answers, ElementsAre("sheet 0"));
  EXPECT_EQ(sheet->sheetParent(), nullptr);
}

TYPED_TEST(WindowContract, ADelegateMayEndItsSheetItself) {
  class Ending : public Delegate {
   public:
    bool windowShouldClose(Window& sheet) override {
      sheet.sheetParent()->endSheet(sheet, 5);
      return true;
    }
  } ending;
  const auto sheet = this->makeSheet();
  sheet->setDelegate(&ending);
  this->window->beginSheet(*sheet, this->notingCode("sheet"));
  this->harness.pressEscape(*sheet);
  EXPECT_THAT(this->answers, ElementsAre("sheet 5"));
}

TYPED_TEST(WindowContract, EscapeConcernsWhatStandsOnASheetFirst) {
  const auto sheet = this->makeSheet();
  this->delegate.closes = true;
  sheet->setDelegate(&this->delegate);
  this->window->beginSheet(*sheet, this->notingCode("sheet"));
  sheet->beginAlert(question("Sure?", {"Yes", "No"}), this->noting("alert"));
  this->harness.pressEscape(*sheet);
  EXPECT_EQ(this->delegate.asked, 0);
  EXPECT_THAT(this->answers, IsEmpty());
}

}  // namespace

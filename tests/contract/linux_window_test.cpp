#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/contract/toolkit_harness.h"
#include "tests/fakes/captured_log.h"

// What a person notices of the windows on a Linux desktop, beyond what every platform promises.

namespace {

using platform::Alert;
using platform::AlertResponse;
using platform::Rect;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

Alert question(const std::string& text, const std::vector<std::string>& buttons = {"OK", "Cancel"}) {
  Alert alert;
  alert.messageText = text;
  for (const std::string& button : buttons) {
    alert.addButtonWithTitle(button);
  }
  return alert;
}

class LinuxWindowTest : public ToolkitTest<LinuxToolkit> {
 protected:
  // The widget that has the keyboard: the control itself, not a part inside it.
  GtkWidget* focus() {
    GtkWidget* widget = gtk_window_get_focus(LinuxToolkit::toplevel(*window));
    if (widget != nullptr && GTK_IS_TEXT(widget)) {
      widget = gtk_widget_get_parent(widget);
    }
    return widget;
  }
  GtkWidget* widgetOf(const std::string& name) { return LinuxToolkit::widget(*window, name); }
  GtkWidget* button(const std::string& text, const std::string& title) {
    return LinuxToolkit::alertButton(*window, text, title);
  }
  platform::AlertCompletion noting(const std::string& text) {
    return [this, text](const AlertResponse& response) {
      answers.push_back(text + " " + std::to_string(response.code));
    };
  }
  std::vector<std::string> shown() { return harness.shownAlerts(*window); }
  bool escape() { return LinuxToolkit::pressKey(*window, GDK_KEY_Escape); }

  std::vector<std::string> answers;
};

TEST_F(LinuxWindowTest, ADamagedDescriptionGivesNoWindowAndALineThatSaysWhy) {
  for (const std::string name : {"Damaged", "Unknown", "Rootless"}) {
    const fakes::CapturedLog log;
    EXPECT_EQ(harness.windows().loadWindow(name), nullptr) << name;
    ASSERT_EQ(log.lines().size(), 1U) << log.text();
    EXPECT_THAT(log.lines().front(), HasSubstr("the window description " + name)) << name;
  }
  EXPECT_EQ(harness.windows().loadWindow("../Contract"), nullptr);
}

TEST_F(LinuxWindowTest, TheFirstButtonOfAnAlertHasTheKeyboardAndGivesItBack) {
  ASSERT_TRUE(window->makeFirstResponder(view("field")));
  window->beginAlert(question("first"), noting("first"));
  EXPECT_EQ(focus(), button("first", "OK"));
  window->beginAlert(question("second"), noting("second"));
  EXPECT_EQ(focus(), button("first", "OK"));
  harness.answer(*window, "first", "OK");
  EXPECT_EQ(focus(), button("second", "OK"));
  harness.answer(*window, "second", "OK");
  EXPECT_EQ(focus(), widgetOf("field"));
}

TEST_F(LinuxWindowTest, AnAlertsFieldHasTheKeyboardAndReturnPressesTheFirstButton) {
  Alert alert = question("name");
  alert.hasTextField = true;
  alert.textFieldValue = "suggested";
  std::string written;
  window->beginAlert(alert, [&](const AlertResponse& response) { written = response.text; });
  ASSERT_TRUE(focus() != nullptr && GTK_IS_ENTRY(focus()));
  EXPECT_STREQ(gtk_editable_get_text(GTK_EDITABLE(focus())), "suggested");
  g_signal_emit_by_name(gtk_window_get_focus(LinuxToolkit::toplevel(*window)), "activate");
  EXPECT_EQ(written, "suggested");
  EXPECT_THAT(shown(), IsEmpty());
}

TEST_F(LinuxWindowTest, ASheetTakesTheKeyboardAndGivesItBack) {
  ASSERT_TRUE(window->makeFirstResponder(view("field")));
  const auto sheet = harness.windows().loadWindow("ContractSheet");
  window->beginSheet(*sheet, {});
  EXPECT_EQ(focus(), LinuxToolkit::widget(*sheet, "name"));
  ASSERT_TRUE(sheet->makeFirstResponder(*sheet->viewNamed("close")));
  sheet->beginAlert(question("above"), noting("above"));
  EXPECT_EQ(focus(), button("above", "OK"));
  harness.answer(*window, "above", "Cancel");
  EXPECT_EQ(focus(), LinuxToolkit::widget(*sheet, "close"));
  window->endSheet(*sheet, 0);
  EXPECT_EQ(focus(), widgetOf("field"));
}

TEST_F(LinuxWindowTest, ASheetThatEndsBelowAnotherLeavesTheKeyboardAboveAndReturnsItLater) {
  ASSERT_TRUE(window->makeFirstResponder(view("field")));
  const auto sheet = harness.windows().loadWindow("ContractSheet");
  window->beginSheet(*sheet, {});
  window->overlay()->beginAlert(question("above"), noting("above"));
  window->endSheet(*sheet, 0);
  EXPECT_EQ(focus(), button("above", "OK"));
  EXPECT_FALSE(gtk_widget_is_sensitive(widgetOf("field")));
  harness.answer(*window, "above", "OK");
  EXPECT_TRUE(gtk_widget_is_sensitive(widgetOf("field")));
  EXPECT_EQ(focus(), widgetOf("field"));
}

TEST_F(LinuxWindowTest, EverythingBehindASheetIsInsensitiveWhileItIsOpen) {
  const auto sheet = harness.windows().loadWindow("ContractSheet");
  EXPECT_TRUE(gtk_widget_is_sensitive(widgetOf("button")));
  window->beginSheet(*sheet, {});
  EXPECT_FALSE(gtk_widget_is_sensitive(widgetOf("button")));
  EXPECT_FALSE(window->makeFirstResponder(view("button")));
  sheet->beginAlert(question("above"), {});
  EXPECT_FALSE(gtk_widget_is_sensitive(LinuxToolkit::widget(*sheet, "close")));
  EXPECT_TRUE(gtk_widget_is_sensitive(button("above", "OK")));
  harness.answer(*window, "above", "OK");
  EXPECT_TRUE(gtk_widget_is_sensitive(LinuxToolkit::widget(*sheet, "close")));
  EXPECT_FALSE(gtk_widget_is_sensitive(widgetOf("button")));
  window->endSheet(*sheet, 0);
  EXPECT_TRUE(gtk_widget_is_sensitive(widgetOf("button")));
}

TEST_F(LinuxWindowTest, EscapeAnswersAsTheButtonCancel) {
  window->beginAlert(question("first", {"Delete", "Cancel", "Keep"}), noting("first"));
  EXPECT_TRUE(escape());
  EXPECT_THAT(answers, ElementsAre("first 1001"));
  EXPECT_THAT(shown(), IsEmpty());
}

TEST_F(LinuxWindowTest, EscapeAnswersAsTheOnlyButton) {
  window->beginAlert(question("first", {"Understood"}), noting("first"));
  EXPECT_TRUE(escape());
  EXPECT_THAT(answers, ElementsAre("first 1000"));
}

TEST_F(LinuxWindowTest, EscapeDoesNothingWhereNoButtonSaysCancel) {
  window->beginAlert(question("first", {"Yes", "No"}), noting("first"));
  escape();
  EXPECT_THAT(answers, IsEmpty());
  EXPECT_THAT(shown(), ElementsAre("first"));
}

TEST_F(LinuxWindowTest, EscapeConcernsTheUppermostQuestion) {
  window->beginAlert(question("below"), noting("below"));
  window->overlay()->beginAlert(question("above", {"Yes", "No"}), noting("above"));
  escape();
  EXPECT_THAT(answers, IsEmpty());
  harness.answer(*window, "above", "No");
  EXPECT_TRUE(escape());
  EXPECT_THAT(answers, ElementsAre("above 1001", "below 1001"));
  EXPECT_FALSE(escape());
}

TEST_F(LinuxWindowTest, AnAlertKeepsAllItsTextAndEveryButtonOnANarrowWindow) {
  Alert alert =
      question("A question that is rather long for such a small window, is it not?",
               {"The first of the answers", "The second of the answers", "The third of the answers"});
  alert.informativeText = "More to read.\n\n";
  // The wider one is too narrow for the three beside each other, and for nothing else.
  for (const int width : {400, 700}) {
    window->setFrame({0, 0, double(width), 480}, false);
    ASSERT_TRUE(harness.runUntil([&] { return window->frame().width == width; }));
    window->beginAlert(alert, {});
    for (const platform::AlertButton& wanted : alert.buttons) {
      GtkWidget* widget = button(alert.messageText, wanted.title);
      ASSERT_NE(widget, nullptr);
      graphene_rect_t bounds;
      const auto inside = [&] {
        return gtk_widget_compute_bounds(widget, GTK_WIDGET(LinuxToolkit::toplevel(*window)), &bounds) !=
                   FALSE &&
               bounds.size.width > 0 && bounds.origin.x >= 0 && bounds.origin.x + bounds.size.width <= width;
      };
      EXPECT_TRUE(harness.runUntil(inside)) << bounds.origin.x << " " << bounds.size.width;
    }
    harness.answer(*window, alert.messageText, alert.buttons[0].title);
  }
}

// The window of the application's alerts, null while it is not shown.
GtkWindow* windowOfAlert(const std::string& text) {
  GListModel* list = gtk_window_get_toplevels();
  for (guint at = 0; at < g_list_model_get_n_items(list); ++at) {
    auto* toplevel = static_cast<GtkWidget*>(g_list_model_get_item(list, at));
    g_object_unref(toplevel);
    for (GtkWidget* label : LinuxToolkit::withClass(toplevel, "lumo-alert-message")) {
      if (gtk_label_get_text(GTK_LABEL(label)) == text && gtk_widget_get_mapped(label) != FALSE) {
        return GTK_WINDOW(toplevel);
      }
    }
  }
  return nullptr;
}

TEST_F(LinuxWindowTest, AnAlertOfTheApplicationIsShownOnTheFrontmostWindowAboveItsSheets) {
  const auto sheet = harness.windows().loadWindow("ContractSheet");
  window->beginSheet(*sheet, nullptr);
  harness.windows().beginApplicationAlert(question("Missing", {"Quit"}), noting("Missing"));
  ASSERT_TRUE(harness.runUntil([&] { return windowOfAlert("Missing") != nullptr; }));
  EXPECT_EQ(windowOfAlert("Missing"), LinuxToolkit::toplevel(*window));
  EXPECT_EQ(focus(), button("Missing", "Quit"));
  EXPECT_FALSE(gtk_widget_is_sensitive(LinuxToolkit::widget(sheet->contentView())));
  EXPECT_TRUE(escape());
  EXPECT_THAT(answers, ElementsAre("Missing 1000"));
  EXPECT_TRUE(gtk_widget_is_sensitive(LinuxToolkit::widget(sheet->contentView())));
  window->endSheet(*sheet, 0);
}

TEST_F(LinuxWindowTest, WhereNoWindowIsVisibleAnAlertOfTheApplicationHasOneThatOnlyItsAnswerCloses) {
  window->orderOut();
  // A second one while the first is open.
  for (const std::string text : {"Missing", "Missing too"}) {
    harness.windows().beginApplicationAlert(question(text, {"Quit"}), noting(text));
  }
  for (const std::string text : {"Missing", "Missing too"}) {
    ASSERT_TRUE(harness.runUntil([&] { return windowOfAlert(text) != nullptr; })) << text;
    GtkWindow* own = windowOfAlert(text);
    EXPECT_NE(own, LinuxToolkit::toplevel(*window));
    EXPECT_STREQ(gtk_window_get_title(own), "Lumo Browser");
    gtk_window_close(own);
    EXPECT_EQ(windowOfAlert(text), own);
    g_signal_emit_by_name(gtk_window_get_focus(own), "clicked");
    EXPECT_EQ(windowOfAlert(text), nullptr);
  }
  EXPECT_THAT(answers, ElementsAre("Missing 1000", "Missing too 1000"));
  // The next one finds the window again that is visible then.
  window->makeKeyAndOrderFront();
  harness.windows().beginApplicationAlert(question("Later", {"Quit"}), noting("Later"));
  EXPECT_THAT(shown(), ElementsAre("Later"));
  harness.answer(*window, "Later", "Quit");
}

TEST_F(LinuxWindowTest, TheOverlayKeepsClicksFromThePage) {
  GtkWidget* toplevel = GTK_WIDGET(LinuxToolkit::toplevel(*window));
  GtkWidget* second = widgetOf("second");
  EXPECT_EQ(gtk_widget_pick(toplevel, 300, 300, GTK_PICK_DEFAULT), second);
  window->overlay()->orderFrontRegardless();
  GtkWidget* content = LinuxToolkit::widget(window->overlay()->contentView());
  EXPECT_TRUE(harness.runUntil([&] {
    GtkWidget* picked = gtk_widget_pick(toplevel, 300, 300, GTK_PICK_DEFAULT);
    return picked != nullptr && gtk_widget_is_ancestor(picked, content);
  }));
  window->overlay()->orderOut();
  EXPECT_TRUE(
      harness.runUntil([&] { return gtk_widget_pick(toplevel, 300, 300, GTK_PICK_DEFAULT) == second; }));
}

TEST_F(LinuxWindowTest, TheOverlayKeepsKeysFromThePageAndGivesThemBack) {
  ASSERT_TRUE(window->makeFirstResponder(view("field")));
  window->overlay()->orderFrontRegardless();
  window->overlay()->orderFrontRegardless();
  EXPECT_NE(focus(), widgetOf("field"));
  EXPECT_FALSE(window->makeFirstResponder(view("field")));
  window->overlay()->orderOut();
  EXPECT_EQ(focus(), widgetOf("field"));
}

TEST_F(LinuxWindowTest, AQuestionOnTheOverlayGoesBeforeItAndThePageGetsTheKeysAfterBoth) {
  ASSERT_TRUE(window->makeFirstResponder(view("field")));
  window->overlay()->orderFrontRegardless();
  window->overlay()->beginAlert(question("above"), noting("above"));
  EXPECT_EQ(focus(), button("above", "OK"));
  harness.answer(*window, "above", "OK");
  EXPECT_FALSE(gtk_widget_is_sensitive(widgetOf("field")));
  window->overlay()->orderOut();
  EXPECT_EQ(focus(), widgetOf("field"));
}

TEST_F(LinuxWindowTest, AQuestionThatOutlivesTheOverlayGivesThePageItsKeys) {
  ASSERT_TRUE(window->makeFirstResponder(view("field")));
  window->overlay()->orderFrontRegardless();
  window->beginAlert(question("later"), noting("later"));
  window->overlay()->orderOut();
  EXPECT_EQ(focus(), button("later", "OK"));
  EXPECT_FALSE(gtk_widget_is_sensitive(widgetOf("field")));
  harness.answer(*window, "later", "OK");
  EXPECT_EQ(focus(), widgetOf("field"));
}

TEST_F(LinuxWindowTest, AnOverlayThatComesAboveAQuestionGivesThePageItsKeysInTheEnd) {
  ASSERT_TRUE(window->makeFirstResponder(view("field")));
  window->beginAlert(question("earlier"), noting("earlier"));
  window->overlay()->orderFrontRegardless();
  harness.answer(*window, "earlier", "OK");
  EXPECT_FALSE(gtk_widget_is_sensitive(widgetOf("field")));
  window->overlay()->orderOut();
  EXPECT_EQ(focus(), widgetOf("field"));
}

TEST_F(LinuxWindowTest, TheOverlayIsPlacedByItsFrameOnTheDesktop) {
  window->setFrame({40, 30, 640, 480}, false);
  ASSERT_TRUE(harness.runUntil([&] { return window->frame() == Rect{40, 30, 640, 480}; }));
  platform::Overlay& overlay = *window->overlay();
  overlay.orderFrontRegardless();
  overlay.setFrame({140, 80, 300, 200});
  EXPECT_TRUE(harness.runUntil([&] {
    return overlay.contentView().frame() == Rect{100, 50, 300, 200};
  })) << platform::description(overlay.contentView().frame());
  overlay.setFrame(window->frame());
  window->setFrame({40, 30, 700, 500}, false);
  EXPECT_TRUE(harness.runUntil([&] { return overlay.contentView().frame() == Rect{0, 0, 700, 500}; }));
}

class BrowserWindowTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_NE(window, nullptr);
    window->makeKeyAndOrderFront();
    ASSERT_TRUE(harness.runUntil([&] { return content().width > 0; }));
  }
  Rect content() { return window->contentView().frame(); }
  GtkWidget* widgetOf(const char* name) { return LinuxToolkit::widget(*window, name); }

  LinuxToolkit harness;
  std::unique_ptr<platform::Window> window = harness.windows().loadWindow("MyWebViewWindowController");
};

TEST_F(BrowserWindowTest, HidesItsBarsAndGivesTheirSpaceToThePage) {
  const double before = content().height;
  EXPECT_TRUE(window->isToolbarVisible());
  window->setToolbarVisible(false);
  EXPECT_FALSE(window->isToolbarVisible());
  EXPECT_TRUE(harness.runUntil([&] { return content().height > before; }));
  const double withoutToolbar = content().height;
  EXPECT_TRUE(window->isTitleVisible());
  window->setTitleVisible(false);
  EXPECT_FALSE(window->isTitleVisible());
  window->setTitleVisible(true);
  window->setToolbarVisible(true);
  EXPECT_TRUE(harness.runUntil([&] { return content().height < withoutToolbar; }));
  EXPECT_EQ(content().height, before);
}

TEST_F(BrowserWindowTest, AFullSizeContentLiesUnderTheBars) {
  const Rect before = content();
  window->setStyleMask(window->styleMask() | platform::kStyleMaskFullSizeContentView);
  EXPECT_TRUE(harness.runUntil([&] { return content().height == window->frame().height; }));
  EXPECT_TRUE(gtk_widget_get_mapped(widgetOf("toolbar")));
  window->setStyleMask(window->styleMask() & ~platform::kStyleMaskFullSizeContentView);
  EXPECT_TRUE(harness.runUntil([&] { return content() == before; }));
}

TEST_F(BrowserWindowTest, ShowsItsTitle) {
  window->setTitle("Kasse 3");
  EXPECT_STREQ(gtk_window_get_title(LinuxToolkit::toplevel(*window)), "Kasse 3");
  EXPECT_STREQ(gtk_label_get_text(GTK_LABEL(widgetOf("titleLabel"))), "Kasse 3");
}

TEST_F(BrowserWindowTest, CoversTheScreenWithoutAWindowManager) {
  const Rect screen = harness.windows().screens().front();
  window->setFrame(screen, true);
  EXPECT_TRUE(harness.runUntil([&] { return window->frame() == screen && content().width == screen.width; }))
      << platform::description(window->frame());
}

TEST_F(BrowserWindowTest, FitsOnTheScreenAtFirst) {
  const Rect screen = harness.windows().screens().front();
  EXPECT_LT(window->frame().width, screen.width);
  EXPECT_LT(window->frame().height, screen.height);
}

TEST_F(BrowserWindowTest, AFrameThatIsReadTakesNoFocus) {
  platform::View* field = window->viewNamed("ibTextField");
  ASSERT_TRUE(window->makeFirstResponder(*field));
  GtkWidget* focus = gtk_window_get_focus(LinuxToolkit::toplevel(*window));
  const Rect place = field->frame();
  EXPECT_GT(place.width, 100);
  EXPECT_GT(place.x, 100);
  EXPECT_EQ(gtk_window_get_focus(LinuxToolkit::toplevel(*window)), focus);
  field->setFrame({place.x + 10, place.y, place.width, place.height});
  EXPECT_EQ(gtk_window_get_focus(LinuxToolkit::toplevel(*window)), focus);
  EXPECT_EQ(field->frame(), (Rect{place.x + 10, place.y, place.width, place.height}));
}

TEST_F(BrowserWindowTest, AControlThatIsBackInItsPlaceFollowsTheBar) {
  platform::View* field = window->viewNamed("ibTextField");
  const Rect place = field->frame();
  field->setFrame({place.x + 10, place.y, place.width, place.height});
  field->setFrame(place);
  const double width = window->frame().width;
  window->setFrame({0, 0, width - 100, 700}, false);
  EXPECT_TRUE(harness.runUntil([&] { return field->frame().width == place.width - 100; }))
      << platform::description(field->frame());
}

}  // namespace

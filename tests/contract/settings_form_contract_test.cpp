#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/linux/linux_settings_form.h"
#include "tests/contract/toolkit_harness.h"
#include "tests/fakes/captured_log.h"
#include "tests/fakes/fake_settings_form.h"

namespace {

using platform::SettingGroup;
using platform::SettingKind;
using platform::SettingsForm;
using platform::SettingValue;
using testing::ElementsAre;
using testing::IsEmpty;

// The person before a form.
template <class Harness>
class Person;

template <>
class Person<FakeToolkit> {
 public:
  explicit Person(platform::Window& sheet)
      : form_(dynamic_cast<fakes::FakeSettingsForm&>(*sheet.viewNamed("form"))) {}
  void flip(const std::string& key) { form_.flip(key); }
  void type(const std::string& key, const std::string& text) { form_.type(key, text); }
  void pressReturn(const std::string& /*key*/) { form_.pressReturn(); }
  void goElsewhere() { form_.endEditing(); }
  SettingValue sees(const std::string& key) { return form_.value(key); }
  bool canChange(const std::string& key) { return !form_.isLocked(key); }
  std::string problem(const std::string& key) { return form_.problem(key); }

 private:
  fakes::FakeSettingsForm& form_;
};

template <>
class Person<LinuxToolkit> {
 public:
  explicit Person(platform::Window& sheet)
      : sheet_(sheet), form_(dynamic_cast<platform::LinuxSettingsForm&>(*sheet.viewNamed("form"))) {}
  void flip(const std::string& key) {
    if (canChange(key)) {
      // Its value changes at the end of its motion.
      gtk_widget_activate(form_.control(key));
    }
  }
  void type(const std::string& key, const std::string& text) {
    GtkWidget* control = form_.control(key);
    if (!canChange(key)) {
      return;
    }
    gtk_widget_grab_focus(control);
    if (GTK_IS_ENTRY(control)) {
      gtk_editable_set_text(GTK_EDITABLE(control), text.c_str());
    } else {
      gtk_text_buffer_set_text(gtk_text_view_get_buffer(GTK_TEXT_VIEW(control)), text.c_str(), -1);
    }
  }
  void pressReturn(const std::string& key) { g_signal_emit_by_name(form_.control(key), "activate"); }
  void goElsewhere() { gtk_widget_grab_focus(LinuxToolkit::widget(sheet_, "elsewhere")); }
  SettingValue sees(const std::string& key) {
    GtkWidget* control = form_.control(key);
    if (GTK_IS_SWITCH(control)) {
      return gtk_switch_get_active(GTK_SWITCH(control)) != FALSE;
    }
    if (GTK_IS_ENTRY(control)) {
      return std::string(gtk_editable_get_text(GTK_EDITABLE(control)));
    }
    char* text = nullptr;
    g_object_get(gtk_text_view_get_buffer(GTK_TEXT_VIEW(control)), "text", &text, nullptr);
    std::string result = text;
    g_free(text);
    return result;
  }
  bool canChange(const std::string& key) { return gtk_widget_is_sensitive(form_.control(key)) != FALSE; }
  std::string problem(const std::string& key) { return form_.shownProblem(key); }

 private:
  platform::Window& sheet_;
  platform::LinuxSettingsForm& form_;
};

class Hearing : public platform::SettingsFormDelegate {
 public:
  void settingChanged(SettingsForm& form, const std::string& key, const SettingValue& value) override {
    const auto* on = std::get_if<bool>(&value);
    heard.push_back(key + "=" + (on != nullptr ? (*on ? "on" : "off") : std::get<std::string>(value)));
    if (reply) {
      reply(form, key);
    }
  }
  std::vector<std::string> heard;
  std::function<void(SettingsForm&, const std::string& key)> reply;
};

template <class Harness>
class SettingsFormContract : public ToolkitTest<Harness> {
 protected:
  void SetUp() override {
    ToolkitTest<Harness>::SetUp();
    sheet = this->harness.windows().loadWindow("ContractForm");
    ASSERT_NE(sheet, nullptr);
    this->window->beginSheet(*sheet, {});
    form = dynamic_cast<SettingsForm*>(sheet->viewNamed("form"));
    ASSERT_NE(form, nullptr);
    form->setGroups(groups());
    form->setDelegate(&hearing);
    person = std::make_unique<Person<Harness>>(*sheet);
  }
  static std::vector<SettingGroup> groups() {
    return {{"First & foremost",
             "What <b> is",
             {{"on", SettingKind::Switch, "On & off", "A <switch>"},
              {"name", SettingKind::Text, "Name", "A name & more"}}},
            {"Nothing", "Only words", {}},
            {"Lists", "", {{"list", SettingKind::Lines, "List", "Of things"}}}};
  }

  Hearing hearing;
  std::unique_ptr<platform::Window> sheet;
  SettingsForm* form = nullptr;
  std::unique_ptr<Person<Harness>> person;
};

TYPED_TEST_SUITE(SettingsFormContract, Toolkits);

TYPED_TEST(SettingsFormContract, IsAViewOfItsKind) {
  EXPECT_TRUE(this->form->isKindOf(platform::ViewKind::SettingsForm));
  EXPECT_EQ(this->form->window(), this->sheet.get());
}

TYPED_TEST(SettingsFormContract, BeginsOffAndEmptyAndOpen) {
  EXPECT_EQ(this->person->sees("on"), SettingValue(false));
  for (const char* key : {"name", "list"}) {
    EXPECT_EQ(this->person->sees(key), SettingValue(std::string()));
    EXPECT_TRUE(this->person->canChange(key));
  }
}

TYPED_TEST(SettingsFormContract, ShowsValuesWithoutTellingTheDelegate) {
  this->form->setValue("on", true);
  this->form->setValue("name", "Eva");
  this->form->setValue("list", "a\nb");
  this->person->goElsewhere();

  EXPECT_EQ(this->person->sees("on"), SettingValue(true));
  EXPECT_EQ(this->person->sees("name"), SettingValue("Eva"));
  EXPECT_EQ(this->person->sees("list"), SettingValue("a\nb"));
  EXPECT_THAT(this->hearing.heard, IsEmpty());
}

TYPED_TEST(SettingsFormContract, TellsEachTurnOfASwitch) {
  this->person->flip("on");
  EXPECT_TRUE(this->harness.runUntil([this] { return this->hearing.heard.size() == 1; }));
  this->person->flip("on");
  EXPECT_TRUE(this->harness.runUntil([this] { return this->hearing.heard.size() == 2; }));
  EXPECT_THAT(this->hearing.heard, ElementsAre("on=on", "on=off"));
}

TYPED_TEST(SettingsFormContract, TellsATextWithReturn) {
  this->person->type("name", "E");
  this->person->type("name", "Eva");
  EXPECT_THAT(this->hearing.heard, IsEmpty());
  this->person->pressReturn("name");
  EXPECT_THAT(this->hearing.heard, ElementsAre("name=Eva"));
  this->person->pressReturn("name");
  this->person->goElsewhere();
  EXPECT_EQ(this->hearing.heard.size(), 1U) << "an unchanged text is no news";
}

TYPED_TEST(SettingsFormContract, TellsATextWhenTheKeyboardGoesElsewhere) {
  this->person->type("list", "a\nb");
  EXPECT_THAT(this->hearing.heard, IsEmpty());
  this->person->goElsewhere();
  EXPECT_THAT(this->hearing.heard, ElementsAre("list=a\nb"));
}

TYPED_TEST(SettingsFormContract, TellsATextThatIsBegunWhenItIsAskedTo) {
  this->person->type("name", "Eva");
  this->form->endEditing();
  this->form->endEditing();
  EXPECT_THAT(this->hearing.heard, ElementsAre("name=Eva"));
}

TYPED_TEST(SettingsFormContract, TellsTheTextBeforeTheSwitchThatIsTurnedNext) {
  this->person->type("name", "Eva");
  this->person->flip("on");
  EXPECT_TRUE(this->harness.runUntil([this] { return this->hearing.heard.size() == 2; }));
  EXPECT_THAT(this->hearing.heard, ElementsAre("name=Eva", "on=on"));
}

TYPED_TEST(SettingsFormContract, ATextThatIsBeingChangedStays) {
  this->form->setValue("name", "Eva");
  this->person->type("name", "Max");
  this->form->setValue("name", "Ina");
  EXPECT_EQ(this->person->sees("name"), SettingValue("Max"));
  this->person->pressReturn("name");
  EXPECT_THAT(this->hearing.heard, ElementsAre("name=Max"));
}

TYPED_TEST(SettingsFormContract, TheDelegateMayCorrectWhatItHears) {
  this->hearing.reply = [](SettingsForm& form, const std::string& key) { form.setValue(key, "Corrected"); };
  this->person->type("name", " Eva ");
  this->person->pressReturn("name");
  EXPECT_EQ(this->person->sees("name"), SettingValue("Corrected"));
  EXPECT_EQ(this->hearing.heard.size(), 1U);
}

TYPED_TEST(SettingsFormContract, SaysWhyAValueWasNotTaken) {
  this->hearing.reply = [](SettingsForm& form, const std::string& key) { form.showProblem(key, "Too long"); };
  this->person->type("name", "Eva");
  this->person->pressReturn("name");
  EXPECT_EQ(this->person->problem("name"), "Too long");
  EXPECT_EQ(this->person->sees("name"), SettingValue("Eva"));
  EXPECT_EQ(this->person->problem("list"), "");

  this->person->type("name", "Ev");
  EXPECT_EQ(this->person->problem("name"), "") << "until the next change";
}

TYPED_TEST(SettingsFormContract, AnotherValueTakesTheProblemAway) {
  this->form->showProblem("name", "Too long");
  this->form->setValue("name", "Ev");
  EXPECT_EQ(this->person->problem("name"), "");
  this->form->showProblem("name", "Too long");
  this->form->showProblem("name", "");
  EXPECT_EQ(this->person->problem("name"), "");
}

TYPED_TEST(SettingsFormContract, LockedRowsCanBeReadAndNotChanged) {
  this->form->setValue("list", "a");
  this->form->setLocked(2, true);
  EXPECT_FALSE(this->person->canChange("list"));
  EXPECT_TRUE(this->person->canChange("name"));
  this->person->type("list", "b");
  EXPECT_EQ(this->person->sees("list"), SettingValue("a"));
  this->form->setValue("list", "c");
  EXPECT_EQ(this->person->sees("list"), SettingValue("c"));

  this->form->setLocked(2, false);
  EXPECT_TRUE(this->person->canChange("list"));
  this->person->type("list", "b");
  this->person->goElsewhere();
  EXPECT_THAT(this->hearing.heard, ElementsAre("list=b"));
}

TYPED_TEST(SettingsFormContract, ALockDropsAChangeThatHasNotEnded) {
  this->form->setValue("name", "Eva");
  this->person->type("name", "Max");
  this->form->setLocked(0, true);
  this->person->goElsewhere();
  EXPECT_EQ(this->person->sees("name"), SettingValue("Eva"));
  EXPECT_THAT(this->hearing.heard, IsEmpty());
}

TYPED_TEST(SettingsFormContract, OtherGroupsTakeThePlaceOfThoseBefore) {
  this->form->setValue("name", "Eva");
  this->form->setLocked(0, true);
  this->person->type("list", "begun");
  this->form->setGroups(this->groups());
  EXPECT_EQ(this->person->sees("name"), SettingValue(std::string()));
  EXPECT_TRUE(this->person->canChange("name"));
  this->form->endEditing();
  EXPECT_THAT(this->hearing.heard, IsEmpty());
}

TYPED_TEST(SettingsFormContract, WhatFitsNoRowIsIgnoredAndLogged) {
  const fakes::CapturedLog log;
  this->form->setValue("nobody", true);
  this->form->setValue("name", true);
  this->form->setValue("on", "text");
  this->form->showProblem("nobody", "Too long");
  this->form->setLocked(9, true);
  EXPECT_THAT(log.lines(),
              ElementsAre("the form has no row nobody", "a value of another kind for the row name",
                          "a value of another kind for the row on", "the form has no row nobody"));
  EXPECT_EQ(this->person->sees("on"), SettingValue(false));
}

TYPED_TEST(SettingsFormContract, AFormWithoutADelegateTellsNobody) {
  this->form->setDelegate(nullptr);
  this->person->type("name", "Eva");
  this->person->pressReturn("name");
  this->person->flip("on");
  EXPECT_THAT(this->hearing.heard, IsEmpty());
}

}  // namespace

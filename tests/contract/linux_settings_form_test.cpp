#include "platform/linux/linux_settings_form.h"

#include <gtest/gtest.h>

#include "tests/contract/toolkit_harness.h"

// What people meet who touch the form, or work it with the keyboard.

namespace {

using platform::SettingKind;

class LinuxSettingsFormTest : public ToolkitTest<LinuxToolkit> {
 protected:
  void SetUp() override {
    ToolkitTest::SetUp();
    sheet = harness.windows().loadWindow("ContractForm");
    ASSERT_NE(sheet, nullptr);
    window->beginSheet(*sheet, {});
    form = dynamic_cast<platform::LinuxSettingsForm*>(sheet->viewNamed("form"));
    ASSERT_NE(form, nullptr);
    form->setGroups({{"Group",
                      "Words",
                      {{"on", SettingKind::Switch, "On & off", "Turns <it>"},
                       {"name", SettingKind::Text, "Name", "Of the shop"},
                       {"list", SettingKind::Lines, "List", "Of things"}}}});
    ASSERT_TRUE(harness.runUntil([this] { return gtk_widget_get_width(form->control("list")) > 0; }));
  }
  std::unique_ptr<platform::Window> sheet;
  platform::LinuxSettingsForm* form = nullptr;
};

TEST_F(LinuxSettingsFormTest, EveryRowIsLargeEnoughForAFinger) {
  for (const char* key : {"name", "list"}) {
    EXPECT_GE(gtk_widget_get_height(form->control(key)), 44) << key;
  }
  // A switch turns wherever its row is touched.
  GtkWidget* row = gtk_widget_get_ancestor(form->control("on"), GTK_TYPE_LIST_BOX_ROW);
  ASSERT_NE(row, nullptr);
  EXPECT_GE(gtk_widget_get_height(row), 44);
  EXPECT_FALSE(gtk_switch_get_active(GTK_SWITCH(form->control("on"))));
  gtk_widget_activate(row);
  EXPECT_TRUE(
      harness.runUntil([this] { return gtk_switch_get_active(GTK_SWITCH(form->control("on"))) != FALSE; }));
}

TEST_F(LinuxSettingsFormTest, TabLeavesAListOfLines) {
  EXPECT_FALSE(gtk_text_view_get_accepts_tab(GTK_TEXT_VIEW(form->control("list"))));
}

TEST_F(LinuxSettingsFormTest, ItsWidgetsMayOutliveIt) {
  GtkWidget* entry = GTK_WIDGET(g_object_ref(form->control("name")));
  sheet.reset();
  gtk_editable_set_text(GTK_EDITABLE(entry), "late");
  g_signal_emit_by_name(entry, "activate");
  g_object_unref(entry);
}

}  // namespace

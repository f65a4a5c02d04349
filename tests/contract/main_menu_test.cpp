#include "platform/linux/main_menu.h"

#include <optional>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "platform/bundle.h"
#include "tests/contract/toolkit_machine.h"
#include "tests/fakes/captured_log.h"

using platform::MainMenu;

namespace {

class MainMenuTest : public testing::Test {
 protected:
  MainMenuTest() { menu_->attachTo(toplevel()); }
  ~MainMenuTest() override { gtk_window_destroy(window_); }

  GtkWidget* toplevel() { return GTK_WIDGET(window_); }
  bool activate(const char* action) {
    return gtk_widget_activate_action(toplevel(), action, nullptr) != FALSE;
  }

  // The shortcut that a key press before the page would find, as "<Control>r".
  GtkShortcut* shortcut(const std::string& keys) {
    GtkShortcut* found = nullptr;
    GListModel* controllers = gtk_widget_observe_controllers(toplevel());
    for (guint at = 0; at < g_list_model_get_n_items(controllers); ++at) {
      auto* controller = static_cast<GtkEventController*>(g_list_model_get_item(controllers, at));
      if (GTK_IS_SHORTCUT_CONTROLLER(controller) &&
          gtk_event_controller_get_propagation_phase(controller) == GTK_PHASE_CAPTURE) {
        found = found == nullptr ? shortcutIn(G_LIST_MODEL(controller), keys) : found;
      }
      g_object_unref(controller);
    }
    g_object_unref(controllers);
    return found;
  }
  bool use(const std::string& keys) {
    GtkShortcut* found = shortcut(keys);
    return found != nullptr &&
           gtk_shortcut_action_activate(gtk_shortcut_get_action(found),
                                        static_cast<GtkShortcutActionFlags>(0), toplevel(), nullptr) != FALSE;
  }

  const platform::Bundle bundle_{LUMO_BUILD_DIR "/LumoBrowser.app"};
  std::optional<MainMenu> menu_{bundle_};
  GtkWindow* window_ = GTK_WINDOW(gtk_window_new());

 private:
  static GtkShortcut* shortcutIn(GListModel* shortcuts, const std::string& keys) {
    GtkShortcut* found = nullptr;
    for (guint at = 0; at < g_list_model_get_n_items(shortcuts); ++at) {
      auto* shortcut = static_cast<GtkShortcut*>(g_list_model_get_item(shortcuts, at));
      char* text = gtk_shortcut_trigger_to_string(gtk_shortcut_get_trigger(shortcut));
      if (text == keys) {
        found = shortcut;
      }
      g_free(text);
      g_object_unref(shortcut);
    }
    return found;
  }
};

}  // namespace

TEST_F(MainMenuTest, RunsTheHandlerOfAnItem) {
  int reloads = 0;
  EXPECT_FALSE(activate("app.ibReloadPage"));
  menu_->setAction("ibReloadPage:", [&] { ++reloads; });
  EXPECT_TRUE(activate("app.ibReloadPage"));
  EXPECT_EQ(reloads, 1);
  menu_->setAction("ibReloadPage:", [&] { reloads += 10; });
  EXPECT_TRUE(activate("app.ibReloadPage"));
  EXPECT_EQ(reloads, 11);
  menu_->setAction("ibReloadPage:", nullptr);
  EXPECT_FALSE(activate("app.ibReloadPage"));
  EXPECT_EQ(reloads, 11);
}

TEST_F(MainMenuTest, AHandlerMaySetAnotherOne) {
  std::string done;
  menu_->setAction("ibHomeButton:", [&] {
    menu_->setAction("ibHomeButton:", [&] { done += "second"; });
    done += "first ";
  });
  EXPECT_TRUE(activate("app.ibHomeButton"));
  EXPECT_TRUE(activate("app.ibHomeButton"));
  EXPECT_EQ(done, "first second");
}

TEST_F(MainMenuTest, HasTheShortcutsOfItsItems) {
  struct Case {
    const char* keys;
    const char* selector;
  };
  const Case cases[] = {{"<Control>comma", "ibOpenPreferencesWindow:"},
                        {"<Control>q", "terminate:"},
                        {"<Control>r", "ibReloadPage:"}};
  menu_->setVisible(false);
  for (const Case& one : cases) {
    int used = 0;
    EXPECT_FALSE(use(one.keys)) << one.keys;
    menu_->setAction(one.selector, [&] { ++used; });
    EXPECT_TRUE(use(one.keys)) << one.keys;
    EXPECT_EQ(used, 1) << one.keys;
  }
}

TEST_F(MainMenuTest, LeavesTheKeysOfTextToWhatHasTheKeyboard) {
  for (const char* keys : {"<Control>x", "<Control>c", "<Control>v", "<Control>a"}) {
    EXPECT_EQ(shortcut(keys), nullptr) << keys;
  }
}

TEST_F(MainMenuTest, DoesNothingWhileItsActionsAreOff) {
  int quits = 0;
  menu_->setAction("terminate:", [&] { ++quits; });
  menu_->setActionsEnabled(false);
  use("<Control>q");
  activate("app.terminate");
  // An action that comes while they are off is off as well.
  menu_->setAction("ibReloadPage:", [&] { ++quits; });
  use("<Control>r");
  activate("app.ibReloadPage");
  EXPECT_EQ(quits, 0);
  menu_->setActionsEnabled(true);
  use("<Control>q");
  use("<Control>r");
  EXPECT_EQ(quits, 2);
}

TEST_F(MainMenuTest, ShowsAndHidesEveryBarThatIsLeft) {
  GtkWidget* first = GTK_WIDGET(g_object_ref_sink(menu_->makeMenuBar()));
  menu_->setVisible(false);
  GtkWidget* second = GTK_WIDGET(g_object_ref_sink(menu_->makeMenuBar()));
  EXPECT_FALSE(menu_->isVisible());
  EXPECT_FALSE(gtk_widget_get_visible(first));
  EXPECT_FALSE(gtk_widget_get_visible(second));
  g_object_unref(first);
  menu_->setVisible(true);
  EXPECT_TRUE(gtk_widget_get_visible(second));
  // The bar outlives the menu.
  menu_.reset();
  g_object_unref(second);
}

TEST_F(MainMenuTest, LeavesToplevelsWithoutActionsWhenItGoes) {
  int used = 0;
  menu_->setAction("ibReloadPage:", [&] { ++used; });
  menu_.reset();
  EXPECT_FALSE(activate("app.ibReloadPage"));
  EXPECT_FALSE(use("<Control>r"));
  EXPECT_EQ(used, 0);
}

TEST_F(MainMenuTest, EditsWhatHadTheKeyboard) {
  GtkWidget* entry = gtk_entry_new();
  gtk_editable_set_text(GTK_EDITABLE(entry), "some text");
  gtk_window_set_child(window_, entry);
  gtk_window_set_focus(window_, GTK_WIDGET(gtk_editable_get_delegate(GTK_EDITABLE(entry))));
  gtk_editable_select_region(GTK_EDITABLE(entry), 0, 0);
  EXPECT_TRUE(activate("edit.select-all"));
  int begin = 0;
  int end = 0;
  EXPECT_TRUE(gtk_editable_get_selection_bounds(GTK_EDITABLE(entry), &begin, &end));
  EXPECT_EQ(end, 9);
  EXPECT_TRUE(activate("edit.cut"));
  EXPECT_STREQ(gtk_editable_get_text(GTK_EDITABLE(entry)), "");
  // What lies behind a sheet stays as it is.
  gtk_editable_set_text(GTK_EDITABLE(entry), "behind");
  gtk_editable_select_region(GTK_EDITABLE(entry), 0, -1);
  gtk_widget_set_sensitive(entry, FALSE);
  activate("edit.cut");
  EXPECT_STREQ(gtk_editable_get_text(GTK_EDITABLE(entry)), "behind");
}

TEST_F(MainMenuTest, IsEmptyWithoutItsResource) {
  const platform::Bundle empty;
  const fakes::CapturedLog log;
  MainMenu menu(empty);
  GtkWidget* bar = GTK_WIDGET(g_object_ref_sink(menu.makeMenuBar()));
  menu.attachTo(toplevel());
  g_object_unref(bar);
  EXPECT_EQ(log.lines().size(), 1U) << log.text();
}

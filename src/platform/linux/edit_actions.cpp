#include "platform/linux/edit_actions.h"

#include <string_view>

#include <gtk/gtk.h>
#include <webkit/webkit.h>

namespace platform {

namespace {

struct EditAction {
  const char* name;
  // What text fields and labels call it.
  const char* widgetAction;
  const char* pageCommand;
};

constexpr EditAction kActions[] = {
    {"cut", "clipboard.cut", WEBKIT_EDITING_COMMAND_CUT},
    {"copy", "clipboard.copy", WEBKIT_EDITING_COMMAND_COPY},
    {"paste", "clipboard.paste", WEBKIT_EDITING_COMMAND_PASTE},
    {"select-all", "selection.select-all", WEBKIT_EDITING_COMMAND_SELECT_ALL},
};

// Kept with its toplevel. An open menu has the keyboard itself, so the widget before it is remembered.
struct EditTarget {
  GWeakRef focus;
};

constexpr const char* kTargetKey = "lumo-edit-target";

void rememberFocus(GtkWindow* toplevel, GParamSpec*, gpointer target) {
  GtkWidget* focus = gtk_window_get_focus(toplevel);
  if (focus != nullptr && gtk_widget_get_ancestor(focus, GTK_TYPE_POPOVER) == nullptr &&
      gtk_widget_get_ancestor(focus, GTK_TYPE_POPOVER_MENU_BAR) == nullptr) {
    g_weak_ref_set(&static_cast<EditTarget*>(target)->focus, focus);
  }
}

void activated(GSimpleAction* action, GVariant*, gpointer target) {
  auto* focus = static_cast<GtkWidget*>(g_weak_ref_get(&static_cast<EditTarget*>(target)->focus));
  if (focus == nullptr) {
    return;
  }
  const std::string_view name = g_action_get_name(G_ACTION(action));
  for (const EditAction& candidate : kActions) {
    // What lies behind a sheet is not sensitive.
    if (candidate.name != name || gtk_widget_is_sensitive(focus) == FALSE) {
      continue;
    }
    GtkWidget* page = gtk_widget_get_ancestor(focus, WEBKIT_TYPE_WEB_VIEW);
    // The menu bar would keep the keyboard.
    if (GTK_IS_TEXT(focus)) {
      gtk_text_grab_focus_without_selecting(GTK_TEXT(focus));
    } else {
      gtk_widget_grab_focus(focus);
    }
    if (page != nullptr) {
      webkit_web_view_execute_editing_command(WEBKIT_WEB_VIEW(page), candidate.pageCommand);
    } else {
      gtk_widget_activate_action(focus, candidate.widgetAction, nullptr);
    }
  }
  g_object_unref(focus);
}

}  // namespace

void attachEditActions(GtkWidget* toplevel) {
  auto* target = new EditTarget;
  g_weak_ref_init(&target->focus, nullptr);
  GSimpleActionGroup* group = g_simple_action_group_new();
  for (const EditAction& edit : kActions) {
    GSimpleAction* action = g_simple_action_new(edit.name, nullptr);
    g_signal_connect(action, "activate", G_CALLBACK(activated), target);
    g_action_map_add_action(G_ACTION_MAP(group), G_ACTION(action));
    g_object_unref(action);
  }
  gtk_widget_insert_action_group(toplevel, "edit", G_ACTION_GROUP(group));
  g_object_unref(group);
  g_signal_connect(toplevel, "notify::focus-widget", G_CALLBACK(rememberFocus), target);
  // Freed when the toplevel is finalised, after its signals and actions have gone.
  g_object_set_data_full(G_OBJECT(toplevel), kTargetKey, target, [](gpointer data) {
    auto* old = static_cast<EditTarget*>(data);
    g_weak_ref_clear(&old->focus);
    delete old;
  });
}

}  // namespace platform

#include "platform/linux/main_menu.h"

#include <map>
#include <set>
#include <string_view>
#include <utility>

#include <gtk/gtk.h>

#include "platform/bundle.h"
#include "platform/linux/edit_actions.h"
#include "platform/log.h"

namespace platform {

namespace {

constexpr std::string_view kActionPrefix = "app.";

// Action names have no colons.
std::string actionName(std::string_view selector) {
  std::string name(selector);
  std::erase(name, ':');
  return name;
}

// The menu of the resource, or an empty one.
GMenuModel* loadMenu(const Bundle& bundle) {
  const auto path = bundle.pathForResource("MainMenu", "ui");
  if (!path) {
    NSLog("The resource MainMenu.ui is missing, so the menu bar is empty");
    return G_MENU_MODEL(g_menu_new());
  }
  GtkBuilder* builder = gtk_builder_new();
  GError* error = nullptr;
  GObject* menu = nullptr;
  if (gtk_builder_add_from_file(builder, path->c_str(), &error) != FALSE) {
    menu = gtk_builder_get_object(builder, "menubar");
  }
  GMenuModel* model = nullptr;
  if (menu != nullptr && G_IS_MENU_MODEL(menu)) {
    model = G_MENU_MODEL(g_object_ref(menu));
  } else {
    NSLog("The resource MainMenu.ui is damaged, so the menu bar is empty: %s",
          error == nullptr ? "it has no menu \"menubar\"" : error->message);
    model = G_MENU_MODEL(g_menu_new());
  }
  g_clear_error(&error);
  g_object_unref(builder);
  return model;
}

std::string itemText(GMenuModel* model, int item, const char* attribute) {
  char* text = nullptr;
  std::string copy;
  if (g_menu_model_get_item_attribute(model, item, attribute, "s", &text) != FALSE) {
    copy = text;
    g_free(text);
  }
  return copy;
}

void addShortcuts(GMenuModel* model, GtkShortcutController* controller) {
  const int count = g_menu_model_get_n_items(model);
  for (int item = 0; item < count; ++item) {
    for (const char* link : {G_MENU_LINK_SECTION, G_MENU_LINK_SUBMENU}) {
      GMenuModel* inner = g_menu_model_get_item_link(model, item, link);
      if (inner != nullptr) {
        addShortcuts(inner, controller);
        g_object_unref(inner);
      }
    }
    const std::string action = itemText(model, item, G_MENU_ATTRIBUTE_ACTION);
    const std::string accelerator = itemText(model, item, "accel");
    if (accelerator.empty() || !action.starts_with(kActionPrefix)) {
      continue;
    }
    GtkShortcutTrigger* trigger = gtk_shortcut_trigger_parse_string(accelerator.c_str());
    if (trigger == nullptr) {
      NSLog("The shortcut %s of the menu item %s is none", accelerator, action);
      continue;
    }
    gtk_shortcut_controller_add_shortcut(controller,
                                         gtk_shortcut_new(trigger, gtk_named_action_new(action.c_str())));
  }
}

}  // namespace

struct MainMenu::State {
  explicit State(const Bundle& bundle) : bundle(bundle) {}

  GMenuModel* menu() {
    if (model == nullptr) {
      model = loadMenu(bundle);
    }
    return model;
  }
  static void activated(GSimpleAction* action, GVariant*, gpointer self);
  static void barGone(gpointer self, GObject* bar) { static_cast<State*>(self)->bars.erase(GTK_WIDGET(bar)); }

  const Bundle& bundle;
  GMenuModel* model = nullptr;
  GSimpleActionGroup* actions = g_simple_action_group_new();
  std::map<std::string, std::function<void()>> handlers;
  bool enabled = true;
  bool visible = true;
  // Not owned; each tells when it goes.
  std::set<GtkWidget*> bars;
};

void MainMenu::State::activated(GSimpleAction* action, GVariant*, gpointer self) {
  const auto& handlers = static_cast<State*>(self)->handlers;
  const auto found = handlers.find(g_action_get_name(G_ACTION(action)));
  if (found != handlers.end()) {
    // A copy, since the handler may set another one.
    const auto handler = found->second;
    handler();
  }
}

MainMenu::MainMenu(const Bundle& bundle) : state_(std::make_unique<State>(bundle)) {}

MainMenu::~MainMenu() {
  for (GtkWidget* bar : state_->bars) {
    g_object_weak_unref(G_OBJECT(bar), State::barGone, state_.get());
  }
  // Toplevels may outlive this object and hold the group.
  for (const auto& [name, handler] : state_->handlers) {
    g_action_map_remove_action(G_ACTION_MAP(state_->actions), name.c_str());
  }
  g_object_unref(state_->actions);
  g_clear_object(&state_->model);
}

void MainMenu::setAction(const std::string& selector, std::function<void()> handler) {
  const std::string name = actionName(selector);
  if (!handler) {
    state_->handlers.erase(name);
    g_action_map_remove_action(G_ACTION_MAP(state_->actions), name.c_str());
    return;
  }
  state_->handlers[name] = std::move(handler);
  if (g_action_map_lookup_action(G_ACTION_MAP(state_->actions), name.c_str()) != nullptr) {
    return;
  }
  GSimpleAction* action = g_simple_action_new(name.c_str(), nullptr);
  g_simple_action_set_enabled(action, state_->enabled);
  g_signal_connect(action, "activate", G_CALLBACK(State::activated), state_.get());
  g_action_map_add_action(G_ACTION_MAP(state_->actions), G_ACTION(action));
  g_object_unref(action);
}

void MainMenu::setActionsEnabled(bool enabled) {
  state_->enabled = enabled;
  for (const auto& [name, handler] : state_->handlers) {
    GAction* action = g_action_map_lookup_action(G_ACTION_MAP(state_->actions), name.c_str());
    g_simple_action_set_enabled(G_SIMPLE_ACTION(action), enabled);
  }
}

GtkWidget* MainMenu::makeMenuBar() {
  GtkWidget* bar = gtk_popover_menu_bar_new_from_model(state_->menu());
  gtk_widget_set_visible(bar, state_->visible);
  state_->bars.insert(bar);
  g_object_weak_ref(G_OBJECT(bar), State::barGone, state_.get());
  return bar;
}

void MainMenu::attachTo(GtkWidget* toplevel) {
  gtk_widget_insert_action_group(toplevel, "app", G_ACTION_GROUP(state_->actions));
  attachEditActions(toplevel);
  GtkEventController* controller = gtk_shortcut_controller_new();
  gtk_shortcut_controller_set_scope(GTK_SHORTCUT_CONTROLLER(controller), GTK_SHORTCUT_SCOPE_GLOBAL);
  // A page gets a key only afterwards, so a page that hangs or keeps all keys to itself cannot take them.
  gtk_event_controller_set_propagation_phase(controller, GTK_PHASE_CAPTURE);
  addShortcuts(state_->menu(), GTK_SHORTCUT_CONTROLLER(controller));
  gtk_widget_add_controller(toplevel, controller);
}

void MainMenu::setVisible(bool visible) {
  state_->visible = visible;
  for (GtkWidget* bar : state_->bars) {
    gtk_widget_set_visible(bar, visible);
  }
}

bool MainMenu::isVisible() const {
  return state_->visible;
}

}  // namespace platform

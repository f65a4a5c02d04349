#include "platform/linux/engine_drop_guard.h"

#include <webkit/webkit.h>

namespace platform {

void EngineDropGuard::takeOff(GtkWidget* root) {
  for (GtkWidget* child = gtk_widget_get_first_child(root); child != nullptr;
       child = gtk_widget_get_next_sibling(child)) {
    if (WEBKIT_IS_WEB_VIEW(child)) {
      takeOffFrom(child);
    } else {
      takeOff(child);
    }
  }
}

void EngineDropGuard::takeOffFrom(GtkWidget* view) {
  std::vector<GtkEventController*> found;
  GListModel* controllers = gtk_widget_observe_controllers(view);
  for (guint index = 0; index < g_list_model_get_n_items(controllers); ++index) {
    auto* controller = GTK_EVENT_CONTROLLER(g_list_model_get_item(controllers, index));
    if (GTK_IS_DROP_TARGET_ASYNC(controller) || GTK_IS_DROP_TARGET(controller)) {
      found.push_back(controller);
    } else {
      g_object_unref(controller);
    }
  }
  g_object_unref(controllers);
  for (GtkEventController* controller : found) {
    auto* target = new Target{view, controller};
    g_object_add_weak_pointer(G_OBJECT(view), reinterpret_cast<gpointer*>(&target->view));
    gtk_widget_remove_controller(view, controller);
    targets_.push_back(target);
  }
}

void EngineDropGuard::putBack() {
  for (Target* target : targets_) {
    if (target->view != nullptr) {
      g_object_remove_weak_pointer(G_OBJECT(target->view), reinterpret_cast<gpointer*>(&target->view));
      gtk_widget_add_controller(target->view, target->controller);
    } else {
      g_object_unref(target->controller);
    }
    delete target;
  }
  targets_.clear();
}

}  // namespace platform

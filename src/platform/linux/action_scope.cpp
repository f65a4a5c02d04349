#include "platform/linux/action_scope.h"

#include <memory>
#include <string>

#include "platform/linux/linux_window.h"

namespace {

// Shared by the scope and its closures, which live as long as their widgets.
struct Target {
  platform::LinuxWindow* window = nullptr;
};

struct Connection {
  std::shared_ptr<Target> target;
  std::string action;
};

}  // namespace

G_BEGIN_DECLS
struct _LumoActionScope {
  GtkBuilderCScope parent_instance;
  std::shared_ptr<Target>* target;
};
G_DECLARE_FINAL_TYPE(LumoActionScope, lumo_action_scope, LUMO, ACTION_SCOPE, GtkBuilderCScope)
G_END_DECLS

static void activated(GtkWidget* widget, gpointer data) {
  const Connection connection = *static_cast<Connection*>(data);
  if (connection.target->window != nullptr) {
    connection.target->window->perform(connection.action, widget);
  }
}

static GClosure* createClosure(GtkBuilderScope* scope, GtkBuilder* /*builder*/, const char* name,
                               GtkBuilderClosureFlags /*flags*/, GObject* /*object*/, GError** /*error*/) {
  auto* connection = new Connection{*LUMO_ACTION_SCOPE(scope)->target, name};
  return g_cclosure_new(G_CALLBACK(activated), connection,
                        [](gpointer data, GClosure*) { delete static_cast<Connection*>(data); });
}

static void scopeInterfaceInit(GtkBuilderScopeInterface* iface) {
  iface->create_closure = createClosure;
}

G_DEFINE_FINAL_TYPE_WITH_CODE(LumoActionScope, lumo_action_scope, GTK_TYPE_BUILDER_CSCOPE,
                              G_IMPLEMENT_INTERFACE(GTK_TYPE_BUILDER_SCOPE, scopeInterfaceInit))

static void scopeFinalize(GObject* object) {
  delete LUMO_ACTION_SCOPE(object)->target;
  G_OBJECT_CLASS(lumo_action_scope_parent_class)->finalize(object);
}

static void lumo_action_scope_class_init(LumoActionScopeClass* klass) {
  G_OBJECT_CLASS(klass)->finalize = scopeFinalize;
}

static void lumo_action_scope_init(LumoActionScope* scope) {
  scope->target = new std::shared_ptr<Target>(std::make_shared<Target>());
}

namespace platform {

GtkBuilderScope* newActionScope() {
  return GTK_BUILDER_SCOPE(g_object_new(lumo_action_scope_get_type(), nullptr));
}

void setActionScopeWindow(GtkBuilderScope* scope, LinuxWindow* window) {
  (*LUMO_ACTION_SCOPE(scope)->target)->window = window;
}

}  // namespace platform

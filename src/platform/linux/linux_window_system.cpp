#include "platform/linux/linux_window_system.h"

#include <gtk/gtk.h>

#include "platform/bundle.h"
#include "platform/linux/action_scope.h"
#include "platform/linux/layer_bin.h"
#include "platform/linux/linux_drop_view.h"
#include "platform/linux/linux_view.h"
#include "platform/linux/linux_window.h"
#include "platform/linux/web_engine.h"
#include "platform/linux/window_front.h"
#include "platform/log.h"
#include "platform/web_view.h"

namespace platform {

namespace {

bool hasObject(GtkBuilder* builder, const char* name, GType type) {
  GObject* object = gtk_builder_get_object(builder, name);
  return object != nullptr && g_type_is_a(G_OBJECT_TYPE(object), type) != FALSE;
}

class StaysOpen : public WindowDelegate {
 public:
  bool windowShouldClose(Window& /*window*/) override { return false; }
  void windowDidResize(Window& /*window*/) override {}
  void windowDidEnterFullScreen(Window& /*window*/) override {}
} staysOpen;

}  // namespace

LinuxWindowSystem::~LinuxWindowSystem() = default;

LinuxWindowSystem::LinuxWindowSystem(Dispatch& dispatch, LinuxApplication& application, const Bundle& bundle,
                                     WebEngine& engine)
    : dispatch_(dispatch), application_(application), bundle_(bundle), engine_(engine) {
  // The builder looks widget classes up by name.
  g_type_ensure(LUMO_TYPE_LAYER_BIN);
  g_type_ensure(LUMO_TYPE_DROP_LAYER);
  loadStyle();
}

void LinuxWindowSystem::loadStyle() {
  const auto path = bundle_.pathForResource("lumo", "css");
  GdkDisplay* display = gdk_display_get_default();
  if (!path || display == nullptr) {
    NSLog("there is no style sheet lumo.css");
    return;
  }
  GtkCssProvider* provider = gtk_css_provider_new();
  gtk_css_provider_load_from_path(provider, path->c_str());
  gtk_style_context_add_provider_for_display(display, GTK_STYLE_PROVIDER(provider),
                                             GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
  g_object_unref(provider);
}

std::unique_ptr<Window> LinuxWindowSystem::loadWindow(const std::string& name) {
  const auto path = bundle_.pathForResource(name, "ui");
  if (!path) {
    NSLog("there is no window description %@", name);
    return nullptr;
  }
  GtkBuilderScope* scope = newActionScope();
  GtkBuilder* builder = gtk_builder_new();
  gtk_builder_set_scope(builder, scope);
  GError* error = nullptr;
  std::unique_ptr<Window> window;
  if (gtk_builder_add_from_file(builder, path->c_str(), &error) == FALSE) {
    NSLog("the window description %@ is damaged: %@", name, error->message);
    g_error_free(error);
  } else if (!hasObject(builder, "window", GTK_TYPE_WINDOW) &&
             !hasObject(builder, "sheet", GTK_TYPE_WIDGET)) {
    NSLog("the window description %@ has neither a window nor a sheet", name);
  } else {
    engine_.adoptDormantViews(builder);
    auto made = std::make_unique<LinuxWindow>(dispatch_, application_, builder);
    setActionScopeWindow(scope, made.get());
    window = std::move(made);
  }
  g_object_unref(builder);
  g_object_unref(scope);
  return window;
}

std::unique_ptr<WebView> LinuxWindowSystem::makeWebView(const Rect& frame) {
  std::unique_ptr<WebView> made = engine_.makeWebView();
  made->setFrame(frame);
  return made;
}

std::unique_ptr<LinuxWindow> LinuxWindowSystem::makeAlertWindow() {
  // It goes with the answer to its alert; nothing else closes it.
  constexpr const char* kDescription = R"(<interface>
    <object class="GtkWindow" id="window">
      <property name="default-width">560</property>
      <property name="default-height">320</property>
      <property name="deletable">false</property>
      <child><object class="GtkOverlay" id="sheetRoot">
        <child><object class="GtkBox" id="contentView"/></child>
      </object></child>
    </object></interface>)";
  GtkBuilder* builder = gtk_builder_new_from_string(kDescription, -1);
  auto window = std::make_unique<LinuxWindow>(dispatch_, application_, builder);
  g_object_unref(builder);
  window->setTitle(bundle_.infoString("CFBundleDisplayName").value_or("LumoBrowser"));
  window->setLevel(kStatusWindowLevel);
  window->setDelegate(&staysOpen);
  return window;
}

void LinuxWindowSystem::beginApplicationAlert(const Alert& alert, AlertCompletion completion) {
  GtkWindow* front = frontmostWindow();
  auto* window = front == nullptr ? nullptr : dynamic_cast<LinuxWindow*>(windowOf(GTK_WIDGET(front)));
  if (window == nullptr || window->host() == nullptr) {
    if (alertWindow_ == nullptr) {
      alertWindow_ = makeAlertWindow();
    }
    window = alertWindow_.get();
  }
  if (window == alertWindow_.get()) {
    ++alertsOfOwnWindow_;
    completion = [this, completion = std::move(completion)](const AlertResponse& response) {
      if (--alertsOfOwnWindow_ == 0) {
        alertWindow_->orderOut();
      }
      completion(response);
    };
  }
  // An owner of its own: it waits for no sheet of the window.
  window->host()->enqueueAlert(this, alert, std::move(completion));
  window->makeKeyAndOrderFront();
}

std::vector<Rect> LinuxWindowSystem::screens() const {
  return screenFrames();
}

}  // namespace platform

#include "platform/linux/web_engine.h"

#include <webkit/webkit.h>

#include "platform/linux/kiosk_answers.h"
#include "platform/linux/linux_web_view.h"
#include "platform/linux/toolkit.h"
#include "platform/queue.h"

namespace platform {

WebEngine::WebEngine(Dispatch& dispatch) : dispatch_(dispatch), plainSettings_(webkit_settings_new()) {
  answerForSession(webkit_network_session_get_default());
}

WebEngine::~WebEngine() {
  g_object_unref(plainSettings_);
  if (prewarmed_ != nullptr) {
    g_object_unref(prewarmed_);
  }
}

WebKitSettings* WebEngine::makeSettings() const {
  WebKitSettings* settings = webkit_settings_new();
  if (!hasGpu()) {
    webkit_settings_set_hardware_acceleration_policy(settings, WEBKIT_HARDWARE_ACCELERATION_POLICY_NEVER);
  }
  answerInSettings(settings);
  return settings;
}

GtkWidget* WebEngine::makeEngineView() {
  WebKitSettings* settings = makeSettings();
  auto* view = GTK_WIDGET(g_object_new(WEBKIT_TYPE_WEB_VIEW, "settings", settings, "accessible-role",
                                       GTK_ACCESSIBLE_ROLE_GROUP, nullptr));
  g_object_unref(settings);
  // What it is called where nobody names it differs from version to version.
  gtk_accessible_update_property(GTK_ACCESSIBLE(view), GTK_ACCESSIBLE_PROPERTY_LABEL, "Page", -1);
  return view;
}

void WebEngine::prewarm() {
  prewarmed_ = GTK_WIDGET(g_object_ref_sink(makeEngineView()));
  webkit_web_view_evaluate_javascript(WEBKIT_WEB_VIEW(prewarmed_), "", 0, nullptr, nullptr, nullptr, nullptr,
                                      nullptr);
}

std::unique_ptr<WebView> WebEngine::makeWebView() {
  GtkWidget* view = prewarmed_ != nullptr ? prewarmed_ : GTK_WIDGET(g_object_ref_sink(makeEngineView()));
  prewarmed_ = nullptr;
  auto made = std::make_unique<LinuxWebView>(dispatch_, *this, view, view);
  g_object_unref(view);  // The web view holds its own reference now.
  return made;
}

void WebEngine::adoptDormantViews(GtkBuilder* builder) {
  GSList* objects = gtk_builder_get_objects(builder);
  for (GSList* entry = objects; entry != nullptr; entry = entry->next) {
    if (GTK_IS_BOX(entry->data) && gtk_widget_has_css_class(GTK_WIDGET(entry->data), "lumo-web-view")) {
      // The widget owns its view.
      LinuxView::attachOwned(GTK_WIDGET(entry->data),
                             new LinuxWebView(dispatch_, *this, GTK_WIDGET(entry->data), nullptr));
    }
  }
  g_slist_free(objects);
}

const char* WebEngine::userAgent() const {
  return webkit_settings_get_user_agent(plainSettings_);
}

void WebEngine::disableCache() {
  webkit_web_context_set_cache_model(webkit_web_context_get_default(), WEBKIT_CACHE_MODEL_DOCUMENT_VIEWER);
  webkit_website_data_manager_clear(
      webkit_network_session_get_website_data_manager(webkit_network_session_get_default()),
      static_cast<WebKitWebsiteDataTypes>(WEBKIT_WEBSITE_DATA_MEMORY_CACHE | WEBKIT_WEBSITE_DATA_DISK_CACHE),
      0, nullptr, nullptr, nullptr);
}

}  // namespace platform

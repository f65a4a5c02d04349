#include "platform/linux/linux_web_view.h"

#include <algorithm>

#include "platform/linux/kiosk_answers.h"
#include "platform/linux/linux_web_frames.h"
#include "platform/linux/web_engine.h"
#include "platform/log.h"

namespace platform {

namespace {

// The engine passes keys on to a text view of its own that stands in no window, to learn what the toolkit's
// key bindings make of them. Some bindings act all the same: F7 hides that view's cursor, after which the
// toolkit fails an assertion with the next blink and ends the program; others open its context menu or a
// choice of pictures over the page, and take the keyboard.
gboolean isKeyOfTheTextView(GtkEventControllerKey*, guint key, guint, GdkModifierType state, gpointer) {
  const bool control = (state & GDK_CONTROL_MASK) != 0;
  const bool shift = (state & GDK_SHIFT_MASK) != 0;
  return key == GDK_KEY_F7 || key == GDK_KEY_Menu || (shift && key == GDK_KEY_F10) ||
         (control && (key == GDK_KEY_period || key == GDK_KEY_semicolon));
}

void keepKeysFromTheTextView(GtkWidget* engineView) {
  GtkEventController* keys = gtk_event_controller_key_new();
  gtk_event_controller_set_propagation_phase(keys, GTK_PHASE_CAPTURE);
  g_signal_connect(keys, "key-pressed", G_CALLBACK(isKeyOfTheTextView), nullptr);
  gtk_widget_add_controller(engineView, keys);
}

}  // namespace

LinuxWebView::LinuxWebView(Dispatch& dispatch, WebEngine& engine, GtkWidget* widget, GtkWidget* engineView)
    : LinuxView(dispatch, widget), engine_(engine) {
  if (engineView != nullptr) {
    web_ = WEBKIT_WEB_VIEW(g_object_ref_sink(engineView));
    attach(widget, this);
    connectEngine();
  }
}

LinuxWebView::~LinuxWebView() {
  frames_.reset();
  if (web_ != nullptr) {
    g_signal_handlers_disconnect_by_data(web_, this);
    if (widget() == GTK_WIDGET(web_)) {
      leaveSuperview();
    }
    g_object_unref(web_);
  }
}

WebKitWebView* LinuxWebView::engineView() {
  if (web_ == nullptr) {
    GtkWidget* made = engine_.makeEngineView();
    web_ = WEBKIT_WEB_VIEW(g_object_ref_sink(made));
    gtk_widget_set_hexpand(made, TRUE);
    gtk_widget_set_vexpand(made, TRUE);
    gtk_box_append(GTK_BOX(widget()), made);
    connectEngine();
    if (customUserAgent_) {
      applyUserAgent();
    }
  }
  return web_;
}

void LinuxWebView::connectEngine() {
  answerForView(web_);
  followFrames();
  keepKeysFromTheTextView(GTK_WIDGET(web_));
  g_signal_connect(web_, "load-changed",
                   G_CALLBACK(+[](WebKitWebView*, WebKitLoadEvent event, gpointer self) {
                     static_cast<LinuxWebView*>(self)->loadChanged(event);
                   }),
                   this);
  g_signal_connect(web_, "load-failed",
                   G_CALLBACK(+[](WebKitWebView*, WebKitLoadEvent event, char* uri, GError* error,
                                  gpointer self) -> gboolean {
                     return static_cast<LinuxWebView*>(self)->loadFailed(event, uri, error);
                   }),
                   this);
  g_signal_connect(web_, "decide-policy",
                   G_CALLBACK(+[](WebKitWebView*, WebKitPolicyDecision* decision,
                                  WebKitPolicyDecisionType type, gpointer self) -> gboolean {
                     return static_cast<LinuxWebView*>(self)->decidePolicy(decision, type);
                   }),
                   this);
  g_signal_connect(
      web_, "create",
      G_CALLBACK(+[](WebKitWebView*, WebKitNavigationAction* action, gpointer self) -> GtkWidget* {
        static_cast<LinuxWebView*>(self)->newWindow(action);
        return nullptr;
      }),
      this);
  g_signal_connect(web_, "script-dialog",
                   G_CALLBACK(+[](WebKitWebView*, WebKitScriptDialog* dialog, gpointer self) -> gboolean {
                     return static_cast<LinuxWebView*>(self)->scriptDialog(dialog);
                   }),
                   this);
  g_signal_connect(web_, "web-process-terminated",
                   G_CALLBACK(+[](WebKitWebView*, WebKitWebProcessTerminationReason reason, gpointer self) {
                     static_cast<LinuxWebView*>(self)->processEnded(reason);
                   }),
                   this);
  g_signal_connect(web_, "close", G_CALLBACK(+[](WebKitWebView*, gpointer self) {
                     auto* view = static_cast<LinuxWebView*>(self);
                     if (view->delegate_ != nullptr) {
                       view->delegate_->webViewDidClose(*view);
                     }
                   }),
                   this);
}

void LinuxWebView::setFrameDelegate(WebFrameDelegate* delegate) {
  frameDelegate_ = delegate;
  followFrames();
}

void LinuxWebView::followFrames() {
  frames_ = web_ == nullptr || frameDelegate_ == nullptr
                ? nullptr
                : std::make_unique<LinuxWebFrames>(*this, web_, *frameDelegate_);
}

void LinuxWebView::setHidden(bool hidden) {
  if (!hidden) {
    engineView();
  }
  LinuxView::setHidden(hidden);
}

std::optional<Url> LinuxWebView::url() const {
  if (decidedUrl_) {
    return decidedUrl_;
  }
  const char* uri = web_ == nullptr || addressless_ ? nullptr : webkit_web_view_get_uri(web_);
  return uri == nullptr ? std::nullopt : Url::parseEngineText(uri);
}

UrlRequest LinuxWebView::frameRequest() const {
  const auto present = url();
  return {
      present ? *present : *Url::parse("about:blank"), CachePolicy::UseProtocolCachePolicy, Millis{0}, {}};
}

void LinuxWebView::goBack() {
  if (web_ != nullptr) {
    webkit_web_view_go_back(web_);
  }
}

void LinuxWebView::goForward() {
  if (web_ != nullptr) {
    webkit_web_view_go_forward(web_);
  }
}

double LinuxWebView::estimatedProgress() const {
  return web_ == nullptr ? 0 : webkit_web_view_get_estimated_load_progress(web_);
}

std::string LinuxWebView::userAgentNow() const {
  return customUserAgent_ ? *customUserAgent_ : engine_.userAgent();
}

void LinuxWebView::setCustomUserAgent(const std::string& agent) {
  // A header value cannot hold line breaks (RFC 9110, 5.5).
  std::string clean = agent;
  std::erase_if(clean, [](char c) { return c == '\r' || c == '\n' || c == '\0'; });
  customUserAgent_ = clean;
  if (web_ != nullptr) {
    applyUserAgent();
  }
}

void LinuxWebView::applyUserAgent() {
  WebKitSettings* settings = webkit_web_view_get_settings(web_);
  webkit_settings_set_user_agent(settings, customUserAgent_->c_str());
  if (!customUserAgent_->empty() && *customUserAgent_ != webkit_settings_get_user_agent(settings)) {
    NSLog("the engine refuses the user agent \"%@\"", *customUserAgent_);
  }
}

void LinuxWebView::disableCache() {
  engine_.disableCache();
}

}  // namespace platform

#pragma once

#include <memory>

typedef struct _GtkBuilder GtkBuilder;
typedef struct _GtkWidget GtkWidget;
typedef struct _WebKitSettings WebKitSettings;

namespace platform {

class Dispatch;
class WebView;

// The web engine of the process: one network session, one kind of settings, and a view that is made early so
// that its process starts while the window is still being built. Main queue only; `dispatch` must outlive it.
class WebEngine {
 public:
  explicit WebEngine(Dispatch& dispatch);
  ~WebEngine();
  WebEngine(const WebEngine&) = delete;
  WebEngine& operator=(const WebEngine&) = delete;

  // Makes the first view and starts its process. The next makeWebView gives this view.
  void prewarm();
  std::unique_ptr<WebView> makeWebView();
  // Attaches a dormant web view to every widget of a window description that has the style class
  // "lumo-web-view".
  void adoptDormantViews(GtkBuilder* builder);

  // A floating engine view with the kiosk's settings.
  GtkWidget* makeEngineView();
  // The engine's own user agent, without a process.
  const char* userAgent() const;
  // Empties memory and disk cache and uses none from now on. Cookies and storage stay.
  void disableCache();

 private:
  WebKitSettings* makeSettings() const;

  Dispatch& dispatch_;
  WebKitSettings* plainSettings_;
  GtkWidget* prewarmed_ = nullptr;
};

}  // namespace platform

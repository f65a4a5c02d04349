#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/window.h"

namespace platform {

class Bundle;
class Dispatch;
class LinuxApplication;
class LinuxWindow;
class WebEngine;

// Windows from the bundle's descriptions (Resources/NAME.ui), web views from the engine. Made after the
// toolkit is initialised; all that it is given must outlive it.
class LinuxWindowSystem final : public WindowSystem {
 public:
  LinuxWindowSystem(Dispatch& dispatch, LinuxApplication& application, const Bundle& bundle,
                    WebEngine& engine);
  ~LinuxWindowSystem() override;

  std::unique_ptr<Window> loadWindow(const std::string& name) override;
  std::unique_ptr<WebView> makeWebView(const Rect& frame) override;
  void beginApplicationAlert(const Alert& alert, AlertCompletion completion) override;
  std::vector<Rect> screens() const override;

 private:
  void loadStyle();
  std::unique_ptr<LinuxWindow> makeAlertWindow();

  Dispatch& dispatch_;
  LinuxApplication& application_;
  const Bundle& bundle_;
  WebEngine& engine_;
  // For alerts where no other window is visible. It lives as long as they do, hidden between them.
  std::unique_ptr<LinuxWindow> alertWindow_;
  int alertsOfOwnWindow_ = 0;
};

}  // namespace platform

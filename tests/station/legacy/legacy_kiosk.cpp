#include "app/AppDelegate.h"
#include "browser/MyWebViewWindowController.h"
#include "kiosk.h"
#include "platform/web_view.h"

// The kiosk as it is, but for its first window, which shows the legacy view in the place of the usual one.

namespace {

class LegacyKiosk final : public platform::ApplicationDelegate {
 public:
  explicit LegacyKiosk(platform::Platform& platform) : shell_(platform) {}

  void applicationWillFinishLaunching() override {
    shell_.applicationWillFinishLaunching();
    lumo::MyWebViewWindowController& browser = *shell_.myWebViewWindowController;
    browser.ibWKWebView->setHidden(true);
    browser.ibWebView->setHidden(false);
    browser.window()->makeFirstResponder(*browser.ibWebView);
  }
  void applicationDidFinishLaunching() override { shell_.applicationDidFinishLaunching(); }
  platform::TerminateReply applicationShouldTerminate() override {
    return shell_.applicationShouldTerminate();
  }
  bool applicationShouldTerminateAfterLastWindowClosed() override {
    return shell_.applicationShouldTerminateAfterLastWindowClosed();
  }
  void applicationDidResignActive() override { shell_.applicationDidResignActive(); }
  void applicationWillTerminate() override { shell_.applicationWillTerminate(); }
  void applicationMustTerminate() override { shell_.applicationMustTerminate(); }
  void application_openURLs(const std::vector<std::string>& urls) override {
    shell_.application_openURLs(urls);
  }
  void application_openFiles(const std::vector<std::string>& filenames) override {
    shell_.application_openFiles(filenames);
  }
  bool applicationOpenUntitledFile() override { return shell_.applicationOpenUntitledFile(); }

 private:
  lumo::AppDelegate shell_;
};

}  // namespace

int main() {
  return lumo::runKiosk([](platform::Platform& platform) { return std::make_unique<LegacyKiosk>(platform); });
}

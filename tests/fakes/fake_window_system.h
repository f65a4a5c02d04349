#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/window.h"
#include "tests/fakes/fake_web_view.h"
#include "tests/fakes/fake_window.h"
#include "tests/fakes/sheet_queue.h"

namespace fakes {

// Makes fake windows from descriptions in code. Knows the system's three (window_descriptions.h) from the
// start.
class FakeWindowSystem final : public platform::WindowSystem {
 public:
  using Description = std::function<void(FakeWindow&)>;

  explicit FakeWindowSystem(Stage stage);

  std::unique_ptr<platform::Window> loadWindow(const std::string& name) override;
  std::unique_ptr<platform::WebView> makeWebView(const platform::Rect& frame) override;
  void beginApplicationAlert(const platform::Alert& alert, platform::AlertCompletion completion) override;
  std::vector<platform::Rect> screens() const override { return *screens_; }

  // The application's alert that is shown now, or null, and the person's answer to it. Throws
  // std::logic_error when no alert with such a button is shown.
  const platform::Alert* currentAlert() const { return alerts_.currentAlert(); }
  void pressAlertButton(const std::string& title, const std::string& text = "") {
    alerts_.press(title, text);
  }
  // The application's alerts go unanswered, as with the window on which they were shown.
  void dropAlerts() { alerts_.clear(); }

  // One screen of 1920 x 1080 at first.
  void setScreens(std::vector<platform::Rect> screens) { *screens_ = std::move(screens); }
  // Sets or replaces a description.
  void describe(const std::string& name, FakeWindow::Kind kind, Description description);
  // Makes a description missing.
  void removeDescription(const std::string& name) { descriptions_.erase(name); }
  // What each window's closing by the person calls; see FakeApplication::noteLastWindowClosed.
  void setClosedByPerson(platform::Block block) { closedByPerson_ = std::move(block); }

  // The names loaded so far, also those that failed.
  const std::vector<std::string>& loaded() const { return loaded_; }
  // The window of that name that was loaded last, or null when there is none or it is gone.
  FakeWindow* window(const std::string& name = "MyWebViewWindowController") const;
  // The web view that was made last, or null when there is none or it is gone. The journal calls them
  // "webView1", "webView2", … in the order of their making.
  FakeWebView* webView() const;
  // All web views that were made and are still there.
  std::vector<FakeWebView*> webViews() const;

 private:
  template <class T>
  using Living = std::vector<std::pair<T*, std::weak_ptr<void>>>;

  const Stage stage_;
  FakeWindow::Screens screens_;
  std::map<std::string, std::pair<FakeWindow::Kind, Description>> descriptions_;
  platform::Block closedByPerson_;
  SheetQueue alerts_;
  std::vector<std::string> loaded_;
  Living<FakeWindow> windows_;
  Living<FakeWebView> webViews_;
};

}  // namespace fakes

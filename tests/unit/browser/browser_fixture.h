#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/PreferenceKeys.h"
#include "browser/MyWebViewWindowController.h"
#include "preferences/MyPreferencesWindowController.h"
#include "tests/fakes/captured_log.h"
#include "tests/fakes/test_platform.h"
#include "tests/fakes/window_descriptions.h"

namespace browsertest {

constexpr const char* kBrowserWindow = "MyWebViewWindowController";
constexpr const char* kPreferencesWindow = "MyPreferencesWindowController";
// The frame that the fake window description gives.
constexpr platform::Rect kUsualFrame{100, 80, 1024, 768};
constexpr platform::Rect kScreen{0, 0, 1920, 1080};

// Whether the texts contain these in this order; others may stand between them.
MATCHER_P(HasInOrder, steps, "has in order " + testing::PrintToString(steps)) {
  auto from = arg.begin();
  for (const std::string& step : steps) {
    from = std::find(from, arg.end(), step);
    if (from == arg.end()) {
      *result_listener << "where \"" << step << "\" is missing or comes too early";
      return false;
    }
    ++from;
  }
  return true;
}

inline auto hasInOrder(std::vector<std::string> steps) {
  return HasInOrder(std::move(steps));
}

// The fake windows, with the question for the screens in the journal: it shows when the window's frame is
// compared with the screen's.
class NotedScreens final : public platform::WindowSystem {
 public:
  NotedScreens(platform::WindowSystem& windows, fakes::Journal& journal)
      : windows_(windows), journal_(journal) {}

  std::unique_ptr<platform::Window> loadWindow(const std::string& name) override {
    return windows_.loadWindow(name);
  }
  std::unique_ptr<platform::WebView> makeWebView(const platform::Rect& frame) override {
    return windows_.makeWebView(frame);
  }
  void beginApplicationAlert(const platform::Alert& alert, platform::AlertCompletion completion) override {
    windows_.beginApplicationAlert(alert, std::move(completion));
  }
  std::vector<platform::Rect> screens() const override {
    journal_.add("windows screens");
    return windows_.screens();
  }

 private:
  platform::WindowSystem& windows_;
  fakes::Journal& journal_;
};

// A machine with its log captured.
class MachineTest : public testing::Test {
 protected:
  void set(const char* key, platform::PropertyList value) {
    machine.defaults.setObject(std::move(value), key);
  }
  std::optional<std::string> runningAddress() const {
    return machine.defaults.stringForKey(lumo::prefRunningUrlString);
  }
  fakes::FakeWindow& window() { return *machine.window(); }
  fakes::FakeWebView& page() { return *machine.webView(); }

  fakes::CapturedLog log;
  fakes::TestPlatform machine;
  NotedScreens screens{machine.windows, machine.journal};
  platform::Platform platform{machine.dispatch,      machine.application,    screens,
                              machine.bus,           machine.http,           machine.defaults,
                              machine.notifications, machine.bundle.bundle()};
};

// With the browser window's controller, which a test makes after it has set the preferences.
class BrowserTest : public MachineTest {
 protected:
  lumo::MyWebViewWindowController& make() {
    browser = std::make_unique<lumo::MyWebViewWindowController>(platform);
    return *browser;
  }
  // The same with the window on screen and everything settled; log and journal begin then.
  lumo::MyWebViewWindowController& makeShown() {
    make().showWindow();
    machine.dispatch.runUntilIdle();
    machine.journal.clear();
    log.clear();
    return *browser;
  }
  // Changes the browser window's description before it is loaded.
  void describe(const fakes::FakeWindowSystem::Description& description) {
    machine.windows.describe(kBrowserWindow, fakes::FakeWindow::Kind::Toplevel, description);
  }
  // A description that brings its own current web view, "ibWKWebView", prepared by `prepare`.
  void describeWithWebView(std::function<void(fakes::FakeWebView&)> prepare = {}) {
    describe([prepare = std::move(prepare)](fakes::FakeWindow& described) {
      fakes::describeBrowserWindow(described);
      auto view = std::make_unique<fakes::FakeWebView>(described.stage(), "ibWKWebView");
      if (prepare) {
        prepare(*view);
      }
      described.adopt(std::move(view));
    });
  }
  fakes::FakeWebView& legacy() { return window().view<fakes::FakeWebView>("ibWebView"); }
  // Everything that the browser window itself was asked, without its name.
  std::vector<std::string> windowSteps() const {
    std::vector<std::string> steps;
    const std::string prefix = std::string(kBrowserWindow) + " ";
    for (const std::string& entry : machine.journal.startingWith(prefix)) {
      steps.push_back(entry.substr(prefix.size()));
    }
    return steps;
  }
  // Everything that was asked of the machine, but for the address field's text.
  std::vector<std::string> steps() const {
    std::vector<std::string> entries = machine.journal.entries();
    std::erase_if(entries, [](const std::string& entry) { return entry.starts_with("ibTextField set"); });
    return entries;
  }
  // The addresses that the current view was asked to load.
  std::vector<std::string> loaded() {
    std::vector<std::string> addresses;
    for (const platform::UrlRequest& request : page().requests()) {
      addresses.push_back(request.url.absoluteString());
    }
    return addresses;
  }

  std::unique_ptr<lumo::MyWebViewWindowController> browser;
};

}  // namespace browsertest

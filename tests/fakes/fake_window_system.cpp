#include "tests/fakes/fake_window_system.h"

#include "platform/log.h"
#include "tests/fakes/window_descriptions.h"

namespace fakes {

using platform::Rect;

FakeWindowSystem::FakeWindowSystem(Stage stage)
    : stage_(stage),
      screens_(std::make_shared<std::vector<Rect>>(1, Rect{0, 0, 1920, 1080})),
      alerts_(stage, "application") {
  describe("MyWebViewWindowController", FakeWindow::Kind::Toplevel, describeBrowserWindow);
  describe("MyPreferencesWindowController", FakeWindow::Kind::Sheet, describePreferencesWindow);
  describe("FindLumoJunivaServerWindowController", FakeWindow::Kind::Sheet, describeFinderWindow);
}

void FakeWindowSystem::describe(const std::string& name, FakeWindow::Kind kind, Description description) {
  descriptions_[name] = {kind, std::move(description)};
}

std::unique_ptr<platform::Window> FakeWindowSystem::loadWindow(const std::string& name) {
  stage_.journal.add("windows loadWindow " + name);
  loaded_.push_back(name);
  const auto found = descriptions_.find(name);
  if (found == descriptions_.end()) {
    platform::NSLog("there is no window description %@", name);
    return nullptr;
  }
  auto window = std::make_unique<FakeWindow>(stage_, name, found->second.first, screens_);
  found->second.second(*window);
  window->setClosedByPerson(closedByPerson_);
  windows_.emplace_back(window.get(), window->contentView().lifetime());
  return window;
}

std::unique_ptr<platform::WebView> FakeWindowSystem::makeWebView(const Rect& frame) {
  ViewOptions options;
  options.frame = frame;
  const std::string name = "webView" + std::to_string(webViews_.size() + 1);
  stage_.journal.add("windows makeWebView " + name);
  auto view = std::make_unique<FakeWebView>(stage_, name, options);
  webViews_.emplace_back(view.get(), view->lifetime());
  return view;
}

void FakeWindowSystem::beginApplicationAlert(const platform::Alert& alert,
                                             platform::AlertCompletion completion) {
  alerts_.addAlert(alert, std::move(completion));
}

FakeWindow* FakeWindowSystem::window(const std::string& name) const {
  for (auto entry = windows_.rbegin(); entry != windows_.rend(); ++entry) {
    if (!entry->second.expired() && entry->first->name() == name) {
      return entry->first;
    }
  }
  return nullptr;
}

FakeWebView* FakeWindowSystem::webView() const {
  const auto& [view, lifetime] = webViews_.empty() ? Living<FakeWebView>::value_type{} : webViews_.back();
  return lifetime.expired() ? nullptr : view;
}

std::vector<FakeWebView*> FakeWindowSystem::webViews() const {
  std::vector<FakeWebView*> living;
  for (const auto& [view, lifetime] : webViews_) {
    if (!lifetime.expired()) {
      living.push_back(view);
    }
  }
  return living;
}

}  // namespace fakes

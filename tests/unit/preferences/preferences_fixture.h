#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/PreferenceKeys.h"
#include "preferences/MyPreferencesWindowController.h"
#include "tests/fakes/captured_log.h"
#include "tests/fakes/fake_settings_form.h"
#include "tests/fakes/test_platform.h"
#include "tests/unit/discovery/scripted_network.h"

namespace preferencestest {

constexpr const char* kWindow = "MyPreferencesWindowController";
constexpr const char* kFinder = "FindLumoJunivaServerWindowController";

// The settings on a fake machine, once opened a sheet on the browser window.
class PreferencesTest : public testing::Test {
 protected:
  using Controller = lumo::MyPreferencesWindowController;

  explicit PreferencesTest(const fakes::TestBundle::Info& info = fakes::TestBundle::usualInfo())
      : machine(info) {}

  lumo::ThisComputer computer() {
    return {network.get(), [this] { return mainInterface; }, [this] { return interfaces; }};
  }
  // Makes the controller and its sheet; nothing has run yet.
  Controller& load(const Controller* previous = nullptr) {
    controller = std::make_unique<Controller>(
        platform, [this] { ++navBarShown; }, previous, computer());
    if (controller->window() != nullptr) {
      parent->beginSheet(*controller->window(), [this](int code) { codes.push_back(code); });
    }
    return *controller;
  }
  // The same, settled: the first test of the connection has ended, journal and log begin then.
  Controller& open() {
    load();
    machine.dispatch.advance(platform::Millis{6000});
    machine.journal.clear();
    log.clear();
    return *controller;
  }
  void serve(const std::string& url, int status = 200, platform::Millis delay = platform::Millis{0}) {
    machine.http.answer(url, fakes::FakeHttpClient::status(status), delay);
  }
  std::optional<std::string> text(const char* key) const { return machine.defaults.stringForKey(key); }
  std::optional<platform::PropertyList> stored(const std::string& key) const {
    const platform::Dictionary values = machine.defaults.userValues();
    const auto* value = values.find(key);
    return value == nullptr ? std::nullopt : std::optional(*value);
  }
  fakes::FakeWindow& sheet() { return *machine.windows.window(kWindow); }
  fakes::FakeWindow& browser() { return dynamic_cast<fakes::FakeWindow&>(*parent); }
  fakes::FakeSettingsForm& form() { return sheet().view<fakes::FakeSettingsForm>("ibSettingsForm"); }
  fakes::FakeImageView& light() { return sheet().view<fakes::FakeImageView>("fStatus1View"); }
  std::string shown(const std::string& view) {
    return sheet().view<fakes::FakeTextField>(view).stringValue();
  }

  fakes::CapturedLog log;
  fakes::TestPlatform machine;
  platform::Platform platform = machine.platform();
  discoverytest::ScriptedNetwork network;
  std::string mainInterface = "en0";
  std::optional<std::vector<lumo::InterfaceEntry>> interfaces;
  std::unique_ptr<platform::Window> parent = machine.windows.loadWindow("MyWebViewWindowController");
  std::unique_ptr<Controller> controller;
  int navBarShown = 0;
  std::vector<int> codes;
};

}  // namespace preferencestest

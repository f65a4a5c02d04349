#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/PreferenceKeys.h"
#include "discovery/FindLumoJunivaServerWindowController.h"
#include "tests/fakes/captured_log.h"
#include "tests/fakes/test_platform.h"
#include "tests/unit/discovery/scripted_network.h"

namespace discoverytest {

constexpr const char* kFinderWindow = "FindLumoJunivaServerWindowController";

// A finder on a fake machine, once opened shown as a sheet on a window.
class FinderTest : public testing::Test {
 protected:
  using Finder = lumo::FindLumoJunivaServerWindowController;

  // Opens the finder and lets it settle; journal and log begin then.
  Finder& open() {
    finder = Finder::make(platform, network.get());
    parent->beginSheet(*finder->window(), [this](int code) { endedWith = code; });
    machine.dispatch.runUntilIdle();
    machine.journal.clear();
    log.clear();
    return *finder;
  }
  fakes::FakeWindow& window() { return *machine.windows.window(kFinderWindow); }
  fakes::FakeButton& button(const std::string& name) { return window().view<fakes::FakeButton>(name); }
  fakes::FakeButton& choice(int index) { return button("ibChoiceButton" + std::to_string(index)); }
  std::string status() { return window().view<fakes::FakeTextField>("fScanningResultString").stringValue(); }
  std::string bottomLine() { return window().view<fakes::FakeTextField>("fBottomLineString").stringValue(); }
  fakes::FakeProgressIndicator& bar() {
    return window().view<fakes::FakeProgressIndicator>("fProgressIndicator");
  }
  // The texts of the status line with their times, "2 Checking 10.0.1.1:9090".
  std::vector<std::string> statusTexts() const {
    constexpr const char* kSet = "fScanningResultString setStringValue ";
    std::vector<std::string> texts;
    for (std::string entry : machine.journal.timed()) {
      if (const auto begin = entry.find(kSet); begin != std::string::npos) {
        texts.push_back(entry.erase(begin, std::string(kSet).size()));
      }
    }
    return texts;
  }
  // All addresses refuse, but for those that are scripted.
  void refuseOthers() {
    machine.http.setOtherwise([](const std::string&) {
      return fakes::FakeHttpClient::Answer{fakes::FakeHttpClient::error("Connection refused")};
    });
  }
  void serve(const std::string& address, const std::string& name = "Lumo-Juniva/2.1",
             platform::Millis delay = platform::Millis{0}) {
    machine.http.answer("http://" + address + ":9090", fakes::FakeHttpClient::status(200, {{"Server", name}}),
                        delay);
  }
  // Presses the scan button and lets the time pass that any scan takes.
  void scan() {
    ASSERT_TRUE(window().press("ibScanButton"));
    machine.dispatch.advance(platform::Millis{20'000});
  }
  std::optional<platform::Dictionary> stored() const {
    return machine.defaults.dictionaryForKey(lumo::prefSelectedJunivaServerInfo);
  }

  fakes::CapturedLog log;
  fakes::TestPlatform machine;
  platform::Platform platform = machine.platform();
  ScriptedNetwork network;
  std::unique_ptr<platform::Window> parent = machine.windows.loadWindow("MyWebViewWindowController");
  std::shared_ptr<Finder> finder;
  std::optional<int> endedWith;
};

}  // namespace discoverytest

#pragma once

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "platform/bundle.h"
#include "platform/notification_center.h"
#include "platform/platform.h"
#include "platform/user_defaults.h"
#include "tests/fakes/fake_application.h"
#include "tests/fakes/fake_http_client.h"
#include "tests/fakes/fake_message_bus.h"
#include "tests/fakes/fake_window_system.h"
#include "tests/fakes/journal.h"
#include "tests/fakes/sim_dispatch.h"

namespace fakes {

// A bundle in a temporary folder, which goes with it.
class TestBundle {
 public:
  using Info = std::vector<std::pair<std::string, std::string>>;

  // Names, identifier and versions as the real bundle has them.
  static Info usualInfo();

  explicit TestBundle(const Info& info = usualInfo());
  ~TestBundle();
  TestBundle(const TestBundle&) = delete;
  TestBundle& operator=(const TestBundle&) = delete;

  platform::Bundle& bundle() { return bundle_; }
  // Writes a file into the bundle's Resources and answers its path.
  std::filesystem::path addResource(const std::string& name, const std::string& content);

 private:
  const std::filesystem::path folder_;
  platform::Bundle bundle_;
};

// A machine in a test: one of each fake, over one simulated time and one journal. A controller gets
// platform().
//
//   fakes::TestPlatform machine;
//   AppDelegate delegate(machine.platform());
//   machine.application.launch(delegate);
//   machine.dispatch.advance(Millis{100});
//   EXPECT_TRUE(machine.journal.contains("application activate 3"));
//
// Controllers are to be declared after it.
class TestPlatform {
 public:
  explicit TestPlatform(const TestBundle::Info& info = TestBundle::usualInfo());

  platform::Platform platform() {
    return {dispatch, application, windows, bus, http, defaults, notifications, bundle.bundle()};
  }
  // The browser's window and its web view, when they were made and are still there; else null.
  FakeWindow* window() const { return windows.window(); }
  FakeWebView* webView() const { return windows.webView(); }

  SimDispatch dispatch;
  Journal journal{dispatch};
  FakeApplication application{dispatch, journal};
  FakeWindowSystem windows{{dispatch, journal}};
  FakeMessageBus bus{journal};
  FakeHttpClient http{dispatch};
  // In memory only.
  platform::UserDefaults defaults;
  platform::NotificationCenter notifications;
  TestBundle bundle;
};

}  // namespace fakes

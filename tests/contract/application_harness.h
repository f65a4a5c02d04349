#pragma once

#include <csignal>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gio/gio.h>

#include "platform/bundle.h"
#include "platform/linux/linux_application.h"
#include "platform/linux/session_bus.h"
#include "tests/contract/bus_client.h"
#include "tests/contract/dispatch_harness.h"
#include "tests/contract/other_copy.h"
#include "tests/contract/private_bus.h"
#include "tests/fakes/fake_application.h"
#include "tests/fakes/sim_dispatch.h"

// An application, and the desktop around it. The requests may be made from the delegate's calls on; they
// arrive in order.
class ApplicationHarness {
 public:
  virtual ~ApplicationHarness() = default;
  virtual platform::Application& application() = 0;
  virtual platform::Dispatch& dispatch() = 0;
  virtual void openURLs(const std::vector<std::string>& urls) = 0;
  virtual void openFiles(const std::vector<std::string>& filenames) = 0;
  virtual void requestService(const platform::Pasteboard& pasteboard, const std::string& userData) = 0;
  virtual void endSession() = 0;
  virtual void closeLastWindow() = 0;
  // Answers its process identifier.
  virtual int startOlderCopy() = 0;
};

class FakeApplicationHarness : public ApplicationHarness {
 public:
  platform::Application& application() override { return application_; }
  platform::Dispatch& dispatch() override { return dispatch_; }
  void openURLs(const std::vector<std::string>& urls) override {
    dispatch_.main().async([this, urls] { application_.openURLs(urls); });
  }
  void openFiles(const std::vector<std::string>& filenames) override {
    dispatch_.main().async([this, filenames] { application_.openFiles(filenames); });
  }
  void requestService(const platform::Pasteboard& pasteboard, const std::string& userData) override {
    dispatch_.main().async(
        [this, pasteboard, userData] { application_.requestService(pasteboard, userData); });
  }
  void endSession() override {
    dispatch_.main().async([this] { application_.mustTerminate(); });
  }
  void closeLastWindow() override { application_.noteLastWindowClosed(); }
  int startOlderCopy() override {
    application_.setOthers(std::vector{17});
    return 17;
  }

 private:
  fakes::SimDispatch dispatch_;
  fakes::Journal journal_{dispatch_};
  fakes::FakeApplication application_{dispatch_, journal_};
};

class LinuxApplicationHarness : public ApplicationHarness {
 public:
  platform::LinuxApplication& application() override { return application_; }
  platform::Dispatch& dispatch() override { return dispatch_; }
  void openURLs(const std::vector<std::string>& urls) override { client_.open(urls); }
  void openFiles(const std::vector<std::string>& filenames) override {
    std::vector<std::string> urls;
    for (const std::string& name : filenames) {
      char* url = g_filename_to_uri(name.c_str(), nullptr, nullptr);
      urls.emplace_back(url);
      g_free(url);
    }
    client_.open(urls);
  }
  void requestService(const platform::Pasteboard& pasteboard, const std::string& userData) override {
    client_.search(pasteboard.types, pasteboard.filenames.value_or(std::vector<std::string>{}),
                   pasteboard.string.value_or(""), userData);
  }
  void endSession() override { std::raise(SIGTERM); }
  void closeLastWindow() override { application_.noteLastWindowClosed(); }
  int startOlderCopy() override {
    older_ = std::make_unique<OtherCopy>(daemon_.folder());
    return older_->process();
  }

  PrivateBus& daemon() { return daemon_; }
  BusClient& client() { return client_; }

 private:
  PrivateBus daemon_;
  ScopedEnvironment address_{"DBUS_SESSION_BUS_ADDRESS", daemon_.address()};
  ScopedEnvironment runtime_{"XDG_RUNTIME_DIR", daemon_.folder().string()};
  platform::LinuxDispatch dispatch_;
  platform::SessionBus bus_{dispatch_};
  platform::Bundle bundle_;
  platform::LinuxApplication application_{dispatch_, bus_, bundle_};
  BusClient client_{daemon_.address()};
  std::unique_ptr<OtherCopy> older_;
};

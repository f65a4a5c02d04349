#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>
#include <gtk/gtk.h>

#include "platform/bundle.h"
#include "platform/linux/linux_application.h"
#include "platform/linux/linux_dispatch.h"
#include "platform/linux/linux_window_system.h"
#include "platform/linux/session_bus.h"
#include "platform/linux/toolkit.h"
#include "platform/linux/web_engine.h"
#include "tests/contract/private_display.h"
#include "tests/contract/toolkit_descriptions.h"

// What a process can have only once: the toolkit on a private display, with a home of its own and without a
// session bus, and the platform's objects above it.
class ToolkitMachine {
 public:
  ToolkitMachine() : folder_(makeFolder()) {
    setenv("DISPLAY", display_.name().c_str(), 1);
    unsetenv("WAYLAND_DISPLAY");
    for (const char* name : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR",
                             "XDG_STATE_HOME"}) {
      const std::filesystem::path path = folder_ / name;
      std::filesystem::create_directory(path);
      std::filesystem::permissions(path, std::filesystem::perms::owner_all);
      setenv(name, path.c_str(), 1);
    }
    // The engine's sandbox looks at the folder of the bus, so that has to be there.
    setenv("DBUS_SESSION_BUS_ADDRESS",
           ("unix:path=" + (folder_ / "XDG_RUNTIME_DIR" / "none").string()).c_str(), 1);
    setenv("GTK_A11Y", "none", 1);
    setenv("GSETTINGS_BACKEND", "memory", 1);
    for (const char* name : {"http_proxy", "https_proxy", "HTTP_PROXY", "HTTPS_PROXY", "all_proxy"}) {
      unsetenv(name);
    }
    writeBundle();
    // A critical message of a library is a broken promise of ours.
    g_log_set_writer_func(
        [](GLogLevelFlags level, const GLogField* fields, gsize count, gpointer) {
          if ((level & G_LOG_LEVEL_CRITICAL) != 0) {
            char* text = g_log_writer_format_fields(level, fields, count, FALSE);
            ADD_FAILURE() << text;
            g_free(text);
          }
          return g_log_writer_default(level, fields, count, nullptr);
        },
        nullptr, nullptr);
    platform::prepareDrawingEnvironment();
    parts_ = std::make_unique<Parts>(folder_ / "Contract.app");
  }
  ~ToolkitMachine() {
    parts_.reset();
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }
  ToolkitMachine(const ToolkitMachine&) = delete;
  ToolkitMachine& operator=(const ToolkitMachine&) = delete;

  platform::LinuxDispatch& dispatch() { return parts_->dispatch; }
  platform::WebEngine& engine() { return parts_->engine; }
  platform::LinuxWindowSystem& windows() { return parts_->windows; }
  const std::string& display() const { return display_.name(); }

 private:
  struct Parts {
    explicit Parts(const std::filesystem::path& folder)
        : bundle(folder), application(dispatch, bus, bundle), initialized(initialize()) {}
    static bool initialize() {
      if (!platform::initializeToolkit()) {
        throw std::runtime_error("the toolkit has no display");
      }
      platform::initializeStyle();
      return true;
    }

    platform::LinuxDispatch dispatch;
    platform::SessionBus bus{dispatch};
    platform::Bundle bundle;
    platform::LinuxApplication application;
    bool initialized;
    platform::WebEngine engine{dispatch};
    platform::LinuxWindowSystem windows{dispatch, application, bundle, engine};
  };

  static std::filesystem::path makeFolder() {
    char name[] = "/tmp/lumo-toolkit-XXXXXX";
    if (mkdtemp(name) == nullptr) {
      throw std::runtime_error("no folder for the test");
    }
    return name;
  }

  // The program's own resources and the descriptions of these tests.
  void writeBundle() {
    const std::filesystem::path resources = folder_ / "Contract.app" / "Resources";
    std::filesystem::create_directories(resources);
    std::filesystem::copy(LUMO_BUILD_DIR "/LumoBrowser.app/Info.plist", folder_ / "Contract.app");
    std::filesystem::copy(LUMO_BUILD_DIR "/LumoBrowser.app/Resources", resources);
    for (const auto& [name, text] : toolkitDescriptions()) {
      std::ofstream(resources / name) << text;
    }
  }

  const std::filesystem::path folder_;
  PrivateDisplay display_;
  std::unique_ptr<Parts> parts_;
};

class ToolkitEnvironment : public testing::Environment {
 public:
  static ToolkitMachine& machine() { return *machine_; }
  void SetUp() override { machine_ = std::make_unique<ToolkitMachine>(); }
  void TearDown() override { machine_.reset(); }

 private:
  static inline std::unique_ptr<ToolkitMachine> machine_;
};

inline testing::Environment* const toolkitEnvironment =
    testing::AddGlobalTestEnvironment(new ToolkitEnvironment);

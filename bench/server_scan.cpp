// Times the kiosk's search for photo servers: server_scan BUNDLE ADDRESS SERVERS
//
// The finder's own window searches the network that this process is in, once; started by bench/scan, in a
// network that is the bench's own. It searches nothing unless this computer has ADDRESS there, and fails
// unless it finds as many servers as expected. One line of JSON tells the milliseconds from the press to the
// last change of the window, and the longest that one turn of the main loop has taken meanwhile. Exit status
// 1: a step failed; 2: bad usage or no display.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>

#include "discovery/FindLumoJunivaServerWindowController.h"
#include "platform/bundle.h"
#include "platform/linux/linux_application.h"
#include "platform/linux/linux_dispatch.h"
#include "platform/linux/linux_http_client.h"
#include "platform/linux/linux_message_bus.h"
#include "platform/linux/linux_window_system.h"
#include "platform/linux/session_bus.h"
#include "platform/linux/toolkit.h"
#include "platform/linux/web_engine.h"
#include "platform/notification_center.h"
#include "platform/user_defaults.h"

namespace {

using platform::Millis;
using Finder = lumo::FindLumoJunivaServerWindowController;

constexpr Millis kPatience{15'000};
constexpr Millis kTurn{1};

[[noreturn]] void fail(const std::string& why) {
  std::fprintf(stderr, "server_scan: %s\n", why.c_str());
  std::exit(1);
}

double milliseconds(std::chrono::steady_clock::duration duration) {
  return std::chrono::duration<double, std::milli>(duration).count();
}

class Bench {
 public:
  explicit Bench(const char* bundle) : bundle_(bundle) {
    parent_ = windows_.loadWindow("MyWebViewWindowController");
    finder_ = Finder::make(platform_);
    if (parent_ == nullptr || finder_->window() == nullptr) {
      fail("the bundle has no window");
    }
    parent_->makeKeyAndOrderFront();
    parent_->beginSheet(*finder_->window(), [](int) {});
    runUntil(
        [this] { return finder_->window()->frame().width > 0 && !finder_->fLocalIPAddressString.empty(); },
        "the finder's window");
    // The frames of its first showing are none of the scan's.
    for (int turn = 0; turn < 300; ++turn) {
      dispatch_.runMainOnce(kTurn);
    }
  }

  void scan(const std::string& address, std::size_t servers) {
    if (finder_->fLocalIPAddressString != address) {
      fail("this is another network: " + finder_->fLocalIPAddressString);
    }
    longestTurn_ = {};
    const auto start = std::chrono::steady_clock::now();
    finder_->ibDoTestButton(nullptr);
    runUntil([this, servers] { return isShown(servers); }, "the scan");
    const auto end = std::chrono::steady_clock::now();
    const std::size_t found = finder_->fFoundList()->size();
    if (found != servers) {
      fail("found " + std::to_string(found) + " servers");
    }
    std::printf("{\"scan_ms\": %.1f, \"longest_turn_ms\": %.1f}\n", milliseconds(end - start),
                milliseconds(longestTurn_));
  }

 private:
  void runUntil(const std::function<bool()>& reached, const char* what) {
    const Millis end = dispatch_.now() + kPatience;
    while (!reached()) {
      if (dispatch_.now() > end) {
        fail(std::string(what) + " takes too long");
      }
      const auto turn = std::chrono::steady_clock::now();
      dispatch_.runMainOnce(kTurn);
      longestTurn_ = std::max(longestTurn_, std::chrono::steady_clock::now() - turn);
    }
  }
  // Whether the window says how the scan has ended.
  bool isShown(std::size_t servers) {
    const platform::View* choice = finder_->window()->viewWithTag(5000);
    const bool isTold = servers == 0 ? finder_->fScanningResultString.find("!!") != std::string::npos
                                     : choice != nullptr && !choice->isHidden();
    return finder_->fFoundList() && isTold;
  }

  platform::Bundle bundle_;
  platform::LinuxDispatch dispatch_;
  platform::SessionBus sessionBus_{dispatch_};
  platform::LinuxApplication application_{dispatch_, sessionBus_, bundle_};
  platform::WebEngine engine_{dispatch_};
  platform::LinuxWindowSystem windows_{dispatch_, application_, bundle_, engine_};
  platform::LinuxMessageBus bus_{sessionBus_};
  platform::LinuxHttpClient http_;
  platform::UserDefaults defaults_;
  platform::NotificationCenter notifications_;
  platform::Platform platform_{dispatch_, application_, windows_,       bus_,
                               http_,     defaults_,    notifications_, bundle_};
  std::unique_ptr<platform::Window> parent_;
  std::shared_ptr<Finder> finder_;
  std::chrono::steady_clock::duration longestTurn_{};
};

}  // namespace

int main(int count, char** arguments) {
  if (count != 4) {
    std::fprintf(stderr, "Usage: server_scan BUNDLE ADDRESS SERVERS\n");
    return 2;
  }
  platform::prepareDrawingEnvironment();
  if (!platform::initializeToolkit()) {
    return 2;
  }
  platform::initializeStyle();
  Bench bench(arguments[1]);
  bench.scan(arguments[2], std::strtoul(arguments[3], nullptr, 10));
  // The scan's worker may still be at its last steps; nobody waits for them.
  std::fflush(stdout);
  std::_Exit(0);
}

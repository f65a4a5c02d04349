#include "platform/linux/linux_application.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <utility>

#include <glib-unix.h>
#include <gtk/gtk.h>
#include <unistd.h>

#include "platform/linux/linux_services.h"
#include "platform/linux/lost_screen.h"
#include "platform/linux/main_menu.h"
#include "platform/linux/open_request.h"
#include "platform/linux/request_gate.h"
#include "platform/linux/session_bus.h"
#include "platform/linux/single_instance.h"
#include "platform/linux/toolkit.h"
#include "platform/linux/window_front.h"
#include "platform/log.h"

namespace platform {

namespace {

// Without options of its own (a launcher): all windows, whatever is in front.
constexpr unsigned kUsualActivation = kActivateAllWindows | kActivateIgnoringOtherApps;

// The load of the start reaches the main queue through worker threads, which give no sign of it; they need
// microseconds. A request that came with the start must not overtake it.
constexpr Millis kStartLoadTime{100};

constexpr int kEndSignals[] = {SIGTERM, SIGINT, SIGHUP};

}  // namespace

struct LinuxApplication::State : std::enable_shared_from_this<State> {
  State(Dispatch& dispatch, SessionBus& bus, const Bundle& bundle)
      : dispatch(dispatch), bus(bus), menu(bundle) {}

  // Runs `block` on the main queue if the application still runs then.
  void post(std::function<void(State&)> block) {
    dispatch.main().async([weak = weak_from_this(), block = std::move(block)] {
      const auto state = weak.lock();
      if (state && state->delegate != nullptr) {
        block(*state);
      }
    });
  }
  // The same for a request of another program, not before the start is over.
  bool request(std::function<void(State&)> block) {
    return gate.pass([this, block = std::move(block)] { post(block); });
  }

  void terminate();
  void openGateLater();
  void deliver(const OpenRequest& request);
  void activateFor(std::optional<unsigned> options);
  void search(const Pasteboard& pasteboard, const std::string& userData);
  std::shared_ptr<const ServiceHandlers> serviceHandlers();
  void checkActive();
  static gboolean endSignal(gpointer self);

  Dispatch& dispatch;
  SessionBus& bus;
  MainMenu menu;
  SingleInstance instance{kServiceName};
  RequestGate gate;
  GMainLoop* loop = nullptr;
  ApplicationDelegate* delegate = nullptr;
  ServicesProvider* services = nullptr;
  bool asking = false;
  bool askAgain = false;
  bool ended = false;
  bool active = false;
  bool checkPending = false;
};

void LinuxApplication::State::terminate() {
  if (delegate == nullptr || ended) {
    return;
  }
  if (asking) {
    askAgain = true;
    return;
  }
  asking = true;
  const TerminateReply reply = delegate->applicationShouldTerminate();
  asking = false;
  const bool again = std::exchange(askAgain, false);
  if (reply == TerminateReply::Cancel) {
    if (again) {
      post([](State& state) { state.terminate(); });
    }
    return;
  }
  ended = true;
  delegate->applicationWillTerminate();
  bus.flush();
  g_main_loop_quit(loop);
}

gboolean LinuxApplication::State::endSignal(gpointer self) {
  static_cast<State*>(self)->post([](State& state) { state.delegate->applicationMustTerminate(); });
  return G_SOURCE_CONTINUE;
}

void LinuxApplication::State::openGateLater() {
  dispatch.global().after(kStartLoadTime, [weak = weak_from_this(), &main = dispatch.main()] {
    main.async([weak] {
      if (const auto state = weak.lock()) {
        state->gate.open();
      }
    });
  });
}

void LinuxApplication::State::deliver(const OpenRequest& request) {
  if (request.kind == OpenRequest::Kind::Files) {
    delegate->application_openFiles(request.items);
  } else {
    delegate->application_openURLs(request.items);
  }
}

void LinuxApplication::State::activateFor(std::optional<unsigned> options) {
  // A launcher that starts a program which has no window asks for a new one.
  if (!options && !hasVisibleWindow()) {
    delegate->applicationOpenUntitledFile();
  }
  bringWindowsToFront(options.value_or(kUsualActivation));
}

void LinuxApplication::State::search(const Pasteboard& pasteboard, const std::string& userData) {
  if (services == nullptr) {
    NSLog("Request SearchFromPasteboard: there is nobody to handle it");
    return;
  }
  services->SearchFromPasteboard_userData_error(pasteboard, userData);
}

std::shared_ptr<const ServiceHandlers> LinuxApplication::State::serviceHandlers() {
  auto handlers = std::make_shared<ServiceHandlers>();
  const auto pass = [weak = weak_from_this()](std::function<void(State&)> block) {
    const auto state = weak.lock();
    return state && state->request(std::move(block));
  };
  handlers->activate = [pass](std::optional<unsigned> options) {
    return pass([options](State& state) { state.activateFor(options); });
  };
  handlers->open = [pass](const std::vector<std::string>& addresses) {
    return pass([requests = openRequests(addresses)](State& state) {
      for (const OpenRequest& request : requests) {
        state.deliver(request);
      }
    });
  };
  handlers->search = [pass](const Pasteboard& pasteboard, const std::string& userData) {
    return pass([pasteboard, userData](State& state) { state.search(pasteboard, userData); });
  };
  return handlers;
}

void LinuxApplication::State::checkActive() {
  checkPending = false;
  if (std::exchange(active, hasActiveWindow()) && !active) {
    post([](State& state) { state.delegate->applicationDidResignActive(); });
  }
}

LinuxApplication::LinuxApplication(Dispatch& dispatch, SessionBus& bus, const Bundle& bundle)
    : state_(std::make_shared<State>(dispatch, bus, bundle)) {
  state_->menu.setAction("terminate:", [state = state_.get()] { state->terminate(); });
}

LinuxApplication::~LinuxApplication() = default;

std::optional<std::vector<RunningApplication>> LinuxApplication::runningApplications() {
  return state_->instance.claim(runtimeFolder());
}

int LinuxApplication::processIdentifier() const {
  return getpid();
}

void LinuxApplication::activateOther(const RunningApplication& other, unsigned options) {
  const auto end = std::chrono::steady_clock::now() + SessionBus::kPatience;
  GDBusConnection* connection = state_->bus.connection();
  std::optional<std::string> failure = "there is no session bus";
  if (connection != nullptr) {
    const auto left = std::chrono::duration_cast<Millis>(end - std::chrono::steady_clock::now());
    failure = requestActivation(connection, options, left);
  }
  if (failure && !bringProcessToFront(other.processIdentifier, options)) {
    NSLog("The running copy %d was not brought to the front: %s", other.processIdentifier, *failure);
  }
}

int LinuxApplication::run(ApplicationDelegate& delegate) {
  const auto state = state_;
  state->delegate = &delegate;
  state->ended = false;
  state->loop = g_main_loop_new(nullptr, FALSE);
  // A reader that goes away must not end the kiosk. Not SIG_IGN, which children would inherit.
  std::signal(SIGPIPE, [](int) {});
  guint signals[std::size(kEndSignals)];
  for (std::size_t at = 0; at < std::size(kEndSignals); ++at) {
    signals[at] = g_unix_signal_add(kEndSignals[at], State::endSignal, state.get());
  }
  setLostScreenHandler([raw = state.get()] {
    NSLog("The screen was lost");
    raw->delegate->applicationMustTerminate();
    raw->bus.flush();
  });
  state->bus.start(kServiceName, [handlers = state->serviceHandlers()](GDBusConnection* connection) {
    registerServices(connection, handlers);
  });
  delegate.applicationWillFinishLaunching();
  const bool canWrite = hasFonts();
  if (!canWrite) {
    NSLog("There is no font to write with; fonts-dejavu-core would do");
  } else if (!state->ended) {
    delegate.applicationDidFinishLaunching();
  }
  if (canWrite && !state->ended) {
    state->openGateLater();
    g_main_loop_run(state->loop);
  }
  setLostScreenHandler(nullptr);
  for (const guint signal : signals) {
    g_source_remove(signal);
  }
  g_main_loop_unref(std::exchange(state->loop, nullptr));
  state->delegate = nullptr;
  return canWrite ? EXIT_SUCCESS : EXIT_FAILURE;
}

void LinuxApplication::terminate() {
  if (state_->dispatch.main().isCurrent()) {
    state_->terminate();
  } else {
    state_->post([](State& state) { state.terminate(); });
  }
}

void LinuxApplication::runToTermination() {
  while (!state_->ended) {
    g_main_context_iteration(nullptr, TRUE);
  }
  LinuxApplication::exitProcess(EXIT_SUCCESS);
}

void LinuxApplication::openURL(const std::string& url) {
  // Not by way of the desktop, which knows the scheme only where the kiosk is installed.
  if (!state_->request([url](State& state) { state.delegate->application_openURLs({url}); })) {
    NSLog("%@ is not opened: too many requests wait", url);
  }
}

void LinuxApplication::setServicesProvider(ServicesProvider* provider) {
  state_->services = provider;
}

void LinuxApplication::setMenuAction(const std::string& action, std::function<void()> handler) {
  state_->menu.setAction(action, std::move(handler));
}

void LinuxApplication::setMenuBarVisible(bool visible) {
  state_->menu.setVisible(visible);
}

bool LinuxApplication::isMenuBarVisible() const {
  return state_->menu.isVisible();
}

void LinuxApplication::activate(unsigned options) {
  bringWindowsToFront(options);
}

void LinuxApplication::beep() {
  if (gtk_is_initialized() != FALSE || gtk_init_check() != FALSE) {
    GdkDisplay* display = gdk_display_get_default();
    gdk_display_beep(display);
    gdk_display_flush(display);
  } else if (isatty(STDERR_FILENO) != 0) {
    std::fputc('\a', stderr);
  }
}

void LinuxApplication::exitProcess(int status) {
  std::fflush(nullptr);
  // Not exit: worker threads still run and use what its handlers would take down.
  _exit(status);
}

GtkWidget* LinuxApplication::makeMenuBar() {
  return state_->menu.makeMenuBar();
}

void LinuxApplication::attachTo(GtkWidget* toplevel) {
  state_->menu.attachTo(toplevel);
}

void LinuxApplication::setActionsEnabled(bool enabled) {
  state_->menu.setActionsEnabled(enabled);
}

void LinuxApplication::noteActiveChanged(bool active) {
  if (active) {
    state_->active = true;
    return;
  }
  if (std::exchange(state_->checkPending, true)) {
    return;
  }
  // Of two windows of ours the one loses the keyboard before the other gets it.
  g_idle_add_full(
      G_PRIORITY_DEFAULT_IDLE,
      [](gpointer data) -> gboolean {
        if (const auto state = static_cast<std::weak_ptr<State>*>(data)->lock()) {
          state->checkActive();
        }
        return G_SOURCE_REMOVE;
      },
      new std::weak_ptr<State>(state_),
      [](gpointer data) { delete static_cast<std::weak_ptr<State>*>(data); });
}

void LinuxApplication::noteLastWindowClosed() {
  state_->post([](State& state) {
    if (state.delegate->applicationShouldTerminateAfterLastWindowClosed()) {
      state.terminate();
    }
  });
}

}  // namespace platform

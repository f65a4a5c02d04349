#include "kiosk.h"

#include <csignal>
#include <cstdio>

#include <fcntl.h>
#include <unistd.h>

#include "app/AppDelegate.h"
#include "platform/bundle.h"
#include "platform/capabilities.h"
#include "platform/file_descriptor.h"
#include "platform/linux/bus_environment.h"
#include "platform/linux/linux_application.h"
#include "platform/linux/linux_dispatch.h"
#include "platform/linux/linux_http_client.h"
#include "platform/linux/linux_message_bus.h"
#include "platform/linux/linux_window_system.h"
#include "platform/linux/session_bus.h"
#include "platform/linux/toolkit.h"
#include "platform/linux/web_engine.h"
#include "platform/log.h"
#include "platform/log_sink.h"
#include "platform/notification_center.h"
#include "platform/standard_descriptors.h"
#include "platform/task.h"
#include "platform/user_defaults.h"
#include "support/ZELKOR_Log.h"

namespace lumo {

// The order is what makes the start quick: the web engine's process starts as early as the settings allow,
// and the window is built meanwhile.
int runKiosk(const MakeDelegate& makeDelegate) {
  platform::openStandardDescriptors();
  platform::dropAmbientCapabilities();
  // The log takes standard error for itself. Whoever starts the kiosk from a shell shall still see why it
  // does not come up.
  platform::FileDescriptor terminal(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
  // A full disk or a listener that went away must not end the kiosk; both are seen as failed writes.
  std::signal(SIGXFSZ, SIG_IGN);
  std::signal(SIGPIPE, SIG_IGN);
  platform::prepareDrawingEnvironment();
  // What is amiss before there is a log is told in it afterwards.
  std::vector<std::string> remarks;
  platform::setLogSink([&remarks](const std::string& text) { remarks.push_back(text); });
  if (const auto complaint = platform::leaveOutUnreachableBuses()) {
    platform::logLine(*complaint);
  }
  platform::Task::setEnvironmentKeptFromChildren(platform::drawingEnvironment());

  platform::Bundle bundle = platform::Bundle::main();
  const std::string identifier = bundle.bundleIdentifier().value_or("com.lumo.LumoBrowser");
  const auto defaultsPath = platform::UserDefaults::standardPath(identifier);
  platform::NotificationCenter notifications;
  platform::LinuxDispatch dispatch;
  platform::SessionBus sessionBus(dispatch);
  platform::LinuxApplication application(dispatch, sessionBus, bundle);
  const auto defaults = defaultsPath ? std::make_unique<platform::UserDefaults>(*defaultsPath)
                                     : std::make_unique<platform::UserDefaults>();
  if (!defaultsPath) {
    platform::NSLog("The preferences have no place, neither XDG_CONFIG_HOME nor HOME is an absolute path");
  }
  platform::setLogSink(nullptr);
  ZELKOR_Log::initialize(dispatch, notifications, bundle.bundleName().value_or("LumoBrowser"));
  AppDelegate::initialize(application, bundle, *defaults);
  for (const std::string& remark : remarks) {
    platform::logLine(remark);
  }

  if (!platform::initializeToolkit()) {
    constexpr const char* kNoDisplay = "There is no display to show a window on.";
    platform::NSLog(kNoDisplay);
    dprintf(terminal.get(), "lumobrowser: %s\n", kNoDisplay);
    return 1;
  }
  terminal.reset();
  platform::WebEngine engine(dispatch);
  engine.prewarm();
  platform::initializeStyle();
  platform::LinuxWindowSystem windows(dispatch, application, bundle, engine);
  platform::LinuxMessageBus bus(sessionBus);
  platform::LinuxHttpClient http;

  platform::Platform platform{dispatch, application, windows, bus, http, *defaults, notifications, bundle};
  int status = 0;
  {
    const auto delegate = makeDelegate(platform);
    status = application.run(*delegate);
  }
  ZELKOR_Log::loggingQueue().drain();
  dispatch.stop();
  application.exitProcess(status);
}

}  // namespace lumo

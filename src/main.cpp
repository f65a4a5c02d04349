#include <csignal>

#include "app/AppDelegate.h"
#include "platform/bundle.h"
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
#include "platform/notification_center.h"
#include "platform/standard_descriptors.h"
#include "platform/task.h"
#include "platform/user_defaults.h"
#include "support/ZELKOR_Log.h"

// Builds the platform and hands it to the application shell. The order is what makes the start quick: the web
// engine's process starts as early as the settings allow, and the window is built meanwhile.
int main() {
  platform::openStandardDescriptors();
  // A full disk or a listener that went away must not end the kiosk; both are seen as failed writes.
  std::signal(SIGXFSZ, SIG_IGN);
  std::signal(SIGPIPE, SIG_IGN);
  platform::prepareDrawingEnvironment();
  const auto busComplaint = platform::leaveOutUnreachableBuses();
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
  lumo::ZELKOR_Log::initialize(dispatch, notifications, bundle.bundleName().value_or("LumoBrowser"));
  lumo::AppDelegate::initialize(application, bundle, *defaults);
  if (busComplaint) {
    platform::logLine(*busComplaint);
  }

  if (!platform::initializeToolkit()) {
    platform::NSLog("There is no display to show a window on.");
    return 1;
  }
  platform::WebEngine engine(dispatch);
  engine.prewarm();
  platform::initializeStyle();
  platform::LinuxWindowSystem windows(dispatch, application, bundle, engine);
  platform::LinuxMessageBus bus(sessionBus);
  platform::LinuxHttpClient http;

  platform::Platform platform{dispatch, application, windows, bus, http, *defaults, notifications, bundle};
  int status = 0;
  {
    lumo::AppDelegate delegate(platform);
    status = application.run(delegate);
  }
  lumo::ZELKOR_Log::loggingQueue().drain();
  dispatch.stop();
  application.exitProcess(status);
}

#include "app/AppDelegate.h"
#include "app/PreferenceKeys.h"
#include "platform/bundle.h"
#include "platform/log.h"
#include "platform/paths.h"
#include "platform/property_list_file.h"
#include "platform/user_defaults.h"
#include "support/ZELKOR_Log.h"

// Class initialisation: what happens before the application object has a delegate.

namespace lumo {

using platform::NSLog;

namespace {

constexpr const char* kClass = "AppDelegate";
constexpr const char* kInitialize = "initialize";

std::optional<platform::Dictionary> factoryDefaults(const platform::Bundle& bundle) {
  const auto path = bundle.pathForResource("FactoryDefaults", "plist");
  const auto list = path ? platform::propertyListFromFile(*path) : std::nullopt;
  const auto* dictionary = list ? list->as<platform::Dictionary>() : nullptr;
  return dictionary == nullptr ? std::nullopt : std::optional(*dictionary);
}

std::string logPath(const platform::Bundle& bundle) {
  const std::string file =
      platform::appendingPathComponent("~/Library/Logs/Lumo/", bundle.bundleName().value_or("LumoBrowser"));
  return platform::standardizingPath(platform::appendingPathExtension(file, "log"));
}

}  // namespace

platform::Dictionary registrationDefaults(const platform::Dictionary& factory) {
  platform::Dictionary values = factory;
  const platform::PropertyList* paths = factory.find(prefArrayOfPathNamesToDataForLumo);
  if (const auto* array = paths == nullptr ? nullptr : paths->as<platform::Array>()) {
    const std::string joined = platform::componentsJoinedByString(*array, ", ");
    NSLog("%@->%@....s = %@", kClass, kInitialize, joined);
    values.set(prefPathNamesToDataForLumo, joined);
  }
  return values;
}

void AppDelegate::initialize(platform::Application& application, const platform::Bundle& bundle,
                             platform::UserDefaults& defaults) {
  NSLog("%@->%@....", kClass, kInitialize);
  checkForDuplicateRunningInstances(application);
  const auto factory = factoryDefaults(bundle);
  if (factory && !factory->empty()) {
    defaults.registerDefaults(registrationDefaults(*factory));
  } else {
    NSLog("%@->%@....No FactoryDefault.plist found????", kClass, kInitialize);
  }
  defaults.synchronize();
  NSLog("%@-%@...RELEASE TARGET - Trying to Redirect NSLogs to file...", kClass, kInitialize);
  const std::string path = logPath(bundle);
  if (!path.starts_with('/')) {
    // A user without home; the file would land in whatever folder this runs in.
    NSLog("There is no home folder, the log stays on standard error");
    return;
  }
  ZELKOR_Log::setShouldLogToStdErr(false);
  if (!ZELKOR_Log::setLogFile(path)) {
    NSLog("%@ cannot be opened, the log stays on standard error", path);
  }
  NSLog("%@-%@...Should be REDIRECTING NSLOGs to file...", kClass, kInitialize);
}

void AppDelegate::checkForDuplicateRunningInstances(platform::Application& application) {
  const int own = application.processIdentifier();
  const auto running = application.runningApplications();
  if (!running || running->size() < 2) {
    return;
  }
  for (const platform::RunningApplication& other : *running) {
    if (other.processIdentifier != own) {
      application.beep();
      NSLog("Inside %@ => %@...Another Instance of this app is already running...", kClass,
            "checkForDuplicateRunningInstances");
      application.activateOther(other, platform::kActivateIgnoringOtherApps);
      break;
    }
  }
  application.exitProcess(0);
}

}  // namespace lumo

#include "support/ZELKOR_NSStringAdditions.h"

#include <filesystem>

#include <sys/utsname.h>

#include "app/PreferenceKeys.h"
#include "platform/format.h"
#include "platform/log.h"
#include "platform/paths.h"
#include "platform/strings.h"
#include "platform/task.h"
#include "source_revision.h"

namespace lumo::ZELKOR_NSStringAdditions {

using platform::NSLog;

namespace {

constexpr const char* kRunOperation = "-[NSString(LumoNSStringAdditions) outputWhenRunAsShellCommand]";

bool fileExists(const std::string& path) {
  std::error_code error;
  return std::filesystem::exists(path, error);
}

// Absent when nothing of that name is in the bundle.
std::optional<std::string> scriptInBundle(const std::string& name, const platform::Bundle& bundle) {
  if (const auto beside = bundle.pathForAuxiliaryExecutable(name)) {
    return beside->string();
  }
  if (const auto resource =
          bundle.pathForResource(platform::deletingPathExtension(name), platform::pathExtension(name))) {
    return resource->string();
  }
  return std::nullopt;
}

// Absent when the shell could not be started.
std::optional<std::string> shellOutput(const std::string& command) {
  const auto result = platform::Task::run("/bin/sh", {"-c", command});
  return result ? std::optional(platform::validUtf8(result->standardOutput)) : std::nullopt;
}

std::string trimmedOfSlashes(const std::string& text) {
  const std::size_t first = text.find_first_not_of('/');
  if (first == std::string::npos) {
    return {};
  }
  return text.substr(first, text.find_last_not_of('/') - first + 1);
}

}  // namespace

std::string getPathToScript(const std::string& name, const platform::Bundle& bundle) {
  const std::string folder = platform::deletingLastPathComponent(bundle.path().string());
  NSLog("bundlePath is %@", folder);
  NSLog("Searching for shell script file in alternate paths first ...");
  const std::string desktop = platform::appendingPathComponent(platform::expandingTilde("~"), "Desktop");
  for (const std::string& alternate : {desktop, folder}) {
    const std::string path = platform::appendingPathComponent(alternate, name);
    if (fileExists(path)) {
      NSLog("FOUND alternate path for shell script at: %@", path);
      return path;
    }
  }
  const auto path = scriptInBundle(name, bundle);
  if (!path) {
    NSLog("\n\nrunShellScript FAILED => UNABLE to find script named: [%@]!\n\n", name);
  }
  return platform::stringWithFormat("%@", path);
}

std::optional<std::string> outputWhenRunAsShellCommand(const std::string& command) {
  if (command.empty()) {
    return std::nullopt;
  }
  auto output = shellOutput(command);
  if (!output) {
    NSLog("%s failed to run  \"%@\"", kRunOperation, command);
    return std::nullopt;
  }
  if (output->empty()) {
    NSLog("%s failed for command \"%@\"", kRunOperation, command);
    return std::nullopt;
  }
  return output;
}

std::optional<std::string> runAsShellCmd2(const std::string& command) {
  auto output = shellOutput(command);
  return output && !output->empty() ? output : std::nullopt;
}

std::string validateAsPath(const std::string& path) {
  const std::string clean =
      platform::replacingOccurrences(trimmedOfSlashes(platform::trimmed(path)), " ", "");
  NSLog("%@->  old[%@] = new[%@]", "validateAsPath", path, clean);
  return clean;
}

std::string getAppVersionString(const platform::Bundle& bundle, platform::UserDefaults& defaults) {
  const auto displayName = bundle.infoString("CFBundleDisplayName");
  std::string version = platform::stringWithFormat(
      "%@ - v%@ (%@) [%@] [XC-%@ sdk-%@]", displayName ? displayName : bundle.bundleName(),
      bundle.infoString("CFBundleShortVersionString"), bundle.infoString("CFBundleVersion").value_or("??"),
      kSourceRevision, bundle.infoString("DTXcode").value_or("??"),
      bundle.infoString("DTSDKName").value_or("??"));
  defaults.setObject(version, prefAppVersion);
  return version;
}

std::string RunningArchitecture() {
  utsname system = {};
  uname(&system);
  const std::string machine(system.machine);
  NSLog("Running Architecture = (%@)", machine);
  return machine;
}

int processIsTranslated() {
  return 0;
}

std::string RunningArchitectureDisplayString() {
  return architectureDisplayString(RunningArchitecture(), processIsTranslated());
}

std::string architectureDisplayString(const std::string& machine, int translated) {
  if (platform::equalIgnoringCase(machine, "arm64")) {
    return "Apple Silicon";
  }
  if (platform::equalIgnoringCase(machine, "x86_64")) {
    return translated != 0 ? "Rosetta" : "Intel";
  }
  return "UnknownRunningArchitecture";
}

}  // namespace lumo::ZELKOR_NSStringAdditions

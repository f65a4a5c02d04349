#include "support/ZELKOR_NSStringAdditions.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>

#include <sys/utsname.h>
#include <unistd.h>

#include "app/PreferenceKeys.h"
#include "platform/file_descriptor.h"
#include "platform/format.h"
#include "platform/log.h"
#include "platform/paths.h"
#include "platform/strings.h"
#include "platform/task.h"
#include "support/ShellOutput.h"
#include "support/SourceRevision.h"

namespace lumo::ZELKOR_NSStringAdditions {

namespace {

using platform::NSLog;
using platform::stringWithFormat;

constexpr const char* kShell = "/bin/sh";
constexpr const char* kOutputSignature = "-[NSString(LumoNSStringAdditions) outputWhenRunAsShellCommand]";

// Fills `bytes` until the output ends. A signal's handler that ran meanwhile is no end.
std::size_t readFully(int descriptor, char* bytes, std::size_t count) {
  std::size_t filled = 0;
  while (filled < count) {
    const ssize_t got = ::read(descriptor, bytes + filled, count - filled);
    if (got == 0 || (got < 0 && errno != EINTR)) {
      break;
    }
    filled += static_cast<std::size_t>(std::max<ssize_t>(got, 0));
  }
  return filled;
}

// Decoded when it is whole: a letter may lie across two chunks.
std::string readText(int descriptor) {
  return platform::validUtf8(shellOutputFrom(
      [descriptor](char* bytes, std::size_t count) { return readFully(descriptor, bytes, count); }));
}

std::optional<std::string> foundScript(const std::string& name, const platform::Bundle& bundle) {
  const std::string folder = platform::deletingLastPathComponent(bundle.path().string());
  NSLog("bundlePath is %@", folder);
  NSLog("Searching for shell script file in alternate paths first ...");
  const std::string desktop = platform::appendingPathComponent(platform::expandingTilde("~"), "Desktop");
  for (const std::string& alternate : {desktop, folder}) {
    std::string path = platform::appendingPathComponent(alternate, name);
    std::error_code error;
    if (std::filesystem::exists(path, error)) {
      NSLog("FOUND alternate path for shell script at: %@", path);
      return path;
    }
  }
  auto path = bundle.pathForAuxiliaryExecutable(name);
  if (!path) {
    path = bundle.pathForResource(platform::deletingPathExtension(name), platform::pathExtension(name));
  }
  return path ? std::optional(path->string()) : std::nullopt;
}

}  // namespace

std::string getPathToScript(const std::string& name, const platform::Bundle& bundle) {
  const auto path = foundScript(name, bundle);
  if (!path) {
    NSLog("\n\nrunShellScript FAILED => UNABLE to find script named: [%@]!\n\n", name);
  } else if (!isOneShellWord(*path)) {
    NSLog(
        "The script's path has a blank or a sign that means something to the shell; an unquoted command line "
        "will not find it: %@",
        *path);
  }
  return stringWithFormat("%@", path);
}

std::optional<std::string> outputWhenRunAsShellCommand(const std::string& command) {
  if (command.empty()) {
    return std::nullopt;
  }
  const ChildSignalHeld held;
  platform::FileDescriptor output;
  const auto task = platform::Task::launch(kShell, {"-c", command}, output);
  if (!task) {
    NSLog("%s failed to run  \"%@\"", kOutputSignature, command);
    return std::nullopt;
  }
  std::string text = readText(output.get());
  if (text.empty()) {
    NSLog("%s failed for command \"%@\"", kOutputSignature, command);
  }
  // A shell that still writes must not wait for a reader.
  output.reset();
  task->waitUntilExit();
  return text.empty() ? std::nullopt : std::optional(std::move(text));
}

std::optional<std::string> runAsShellCmd2(const std::string& command) {
  platform::FileDescriptor output;
  const auto task = platform::Task::launch(kShell, {"-c", stringWithFormat("%@", command)}, output);
  if (!task) {
    return std::nullopt;
  }
  std::string text = readText(output.get());
  // Nobody is interested in the end, but an ended child must not stay in the process table.
  std::thread([task] { task->waitUntilExit(); }).detach();
  return text.empty() ? std::nullopt : std::optional(std::move(text));
}

std::string validateAsPath(const std::string& path) {
  std::string cleaned = platform::trimmed(path);
  const auto first = cleaned.find_first_not_of('/');
  const auto last = cleaned.find_last_not_of('/');
  cleaned = first == std::string::npos ? std::string() : cleaned.substr(first, last - first + 1);
  std::erase(cleaned, ' ');
  NSLog("%@->  old[%@] = new[%@]", "validateAsPath", path, cleaned);
  return cleaned;
}

std::string getAppVersionString(const platform::Bundle& bundle, platform::UserDefaults& defaults) {
  auto name = bundle.infoString("CFBundleDisplayName");
  if (!name) {
    name = bundle.bundleName();
  }
  const auto orUnknown = [&bundle](std::string_view key) { return bundle.infoString(key).value_or("??"); };
  std::string version = stringWithFormat(
      "%@ - v%@ (%@) [%@] [XC-%@ sdk-%@]", name, bundle.infoString("CFBundleShortVersionString"),
      orUnknown("CFBundleVersion"), sourceRevision(), orUnknown("DTXcode"), orUnknown("DTSDKName"));
  defaults.setObject(version, prefAppVersion);
  return version;
}

std::string RunningArchitecture() {
  struct utsname system {};
  ::uname(&system);
  std::string machine(static_cast<const char*>(system.machine));
  NSLog("Running Architecture = (%@)", machine);
  return machine;
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

std::string RunningArchitectureDisplayString() {
  return architectureDisplayString(RunningArchitecture(), processIsTranslated());
}

int processIsTranslated() {
  return 0;
}

}  // namespace lumo::ZELKOR_NSStringAdditions

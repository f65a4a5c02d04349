#pragma once

#include <optional>
#include <string>

#include "platform/bundle.h"
#include "platform/user_defaults.h"

// Texts that name scripts, command lines and paths, and what the application says of itself. Failures are
// told in the log and by an absent result. Any thread.
namespace lumo::ZELKOR_NSStringAdditions {

// Where the script of that file name is: on the user's desktop, beside the bundle, beside the executable or
// among the bundle's resources, the first one counts. So a site replaces a script without rebuilding
// anything. The text "(null)" when it is nowhere.
std::string getPathToScript(const std::string& name, const platform::Bundle& bundle);

// Runs the command line through the shell and gives its standard output, with U+FFFD for what is not UTF-8.
// Blocks until the output has ended, so not on the main queue; standard error goes to the log, the exit
// status is not looked at. Absent for an empty command, one that cannot be started, and one that prints
// nothing.
std::optional<std::string> outputWhenRunAsShellCommand(const std::string& command);
// The same without diagnostic lines.
std::optional<std::string> runAsShellCmd2(const std::string& command);

// A path as a person types it, without the white space and slashes at its ends and without any blank. The
// slash of an absolute path goes too.
std::string validateAsPath(const std::string& path);

// Name, version, source revision and the tools that built the application; also stored as prefAppVersion.
// Values that the bundle has not show as "??", a missing short version as "(null)".
std::string getAppVersionString(const platform::Bundle& bundle, platform::UserDefaults& defaults);

// The machine name of the running kernel, such as "x86_64".
std::string RunningArchitecture();
// 1 for a process that runs translated to another processor, 0 for a native one, which all are here.
int processIsTranslated();
// The processor family for people.
std::string RunningArchitectureDisplayString();
// The same of a machine name and what processIsTranslated says; anything but 0 counts as translated.
std::string architectureDisplayString(const std::string& machine, int translated);

}  // namespace lumo::ZELKOR_NSStringAdditions

#pragma once

#include <optional>
#include <string>

#include "platform/bundle.h"
#include "platform/user_defaults.h"

// What strings can do with the shell and with the application's own installation. Any thread; failures are
// told in the log and by an absent result only.
namespace lumo::ZELKOR_NSStringAdditions {

// Where the script of that name is ("printtocups2.sh"): on the Desktop, in the folder that holds `bundle`,
// beside the executable, among the resources, in this order. So a site can put its own script in the place of
// the shipped one. The text "(null)" when there is none. A path that the shell would not take as one word is
// told in the log, since command lines are put together without quotes.
std::string getPathToScript(const std::string& name, const platform::Bundle& bundle);

// What the shell command line `command` prints on standard output, as text; standard error stays the
// program's own. Bytes that are not UTF-8 give U+FFFD, so what a script reports can be read all the same.
// Absent when nothing was printed, the command is empty or the shell cannot be started. The exit status
// counts for nothing. Blocks until everything that the command started has let go of its output, and until
// the shell has ended: never on the main queue with a command that may take its time.
std::optional<std::string> outputWhenRunAsShellCommand(const std::string& command);

// The same with less of a log. It does not wait for a shell that has closed its output and goes on. The empty
// command prints nothing.
std::optional<std::string> runAsShellCmd2(const std::string& command);

// `path` as a person typed it, cleaned: without white space and then slashes at both ends, and without any
// blank inside. The leading slash stays away also where there was one.
std::string validateAsPath(const std::string& path);

// The name and versions of `bundle`, the commit, the compiler and the web engine as one line; also stored
// under "prefAppVersion". Without a display name the bundle's name is taken; "(null)" stands for a missing
// name or short version and "??" for what else is missing.
std::string getAppVersionString(const platform::Bundle& bundle, platform::UserDefaults& defaults);

// The machine name that the kernel gives, such as "x86_64".
std::string RunningArchitecture();
// That as a name for people: "Apple Silicon", "Intel", "Rosetta" or "UnknownRunningArchitecture".
std::string RunningArchitectureDisplayString();
// The same as a function of its facts. Whatever is not known to be native counts as translated.
std::string architectureDisplayString(const std::string& machine, int translated);
// Whether another processor's code is translated for this process: 1, 0, or -1 when that is not known. Linux
// translates nothing, so it is 0.
int processIsTranslated();

}  // namespace lumo::ZELKOR_NSStringAdditions

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/bundle.h"
#include "platform/property_list.h"
#include "platform/string_encoding.h"
#include "platform/user_defaults.h"
#include "support/TextOptions.h"

// What strings and data can do besides what the platform gives them. Any thread; texts are UTF-8, and bytes
// that are not count as U+FFFD where texts are compared or taken apart. Failures are told in the log and by
// an absent result, but for a range that lies outside of its text or data: that throws std::out_of_range.
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

// Compares the last path components without their extensions, without regard to case. Whatever the name
// says, no language's rules count.
ComparisonResult myLocalizedCompare(const std::string& text, const std::string& other);
// Without regard to case, and with runs of digits as numbers: "file9" before "File10".
ComparisonResult numericalCaseInsensitiveCompare(const std::string& text, const std::string& other);

// The text without any character of the set. Absent when `text` is no string.
std::optional<std::string> stringByDeletingCharactersInSet(const platform::PropertyList& text,
                                                           const CharacterSet& set);

// Replaces every occurrence of each search string by the value at the same place, one search string after
// another, so a later one also finds what an earlier one has put in. A value that is missing or absent
// deletes; an absent search string ends the work. Only the part of the text inside `range` is looked at and
// changed. An empty search string finds nothing. Absent when `text` is no string.
std::optional<std::string> stringByReplacingSubStrings_withValues_options_range(
    const platform::PropertyList& text, const std::vector<std::optional<std::string>>& searches,
    const std::vector<std::optional<std::string>>& values, unsigned options, Range range);

// The text that the bytes at `bytes` spell up to the first zero unit of the encoding, and at most `maxLength`
// bytes (0: whatever the length, so there has to be a zero unit). Not a byte past that is read. A byte-order
// mark at the start is no part of the text; that of UTF-16 and UTF-32 decides the order of the bytes,
// whatever the encoding says. Absent when the bytes do not belong into the encoding, the encoding is unknown,
// `maxLength` is less than a unit of it, or `bytes` is null. The string is the caller's own to change.
std::optional<std::string> stringWithCString_maxLength_encoding(const void* bytes, std::size_t maxLength,
                                                                platform::StringEncoding encoding);

// The empty text for every range inside the data: it would show no more than what is 16 bytes longer than
// its range, which nothing is. ZELKOR_Log::logData is the dump that works.
std::string hexdump(const platform::Data& data, Range range);

}  // namespace lumo::ZELKOR_NSStringAdditions

#pragma once

#include <optional>
#include <string>

#include "platform/alert.h"
#include "platform/web_view.h"

// The parts of printing a receipt that need no window. Any thread.
namespace lumo {

// Where the picture of the receipt is handed over: "~/Desktop/Snapshot.jpg" in the home folder of now.
std::string snapshotPath();

// Writes `image` as a JPEG of the best quality to `path`, replacing what is there in one step; the folder is
// made when it is missing. False, with a line in the log, when there is no such file afterwards: what is at
// `path` then is an older receipt. Blocks.
bool writeSnapshot(const platform::Image& image, const std::string& path);

// The command line that prints `snapshot`: both paths with one blank between, not quoted. Absent, with a line
// in the log, without a script. Paths that the shell takes apart get a line in the log, too.
std::optional<std::string> printCommandLine(const std::optional<std::string>& script,
                                            const std::string& snapshot);

// Whether the script's output says that there is no printer.
bool reportsNoPrinter(const std::optional<std::string>& output);

// The answers of the alert that asks for a printer.
inline constexpr int kTryAgain = 1;
inline constexpr int kDoNotPrintReceipt = 0;

platform::Alert noPrinterAlert();
platform::Alert noReturnPageAlert();

}  // namespace lumo

#include "browser/ReceiptPrint.h"

#include <filesystem>
#include <system_error>

#include "platform/file_io.h"
#include "platform/log.h"
#include "platform/paths.h"
#include "support/JpegImage.h"

namespace lumo {

using platform::Alert;
using platform::AlertStyle;
using platform::NSLog;

namespace {

constexpr const char* kSnapshotFile = "~/Desktop/Snapshot.jpg";
constexpr double kJpegQuality = 1.0;
constexpr const char* kNoPrinterMarker = "no-printers-available";
// What ends a word or means more than itself to the shell.
constexpr const char* kShellCharacters = " \t\n'\"\\$`&|;<>()*?[]#~!{}";

}  // namespace

std::string snapshotPath() {
  return platform::expandingTilde(kSnapshotFile);
}

bool writeSnapshot(const platform::Image& image, const std::string& path) {
  const auto jpeg = jpegRepresentation(image, kJpegQuality);
  if (!jpeg) {
    return false;
  }
  const std::filesystem::path file(path);
  std::error_code error = platform::makeFolder(file.parent_path());
  if (!error) {
    const auto temporary = file.parent_path() / ("." + file.filename().string() + ".new");
    error = platform::replaceFile(file, temporary, *jpeg);
  }
  if (error) {
    NSLog("the receipt cannot be written to %@: %@", path, error.message());
  }
  return !error;
}

std::optional<std::string> printCommandLine(const std::optional<std::string>& script,
                                            const std::string& snapshot) {
  if (!script || script->empty()) {
    NSLog("UNALBE TO FIND CUPS SCRIPT....");
    return std::nullopt;
  }
  std::string commandLine = platform::stringWithFormat("%@ %@", *script, snapshot);
  // Who looked for the script has told so of its path.
  if (snapshot.find_first_of(kShellCharacters) != std::string::npos) {
    NSLog("the shell will not take this path as one word, and the receipt is not printed: [%@]", snapshot);
  }
  return commandLine;
}

bool reportsNoPrinter(const std::optional<std::string>& output) {
  return output && output->find(kNoPrinterMarker) != std::string::npos;
}

Alert noPrinterAlert() {
  Alert alert;
  alert.messageText = "No Receipt Printer Detected";
  alert.informativeText = "Please connect a receipt printer and try again.";
  alert.addButtonWithTitle("Try Again", kTryAgain);
  alert.addButtonWithTitle("Do Not Print Receipt", kDoNotPrintReceipt);
  return alert;
}

Alert noReturnPageAlert() {
  Alert alert;
  alert.messageText = "NO PAGE TO RETURN To ???????";
  alert.style = AlertStyle::Critical;
  alert.addButtonWithTitle("OK");
  return alert;
}

}  // namespace lumo

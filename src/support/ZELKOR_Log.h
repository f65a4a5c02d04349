#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "platform/notification_center.h"
#include "platform/property_list.h"
#include "platform/queue.h"
#include "support/ZELKOR_Base.h"

namespace lumo {

// The log: one file for the whole process, kept in a pair of limited size (the live file and the "_old" one).
// All lines are written on one serial queue, so they keep the order in which they were given. With logging to
// standard error off, opening the file also takes standard error onto it, and with it every NSLog line and
// the diagnostics of child processes.
//
// Only Debug2 lines pass the level mask: the other levels are dropped at the door, on purpose.
//
// Every operation may be called from any thread. Before `initialize`, lines are dropped and no file is
// opened. No failure of the file system stops the process; a line that cannot be written is lost.
class ZELKOR_Log : public ZELKOR_Base {
 public:
  // The bit values of the levels.
  enum Level : int { Info = 2, Warn = 4, Error = 8, Debug = 16, Debug2 = 32 };

  // Posted on the logging queue for every line written, when that has been asked for. The object is the path
  // of the log file, absent before setLogFile; the user information has the line with its line break.
  static constexpr const char* LogFileDidUpdateNotification = "ZELKOR_LogFileDidUpdate";
  static constexpr const char* LogFileAddedStringKey = "ZELKOR_LogFileAddedString";

  // Sets the log up: no file, an empty pending buffer, `processName` as application name, lines on standard
  // error, no application name in the file and no notifications. Once at the start; again for a fresh state
  // (lines of the state before still go to its file, which is closed after them). `dispatch` and `center`
  // must outlive the lines.
  static void initialize(platform::Dispatch& dispatch, platform::NotificationCenter& center,
                         std::string processName);

  static void setShouldNotifyForLogUpdates(bool should);
  static void setShouldLogToStdErr(bool should);
  static void setShouldLogAppName(bool should);
  static void setApplicationName(std::string name);

  // Opens the log at `path` in append mode, mode 0664, after making its folder and rolling a file that is too
  // large. Lines that were pending go into it. True only when this call opened the file; on a failure lines
  // stay pending. With a file already open nothing is opened, but notifications carry the new path from then
  // on. The tilde is not expanded for the file itself.
  static bool setLogFile(const std::optional<std::string>& path);
  // Rolls into the "_old" file beside `path` when it has 1048576 bytes or more.
  static void rollLogFileIfNecessary(const std::optional<std::string>& path);
  // When the file at `path` has `size` bytes or more: appends it to `destination` (NAME_old.EXTENSION beside
  // it when absent), of which the last 10485760 bytes are kept, from a line's beginning, and empties it. It
  // is emptied even when `destination` cannot be written. A file that is missing is left alone.
  static void rollLogFile_toPath_atSize(const std::optional<std::string>& path,
                                        const std::optional<std::string>& destination, std::uint64_t size);

  // The time of now, or of `date`, in the local zone: "[2026/11/14 23:56:06.123 +0000]". The year is the one
  // to which the (ISO) week belongs.
  static std::string logDateString();
  static std::string logDateString(platform::Date date);

  // The queue on which lines are written, made at its first use. Only after initialize (throws
  // std::logic_error).
  static platform::SerialQueue loggingQueue();

  // Queues one line and returns at once. Bytes that are not UTF-8 are replaced.
  static void logLevel_message(int level, std::string_view message);
  // One line for each piece between line breaks, empty ones as well.
  static void debug(std::string_view message);
  static void debug2(std::string_view message);
  static void err(std::string_view message);
  // Logs at Error and blocks the calling thread for good.
  [[noreturn]] static void fatal(std::string_view message);

  // Every byte as two hexadecimal digits and a blank.
  static std::string asciiHexForData(const platform::Data& data);
  // A hexadecimal dump through debug, one call for each line of 16 bytes.
  static void logData(const platform::Data& data);
  // The texts of that dump: each is the one before with the next 16 bytes at its end, without a line break.
  static void hexDumpOfData_usingBlock(const platform::Data& data,
                                       const std::function<void(std::string_view)>& block);

  // As those of ZELKOR_Base, with the memory that cannot be paged out ("wiredMB").
  static std::optional<platform::Dictionary> vmStats();
  static std::string systemVersionInfo();
  static std::string startupInfo();
  // Whether the address is one by the usual expression of RFC 5322, whatever its case. Quick for a text of
  // any length.
  static bool validateEmailAddress(const std::string& emailAddress);

  // For observers that want no more than to observe: does nothing.
  void logFileDidUpdate(const platform::Notification& notification) const;
};

}  // namespace lumo

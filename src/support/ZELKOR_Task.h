#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/alert.h"
#include "platform/platform.h"
#include "platform/task.h"

namespace lumo {

// Runs tools as processes of their own and never waits for them: clearing out old files and folders with
// find, converting movies with ffmpeg or with a script of the bundle. There is no state; several tools may
// run at once, and one that still runs when the program ends goes on.
//
// Every operation may be called from any thread and returns at once, with one exception: where the tool is
// missing, the installation is broken, and nothing goes on before somebody mends it. An alert says what is
// missing, and when it has been answered the application is asked to terminate; until then the caller waits.
// On the main queue the call never returns: there the process ends with the application.
//
// A file that is there but cannot be started, and an argument with a zero byte, give a line in the log and no
// task. `platform` must outlive the tools.
class ZELKOR_Task {
 public:
  using Strings = std::vector<std::string>;
  // An absent number sets no limit.
  using Number = std::optional<std::uint32_t>;
  // Gets the ended task on a global queue; its waitUntilExit answers at once.
  using TerminationHandler = std::function<void(platform::Task& task)>;
  // Gets whether it succeeded: the tool ended with status 0. On a global queue, but for what says otherwise.
  using CompletionHandler = std::function<void(bool success)>;

  // Removes the files of these extensions ("jpg", in any case of letters; none for all files) anywhere in
  // the folder that are `days` old or older. The age counts from a file's birth; where find cannot tell that,
  // from the last change of its status, so a file that was copied today stays, whatever its date says.
  static void removeFilesInDirectory_ofKind_minDaysOld(const platform::Platform& platform,
                                                       const std::string& folder, const Strings& extensions,
                                                       Number days);
  // The same down to `maxDepth` levels; 1 are the folder's own files.
  static void removeFilesInDirectory_ofKind_daysOld_maxDepth(const platform::Platform& platform,
                                                             const std::string& folder,
                                                             const Strings& extensions, Number days,
                                                             Number maxDepth);
  // The same for names that match one of the shell's patterns ("IMG_*").
  static void removeFilesInDirectory_matchingPatterns_daysOld_maxDepth(const platform::Platform& platform,
                                                                       const std::string& folder,
                                                                       const Strings& patterns, Number days,
                                                                       Number maxDepth);
  // Removes folders, if they are empty. The folder itself stays.
  static void removeSubdirectoriesAtPath_matchingPatterns_daysOld_maxDepth(const platform::Platform& platform,
                                                                           const std::string& folder,
                                                                           const Strings& patterns,
                                                                           Number days, Number maxDepth);
  // Runs find with the arguments that findArguments gives, and logs its exit status. Without a command it
  // lists what it finds on standard output. Nothing for the empty folder.
  static void findAtPath_fileType_matchingPatterns_daysOld_maxDepth_performingCommand(
      const platform::Platform& platform, const std::string& folder,
      const std::optional<std::string>& fileType, const Strings& patterns, Number days, Number maxDepth,
      const std::optional<std::string>& command);

  // Starts the tool, which inherits standard input, output and error, and gives the task. Null when it was
  // not started; the handler is not called then.
  static std::shared_ptr<platform::Task> launchToolAtPath_withArguments_completionHandler(
      const platform::Platform& platform, const std::string& path, const Strings& arguments,
      TerminationHandler handler);

  // Converts a movie with ffmpeg: "-i", the source, the options (H.264 of constant quality when absent), the
  // destination. Without a source there is a line in the log, and the handler is not called.
  static void transcodeMovieAtSourcePath_toDestination_withOptions_completionHandler(
      const platform::Platform& platform, const std::optional<std::string>& source,
      const std::string& destination, const std::optional<Strings>& options,
      const CompletionHandler& handler);
  // Runs ffmpeg with exactly these arguments.
  static void transcodeMovieWithOptions_completionHandler(const platform::Platform& platform,
                                                          const Strings& arguments,
                                                          const CompletionHandler& handler);
  // Runs "lumoBoomerang.sh", which lies beside the executable or among the resources. Where it does not, the
  // handler gets false at once, on the caller's thread.
  static void transcodeMovieWithOptionsJBL_completionHandler(const platform::Platform& platform,
                                                             const Strings& arguments,
                                                             const CompletionHandler& handler);

  // What is shown when the tool at `path` is missing.
  static platform::Alert missingToolAlert(const std::string& path);
};

}  // namespace lumo

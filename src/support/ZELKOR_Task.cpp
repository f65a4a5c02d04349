#include "support/ZELKOR_Task.h"

#include <algorithm>
#include <filesystem>
#include <future>
#include <system_error>
#include <utility>

#include "app/PreferenceKeys.h"
#include "platform/application.h"
#include "platform/bundle.h"
#include "platform/format.h"
#include "platform/log.h"
#include "platform/queue.h"
#include "platform/user_defaults.h"
#include "platform/window.h"
#include "support/FindArguments.h"

namespace lumo {

using platform::NSLog;
using platform::Platform;
using platform::Task;

namespace {

constexpr const char* kClass = "ZELKOR_Task";
constexpr const char* kFind = "/usr/bin/find";
constexpr const char* kBoomerang = "lumoBoomerang";

bool exists(const std::string& path) {
  std::error_code error;
  return std::filesystem::exists(path, error);
}

std::string joinedByBlanks(const ZELKOR_Task::Strings& texts) {
  std::string joined;
  for (const std::string& text : texts) {
    joined += (&text == &texts.front() ? "" : " ") + text;
  }
  return joined;
}

bool findKnowsBirthTimes() {
  // Only the shell can keep the complaint out of the log.
  const auto result =
      Task::run("/bin/sh", {"-c", R"(exec "$0" -H / -maxdepth 0 -newerBt '0 days ago' 2>/dev/null)", kFind});
  return result && result->status == 0;
}

void logMissing(const std::string& path) {
  const std::string line(75, '!');
  NSLog("\n");
  NSLog("%@", line);
  NSLog("!!!!!!!!  UNABLE TO FIND LAUNCHPATH = %@  !!!!!!!!", path);
  NSLog("%@", line);
  NSLog("\n");
}

// Shows the alert and waits for its answer; the application is asked to terminate then.
void alertAndTerminate(const Platform& platform, const std::string& path) {
  auto answered = std::make_shared<std::promise<void>>();
  std::future<void> answer = answered->get_future();
  platform.dispatch.main().async([platform, path, answered] {
    platform.windows.beginApplicationAlert(ZELKOR_Task::missingToolAlert(path),
                                           [platform, answered](const platform::AlertResponse&) {
                                             platform.application.terminate();
                                             answered->set_value();
                                           });
  });
  answered.reset();
  if (platform.dispatch.main().isCurrent()) {
    platform.application.runToTermination();
  }
  try {
    answer.get();
  } catch (const std::future_error&) {
    // The alert went away without an answer, with its window.
    platform.application.terminate();
  }
}

// Runs a converter for the operation of that name.
void transcode(const Platform& platform, const std::string& tool, const ZELKOR_Task::Strings& arguments,
               const char* selector, const ZELKOR_Task::CompletionHandler& handler) {
  const auto complete = [handler](bool success) {
    if (handler) {
      handler(success);
    }
  };
  const auto task = ZELKOR_Task::launchToolAtPath_withArguments_completionHandler(
      platform, tool, arguments, [complete, selector](Task& ended) {
        NSLog("Inside %@ => %@... TASK DONE...TASK DONE...TASK DONE...", kClass, selector);
        complete(ended.waitUntilExit().status == 0);
      });
  // Without the tool the application ends, and nobody waits for an answer.
  if (!task && exists(tool)) {
    complete(false);
  }
}

std::string ffmpeg(const Platform& platform) {
  return platform.defaults.stringForKey(LumoAV_ffmpegLaunchPath)
      .value_or(preferenceKey(LumoAV_ffmpegLaunchPath)->codeDefault);
}

}  // namespace

void ZELKOR_Task::removeFilesInDirectory_ofKind_minDaysOld(const Platform& platform,
                                                           const std::string& folder,
                                                           const Strings& extensions, Number days) {
  removeFilesInDirectory_ofKind_daysOld_maxDepth(platform, folder, extensions, days, std::nullopt);
}

void ZELKOR_Task::removeFilesInDirectory_ofKind_daysOld_maxDepth(const Platform& platform,
                                                                 const std::string& folder,
                                                                 const Strings& extensions, Number days,
                                                                 Number maxDepth) {
  removeFilesInDirectory_matchingPatterns_daysOld_maxDepth(platform, folder,
                                                           patternsForExtensions(extensions), days, maxDepth);
}

void ZELKOR_Task::removeFilesInDirectory_matchingPatterns_daysOld_maxDepth(const Platform& platform,
                                                                           const std::string& folder,
                                                                           const Strings& patterns,
                                                                           Number days, Number maxDepth) {
  findAtPath_fileType_matchingPatterns_daysOld_maxDepth_performingCommand(platform, folder, "f", patterns,
                                                                          days, maxDepth, "rm");
}

void ZELKOR_Task::removeSubdirectoriesAtPath_matchingPatterns_daysOld_maxDepth(const Platform& platform,
                                                                               const std::string& folder,
                                                                               const Strings& patterns,
                                                                               Number days, Number maxDepth) {
  findAtPath_fileType_matchingPatterns_daysOld_maxDepth_performingCommand(platform, folder, "d", patterns,
                                                                          days, maxDepth, "rmdir");
}

void ZELKOR_Task::findAtPath_fileType_matchingPatterns_daysOld_maxDepth_performingCommand(
    const Platform& platform, const std::string& folder, const std::optional<std::string>& fileType,
    const Strings& patterns, Number days, Number maxDepth, const std::optional<std::string>& command) {
  Strings arguments = findArguments({folder, fileType, patterns, days, maxDepth, command});
  if (arguments.empty()) {
    return;
  }
  if (exists(kFind)) {
    const bool knowsBirthTimes = !days || findKnowsBirthTimes();
    if (!knowsBirthTimes) {
      NSLog("%@ knows no birth times here: what was changed in the last %u days stays", kFind, *days);
    }
    arguments = argumentsForGnuFind(std::move(arguments), knowsBirthTimes);
  }
  launchToolAtPath_withArguments_completionHandler(platform, kFind, arguments, [](Task& task) {
    NSLog("%@ [%d] did complete with exit status %d", kFind, task.processIdentifier(),
          task.waitUntilExit().status);
  });
}

std::shared_ptr<Task> ZELKOR_Task::launchToolAtPath_withArguments_completionHandler(
    const Platform& platform, const std::string& path, const Strings& arguments, TerminationHandler handler) {
  NSLog("starting task %@ %@", path, joinedByBlanks(arguments));
  if (!exists(path)) {
    logMissing(path);
    alertAndTerminate(platform, path);
    return nullptr;
  }
  // The rest of such an argument would be lost, and "*\0.jpg" is every file.
  if (std::ranges::any_of(arguments, [](const std::string& text) { return text.find('\0') != text.npos; })) {
    NSLog("%@ is not started: an argument has a zero byte", path);
    return nullptr;
  }
  auto task = Task::launch(path, arguments);
  if (!task) {
    return nullptr;
  }
  NSLog("STARTED TASK STARTED TASK STARTED TASK %@ [%d]", path, task->processIdentifier());
  platform.dispatch.global().async([task, handler = std::move(handler)] {
    task->waitUntilExit();
    if (handler) {
      handler(*task);
    }
  });
  return task;
}

void ZELKOR_Task::transcodeMovieAtSourcePath_toDestination_withOptions_completionHandler(
    const Platform& platform, const std::optional<std::string>& source, const std::string& destination,
    const std::optional<Strings>& options, const CompletionHandler& handler) {
  constexpr const char* kSelector = "transcodeMovieAtSourcePath:toDestination:withOptions:completionHandler:";
  if (!source) {
    NSLog("Inside %@ => %@... srcPath CANNOT BE NIL??????", kClass, kSelector);
    return;
  }
  const Strings usual{"-vcodec", "libx264", "-crf", "26"};
  Strings arguments{"-i", *source};
  const Strings& chosen = options ? *options : usual;
  arguments.insert(arguments.end(), chosen.begin(), chosen.end());
  arguments.push_back(destination);
  transcode(platform, ffmpeg(platform), arguments, kSelector, handler);
}

void ZELKOR_Task::transcodeMovieWithOptions_completionHandler(const Platform& platform,
                                                              const Strings& arguments,
                                                              const CompletionHandler& handler) {
  transcode(platform, ffmpeg(platform), arguments, "transcodeMovieWithOptions:completionHandler:", handler);
}

void ZELKOR_Task::transcodeMovieWithOptionsJBL_completionHandler(const Platform& platform,
                                                                 const Strings& arguments,
                                                                 const CompletionHandler& handler) {
  constexpr const char* kSelector = "transcodeMovieWithOptionsJBL:completionHandler:";
  const std::string name = std::string(kBoomerang) + ".sh";
  auto script = platform.bundle.pathForAuxiliaryExecutable(name);
  if (!script) {
    script = platform.bundle.pathForResource(kBoomerang, "sh");
  }
  if (!script) {
    NSLog("Inside %@ => %@... UNABLE TO FIND SCRIPT FILE: [%@]...", kClass, kSelector, name);
    if (handler) {
      handler(false);
    }
    return;
  }
  transcode(platform, script->string(), arguments, kSelector, handler);
}

platform::Alert ZELKOR_Task::missingToolAlert(const std::string& path) {
  platform::Alert alert;
  alert.messageText = "WARNING! Unable to Required Execute Command!";
  alert.informativeText = platform::stringWithFormat(
      "\nLaunchPath Expected At:\n%@\n\nCommmand Tool Missing or Not Installed yet?\n", path);
  alert.addButtonWithTitle("Quit and Fix Problem");
  return alert;
}

}  // namespace lumo

#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/file_descriptor.h"

namespace platform {

// How a child process ended: its exit status, or the signal that killed it (the status is then 128 + signal).
// The status is -1 when the system did not tell.
struct TaskResult {
  int status = 0;
  std::optional<int> signal;
  std::string standardOutput;
};

// A child process. It starts with no signal blocked, with the usual dispositions of SIGPIPE, SIGCHLD and
// SIGXFSZ and without any file of this program but the three standard streams. The exit status of no other
// child is ever taken.
class Task {
 public:
  // Starts `program` (an absolute path) with `arguments`, reads its standard output to the end (also when
  // another process keeps it open after the child's end) and waits for the child; standard error and input
  // are inherited. Blocks the calling thread, so not on the main queue. Absent, with a line in the log, when
  // the program cannot be started.
  static std::optional<TaskResult> run(const std::string& program, const std::vector<std::string>& arguments);

  // Starts `program` and returns at once; all three standard streams are inherited. Null, with a line in the
  // log, when the program cannot be started. Somebody has to call waitUntilExit once, else the ended child
  // stays in the process table as long as this program runs.
  static std::shared_ptr<Task> launch(const std::string& program, const std::vector<std::string>& arguments);

  // The same, but with the program's standard output to be read from `output`; the reader sees its end when
  // the last process that has it is gone.
  static std::shared_ptr<Task> launch(const std::string& program, const std::vector<std::string>& arguments,
                                      FileDescriptor& output);

  int processIdentifier() const { return process_; }
  // Blocks until the child has ended; any thread, as often as wanted.
  TaskResult waitUntilExit();

  // The names of environment variables that this program set for itself and no child gets. To be set once,
  // before the first child.
  static void setEnvironmentKeptFromChildren(std::vector<std::string> names);

 private:
  explicit Task(int process) : process_(process) {}

  const int process_;
  std::mutex mutex_;
  std::optional<TaskResult> result_;
};

}  // namespace platform

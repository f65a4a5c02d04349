#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace platform {

// How a child process ended: its exit status, or the signal that killed it (the status is then 128 + signal).
struct TaskResult {
  int status = 0;
  std::optional<int> signal;
  std::string standardOutput;
};

// Runs a program to its end. Standard output is read to its end; standard error and input are inherited.
class Task {
 public:
  // Starts `program` (an absolute path) with `arguments` and waits. Blocks the calling thread, so not on the
  // main queue. Absent when the program cannot be started. The exit status of no other child is ever taken.
  static std::optional<TaskResult> run(const std::string& program, const std::vector<std::string>& arguments);
};

}  // namespace platform

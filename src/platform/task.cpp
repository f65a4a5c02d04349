#include "platform/task.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <string_view>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/file_descriptor.h"
#include "platform/log.h"

namespace platform {
namespace {

std::vector<std::string>& keptNames() {
  static std::vector<std::string> names;
  return names;
}

// The environment without the kept names, and a null at the end; the texts stay those of `environ`.
std::vector<char*> childEnvironment() {
  std::vector<char*> result;
  for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
    const std::string_view text(*entry);
    const auto name = text.substr(0, text.find('='));
    const auto& kept = keptNames();
    if (std::find(kept.begin(), kept.end(), name) == kept.end()) {
      result.push_back(*entry);
    }
  }
  result.push_back(nullptr);
  return result;
}

// Starts the program, with `output` as its standard output unless that is -1. Absent when it cannot be
// started.
std::optional<pid_t> spawn(const std::string& program, const std::vector<std::string>& arguments,
                           int output) {
  std::vector<char*> words{const_cast<char*>(program.c_str())};
  for (const auto& argument : arguments) {
    words.push_back(const_cast<char*>(argument.c_str()));
  }
  words.push_back(nullptr);
  auto environment = childEnvironment();

  posix_spawn_file_actions_t files;
  posix_spawn_file_actions_init(&files);
  if (output >= 0) {
    posix_spawn_file_actions_adddup2(&files, output, STDOUT_FILENO);
  }
  // A child that lives on must hold no socket, lock or pipe of this program open.
  posix_spawn_file_actions_addclosefrom_np(&files, STDERR_FILENO + 1);

  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t none;
  sigemptyset(&none);
  posix_spawnattr_setsigmask(&attributes, &none);
  sigset_t usual;
  sigemptyset(&usual);
  for (const int signal : {SIGPIPE, SIGCHLD, SIGXFSZ}) {
    sigaddset(&usual, signal);
  }
  posix_spawnattr_setsigdefault(&attributes, &usual);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);

  pid_t process = -1;
  const int error =
      ::posix_spawn(&process, program.c_str(), &files, &attributes, words.data(), environment.data());
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&files);
  if (error != 0) {
    NSLog("Task: cannot start %@: %@", program, std::generic_category().message(error));
    return std::nullopt;
  }
  return process;
}

std::string readToEnd(int descriptor) {
  std::string text;
  std::array<char, 65536> buffer;
  while (true) {
    const auto count = ::read(descriptor, buffer.data(), buffer.size());
    if (count == 0 || (count < 0 && errno != EINTR)) {
      return text;
    }
    text.append(buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
  }
}

}  // namespace

std::optional<TaskResult> Task::run(const std::string& program, const std::vector<std::string>& arguments) {
  FileDescriptor reading;
  const auto task = launch(program, arguments, reading);
  if (!task) {
    return std::nullopt;
  }
  auto output = readToEnd(reading.get());
  auto result = task->waitUntilExit();
  result.standardOutput = std::move(output);
  return result;
}

std::shared_ptr<Task> Task::launch(const std::string& program, const std::vector<std::string>& arguments) {
  const auto process = spawn(program, arguments, -1);
  return process ? std::shared_ptr<Task>(new Task(*process)) : nullptr;
}

std::shared_ptr<Task> Task::launch(const std::string& program, const std::vector<std::string>& arguments,
                                   FileDescriptor& output) {
  std::array<int, 2> ends{-1, -1};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
    NSLog("Task: no pipe for %@: %@", program, std::generic_category().message(errno));
    return nullptr;
  }
  FileDescriptor reading(ends[0]);
  // Only the child may hold this end, else the output never ends.
  const FileDescriptor writing(ends[1]);
  const auto process = spawn(program, arguments, writing.get());
  if (!process) {
    return nullptr;
  }
  output = std::move(reading);
  return std::shared_ptr<Task>(new Task(*process));
}

TaskResult Task::waitUntilExit() {
  const std::lock_guard guard(mutex_);
  if (result_) {
    return *result_;
  }
  int status = 0;
  pid_t ended = -1;
  do {
    ended = ::waitpid(process_, &status, 0);
  } while (ended < 0 && errno == EINTR);
  TaskResult result;
  if (ended != process_) {
    result.status = -1;
    NSLog("Task: process %d ended without a status: %@", process_, std::generic_category().message(errno));
  } else if (WIFSIGNALED(status)) {
    result.signal = WTERMSIG(status);
    result.status = 128 + *result.signal;
  } else {
    result.status = WEXITSTATUS(status);
  }
  result_ = result;
  return result;
}

void Task::setEnvironmentKeptFromChildren(std::vector<std::string> names) {
  keptNames() = std::move(names);
}

}  // namespace platform

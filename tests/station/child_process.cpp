#include "station/child_process.h"

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <stdexcept>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "station/process_tree.h"

namespace station {

namespace {

constexpr int kPassedDescriptor = 3;

std::string pathOf(const std::string& program) {
  if (program.find('/') != std::string::npos) {
    return program;
  }
  const char* path = std::getenv("PATH");
  std::string folders = path == nullptr ? "/usr/bin:/bin" : path;
  while (!folders.empty()) {
    const auto colon = folders.find(':');
    std::string candidate = folders.substr(0, colon) + "/" + program;
    if (access(candidate.c_str(), X_OK) == 0) {
      return candidate;
    }
    folders = colon == std::string::npos ? "" : folders.substr(colon + 1);
  }
  throw std::runtime_error(program + " is not installed");
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> result;
  result.reserve(texts.size() + 1);
  for (std::string& text : texts) {
    result.push_back(text.data());
  }
  result.push_back(nullptr);
  return result;
}

// Runs between fork and exec in a copy of a program with threads: plain system calls only.
[[noreturn]] void become(const char* path, char* const* arguments, char* const* environment, int output,
                         int passed, pid_t parent) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) {
    _exit(127);
  }
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  const int empty = open("/dev/null", O_RDONLY);
  dup2(empty, STDIN_FILENO);
  dup2(output, STDOUT_FILENO);
  dup2(output, STDERR_FILENO);
  if (passed >= 0) {
    if (passed == kPassedDescriptor) {
      fcntl(passed, F_SETFD, 0);
    } else {
      dup2(passed, kPassedDescriptor);
    }
  }
  execve(path, arguments, environment);
  _exit(127);
}

std::vector<pid_t> children() {
  return childrenOf(getpid());
}

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& command, const Environment& environment,
                           const std::filesystem::path& output, int passed) {
  const std::string path = pathOf(command.front());
  std::vector<std::string> arguments = command;
  std::vector<std::string> settings;
  settings.reserve(environment.size());
  for (const auto& [name, value] : environment) {
    settings.push_back(std::string(name).append("=").append(value));
  }
  const std::vector<char*> argumentPointers = pointers(arguments);
  const std::vector<char*> settingPointers = pointers(settings);
  const int file = open(output.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
  if (file < 0) {
    throw std::runtime_error(output.string() + ": " + std::strerror(errno));
  }
  const pid_t parent = getpid();
  pid_ = fork();
  if (pid_ == 0) {
    become(path.c_str(), argumentPointers.data(), settingPointers.data(), file, passed, parent);
  }
  close(file);
  if (pid_ < 0) {
    throw std::runtime_error(command.front() + ": " + std::strerror(errno));
  }
}

ChildProcess::~ChildProcess() {
  if (isRunning()) {
    send(SIGKILL);
    waitpid(pid_, nullptr, 0);
  }
}

bool ChildProcess::isRunning() {
  int status = 0;
  const pid_t answer = status_ || gone_ ? 0 : waitpid(pid_, &status, WNOHANG);
  if (answer == pid_) {
    status_ = status;
  } else if (answer < 0 && kill(pid_, 0) != 0) {
    gone_ = true;
  }
  return !status_ && !gone_;
}

std::chrono::microseconds ChildProcess::keptWaiting() const {
  std::ifstream file("/proc/" + std::to_string(pid_) + "/schedstat");
  std::int64_t running = 0;
  std::int64_t waiting = 0;
  file >> running >> waiting;
  return std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::nanoseconds(waiting));
}

void ChildProcess::send(int signal) {
  if (isRunning()) {
    kill(pid_, signal);
  }
}

std::string ChildProcess::end(std::chrono::milliseconds bound) {
  if (!waitUntil([this] { return !isRunning(); }, bound)) {
    return "still running";
  }
  if (gone_) {
    return "gone";
  }
  return WIFEXITED(*status_) ? "exit status " + std::to_string(WEXITSTATUS(*status_))
                             : "signal " + std::to_string(WTERMSIG(*status_));
}

void adoptOrphans() {
  prctl(PR_SET_CHILD_SUBREAPER, 1);
}

std::vector<std::string> childrenNames() {
  std::vector<std::string> names;
  for (const pid_t child : children()) {
    std::ifstream stat("/proc/" + std::to_string(child) + "/stat");
    std::string line;
    std::getline(stat, line);
    const auto open = line.find('(');
    const auto close = line.rfind(')');
    // An ended one has no memory any more and waits for its status to be read.
    if (close != std::string::npos && line.compare(close, 3, ") Z") != 0) {
      names.push_back(line.substr(open + 1, close - open - 1));
    }
  }
  return names;
}

void endChildren() {
  // Those of a child that ends come up in the next round.
  for (std::vector<pid_t> left = children(); !left.empty(); left = children()) {
    for (const pid_t child : left) {
      kill(child, SIGKILL);
      waitpid(child, nullptr, 0);
    }
  }
}

}  // namespace station

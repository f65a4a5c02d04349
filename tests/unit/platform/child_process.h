#pragma once

#include <optional>
#include <string>

#include <stdlib.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

// Runs `body` in a child of its own, which ends with the number that it returns; `body` must not use test
// macros.
template <class Body>
pid_t startChild(const Body& body) {
  const auto child = ::fork();
  if (child == 0) {
    ::_exit(body());
  }
  return child;
}

// The number with which the child ended, or minus the signal that killed it.
inline int endOfChild(pid_t child) {
  int status = 0;
  if (child < 0 || ::waitpid(child, &status, 0) != child) {
    return -1000;
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

template <class Body>
int inChild(const Body& body) {
  return endOfChild(startChild(body));
}

// Sets an environment variable, or removes it, until the end of the scope.
class ScopedEnvironment {
 public:
  ScopedEnvironment(const char* name, const char* value) : name_(name) {
    if (const char* old = ::getenv(name)) {
      old_ = old;
    }
    set(value);
  }
  ~ScopedEnvironment() { set(old_ ? old_->c_str() : nullptr); }
  ScopedEnvironment(const ScopedEnvironment&) = delete;
  ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

 private:
  void set(const char* value) {
    if (value != nullptr) {
      ::setenv(name_, value, 1);
    } else {
      ::unsetenv(name_);
    }
  }

  const char* name_;
  std::optional<std::string> old_;
};

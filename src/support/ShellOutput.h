#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include <signal.h>

namespace lumo {

// What outputWhenRunAsShellCommand is made of.

// How much is read at a time.
inline constexpr std::size_t kShellOutputChunk = 262144;

// The bytes that `read` gives, chunk by chunk, to the first one that is short. `read` fills what it is given
// as far as it can and answers how many bytes that were.
std::string shellOutputFrom(const std::function<std::size_t(char* bytes, std::size_t count)>& read);

// Whether the shell takes a path that stands unquoted in a command line for one word and for that very path.
bool isOneShellWord(std::string_view path);

// Keeps SIGCHLD from the calling thread until the end of the scope, so that no handler of another part of the
// program interrupts it. The process ignores the signal at no time: that would cost every other child's exit
// status. Make and end it on the same thread.
class ChildSignalHeld {
 public:
  using SetMask = int (*)(int how, const sigset_t* mask, sigset_t* before);

  explicit ChildSignalHeld(SetMask setMask = ::pthread_sigmask);
  // A failure goes into the log.
  ~ChildSignalHeld();
  ChildSignalHeld(const ChildSignalHeld&) = delete;
  ChildSignalHeld& operator=(const ChildSignalHeld&) = delete;

 private:
  const SetMask setMask_;
  sigset_t before_;
};

}  // namespace lumo

#include "support/ShellOutput.h"

#include <algorithm>
#include <vector>

#include "platform/log.h"

namespace lumo {
namespace {

// Bytes from 80 on are parts of letters; the shell takes them as they are.
bool isPlain(char character) {
  constexpr std::string_view kSigns = "/._-+,:=@%";
  const auto byte = static_cast<unsigned char>(character);
  return byte >= 0x80 || (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') ||
         (byte >= 'a' && byte <= 'z') || kSigns.find(character) != std::string_view::npos;
}

}  // namespace

std::string shellOutputFrom(const std::function<std::size_t(char* bytes, std::size_t count)>& read) {
  std::string output;
  std::vector<char> chunk(kShellOutputChunk);
  while (true) {
    const std::size_t count = std::min(read(chunk.data(), chunk.size()), chunk.size());
    output.append(chunk.data(), count);
    if (count < chunk.size()) {
      return output;
    }
  }
}

bool isOneShellWord(std::string_view path) {
  return !path.empty() && std::all_of(path.begin(), path.end(), isPlain);
}

ChildSignalHeld::ChildSignalHeld(SetMask setMask) : setMask_(setMask), before_() {
  sigset_t mask;
  sigemptyset(&mask);
  sigaddset(&mask, SIGCHLD);
  ::pthread_sigmask(SIG_BLOCK, &mask, &before_);
}

ChildSignalHeld::~ChildSignalHeld() {
  if (setMask_(SIG_SETMASK, &before_, nullptr) != 0) {
    platform::NSLog("error reseting SIGCHLD");
  }
}

}  // namespace lumo

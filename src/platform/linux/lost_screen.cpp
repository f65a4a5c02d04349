#include "platform/linux/lost_screen.h"

#include <cstdlib>
#include <utility>

#include <X11/Xlib.h>
#include <unistd.h>

namespace platform {

namespace {

std::function<void()>& theHandler() {
  static std::function<void()> handler;
  return handler;
}

// The library ends the process when this returns.
int lost(Display* /*display*/) {
  if (const auto handler = std::exchange(theHandler(), nullptr)) {
    handler();
  }
  // Not exit: its handlers would talk to the screen.
  _exit(EXIT_FAILURE);
}

}  // namespace

void setLostScreenHandler(std::function<void()> handler) {
  theHandler() = std::move(handler);
  XSetIOErrorHandler(lost);
}

}  // namespace platform

#include "platform/linux/lost_screen.h"

#include <cstdlib>
#include <utility>

#include <X11/Xlib.h>
#include <gdk/wayland/gdkwayland.h>
#include <poll.h>
#include <unistd.h>
#include <wayland-client-core.h>

namespace platform {

namespace {

std::function<void()>& theHandler() {
  static std::function<void()> handler;
  return handler;
}

[[noreturn]] void lost() {
  if (const auto handler = std::exchange(theHandler(), nullptr)) {
    handler();
  }
  // Not exit: its handlers would talk to the screen.
  _exit(EXIT_FAILURE);
}

int lostServer(Display* /*display*/) {
  lost();
}

// Watches the connection to a Wayland compositor. The toolkit ends the process as soon as it reads or writes
// there in vain, so this asks in each turn of the main loop before the toolkit's own source may. It acts when
// it is asked and not when it is served, for GTK 4.18 does so too.
struct CompositorWatch {
  GSource source;
  // -1 until it is known.
  int connection;
};

gboolean endIfHungUp(GSource* source) {
  // A hang-up is told without being asked for.
  pollfd asked{reinterpret_cast<CompositorWatch*>(source)->connection, 0, 0};
  if (poll(&asked, 1, 0) > 0 && (asked.revents & (POLLHUP | POLLERR)) != 0) {
    lost();
  }
  return FALSE;
}

}  // namespace

void setLostScreenHandler(std::function<void()> handler) {
  theHandler() = std::move(handler);
  XSetIOErrorHandler(lostServer);
}

bool openWatchedScreen(const std::function<bool()>& open) {
  static GSourceFuncs functions = {
      [](GSource* source, int* timeout) {
        *timeout = -1;
        return endIfHungUp(source);
      },
      endIfHungUp,
      nullptr,
      nullptr,
      nullptr,
      nullptr,
  };
  GSource* source = g_source_new(&functions, sizeof(CompositorWatch));
  auto* watch = reinterpret_cast<CompositorWatch*>(source);
  watch->connection = -1;
  g_source_set_name(source, "compositor watch");
  // Of sources that are equally urgent the one that was attached first is asked first.
  g_source_set_priority(source, G_MININT);
  g_source_attach(source, nullptr);
  const bool opened = open();
  GdkDisplay* display = opened ? gdk_display_get_default() : nullptr;
  if (GDK_IS_WAYLAND_DISPLAY(display)) {
    watch->connection = wl_display_get_fd(gdk_wayland_display_get_wl_display(display));
  } else {
    g_source_destroy(source);
  }
  g_source_unref(source);
  return opened;
}

}  // namespace platform

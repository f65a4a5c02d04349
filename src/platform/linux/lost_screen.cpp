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
// there in vain, so this asks in each turn of the main loop before the toolkit's own source may.
struct CompositorWatch {
  GSource source;
  int connection;
};

bool hasHungUp(GSource* source) {
  // A hang-up is told without being asked for.
  pollfd asked{reinterpret_cast<CompositorWatch*>(source)->connection, 0, 0};
  return poll(&asked, 1, 0) > 0 && (asked.revents & (POLLHUP | POLLERR)) != 0;
}

GSource* watchCompositor(wl_display* display) {
  static GSourceFuncs functions = {
      [](GSource* source, int* timeout) -> gboolean {
        *timeout = -1;
        return hasHungUp(source) ? TRUE : FALSE;
      },
      [](GSource* source) -> gboolean { return hasHungUp(source) ? TRUE : FALSE; },
      [](GSource*, GSourceFunc, gpointer) -> gboolean { lost(); },
      nullptr,
      nullptr,
      nullptr,
  };
  GSource* source = g_source_new(&functions, sizeof(CompositorWatch));
  const int connection = wl_display_get_fd(display);
  reinterpret_cast<CompositorWatch*>(source)->connection = connection;
  g_source_set_name(source, "compositor watch");
  g_source_add_unix_fd(source, connection, static_cast<GIOCondition>(G_IO_HUP | G_IO_ERR));
  g_source_set_priority(source, G_PRIORITY_HIGH);
  g_source_attach(source, nullptr);
  return source;
}

}  // namespace

void setLostScreenHandler(std::function<void()> handler) {
  static GSource* watch = nullptr;
  theHandler() = std::move(handler);
  XSetIOErrorHandler(lostServer);
  GdkDisplay* display = gdk_display_get_default();
  if (watch == nullptr && display != nullptr && GDK_IS_WAYLAND_DISPLAY(display)) {
    watch = watchCompositor(gdk_wayland_display_get_wl_display(display));
  }
}

}  // namespace platform

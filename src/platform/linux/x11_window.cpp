#include "platform/linux/x11_window.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <gdk/x11/gdkx.h>

namespace platform {

namespace {

struct X11Surface {
  Display* display;
  Window window;
  int scale;
};

std::optional<X11Surface> surfaceOf(GtkWindow* window) {
  GdkSurface* surface = gtk_native_get_surface(GTK_NATIVE(window));
  if (surface == nullptr || !GDK_IS_X11_SURFACE(surface)) {
    return std::nullopt;
  }
  return X11Surface{gdk_x11_display_get_xdisplay(gdk_surface_get_display(surface)),
                    gdk_x11_surface_get_xid(surface), gdk_surface_get_scale_factor(surface)};
}

// How far the shadow reaches beyond the window at the left and top, in device pixels.
Point shadow(const X11Surface& surface) {
  Atom type = None;
  int format = 0;
  unsigned long count = 0;
  unsigned long rest = 0;
  unsigned char* data = nullptr;
  Point extent;
  const Atom property = XInternAtom(surface.display, "_GTK_FRAME_EXTENTS", False);
  if (XGetWindowProperty(surface.display, surface.window, property, 0, 4, False, XA_CARDINAL, &type, &format,
                         &count, &rest, &data) == Success &&
      data != nullptr) {
    if (format == 32 && count == 4) {
      const auto* values = reinterpret_cast<const long*>(data);
      extent = {static_cast<double>(values[0]), static_cast<double>(values[2])};
    }
    XFree(data);
  }
  return extent;
}

}  // namespace

bool isOnX11(GtkWindow* window) {
  return GDK_IS_X11_DISPLAY(gtk_widget_get_display(GTK_WIDGET(window)));
}

std::optional<Point> x11Position(GtkWindow* window) {
  const auto surface = surfaceOf(window);
  if (!surface) {
    return std::nullopt;
  }
  int x = 0;
  int y = 0;
  ::Window child = None;
  gdk_x11_display_error_trap_push(gtk_widget_get_display(GTK_WIDGET(window)));
  const Bool known = XTranslateCoordinates(surface->display, surface->window,
                                           DefaultRootWindow(surface->display), 0, 0, &x, &y, &child);
  const Point extent = shadow(*surface);
  gdk_x11_display_error_trap_pop_ignored(gtk_widget_get_display(GTK_WIDGET(window)));
  if (known == False) {
    return std::nullopt;
  }
  return Point{(x + extent.x) / surface->scale, (y + extent.y) / surface->scale};
}

void x11Move(GtkWindow* window, Point position) {
  if (const auto surface = surfaceOf(window)) {
    const Point extent = shadow(*surface);
    XMoveWindow(surface->display, surface->window, static_cast<int>(position.x * surface->scale - extent.x),
                static_cast<int>(position.y * surface->scale - extent.y));
  }
}

void x11SetAbove(GtkWindow* window, bool above) {
  const auto surface = surfaceOf(window);
  if (!surface || !gtk_widget_get_mapped(GTK_WIDGET(window))) {
    return;
  }
  XEvent event{};
  event.xclient.type = ClientMessage;
  event.xclient.window = surface->window;
  event.xclient.message_type = XInternAtom(surface->display, "_NET_WM_STATE", False);
  event.xclient.format = 32;
  event.xclient.data.l[0] = above ? 1 : 0;
  event.xclient.data.l[1] = static_cast<long>(XInternAtom(surface->display, "_NET_WM_STATE_ABOVE", False));
  event.xclient.data.l[3] = 1;  // From an application.
  XSendEvent(surface->display, DefaultRootWindow(surface->display), False,
             SubstructureNotifyMask | SubstructureRedirectMask, &event);
  XFlush(surface->display);
}

}  // namespace platform

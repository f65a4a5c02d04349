#include "platform/linux/window_front.h"

#include <algorithm>
#include <vector>

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <gdk/x11/gdkx.h>
#include <gtk/gtk.h>

#include "platform/application.h"

namespace platform {

namespace {

using XWindow = ::Window;

std::vector<GtkWindow*> toplevels() {
  std::vector<GtkWindow*> windows;
  if (gtk_is_initialized() == FALSE) {
    return windows;
  }
  GListModel* list = gtk_window_get_toplevels();
  const guint count = g_list_model_get_n_items(list);
  for (guint at = 0; at < count; ++at) {
    // The list keeps the window.
    auto* window = static_cast<GtkWindow*>(g_list_model_get_item(list, at));
    windows.push_back(window);
    g_object_unref(window);
  }
  return windows;
}

std::vector<unsigned long> longsOf(Display* display, XWindow window, const char* name, Atom type) {
  Atom actual = None;
  int format = 0;
  unsigned long count = 0;
  unsigned long rest = 0;
  unsigned char* data = nullptr;
  std::vector<unsigned long> values;
  // 4096 windows; a list beyond that is cut off.
  if (XGetWindowProperty(display, window, XInternAtom(display, name, False), 0, 4096, False, type, &actual,
                         &format, &count, &rest, &data) == Success &&
      data != nullptr) {
    if (format == 32) {
      const auto* longs = reinterpret_cast<const unsigned long*>(data);
      values.assign(longs, longs + count);
    }
    XFree(data);
  }
  return values;
}

// The windows that the window manager knows, the lowest first.
std::vector<XWindow> stacking(Display* display) {
  return longsOf(display, DefaultRootWindow(display), "_NET_CLIENT_LIST_STACKING", XA_WINDOW);
}

// Source indication 2, a request of the person's own, is not held back by focus stealing prevention (Extended
// Window Manager Hints 1.5, _NET_ACTIVE_WINDOW).
void askForFront(Display* display, XWindow window, unsigned long time) {
  XEvent event = {};
  event.xclient.type = ClientMessage;
  event.xclient.window = window;
  event.xclient.message_type = XInternAtom(display, "_NET_ACTIVE_WINDOW", False);
  event.xclient.format = 32;
  event.xclient.data.l[0] = 2;
  event.xclient.data.l[1] = static_cast<long>(time);
  XSendEvent(display, DefaultRootWindow(display), False, SubstructureRedirectMask | SubstructureNotifyMask,
             &event);
}

GdkSurface* x11Surface(GtkWindow* window) {
  GdkSurface* surface = gtk_native_get_surface(GTK_NATIVE(window));
  return surface != nullptr && GDK_IS_X11_SURFACE(surface) ? surface : nullptr;
}

// The lowest window first, as far as the desktop tells; the active one last where it does not.
std::vector<GtkWindow*> visibleWindows() {
  std::vector<GtkWindow*> windows = toplevels();
  std::erase_if(windows,
                [](GtkWindow* window) { return gtk_widget_get_visible(GTK_WIDGET(window)) == FALSE; });
  std::vector<XWindow> order;
  if (!windows.empty() && x11Surface(windows.front()) != nullptr) {
    order = stacking(gdk_x11_display_get_xdisplay(gtk_widget_get_display(GTK_WIDGET(windows.front()))));
  }
  const auto rank = [&order](GtkWindow* window) -> std::ptrdiff_t {
    GdkSurface* surface = x11Surface(window);
    const auto place =
        surface == nullptr ? order.end() : std::ranges::find(order, gdk_x11_surface_get_xid(surface));
    if (place != order.end()) {
      return place - order.begin();
    }
    return gtk_window_is_active(window) ? 1 : -1;
  };
  std::ranges::stable_sort(windows, {}, rank);
  return windows;
}

void bringToFront(GtkWindow* window) {
  GdkSurface* surface = x11Surface(window);
  if (surface != nullptr && gtk_widget_get_mapped(GTK_WIDGET(window))) {
    GdkX11Screen* screen = gdk_x11_display_get_screen(gdk_surface_get_display(surface));
    if (gdk_x11_screen_supports_net_wm_hint(screen, g_intern_static_string("_NET_ACTIVE_WINDOW"))) {
      askForFront(gdk_x11_display_get_xdisplay(gdk_surface_get_display(surface)),
                  gdk_x11_surface_get_xid(surface), gdk_x11_get_server_time(surface));
      return;
    }
  }
  gtk_window_present(window);
}

}  // namespace

bool hasVisibleWindow() {
  return std::ranges::any_of(
      toplevels(), [](GtkWindow* window) { return gtk_widget_get_visible(GTK_WIDGET(window)) != FALSE; });
}

bool hasActiveWindow() {
  return std::ranges::any_of(toplevels(),
                             [](GtkWindow* window) { return gtk_window_is_active(window) != FALSE; });
}

GtkWindow* frontmostWindow() {
  const std::vector<GtkWindow*> windows = visibleWindows();
  return windows.empty() ? nullptr : windows.back();
}

void bringWindowsToFront(unsigned options) {
  const std::vector<GtkWindow*> windows = visibleWindows();
  if (windows.empty()) {
    return;
  }
  if ((options & kActivateAllWindows) != 0) {
    std::for_each(windows.begin(), windows.end() - 1, bringToFront);
  }
  bringToFront(windows.back());
}

bool bringProcessToFront(int process, unsigned options) {
  Display* display = process > 0 ? XOpenDisplay(nullptr) : nullptr;
  if (display == nullptr) {
    return false;
  }
  // A window of the list may be gone by the time it is asked.
  const auto usual = XSetErrorHandler([](Display*, XErrorEvent*) { return 0; });
  std::vector<XWindow> windows = stacking(display);
  std::erase_if(windows, [display, process](XWindow window) {
    const auto owner = longsOf(display, window, "_NET_WM_PID", XA_CARDINAL);
    return owner.empty() || owner.front() != static_cast<unsigned long>(process);
  });
  if (!windows.empty()) {
    if ((options & kActivateAllWindows) != 0) {
      std::for_each(windows.begin(), windows.end() - 1,
                    [display](XWindow window) { askForFront(display, window, CurrentTime); });
    }
    askForFront(display, windows.back(), CurrentTime);
  }
  XCloseDisplay(display);
  XSetErrorHandler(usual);
  return !windows.empty();
}

}  // namespace platform

#include "station/screen.h"

#include <algorithm>
#include <ostream>
#include <stdexcept>

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <poll.h>

namespace station {

namespace {

// Windows come and go while they are asked.
int ignoreError(Display*, XErrorEvent*) {
  return 0;
}

constexpr long kFromPager = 2;

Colour colourOf(unsigned long pixel) {
  return {static_cast<std::uint8_t>(pixel >> 16), static_cast<std::uint8_t>(pixel >> 8),
          static_cast<std::uint8_t>(pixel)};
}

unsigned long pixelOf(Colour colour) {
  return static_cast<unsigned long>(colour.red) << 16 | static_cast<unsigned long>(colour.green) << 8 |
         colour.blue;
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const Area& area) {
  return out << area.width << "x" << area.height << "+" << area.x << "+" << area.y;
}

struct Screen::Connection {
  Display* display = nullptr;
  Window root = None;

  Atom atom(const char* name) const { return XInternAtom(display, name, False); }

  // A property of 32-bit values, or of bytes; empty when the window has none.
  template <class Value>
  std::vector<Value> property(Window window, const char* name) const {
    constexpr int format = sizeof(Value) == 1 ? 8 : 32;
    Atom type = None;
    int actualFormat = 0;
    unsigned long count = 0;
    unsigned long rest = 0;
    unsigned char* data = nullptr;
    std::vector<Value> values;
    if (XGetWindowProperty(display, window, atom(name), 0, 4096, False, AnyPropertyType, &type, &actualFormat,
                           &count, &rest, &data) == Success &&
        data != nullptr) {
      if (actualFormat == format) {
        const auto* first = reinterpret_cast<const Value*>(data);
        values.assign(first, first + count);
      }
      XFree(data);
    }
    return values;
  }

  bool isViewable(Window window) const {
    XWindowAttributes attributes{};
    return XGetWindowAttributes(display, window, &attributes) != 0 && attributes.map_state == IsViewable &&
           attributes.c_class == InputOutput;
  }

  void message(Window to, Window about, const char* type, long first, long second, long mask) {
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = about;
    event.xclient.message_type = atom(type);
    event.xclient.format = 32;
    event.xclient.data.l[0] = first;
    event.xclient.data.l[1] = second;
    XSendEvent(display, to, False, mask, &event);
    XFlush(display);
  }
  void askWindowManager(Window about, const char* type, long first, long second) {
    message(root, about, type, first, second, SubstructureNotifyMask | SubstructureRedirectMask);
  }
};

Screen::Screen(const std::string& display) : connection_(std::make_unique<Connection>()) {
  connection_->display = XOpenDisplay(display.c_str());
  if (connection_->display == nullptr) {
    throw std::runtime_error("the display " + display + " cannot be opened");
  }
  connection_->root = DefaultRootWindow(connection_->display);
  XSetErrorHandler(ignoreError);
}

Screen::~Screen() {
  XCloseDisplay(connection_->display);
}

Area Screen::area() const {
  return {0, 0, DisplayWidth(connection_->display, 0), DisplayHeight(connection_->display, 0)};
}

bool Screen::isManaged() const {
  return !connection_->property<unsigned long>(connection_->root, "_NET_SUPPORTING_WM_CHECK").empty();
}

std::vector<WindowId> Screen::windows() const {
  std::vector<WindowId> found;
  if (isManaged()) {
    found = connection_->property<unsigned long>(connection_->root, "_NET_CLIENT_LIST_STACKING");
  } else {
    Window root = None;
    Window parent = None;
    Window* list = nullptr;
    unsigned count = 0;
    if (XQueryTree(connection_->display, connection_->root, &root, &parent, &list, &count) != 0) {
      found.assign(list, list + count);
      XFree(list);
    }
  }
  std::erase_if(found, [this](WindowId window) { return !connection_->isViewable(window); });
  return found;
}

std::vector<WindowId> Screen::windowsOf(pid_t process) const {
  std::vector<WindowId> found = windows();
  std::erase_if(found, [this, process](WindowId window) {
    const auto owner = connection_->property<unsigned long>(window, "_NET_WM_PID");
    return owner.empty() || owner.front() != static_cast<unsigned long>(process);
  });
  return found;
}

Area Screen::frame(WindowId window) const {
  XWindowAttributes attributes{};
  int x = 0;
  int y = 0;
  Window child = None;
  if (XGetWindowAttributes(connection_->display, window, &attributes) == 0 ||
      XTranslateCoordinates(connection_->display, window, connection_->root, 0, 0, &x, &y, &child) == False) {
    return {};
  }
  Area area{x, y, attributes.width, attributes.height};
  const auto shadow = connection_->property<unsigned long>(window, "_GTK_FRAME_EXTENTS");
  if (shadow.size() == 4) {
    area.x += static_cast<int>(shadow[0]);
    area.y += static_cast<int>(shadow[2]);
    area.width -= static_cast<int>(shadow[0] + shadow[1]);
    area.height -= static_cast<int>(shadow[2] + shadow[3]);
  }
  return area;
}

std::string Screen::title(WindowId window) const {
  const auto name = connection_->property<char>(window, "_NET_WM_NAME");
  return {name.begin(), name.end()};
}

std::vector<std::string> Screen::states(WindowId window) const {
  std::vector<std::string> names;
  for (const unsigned long state : connection_->property<unsigned long>(window, "_NET_WM_STATE")) {
    char* name = XGetAtomName(connection_->display, state);
    names.emplace_back(name == nullptr ? "" : name);
    XFree(name);
  }
  return names;
}

WindowId Screen::active() const {
  const auto window = connection_->property<unsigned long>(connection_->root, "_NET_ACTIVE_WINDOW");
  return window.empty() ? 0 : window.front();
}

void Screen::activate(WindowId window) {
  connection_->askWindowManager(window, "_NET_ACTIVE_WINDOW", kFromPager, CurrentTime);
}

void Screen::close(WindowId window) {
  connection_->askWindowManager(window, "_NET_CLOSE_WINDOW", CurrentTime, kFromPager);
}

void Screen::askToClose(WindowId window) {
  connection_->message(window, window, "WM_PROTOCOLS",
                       static_cast<long>(connection_->atom("WM_DELETE_WINDOW")), CurrentTime, NoEventMask);
}

std::optional<std::chrono::microseconds> Screen::ping(WindowId window, std::chrono::milliseconds bound) {
  Display* display = connection_->display;
  const Atom protocols = connection_->atom("WM_PROTOCOLS");
  const Atom ping = connection_->atom("_NET_WM_PING");
  // The answer is the same message, sent to the root window.
  XSelectInput(display, connection_->root, SubstructureNotifyMask);
  const auto number = ++pings_;
  XEvent event{};
  event.xclient.type = ClientMessage;
  event.xclient.window = window;
  event.xclient.message_type = protocols;
  event.xclient.format = 32;
  event.xclient.data.l[0] = static_cast<long>(ping);
  event.xclient.data.l[1] = number;
  event.xclient.data.l[2] = static_cast<long>(window);
  const auto start = std::chrono::steady_clock::now();
  XSendEvent(display, window, False, NoEventMask, &event);
  XFlush(display);
  pollfd arrived{ConnectionNumber(display), POLLIN, 0};
  while (std::chrono::steady_clock::now() - start < bound) {
    if (XPending(display) == 0) {
      poll(&arrived, 1, 1);
      continue;
    }
    XNextEvent(display, &event);
    if (event.type == ClientMessage && event.xclient.message_type == protocols &&
        event.xclient.data.l[0] == static_cast<long>(ping) && event.xclient.data.l[1] == number) {
      return std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - start);
    }
  }
  return std::nullopt;
}

Colour Screen::at(int x, int y) const {
  XImage* image = XGetImage(connection_->display, connection_->root, x, y, 1, 1, AllPlanes, ZPixmap);
  if (image == nullptr) {
    return {};
  }
  const Colour colour = colourOf(XGetPixel(image, 0, 0));
  XDestroyImage(image);
  return colour;
}

int Screen::otherThan(Colour colour, const Area& area) const {
  XImage* image =
      XGetImage(connection_->display, connection_->root, area.x, area.y, static_cast<unsigned>(area.width),
                static_cast<unsigned>(area.height), AllPlanes, ZPixmap);
  int count = 0;
  for (int y = 0; image != nullptr && y < area.height; ++y) {
    for (int x = 0; x < area.width; ++x) {
      count += colourOf(XGetPixel(image, x, y)) == colour ? 0 : 1;
    }
  }
  if (image != nullptr) {
    XDestroyImage(image);
  }
  return count;
}

OtherWindow::OtherWindow(const std::string& display, const Area& area, Colour colour)
    : screen_(std::make_unique<Screen>(display)) {
  Display* connection = screen_->connection_->display;
  id_ = XCreateSimpleWindow(connection, screen_->connection_->root, area.x, area.y,
                            static_cast<unsigned>(area.width), static_cast<unsigned>(area.height), 0, 0,
                            pixelOf(colour));
  XStoreName(connection, id_, "Another program");
  // A window manager gives the keyboard only to a window that says it wants it, and the place only to one
  // that says that a person chose it.
  XWMHints wants{};
  wants.flags = InputHint | StateHint;
  wants.input = True;
  wants.initial_state = NormalState;
  XSetWMHints(connection, id_, &wants);
  XSizeHints place{};
  place.flags = USPosition | USSize;
  place.x = area.x;
  place.y = area.y;
  place.width = area.width;
  place.height = area.height;
  XSetWMNormalHints(connection, id_, &place);
  XSelectInput(connection, id_, FocusChangeMask);
  XMapWindow(connection, id_);
  XFlush(connection);
}

OtherWindow::~OtherWindow() = default;

bool OtherWindow::hasHadFocus() {
  Display* connection = screen_->connection_->display;
  while (XPending(connection) > 0) {
    XEvent event;
    XNextEvent(connection, &event);
    hadFocus_ = hadFocus_ || event.type == FocusIn;
  }
  return hadFocus_;
}

}  // namespace station

#pragma once

#include <chrono>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace station {

// In device pixels from the screen's top left.
struct Area {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;

  bool operator==(const Area&) const = default;
};
std::ostream& operator<<(std::ostream& out, const Area& area);

struct Colour {
  std::uint8_t red = 0;
  std::uint8_t green = 0;
  std::uint8_t blue = 0;

  bool operator==(const Colour&) const = default;
};
inline constexpr Colour kRed{200, 0, 0};
inline constexpr Colour kGreen{0, 150, 0};
inline constexpr Colour kBlue{0, 0, 200};

// The X server's number of a window; 0 is none.
using WindowId = unsigned long;

// What can be seen of an X screen, and what a pager or a taskbar would ask its window manager for. A window
// that has gone is like one that has nothing to tell. For one thread.
class Screen {
 public:
  // Throws std::runtime_error when the display cannot be opened.
  explicit Screen(const std::string& display);
  ~Screen();
  Screen(const Screen&) = delete;
  Screen& operator=(const Screen&) = delete;

  Area area() const;
  bool isManaged() const;
  // The windows that a person can see, the lowest first; with a window manager these are the ones it manages.
  std::vector<WindowId> windows() const;
  // The visible windows of that program, the lowest first.
  std::vector<WindowId> windowsOf(pid_t process) const;
  // Without the shadow that a window draws around itself.
  Area frame(WindowId window) const;
  std::string title(WindowId window) const;
  // The names in its _NET_WM_STATE.
  std::vector<std::string> states(WindowId window) const;
  // The one with the keyboard, as the window manager tells; 0 for none.
  WindowId active() const;

  // As a taskbar does.
  void activate(WindowId window);
  void close(WindowId window);
  // As a program without a window manager does.
  void askToClose(WindowId window);

  // Asks the window for a sign of life, as a window manager does, and tells how long its program took. Absent
  // when it takes longer than the bound.
  std::optional<std::chrono::microseconds> ping(WindowId window, std::chrono::milliseconds bound);

  Colour at(int x, int y) const;
  // How many points of the area are not of that colour.
  int otherThan(Colour colour, const Area& area) const;

 private:
  friend class OtherWindow;
  struct Connection;
  std::unique_ptr<Connection> connection_;
  long pings_ = 0;
};

// A plain window of another program, with a connection of its own.
class OtherWindow {
 public:
  // Returns at once; the window is on the screen a little later.
  OtherWindow(const std::string& display, const Area& area, Colour colour);
  ~OtherWindow();
  OtherWindow(const OtherWindow&) = delete;
  OtherWindow& operator=(const OtherWindow&) = delete;

  WindowId id() const { return id_; }
  // Whether it has had the keyboard since it was made.
  bool hasHadFocus();

 private:
  std::unique_ptr<Screen> screen_;
  WindowId id_ = 0;
  bool hadFocus_ = false;
};

}  // namespace station

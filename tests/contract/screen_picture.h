#pragma once

#include <string>
#include <vector>

#include <X11/Xlib.h>
#include <X11/Xutil.h>

// What is on a display, as a person sees it. Over a connection of its own.
class ScreenCamera {
 public:
  // The pixels of a rectangle, row by row.
  using Picture = std::vector<unsigned long>;

  explicit ScreenCamera(const std::string& display) : display_(XOpenDisplay(display.c_str())) {
    // Away from everything that would be lit by it.
    XWarpPointer(display_, None, DefaultRootWindow(display_), 0, 0, 0, 0,
                 DisplayWidth(display_, DefaultScreen(display_)) - 1,
                 DisplayHeight(display_, DefaultScreen(display_)) - 1);
    XSync(display_, False);
  }
  ~ScreenCamera() { XCloseDisplay(display_); }
  ScreenCamera(const ScreenCamera&) = delete;
  ScreenCamera& operator=(const ScreenCamera&) = delete;

  Picture take(int x, int y, unsigned width, unsigned height) {
    XImage* image = XGetImage(display_, DefaultRootWindow(display_), x, y, width, height, AllPlanes, ZPixmap);
    Picture picture;
    picture.reserve(static_cast<std::size_t>(width) * height);
    for (unsigned row = 0; row < height; ++row) {
      for (unsigned column = 0; column < width; ++column) {
        picture.push_back(XGetPixel(image, static_cast<int>(column), static_cast<int>(row)) & 0xFFFFFF);
      }
    }
    XDestroyImage(image);
    return picture;
  }

 private:
  Display* display_;
};

#pragma once

#include <string>

namespace platform {

// Lengths are logical pixels; the origin is at the top left and y grows downwards.
struct Point {
  double x = 0;
  double y = 0;
  bool operator==(const Point&) const = default;
};

struct Size {
  double width = 0;
  double height = 0;
  bool operator==(const Size&) const = default;
};

struct Rect {
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;
  bool operator==(const Rect&) const = default;
};

// The text that "%@" prints for a frame: "{{x, y}, {width, height}}", numbers in their shortest form.
std::string description(const Rect& rect);
std::string description(const Size& size);
std::string description(const Point& point);

}  // namespace platform

// A small writer of SVG pictures: shapes are appended in the order in which they are painted.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace juniva {

struct Point {
  double x;
  double y;
};

// A place on a gradient: from 0 to 1, an SVG colour, its opacity.
struct Stop {
  double at;
  std::string_view colour;
  double opacity = 1;
};

// Numbers that look random and are the same in every run.
class Chance {
 public:
  explicit Chance(std::uint64_t seed) : mState(seed) {}
  double between(double low, double high);

 private:
  std::uint64_t mState;
};

class SvgCanvas {
 public:
  // The picture's ids begin with `prefix`, a short word.
  explicit SvgCanvas(std::string_view prefix) : mPrefix(prefix) {}

  // Gradients over the whole canvas (vertical) or a circle of it. They give the text to use as a fill.
  std::string verticalGradient(std::initializer_list<Stop> stops, double top = 0, double bottom = 400);
  std::string horizontalGradient(std::initializer_list<Stop> stops, double left = 0, double right = 600);
  // A vertical gradient over the height of whatever shape is filled with it.
  std::string shapeGradient(std::initializer_list<Stop> stops);
  std::string radialGradient(Point centre, double radius, std::initializer_list<Stop> stops);

  // Shapes. `extra` is put into the element as it stands, such as `opacity=".5"`.
  void background(std::string_view fill) { rectangle(0, 0, 600, 400, fill); }
  void rectangle(double x, double y, double width, double height, std::string_view fill,
                 std::string_view extra = {});
  void circle(Point centre, double radius, std::string_view fill, std::string_view extra = {});
  void ellipse(Point centre, double radiusX, double radiusY, std::string_view fill,
               std::string_view extra = {});
  void polygon(const std::vector<Point>& corners, std::string_view fill, std::string_view extra = {});
  void path(std::string_view commands, std::string_view fill, std::string_view extra = {});
  void line(std::string_view commands, std::string_view stroke, double width, std::string_view extra = {});
  // Round dots of one size, and axis-parallel boxes, many in one element.
  void dots(const std::vector<Point>& centres, double diameter, std::string_view fill,
            std::string_view extra = {});
  void boxes(const std::vector<Point>& corners, double width, double height, std::string_view fill,
             std::string_view extra = {});

  // A line of hills from edge to edge, filled down to `bottom`. `height` is how far it rises and falls around
  // `level`; `roughness` from 0 (soft hills) to 1 (sharp peaks).
  void ridge(Chance& chance, double level, double height, double roughness, double bottom,
             std::string_view fill);

  // A fir tree standing at `foot`.
  void fir(Chance& chance, Point foot, double height, std::string_view fill);

  // The whole picture. `aria-hidden`, since the page says beside it what it shows.
  std::string finish() const;

 private:
  std::string addGradient(std::string_view element, std::string_view place,
                          std::initializer_list<Stop> stops);

  std::string mPrefix;
  std::string mDefinitions;
  std::string mShapes;
  int mGradientCount = 0;
};

// A number as SVG text, with one decimal at most.
std::string svgNumber(double value);

}  // namespace juniva

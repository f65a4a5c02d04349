#include "svg_canvas.h"

#include <cmath>
#include <cstdio>

namespace juniva {
namespace {

const std::string kCanvasUnits = " gradientUnits=\"userSpaceOnUse\"";

std::string attribute(std::string_view name, double value) {
  return " " + std::string(name) + "=\"" + svgNumber(value) + "\"";
}

std::string pointText(Point point) {
  return svgNumber(point.x) + " " + svgNumber(point.y);
}

}  // namespace

std::string svgNumber(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.1f", value);
  std::string result(text);
  if (result.size() > 2 && result.compare(result.size() - 2, 2, ".0") == 0) result.resize(result.size() - 2);
  return result == "-0" ? "0" : result;
}

// The generator is SplitMix64: three lines, and good enough for leaves and stars.
double Chance::between(double low, double high) {
  mState += 0x9E3779B97F4A7C15ULL;
  std::uint64_t bits = mState;
  bits = (bits ^ (bits >> 30)) * 0xBF58476D1CE4E5B9ULL;
  bits = (bits ^ (bits >> 27)) * 0x94D049BB133111EBULL;
  bits ^= bits >> 31;
  return low + (high - low) * (static_cast<double>(bits >> 11) / 9007199254740992.0);
}

std::string SvgCanvas::addGradient(std::string_view element, std::string_view place,
                                   std::initializer_list<Stop> stops) {
  const std::string id = mPrefix + std::to_string(++mGradientCount);
  mDefinitions += "<" + std::string(element) + " id=\"" + id + "\"";
  mDefinitions += std::string(place) + ">";
  for (const Stop& stop : stops) {
    char offset[16];
    std::snprintf(offset, sizeof offset, "%.3g", stop.at);
    mDefinitions +=
        "<stop offset=\"" + std::string(offset) + "\" stop-color=\"" + std::string(stop.colour) + "\"";
    if (stop.opacity < 1) {
      char opacity[16];
      std::snprintf(opacity, sizeof opacity, "%.2g", stop.opacity);
      mDefinitions += " stop-opacity=\"" + std::string(opacity) + "\"";
    }
    mDefinitions += "/>";
  }
  mDefinitions += "</" + std::string(element) + ">";
  return "url(#" + id + ")";
}

std::string SvgCanvas::shapeGradient(std::initializer_list<Stop> stops) {
  return addGradient("linearGradient", " x2=\"0\" y2=\"1\"", stops);
}

std::string SvgCanvas::verticalGradient(std::initializer_list<Stop> stops, double top, double bottom) {
  return addGradient(
      "linearGradient",
      kCanvasUnits + attribute("x1", 0) + attribute("x2", 0) + attribute("y1", top) + attribute("y2", bottom),
      stops);
}

std::string SvgCanvas::horizontalGradient(std::initializer_list<Stop> stops, double left, double right) {
  return addGradient(
      "linearGradient",
      kCanvasUnits + attribute("x1", left) + attribute("x2", right) + attribute("y1", 0) + attribute("y2", 0),
      stops);
}

std::string SvgCanvas::radialGradient(Point centre, double radius, std::initializer_list<Stop> stops) {
  return addGradient(
      "radialGradient",
      kCanvasUnits + attribute("cx", centre.x) + attribute("cy", centre.y) + attribute("r", radius), stops);
}

void SvgCanvas::rectangle(double x, double y, double width, double height, std::string_view fill,
                          std::string_view extra) {
  mShapes += "<rect" + attribute("x", x) + attribute("y", y) + attribute("width", width) +
             attribute("height", height) + " fill=\"" + std::string(fill) + "\" " + std::string(extra) + "/>";
}

void SvgCanvas::circle(Point centre, double radius, std::string_view fill, std::string_view extra) {
  mShapes += "<circle" + attribute("cx", centre.x) + attribute("cy", centre.y) + attribute("r", radius) +
             " fill=\"" + std::string(fill) + "\" " + std::string(extra) + "/>";
}

void SvgCanvas::ellipse(Point centre, double radiusX, double radiusY, std::string_view fill,
                        std::string_view extra) {
  mShapes += "<ellipse" + attribute("cx", centre.x) + attribute("cy", centre.y) + attribute("rx", radiusX) +
             attribute("ry", radiusY) + " fill=\"" + std::string(fill) + "\" " + std::string(extra) + "/>";
}

void SvgCanvas::polygon(const std::vector<Point>& corners, std::string_view fill, std::string_view extra) {
  std::string commands;
  for (const Point& corner : corners) commands += (commands.empty() ? "M" : "L") + pointText(corner);
  path(commands + "Z", fill, extra);
}

void SvgCanvas::path(std::string_view commands, std::string_view fill, std::string_view extra) {
  mShapes += "<path d=\"" + std::string(commands) + "\" fill=\"" + std::string(fill) + "\" " +
             std::string(extra) + "/>";
}

void SvgCanvas::line(std::string_view commands, std::string_view stroke, double width,
                     std::string_view extra) {
  mShapes += "<path d=\"" + std::string(commands) + "\" fill=\"none\" stroke=\"" + std::string(stroke) +
             "\"" + attribute("stroke-width", width) + " stroke-linecap=\"round\" " + std::string(extra) +
             "/>";
}

// A line of no length with round ends is a dot.
void SvgCanvas::dots(const std::vector<Point>& centres, double diameter, std::string_view fill,
                     std::string_view extra) {
  std::string commands;
  for (const Point& centre : centres) commands += "M" + pointText(centre) + "h0";
  line(commands, fill, diameter, extra);
}

void SvgCanvas::boxes(const std::vector<Point>& corners, double width, double height, std::string_view fill,
                      std::string_view extra) {
  const std::string box = "h" + svgNumber(width) + "v" + svgNumber(height) + "h-" + svgNumber(width) + "z";
  std::string commands;
  for (const Point& corner : corners) commands += "M" + pointText(corner) + box;
  path(commands, fill, extra);
}

// A sum of waves of rising frequency; the rougher, the more the quick ones count and the sharper the crests
// are.
void SvgCanvas::ridge(Chance& chance, double level, double height, double roughness, double bottom,
                      std::string_view fill) {
  constexpr int kWaves = 6;
  double phase[kWaves];
  double frequency[kWaves];
  for (int wave = 0; wave < kWaves; ++wave) {
    phase[wave] = chance.between(0, 6.28);
    frequency[wave] = 0.006 * std::pow(1.9, wave) * chance.between(0.85, 1.15);
  }
  std::vector<Point> corners = {{-5, bottom}};
  const int step = roughness > 0.3 ? 6 : 12;
  for (int x = -5; x <= 612; x += step) {
    double sum = 0;
    double weight = 1;
    for (int wave = 0; wave < kWaves; ++wave) {
      const double swing = std::sin(x * frequency[wave] + phase[wave]);
      const double crest = 1 - 2 * std::fabs(swing);
      sum += weight * (swing * (1 - roughness) + crest * roughness);
      weight *= 0.25 + 0.3 * roughness;
    }
    corners.push_back({1.0 * x, level - height * sum + chance.between(-1.2, 1.2) * roughness});
  }
  corners.push_back({612, bottom});
  polygon(corners, fill);
}

void SvgCanvas::fir(Chance& chance, Point foot, double height, std::string_view fill) {
  constexpr int kTiers = 6;
  std::vector<Point> right;
  std::vector<Point> corners = {{foot.x, foot.y - height}};
  for (int tier = 1; tier <= kTiers; ++tier) {
    const double y = foot.y - height + height * 0.94 * tier / kTiers;
    const double reach = height * 0.21 * tier / kTiers;
    corners.push_back({foot.x - reach * chance.between(0.85, 1.15), y});
    corners.push_back({foot.x - reach * 0.45, y - height * 0.02});
    right.push_back({foot.x + reach * chance.between(0.85, 1.15), y});
    right.push_back({foot.x + reach * 0.45, y - height * 0.02});
  }
  corners.push_back({foot.x - height * 0.025, foot.y - height * 0.07});
  corners.push_back({foot.x - height * 0.025, foot.y});
  corners.push_back({foot.x + height * 0.025, foot.y});
  corners.push_back({foot.x + height * 0.025, foot.y - height * 0.07});
  corners.insert(corners.end(), right.rbegin(), right.rend());
  polygon(corners, fill);
}

std::string SvgCanvas::finish() const {
  return "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 600 400\" preserveAspectRatio=\"xMidYMid "
         "slice\" "
         "aria-hidden=\"true\" focusable=\"false\"><defs>" +
         mDefinitions + "</defs>" + mShapes + "</svg>";
}

}  // namespace juniva

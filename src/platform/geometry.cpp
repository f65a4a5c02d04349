#include "platform/geometry.h"

#include <fmt/format.h>

namespace platform {

std::string description(const Point& point) {
  return fmt::format("{{{}, {}}}", point.x, point.y);
}

std::string description(const Size& size) {
  return fmt::format("{{{}, {}}}", size.width, size.height);
}

std::string description(const Rect& rect) {
  return fmt::format("{{{{{}, {}}}, {{{}, {}}}}}", rect.x, rect.y, rect.width, rect.height);
}

}  // namespace platform

#include "platform/geometry.h"

#include <cmath>

#include <gtest/gtest.h>

#include "platform/format.h"

namespace {

using namespace platform;

TEST(Geometry, DescribesPointsSizesAndFrames) {
  EXPECT_EQ(description(Point{1, 2.5}), "{1, 2.5}");
  EXPECT_EQ(description(Size{1280, 720}), "{1280, 720}");
  EXPECT_EQ(description(Rect{}), "{{0, 0}, {0, 0}}");
  EXPECT_EQ(description(Rect{387.5, 0, 505, 14047.208}), "{{387.5, 0}, {505, 14047.208}}");
  EXPECT_EQ(description(Rect{-20, -0.25, 1e6, 0.1}), "{{-20, -0.25}, {1000000, 0.1}}");
}

TEST(Geometry, PrintsAsAnObject) {
  EXPECT_EQ(stringWithFormat("frame = %@", Rect{1, 2, 3, 4}), "frame = {{1, 2}, {3, 4}}");
  EXPECT_EQ(stringWithFormat("%@ %@", Point{1, 2}, Size{3, 4}), "{1, 2} {3, 4}");
}

TEST(Geometry, ComparesByValue) {
  EXPECT_EQ((Rect{1, 2, 3, 4}), (Rect{1, 2, 3, 4}));
  EXPECT_NE((Rect{1, 2, 3, 4}), (Rect{1, 2, 3, 5}));
  EXPECT_NE((Point{0, 1}), (Point{1, 0}));
  EXPECT_NE((Size{std::nan(""), 1}), (Size{std::nan(""), 1}));
}

}  // namespace

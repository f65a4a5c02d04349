#include "browser/WindowMode.h"

#include <gtest/gtest.h>

#include "platform/window.h"

namespace lumo {
namespace {

using platform::Rect;

constexpr Rect kScreen{0, 0, 1920, 1080};
constexpr Rect kSmall{100, 50, 1200, 860};

TEST(WindowMode, WithoutAScreenNothingHappens) {
  EXPECT_EQ(fullScreenStep(std::nullopt, kSmall, true), FullScreenStep::Nothing);
  EXPECT_EQ(fullScreenStep(std::nullopt, kSmall, false), FullScreenStep::Nothing);
}

TEST(WindowMode, ForcingCoversTheScreenFromAnySize) {
  EXPECT_EQ(fullScreenStep(kScreen, kSmall, true), FullScreenStep::CoverScreen);
  EXPECT_EQ(fullScreenStep(kScreen, kScreen, true), FullScreenStep::CoverScreen);
}

TEST(WindowMode, NotForcedAWindowOfExactlyTheScreenIsToggledOnceAndASmallerOneIsLeft) {
  EXPECT_EQ(fullScreenStep(kScreen, kScreen, false), FullScreenStep::Toggle);
  EXPECT_EQ(fullScreenStep(kScreen, kSmall, false), FullScreenStep::Nothing);
  EXPECT_EQ(fullScreenStep(kScreen, Rect{0, 0, 1920, 1079}, false), FullScreenStep::Nothing);
}

TEST(WindowMode, TheFullSizeBitChangesAlone) {
  const unsigned bit = platform::kStyleMaskFullSizeContentView;
  EXPECT_EQ(bit, 32768U);
  EXPECT_EQ(styleMaskWithFullSizeContent(15, true), 15 | bit);
  EXPECT_EQ(styleMaskWithFullSizeContent(15 | bit, true), 15 | bit);
  EXPECT_EQ(styleMaskWithFullSizeContent(15 | bit, false), 15U);
}

}  // namespace
}  // namespace lumo

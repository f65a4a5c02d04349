#include "browser/ReceiptLayout.h"

#include <gtest/gtest.h>

namespace {

using lumo::frameAfterReceipt;
using lumo::receiptFrame;
using platform::Rect;

TEST(ReceiptLayoutTest, AReceiptIsOfTheRollsWidthAndOfASinglePrecisionHeight) {
  EXPECT_EQ(lumo::kReceiptWidth, 505.0);
  EXPECT_EQ(lumo::kReceiptHeight, 14047.2080078125);
}

TEST(ReceiptLayoutTest, AReceiptIsCentredAndKeepsItsTop) {
  struct {
    const char* what;
    Rect usual;
    Rect superview;
    Rect receipt;
  } const cases[] = {
      {"covering", {0, 0, 1024, 768}, {0, 0, 1024, 768}, {259.5, 0, 505, 14047.2080078125}},
      {"below a bar", {0, 48, 1024, 720}, {0, 0, 1024, 768}, {259.5, 48, 505, 14047.2080078125}},
      {"narrow", {0, 0, 400, 300}, {0, 0, 400, 300}, {-52.5, 0, 505, 14047.2080078125}},
      {"of the same width", {0, 0, 505, 300}, {0, 0, 505, 300}, {0, 0, 505, 14047.2080078125}},
      // Where the superview lies itself is of no account.
      {"moved", {0, 0, 1024, 768}, {10, 20, 1024, 768}, {259.5, 0, 505, 14047.2080078125}},
      {"without a size", {}, {}, {-252.5, 0, 505, 14047.2080078125}},
  };
  for (const auto& test : cases) {
    EXPECT_EQ(receiptFrame(test.usual, test.superview), test.receipt) << test.what;
  }
}

TEST(ReceiptLayoutTest, AfterwardsTheFrameIsTheOldOneUnlessItFollowsItsSuperview) {
  const Rect whole{0, 0, 1024, 768};
  const Rect resized{0, 0, 1920, 1080};
  const Rect below{0, 48, 1024, 720};
  EXPECT_EQ(frameAfterReceipt(whole, whole, whole), whole);
  EXPECT_EQ(frameAfterReceipt(below, whole, whole), below);
  EXPECT_EQ(frameAfterReceipt(whole, whole, resized), resized);
  EXPECT_EQ(frameAfterReceipt(below, whole, resized), below);
}

}  // namespace

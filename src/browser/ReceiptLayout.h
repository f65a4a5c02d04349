#pragma once

#include "platform/geometry.h"

namespace lumo {

// The page is laid out anew for its receipt: as wide as the roll and high enough for any receipt. The height
// is a single-precision value.
inline constexpr double kReceiptWidth = 505.0;
inline constexpr double kReceiptHeight = 14047.208F;

// The web view's frame while its page is a receipt: centred in `superview`, from the top of `usual` on.
platform::Rect receiptFrame(const platform::Rect& usual, const platform::Rect& superview);

// The web view's frame afterwards: `usual`, which it had when its superview had the size of `before`, or all
// of the superview as it is `now` where it covered it, since the window may have been resized meanwhile.
platform::Rect frameAfterReceipt(const platform::Rect& usual, const platform::Rect& before,
                                 const platform::Rect& now);

}  // namespace lumo

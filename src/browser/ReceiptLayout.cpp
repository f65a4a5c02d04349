#include "browser/ReceiptLayout.h"

namespace lumo {

using platform::Rect;

Rect receiptFrame(const Rect& usual, const Rect& superview) {
  return {(superview.width - kReceiptWidth) * 0.5, usual.y, kReceiptWidth, kReceiptHeight};
}

Rect frameAfterReceipt(const Rect& usual, const Rect& before, const Rect& now) {
  const bool covered = usual == Rect{0, 0, before.width, before.height};
  return covered ? Rect{0, 0, now.width, now.height} : usual;
}

}  // namespace lumo

#include "browser/WindowMode.h"

#include "platform/window.h"

namespace lumo {

FullScreenStep fullScreenStep(const std::optional<platform::Rect>& screen, const platform::Rect& window,
                              bool forced) {
  if (!screen) {
    return FullScreenStep::Nothing;
  }
  if (forced) {
    return FullScreenStep::CoverScreen;
  }
  return *screen == window ? FullScreenStep::Toggle : FullScreenStep::Nothing;
}

unsigned styleMaskWithFullSizeContent(unsigned mask, bool fullSize) {
  return fullSize ? mask | platform::kStyleMaskFullSizeContentView
                  : mask & ~platform::kStyleMaskFullSizeContentView;
}

}  // namespace lumo

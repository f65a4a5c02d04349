#pragma once

#include <optional>

#include "platform/geometry.h"

namespace lumo {

// What forcing the full screen, or no longer forcing it, means for the window. Forcing never uses the
// desktop's full-screen state: it makes the window as large as the first screen.
enum class FullScreenStep { Nothing, Toggle, CoverScreen };

// `screen` is the first screen's frame, absent when no screen is attached.
FullScreenStep fullScreenStep(const std::optional<platform::Rect>& screen, const platform::Rect& window,
                              bool forced);

// The style mask with the full-size content bit as wanted and all other bits as they are.
unsigned styleMaskWithFullSizeContent(unsigned mask, bool fullSize);

}  // namespace lumo

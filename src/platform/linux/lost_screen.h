#pragma once

#include <functional>

namespace platform {

// Runs `handler` once when the screen goes away, before the process ends with status 1; the toolkit would end
// it at once. The screen is the X server, or the Wayland compositor of a display that openWatchedScreen has
// opened. The handler must not touch anything that shows nor serve the main loop. Null: nothing runs. Main
// thread, after the toolkit has opened its display.
void setLostScreenHandler(std::function<void()> handler);

// Runs `open`, which makes the toolkit open its display, and watches that from then on. Returns what `open`
// returns: whether there is a display. Main thread, once.
bool openWatchedScreen(const std::function<bool()>& open);

}  // namespace platform

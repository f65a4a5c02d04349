#pragma once

#include <functional>

namespace platform {

// Runs `handler` once when the X server or the Wayland compositor goes away, before the process ends with
// status 1; the toolkit would end it at once. The handler must not touch anything that shows. Null: nothing
// runs. Main thread, after the toolkit has opened its display.
void setLostScreenHandler(std::function<void()> handler);

}  // namespace platform

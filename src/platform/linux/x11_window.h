#pragma once

#include <optional>

#include <gtk/gtk.h>

#include "platform/geometry.h"

// What GTK 4 has no call for and X11 does: a toplevel's place and whether it stays above others. On other
// displays, and for a window without a surface, these do nothing and answer nothing.
namespace platform {

bool isOnX11(GtkWindow* window);
// The top left corner of the window without its shadow, in logical pixels.
std::optional<Point> x11Position(GtkWindow* window);
void x11Move(GtkWindow* window, Point position);
// Asks the window manager for _NET_WM_STATE_ABOVE (Extended Window Manager Hints 1.5). Only a mapped window
// can be asked about, and a new mapping forgets it.
void x11SetAbove(GtkWindow* window, bool above);

}  // namespace platform

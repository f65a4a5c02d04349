#pragma once

typedef struct _GtkWindow GtkWindow;

namespace platform {

// Whether one of this program's windows is shown, or is the desktop's active one.
bool hasVisibleWindow();
bool hasActiveWindow();
// The one of them that is in front of the others, null when none is shown.
GtkWindow* frontmostWindow();

// Brings this program's visible windows to the front, with kActivateAllWindows all of them in their present
// order, else the frontmost alone, and gives that one the keyboard. Where the desktop knows no such request
// (Wayland) the windows are presented as it allows.
void bringWindowsToFront(unsigned options);

// Asks the window manager of the X11 display to bring the windows of another process to the front. False when
// there is no such display or window. Needs no initialised toolkit.
bool bringProcessToFront(int process, unsigned options);

}  // namespace platform

#pragma once

#include <gtk/gtk.h>

namespace platform {

class LinuxWindow;

// Connects the handlers that a window description names ("<signal name="clicked"
// handler="ibToolbarGoButton:"/>") to the actions of a window. The window is told after the builder has run,
// since it is made from what the builder made. The signals must have no argument besides their widget.
GtkBuilderScope* newActionScope();
void setActionScopeWindow(GtkBuilderScope* scope, LinuxWindow* window);

}  // namespace platform

#pragma once

typedef struct _GtkWidget GtkWidget;

namespace platform {

// Gives `toplevel` the actions "edit.cut", "edit.copy", "edit.paste" and "edit.select-all". They act on the
// text field or page that has the keyboard, or had it before the menu was opened.
void attachEditActions(GtkWidget* toplevel);

}  // namespace platform

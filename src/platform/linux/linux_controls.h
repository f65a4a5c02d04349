#pragma once

#include <memory>

#include <gtk/gtk.h>

#include "platform/linux/linux_view.h"

namespace platform {

// The view class that fits `widget`: a GtkButton is a Button, a GtkEditable or a GtkLabel a TextField, a box
// of the style class "segmented" a SegmentedControl, one of "lumo-settings-form" a SettingsForm, a GtkImage
// or GtkPicture an ImageView, a GtkProgressBar a ProgressIndicator, a LumoDropLayer a DropView, everything
// else a View.
std::unique_ptr<LinuxView> makeControl(Dispatch& dispatch, GtkWidget* widget);

// The control that a person used when `widget` was activated: the segmented control of a segment, which it
// then remembers, else the widget's own view.
View& senderOf(Dispatch& dispatch, GtkWidget* widget);

}  // namespace platform

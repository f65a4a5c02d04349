#pragma once

#include <optional>

#include <gtk/gtk.h>

#include "platform/geometry.h"
#include "platform/view.h"

G_BEGIN_DECLS
#define LUMO_TYPE_LAYER_BIN (lumo_layer_bin_get_type())
G_DECLARE_FINAL_TYPE(LumoLayerBin, lumo_layer_bin, LUMO, LAYER_BIN, GtkWidget)
G_END_DECLS

namespace platform {

// What a LayerBin does with its child: it gives it a frame of its own inside the bin's space, turns it about
// an anchor point and draws a colour behind it. Input follows, since the child is allocated through the
// transform.
struct LayerState {
  // In the bin's coordinates; absent: the child fills the bin.
  std::optional<Rect> frame;
  Point anchor{0.5, 0.5};
  // How far the anchor point lies from its place in the frame.
  Point offset;
  // How far from its frame the child is drawn while a motion runs. No part of the frame.
  Point motion;
  // Radians, positive counter-clockwise.
  double rotation = 0;
  std::optional<Color> background;
};

// A bin whose size request is its child's, or nothing at all when it is free (for views that fill whatever
// there is).
GtkWidget* newLayerBin(bool isFree);
bool isFreeLayerBin(LumoLayerBin* bin);
GtkWidget* layerBinChild(LumoLayerBin* bin);
void setLayerBinChild(LumoLayerBin* bin, GtkWidget* child);
const LayerState& layerState(LumoLayerBin* bin);
void setLayerState(LumoLayerBin* bin, const LayerState& state);

}  // namespace platform

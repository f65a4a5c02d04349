#include "platform/linux/linux_overlay.h"

#include "platform/linux/linux_view.h"
#include "platform/linux/linux_window.h"

namespace platform {

LinuxOverlay::LinuxOverlay(Dispatch& dispatch, LinuxWindow& window, GtkWidget* content)
    : dispatch_(dispatch), window_(window), content_(content) {
  markContentView(content_);
  contentView().setHidden(true);
}

LinuxOverlay::~LinuxOverlay() {
  g_clear_object(&focusBefore_);
}

GtkWidget* LinuxOverlay::below() const {
  GtkWidget* bin = gtk_widget_get_parent(content_);
  GtkWidget* parent = bin == nullptr ? nullptr : gtk_widget_get_parent(bin);
  return parent != nullptr && GTK_IS_OVERLAY(parent) ? gtk_overlay_get_child(GTK_OVERLAY(parent)) : nullptr;
}

LayerState LinuxOverlay::layer() const {
  GtkWidget* parent = gtk_widget_get_parent(content_);
  return LUMO_IS_LAYER_BIN(parent) ? layerState(LUMO_LAYER_BIN(parent)) : LayerState{};
}

void LinuxOverlay::setLayer(const LayerState& state) {
  GtkWidget* parent = gtk_widget_get_parent(content_);
  if (LUMO_IS_LAYER_BIN(parent)) {
    setLayerState(LUMO_LAYER_BIN(parent), state);
  }
}

void LinuxOverlay::beginAlert(const Alert& alert, AlertCompletion completion) {
  window_.host()->enqueueAlert(this, alert, std::move(completion));
}

void LinuxOverlay::setFrame(const Rect& frame) {
  frame_ = frame;
  const Rect window = window_.frame();
  LayerState state = layer();
  state.frame.reset();
  if (frame != window) {
    state.frame = Rect{frame.x - window.x, frame.y - window.y, frame.width, frame.height};
  }
  setLayer(state);
}

void LinuxOverlay::setOpaque(bool opaque) {
  if (opaque) {
    gtk_widget_add_css_class(content_, "background");
  } else {
    gtk_widget_remove_css_class(content_, "background");
  }
}

void LinuxOverlay::setBackgroundColor(std::optional<Color> color) {
  LayerState state = layer();
  state.background = color;
  setLayer(state);
}

void LinuxOverlay::setAlphaValue(double alpha) {
  gtk_widget_set_opacity(content_, alpha);
}

View& LinuxOverlay::contentView() {
  return *LinuxView::of(dispatch_, content_);
}

bool LinuxOverlay::isVisible() const {
  return gtk_widget_get_visible(content_) != FALSE && window_.isVisible();
}

void LinuxOverlay::orderFrontRegardless() {
  GtkWidget* page = below();
  if (contentView().isHidden() && page != nullptr) {
    // The layer itself takes the clicks only; keys would still go to whatever has the focus below.
    GtkWidget* focus = window_.host() == nullptr ? nullptr : window_.host()->focusBelow();
    const bool isBelow = focus != nullptr && gtk_widget_is_ancestor(focus, page) != FALSE;
    focusBefore_ = isBelow ? GTK_WIDGET(g_object_ref(focus)) : nullptr;
    gtk_widget_set_sensitive(page, FALSE);
  }
  contentView().setHidden(false);
}

void LinuxOverlay::orderOut() {
  GtkWidget* page = below();
  if (!contentView().isHidden() && page != nullptr) {
    gtk_widget_set_sensitive(page, TRUE);
    if (focusBefore_ != nullptr && window_.host() != nullptr &&
        gtk_widget_is_ancestor(focusBefore_, page) != FALSE) {
      window_.host()->setFocusBelow(focusBefore_);
    }
    g_clear_object(&focusBefore_);
  }
  contentView().setHidden(true);
}

}  // namespace platform

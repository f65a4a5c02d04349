#include "platform/linux/linux_view.h"

#include <algorithm>
#include <charconv>
#include <cstring>

#include "platform/linux/linux_controls.h"
#include "platform/log.h"

namespace platform {

namespace {

GQuark viewQuark() {
  return g_quark_from_static_string("lumo-view");
}
GQuark windowQuark() {
  return g_quark_from_static_string("lumo-window");
}
GQuark contentQuark() {
  return g_quark_from_static_string("lumo-content-view");
}

void deleteView(gpointer view) {
  delete static_cast<LinuxView*>(view);
}

bool isContentView(GtkWidget* widget) {
  return g_object_get_qdata(G_OBJECT(widget), contentQuark()) != nullptr;
}

// What its container has given to `widget`, margins included, as `within` sees it.
Rect placeOf(GtkWidget* widget, GtkWidget* within) {
  graphene_rect_t bounds;
  if (within == nullptr || !gtk_widget_compute_bounds(widget, within, &bounds)) {
    return {};
  }
  const int start = gtk_widget_get_margin_start(widget);
  const int top = gtk_widget_get_margin_top(widget);
  return {bounds.origin.x - start, bounds.origin.y - top,
          bounds.size.width + start + gtk_widget_get_margin_end(widget),
          bounds.size.height + top + gtk_widget_get_margin_bottom(widget)};
}

// A GtkBox keeps no data for each child, so a bin can take a child's place.
LumoLayerBin* wrapInBin(GtkWidget* widget) {
  GtkWidget* parent = gtk_widget_get_parent(widget);
  if (!GTK_IS_BOX(parent)) {
    return nullptr;
  }
  const Rect place = placeOf(widget, parent);
  GtkWidget* before = gtk_widget_get_prev_sibling(widget);
  GtkWidget* bin = newLayerBin(false);
  gtk_widget_set_hexpand(bin, gtk_widget_compute_expand(widget, GTK_ORIENTATION_HORIZONTAL));
  gtk_widget_set_vexpand(bin, gtk_widget_compute_expand(widget, GTK_ORIENTATION_VERTICAL));
  gtk_widget_set_halign(bin, gtk_widget_get_halign(widget));
  gtk_widget_set_valign(bin, gtk_widget_get_valign(widget));
  gtk_widget_set_visible(bin, gtk_widget_get_visible(widget));
  GtkRoot* root = gtk_widget_get_root(widget);
  GtkWidget* focus = root == nullptr ? nullptr : gtk_root_get_focus(root);
  const bool hadFocus = focus != nullptr && (focus == widget || gtk_widget_is_ancestor(focus, widget));
  g_object_ref(widget);
  gtk_box_remove(GTK_BOX(parent), widget);
  gtk_box_insert_child_after(GTK_BOX(parent), bin, before);
  setLayerBinChild(LUMO_LAYER_BIN(bin), widget);
  g_object_unref(widget);
  if (place.width > 0) {
    // Its frame is asked for before the next layout.
    const graphene_point_t corner{static_cast<float>(place.x), static_cast<float>(place.y)};
    gtk_widget_measure(bin, GTK_ORIENTATION_HORIZONTAL, -1, nullptr, nullptr, nullptr, nullptr);
    gtk_widget_allocate(bin, static_cast<int>(place.width), static_cast<int>(place.height), -1,
                        gsk_transform_translate(nullptr, &corner));
  }
  if (hadFocus) {
    gtk_root_set_focus(root, focus);
  }
  return LUMO_LAYER_BIN(bin);
}

}  // namespace

void setWindowOf(GtkWidget* widget, Window* window) {
  g_object_set_qdata(G_OBJECT(widget), windowQuark(), window);
}

Window* windowOf(GtkWidget* widget) {
  for (; widget != nullptr; widget = gtk_widget_get_parent(widget)) {
    if (gpointer window = g_object_get_qdata(G_OBJECT(widget), windowQuark())) {
      return static_cast<Window*>(window);
    }
  }
  return nullptr;
}

void markContentView(GtkWidget* widget) {
  g_object_set_qdata(G_OBJECT(widget), contentQuark(), GINT_TO_POINTER(1));
}

LinuxView::LinuxView(Dispatch& dispatch, GtkWidget* widget)
    : dispatch_(dispatch), widget_(widget), alive_(std::make_shared<int>(0)) {
  // A view that its widget owns must not keep the widget alive; one that somebody else owns holds its own
  // reference.
  g_object_add_weak_pointer(G_OBJECT(widget_), reinterpret_cast<gpointer*>(&widget_));
}

LinuxView::~LinuxView() {
  if (widget_ != nullptr) {
    if (tickId_ != 0) {
      gtk_widget_remove_tick_callback(widget_, tickId_);
    }
    g_object_remove_weak_pointer(G_OBJECT(widget_), reinterpret_cast<gpointer*>(&widget_));
    if (existing(widget_) == this) {
      g_object_steal_qdata(G_OBJECT(widget_), viewQuark());
    }
  }
}

View* LinuxView::of(Dispatch& dispatch, GtkWidget* widget) {
  if (LinuxView* view = existing(widget)) {
    return view;
  }
  LinuxView* view = makeControl(dispatch, widget).release();
  attachOwned(widget, view);
  return view;
}

LinuxView* LinuxView::existing(GtkWidget* widget) {
  return static_cast<LinuxView*>(g_object_get_qdata(G_OBJECT(widget), viewQuark()));
}

void LinuxView::attach(GtkWidget* widget, LinuxView* view) {
  g_object_set_qdata(G_OBJECT(widget), viewQuark(), view);
}

LumoLayerBin* LinuxView::bin() const {
  GtkWidget* parent = gtk_widget_get_parent(widget_);
  return parent != nullptr && LUMO_IS_LAYER_BIN(parent) ? LUMO_LAYER_BIN(parent) : nullptr;
}

std::optional<std::string> LinuxView::identifier() const {
  // GTK answers the class name where no name was given.
  const char* name = gtk_widget_get_name(widget_);
  if (name == nullptr || std::strcmp(name, G_OBJECT_TYPE_NAME(widget_)) == 0) {
    return std::nullopt;
  }
  return name;
}

std::optional<int> LinuxView::tag() const {
  // Tags are written as a style class, "tag-101": the one free-form list that every widget has.
  char** classes = gtk_widget_get_css_classes(widget_);
  std::optional<int> tag;
  for (char** entry = classes; *entry != nullptr && !tag; ++entry) {
    int number = 0;
    if (g_str_has_prefix(*entry, "tag-")) {
      const char* end = *entry + std::strlen(*entry);
      if (std::from_chars(*entry + 4, end, number).ptr == end) {
        tag = number;
      }
    }
  }
  g_strfreev(classes);
  return tag;
}

View* LinuxView::superview() const {
  if (isContentView(widget_)) {
    return nullptr;
  }
  GtkWidget* parent = gtk_widget_get_parent(widget_);
  while (parent != nullptr && LUMO_IS_LAYER_BIN(parent)) {
    parent = gtk_widget_get_parent(parent);
  }
  return parent == nullptr ? nullptr : of(dispatch_, parent);
}

std::vector<View*> LinuxView::subviews() const {
  std::vector<View*> views;
  if (kind() != ViewKind::View) {
    return views;  // A control's inner widgets are its own affair.
  }
  for (GtkWidget* child = gtk_widget_get_first_child(widget_); child != nullptr;
       child = gtk_widget_get_next_sibling(child)) {
    GtkWidget* shown = child;
    while (shown != nullptr && LUMO_IS_LAYER_BIN(shown)) {
      shown = layerBinChild(LUMO_LAYER_BIN(shown));
    }
    if (shown != nullptr) {
      views.push_back(of(dispatch_, shown));
    }
  }
  return views;
}

void LinuxView::addSubviewAbove(View& view, View* sibling) {
  auto* added = dynamic_cast<LinuxView*>(&view);
  if (added == nullptr || !GTK_IS_OVERLAY(widget_)) {
    NSLog("%@ takes no subview %@", description(*this), description(view));
    return;
  }
  const Rect frame = added->frame();
  const LayerState state = added->layer();
  g_object_ref(added->widget());
  added->leaveSuperview();
  GtkWidget* bin = newLayerBin(true);
  setLayerBinChild(LUMO_LAYER_BIN(bin), added->widget());
  g_object_unref(added->widget());
  gtk_overlay_add_overlay(GTK_OVERLAY(widget_), bin);
  gtk_widget_set_visible(bin, gtk_widget_get_visible(added->widget()));
  auto* below = dynamic_cast<LinuxView*>(sibling);
  if (below != nullptr && below->superview() == static_cast<View*>(this)) {
    GtkWidget* belowBin = below->widget();
    while (gtk_widget_get_parent(belowBin) != widget_) {
      belowBin = gtk_widget_get_parent(belowBin);
    }
    gtk_widget_insert_after(bin, widget_, belowBin);
  }
  added->setLayer(state);
  added->setFrame(frame);
}

void LinuxView::leaveSuperview() {
  GtkWidget* parent = gtk_widget_get_parent(widget_);
  if (parent == nullptr) {
    return;
  }
  if (!LUMO_IS_LAYER_BIN(parent)) {
    gtk_widget_unparent(widget_);
    return;
  }
  GtkWidget* outer = gtk_widget_get_parent(parent);
  setLayerBinChild(LUMO_LAYER_BIN(parent), nullptr);
  if (outer != nullptr && GTK_IS_OVERLAY(outer)) {
    if (gtk_overlay_get_child(GTK_OVERLAY(outer)) == parent) {
      gtk_overlay_set_child(GTK_OVERLAY(outer), nullptr);
    } else {
      gtk_overlay_remove_overlay(GTK_OVERLAY(outer), parent);
    }
  } else if (outer != nullptr && GTK_IS_BOX(outer)) {
    gtk_box_remove(GTK_BOX(outer), parent);
  }
}

void LinuxView::attachOwned(GtkWidget* widget, LinuxView* view) {
  g_object_set_qdata_full(G_OBJECT(widget), viewQuark(), view, deleteView);
}

Window* LinuxView::window() const {
  return windowOf(widget_);
}

Rect LinuxView::boundsOfSuperview() const {
  auto* above = dynamic_cast<LinuxView*>(superview());
  GtkWidget* holder = above != nullptr ? above->widget() : gtk_widget_get_parent(widget_);
  if (holder == nullptr) {
    return {};
  }
  return {0, 0, static_cast<double>(gtk_widget_get_width(holder)),
          static_cast<double>(gtk_widget_get_height(holder))};
}

LayerState LinuxView::layer() const {
  LumoLayerBin* layerBin = bin();
  return layerBin == nullptr ? LayerState{} : layerState(layerBin);
}

void LinuxView::setLayer(const LayerState& state) {
  LumoLayerBin* layerBin = bin() != nullptr ? bin() : wrapInBin(widget_);
  if (layerBin != nullptr) {
    setLayerState(layerBin, state);
  } else {
    NSLog("%@ is placed by its container; its frame cannot be set", description(*this));
  }
}

Rect LinuxView::frame() const {
  if (gtk_widget_get_parent(widget_) == nullptr) {
    return looseFrame_;
  }
  const Rect whole = place();
  const LayerState state = layer();
  const Rect inner = state.frame.value_or(Rect{0, 0, whole.width, whole.height});
  return {inner.x + whole.x + state.offset.x, inner.y + whole.y + state.offset.y, inner.width, inner.height};
}

Rect LinuxView::place() const {
  LumoLayerBin* layerBin = bin();
  auto* above = dynamic_cast<LinuxView*>(superview());
  GtkWidget* within = above != nullptr ? above->widget() : gtk_widget_get_parent(widget_);
  if (layerBin == nullptr) {
    return placeOf(widget_, within);
  }
  const Rect place = placeOf(GTK_WIDGET(layerBin), within);
  const bool laidOut = place.width > 0 || place.height > 0;
  return laidOut || !isFreeLayerBin(layerBin) ? place : boundsOfSuperview();
}

void LinuxView::setFrame(const Rect& frame) {
  frameMotion_.reset();
  const Rect wanted{frame.x, frame.y, std::max(0.0, frame.width), std::max(0.0, frame.height)};
  if (gtk_widget_get_parent(widget_) == nullptr) {
    looseFrame_ = wanted;
    return;
  }
  LayerState state = layer();
  const Rect whole = place();
  const Rect inPlace{wanted.x - whole.x, wanted.y - whole.y, wanted.width, wanted.height};
  const bool nothingYet = whole == Rect{} && wanted.width == 0 && wanted.height == 0;
  // A view that is where its container puts it follows the container, and so one that covers its superview
  // follows that. Before the first layout there is nothing to compare with: what has no size follows.
  state.frame = wanted == whole || nothingYet ? std::nullopt : std::optional(inPlace);
  state.offset = {};
  state.motion = {};
  setLayer(state);
}

bool LinuxView::isHidden() const {
  return !gtk_widget_get_visible(widget_);
}

void LinuxView::setHidden(bool hidden) {
  gtk_widget_set_visible(widget_, !hidden);
  GtkWidget* parent = gtk_widget_get_parent(widget_);
  // A bin that fills its place would otherwise catch the clicks that belong below.
  if (parent != nullptr && LUMO_IS_LAYER_BIN(parent)) {
    gtk_widget_set_visible(parent, !hidden);
  }
}

void LinuxView::setOpacity(double opacity) {
  opacityMotion_.reset();
  opacity_ = std::clamp(opacity, 0.0, 1.0);
  gtk_widget_set_opacity(widget_, opacity_);
}

std::optional<Color> LinuxView::backgroundColor() const {
  return layer().background;
}

void LinuxView::setBackgroundColor(std::optional<Color> color) {
  LayerState state = layer();
  state.background = color;
  setLayer(state);
}

Point LinuxView::anchorPoint() const {
  return layer().anchor;
}

void LinuxView::setLayerAnchorPoint(Point unit) {
  LayerState state = layer();
  const Rect present = frame();
  // The position stays where it is, so the view moves by the difference of the anchor points.
  state.offset.x += (state.anchor.x - unit.x) * present.width;
  state.offset.y += (state.anchor.y - unit.y) * present.height;
  state.anchor = unit;
  setLayer(state);
}

Point LinuxView::layerPosition() const {
  const Rect present = frame();
  const Point anchor = layer().anchor;
  return {present.x + anchor.x * present.width, present.y + anchor.y * present.height};
}

void LinuxView::setLayerPosition(Point position) {
  LayerState state = layer();
  const Point present = layerPosition();
  state.offset.x += position.x - present.x;
  state.offset.y += position.y - present.y;
  setLayer(state);
}

void LinuxView::setRotation(double radians) {
  rotation_ = radians;
  showRotation();
}

}  // namespace platform

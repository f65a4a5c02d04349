#include "platform/linux/layer_bin.h"

#include <algorithm>
#include <cmath>
#include <numbers>

struct _LumoLayerBin {
  GtkWidget parent_instance;
  GtkWidget* child;
  gboolean isFree;
  // As it was allocated last.
  int childWidth;
  int childHeight;
  platform::LayerState* state;
};

static GtkBuildableIface* parentBuildable;
static void buildableInit(GtkBuildableIface* iface);

G_DEFINE_FINAL_TYPE_WITH_CODE(LumoLayerBin, lumo_layer_bin, GTK_TYPE_WIDGET,
                              G_IMPLEMENT_INTERFACE(GTK_TYPE_BUILDABLE, buildableInit))

enum { PROP_CHILD = 1, PROP_FREE };

static void addBuilderChild(GtkBuildable* buildable, GtkBuilder* builder, GObject* child, const char* type) {
  if (GTK_IS_WIDGET(child)) {
    platform::setLayerBinChild(LUMO_LAYER_BIN(buildable), GTK_WIDGET(child));
  } else {
    parentBuildable->add_child(buildable, builder, child, type);
  }
}

static void buildableInit(GtkBuildableIface* iface) {
  parentBuildable = static_cast<GtkBuildableIface*>(g_type_interface_peek_parent(iface));
  iface->add_child = addBuilderChild;
}

static platform::Rect childFrame(LumoLayerBin* bin, int width, int height) {
  if (bin->state->frame) {
    return *bin->state->frame;
  }
  return {0, 0, static_cast<double>(width), static_cast<double>(height)};
}

static void layerBinMeasure(GtkWidget* widget, GtkOrientation orientation, int forSize, int* minimum,
                            int* natural, int* minimumBaseline, int* naturalBaseline) {
  LumoLayerBin* bin = LUMO_LAYER_BIN(widget);
  if (bin->child == nullptr) {
    return;
  }
  // A child must be measured before it is allocated, also where its size request does not count.
  gtk_widget_measure(bin->child, orientation, forSize, minimum, natural, minimumBaseline, naturalBaseline);
  if (bin->isFree) {
    *minimum = 0;
    *natural = 0;
    *minimumBaseline = -1;
    *naturalBaseline = -1;
  }
}

// Where the child's corner lies in the bin, turned about its anchor point.
static GskTransform* childTransform(LumoLayerBin* bin, int width, int height) {
  const platform::Rect frame = childFrame(bin, width, height);
  const platform::LayerState& state = *bin->state;
  const auto anchorX = static_cast<float>(state.anchor.x * frame.width);
  const auto anchorY = static_cast<float>(state.anchor.y * frame.height);
  const auto x = static_cast<float>(frame.x + state.offset.x + state.motion.x);
  const auto y = static_cast<float>(frame.y + state.offset.y + state.motion.y);
  const graphene_point_t toAnchor{x + anchorX, y + anchorY};
  GskTransform* transform = gsk_transform_translate(nullptr, &toAnchor);
  if (state.rotation != 0) {
    // GSK counts clockwise degrees.
    transform = gsk_transform_rotate(transform, static_cast<float>(-state.rotation * 180 / std::numbers::pi));
  }
  const graphene_point_t back{-anchorX, -anchorY};
  return gsk_transform_translate(transform, &back);
}

static void layerBinAllocate(GtkWidget* widget, int width, int height, int /*baseline*/) {
  LumoLayerBin* bin = LUMO_LAYER_BIN(widget);
  if (bin->child == nullptr) {
    return;
  }
  const platform::Rect frame = childFrame(bin, width, height);
  int minimumWidth = 0;
  int minimumHeight = 0;
  gtk_widget_measure(bin->child, GTK_ORIENTATION_HORIZONTAL, -1, &minimumWidth, nullptr, nullptr, nullptr);
  bin->childWidth = std::max(minimumWidth, static_cast<int>(std::floor(frame.width)));
  gtk_widget_measure(bin->child, GTK_ORIENTATION_VERTICAL, bin->childWidth, &minimumHeight, nullptr, nullptr,
                     nullptr);
  bin->childHeight = std::max(minimumHeight, static_cast<int>(std::floor(frame.height)));
  // The transform belongs here and not into the drawing: only then do clicks follow it.
  gtk_widget_allocate(bin->child, bin->childWidth, bin->childHeight, -1, childTransform(bin, width, height));
}

// The colour turns and fades with the child.
static void drawBackground(LumoLayerBin* bin, GtkSnapshot* snapshot) {
  const platform::Color& color = *bin->state->background;
  const GdkRGBA rgba{static_cast<float>(color.red), static_cast<float>(color.green),
                     static_cast<float>(color.blue),
                     static_cast<float>(color.alpha * gtk_widget_get_opacity(bin->child))};
  const graphene_rect_t bounds{{0, 0},
                               {static_cast<float>(bin->childWidth), static_cast<float>(bin->childHeight)}};
  gtk_snapshot_save(snapshot);
  gtk_snapshot_transform(snapshot, childTransform(bin, gtk_widget_get_width(GTK_WIDGET(bin)),
                                                  gtk_widget_get_height(GTK_WIDGET(bin))));
  gtk_snapshot_append_color(snapshot, &rgba, &bounds);
  gtk_snapshot_restore(snapshot);
}

static void layerBinSnapshot(GtkWidget* widget, GtkSnapshot* snapshot) {
  LumoLayerBin* bin = LUMO_LAYER_BIN(widget);
  if (bin->child != nullptr) {
    if (bin->state->background && gtk_widget_get_child_visible(bin->child)) {
      drawBackground(bin, snapshot);
    }
    gtk_widget_snapshot_child(widget, bin->child, snapshot);
  }
}

// Where the child is not, clicks belong to what lies below.
static gboolean layerBinContains(GtkWidget* /*widget*/, double /*x*/, double /*y*/) {
  return FALSE;
}

static void layerBinSetProperty(GObject* object, guint id, const GValue* value, GParamSpec* spec) {
  LumoLayerBin* bin = LUMO_LAYER_BIN(object);
  if (id == PROP_CHILD) {
    platform::setLayerBinChild(bin, GTK_WIDGET(g_value_get_object(value)));
  } else if (id == PROP_FREE) {
    bin->isFree = g_value_get_boolean(value);
    gtk_widget_queue_resize(GTK_WIDGET(bin));
  } else {
    G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, spec);
  }
}

static void layerBinGetProperty(GObject* object, guint id, GValue* value, GParamSpec* spec) {
  LumoLayerBin* bin = LUMO_LAYER_BIN(object);
  if (id == PROP_CHILD) {
    g_value_set_object(value, bin->child);
  } else if (id == PROP_FREE) {
    g_value_set_boolean(value, bin->isFree);
  } else {
    G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, spec);
  }
}

static void layerBinDispose(GObject* object) {
  LumoLayerBin* bin = LUMO_LAYER_BIN(object);
  g_clear_pointer(&bin->child, gtk_widget_unparent);
  G_OBJECT_CLASS(lumo_layer_bin_parent_class)->dispose(object);
}

static void layerBinFinalize(GObject* object) {
  delete LUMO_LAYER_BIN(object)->state;
  G_OBJECT_CLASS(lumo_layer_bin_parent_class)->finalize(object);
}

static void lumo_layer_bin_class_init(LumoLayerBinClass* klass) {
  GtkWidgetClass* widgetClass = GTK_WIDGET_CLASS(klass);
  widgetClass->measure = layerBinMeasure;
  widgetClass->size_allocate = layerBinAllocate;
  widgetClass->snapshot = layerBinSnapshot;
  widgetClass->contains = layerBinContains;
  GObjectClass* objectClass = G_OBJECT_CLASS(klass);
  objectClass->set_property = layerBinSetProperty;
  objectClass->get_property = layerBinGetProperty;
  objectClass->dispose = layerBinDispose;
  objectClass->finalize = layerBinFinalize;
  const auto flags = static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS);
  g_object_class_install_property(objectClass, PROP_CHILD,
                                  g_param_spec_object("child", nullptr, nullptr, GTK_TYPE_WIDGET, flags));
  g_object_class_install_property(objectClass, PROP_FREE,
                                  g_param_spec_boolean("free", nullptr, nullptr, FALSE, flags));
  gtk_widget_class_set_css_name(widgetClass, "layer");
  gtk_widget_class_set_accessible_role(widgetClass, GTK_ACCESSIBLE_ROLE_GROUP);
}

static void lumo_layer_bin_init(LumoLayerBin* bin) {
  bin->state = new platform::LayerState;
}

namespace platform {

GtkWidget* newLayerBin(bool isFree) {
  return GTK_WIDGET(g_object_new(LUMO_TYPE_LAYER_BIN, "free", static_cast<gboolean>(isFree), nullptr));
}

bool isFreeLayerBin(LumoLayerBin* bin) {
  return bin->isFree != FALSE;
}

GtkWidget* layerBinChild(LumoLayerBin* bin) {
  return bin->child;
}

void setLayerBinChild(LumoLayerBin* bin, GtkWidget* child) {
  if (bin->child == child) {
    return;
  }
  g_clear_pointer(&bin->child, gtk_widget_unparent);
  bin->child = child;
  if (child != nullptr) {
    gtk_widget_set_parent(child, GTK_WIDGET(bin));
  }
}

const LayerState& layerState(LumoLayerBin* bin) {
  return *bin->state;
}

void setLayerState(LumoLayerBin* bin, const LayerState& state) {
  const bool colorOnly = bin->state->frame == state.frame && bin->state->anchor == state.anchor &&
                         bin->state->offset == state.offset && bin->state->motion == state.motion &&
                         bin->state->rotation == state.rotation;
  *bin->state = state;
  if (colorOnly) {
    gtk_widget_queue_draw(GTK_WIDGET(bin));
  } else {
    gtk_widget_queue_allocate(GTK_WIDGET(bin));
  }
}

}  // namespace platform

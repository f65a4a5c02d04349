#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtk/gtk.h>

#include "platform/linux/layer_bin.h"
#include "platform/view.h"

namespace platform {

// A widget as a view. Frames, turns and colours act through the LayerBin around the widget; a widget that
// stands in a plain box gets its bin when something is first set, one whose container has no place for a bin
// keeps the layout's frame, with a line in the log. A widget that stands nowhere yet keeps its frame for the
// view that it is put into.
class LinuxView : public virtual View {
 public:
  // Holds no reference: the widget owns its view, or the owner of both does.
  LinuxView(Dispatch& dispatch, GtkWidget* widget);
  ~LinuxView() override;
  LinuxView(const LinuxView&) = delete;
  LinuxView& operator=(const LinuxView&) = delete;

  // The view of `widget`, made on first use as the widget's kind demands and owned by the widget.
  static View* of(Dispatch& dispatch, GtkWidget* widget);
  // The view that was already made for `widget`, or null.
  static LinuxView* existing(GtkWidget* widget);
  // Marks `view` as the one of `widget`, which does not own it, or does.
  static void attach(GtkWidget* widget, LinuxView* view);
  static void attachOwned(GtkWidget* widget, LinuxView* view);

  GtkWidget* widget() const { return widget_; }
  Dispatch& dispatch() const { return dispatch_; }

  ViewKind kind() const override { return ViewKind::View; }
  std::weak_ptr<void> lifetime() const override { return alive_; }
  std::optional<std::string> identifier() const override;
  std::optional<int> tag() const override;
  View* superview() const override;
  std::vector<View*> subviews() const override;
  void addSubviewAbove(View& view, View* sibling) override;
  Window* window() const override;
  Rect frame() const override;
  void setFrame(const Rect& frame) override;
  bool isHidden() const override;
  void setHidden(bool hidden) override;
  double opacity() const override { return opacity_; }
  void setOpacity(double opacity) override;
  std::optional<Color> backgroundColor() const override;
  void setBackgroundColor(std::optional<Color> color) override;
  Point anchorPoint() const override;
  void setLayerAnchorPoint(Point unit) override;
  Point layerPosition() const override;
  void setLayerPosition(Point position) override;
  double rotation() const override { return rotation_; }
  void setRotation(double radians) override;
  void animateFrame(const Rect& frame, Millis duration, Block completion) override;
  void animateOpacity(double opacity, Millis duration, Block completion) override;
  void addAnimation(const RotationAnimation& animation, const std::string& key,
                    std::function<void(bool)> stopped) override;
  void removeAnimation(const std::string& key) override;
  std::vector<std::string> animationKeys() const override;

  // Out of the view that holds this one, which goes on without it.
  void leaveSuperview();

 private:
  struct Motion;
  struct Turn;

  // The bin around the widget, or null when it has none (yet).
  LumoLayerBin* bin() const;
  LayerState layer() const;
  void setLayer(const LayerState& state);
  void startTicking();
  bool tick(gint64 frameTime);
  void showRotation();
  // What the container gives the widget, in the superview's coordinates; empty before the first layout.
  Rect place() const;
  Rect boundsOfSuperview() const;

  Dispatch& dispatch_;
  GtkWidget* widget_;
  std::shared_ptr<void> alive_;
  // The frame of a view that stands nowhere yet.
  Rect looseFrame_;
  double opacity_ = 1;
  double rotation_ = 0;
  guint tickId_ = 0;
  std::shared_ptr<Motion> frameMotion_;
  std::shared_ptr<Motion> opacityMotion_;
  std::vector<std::pair<std::string, std::shared_ptr<Turn>>> turns_;
};

// Names the window that owns the toplevel or sheet root `widget`, so that its views find it.
void setWindowOf(GtkWidget* widget, Window* window);
Window* windowOf(GtkWidget* widget);
// Marks `widget` as a window's content view: the end of every superview chain.
void markContentView(GtkWidget* widget);

}  // namespace platform

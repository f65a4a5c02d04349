#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/geometry.h"
#include "platform/queue.h"

namespace platform {

class Window;

enum class ViewKind {
  View,
  Button,
  TextField,
  SegmentedControl,
  ImageView,
  ProgressIndicator,
  SettingsForm,
  WebView
};

std::string description(ViewKind kind);

struct Color {
  double red = 0;
  double green = 0;
  double blue = 0;
  double alpha = 1;
  bool operator==(const Color&) const = default;
};

// A linear turn of a view about its anchor point. Angles are radians, positive counter-clockwise as seen on
// screen.
struct RotationAnimation {
  double from = 0;
  double to = 0;
  Millis duration{0};
  bool forever = false;
};

// A rectangle of a window that can be moved, faded, turned and hidden. Main queue only. A view that came with
// a window description lives as long as its window; the window owns it.
class View {
 public:
  virtual ~View() = default;

  virtual ViewKind kind() const = 0;
  // Expires with the view, so that a timer that outlives it can tell.
  virtual std::weak_ptr<void> lifetime() const = 0;
  // Every view is of the kind View; a control is also of its own kind.
  bool isKindOf(ViewKind wanted) const { return wanted == ViewKind::View || wanted == kind(); }
  // The name given in the window description; absent when it has none.
  virtual std::optional<std::string> identifier() const = 0;
  // The number given in the window description; absent when it has none.
  virtual std::optional<int> tag() const = 0;

  // The view that holds this one; null for a window's content view and for a view in no window.
  virtual View* superview() const = 0;
  // The direct subviews, the lowest first.
  virtual std::vector<View*> subviews() const = 0;
  // Puts `view` (not owned; it must outlive its stay) into this one, directly above `sibling`, or on top when
  // that is null or elsewhere. Its frame is kept.
  virtual void addSubviewAbove(View& view, View* sibling) = 0;
  // The window that shows the view, or null.
  virtual Window* window() const = 0;

  // In the superview's coordinates. A frame that covers the superview exactly follows it when it is resized;
  // any other stays as it was set. A width or height below zero counts as zero.
  virtual Rect frame() const = 0;
  virtual void setFrame(const Rect& frame) = 0;
  virtual bool isHidden() const = 0;
  virtual void setHidden(bool hidden) = 0;
  // 0.0 (invisible) to 1.0; values outside are brought to the nearer end.
  virtual double opacity() const = 0;
  virtual void setOpacity(double opacity) = 0;
  // The colour behind the view's content; absent for none (transparent).
  virtual std::optional<Color> backgroundColor() const = 0;
  virtual void setBackgroundColor(std::optional<Color> color) = 0;

  // The layer: the point about which the view turns, as a fraction of its size ((0, 0) top left, (0.5, 0.5)
  // the centre), and where that point lies in the superview. Changing one alone moves the view.
  virtual Point anchorPoint() const = 0;
  virtual void setLayerAnchorPoint(Point unit) = 0;
  virtual Point layerPosition() const = 0;
  virtual void setLayerPosition(Point position) = 0;
  // The layer's present turn without running animations.
  virtual double rotation() const = 0;
  virtual void setRotation(double radians) = 0;

  // Moves or fades to the given value over `duration`; the value reads as the new one at once. `completion`
  // (may be empty) runs on the main queue when the time is over, also when the view is not on screen. A newer
  // change of the same kind replaces the motion of an older one, whose completion still runs at its time.
  virtual void animateFrame(const Rect& frame, Millis duration, Block completion) = 0;
  virtual void animateOpacity(double opacity, Millis duration, Block completion) = 0;
  // Starts a turn under `key`, replacing one of the same key. `stopped` (may be empty) gets true on the main
  // queue when it has run to its end and false when it was removed before.
  virtual void addAnimation(const RotationAnimation& animation, const std::string& key,
                            std::function<void(bool finished)> stopped) = 0;
  virtual void removeAnimation(const std::string& key) = 0;
  virtual std::vector<std::string> animationKeys() const = 0;
};

// "<Kind identifier>", the text that "%@" prints for a view.
std::string description(const View& view);
std::string description(const std::vector<View*>& views);

class TextField : public virtual View {
 public:
  virtual std::string stringValue() const = 0;
  virtual void setStringValue(const std::string& text) = 0;
};

class Button : public virtual View {
 public:
  virtual std::string title() const = 0;
  virtual void setTitle(const std::string& title) = 0;
  virtual bool isEnabled() const = 0;
  virtual void setEnabled(bool enabled) = 0;
};

class SegmentedControl : public virtual View {
 public:
  // The segment that was pressed last, from 0; -1 when none was.
  virtual int selectedSegment() const = 0;
};

class ImageView : public virtual View {
 public:
  // An image of the bundle's resources ("Recording_text.png") or a status image ("NSStatusAvailable",
  // "NSStatusUnavailable"). The empty name clears; an unknown one clears and gives a line in the log.
  virtual void setImageNamed(const std::string& name) = 0;
  virtual std::string imageName() const = 0;
};

class ProgressIndicator : public virtual View {
 public:
  virtual void setMinValue(double value) = 0;
  virtual void setMaxValue(double value) = 0;
  virtual void setDoubleValue(double value) = 0;
  virtual double doubleValue() const = 0;
  // Shows that work goes on, and stops showing it; the value stays.
  virtual void startAnimation() = 0;
  virtual void stopAnimation() = 0;
  virtual bool isAnimating() const = 0;
};

}  // namespace platform

#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/view.h"
#include "tests/fakes/journal.h"

namespace fakes {

// What a window description says of a view.
struct ViewOptions {
  std::optional<std::string> identifier;
  std::optional<int> tag;
  platform::Rect frame;
  bool hidden = false;
  // The action that a press of the control performs, with its colon ("ibToolbarGoButton:"); empty for none.
  std::string action;
};

// A rectangle without a picture. Changes are recorded in the journal under the view's name; animations end on
// simulated time.
class FakeView : public virtual platform::View {
 public:
  FakeView(Stage stage, std::string name, ViewOptions options = {});
  ~FakeView() override;
  FakeView(const FakeView&) = delete;
  FakeView& operator=(const FakeView&) = delete;

  platform::ViewKind kind() const override { return platform::ViewKind::View; }
  std::weak_ptr<void> lifetime() const override { return alive_; }
  std::optional<std::string> identifier() const override { return options_.identifier; }
  std::optional<int> tag() const override { return options_.tag; }
  platform::View* superview() const override { return superview_; }
  std::vector<platform::View*> subviews() const override;
  void addSubviewAbove(platform::View& view, platform::View* sibling) override;
  platform::Window* window() const override;
  platform::Rect frame() const override { return frame_; }
  void setFrame(const platform::Rect& frame) override;
  bool isHidden() const override { return hidden_; }
  void setHidden(bool hidden) override;
  double opacity() const override { return opacity_; }
  void setOpacity(double opacity) override;
  std::optional<platform::Color> backgroundColor() const override { return color_; }
  void setBackgroundColor(std::optional<platform::Color> color) override;
  platform::Point anchorPoint() const override { return anchor_; }
  void setLayerAnchorPoint(platform::Point unit) override;
  platform::Point layerPosition() const override;
  void setLayerPosition(platform::Point position) override;
  double rotation() const override { return rotation_; }
  void setRotation(double radians) override;
  void animateFrame(const platform::Rect& frame, platform::Millis duration,
                    platform::Block completion) override;
  void animateOpacity(double opacity, platform::Millis duration, platform::Block completion) override;
  void addAnimation(const platform::RotationAnimation& animation, const std::string& key,
                    std::function<void(bool)> stopped) override;
  void removeAnimation(const std::string& key) override;
  std::vector<std::string> animationKeys() const override;

  // For the test.
  const std::string& name() const { return name_; }
  const std::string& action() const { return options_.action; }
  // The turn that runs under `key`, or null.
  const platform::RotationAnimation* animation(const std::string& key) const;
  // Whether neither the view nor one above it is hidden.
  bool isShown() const;
  // A view that refuses the keyboard although its kind could take it.
  void setRefusesFocus(bool refuses) { refusesFocus_ = refuses; }
  bool takesFocus() const;

  // For the fake window: names this view as the root of a window.
  void setRootOf(platform::Window* window) { window_ = window; }
  // Puts `view` on top of the others without a line in the journal.
  void place(FakeView& view);
  // The frame without a line in the journal; subviews that cover the view follow.
  void moveTo(const platform::Rect& frame);

 protected:
  void record(const std::string& what) const { stage_.journal.add(name_ + " " + what); }
  const Stage& stage() const { return stage_; }
  virtual bool canTakeFocus() const { return false; }

 private:
  struct Turn {
    platform::RotationAnimation animation;
    std::function<void(bool)> stopped;
  };

  void leaveSuperview();
  void after(platform::Millis duration, platform::Block completion);

  const Stage stage_;
  const std::string name_;
  const ViewOptions options_;
  std::shared_ptr<void> alive_;
  platform::Window* window_ = nullptr;
  FakeView* superview_ = nullptr;
  std::vector<FakeView*> subviews_;
  platform::Rect frame_;
  bool hidden_;
  bool refusesFocus_ = false;
  double opacity_ = 1;
  double rotation_ = 0;
  platform::Point anchor_{0.5, 0.5};
  std::optional<platform::Color> color_;
  std::vector<std::pair<std::string, std::shared_ptr<Turn>>> turns_;
};

}  // namespace fakes

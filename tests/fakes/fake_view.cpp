#include "tests/fakes/fake_view.h"

#include <algorithm>

#include <fmt/format.h>

namespace fakes {

using platform::Block;
using platform::Color;
using platform::description;
using platform::Millis;
using platform::Point;
using platform::Rect;
using platform::RotationAnimation;

FakeView::FakeView(Stage stage, std::string name, ViewOptions options)
    : stage_(stage),
      name_(std::move(name)),
      options_(std::move(options)),
      alive_(std::make_shared<int>(0)),
      frame_(options_.frame),
      hidden_(options_.hidden) {}

FakeView::~FakeView() {
  leaveSuperview();
  for (FakeView* view : subviews_) {
    view->superview_ = nullptr;
  }
}

std::vector<platform::View*> FakeView::subviews() const {
  return {subviews_.begin(), subviews_.end()};
}

void FakeView::leaveSuperview() {
  if (superview_ != nullptr) {
    std::erase(superview_->subviews_, this);
    superview_ = nullptr;
  }
}

void FakeView::place(FakeView& view) {
  view.leaveSuperview();
  subviews_.push_back(&view);
  view.superview_ = this;
}

void FakeView::addSubviewAbove(platform::View& view, platform::View* sibling) {
  auto& added = dynamic_cast<FakeView&>(view);
  added.leaveSuperview();
  const auto below = std::find(subviews_.begin(), subviews_.end(), dynamic_cast<FakeView*>(sibling));
  if (below == subviews_.end()) {
    record("addSubview " + added.name_ + " on top");
    subviews_.push_back(&added);
  } else {
    record("addSubview " + added.name_ + " above " + (*below)->name_);
    subviews_.insert(below + 1, &added);
  }
  added.superview_ = this;
}

platform::Window* FakeView::window() const {
  const FakeView* root = this;
  while (root->superview_ != nullptr) {
    root = root->superview_;
  }
  return root->window_;
}

void FakeView::moveTo(const Rect& frame) {
  const Rect before{0, 0, frame_.width, frame_.height};
  frame_ = {frame.x, frame.y, std::max(0.0, frame.width), std::max(0.0, frame.height)};
  const Rect now{0, 0, frame_.width, frame_.height};
  if (now == before) {
    return;
  }
  for (FakeView* view : subviews_) {
    if (view->frame_ == before) {
      view->moveTo(now);
    }
  }
}

void FakeView::setFrame(const Rect& frame) {
  record("setFrame " + description(frame));
  moveTo(frame);
}

void FakeView::setHidden(bool hidden) {
  record(fmt::format("setHidden {}", yesNo(hidden)));
  hidden_ = hidden;
}

void FakeView::setOpacity(double opacity) {
  record(fmt::format("setOpacity {}", opacity));
  opacity_ = std::clamp(opacity, 0.0, 1.0);
}

void FakeView::setBackgroundColor(std::optional<Color> color) {
  record(color ? fmt::format("setBackgroundColor {} {} {} {}", color->red, color->green, color->blue,
                             color->alpha)
               : "setBackgroundColor none");
  color_ = color;
}

Point FakeView::layerPosition() const {
  return {frame_.x + anchor_.x * frame_.width, frame_.y + anchor_.y * frame_.height};
}

void FakeView::setLayerAnchorPoint(Point unit) {
  record("setLayerAnchorPoint " + description(unit));
  const Point position = layerPosition();
  anchor_ = unit;
  frame_.x = position.x - unit.x * frame_.width;
  frame_.y = position.y - unit.y * frame_.height;
}

void FakeView::setLayerPosition(Point position) {
  record("setLayerPosition " + description(position));
  frame_.x = position.x - anchor_.x * frame_.width;
  frame_.y = position.y - anchor_.y * frame_.height;
}

void FakeView::setRotation(double radians) {
  record(fmt::format("setRotation {}", radians));
  rotation_ = radians;
}

void FakeView::after(Millis duration, Block completion) {
  stage_.dispatch.main().after(duration, [alive = lifetime(), completion = std::move(completion)] {
    if (!alive.expired() && completion) {
      completion();
    }
  });
}

void FakeView::animateFrame(const Rect& frame, Millis duration, Block completion) {
  record(fmt::format("animateFrame {} {}ms", description(frame), duration.count()));
  moveTo(frame);
  after(duration, std::move(completion));
}

void FakeView::animateOpacity(double opacity, Millis duration, Block completion) {
  record(fmt::format("animateOpacity {} {}ms", opacity, duration.count()));
  opacity_ = std::clamp(opacity, 0.0, 1.0);
  after(duration, std::move(completion));
}

void FakeView::addAnimation(const RotationAnimation& animation, const std::string& key,
                            std::function<void(bool)> stopped) {
  removeAnimation(key);
  record(fmt::format("addAnimation {} {} to {} {}ms{}", key, animation.from, animation.to,
                     animation.duration.count(), animation.forever ? " forever" : ""));
  auto turn = std::make_shared<Turn>(Turn{animation, std::move(stopped)});
  turns_.emplace_back(key, turn);
  if (animation.forever) {
    return;
  }
  after(animation.duration, [this, turn] {
    if (std::erase_if(turns_, [&](const auto& entry) { return entry.second == turn; }) > 0 && turn->stopped) {
      turn->stopped(true);
    }
  });
}

void FakeView::removeAnimation(const std::string& key) {
  const auto place =
      std::find_if(turns_.begin(), turns_.end(), [&](const auto& entry) { return entry.first == key; });
  if (place == turns_.end()) {
    return;
  }
  record("removeAnimation " + key);
  const std::shared_ptr<Turn> turn = place->second;
  turns_.erase(place);
  if (turn->stopped) {
    stage_.dispatch.main().async([turn] { turn->stopped(false); });
  }
}

std::vector<std::string> FakeView::animationKeys() const {
  std::vector<std::string> keys;
  for (const auto& [key, turn] : turns_) {
    keys.push_back(key);
  }
  return keys;
}

const RotationAnimation* FakeView::animation(const std::string& key) const {
  for (const auto& [name, turn] : turns_) {
    if (name == key) {
      return &turn->animation;
    }
  }
  return nullptr;
}

bool FakeView::isShown() const {
  const FakeView* view = this;
  while (view != nullptr && !view->hidden_) {
    view = view->superview_;
  }
  return view == nullptr;
}

bool FakeView::takesFocus() const {
  return canTakeFocus() && !refusesFocus_ && isShown();
}

}  // namespace fakes

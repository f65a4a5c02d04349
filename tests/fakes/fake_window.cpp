#include "tests/fakes/fake_window.h"

#include <algorithm>
#include <stdexcept>

#include <fmt/format.h>

#include "platform/log.h"

namespace fakes {

using platform::Alert;
using platform::AlertCompletion;
using platform::description;
using platform::NSLog;
using platform::Rect;

FakeWindow::FakeWindow(Stage stage, std::string name, Kind kind, Screens screens)
    : stage_(stage),
      name_(std::move(name)),
      kind_(kind),
      screens_(std::move(screens)),
      contentView_(stage, name_ + " contentView"),
      sheets_(stage, name_) {
  contentView_.setRootOf(this);
}

FakeWindow::~FakeWindow() {
  if (parent_ != nullptr) {
    parent_->releaseSheet(*this);
  }
  sheets_.clear();
  while (!children_.empty()) {
    releaseSheet(*children_.back());
  }
}

void FakeWindow::refuse(const std::string& text) {
  throw std::logic_error(text);
}

void FakeWindow::adopt(std::unique_ptr<FakeView> view, FakeView* parent) {
  (parent == nullptr ? contentView_ : *parent).place(*view);
  named_[view->name()] = view.get();
  views_.push_back(std::move(view));
}

FakeOverlay& FakeWindow::addOverlay() {
  overlay_ = std::make_unique<FakeOverlay>(stage_);
  overlay_->contentView().setRootOf(this);
  return *overlay_;
}

void FakeWindow::setInitialFrame(const Rect& frame) {
  frame_ = frame;
  contentView_.moveTo({0, 0, frame.width, frame.height});
}

void FakeWindow::moveTo(const Rect& frame) {
  const bool resized = frame.width != frame_.width || frame.height != frame_.height;
  setInitialFrame(frame);
  if (resized && visible_) {
    stage_.dispatch.main().async([this, alive = contentView_.lifetime()] {
      if (!alive.expired() && delegate_ != nullptr) {
        delegate_->windowDidResize(*this);
      }
    });
  }
}

void FakeWindow::setFrame(const Rect& frame, bool animate) {
  record("setFrame " + description(frame) + (animate ? " animate" : ""));
  if (kind_ == Kind::Sheet) {
    return;
  }
  if (!coversScreen()) {
    usualFrame_ = frame_;
  }
  moveTo(frame);
}

void FakeWindow::resizeByDesktop(const Rect& frame) {
  moveTo(frame);
}

bool FakeWindow::coversScreen() const {
  return screens_ != nullptr && std::find(screens_->begin(), screens_->end(), frame_) != screens_->end();
}

void FakeWindow::toggleFullScreen() {
  record("toggleFullScreen");
  if (kind_ == Kind::Sheet) {
    return;
  }
  const Rect shrunk{frame_.x + frame_.width / 10, frame_.y + frame_.height / 10, frame_.width * 0.8,
                    frame_.height * 0.8};
  if (fullScreen_ || coversScreen()) {
    fullScreen_ = false;
    moveTo(usualFrame_.value_or(shrunk));
    return;
  }
  usualFrame_ = frame_;
  fullScreen_ = true;
  if (screens_ != nullptr && !screens_->empty()) {
    moveTo(screens_->front());
  }
  stage_.dispatch.main().async([this, alive = contentView_.lifetime()] {
    if (!alive.expired() && delegate_ != nullptr) {
      delegate_->windowDidEnterFullScreen(*this);
    }
  });
}

void FakeWindow::setLevel(int level) {
  record(fmt::format("setLevel {}", level));
  level_ = level;
}

void FakeWindow::setTitle(const std::string& title) {
  record("setTitle " + title);
  title_ = title;
}

void FakeWindow::setTitleVisible(bool visible) {
  record(fmt::format("setTitleVisible {}", yesNo(visible)));
  titleVisible_ = visible;
}

void FakeWindow::setToolbarVisible(bool visible) {
  record(fmt::format("setToolbarVisible {}", yesNo(visible)));
  toolbarVisible_ = visible;
}

void FakeWindow::setStyleMask(unsigned mask) {
  record(fmt::format("setStyleMask {}", mask));
  styleMask_ = mask;
}

platform::View* FakeWindow::viewNamed(const std::string& name) {
  const auto found = named_.find(name);
  return found == named_.end() ? nullptr : found->second;
}

FakeView* FakeWindow::requireView(const std::string& name) {
  const auto found = named_.find(name);
  if (found == named_.end()) {
    refuse(name_ + " has no view named " + name);
  }
  return found->second;
}

platform::View* FakeWindow::viewWithTag(int tag) {
  const std::function<platform::View*(platform::View&)> search =
      [&](platform::View& view) -> platform::View* {
    if (view.tag() == tag) {
      return &view;
    }
    for (platform::View* subview : view.subviews()) {
      if (platform::View* found = search(*subview)) {
        return found;
      }
    }
    return nullptr;
  };
  return search(contentView_);
}

void FakeWindow::setAction(const std::string& action, std::function<void(platform::View&)> handler) {
  if (handler) {
    actions_[action] = std::move(handler);
  } else {
    actions_.erase(action);
  }
}

bool FakeWindow::pressAction(const std::string& action, platform::View& sender) {
  const auto found = actions_.find(action);
  if (found == actions_.end()) {
    NSLog("nothing is set for the action %@", action);
    return false;
  }
  const std::function<void(platform::View&)> handler = found->second;
  handler(sender);
  return true;
}

bool FakeWindow::press(const std::string& name) {
  FakeView* view = requireView(name);
  const auto* button = dynamic_cast<FakeButton*>(view);
  const bool behindSheet = sheets_.size() > 0 || (overlay_ != nullptr && overlay_->currentAlert() != nullptr);
  if (!view->isShown() || behindSheet || (button != nullptr && !button->isEnabled())) {
    return false;
  }
  return pressAction(view->action(), *view);
}

bool FakeWindow::makeFirstResponder(platform::View& view) {
  auto* wanted = dynamic_cast<FakeView*>(&view);
  const bool taken = wanted != nullptr && wanted->window() == this && wanted->takesFocus();
  record("makeFirstResponder " + (wanted == nullptr ? description(view) : wanted->name()));
  if (taken) {
    firstResponder_ = &view;
    responderLife_ = view.lifetime();
  }
  return taken;
}

void FakeWindow::show() {
  if (visible_ || kind_ == Kind::Sheet) {
    return;
  }
  visible_ = true;
  // The first layout is a change of size like any other.
  const Rect frame = frame_;
  frame_ = {};
  moveTo(frame);
}

void FakeWindow::makeKeyAndOrderFront() {
  record("makeKeyAndOrderFront");
  show();
}

void FakeWindow::orderFront() {
  record("orderFront");
  show();
}

void FakeWindow::orderOut() {
  record("orderOut");
  visible_ = false;
}

bool FakeWindow::isVisible() const {
  return kind_ == Kind::Sheet ? parent_ != nullptr && parent_->sheets_.currentSheet() == this : visible_;
}

void FakeWindow::close() {
  record("close");
  visible_ = false;
}

bool FakeWindow::requestClose() {
  if (kind_ == Kind::Sheet) {
    if (!isVisible() || sheets_.size() > 0 || delegate_ == nullptr || !delegate_->windowShouldClose(*this)) {
      return false;
    }
    // The delegate may have ended it itself.
    if (parent_ != nullptr) {
      parent_->endSheet(*this, 0);
    }
    return true;
  }
  if (delegate_ != nullptr && !delegate_->windowShouldClose(*this)) {
    return false;
  }
  close();
  if (const platform::Block closed = closedByPerson_) {
    closed();
  }
  return true;
}

void FakeWindow::beginAlert(const Alert& alert, AlertCompletion completion) {
  sheets_.addAlert(alert, std::move(completion));
}

void FakeWindow::beginSheet(platform::Window& sheet, std::function<void(int)> completion) {
  auto* child = dynamic_cast<FakeWindow*>(&sheet);
  if (child == nullptr || child->kind_ != Kind::Sheet || child->parent_ != nullptr) {
    NSLog("this window cannot be shown as a sheet: %@", sheet.title());
    return;
  }
  child->parent_ = this;
  child->sheetCompletion_ = std::move(completion);
  children_.push_back(child);
  sheets_.addSheet(*child);
}

void FakeWindow::endSheet(platform::Window& sheet, int code) {
  auto* child = dynamic_cast<FakeWindow*>(&sheet);
  if (child == nullptr || child->parent_ != this) {
    return;
  }
  record(fmt::format("endSheet {} {}", child->name_, code));
  const auto completion = std::move(child->sheetCompletion_);
  releaseSheet(*child);
  if (completion) {
    completion(code);
  }
}

void FakeWindow::releaseSheet(FakeWindow& child) {
  child.sheets_.clear();
  while (!child.children_.empty()) {
    child.releaseSheet(*child.children_.back());
  }
  child.parent_ = nullptr;
  child.sheetCompletion_ = nullptr;
  std::erase(children_, &child);
  sheets_.removeSheet(child);
}

FakeOverlay::FakeOverlay(Stage stage)
    : stage_(stage), contentView_(stage, "ibChildWindow contentView"), sheets_(stage, "ibChildWindow") {}

void FakeOverlay::beginAlert(const Alert& alert, AlertCompletion completion) {
  sheets_.addAlert(alert, std::move(completion));
}

void FakeOverlay::setFrame(const Rect& frame) {
  record("setFrame " + description(frame));
  frame_ = frame;
  contentView_.moveTo({0, 0, frame.width, frame.height});
}

void FakeOverlay::setLevel(int level) {
  record(fmt::format("setLevel {}", level));
  level_ = level;
}

void FakeOverlay::setOpaque(bool opaque) {
  record(fmt::format("setOpaque {}", yesNo(opaque)));
  opaque_ = opaque;
}

void FakeOverlay::setBackgroundColor(std::optional<platform::Color> color) {
  record(color ? fmt::format("setBackgroundColor {} {} {} {}", color->red, color->green, color->blue,
                             color->alpha)
               : "setBackgroundColor none");
  color_ = color;
}

void FakeOverlay::setAlphaValue(double alpha) {
  record(fmt::format("setAlphaValue {}", alpha));
  alpha_ = alpha;
}

void FakeOverlay::orderFrontRegardless() {
  record("orderFrontRegardless");
  visible_ = true;
}

void FakeOverlay::orderOut() {
  record("orderOut");
  visible_ = false;
}

}  // namespace fakes

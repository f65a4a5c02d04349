#include "tests/fakes/fake_controls.h"

#include <fmt/format.h>

#include "platform/log.h"

namespace fakes {

void FakeTextField::setStringValue(const std::string& text) {
  record("setStringValue " + text);
  text_ = text;
}

void FakeButton::setTitle(const std::string& title) {
  record("setTitle " + title);
  title_ = title;
}

void FakeButton::setEnabled(bool enabled) {
  record(fmt::format("setEnabled {}", yesNo(enabled)));
  enabled_ = enabled;
}

void FakeImageView::setImageNamed(const std::string& name) {
  record("setImageNamed " + name);
  image_ = name;
  if (!name.empty() && !known_.contains(name)) {
    platform::NSLog("there is no image %@", name);
    image_.clear();
  }
  history_.push_back(image_);
}

void FakeProgressIndicator::setMinValue(double value) {
  record(fmt::format("setMinValue {}", value));
  min_ = value;
}

void FakeProgressIndicator::setMaxValue(double value) {
  record(fmt::format("setMaxValue {}", value));
  max_ = value;
}

void FakeProgressIndicator::setDoubleValue(double value) {
  record(fmt::format("setDoubleValue {}", value));
  value_ = value;
}

void FakeProgressIndicator::startAnimation() {
  record("startAnimation");
  animating_ = true;
}

void FakeProgressIndicator::stopAnimation() {
  record("stopAnimation");
  animating_ = false;
}

}  // namespace fakes

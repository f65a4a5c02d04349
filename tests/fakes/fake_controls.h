#pragma once

#include <set>
#include <string>
#include <vector>

#include "tests/fakes/fake_view.h"

namespace fakes {

class FakeTextField final : public FakeView, public platform::TextField {
 public:
  using FakeView::FakeView;
  platform::ViewKind kind() const override { return platform::ViewKind::TextField; }
  std::string stringValue() const override { return text_; }
  void setStringValue(const std::string& text) override;

  // The person's typing: no line in the journal.
  void type(const std::string& text) { text_ = text; }

 protected:
  bool canTakeFocus() const override { return true; }

 private:
  std::string text_;
};

class FakeButton final : public FakeView, public platform::Button {
 public:
  using FakeView::FakeView;
  platform::ViewKind kind() const override { return platform::ViewKind::Button; }
  std::string title() const override { return title_; }
  void setTitle(const std::string& title) override;
  bool isEnabled() const override { return enabled_; }
  void setEnabled(bool enabled) override;

 protected:
  bool canTakeFocus() const override { return enabled_; }

 private:
  std::string title_;
  bool enabled_ = true;
};

class FakeSegmentedControl final : public FakeView, public platform::SegmentedControl {
 public:
  using FakeView::FakeView;
  platform::ViewKind kind() const override { return platform::ViewKind::SegmentedControl; }
  int selectedSegment() const override { return selected_; }

  // The person's choice; the press itself is FakeWindow's.
  void select(int segment) { selected_ = segment; }

 protected:
  bool canTakeFocus() const override { return true; }

 private:
  int selected_ = -1;
};

// Knows the images of the bundle and the status images; a test may add others.
class FakeImageView final : public FakeView, public platform::ImageView {
 public:
  using FakeView::FakeView;
  platform::ViewKind kind() const override { return platform::ViewKind::ImageView; }
  void setImageNamed(const std::string& name) override;
  std::string imageName() const override { return image_; }

  void addKnownImage(const std::string& name) { known_.insert(name); }
  // Every image shown so far, "" for each clearing.
  const std::vector<std::string>& history() const { return history_; }

 private:
  std::set<std::string> known_{"NSStatusAvailable", "NSStatusUnavailable", "Recording_text.png",
                               "Complete_text.png"};
  std::string image_;
  std::vector<std::string> history_;
};

class FakeProgressIndicator final : public FakeView, public platform::ProgressIndicator {
 public:
  using FakeView::FakeView;
  platform::ViewKind kind() const override { return platform::ViewKind::ProgressIndicator; }
  void setMinValue(double value) override;
  void setMaxValue(double value) override;
  void setDoubleValue(double value) override;
  double doubleValue() const override { return value_; }
  void startAnimation() override;
  void stopAnimation() override;
  bool isAnimating() const override { return animating_; }

  double minValue() const { return min_; }
  double maxValue() const { return max_; }

 private:
  double min_ = 0;
  double max_ = 100;
  double value_ = 0;
  bool animating_ = false;
};

}  // namespace fakes

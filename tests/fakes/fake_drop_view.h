#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/drop_session.h"
#include "platform/drop_view.h"
#include "tests/fakes/fake_view.h"

namespace fakes {

// Writes down what is drawn: "line width 5", "color 0 0 1 1", "stroke {{0, 0}, {10, 20}}".
class RecordingCanvas final : public platform::Canvas {
 public:
  void setDefaultLineWidth(double width) override;
  void setColor(const platform::Color& color) override;
  void strokeRect(const platform::Rect& rect) override;
  const std::vector<std::string>& drawn() const { return drawn_; }

 private:
  std::vector<std::string> drawn_;
};

// A drop view whose drags the test makes. It draws on the main queue.
class FakeDropView final : public FakeView, public platform::DropView {
 public:
  using FakeView::FakeView;

  void setDestination(platform::DropDestination* destination) override;
  void registerForDraggedTypes(const std::vector<std::string>& types) override;
  void setNeedsDisplay() override;

  // For the test.
  platform::DropDestination* destination() const { return destination_; }
  const std::vector<std::string>& registeredTypes() const { return types_; }
  // Another program drags `content` over the view.
  void drag(platform::Pasteboard content);
  // The drag that is over the view leaves, or lets go. Whether the drop was taken.
  void leave();
  bool drop();
  // What it has drawn last.
  const std::vector<std::string>& drawn() const { return drawn_; }

 private:
  platform::DropDestination* destination_ = nullptr;
  std::vector<std::string> types_;
  std::unique_ptr<platform::DropSession> session_;
  std::vector<std::string> drawn_;
};

}  // namespace fakes

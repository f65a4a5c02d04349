#include "tests/fakes/fake_drop_view.h"

#include <utility>

#include <fmt/format.h>

#include "platform/queue.h"

namespace fakes {

void RecordingCanvas::setDefaultLineWidth(double width) {
  drawn_.push_back(fmt::format("line width {}", width));
}

void RecordingCanvas::setColor(const platform::Color& color) {
  drawn_.push_back(fmt::format("color {} {} {} {}", color.red, color.green, color.blue, color.alpha));
}

void RecordingCanvas::strokeRect(const platform::Rect& rect) {
  drawn_.push_back("stroke " + platform::description(rect));
}

void FakeDropView::setDestination(platform::DropDestination* destination) {
  session_.reset();
  destination_ = destination;
}

void FakeDropView::registerForDraggedTypes(const std::vector<std::string>& types) {
  std::string names;
  for (const std::string& type : types) {
    names += " " + type;
  }
  record("registerForDraggedTypes" + names);
  types_ = types;
}

void FakeDropView::drag(platform::Pasteboard content) {
  if (destination_ != nullptr) {
    session_ = std::make_unique<platform::DropSession>(*destination_, types_);
    session_->contentIsKnown(std::move(content));
  }
}

void FakeDropView::leave() {
  if (const auto session = std::move(session_)) {
    session->left();
  }
}

bool FakeDropView::drop() {
  bool wasTaken = false;
  if (const auto session = std::move(session_)) {
    session->dropped([&wasTaken](bool taken) { wasTaken = taken; });
  }
  return wasTaken;
}

void FakeDropView::setNeedsDisplay() {
  record("setNeedsDisplay");
  stage().dispatch.main().async([this, alive = lifetime()] {
    if (!alive.expired() && destination_ != nullptr) {
      RecordingCanvas canvas;
      destination_->drawRect({0, 0, frame().width, frame().height}, canvas);
      drawn_ = canvas.drawn();
    }
  });
}

}  // namespace fakes

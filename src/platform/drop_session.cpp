#include "platform/drop_session.h"

#include <algorithm>
#include <utility>

namespace platform {

DropSession::DropSession(DropDestination& destination, std::vector<std::string> registeredTypes)
    : destination_(destination), types_(std::move(registeredTypes)) {}

void DropSession::contentIsKnown(Pasteboard content) {
  if (stage_ != Stage::Unknown) {
    return;
  }
  std::erase_if(content.types, [this](const std::string& type) {
    return std::find(types_.begin(), types_.end(), type) == types_.end();
  });
  info_.draggingPasteboard = std::move(content);
  if (info_.draggingPasteboard.types.empty()) {
    stage_ = Stage::Refused;
  } else {
    stage_ = Stage::Entered;
    operations_ = destination_.draggingEntered(info_);
  }
  if (finished_) {
    handOver();
  }
}

void DropSession::left() {
  if (finished_ || stage_ == Stage::Over) {
    return;
  }
  if (std::exchange(stage_, Stage::Over) == Stage::Entered) {
    destination_.draggingExited(info_);
  }
}

void DropSession::dropped(Finished finished) {
  if (finished_ || stage_ == Stage::Over) {
    return;
  }
  finished_ = std::move(finished);
  if (stage_ != Stage::Unknown) {
    handOver();
  }
}

void DropSession::handOver() {
  const Stage stage = std::exchange(stage_, Stage::Over);
  const Finished finished = std::exchange(finished_, nullptr);
  if (stage == Stage::Refused) {
    finished(false);
    return;
  }
  if (operations_ == kDragOperationNone || !destination_.prepareForDragOperation(info_)) {
    destination_.draggingExited(info_);
    finished(false);
    return;
  }
  const bool taken = destination_.performDragOperation(info_);
  // The source hears of it first: what the hand-over starts may take long.
  finished(taken);
  destination_.draggingEnded(info_);
}

}  // namespace platform

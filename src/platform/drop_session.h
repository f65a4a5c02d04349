#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/drop_view.h"

namespace platform {

// One stay of a drag over a view, from its coming to its leaving or its drop: tells the destination in the
// right order, although what the drag carries is known a while after it has come, and perhaps after it was
// let go. Main queue.
class DropSession {
 public:
  // Says to the source whether the drop was taken.
  using Finished = std::function<void(bool taken)>;

  // `destination` must outlive the session's calls.
  DropSession(DropDestination& destination, std::vector<std::string> registeredTypes);

  // What the drag carries; empty when it could not be read. Only the first call counts.
  void contentIsKnown(Pasteboard content);
  // It has left, or was called off. Nothing happens after a drop.
  void left();
  // It was let go. `finished` is called once: now, or when the content is known.
  void dropped(Finished finished);

 private:
  enum class Stage { Unknown, Refused, Entered, Over };

  void handOver();

  DropDestination& destination_;
  std::vector<std::string> types_;
  DraggingInfo info_;
  Stage stage_ = Stage::Unknown;
  unsigned operations_ = kDragOperationNone;
  Finished finished_;
};

}  // namespace platform

#pragma once

#include <vector>

#include "platform/drop_view.h"
#include "platform/platform.h"

namespace lumo {

// Takes text and files that other programs drag onto the browser window, frames the page in blue while
// something acceptable hovers, and passes on what is dropped: a text as the notification
// LumoNotificationAddFromString, files as LumoNotificationAddFromFile, the first of them also as an address
// that the application opens. Keeps nothing between two drags. Main queue only.
class MyDragDropView final : public platform::DropDestination {
 public:
  // What it shows and takes goes through `view`. Both must outlive it.
  MyDragDropView(platform::Platform& platform, platform::DropView& view);
  ~MyDragDropView() override;
  MyDragDropView(const MyDragDropView&) = delete;
  MyDragDropView& operator=(const MyDragDropView&) = delete;

  // Once the window is there: takes drags from then on. The view's frame becomes the window's, as it stands
  // on the desktop; the window's owner puts it in its place.
  void awakeFromNib();

  platform::Rect frame() const { return view_.frame(); }
  void setFrame(const platform::Rect& frame) { view_.setFrame(frame); }
  // True while something acceptable is over the view.
  bool isHighlighted() const { return isHighlighted_; }
  // Without having the view drawn anew.
  void setIsHighlighted(bool highlighted) { isHighlighted_ = highlighted; }

  // Every operation, in every case: what is acceptable shows in the highlight alone.
  unsigned draggingEntered(const platform::DraggingInfo& sender) override;
  void draggingExited(const platform::DraggingInfo& sender) override;
  bool prepareForDragOperation(const platform::DraggingInfo& sender) override;
  bool performDragOperation(const platform::DraggingInfo& sender) override;
  // Hands over everything that was dropped; observers have been called when it returns.
  void draggingEnded(const platform::DraggingInfo& sender) override;
  void drawRect(const platform::Rect& area, platform::Canvas& canvas) override;

 private:
  void highlightFor(const platform::Pasteboard& pasteboard);
  bool highlightForFile(const std::string& path);
  void changeHighlight(bool highlighted);
  void handOverText(const platform::Pasteboard& pasteboard);
  void handOverFiles(const std::vector<std::string>& paths);
  void openItem(const std::string& item);

  platform::Platform& platform_;
  platform::DropView& view_;
  bool isHighlighted_ = false;
};

}  // namespace lumo

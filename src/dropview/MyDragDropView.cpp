#include "dropview/MyDragDropView.h"

#include <optional>
#include <string>

#include "dropview/DroppedItems.h"
#include "platform/application.h"
#include "platform/log.h"
#include "platform/notification_center.h"
#include "platform/window.h"
#include "support/NotificationNames.h"

namespace lumo {

using platform::NSLog;

namespace {

constexpr const char* kClass = "MyDragDropView";
constexpr platform::Color kWhite{1, 1, 1, 1};
constexpr platform::Color kBlue{0, 0, 1, 1};
constexpr double kFrameWidth = 5.0;

void logOperation(const char* operation) {
  NSLog("[%@ %@]", kClass, operation);
}

// The path as an item of what is passed on; absent for a file that is left out.
std::optional<std::string> acceptedItem(const std::string& path) {
  const auto type = platform::typeOfFile(path);
  NSLog("found utiType = %@", type);
  const auto size = platform::sizeOfFile(path);
  if (!size || *size == 0) {
    return std::nullopt;
  }
  NSLog("File size: %qi bytes\n", *size);
  if (*size >= kLargeFileSize) {
    NSLog("FileSize %qi is way too large??? [%@]", *size, path);
  }
  return isAccepted(type) ? std::optional(fileItem(path)) : std::nullopt;
}

}  // namespace

MyDragDropView::MyDragDropView(platform::Platform& platform, platform::DropView& view)
    : platform_(platform), view_(view) {
  view_.setDestination(this);
}

MyDragDropView::~MyDragDropView() {
  view_.setDestination(nullptr);
}

void MyDragDropView::awakeFromNib() {
  logOperation("awakeFromNib");
  view_.registerForDraggedTypes({platform::kFilenamesPboardType, platform::kStringPboardType});
  const platform::Window* window = view_.window();
  view_.setFrame(window == nullptr ? platform::Rect{} : window->frame());
}

unsigned MyDragDropView::draggingEntered(const platform::DraggingInfo& sender) {
  logOperation("draggingEntered:");
  highlightFor(sender.draggingPasteboard);
  return platform::kDragOperationEvery;
}

void MyDragDropView::highlightFor(const platform::Pasteboard& pasteboard) {
  if (pasteboard.hasType(platform::kStringPboardType)) {
    NSLog("found NSStringPboardType ...");
    std::vector<std::string> copiedItems;
    if (pasteboard.string) {
      copiedItems.push_back(*pasteboard.string);
    }
    NSLog("copiedItems = %@", copiedItems);
    changeHighlight(true);
    return;
  }
  if (!pasteboard.hasType(platform::kFilenamesPboardType) || !pasteboard.filenames) {
    return;
  }
  for (const std::string& path : *pasteboard.filenames) {
    if (highlightForFile(path)) {
      return;
    }
  }
}

bool MyDragDropView::highlightForFile(const std::string& path) {
  const auto type = platform::typeOfFile(path);
  NSLog("found utiType = %@", type);
  for (const platform::FileKind kind : kHighlightedKinds) {
    if (type && platform::typeConformsToKind(*type, kind)) {
      changeHighlight(true);
      return true;
    }
    setIsHighlighted(false);
  }
  return false;
}

void MyDragDropView::changeHighlight(bool highlighted) {
  setIsHighlighted(highlighted);
  view_.setNeedsDisplay();
}

void MyDragDropView::draggingExited(const platform::DraggingInfo& /*sender*/) {
  logOperation("draggingExited:");
  changeHighlight(false);
}

bool MyDragDropView::prepareForDragOperation(const platform::DraggingInfo& /*sender*/) {
  return true;
}

bool MyDragDropView::performDragOperation(const platform::DraggingInfo& /*sender*/) {
  logOperation("performDragOperation:");
  return true;
}

void MyDragDropView::draggingEnded(const platform::DraggingInfo& sender) {
  logOperation("draggingEnded:");
  changeHighlight(false);
  const platform::Pasteboard& pasteboard = sender.draggingPasteboard;
  NSLog("pboad types = %@", pasteboard.types);
  if (pasteboard.hasType(platform::kStringPboardType)) {
    handOverText(pasteboard);
  }
  if (pasteboard.hasType(platform::kFilenamesPboardType)) {
    handOverFiles(pasteboard.filenames.value_or(std::vector<std::string>()));
  }
}

void MyDragDropView::handOverText(const platform::Pasteboard& pasteboard) {
  const auto text = droppedText(pasteboard.string);
  if (!text) {
    NSLog("pboard info string is invalid = [%@]", pasteboard.string);
    return;
  }
  platform_.notifications.postNotification({kAddFromString, std::nullopt, {{"mystrings", *text}}, nullptr});
}

void MyDragDropView::handOverFiles(const std::vector<std::string>& paths) {
  std::vector<std::string> items;
  for (const std::string& path : paths) {
    if (auto item = acceptedItem(path)) {
      items.push_back(std::move(*item));
    }
  }
  NSLog("validitems = %@", items);
  if (!items.empty()) {
    openItem(items.front());
  }
  platform_.notifications.postNotification(
      {kAddFromFile, platform::Array(items.begin(), items.end()), {}, nullptr});
}

void MyDragDropView::openItem(const std::string& item) {
  if (const auto address = ownAddressOfItem(item)) {
    platform_.application.openURL(*address);
  } else {
    NSLog("the name of a dropped file is no UTF-8: %@", item);
  }
}

void MyDragDropView::drawRect(const platform::Rect& area, platform::Canvas& canvas) {
  if (!isHighlighted_) {
    return;
  }
  NSLog("[%@ %@] isHighlighted = YES", kClass, "drawRect:");
  canvas.setDefaultLineWidth(kFrameWidth);
  canvas.setColor(kWhite);
  canvas.setColor(kBlue);
  canvas.strokeRect(area);
}

}  // namespace lumo

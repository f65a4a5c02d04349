#include "preferences/MyPreferencesWindowController.h"

#include "platform/log.h"

namespace lumo {

MyPreferencesWindowController::MyPreferencesWindowController(platform::Platform& platform)
    : window_(platform.windows.loadWindow("MyPreferencesWindowController")) {
  if (window_ != nullptr) {
    window_->setAction("ibCloseButton:", [this](platform::View&) { ibCloseButton(); });
  }
}

void MyPreferencesWindowController::ibCloseButton() {
  platform::NSLog("%@->%@....", "MyPreferencesWindowController", "ibCloseButton:");
  if (platform::Window* parent = window_->sheetParent()) {
    parent->endSheet(*window_, 1);
  }
}

}  // namespace lumo

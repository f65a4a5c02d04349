#pragma once

#include <memory>

#include "platform/platform.h"
#include "platform/window.h"

namespace lumo {

// The preferences sheet, from the window description "MyPreferencesWindowController": so far its frame and
// its close button. Main queue only; made anew at each opening by the browser window, which shows it.
class MyPreferencesWindowController {
 public:
  explicit MyPreferencesWindowController(platform::Platform& platform);

  // The sheet, or null when there is no description of it.
  platform::Window* window() const { return window_.get(); }
  // Ends the sheet with 1.
  void ibCloseButton();

 private:
  std::unique_ptr<platform::Window> window_;
};

}  // namespace lumo

#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/alert.h"
#include "platform/geometry.h"
#include "platform/view.h"

namespace platform {

class WebView;
class Window;

// Window levels: a window of a higher level stays above those of a lower one.
inline constexpr int kNormalWindowLevel = 0;
inline constexpr int kStatusWindowLevel = 25;

// Bits of the style mask that the system uses.
inline constexpr unsigned kStyleMaskFullSizeContentView = 1U << 15;

// Hears of a window's events on the main queue. Not owned by the window; must outlive it or be taken off.
class WindowDelegate {
 public:
  virtual ~WindowDelegate() = default;
  // The person asked to close the window; it closes when the answer is true. A sheet is asked when the person
  // presses Escape while nothing stands on it, and ends with 0 when the answer is true.
  virtual bool windowShouldClose(Window& window) = 0;
  virtual void windowDidResize(Window& window) = 0;
  virtual void windowDidEnterFullScreen(Window& window) = 0;
};

// A transparent layer above a window's page, described in the same window description. It is modelled as a
// window of its own: it has a frame on screen, can be in front or away, and alerts can be shown on it. While
// it is in front, the page below receives no input.
class Overlay : public AlertParent {
 public:
  virtual Rect frame() const = 0;
  virtual void setFrame(const Rect& frame) = 0;
  virtual int level() const = 0;
  virtual void setLevel(int level) = 0;
  // Opaque false and no colour: the page shows through.
  virtual void setOpaque(bool opaque) = 0;
  virtual void setBackgroundColor(std::optional<Color> color) = 0;
  virtual void setAlphaValue(double alpha) = 0;
  virtual View& contentView() = 0;
  virtual bool isVisible() const = 0;
  virtual void orderFrontRegardless() = 0;
  virtual void orderOut() = 0;
};

// One window, made from a window description, or the content of a sheet. Main queue only.
class Window : public AlertParent {
 public:
  // The delegate hears of events until another (or null) is set. Without one the person can close a window
  // but not a sheet.
  virtual void setDelegate(WindowDelegate* delegate) = 0;

  // The outer rectangle without shadows, on the desktop.
  virtual Rect frame() const = 0;
  // `animate` lets the desktop show the change smoothly where it can.
  virtual void setFrame(const Rect& frame, bool animate) = 0;
  virtual int level() const = 0;
  // Where the desktop has no such notion (Wayland) the level is kept and one line is logged.
  virtual void setLevel(int level) = 0;
  virtual std::string title() const = 0;
  virtual void setTitle(const std::string& title) = 0;
  virtual bool isTitleVisible() const = 0;
  virtual void setTitleVisible(bool visible) = 0;
  // The navigation bar.
  virtual bool isToolbarVisible() const = 0;
  virtual void setToolbarVisible(bool visible) = 0;
  virtual unsigned styleMask() const = 0;
  virtual void setStyleMask(unsigned mask) = 0;
  // Into the desktop's full-screen state or out of it; a window that was sized to cover the screen becomes a
  // usual one.
  virtual void toggleFullScreen() = 0;

  virtual View& contentView() = 0;
  // A view by its name in the window description ("ibTextField"), or null.
  virtual View* viewNamed(const std::string& name) = 0;
  // The first view with this tag, or null.
  virtual View* viewWithTag(int tag) = 0;
  // The layer above the page, or null when the description has none.
  virtual Overlay* overlay() = 0;
  // What happens when a control is used whose action in the window description has this name. An action that
  // nothing is set for is logged when it is used.
  virtual void setAction(const std::string& action, std::function<void(View& sender)> handler) = 0;
  // Gives the keyboard to `view`; false when it cannot take it.
  virtual bool makeFirstResponder(View& view) = 0;

  // Shows the window, in front and with the keyboard where the desktop allows.
  virtual void makeKeyAndOrderFront() = 0;
  virtual void orderFront() = 0;
  virtual void orderOut() = 0;
  virtual bool isVisible() const = 0;
  // Closes at once, without asking the delegate.
  virtual void close() = 0;

  // Shows `sheet` on this window; `completion` gets the code with which it is ended. Sheets and alerts of one
  // window wait their turn. `sheet` must live until then.
  virtual void beginSheet(Window& sheet, std::function<void(int code)> completion) = 0;
  // Ends `sheet` with `code`; a window that is no sheet of this one is ignored.
  virtual void endSheet(Window& sheet, int code) = 0;
  // The window on which this one is (or waits to be) shown as a sheet, or null.
  virtual Window* sheetParent() const = 0;
};

// Makes windows and web views and knows the screens. Main queue only.
class WindowSystem {
 public:
  virtual ~WindowSystem() = default;
  // A new window from the description of that name, not shown yet. Null when there is none or it is damaged,
  // with a line in the log that says why.
  virtual std::unique_ptr<Window> loadWindow(const std::string& name) = 0;
  // A new web view with the usual configuration, in no window yet.
  virtual std::unique_ptr<WebView> makeWebView(const Rect& frame) = 0;
  // Shows `alert` in front of all that the application shows: on its frontmost window, above the sheets that
  // are open there; where no window is visible, in one of its own. `completion` runs once on the main queue
  // with the answer, or never when that window goes first. Such alerts of one window wait their turn.
  virtual void beginApplicationAlert(const Alert& alert, AlertCompletion completion) = 0;
  // The frames of the screens, the first one first; empty when none is attached.
  virtual std::vector<Rect> screens() const = 0;
};

}  // namespace platform

#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <gtk/gtk.h>

#include "platform/linux/layer_bin.h"
#include "platform/linux/sheet_host.h"
#include "platform/window.h"

namespace platform {

class Dispatch;
class LinuxApplication;
class LinuxOverlay;

// One window description brought to life: a toplevel (the description's object "window") or the content of a
// sheet (its object "sheet"). Other objects with a meaning are optional: "sheetRoot" (the overlay in which
// sheets are drawn), "menuBarSlot", "barBox" (title bar and navigation bar), "frameBox" and "pageOverlay"
// (between which the bars move), "toolbar", "titleLabel", "contentView" and "ibChildWindow" (the layer above
// the page).
class LinuxWindow final : public Window {
 public:
  LinuxWindow(Dispatch& dispatch, LinuxApplication& application, GtkBuilder* builder);
  ~LinuxWindow() override;
  LinuxWindow(const LinuxWindow&) = delete;
  LinuxWindow& operator=(const LinuxWindow&) = delete;

  void beginAlert(const Alert& alert, AlertCompletion completion) override;
  void setDelegate(WindowDelegate* delegate) override { delegate_ = delegate; }
  Rect frame() const override;
  void setFrame(const Rect& frame, bool animate) override;
  int level() const override { return level_; }
  void setLevel(int level) override;
  std::string title() const override { return title_; }
  void setTitle(const std::string& title) override;
  bool isTitleVisible() const override;
  void setTitleVisible(bool visible) override;
  bool isToolbarVisible() const override;
  void setToolbarVisible(bool visible) override;
  unsigned styleMask() const override { return styleMask_; }
  void setStyleMask(unsigned mask) override;
  void toggleFullScreen() override;
  View& contentView() override;
  View* viewNamed(const std::string& name) override;
  View* viewWithTag(int tag) override;
  Overlay* overlay() override;
  void setAction(const std::string& action, std::function<void(View&)> handler) override;
  bool makeFirstResponder(View& view) override;
  void makeKeyAndOrderFront() override;
  void orderFront() override;
  void orderOut() override;
  bool isVisible() const override;
  void close() override;
  void beginSheet(Window& sheet, std::function<void(int)> completion) override;
  void endSheet(Window& sheet, int code) override;
  Window* sheetParent() const override { return parent_; }

  // A control whose action has this name was used.
  void perform(const std::string& action, GtkWidget* widget);
  // Where this window's sheets are drawn; null for a sheet that is shown nowhere.
  SheetHost* host() const;

 private:
  GObject* object(const char* name) const { return gtk_builder_get_object(builder_, name); }
  GtkWidget* widgetNamed(const char* name) const;
  void connectToplevel();
  void fitToScreen();
  void surfaceResized();
  void insistOnFrame();
  void applyWantedFrame();
  Point wantedPosition() const { return {wantedFrame_.x, wantedFrame_.y}; }
  void moveBars(bool overPage);
  // On this sheet.
  void escapePressed();
  // Takes a sheet and all that stands on it away, without answers.
  void releaseSheet(LinuxWindow& child);
  bool coversScreen(const Rect& frame) const;

  Dispatch& dispatch_;
  LinuxApplication& application_;
  GtkBuilder* builder_;
  GtkWindow* toplevel_ = nullptr;
  GtkWidget* sheet_ = nullptr;
  std::unique_ptr<SheetHost> host_;
  std::unique_ptr<LinuxOverlay> overlay_;
  WindowDelegate* delegate_ = nullptr;
  LinuxWindow* parent_ = nullptr;
  // The sheets that are shown or wait here. Not owned; each takes itself off when it goes.
  std::vector<LinuxWindow*> children_;
  std::function<void(int)> sheetCompletion_;
  std::map<std::string, std::function<void(View&)>> actions_;
  std::string title_;
  int level_ = kNormalWindowLevel;
  unsigned styleMask_ = 15;
  // As the delegate was told.
  Size toldSize_;
  Rect usualFrame_;
  Rect wantedFrame_;
  int frameTries_ = 0;
};

// Screen rectangles of the display's monitors, in logical pixels, the first one first.
std::vector<Rect> screenFrames();

}  // namespace platform

#pragma once

#include <gtk/gtk.h>

#include "platform/linux/layer_bin.h"
#include "platform/window.h"

namespace platform {

class Dispatch;
class LinuxWindow;

// The layer above the page of a toplevel. A real transparent toplevel would need a compositor, which a kiosk
// seldom has.
class LinuxOverlay final : public Overlay {
 public:
  LinuxOverlay(Dispatch& dispatch, LinuxWindow& window, GtkWidget* content);
  ~LinuxOverlay() override;
  LinuxOverlay(const LinuxOverlay&) = delete;
  LinuxOverlay& operator=(const LinuxOverlay&) = delete;

  void beginAlert(const Alert& alert, AlertCompletion completion) override;
  Rect frame() const override { return frame_; }
  void setFrame(const Rect& frame) override;
  int level() const override { return level_; }
  void setLevel(int level) override { level_ = level; }
  void setOpaque(bool opaque) override;
  void setBackgroundColor(std::optional<Color> color) override;
  void setAlphaValue(double alpha) override;
  View& contentView() override;
  bool isVisible() const override;
  void orderFrontRegardless() override;
  void orderOut() override;

 private:
  LayerState layer() const;
  void setLayer(const LayerState& state);
  // What the layer lies above, or null where the description has it elsewhere.
  GtkWidget* below() const;

  Dispatch& dispatch_;
  LinuxWindow& window_;
  GtkWidget* content_;
  // What has had the keyboard below, and gets it back.
  GtkWidget* focusBefore_ = nullptr;
  Rect frame_;
  int level_ = kNormalWindowLevel;
};

}  // namespace platform

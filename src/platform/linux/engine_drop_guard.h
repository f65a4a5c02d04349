#pragma once

#include <vector>

#include <gtk/gtk.h>

namespace platform {

// Keeps drags of other programs from the web engine, which would tell the page of them and go to whatever is
// dropped. Its own drop targets are taken off while such a drag is there, and put back for the drags that
// begin in the page.
class EngineDropGuard {
 public:
  EngineDropGuard() = default;
  ~EngineDropGuard() { putBack(); }
  EngineDropGuard(const EngineDropGuard&) = delete;
  EngineDropGuard& operator=(const EngineDropGuard&) = delete;

  // Those of all web views below `root`. Has to happen before the drag reaches these.
  void takeOff(GtkWidget* root);
  // Nothing happens when they are in place.
  void putBack();

 private:
  struct Target {
    GtkWidget* view;  // Null when the view has gone meanwhile.
    GtkEventController* controller;
  };
  void takeOffFrom(GtkWidget* view);

  std::vector<Target*> targets_;
};

}  // namespace platform

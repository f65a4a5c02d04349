#pragma once

#include <deque>
#include <functional>
#include <vector>

#include <gtk/gtk.h>

#include "platform/alert.h"

namespace platform {

class LinuxApplication;

// What is drawn for one sheet: the card, what has the focus first (null: the first that takes it) and what
// Escape does (empty: nothing).
struct SheetCard {
  GtkWidget* card = nullptr;
  GtkWidget* focus = nullptr;
  std::function<void()> escape;
};

// Draws sheets and alerts inside their toplevel, over a dimmed page. Everything behind a sheet is
// insensitive, so that neither Tab nor a click nor a page's own dialog leaves it, and the application's
// actions are off. Sheets of one owner (a window, the layer above it, a sheet) wait their turn; those of
// different owners stack. Main queue only.
class SheetHost {
 public:
  // `root` is the toplevel's overlay whose child is the window's content.
  SheetHost(LinuxApplication& application, GtkOverlay* root);
  ~SheetHost();
  SheetHost(const SheetHost&) = delete;
  SheetHost& operator=(const SheetHost&) = delete;

  // Shows what `make` gives when it is the owner's turn. `card` is what it will give, null when it is not
  // made yet.
  void enqueue(const void* owner, GtkWidget* card, std::function<SheetCard()> make);
  // Takes the card away, gives the focus back and shows the owner's next sheet. A card that still waits waits
  // no longer.
  void dismiss(GtkWidget* card);
  // Shows an alert for `owner`; the completion runs on the main queue after the alert is gone.
  void enqueueAlert(const void* owner, const Alert& alert, AlertCompletion completion);
  // Drops everything that an owner still has waiting or shown, without answers.
  void forget(const void* owner);

  // The widget that has the keyboard below all sheets, or gets it back when they have gone; may be null.
  GtkWidget* focusBelow() const;
  void setFocusBelow(GtkWidget* widget);

 private:
  struct Layer {
    const void* owner;
    GtkWidget* dim;
    GtkWidget* card;
    GtkWidget* focusBefore;
    std::function<void()> escape;
  };
  struct Waiting {
    const void* owner;
    GtkWidget* card;
    std::function<SheetCard()> make;
  };

  void showNext();
  void show(const Waiting& waiting);
  GtkWidget* below(std::size_t layer) const;
  SheetCard makeAlertCard(const Alert& alert, const AlertCompletion& completion);
  void attachKeys();

  LinuxApplication& application_;
  GtkOverlay* root_;
  bool keysAttached_ = false;
  std::vector<Layer> layers_;
  std::deque<Waiting> waiting_;
};

}  // namespace platform

#pragma once

#include <functional>
#include <memory>
#include <string>

typedef struct _GtkWidget GtkWidget;

namespace platform {

class Bundle;

// The menu of every window, from the resource MainMenu.ui, its actions and their keyboard shortcuts. An item
// for the selector "ibReloadPage:" has the action "app.ibReloadPage"; its attribute "accel" is the shortcut.
// Items of the group "edit." act on what has the focus, with the shortcuts that text fields and pages have
// anyway. Main queue only; the first use needs an initialised toolkit, but for setAction, setActionsEnabled
// and setVisible. The bundle must outlive it.
class MainMenu {
 public:
  explicit MainMenu(const Bundle& bundle);
  ~MainMenu();
  MainMenu(const MainMenu&) = delete;
  MainMenu& operator=(const MainMenu&) = delete;

  // What the item of this selector does. An empty handler takes it away; an item without one is disabled.
  void setAction(const std::string& selector, std::function<void()> handler);
  // Off while a sheet or alert is open: no item and no shortcut works then, Quit included. Not counted.
  void setActionsEnabled(bool enabled);

  // A new menu bar to pack into a toplevel (floating, the container takes it). It shows and hides with
  // setVisible. An empty bar, with a line in the log, when the resource is missing or damaged.
  GtkWidget* makeMenuBar();
  // Gives `toplevel` the actions and the shortcuts, which work with the bar hidden too, and before the page
  // sees the key.
  void attachTo(GtkWidget* toplevel);

  void setVisible(bool visible);
  bool isVisible() const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace platform

#pragma once

#include <memory>
#include <string>
#include <vector>

#include <gtk/gtk.h>

#include "platform/drop_view.h"
#include "platform/linux/engine_drop_guard.h"
#include "platform/linux/linux_view.h"

G_BEGIN_DECLS
#define LUMO_TYPE_DROP_LAYER (lumo_drop_layer_get_type())
G_DECLARE_FINAL_TYPE(LumoDropLayer, lumo_drop_layer, LUMO, DROP_LAYER, GtkWidget)
G_END_DECLS

namespace platform {

// A widget that draws and lets all input through. A drag meets what lies below it instead, so the view
// listens at the widget of its superview, before those below get to know of the drag.
class LinuxDropView final : public LinuxView, public DropView {
 public:
  LinuxDropView(Dispatch& dispatch, GtkWidget* widget);
  ~LinuxDropView() override;

  void setDestination(DropDestination* destination) override;
  void registerForDraggedTypes(const std::vector<std::string>& types) override;
  void setNeedsDisplay() override;

  // The whole layer, as the toolkit asks for it.
  void draw(GtkSnapshot* snapshot);

 private:
  struct Visit;

  void listen();
  bool accept(GdkDrop* drop);
  GdkDragAction enter(GdkDrop* drop);
  void endStays();
  void drop(GdkDrop* drop);
  void read(const std::shared_ptr<Visit>& visit);
  std::shared_ptr<Visit> visitOf(GdkDrop* drop) const;
  void forget(const Visit* visit);

  DropDestination* destination_ = nullptr;
  std::vector<std::string> types_;
  GtkEventController* target_ = nullptr;
  GtkEventController* pointer_ = nullptr;
  EngineDropGuard engine_;
  // The one that is over the view, and those that were dropped and whose content has not come yet.
  std::vector<std::shared_ptr<Visit>> visits_;
};

}  // namespace platform

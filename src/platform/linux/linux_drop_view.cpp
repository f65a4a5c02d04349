#include "platform/linux/linux_drop_view.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "platform/drop_session.h"
#include "platform/linux/drop_content.h"
#include "platform/linux/drop_reader.h"
#include "platform/log.h"

struct _LumoDropLayer {
  GtkWidget parent_instance;
};

G_DEFINE_FINAL_TYPE(LumoDropLayer, lumo_drop_layer, GTK_TYPE_WIDGET)

static void dropLayerSnapshot(GtkWidget* widget, GtkSnapshot* snapshot) {
  if (auto* view = dynamic_cast<platform::LinuxDropView*>(platform::LinuxView::existing(widget))) {
    view->draw(snapshot);
  }
}

static void lumo_drop_layer_class_init(LumoDropLayerClass* klass) {
  GtkWidgetClass* widgetClass = GTK_WIDGET_CLASS(klass);
  widgetClass->snapshot = dropLayerSnapshot;
  gtk_widget_class_set_css_name(widgetClass, "droplayer");
  gtk_widget_class_set_accessible_role(widgetClass, GTK_ACCESSIBLE_ROLE_PRESENTATION);
}

static void lumo_drop_layer_init(LumoDropLayer* layer) {
  gtk_widget_set_can_target(GTK_WIDGET(layer), FALSE);
  gtk_widget_set_focusable(GTK_WIDGET(layer), FALSE);
}

namespace platform {

namespace {

// Far beyond what a person drags.
constexpr std::size_t kLongestText = std::size_t{64} * 1024;
constexpr std::size_t kLongestList = std::size_t{256} * 1024;
// The source waits for an answer to its drop.
constexpr Millis kContentPatience{10000};

const std::vector<const char*> kListTypes{"text/uri-list"};
const std::vector<const char*> kTextTypes{"text/plain;charset=utf-8", "UTF8_STRING", "text/plain"};

// Not to be moved: the source would delete what nothing here keeps.
constexpr auto kActions = static_cast<GdkDragAction>(GDK_ACTION_COPY | GDK_ACTION_LINK);

GdkDragAction actionFor(GdkDrop* drop) {
  const GdkDragAction offered = gdk_drop_get_actions(drop);
  return (offered & GDK_ACTION_COPY) != 0 ? GDK_ACTION_COPY
                                          : static_cast<GdkDragAction>(offered & GDK_ACTION_LINK);
}

class SnapshotCanvas final : public Canvas {
 public:
  SnapshotCanvas(GtkSnapshot* snapshot, const Rect& bounds) : snapshot_(snapshot), bounds_(bounds) {}

  void setDefaultLineWidth(double width) override { width_ = static_cast<float>(std::max(0.0, width)); }
  void setColor(const Color& color) override {
    color_ = {static_cast<float>(color.red), static_cast<float>(color.green), static_cast<float>(color.blue),
              static_cast<float>(color.alpha)};
  }
  void strokeRect(const Rect& rect) override {
    const double half = width_ / 2;
    const double left = std::max(bounds_.x, rect.x - half);
    const double top = std::max(bounds_.y, rect.y - half);
    const double right = std::min(bounds_.x + bounds_.width, rect.x + rect.width + half);
    const double bottom = std::min(bounds_.y + bounds_.height, rect.y + rect.height + half);
    if (right <= left || bottom <= top) {
      return;
    }
    const graphene_rect_t outer{{static_cast<float>(left), static_cast<float>(top)},
                                {static_cast<float>(right - left), static_cast<float>(bottom - top)}};
    GskRoundedRect outline;
    gsk_rounded_rect_init_from_rect(&outline, &outer, 0);
    const float widths[] = {width_, width_, width_, width_};
    const GdkRGBA colors[] = {color_, color_, color_, color_};
    gtk_snapshot_append_border(snapshot_, &outline, widths, colors);
  }

 private:
  GtkSnapshot* snapshot_;
  const Rect bounds_;
  float width_ = 1;
  GdkRGBA color_{0, 0, 0, 1};
};

}  // namespace

// One stay of a drag over the view.
struct LinuxDropView::Visit {
  Visit(GdkDrop* drop, DropDestination& destination, std::vector<std::string> types)
      : drop(GDK_DROP(g_object_ref(drop))), session(destination, std::move(types)) {}
  ~Visit() {
    finish(false);
    g_object_unref(drop);
  }
  Visit(const Visit&) = delete;
  Visit& operator=(const Visit&) = delete;

  // Answers the source, which waits for it once it has let go.
  void finish(bool taken) {
    if (std::exchange(isDropped, false)) {
      gdk_drop_finish(drop, taken ? actionFor(drop) : GdkDragAction{});
    }
  }

  GdkDrop* drop;
  DropSession session;
  bool isDropped = false;
};

LinuxDropView::LinuxDropView(Dispatch& dispatch, GtkWidget* widget) : LinuxView(dispatch, widget) {}

LinuxDropView::~LinuxDropView() {
  for (GtkEventController* controller : {target_, pointer_}) {
    if (controller != nullptr) {
      g_signal_handlers_disconnect_by_data(controller, this);
      if (GtkWidget* holder = gtk_event_controller_get_widget(controller)) {
        gtk_widget_remove_controller(holder, controller);
      }
      g_object_unref(controller);
    }
  }
}

void LinuxDropView::setDestination(DropDestination* destination) {
  visits_.clear();
  destination_ = destination;
  setNeedsDisplay();
}

void LinuxDropView::registerForDraggedTypes(const std::vector<std::string>& types) {
  types_ = types;
  if (target_ == nullptr) {
    listen();
  }
}

void LinuxDropView::setNeedsDisplay() {
  gtk_widget_queue_draw(widget());
}

void LinuxDropView::draw(GtkSnapshot* snapshot) {
  const Rect bounds{0, 0, static_cast<double>(gtk_widget_get_width(widget())),
                    static_cast<double>(gtk_widget_get_height(widget()))};
  if (destination_ != nullptr) {
    SnapshotCanvas canvas(snapshot, bounds);
    destination_->drawRect(bounds, canvas);
  }
}

void LinuxDropView::listen() {
  auto* holder = dynamic_cast<LinuxView*>(superview());
  if (holder == nullptr) {
    NSLog("%@ stands in no view, so it takes no drags", description(*this));
    return;
  }
  target_ = GTK_EVENT_CONTROLLER(g_object_ref_sink(gtk_drop_target_async_new(nullptr, kActions)));
  gtk_event_controller_set_propagation_phase(target_, GTK_PHASE_CAPTURE);
  g_signal_connect(target_, "accept",
                   G_CALLBACK(+[](GtkDropTargetAsync*, GdkDrop* drop, gpointer self) -> gboolean {
                     return static_cast<LinuxDropView*>(self)->accept(drop) ? TRUE : FALSE;
                   }),
                   this);
  g_signal_connect(target_, "drag-enter",
                   G_CALLBACK(+[](GtkDropTargetAsync*, GdkDrop* drop, double, double, gpointer self) {
                     return static_cast<LinuxDropView*>(self)->enter(drop);
                   }),
                   this);
  g_signal_connect(
      target_, "drag-motion",
      G_CALLBACK(+[](GtkDropTargetAsync*, GdkDrop* drop, double, double, gpointer self) -> GdkDragAction {
        return static_cast<LinuxDropView*>(self)->visitOf(drop) ? actionFor(drop) : GdkDragAction{};
      }),
      this);
  g_signal_connect(target_, "drag-leave", G_CALLBACK(+[](GtkDropTargetAsync*, GdkDrop*, gpointer self) {
                     auto* view = static_cast<LinuxDropView*>(self);
                     view->endStays();
                     view->engine_.putBack();
                   }),
                   this);
  g_signal_connect(
      target_, "drop",
      G_CALLBACK(+[](GtkDropTargetAsync*, GdkDrop* drop, double, double, gpointer self) -> gboolean {
        static_cast<LinuxDropView*>(self)->drop(drop);
        return TRUE;
      }),
      this);
  // A source that ends in the midst of a drag, or has no manners, does not say so. While a drag is going on
  // the pointer is the source's. The engine's own targets stay off until the toolkit knows of the end too:
  // the engine ends the program when it is told that a drag leaves which it has not seen come.
  pointer_ = GTK_EVENT_CONTROLLER(g_object_ref_sink(gtk_event_controller_motion_new()));
  gtk_event_controller_set_propagation_phase(pointer_, GTK_PHASE_CAPTURE);
  g_signal_connect_swapped(pointer_, "motion", G_CALLBACK(+[](LinuxDropView* view) { view->endStays(); }),
                           this);
  for (GtkEventController* controller : {target_, pointer_}) {
    gtk_widget_add_controller(holder->widget(), GTK_EVENT_CONTROLLER(g_object_ref(controller)));
  }
}

std::shared_ptr<LinuxDropView::Visit> LinuxDropView::visitOf(GdkDrop* drop) const {
  const auto place = std::ranges::find_if(visits_, [drop](const auto& visit) { return visit->drop == drop; });
  return place == visits_.end() ? nullptr : *place;
}

void LinuxDropView::forget(const Visit* visit) {
  std::erase_if(visits_, [visit](const auto& entry) { return entry.get() == visit; });
}

bool LinuxDropView::accept(GdkDrop* drop) {
  if (gdk_drop_get_drag(drop) != nullptr) {
    // Dragged out of one of our own views: the page's affair.
    return false;
  }
  engine_.takeOff(GTK_WIDGET(gtk_event_controller_get_widget(target_)));
  return true;
}

GdkDragAction LinuxDropView::enter(GdkDrop* drop) {
  if (destination_ == nullptr || actionFor(drop) == 0 ||
      (offeredType(drop, kListTypes) == nullptr && offeredType(drop, kTextTypes) == nullptr)) {
    return GdkDragAction{};
  }
  const auto visit = std::make_shared<Visit>(drop, *destination_, types_);
  visits_.push_back(visit);
  read(visit);
  return actionFor(drop);
}

void LinuxDropView::read(const std::shared_ptr<Visit>& visit) {
  const auto readText = [weak = std::weak_ptr(visit)](const std::optional<std::string>& list) {
    const auto visit = weak.lock();
    const char* type = visit == nullptr ? nullptr : offeredType(visit->drop, kTextTypes);
    if (type != nullptr) {
      readDrop(visit->drop, type, kLongestText, [weak, list](const std::optional<std::string>& text) {
        if (const auto visit = weak.lock()) {
          visit->session.contentIsKnown(contentOfDrag(list, text));
        }
      });
    } else if (visit != nullptr) {
      visit->session.contentIsKnown(contentOfDrag(list, std::nullopt));
    }
  };
  if (const char* type = offeredType(visit->drop, kListTypes)) {
    readDrop(visit->drop, type, kLongestList, readText);
  } else {
    readText(std::nullopt);
  }
}

void LinuxDropView::endStays() {
  for (const auto& visit : std::vector(visits_)) {
    if (!visit->isDropped) {
      visit->session.left();
      forget(visit.get());
    }
  }
}

void LinuxDropView::drop(GdkDrop* drop) {
  const auto visit = visitOf(drop);
  if (visit == nullptr) {
    gdk_drop_finish(drop, GdkDragAction{});
    return;
  }
  visit->isDropped = true;
  dispatch().main().after(kContentPatience, [weak = std::weak_ptr(visit)] {
    if (const auto visit = weak.lock()) {
      NSLog("What was dropped has not come within %d ms", kContentPatience.count());
      visit->session.contentIsKnown({});
    }
  });
  visit->session.dropped([this, key = visit.get()](bool taken) {
    key->finish(taken);
    forget(key);
  });
}

}  // namespace platform

#include "platform/linux/linux_window.h"

#include <algorithm>
#include <utility>

#include "platform/linux/linux_application.h"
#include "platform/linux/linux_controls.h"
#include "platform/linux/linux_overlay.h"
#include "platform/linux/linux_view.h"
#include "platform/linux/x11_window.h"
#include "platform/log.h"

namespace platform {

namespace {

// The toolkit takes each size that the X server reports for the wanted one, also one that was reported before
// a newer was asked for: a frame set just after the window was shown would be lost. It is asked for again
// when a report differs, and not without end, since a window manager may refuse it.
constexpr int kFrameTries = 5;

}  // namespace

std::vector<Rect> screenFrames() {
  std::vector<Rect> frames;
  GdkDisplay* display = gdk_display_get_default();
  GListModel* monitors = display == nullptr ? nullptr : gdk_display_get_monitors(display);
  for (guint index = 0; monitors != nullptr && index < g_list_model_get_n_items(monitors); ++index) {
    auto* monitor = GDK_MONITOR(g_list_model_get_item(monitors, index));
    GdkRectangle area;
    gdk_monitor_get_geometry(monitor, &area);
    g_object_unref(monitor);
    frames.push_back({static_cast<double>(area.x), static_cast<double>(area.y),
                      static_cast<double>(area.width), static_cast<double>(area.height)});
  }
  return frames;
}

LinuxWindow::LinuxWindow(Dispatch& dispatch, LinuxApplication& application, GtkBuilder* builder)
    : dispatch_(dispatch), application_(application), builder_(GTK_BUILDER(g_object_ref(builder))) {
  if (GObject* window = object("window"); GTK_IS_WINDOW(window)) {
    // A toplevel belongs to GTK until it is destroyed.
    toplevel_ = GTK_WINDOW(window);
    connectToplevel();
  } else {
    sheet_ = GTK_WIDGET(g_object_ref_sink(object("sheet")));
    setWindowOf(sheet_, this);
    markContentView(sheet_);
  }
}

LinuxWindow::~LinuxWindow() {
  if (parent_ != nullptr) {
    parent_->releaseSheet(*this);
  }
  if (host_ != nullptr) {
    host_->forget(this);
    host_->forget(overlay_.get());
  }
  while (!children_.empty()) {
    releaseSheet(*children_.back());
  }
  overlay_.reset();
  host_.reset();
  if (toplevel_ != nullptr) {
    g_signal_handlers_disconnect_by_data(toplevel_, this);
    gtk_window_destroy(toplevel_);
  }
  g_clear_object(&sheet_);
  g_object_unref(builder_);
}

GtkWidget* LinuxWindow::widgetNamed(const char* name) const {
  GObject* found = object(name);
  return found != nullptr && GTK_IS_WIDGET(found) ? GTK_WIDGET(found) : nullptr;
}

void LinuxWindow::connectToplevel() {
  setWindowOf(GTK_WIDGET(toplevel_), this);
  title_ = gtk_window_get_title(toplevel_) == nullptr ? "" : gtk_window_get_title(toplevel_);
  fitToScreen();
  if (!gdk_display_is_composited(gtk_widget_get_display(GTK_WIDGET(toplevel_)))) {
    gtk_widget_add_css_class(GTK_WIDGET(toplevel_), "lumo-solid");
  }
  if (GtkWidget* content = widgetNamed("contentView")) {
    markContentView(content);
  }
  if (GtkWidget* root = widgetNamed("sheetRoot"); root != nullptr && GTK_IS_OVERLAY(root)) {
    host_ = std::make_unique<SheetHost>(application_, GTK_OVERLAY(root));
  }
  if (GtkWidget* layer = widgetNamed("ibChildWindow")) {
    overlay_ = std::make_unique<LinuxOverlay>(dispatch_, *this, layer);
  }
  if (GtkWidget* slot = widgetNamed("menuBarSlot"); slot != nullptr && GTK_IS_BOX(slot)) {
    gtk_box_append(GTK_BOX(slot), application_.makeMenuBar());
  }
  application_.attachTo(GTK_WIDGET(toplevel_));

  g_signal_connect(toplevel_, "close-request", G_CALLBACK(+[](GtkWindow*, gpointer self) -> gboolean {
                     auto* window = static_cast<LinuxWindow*>(self);
                     if (window->delegate_ == nullptr || window->delegate_->windowShouldClose(*window)) {
                       window->close();
                       window->application_.noteLastWindowClosed();
                     }
                     return TRUE;
                   }),
                   this);
  // The toolkit's inspector, which shows and changes whatever the program has, is open to every keyboard.
  g_signal_connect(toplevel_, "enable-debugging",
                   G_CALLBACK(+[](GtkWindow* toplevel, gboolean, gpointer) -> gboolean {
                     g_signal_stop_emission_by_name(toplevel, "enable-debugging");
                     return TRUE;
                   }),
                   nullptr);
  g_signal_connect(
      toplevel_, "notify::is-active", G_CALLBACK(+[](GtkWindow* window, GParamSpec*, gpointer self) {
        static_cast<LinuxWindow*>(self)->application_.noteActiveChanged(gtk_window_is_active(window));
      }),
      this);
  g_signal_connect(toplevel_, "notify::fullscreened",
                   G_CALLBACK(+[](GtkWindow* toplevel, GParamSpec*, gpointer self) {
                     auto* window = static_cast<LinuxWindow*>(self);
                     if (gtk_window_is_fullscreen(toplevel) && window->delegate_ != nullptr) {
                       window->delegate_->windowDidEnterFullScreen(*window);
                     }
                   }),
                   this);
  g_signal_connect(toplevel_, "realize", G_CALLBACK(+[](GtkWidget* widget, gpointer self) {
                     g_signal_connect_swapped(
                         gtk_native_get_surface(GTK_NATIVE(widget)), "layout",
                         G_CALLBACK(+[](LinuxWindow* window) { window->surfaceResized(); }), self);
                   }),
                   this);
  g_signal_connect(toplevel_, "map", G_CALLBACK(+[](GtkWidget*, gpointer self) {
                     auto* window = static_cast<LinuxWindow*>(self);
                     // The window manager forgets the state with every unmapping, and the place is its choice
                     // until now.
                     window->setLevel(window->level_);
                     if (window->wantedPosition() != Point{} || window->coversScreen(window->frame())) {
                       x11Move(window->toplevel_, window->wantedPosition());
                     }
                   }),
                   this);
}

void LinuxWindow::fitToScreen() {
  const std::vector<Rect> screens = screenFrames();
  if (screens.empty()) {
    return;
  }
  // A little smaller than the screen: a window of exactly its size would count as one that covers it.
  int width = 0;
  int height = 0;
  gtk_window_get_default_size(toplevel_, &width, &height);
  gtk_window_set_default_size(toplevel_, std::min(width, static_cast<int>(screens.front().width * 0.95)),
                              std::min(height, static_cast<int>(screens.front().height * 0.95)));
}

void LinuxWindow::surfaceResized() {
  // The surface announces its new size before the widgets have theirs.
  dispatch_.main().async([this, alive = contentView().lifetime()] {
    if (alive.expired()) {
      return;
    }
    insistOnFrame();
    // A layout without a new size is no news.
    const Rect present = frame();
    const Size size{present.width, present.height};
    if (size != std::exchange(toldSize_, size) && delegate_ != nullptr) {
      delegate_->windowDidResize(*this);
    }
  });
}

void LinuxWindow::insistOnFrame() {
  if (frameTries_ == 0) {
    return;
  }
  if (frame() == wantedFrame_) {
    frameTries_ = 0;
    return;
  }
  --frameTries_;
  applyWantedFrame();
}

void LinuxWindow::applyWantedFrame() {
  gtk_window_set_default_size(toplevel_, static_cast<int>(wantedFrame_.width),
                              static_cast<int>(wantedFrame_.height));
  x11Move(toplevel_, wantedPosition());
}

SheetHost* LinuxWindow::host() const {
  if (host_ != nullptr) {
    return host_.get();
  }
  return parent_ == nullptr ? nullptr : parent_->host();
}

void LinuxWindow::beginAlert(const Alert& alert, AlertCompletion completion) {
  if (SheetHost* sheetHost = host()) {
    sheetHost->enqueueAlert(this, alert, std::move(completion));
  } else {
    NSLog("no window to show this alert on: %@", alert.messageText);
  }
}

Rect LinuxWindow::frame() const {
  if (toplevel_ == nullptr) {
    return {0, 0, static_cast<double>(gtk_widget_get_width(sheet_)),
            static_cast<double>(gtk_widget_get_height(sheet_))};
  }
  Rect frame{wantedFrame_.x, wantedFrame_.y, 0, 0};
  int width = gtk_widget_get_width(GTK_WIDGET(toplevel_));
  int height = gtk_widget_get_height(GTK_WIDGET(toplevel_));
  if (width == 0 || height == 0) {
    gtk_window_get_default_size(toplevel_, &width, &height);
  } else if (const auto position = x11Position(toplevel_)) {
    frame.x = position->x;
    frame.y = position->y;
  }
  frame.width = width;
  frame.height = height;
  return frame;
}

bool LinuxWindow::coversScreen(const Rect& frame) const {
  const std::vector<Rect> screens = screenFrames();
  return std::find(screens.begin(), screens.end(), frame) != screens.end();
}

void LinuxWindow::setFrame(const Rect& frame, bool /*animate*/) {
  if (toplevel_ == nullptr) {
    return;
  }
  const bool covering = coversScreen(frame);
  const Rect present = this->frame();
  if (covering && !coversScreen(present)) {
    usualFrame_ = present;
  }
  wantedFrame_ = frame;
  // Only the window manager's decorations go: the title bar is inside the window.
  gtk_window_set_decorated(toplevel_, !covering);
  if (!isOnX11(toplevel_)) {
    if (covering) {
      gtk_window_fullscreen(toplevel_);
    } else {
      gtk_window_unfullscreen(toplevel_);
      gtk_window_set_default_size(toplevel_, static_cast<int>(frame.width), static_cast<int>(frame.height));
    }
    return;
  }
  frameTries_ = kFrameTries;
  applyWantedFrame();
}

void LinuxWindow::toggleFullScreen() {
  if (toplevel_ == nullptr) {
    return;
  }
  if (gtk_window_is_fullscreen(toplevel_)) {
    gtk_window_unfullscreen(toplevel_);
  } else if (const Rect present = frame(); coversScreen(present)) {
    Rect usual = usualFrame_;
    if (usual.width <= 0 || coversScreen(usual)) {
      usual = {present.x + present.width / 10, present.y + present.height / 10, present.width * 0.8,
               present.height * 0.8};
    }
    setFrame(usual, true);
  } else {
    gtk_window_fullscreen(toplevel_);
  }
}

void LinuxWindow::setLevel(int level) {
  level_ = level;
  if (toplevel_ == nullptr) {
    return;
  }
  if (isOnX11(toplevel_)) {
    x11SetAbove(toplevel_, level > kNormalWindowLevel);
  } else if (static bool said = false; level > kNormalWindowLevel && !said) {
    said = true;
    NSLog("this desktop has no window levels; level %i stays without effect", level);
  }
}

void LinuxWindow::setTitle(const std::string& title) {
  title_ = title;
  if (toplevel_ != nullptr) {
    gtk_window_set_title(toplevel_, title.c_str());
  }
  if (GtkWidget* label = widgetNamed("titleLabel")) {
    gtk_label_set_text(GTK_LABEL(label), title.c_str());
  }
}

bool LinuxWindow::isTitleVisible() const {
  GtkWidget* label = widgetNamed("titleLabel");
  return label != nullptr && gtk_widget_get_visible(label) != FALSE;
}

void LinuxWindow::setTitleVisible(bool visible) {
  if (GtkWidget* label = widgetNamed("titleLabel")) {
    gtk_widget_set_visible(label, visible);
  }
}

bool LinuxWindow::isToolbarVisible() const {
  GtkWidget* toolbar = widgetNamed("toolbar");
  return toolbar != nullptr && gtk_widget_get_visible(toolbar) != FALSE;
}

void LinuxWindow::setToolbarVisible(bool visible) {
  if (GtkWidget* toolbar = widgetNamed("toolbar")) {
    gtk_widget_set_visible(toolbar, visible);
  }
}

void LinuxWindow::setStyleMask(unsigned mask) {
  const bool overPage = (mask & kStyleMaskFullSizeContentView) != 0;
  const bool wasOverPage = (styleMask_ & kStyleMaskFullSizeContentView) != 0;
  styleMask_ = mask;
  if (overPage != wasOverPage) {
    moveBars(overPage);
  }
}

void LinuxWindow::moveBars(bool overPage) {
  GtkWidget* bars = widgetNamed("barBox");
  GtkWidget* frameBox = widgetNamed("frameBox");
  GtkWidget* page = widgetNamed("pageOverlay");
  if (bars == nullptr || frameBox == nullptr || page == nullptr) {
    return;
  }
  g_object_ref(bars);
  if (overPage) {
    gtk_box_remove(GTK_BOX(frameBox), bars);
    gtk_widget_set_valign(bars, GTK_ALIGN_START);
    gtk_widget_add_css_class(bars, "over-page");
    gtk_overlay_add_overlay(GTK_OVERLAY(page), bars);
  } else {
    gtk_overlay_remove_overlay(GTK_OVERLAY(page), bars);
    gtk_widget_set_valign(bars, GTK_ALIGN_FILL);
    gtk_widget_remove_css_class(bars, "over-page");
    gtk_box_prepend(GTK_BOX(frameBox), bars);
  }
  g_object_unref(bars);
}

View& LinuxWindow::contentView() {
  GtkWidget* content = sheet_ != nullptr ? sheet_ : widgetNamed("contentView");
  return *LinuxView::of(dispatch_, content == nullptr ? GTK_WIDGET(toplevel_) : content);
}

View* LinuxWindow::viewNamed(const std::string& name) {
  GtkWidget* widget = widgetNamed(name.c_str());
  return widget == nullptr ? nullptr : LinuxView::of(dispatch_, widget);
}

View* LinuxWindow::viewWithTag(int tag) {
  std::function<View*(View&)> search = [&](View& view) -> View* {
    if (view.tag() == tag) {
      return &view;
    }
    for (View* subview : view.subviews()) {
      if (View* found = search(*subview)) {
        return found;
      }
    }
    return nullptr;
  };
  return search(contentView());
}

Overlay* LinuxWindow::overlay() {
  return overlay_.get();
}

void LinuxWindow::setAction(const std::string& action, std::function<void(View&)> handler) {
  actions_[action] = std::move(handler);
}

void LinuxWindow::perform(const std::string& action, GtkWidget* widget) {
  const auto found = actions_.find(action);
  if (found == actions_.end() || !found->second) {
    NSLog("nothing is set for the action %@", action);
    return;
  }
  const std::function<void(View&)> handler = found->second;
  handler(senderOf(dispatch_, widget));
}

bool LinuxWindow::makeFirstResponder(View& view) {
  auto* target = dynamic_cast<LinuxView*>(&view);
  return target != nullptr && target->window() == this && gtk_widget_is_visible(target->widget()) != FALSE &&
         gtk_widget_grab_focus(target->widget()) != FALSE;
}

void LinuxWindow::makeKeyAndOrderFront() {
  if (toplevel_ != nullptr) {
    gtk_window_present(toplevel_);
  }
}

void LinuxWindow::orderFront() {
  makeKeyAndOrderFront();
}

void LinuxWindow::orderOut() {
  if (toplevel_ != nullptr) {
    gtk_widget_set_visible(GTK_WIDGET(toplevel_), FALSE);
  }
}

bool LinuxWindow::isVisible() const {
  if (toplevel_ != nullptr) {
    return gtk_widget_get_visible(GTK_WIDGET(toplevel_)) != FALSE;
  }
  return parent_ != nullptr && gtk_widget_get_parent(sheet_) != nullptr;
}

void LinuxWindow::close() {
  orderOut();
}

void LinuxWindow::beginSheet(Window& sheet, std::function<void(int)> completion) {
  auto* child = dynamic_cast<LinuxWindow*>(&sheet);
  SheetHost* sheetHost = host();
  if (child == nullptr || child->sheet_ == nullptr || child->parent_ != nullptr || sheetHost == nullptr) {
    NSLog("this window cannot be shown as a sheet: %@", sheet.title());
    return;
  }
  child->parent_ = this;
  child->sheetCompletion_ = std::move(completion);
  children_.push_back(child);
  sheetHost->enqueue(this, child->sheet_, [child] {
    return SheetCard{child->sheet_, nullptr, [child] { child->escapePressed(); }};
  });
}

void LinuxWindow::escapePressed() {
  // The delegate may end the sheet itself.
  if (delegate_ != nullptr && delegate_->windowShouldClose(*this) && parent_ != nullptr) {
    parent_->endSheet(*this, 0);
  }
}

void LinuxWindow::endSheet(Window& sheet, int code) {
  auto* child = dynamic_cast<LinuxWindow*>(&sheet);
  if (child == nullptr || child->parent_ != this) {
    return;
  }
  const auto completion = std::move(child->sheetCompletion_);
  releaseSheet(*child);
  if (completion) {
    completion(code);
  }
}

void LinuxWindow::releaseSheet(LinuxWindow& child) {
  SheetHost* sheetHost = host();
  if (sheetHost != nullptr) {
    sheetHost->forget(&child);
  }
  while (!child.children_.empty()) {
    child.releaseSheet(*child.children_.back());
  }
  std::erase(children_, &child);
  child.parent_ = nullptr;
  child.sheetCompletion_ = nullptr;
  if (sheetHost != nullptr) {
    sheetHost->dismiss(child.sheet_);
  }
}

}  // namespace platform

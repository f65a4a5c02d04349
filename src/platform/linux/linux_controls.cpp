#include "platform/linux/linux_controls.h"

#include <filesystem>

#include "platform/bundle.h"
#include "platform/linux/linux_drop_view.h"
#include "platform/linux/linux_settings_form.h"
#include "platform/log.h"

namespace platform {

namespace {

class LinuxTextField final : public LinuxView, public TextField {
 public:
  using LinuxView::LinuxView;
  ViewKind kind() const override { return ViewKind::TextField; }
  std::string stringValue() const override { return gtk_editable_get_text(GTK_EDITABLE(widget())); }
  void setStringValue(const std::string& text) override {
    gtk_editable_set_text(GTK_EDITABLE(widget()), text.c_str());
  }
};

// A text that nobody types into.
class LinuxLabel final : public LinuxView, public TextField {
 public:
  using LinuxView::LinuxView;
  ViewKind kind() const override { return ViewKind::TextField; }
  std::string stringValue() const override { return gtk_label_get_text(GTK_LABEL(widget())); }
  void setStringValue(const std::string& text) override {
    gtk_label_set_text(GTK_LABEL(widget()), text.c_str());
  }
};

class LinuxButton final : public LinuxView, public Button {
 public:
  using LinuxView::LinuxView;
  ViewKind kind() const override { return ViewKind::Button; }
  std::string title() const override {
    const char* label = gtk_button_get_label(GTK_BUTTON(widget()));
    return label == nullptr ? "" : label;
  }
  void setTitle(const std::string& title) override {
    gtk_button_set_label(GTK_BUTTON(widget()), title.c_str());
    // A title from outside may be of any length and must not widen the window.
    gtk_label_set_ellipsize(GTK_LABEL(gtk_button_get_child(GTK_BUTTON(widget()))), PANGO_ELLIPSIZE_END);
    gtk_accessible_update_property(GTK_ACCESSIBLE(widget()), GTK_ACCESSIBLE_PROPERTY_LABEL, title.c_str(),
                                   -1);
  }
  bool isEnabled() const override { return gtk_widget_get_sensitive(widget()); }
  void setEnabled(bool enabled) override { gtk_widget_set_sensitive(widget(), enabled); }
};

class LinuxSegmentedControl final : public LinuxView, public SegmentedControl {
 public:
  using LinuxView::LinuxView;
  ViewKind kind() const override { return ViewKind::SegmentedControl; }
  int selectedSegment() const override { return selected_; }

  void select(GtkWidget* segment) {
    int index = 0;
    for (GtkWidget* child = gtk_widget_get_first_child(widget()); child != nullptr;
         child = gtk_widget_get_next_sibling(child), ++index) {
      if (child == segment) {
        selected_ = index;
      }
    }
  }

 private:
  int selected_ = -1;
};

class LinuxImageView final : public LinuxView, public ImageView {
 public:
  using LinuxView::LinuxView;
  ViewKind kind() const override { return ViewKind::ImageView; }
  std::string imageName() const override { return name_; }
  void setImageNamed(const std::string& name) override {
    name_ = name;
    if (name.empty()) {
      show(nullptr, nullptr);
    } else if (name == "NSStatusAvailable") {
      showStatus("lumo-status-available", "Available");
    } else if (name == "NSStatusUnavailable") {
      showStatus("lumo-status-unavailable", "Not available");
    } else {
      const std::filesystem::path file(name);
      const std::string type = file.extension().empty() ? "" : file.extension().string().substr(1);
      const auto path = Bundle::main().pathForResource(file.stem().string(), type);
      if (!path) {
        NSLog("there is no image %@", name);
      }
      show(path ? path->c_str() : nullptr, nullptr);
    }
  }

 private:
  void show(const char* file, const char* icon) {
    if (GTK_IS_PICTURE(widget())) {
      gtk_picture_set_filename(GTK_PICTURE(widget()), file);
    } else if (icon != nullptr) {
      gtk_image_set_from_icon_name(GTK_IMAGE(widget()), icon);
    } else if (file != nullptr) {
      gtk_image_set_from_file(GTK_IMAGE(widget()), file);
    } else {
      gtk_image_clear(GTK_IMAGE(widget()));
    }
  }

  void showStatus(const char* styleClass, const char* spoken) {
    gtk_widget_remove_css_class(widget(), "lumo-status-available");
    gtk_widget_remove_css_class(widget(), "lumo-status-unavailable");
    gtk_widget_add_css_class(widget(), styleClass);
    show(nullptr, "media-record-symbolic");
    gtk_accessible_update_property(GTK_ACCESSIBLE(widget()), GTK_ACCESSIBLE_PROPERTY_LABEL, spoken, -1);
  }

  std::string name_;
};

class LinuxProgressIndicator final : public LinuxView, public ProgressIndicator {
 public:
  using LinuxView::LinuxView;
  ~LinuxProgressIndicator() override { stopPulse(); }
  ViewKind kind() const override { return ViewKind::ProgressIndicator; }
  void setMinValue(double value) override { minimum_ = value; }
  void setMaxValue(double value) override { maximum_ = value; }
  double doubleValue() const override { return value_; }
  void setDoubleValue(double value) override {
    value_ = value;
    const double range = maximum_ - minimum_;
    gtk_progress_bar_set_fraction(bar(), range > 0 ? CLAMP((value - minimum_) / range, 0.0, 1.0) : 0);
  }
  bool isAnimating() const override { return animating_; }
  void startAnimation() override {
    animating_ = true;
    gtk_widget_set_opacity(widget(), 1);
    if (pulse_ == 0) {
      // A slow beat costs next to nothing and shows that work goes on; the frame clock would redraw the
      // page's window sixty times a second.
      pulse_ = g_timeout_add(
          120,
          [](gpointer self) -> gboolean {
            gtk_progress_bar_pulse(static_cast<LinuxProgressIndicator*>(self)->bar());
            return G_SOURCE_CONTINUE;
          },
          this);
    }
  }
  void stopAnimation() override {
    animating_ = false;
    stopPulse();
    if (widget() != nullptr) {
      gtk_widget_set_opacity(widget(), 0);
    }
  }

 private:
  GtkProgressBar* bar() const { return GTK_PROGRESS_BAR(widget()); }
  void stopPulse() {
    if (pulse_ != 0) {
      g_source_remove(pulse_);
      pulse_ = 0;
    }
  }

  double minimum_ = 0;
  double maximum_ = 1;
  double value_ = 0;
  bool animating_ = false;
  guint pulse_ = 0;
};

}  // namespace

std::unique_ptr<LinuxView> makeControl(Dispatch& dispatch, GtkWidget* widget) {
  if (LUMO_IS_DROP_LAYER(widget)) {
    return std::make_unique<LinuxDropView>(dispatch, widget);
  }
  if (gtk_widget_has_css_class(widget, "segmented")) {
    return std::make_unique<LinuxSegmentedControl>(dispatch, widget);
  }
  if (GTK_IS_BOX(widget) && gtk_widget_has_css_class(widget, "lumo-settings-form")) {
    return std::make_unique<LinuxSettingsForm>(dispatch, widget);
  }
  if (GTK_IS_BUTTON(widget)) {
    return std::make_unique<LinuxButton>(dispatch, widget);
  }
  if (GTK_IS_EDITABLE(widget)) {
    return std::make_unique<LinuxTextField>(dispatch, widget);
  }
  if (GTK_IS_LABEL(widget)) {
    return std::make_unique<LinuxLabel>(dispatch, widget);
  }
  if (GTK_IS_IMAGE(widget) || GTK_IS_PICTURE(widget)) {
    return std::make_unique<LinuxImageView>(dispatch, widget);
  }
  if (GTK_IS_PROGRESS_BAR(widget)) {
    return std::make_unique<LinuxProgressIndicator>(dispatch, widget);
  }
  return std::make_unique<LinuxView>(dispatch, widget);
}

View& senderOf(Dispatch& dispatch, GtkWidget* widget) {
  GtkWidget* parent = gtk_widget_get_parent(widget);
  if (parent != nullptr && gtk_widget_has_css_class(parent, "segmented")) {
    View* view = LinuxView::of(dispatch, parent);
    static_cast<LinuxSegmentedControl*>(LinuxView::existing(parent))->select(widget);
    return *view;
  }
  return *LinuxView::of(dispatch, widget);
}

}  // namespace platform

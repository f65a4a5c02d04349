#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/linux_view.h"
#include "platform/web_view.h"
#include "platform/window.h"
#include "tests/contract/dispatch_harness.h"
#include "tests/contract/toolkit_machine.h"
#include "tests/fakes/fake_window_system.h"

// A toolkit, and the person who uses its windows.
class ToolkitHarness {
 public:
  virtual ~ToolkitHarness() = default;

  virtual platform::Dispatch& dispatch() = 0;
  virtual platform::WindowSystem& windows() = 0;
  // Lets time go on until `reached` is true. False when that takes longer than its bound.
  virtual bool runUntil(const std::function<bool()>& reached) = 0;

  // Uses a control, if a person could.
  virtual void press(platform::Window& window, const std::string& name) = 0;
  virtual void pressSegment(platform::Window& window, const std::string& name, int segment) = 0;
  virtual void requestClose(platform::Window& window) = 0;
  // Escape, with this sheet in front.
  virtual void pressEscape(platform::Window& sheet) = 0;
  // The texts of the alerts that can be seen in a toplevel: its own, its sheet's, its overlay's, the
  // application's.
  virtual std::vector<std::string> shownAlerts(platform::Window& toplevel) = 0;
  // Presses a button of the alert that shows `text`, after writing into its field when it has one.
  virtual void answer(platform::Window& toplevel, const std::string& text, const std::string& button,
                      const std::string& written = "") = 0;
};

class FakeToolkit : public ToolkitHarness {
 public:
  FakeToolkit() { describeContractWindows(windows_); }

  platform::Dispatch& dispatch() override { return queues_.dispatch(); }
  fakes::FakeWindowSystem& windows() override { return windows_; }
  bool runUntil(const std::function<bool()>& reached) override { return queues_.runUntil(reached); }
  void press(platform::Window& window, const std::string& name) override { fake(window).press(name); }
  void pressSegment(platform::Window& window, const std::string& name, int segment) override {
    fake(window).view<fakes::FakeSegmentedControl>(name).select(segment);
    fake(window).press(name);
  }
  void requestClose(platform::Window& window) override { fake(window).requestClose(); }
  void pressEscape(platform::Window& sheet) override { fake(sheet).requestClose(); }
  std::vector<std::string> shownAlerts(platform::Window& toplevel) override {
    std::vector<std::string> texts;
    for (const auto& [alert, press] : alerts(toplevel)) {
      texts.push_back(alert->messageText);
    }
    return texts;
  }
  void answer(platform::Window& toplevel, const std::string& text, const std::string& button,
              const std::string& written) override {
    for (const auto& [alert, press] : alerts(toplevel)) {
      if (alert->messageText == text) {
        press(button, written);
        return;
      }
    }
    ADD_FAILURE() << "no alert " << text;
  }

 private:
  using Press = std::function<void(const std::string& button, const std::string& written)>;

  template <class Parent>
  static void addAlert(std::vector<std::pair<const platform::Alert*, Press>>& found, Parent* parent) {
    if (parent != nullptr && parent->currentAlert() != nullptr) {
      found.emplace_back(parent->currentAlert(),
                         [parent](const std::string& button, const std::string& written) {
                           parent->pressAlertButton(button, written);
                         });
    }
  }
  std::vector<std::pair<const platform::Alert*, Press>> alerts(platform::Window& toplevel) {
    std::vector<std::pair<const platform::Alert*, Press>> found;
    addAlert(found, &fake(toplevel));
    addAlert(found, fake(toplevel).currentSheet());
    addAlert(found, fake(toplevel).overlay());
    addAlert(found, &windows_);
    return found;
  }
  static fakes::FakeWindow& fake(platform::Window& window) {
    return dynamic_cast<fakes::FakeWindow&>(window);
  }

  SimHarness queues_;
  fakes::Journal journal_{queues_.dispatch()};
  fakes::FakeWindowSystem windows_{{queues_.dispatch(), journal_}};
};

class LinuxToolkit : public ToolkitHarness {
 public:
  platform::Dispatch& dispatch() override { return machine().dispatch(); }
  platform::WindowSystem& windows() override { return machine().windows(); }
  bool runUntil(const std::function<bool()>& reached) override {
    const platform::Millis end = machine().dispatch().now() + std::chrono::seconds(10);
    while (!reached()) {
      if (machine().dispatch().now() > end) {
        return false;
      }
      machine().dispatch().runMainOnce(platform::Millis(5));
    }
    return true;
  }
  void press(platform::Window& window, const std::string& name) override { click(widget(window, name)); }
  void pressSegment(platform::Window& window, const std::string& name, int segment) override {
    GtkWidget* child = gtk_widget_get_first_child(widget(window, name));
    for (int index = 0; index < segment; ++index) {
      child = gtk_widget_get_next_sibling(child);
    }
    click(child);
  }
  void requestClose(platform::Window& window) override { gtk_window_close(toplevel(window)); }
  void pressEscape(platform::Window& sheet) override { pressKey(sheet, GDK_KEY_Escape); }
  std::vector<std::string> shownAlerts(platform::Window& toplevelWindow) override {
    std::vector<std::string> texts;
    for (GtkWidget* found : withClass(GTK_WIDGET(toplevel(toplevelWindow)), "lumo-alert-message")) {
      texts.emplace_back(gtk_label_get_text(GTK_LABEL(found)));
    }
    return texts;
  }
  void answer(platform::Window& toplevelWindow, const std::string& text, const std::string& button,
              const std::string& written = "") override {
    GtkWidget* card = alertCard(toplevelWindow, text);
    ASSERT_NE(card, nullptr) << text;
    for (GtkWidget* entry : all(card)) {
      if (GTK_IS_ENTRY(entry)) {
        gtk_editable_set_text(GTK_EDITABLE(entry), written.c_str());
      }
    }
    click(alertButton(toplevelWindow, text, button));
  }

  // The toolkit's side of things.

  static ToolkitMachine& machine() { return ToolkitEnvironment::machine(); }
  static GtkWidget* widget(platform::View& view) { return dynamic_cast<platform::LinuxView&>(view).widget(); }
  static GtkWidget* widget(platform::Window& window, const std::string& name) {
    return widget(*window.viewNamed(name));
  }
  static GtkWindow* toplevel(platform::Window& window) {
    return GTK_WINDOW(gtk_widget_get_root(widget(window.contentView())));
  }
  static std::vector<GtkWidget*> all(GtkWidget* root) {
    std::vector<GtkWidget*> found{root};
    for (GtkWidget* child = gtk_widget_get_first_child(root); child != nullptr;
         child = gtk_widget_get_next_sibling(child)) {
      const std::vector<GtkWidget*> inner = all(child);
      found.insert(found.end(), inner.begin(), inner.end());
    }
    return found;
  }
  static std::vector<GtkWidget*> withClass(GtkWidget* root, const char* styleClass) {
    std::vector<GtkWidget*> found = all(root);
    std::erase_if(found, [&](GtkWidget* widget) { return !gtk_widget_has_css_class(widget, styleClass); });
    return found;
  }
  static GtkWidget* alertCard(platform::Window& window, const std::string& text) {
    for (GtkWidget* label : withClass(GTK_WIDGET(toplevel(window)), "lumo-alert-message")) {
      if (gtk_label_get_text(GTK_LABEL(label)) == text) {
        return gtk_widget_get_parent(label);
      }
    }
    return nullptr;
  }
  static GtkWidget* alertButton(platform::Window& window, const std::string& text, const std::string& title) {
    GtkWidget* card = alertCard(window, text);
    for (GtkWidget* button : card == nullptr ? std::vector<GtkWidget*>{} : all(card)) {
      if (GTK_IS_BUTTON(button) && gtk_button_get_label(GTK_BUTTON(button)) == title) {
        return button;
      }
    }
    return nullptr;
  }
  // A key as the toplevel gets it before any widget. Whether somebody took it.
  static bool pressKey(platform::Window& window, guint key) {
    GListModel* controllers = gtk_widget_observe_controllers(GTK_WIDGET(toplevel(window)));
    gboolean taken = FALSE;
    for (guint index = 0; taken == FALSE && index < g_list_model_get_n_items(controllers); ++index) {
      auto* controller = static_cast<GtkEventController*>(g_list_model_get_item(controllers, index));
      if (GTK_IS_EVENT_CONTROLLER_KEY(controller) &&
          gtk_event_controller_get_propagation_phase(controller) == GTK_PHASE_CAPTURE) {
        g_signal_emit_by_name(controller, "key-pressed", key, 0U, GdkModifierType{}, &taken);
      }
      g_object_unref(controller);
    }
    g_object_unref(controllers);
    return taken != FALSE;
  }

 private:
  static void click(GtkWidget* control) {
    if (control == nullptr || gtk_widget_get_mapped(control) == FALSE ||
        gtk_widget_is_sensitive(control) == FALSE) {
      return;
    }
    if (GTK_IS_ENTRY(control)) {
      g_signal_emit_by_name(control, "activate");
    } else {
      g_signal_emit_by_name(control, "clicked");
    }
  }
};

// A shown window of the description "Contract".
template <class Harness>
class ToolkitTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_NE(window, nullptr);
    window->makeKeyAndOrderFront();
    ASSERT_TRUE(harness.runUntil([&] { return window->contentView().frame() == all; }))
        << platform::description(window->contentView().frame());
  }

  platform::View& view(const std::string& name) { return *window->viewNamed(name); }

  const platform::Rect all{0, 0, 640, 480};
  Harness harness;
  std::unique_ptr<platform::Window> window = harness.windows().loadWindow("Contract");
};

using Toolkits = testing::Types<FakeToolkit, LinuxToolkit>;

#include "platform/linux/sheet_host.h"

#include <algorithm>
#include <memory>

#include "platform/linux/linux_application.h"

namespace platform {

namespace {

// Sheets that are open in all windows: the application's actions are off while there is one.
int openSheets = 0;

GtkWidget* label(const std::string& text, const char* styleClass) {
  GtkWidget* widget = gtk_label_new(text.c_str());
  gtk_label_set_wrap(GTK_LABEL(widget), TRUE);
  gtk_label_set_wrap_mode(GTK_LABEL(widget), PANGO_WRAP_WORD_CHAR);
  gtk_label_set_justify(GTK_LABEL(widget), GTK_JUSTIFY_CENTER);
  gtk_label_set_max_width_chars(GTK_LABEL(widget), 44);
  gtk_widget_add_css_class(widget, styleClass);
  return widget;
}

}  // namespace

SheetHost::SheetHost(LinuxApplication& application, GtkOverlay* root)
    : application_(application), root_(root) {
  g_object_add_weak_pointer(G_OBJECT(root_), reinterpret_cast<gpointer*>(&root_));
}

SheetHost::~SheetHost() {
  openSheets -= static_cast<int>(layers_.size());
  application_.setActionsEnabled(openSheets == 0);
  for (Layer& layer : layers_) {
    g_clear_object(&layer.focusBefore);
  }
  if (root_ != nullptr) {
    g_object_remove_weak_pointer(G_OBJECT(root_), reinterpret_cast<gpointer*>(&root_));
  }
}

GtkWidget* SheetHost::below(std::size_t layer) const {
  return layer == 0 ? gtk_overlay_get_child(root_) : layers_[layer - 1].dim;
}

void SheetHost::attachKeys() {
  if (keysAttached_) {
    return;
  }
  keysAttached_ = true;
  // On the toplevel and in the capture phase: Escape counts wherever the focus is, before any widget takes
  // it.
  GtkEventController* keys = gtk_event_controller_key_new();
  gtk_event_controller_set_propagation_phase(keys, GTK_PHASE_CAPTURE);
  g_signal_connect(
      keys, "key-pressed",
      G_CALLBACK(+[](GtkEventControllerKey*, guint key, guint, GdkModifierType, gpointer self) -> gboolean {
        auto* host = static_cast<SheetHost*>(self);
        if (key != GDK_KEY_Escape || host->layers_.empty()) {
          return GDK_EVENT_PROPAGATE;
        }
        if (const std::function<void()> escape = host->layers_.back().escape) {
          escape();
        }
        return GDK_EVENT_STOP;
      }),
      this);
  gtk_widget_add_controller(GTK_WIDGET(gtk_widget_get_root(GTK_WIDGET(root_))), keys);
}

void SheetHost::enqueue(const void* owner, GtkWidget* card, std::function<SheetCard()> make) {
  waiting_.push_back({owner, card, std::move(make)});
  showNext();
}

void SheetHost::showNext() {
  for (auto entry = waiting_.begin(); entry != waiting_.end(); ++entry) {
    const bool busy = std::any_of(layers_.begin(), layers_.end(),
                                  [&](const Layer& layer) { return layer.owner == entry->owner; });
    if (!busy && root_ != nullptr) {
      const Waiting next = std::move(*entry);
      waiting_.erase(entry);
      show(next);
      return;
    }
  }
}

void SheetHost::show(const Waiting& waiting) {
  attachKeys();
  const SheetCard card = waiting.make();
  GtkWidget* dim = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  gtk_widget_add_css_class(dim, "lumo-dim");
  gtk_widget_set_halign(card.card, GTK_ALIGN_CENTER);
  gtk_widget_set_valign(card.card, GTK_ALIGN_CENTER);
  gtk_widget_set_hexpand(card.card, TRUE);
  gtk_widget_set_vexpand(card.card, TRUE);
  gtk_box_append(GTK_BOX(dim), card.card);

  GtkRoot* toplevel = gtk_widget_get_root(GTK_WIDGET(root_));
  GtkWidget* focusBefore = toplevel == nullptr ? nullptr : gtk_root_get_focus(toplevel);
  layers_.push_back({waiting.owner, dim, card.card, focusBefore, card.escape});
  if (focusBefore != nullptr) {
    g_object_ref(focusBefore);
  }
  gtk_widget_set_sensitive(below(layers_.size() - 1), FALSE);
  gtk_overlay_add_overlay(root_, dim);
  ++openSheets;
  application_.setActionsEnabled(false);
  if (card.focus != nullptr) {
    gtk_widget_grab_focus(card.focus);
  } else {
    gtk_widget_child_focus(card.card, GTK_DIR_TAB_FORWARD);
  }
}

void SheetHost::dismiss(GtkWidget* card) {
  std::erase_if(waiting_, [&](const Waiting& entry) { return entry.card == card; });
  const auto found =
      std::find_if(layers_.begin(), layers_.end(), [&](const Layer& layer) { return layer.card == card; });
  if (found == layers_.end() || root_ == nullptr) {
    return;
  }
  Layer layer = *found;
  const auto index = static_cast<std::size_t>(found - layers_.begin());
  // What stood above this layer now stands on what is below it, which then stays insensitive.
  const bool top = index + 1 == layers_.size();
  if (top) {
    gtk_widget_set_sensitive(below(index), TRUE);
  } else if (Layer& above = layers_[index + 1];
             above.focusBefore != nullptr && gtk_widget_is_ancestor(above.focusBefore, layer.card)) {
    // The focus goes back past the layer that is no more.
    std::swap(above.focusBefore, layer.focusBefore);
  }
  layers_.erase(found);
  gtk_box_remove(GTK_BOX(layer.dim), layer.card);
  gtk_overlay_remove_overlay(root_, layer.dim);
  if (layer.focusBefore != nullptr) {
    if (top && gtk_widget_get_root(layer.focusBefore) != nullptr) {
      gtk_widget_grab_focus(layer.focusBefore);
    }
    g_object_unref(layer.focusBefore);
  }
  --openSheets;
  application_.setActionsEnabled(openSheets == 0);
  showNext();
}

void SheetHost::forget(const void* owner) {
  std::erase_if(waiting_, [&](const Waiting& entry) { return entry.owner == owner; });
  for (std::size_t index = layers_.size(); index-- > 0;) {
    if (layers_[index].owner == owner) {
      dismiss(layers_[index].card);
    }
  }
}

GtkWidget* SheetHost::focusBelow() const {
  if (!layers_.empty()) {
    return layers_.front().focusBefore;
  }
  GtkRoot* toplevel = root_ == nullptr ? nullptr : gtk_widget_get_root(GTK_WIDGET(root_));
  return toplevel == nullptr ? nullptr : gtk_root_get_focus(toplevel);
}

void SheetHost::setFocusBelow(GtkWidget* widget) {
  if (!layers_.empty()) {
    GtkWidget*& focusBefore = layers_.front().focusBefore;
    g_clear_object(&focusBefore);
    focusBefore = widget == nullptr ? nullptr : GTK_WIDGET(g_object_ref(widget));
  } else if (widget != nullptr) {
    gtk_widget_grab_focus(widget);
  }
}

SheetCard SheetHost::makeAlertCard(const Alert& alert, const AlertCompletion& completion) {
  auto* card = GTK_WIDGET(g_object_new(GTK_TYPE_BOX, "orientation", GTK_ORIENTATION_VERTICAL,
                                       "accessible-role", GTK_ACCESSIBLE_ROLE_ALERT_DIALOG, nullptr));
  gtk_widget_add_css_class(card, "lumo-alert");
  if (alert.style == AlertStyle::Critical) {
    gtk_widget_add_css_class(card, "critical");
  }
  gtk_accessible_update_property(GTK_ACCESSIBLE(card), GTK_ACCESSIBLE_PROPERTY_LABEL,
                                 alert.messageText.c_str(), GTK_ACCESSIBLE_PROPERTY_MODAL, TRUE, -1);
  gtk_box_append(GTK_BOX(card), label(alert.messageText, "lumo-alert-message"));
  if (!alert.informativeText.empty()) {
    std::string text = alert.informativeText;
    text.erase(text.find_last_not_of('\n') + 1);
    gtk_box_append(GTK_BOX(card), label(text, "lumo-alert-detail"));
  }
  GtkWidget* entry = nullptr;
  if (alert.hasTextField) {
    entry = gtk_entry_new();
    gtk_editable_set_text(GTK_EDITABLE(entry), alert.textFieldValue.c_str());
    gtk_entry_set_activates_default(GTK_ENTRY(entry), TRUE);
    gtk_box_append(GTK_BOX(card), entry);
  }

  GtkWidget* row = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 12);
  gtk_widget_add_css_class(row, "lumo-alert-buttons");
  gtk_box_set_homogeneous(GTK_BOX(row), alert.buttons.size() < 3);
  gtk_box_append(GTK_BOX(card), row);

  auto answer = [this, card, entry, completion](int code) {
    AlertResponse response{code, entry == nullptr ? "" : gtk_editable_get_text(GTK_EDITABLE(entry))};
    dismiss(card);
    if (completion) {
      completion(response);
    }
  };
  SheetCard shown{card, entry, {}};
  for (const AlertButton& button : alert.buttons) {
    GtkWidget* widget = gtk_button_new_with_label(button.title.c_str());
    gtk_widget_set_hexpand(widget, TRUE);
    const bool first = &button == &alert.buttons.front();
    if (first) {
      gtk_widget_add_css_class(widget, "suggested-action");
      shown.focus = entry == nullptr ? widget : entry;
    }
    auto* press = new std::function<void()>([answer, tag = button.tag] { answer(tag); });
    g_signal_connect_data(
        widget, "clicked", G_CALLBACK(+[](GtkButton*, gpointer data) {
          // The answer destroys the button and with it this function.
          const std::function<void()> pressed = *static_cast<std::function<void()>*>(data);
          pressed();
        }),
        press, [](gpointer data, GClosure*) { delete static_cast<std::function<void()>*>(data); },
        static_cast<GConnectFlags>(0));
    if (button.title == "Cancel" || alert.buttons.size() == 1) {
      shown.escape = [answer, tag = button.tag] { answer(tag); };
    }
    if (first && entry != nullptr) {
      g_signal_connect_swapped(
          entry, "activate", G_CALLBACK(+[](GtkWidget* target) { g_signal_emit_by_name(target, "clicked"); }),
          widget);
    }
    gtk_box_append(GTK_BOX(row), widget);
  }
  // Where they do not fit beside each other (a portrait screen, large letters), they stand under each other.
  int width = 0;
  gtk_widget_measure(card, GTK_ORIENTATION_HORIZONTAL, -1, &width, nullptr, nullptr, nullptr);
  if (width > gtk_widget_get_width(GTK_WIDGET(root_))) {
    gtk_orientable_set_orientation(GTK_ORIENTABLE(row), GTK_ORIENTATION_VERTICAL);
  }
  return shown;
}

void SheetHost::enqueueAlert(const void* owner, const Alert& alert, AlertCompletion completion) {
  enqueue(owner, nullptr,
          [this, alert, completion = std::move(completion)] { return makeAlertCard(alert, completion); });
}

}  // namespace platform

#include "platform/linux/linux_settings_form.h"

#include <adwaita.h>

#include "platform/log.h"

namespace platform {

namespace {

constexpr int kSpacing = 24;
constexpr int kRowMargin = 12;

// The toolkit takes these texts for markup.
std::string escaped(const std::string& text) {
  char* markup = g_markup_escape_text(text.c_str(), -1);
  std::string result = markup;
  g_free(markup);
  return result;
}

GtkWidget* addLabel(GtkWidget* box, const std::string& text, const char* styleClass) {
  GtkWidget* label = gtk_label_new(text.c_str());
  gtk_label_set_xalign(GTK_LABEL(label), 0);
  gtk_label_set_wrap(GTK_LABEL(label), TRUE);
  gtk_label_set_wrap_mode(GTK_LABEL(label), PANGO_WRAP_WORD_CHAR);
  gtk_widget_add_css_class(label, styleClass);
  gtk_box_append(GTK_BOX(box), label);
  return label;
}

}  // namespace

struct LinuxSettingsForm::Row {
  LinuxSettingsForm* form = nullptr;
  std::string key;
  SettingKind kind = SettingKind::Switch;
  GtkWidget* widget = nullptr;
  // These three are kept, so that their signals can be taken off whoever goes first.
  GtkWidget* control = nullptr;
  GtkEventController* focus = nullptr;
  GtkTextBuffer* buffer = nullptr;
  GtkWidget* problem = nullptr;
  // The text that the delegate knows.
  std::string known;
  // While this program changes the value.
  bool isQuiet = false;

  Row() = default;
  ~Row() {
    letGo(buffer);
    letGo(focus);
    letGo(control);
  }
  Row(const Row&) = delete;
  Row& operator=(const Row&) = delete;

  void letGo(gpointer object) {
    if (object != nullptr) {
      g_signal_handlers_disconnect_by_data(object, this);
      g_object_unref(object);
    }
  }
  std::string text() const {
    if (kind == SettingKind::Text) {
      return gtk_editable_get_text(GTK_EDITABLE(control));
    }
    GtkTextIter start;
    GtkTextIter end;
    gtk_text_buffer_get_bounds(buffer, &start, &end);
    char* content = gtk_text_buffer_get_text(buffer, &start, &end, FALSE);
    std::string result = content;
    g_free(content);
    return result;
  }
  void setText(const std::string& text) {
    known = text;
    if (kind == SettingKind::Text) {
      gtk_editable_set_text(GTK_EDITABLE(control), text.c_str());
    } else {
      gtk_text_buffer_set_text(buffer, text.c_str(), static_cast<int>(text.size()));
    }
  }
  bool isBeingChanged() const { return kind != SettingKind::Switch && text() != known; }
  void tell(const std::string& text) {
    if (problem != nullptr) {
      gtk_label_set_text(GTK_LABEL(problem), text.c_str());
      gtk_widget_set_visible(problem, !text.empty());
    }
    if (text.empty()) {
      gtk_widget_remove_css_class(control, "error");
      gtk_accessible_reset_state(GTK_ACCESSIBLE(control), GTK_ACCESSIBLE_STATE_INVALID);
    } else {
      gtk_widget_add_css_class(control, "error");
      gtk_accessible_update_state(GTK_ACCESSIBLE(control), GTK_ACCESSIBLE_STATE_INVALID,
                                  GTK_ACCESSIBLE_INVALID_TRUE, -1);
    }
  }
};

LinuxSettingsForm::LinuxSettingsForm(Dispatch& dispatch, GtkWidget* box) : LinuxView(dispatch, box) {
  gtk_orientable_set_orientation(GTK_ORIENTABLE(box), GTK_ORIENTATION_VERTICAL);
  gtk_box_set_spacing(GTK_BOX(box), kSpacing);
}

LinuxSettingsForm::~LinuxSettingsForm() = default;

void LinuxSettingsForm::clear() {
  rows_.clear();
  for (GtkWidget* group : groups_) {
    gtk_box_remove(GTK_BOX(widget()), group);
  }
  groups_.clear();
}

void LinuxSettingsForm::setGroups(const std::vector<SettingGroup>& groups) {
  clear();
  for (const SettingGroup& group : groups) {
    GtkWidget* list = adw_preferences_group_new();
    adw_preferences_group_set_title(ADW_PREFERENCES_GROUP(list), escaped(group.title).c_str());
    adw_preferences_group_set_description(ADW_PREFERENCES_GROUP(list), escaped(group.explanation).c_str());
    gtk_box_append(GTK_BOX(widget()), list);
    groups_.push_back(list);
    rows_.emplace_back();
    for (const SettingRow& setting : group.rows) {
      rows_.back().push_back(makeRow(setting));
      adw_preferences_group_add(ADW_PREFERENCES_GROUP(list), rows_.back().back()->widget);
    }
  }
}

std::unique_ptr<LinuxSettingsForm::Row> LinuxSettingsForm::makeRow(const SettingRow& setting) {
  auto row = std::make_unique<Row>();
  row->form = this;
  row->key = setting.key;
  row->kind = setting.kind;
  row->widget =
      setting.kind == SettingKind::Switch ? makeSwitchRow(*row, setting) : makeTextRow(*row, setting);
  gtk_widget_add_css_class(row->widget, "lumo-setting");
  g_object_ref(row->control);
  gtk_accessible_update_property(GTK_ACCESSIBLE(row->control), GTK_ACCESSIBLE_PROPERTY_DESCRIPTION,
                                 setting.explanation.c_str(), -1);
  return row;
}

GtkWidget* LinuxSettingsForm::makeSwitchRow(Row& row, const SettingRow& setting) {
  GtkWidget* line = adw_action_row_new();
  adw_preferences_row_set_title(ADW_PREFERENCES_ROW(line), escaped(setting.title).c_str());
  adw_action_row_set_subtitle(ADW_ACTION_ROW(line), escaped(setting.explanation).c_str());
  row.control = gtk_switch_new();
  gtk_widget_set_valign(row.control, GTK_ALIGN_CENTER);
  adw_action_row_add_suffix(ADW_ACTION_ROW(line), row.control);
  // The whole row is to be touched. It gives the switch its name, too.
  adw_action_row_set_activatable_widget(ADW_ACTION_ROW(line), row.control);
  g_signal_connect(row.control, "notify::active",
                   G_CALLBACK(+[](GtkSwitch* control, GParamSpec*, gpointer data) {
                     auto* changed = static_cast<Row*>(data);
                     if (!changed->isQuiet) {
                       changed->form->endEditing();
                       changed->form->report(*changed, gtk_switch_get_active(control) != FALSE);
                     }
                   }),
                   &row);
  return line;
}

GtkWidget* LinuxSettingsForm::makeTextRow(Row& row, const SettingRow& setting) {
  GtkWidget* line = adw_preferences_row_new();
  adw_preferences_row_set_title(ADW_PREFERENCES_ROW(line), escaped(setting.title).c_str());
  gtk_list_box_row_set_activatable(GTK_LIST_BOX_ROW(line), FALSE);
  // The keyboard goes to the text itself.
  gtk_widget_set_focusable(line, FALSE);
  GtkWidget* box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 2);
  gtk_widget_set_margin_top(box, kRowMargin);
  gtk_widget_set_margin_bottom(box, kRowMargin);
  gtk_widget_set_margin_start(box, kRowMargin);
  gtk_widget_set_margin_end(box, kRowMargin);
  gtk_list_box_row_set_child(GTK_LIST_BOX_ROW(line), box);
  addLabel(box, setting.title, "lumo-setting-title");
  const bool hasLines = setting.kind == SettingKind::Lines;
  addLabel(box, setting.explanation + (hasLines ? ". One on each line" : ""), "lumo-setting-explanation");

  row.control = hasLines ? gtk_text_view_new() : gtk_entry_new();
  for (GtkWidget* named : {line, row.control}) {
    gtk_accessible_update_property(GTK_ACCESSIBLE(named), GTK_ACCESSIBLE_PROPERTY_LABEL,
                                   setting.title.c_str(), -1);
  }
  gtk_widget_set_margin_top(row.control, kRowMargin / 2);
  const auto edited = G_CALLBACK(+[](gpointer data) {
    auto* changed = static_cast<Row*>(data);
    if (!changed->isQuiet) {
      changed->tell("");
    }
  });
  const auto ending = G_CALLBACK(+[](gpointer data) {
    auto* changed = static_cast<Row*>(data);
    changed->form->ended(*changed);
  });
  if (hasLines) {
    gtk_text_view_set_accepts_tab(GTK_TEXT_VIEW(row.control), FALSE);
    gtk_text_view_set_wrap_mode(GTK_TEXT_VIEW(row.control), GTK_WRAP_WORD_CHAR);
    row.buffer = GTK_TEXT_BUFFER(g_object_ref(gtk_text_view_get_buffer(GTK_TEXT_VIEW(row.control))));
    g_signal_connect_swapped(row.buffer, "changed", edited, &row);
  } else {
    g_signal_connect_swapped(row.control, "changed", edited, &row);
    g_signal_connect_swapped(row.control, "activate", ending, &row);
  }
  row.focus = gtk_event_controller_focus_new();
  g_signal_connect_swapped(row.focus, "leave", ending, &row);
  gtk_widget_add_controller(row.control, GTK_EVENT_CONTROLLER(g_object_ref(row.focus)));
  gtk_box_append(GTK_BOX(box), row.control);
  row.problem = addLabel(box, "", "lumo-setting-problem");
  gtk_widget_set_visible(row.problem, FALSE);
  return line;
}

LinuxSettingsForm::Row* LinuxSettingsForm::find(const std::string& key) const {
  for (const auto& group : rows_) {
    for (const auto& row : group) {
      if (row->key == key) {
        return row.get();
      }
    }
  }
  return nullptr;
}

void LinuxSettingsForm::setValue(const std::string& key, const SettingValue& value) {
  Row* row = find(key);
  if (row == nullptr) {
    NSLog("the form has no row %@", key);
    return;
  }
  const auto* on = std::get_if<bool>(&value);
  if ((on != nullptr) != (row->kind == SettingKind::Switch)) {
    NSLog("a value of another kind for the row %@", key);
    return;
  }
  if (row->isBeingChanged()) {
    return;
  }
  row->isQuiet = true;
  if (on != nullptr) {
    gtk_switch_set_active(GTK_SWITCH(row->control), *on);
  } else if (row->text() != std::get<std::string>(value)) {
    row->setText(std::get<std::string>(value));
  }
  row->isQuiet = false;
  row->tell("");
}

void LinuxSettingsForm::setLocked(std::size_t group, bool locked) {
  if (group >= rows_.size()) {
    return;
  }
  for (const auto& row : rows_[group]) {
    if (locked && row->isBeingChanged()) {
      row->setText(row->known);
    }
    gtk_widget_set_sensitive(row->widget, !locked);
  }
}

void LinuxSettingsForm::showProblem(const std::string& key, const std::string& problem) {
  if (Row* row = find(key)) {
    row->tell(problem);
  } else {
    NSLog("the form has no row %@", key);
  }
}

void LinuxSettingsForm::endEditing() {
  for (const auto& group : rows_) {
    for (const auto& row : group) {
      ended(*row);
    }
  }
}

void LinuxSettingsForm::ended(Row& row) {
  if (row.isBeingChanged()) {
    row.known = row.text();
    report(row, row.known);
  }
}

void LinuxSettingsForm::report(Row& row, const SettingValue& value) {
  if (delegate_ != nullptr) {
    delegate_->settingChanged(*this, row.key, value);
  }
}

GtkWidget* LinuxSettingsForm::control(const std::string& key) const {
  const Row* row = find(key);
  return row == nullptr ? nullptr : row->control;
}

std::string LinuxSettingsForm::shownProblem(const std::string& key) const {
  const Row* row = find(key);
  if (row == nullptr || row->problem == nullptr || gtk_widget_get_visible(row->problem) == FALSE) {
    return "";
  }
  return gtk_label_get_text(GTK_LABEL(row->problem));
}

}  // namespace platform

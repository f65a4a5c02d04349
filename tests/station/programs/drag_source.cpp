#include <iostream>
#include <string>
#include <vector>

#include <gtk/gtk.h>

// Another program of the desktop, of an older toolkit: a small window out of which something can be dragged.
// Its arguments say what:
//   --text TEXT         as an editor offers a selection
//   --files PATH…       as a file manager offers what is selected, with the names as text
//   --as TYPE CONTENT   content of that type as it stands; any number of times
//   --move              to be moved, and nothing else
// It writes what becomes of the drag, a line each: "began", "cancelled", "deletes", "ended".

namespace {

enum Kind : guint { kText, kFiles, kPlain };

struct Offer {
  GtkTargetList* targets = gtk_target_list_new(nullptr, 0);
  GdkDragAction actions = static_cast<GdkDragAction>(GDK_ACTION_COPY | GDK_ACTION_LINK | GDK_ACTION_MOVE);
  std::string text;
  std::vector<std::string> paths;
  std::vector<std::string> contents;
};

void say(const char* line) {
  std::cout << line << std::endl;
}

Offer readArguments(const std::vector<std::string>& arguments) {
  Offer offer;
  for (std::size_t at = 0; at < arguments.size(); ++at) {
    if (arguments[at] == "--move") {
      offer.actions = GDK_ACTION_MOVE;
    } else if (arguments[at] == "--text" && at + 1 < arguments.size()) {
      offer.text = arguments[++at];
      gtk_target_list_add_text_targets(offer.targets, kText);
    } else if (arguments[at] == "--as" && at + 2 < arguments.size()) {
      gtk_target_list_add(offer.targets, gdk_atom_intern(arguments[at + 1].c_str(), FALSE), 0,
                          kPlain + static_cast<guint>(offer.contents.size()));
      offer.contents.push_back(arguments[at + 2]);
      at += 2;
    } else if (arguments[at] == "--files") {
      while (at + 1 < arguments.size() && !arguments[at + 1].starts_with("--")) {
        offer.paths.push_back(arguments[++at]);
        offer.text += (offer.text.empty() ? "" : " ") + offer.paths.back();
      }
      gtk_target_list_add_uri_targets(offer.targets, kFiles);
      gtk_target_list_add_text_targets(offer.targets, kText);
    }
  }
  return offer;
}

void giveFiles(GtkSelectionData* data, const Offer& offer) {
  std::vector<char*> uris;
  for (const std::string& path : offer.paths) {
    uris.push_back(g_filename_to_uri(path.c_str(), nullptr, nullptr));
  }
  uris.push_back(nullptr);
  gtk_selection_data_set_uris(data, uris.data());
  for (char* uri : uris) {
    g_free(uri);
  }
}

void give(GtkWidget*, GdkDragContext*, GtkSelectionData* data, guint info, guint, gpointer self) {
  const Offer& offer = *static_cast<Offer*>(self);
  if (info == kText) {
    gtk_selection_data_set_text(data, offer.text.c_str(), -1);
  } else if (info == kFiles) {
    giveFiles(data, offer);
  } else {
    const std::string& content = offer.contents[info - kPlain];
    gtk_selection_data_set(data, gtk_selection_data_get_target(data), 8,
                           reinterpret_cast<const guchar*>(content.data()), static_cast<int>(content.size()));
  }
}

gboolean cancelled() {
  say("cancelled");
  return TRUE;
}

void makeWindow(Offer& offer) {
  GtkWidget* window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
  gtk_window_set_title(GTK_WINDOW(window), "Drag source");
  gtk_window_set_default_size(GTK_WINDOW(window), 160, 60);
  gtk_window_set_decorated(GTK_WINDOW(window), FALSE);
  GtkWidget* handle = gtk_event_box_new();
  gtk_container_add(GTK_CONTAINER(handle), gtk_label_new("Drag me"));
  gtk_container_add(GTK_CONTAINER(window), handle);
  gtk_drag_source_set(handle, GDK_BUTTON1_MASK, nullptr, 0, offer.actions);
  gtk_drag_source_set_target_list(handle, offer.targets);
  g_signal_connect(handle, "drag-data-get", G_CALLBACK(give), &offer);
  g_signal_connect_swapped(handle, "drag-begin", G_CALLBACK(say), const_cast<char*>("began"));
  g_signal_connect_swapped(handle, "drag-failed", G_CALLBACK(cancelled), nullptr);
  g_signal_connect_swapped(handle, "drag-data-delete", G_CALLBACK(say), const_cast<char*>("deletes"));
  g_signal_connect_swapped(handle, "drag-end", G_CALLBACK(say), const_cast<char*>("ended"));
  gtk_widget_show_all(window);
}

}  // namespace

int main(int count, char** values) {
  gtk_init(nullptr, nullptr);
  Offer offer = readArguments({values + 1, values + count});
  makeWindow(offer);
  gtk_main();
  return 0;
}

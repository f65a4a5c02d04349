#include "tools/lumoctl/selection.h"

#include <cstdlib>
#include <utility>
#include <vector>

#include <gio/gio.h>

#include "platform/strings.h"

namespace lumoctl {

namespace {

constexpr guint kPatience = 5000;
constexpr std::size_t kLongestText = 65'536;

bool isSet(const char* variable) {
  const char* value = std::getenv(variable);
  return value != nullptr && *value != '\0';
}

bool isProgram(const char* name) {
  char* path = g_find_program_in_path(name);
  const bool found = path != nullptr;
  g_free(path);
  return found;
}

struct Reading {
  GMainLoop* loop;
  GBytes* output = nullptr;
  GError* error = nullptr;
  bool timedOut = false;
};

// What the program prints; absent when it failed or its owner of the selection does not answer.
std::optional<std::string> outputOf(std::vector<const char*> words, bool& timedOut) {
  words.push_back(nullptr);
  constexpr auto flags =
      static_cast<GSubprocessFlags>(G_SUBPROCESS_FLAGS_STDOUT_PIPE | G_SUBPROCESS_FLAGS_STDERR_SILENCE);
  GSubprocess* process = g_subprocess_newv(words.data(), flags, nullptr);
  if (process == nullptr) {
    return std::nullopt;
  }
  Reading reading{g_main_loop_new(nullptr, FALSE)};
  GCancellable* cancellable = g_cancellable_new();
  g_subprocess_communicate_async(
      process, nullptr, cancellable,
      [](GObject* source, GAsyncResult* result, gpointer data) {
        auto* reading = static_cast<Reading*>(data);
        g_subprocess_communicate_finish(G_SUBPROCESS(source), result, &reading->output, nullptr,
                                        &reading->error);
        g_main_loop_quit(reading->loop);
      },
      &reading);
  std::pair<Reading*, GCancellable*> alarm{&reading, cancellable};
  const guint timer = g_timeout_add(
      kPatience,
      [](gpointer data) -> gboolean {
        const auto* alarm = static_cast<std::pair<Reading*, GCancellable*>*>(data);
        alarm->first->timedOut = true;
        g_cancellable_cancel(alarm->second);
        return G_SOURCE_REMOVE;
      },
      &alarm);
  g_main_loop_run(reading.loop);
  timedOut = reading.timedOut;
  std::optional<std::string> text;
  if (timedOut) {
    g_subprocess_force_exit(process);
  } else {
    g_source_remove(timer);
    // The output may end before the program does.
    if (reading.output != nullptr && g_subprocess_wait_check(process, nullptr, nullptr) != FALSE) {
      gsize size = 0;
      const auto* bytes = static_cast<const char*>(g_bytes_get_data(reading.output, &size));
      text.emplace(bytes == nullptr ? "" : bytes, size);
    }
  }
  if (reading.output != nullptr) {
    g_bytes_unref(reading.output);
  }
  g_clear_error(&reading.error);
  g_object_unref(cancellable);
  g_main_loop_unref(reading.loop);
  g_object_unref(process);
  return text;
}

}  // namespace

std::optional<std::string> primarySelection(std::string& error) {
  std::vector<const char*> words;
  if (isSet("WAYLAND_DISPLAY") && isProgram("wl-paste")) {
    words = {"wl-paste", "--primary", "--no-newline"};
  } else if (isSet("DISPLAY") && isProgram("xclip")) {
    words = {"xclip", "-selection", "primary", "-out"};
  } else if (isSet("WAYLAND_DISPLAY")) {
    error = "the selection cannot be read: wl-paste is not installed";
    return std::nullopt;
  } else {
    error = isSet("DISPLAY") ? "the selection cannot be read: xclip is not installed"
                             : "the selection cannot be read: there is no display";
    return std::nullopt;
  }
  bool timedOut = false;
  auto text = outputOf(words, timedOut);
  if (!text) {
    error = timedOut ? "the program that holds the selection does not answer" : "there is no selected text";
    return std::nullopt;
  }
  if (text->empty()) {
    error = "there is no selected text";
    return std::nullopt;
  }
  if (text->size() > kLongestText || text->find('\0') != std::string::npos) {
    error = "the selected text is too long or no text";
    return std::nullopt;
  }
  return platform::validUtf8(*text);
}

}  // namespace lumoctl

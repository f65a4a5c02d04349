#include <cmath>
#include <memory>

#include "platform/linux/linux_web_view.h"
#include "platform/log.h"

namespace platform {

namespace {

constexpr const char* kUserAgentScript = "navigator.userAgent";
constexpr Millis kSnapshotLimit{10000};
constexpr int kDeepestValue = 16;

using EvaluationCompletion = std::function<void(std::optional<PropertyList>, std::optional<WebError>)>;

std::optional<PropertyList> valueOf(JSCValue* value, int depth) {
  if (jsc_value_is_boolean(value)) {
    return PropertyList(jsc_value_to_boolean(value) != FALSE);
  }
  if (jsc_value_is_number(value)) {
    const double number = jsc_value_to_double(value);
    if (std::trunc(number) == number && std::abs(number) < 9007199254740992.0) {
      return PropertyList(static_cast<std::int64_t>(number));
    }
    return PropertyList(number);
  }
  if (jsc_value_is_string(value)) {
    char* text = jsc_value_to_string(value);
    PropertyList result{std::string(text)};
    g_free(text);
    return result;
  }
  if (depth >= kDeepestValue || !jsc_value_is_object(value)) {
    return std::nullopt;
  }
  if (jsc_value_is_array(value)) {
    Array array;
    JSCValue* length = jsc_value_object_get_property(value, "length");
    const auto count = static_cast<guint>(jsc_value_to_int32(length));
    g_object_unref(length);
    for (guint index = 0; index < count; ++index) {
      JSCValue* element = jsc_value_object_get_property_at_index(value, index);
      if (auto converted = valueOf(element, depth + 1)) {
        array.push_back(std::move(*converted));
      }
      g_object_unref(element);
    }
    return PropertyList(std::move(array));
  }
  Dictionary dictionary;
  char** names = jsc_value_object_enumerate_properties(value);
  for (char** name = names; name != nullptr && *name != nullptr; ++name) {
    JSCValue* member = jsc_value_object_get_property(value, *name);
    if (auto converted = valueOf(member, depth + 1)) {
      dictionary.set(*name, std::move(*converted));
    }
    g_object_unref(member);
  }
  g_strfreev(names);
  return PropertyList(std::move(dictionary));
}

void evaluated(GObject* view, GAsyncResult* result, gpointer data) {
  const std::unique_ptr<EvaluationCompletion> completion(static_cast<EvaluationCompletion*>(data));
  GError* error = nullptr;
  JSCValue* value = webkit_web_view_evaluate_javascript_finish(WEBKIT_WEB_VIEW(view), result, &error);
  if (value == nullptr) {
    (*completion)(std::nullopt, WebError{error->code, error->message, std::nullopt});
    g_error_free(error);
    return;
  }
  (*completion)(valueOf(value, 0), std::nullopt);
  g_object_unref(value);
}

// A snapshot under way: answered by the engine or by the time limit, whichever comes first.
struct Snapshot {
  std::function<void(std::optional<Image>)> completion;

  void answer(std::optional<Image> image) {
    if (const auto done = std::exchange(completion, nullptr)) {
      done(std::move(image));
    }
  }
};

void snapshotTaken(GObject* view, GAsyncResult* result, gpointer data) {
  const std::unique_ptr<std::shared_ptr<Snapshot>> snapshot(static_cast<std::shared_ptr<Snapshot>*>(data));
  GError* error = nullptr;
  GdkTexture* texture = webkit_web_view_get_snapshot_finish(WEBKIT_WEB_VIEW(view), result, &error);
  if (texture == nullptr) {
    NSLog("the page could not be pictured: %@", error->message);
    g_error_free(error);
    (*snapshot)->answer(std::nullopt);
    return;
  }
  Image image{gdk_texture_get_width(texture), gdk_texture_get_height(texture), {}};
  const std::size_t stride = static_cast<std::size_t>(image.width) * 4;
  image.pixels.resize(stride * static_cast<std::size_t>(image.height));
  auto* bytes = reinterpret_cast<guchar*>(image.pixels.data());
  gdk_texture_download(texture, bytes, stride);
  g_object_unref(texture);
  // The toolkit gives blue, green, red, alpha in memory on little-endian machines.
  for (std::size_t at = 0; at + 3 < image.pixels.size(); at += 4) {
    std::swap(image.pixels[at], image.pixels[at + 2]);
  }
  (*snapshot)->answer(std::move(image));
}

// A frame that was set is laid out with one of the next pictures of the window. A view that cannot become as
// large as it was asked to be is pictured as it is then.
constexpr int kLayoutPictures = 3;

struct SnapshotAfterLayout {
  std::shared_ptr<Snapshot> snapshot;
  WebKitWebView* web;
  const LinuxView* view;
  int pictures = 0;

  bool isLaidOut() const {
    const Rect wanted = view->frame();
    return gtk_widget_get_width(view->widget()) == static_cast<int>(std::floor(wanted.width)) &&
           gtk_widget_get_height(view->widget()) == static_cast<int>(std::floor(wanted.height));
  }
  void take() const {
    webkit_web_view_get_snapshot(web, WEBKIT_SNAPSHOT_REGION_VISIBLE, WEBKIT_SNAPSHOT_OPTIONS_NONE, nullptr,
                                 snapshotTaken, new std::shared_ptr<Snapshot>(snapshot));
  }
};

}  // namespace

void LinuxWebView::evaluateJavaScript(const std::string& script, EvaluationCompletion completion) {
  if (script == kUserAgentScript) {
    // From the settings: no process is started for it and the answer is there before the first request.
    completion(PropertyList(userAgentNow()), std::nullopt);
    return;
  }
  auto* waiting = new EvaluationCompletion(std::move(completion));
  webkit_web_view_evaluate_javascript(engineView(), script.c_str(), static_cast<gssize>(script.size()),
                                      nullptr, nullptr, nullptr, evaluated, waiting);
}

std::optional<std::string> LinuxWebView::stringByEvaluatingJavaScriptFromString(const std::string& script) {
  if (script == kUserAgentScript) {
    return userAgentNow();
  }
  return std::nullopt;
}

void LinuxWebView::takeSnapshot(std::function<void(std::optional<Image>)> completion) {
  auto snapshot = std::make_shared<Snapshot>(Snapshot{std::move(completion)});
  dispatch().main().after(kSnapshotLimit, [snapshot] {
    if (snapshot->completion) {
      NSLog("the picture of the page has not come in time");
    }
    snapshot->answer(std::nullopt);
  });
  WebKitWebView* web = engineView();
  const SnapshotAfterLayout waiting{std::move(snapshot), web, this};
  if (waiting.isLaidOut() || gtk_widget_get_mapped(widget()) == FALSE) {
    waiting.take();
    return;
  }
  gtk_widget_add_tick_callback(
      widget(),
      [](GtkWidget*, GdkFrameClock*, gpointer data) -> gboolean {
        auto* later = static_cast<SnapshotAfterLayout*>(data);
        if (!later->isLaidOut() && ++later->pictures < kLayoutPictures) {
          return G_SOURCE_CONTINUE;
        }
        later->take();
        return G_SOURCE_REMOVE;
      },
      new SnapshotAfterLayout(waiting),
      [](gpointer data) { delete static_cast<SnapshotAfterLayout*>(data); });
}

}  // namespace platform

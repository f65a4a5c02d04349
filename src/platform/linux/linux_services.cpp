#include "platform/linux/linux_services.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <utility>

#include <gio/gio.h>

#include "platform/application.h"
#include "platform/log.h"

namespace platform {

namespace {

constexpr const char* kPath = "/com/lumo/LumoBrowser";
constexpr const char* kApplicationInterface = "org.freedesktop.Application";
constexpr const char* kOptionsKey = "com.lumo.activation-options";
// Far beyond what a person opens or selects as an address.
constexpr std::size_t kLargestRequest = std::size_t{256} * 1024;
constexpr std::size_t kMostItems = 1000;
constexpr std::size_t kLongestText = std::size_t{64} * 1024;

constexpr std::size_t kLongestReason = 500;

constexpr const char* kInterfaces = R"(
<node>
  <interface name="org.freedesktop.Application">
    <method name="Activate"><arg type="a{sv}" name="platform_data" direction="in"/></method>
    <method name="Open">
      <arg type="as" name="uris" direction="in"/>
      <arg type="a{sv}" name="platform_data" direction="in"/>
    </method>
    <method name="ActivateAction">
      <arg type="s" name="action_name" direction="in"/>
      <arg type="av" name="parameter" direction="in"/>
      <arg type="a{sv}" name="platform_data" direction="in"/>
    </method>
  </interface>
  <interface name="com.lumo.LumoBrowser.Services">
    <method name="SearchFromPasteboard">
      <arg type="as" name="types" direction="in"/>
      <arg type="as" name="filenames" direction="in"/>
      <arg type="s" name="string" direction="in"/>
      <arg type="s" name="userData" direction="in"/>
    </method>
  </interface>
</node>)";

using Handlers = std::shared_ptr<const ServiceHandlers>;
// Why a request was refused; absent when it was taken.
using Refusal = std::optional<std::string>;

constexpr const char* kTooLarge = "the request is too large";
constexpr const char* kTooMany = "too many requests wait";

std::string textAt(GVariant* tuple, gsize index) {
  GVariant* child = g_variant_get_child_value(tuple, index);
  gsize length = 0;
  const char* text = g_variant_get_string(child, &length);
  std::string copy(text, length);
  g_variant_unref(child);
  return copy;
}

// The list, or nothing when it is longer than any request that makes sense.
std::optional<std::vector<std::string>> textsAt(GVariant* tuple, gsize index) {
  GVariant* list = g_variant_get_child_value(tuple, index);
  const gsize count = g_variant_n_children(list);
  std::optional<std::vector<std::string>> texts;
  if (count <= kMostItems) {
    texts.emplace();
    for (gsize at = 0; at < count; ++at) {
      texts->push_back(textAt(list, at));
    }
  }
  g_variant_unref(list);
  const bool tooLong =
      texts && std::ranges::any_of(*texts, [](const auto& text) { return text.size() > kLongestText; });
  return tooLong ? std::nullopt : texts;
}

Refusal activate(const ServiceHandlers& handlers, GVariant* arguments) {
  GVariant* data = g_variant_get_child_value(arguments, 0);
  guint32 value = 0;
  const bool given = g_variant_lookup(data, kOptionsKey, "u", &value);
  g_variant_unref(data);
  const std::optional<unsigned> options = given ? std::optional<unsigned>(value) : std::nullopt;
  return handlers.activate(options) ? Refusal() : kTooMany;
}

Refusal open(const ServiceHandlers& handlers, GVariant* arguments) {
  auto addresses = textsAt(arguments, 0);
  if (!addresses) {
    return kTooLarge;
  }
  return handlers.open(std::move(*addresses)) ? Refusal() : kTooMany;
}

Refusal search(const ServiceHandlers& handlers, GVariant* arguments) {
  auto types = textsAt(arguments, 0);
  auto filenames = textsAt(arguments, 1);
  std::string text = textAt(arguments, 2);
  std::string userData = textAt(arguments, 3);
  if (!types || !filenames || text.size() > kLongestText || userData.size() > kLongestText) {
    return kTooLarge;
  }
  const auto has = [&types](std::string_view type) {
    return std::ranges::find(*types, type) != types->end();
  };
  Pasteboard pasteboard;
  if (has(kFilenamesPboardType)) {
    if (!std::ranges::all_of(*filenames, [](const auto& name) { return name.starts_with('/'); })) {
      return "a file name is no absolute path";
    }
    pasteboard.filenames = std::move(*filenames);
  }
  if (has(kStringPboardType)) {
    pasteboard.string = std::move(text);
  }
  pasteboard.types = std::move(*types);
  return handlers.search(std::move(pasteboard), std::move(userData)) ? Refusal() : kTooMany;
}

// GDBus has checked the method and the types of the arguments against the description above.
void called(GDBusConnection*, const char*, const char*, const char*, const char* method, GVariant* arguments,
            GDBusMethodInvocation* invocation, gpointer data) {
  const Handlers handlers = *static_cast<Handlers*>(data);
  const std::string_view name = method;
  Refusal refusal;
  if (g_variant_get_size(arguments) > kLargestRequest) {
    refusal = kTooLarge;
  } else if (name == "Activate") {
    refusal = activate(*handlers, arguments);
  } else if (name == "Open") {
    refusal = open(*handlers, arguments);
  } else if (name == "SearchFromPasteboard") {
    refusal = search(*handlers, arguments);
  } else {
    refusal = "there is no such action";
  }
  if (!refusal) {
    g_dbus_method_invocation_return_value(invocation, nullptr);
    return;
  }
  g_dbus_method_invocation_return_error(invocation, G_DBUS_ERROR, G_DBUS_ERROR_INVALID_ARGS, "%s",
                                        refusal->c_str());
}

// Says in the log which request was refused and why, whether this file refused it or GDBus did, which checks
// method and argument types by itself. On a thread of GDBus.
GDBusMessage* sending(GDBusConnection*, GDBusMessage* message, gboolean incoming, gpointer) {
  if (incoming == FALSE && g_dbus_message_get_message_type(message) == G_DBUS_MESSAGE_TYPE_ERROR) {
    const char* asker = g_dbus_message_get_destination(message);
    GVariant* body = g_dbus_message_get_body(message);
    const bool hasText = body != nullptr && g_variant_is_of_type(body, G_VARIANT_TYPE("(s)")) != FALSE;
    const std::string why = hasText ? textAt(body, 0) : g_dbus_message_get_error_name(message);
    // It may repeat what the asker sent.
    NSLog("Request of %s refused: %s", asker == nullptr ? "an unknown program" : asker,
          why.substr(0, kLongestReason));
  }
  return message;
}

}  // namespace

void registerServices(GDBusConnection* connection, const Handlers& handlers) {
  static constexpr GDBusInterfaceVTable table = {called, nullptr, nullptr, {}};
  GDBusNodeInfo* node = g_dbus_node_info_new_for_xml(kInterfaces, nullptr);
  for (GDBusInterfaceInfo** info = node->interfaces; *info != nullptr; ++info) {
    GError* error = nullptr;
    g_dbus_connection_register_object(
        connection, kPath, *info, &table, new Handlers(handlers),
        [](gpointer data) { delete static_cast<Handlers*>(data); }, &error);
    if (error != nullptr) {
      NSLog("%s cannot be offered on the session bus: %s", (*info)->name, error->message);
      g_error_free(error);
    }
  }
  g_dbus_node_info_unref(node);
  g_dbus_connection_add_filter(connection, sending, nullptr, nullptr);
}

std::optional<std::string> requestActivation(GDBusConnection* connection, unsigned options, Millis patience) {
  GVariantBuilder data;
  g_variant_builder_init(&data, G_VARIANT_TYPE("a{sv}"));
  g_variant_builder_add(&data, "{sv}", kOptionsKey, g_variant_new_uint32(options));
  GError* error = nullptr;
  GVariant* answer = g_dbus_connection_call_sync(
      connection, kServiceName, kPath, kApplicationInterface, "Activate", g_variant_new("(a{sv})", &data),
      nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START, static_cast<int>(std::max<Millis::rep>(patience.count(), 1)),
      nullptr, &error);
  if (answer == nullptr) {
    std::string reason = error->message;
    g_error_free(error);
    return reason;
  }
  g_variant_unref(answer);
  return std::nullopt;
}

}  // namespace platform

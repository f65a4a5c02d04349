#pragma once

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gio/gio.h>

// Another program that asks the kiosk for something. Its calls return at once, are sent as soon as the kiosk
// has its name on the bus, and are answered while the default main context runs.
class BusClient {
 public:
  static constexpr const char* kName = "com.lumo.LumoBrowser";

  explicit BusClient(const std::string& address) {
    connection_ = g_dbus_connection_new_for_address_sync(
        address.c_str(),
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, nullptr, nullptr);
    if (connection_ == nullptr) {
      throw std::runtime_error("the bus does not take a client");
    }
    watch_ = g_bus_watch_name_on_connection(
        connection_, kName, G_BUS_NAME_WATCHER_FLAGS_NONE,
        [](GDBusConnection*, const char*, const char*, gpointer self) {
          static_cast<BusClient*>(self)->named();
        },
        nullptr, this, nullptr);
  }
  ~BusClient() {
    inbox_->listener = nullptr;
    g_bus_unwatch_name(watch_);
    for (const Call& call : waiting_) {
      g_variant_unref(call.arguments);
    }
    g_object_unref(connection_);
  }
  BusClient(const BusClient&) = delete;
  BusClient& operator=(const BusClient&) = delete;

  GDBusConnection* connection() const { return connection_; }
  // How often the kiosk has taken its name.
  int appearances() const { return appearances_; }
  // The error names of calls that were refused, in the order of their answers, "" for one that was not.
  const std::vector<std::string>& answers() const { return inbox_->answers; }
  void whenAnswered(std::function<void(const std::string& error)> listener) {
    inbox_->listener = std::move(listener);
  }

  void open(const std::vector<std::string>& addresses) {
    call("org.freedesktop.Application", "Open", g_variant_new("(@as@a{sv})", list(addresses), options({})));
  }
  void activate(const std::vector<std::pair<std::string, unsigned>>& platformData) {
    call("org.freedesktop.Application", "Activate", g_variant_new("(@a{sv})", options(platformData)));
  }
  void activateAction(const std::string& name) {
    call("org.freedesktop.Application", "ActivateAction",
         g_variant_new("(s@av@a{sv})", name.c_str(), g_variant_new_array(G_VARIANT_TYPE_VARIANT, nullptr, 0),
                       options({})));
  }
  void search(const std::vector<std::string>& types, const std::vector<std::string>& filenames,
              const std::string& text, const std::string& userData) {
    call("com.lumo.LumoBrowser.Services", "SearchFromPasteboard",
         g_variant_new("(@as@asss)", list(types), list(filenames), text.c_str(), userData.c_str()));
  }
  void call(const std::string& interface, const std::string& method, GVariant* arguments) {
    waiting_.push_back({interface, method, g_variant_ref_sink(arguments)});
    if (present_) {
      sendWaiting();
    }
  }

 private:
  // Shared with the answers, which may come when the client has gone.
  struct Inbox {
    std::vector<std::string> answers;
    std::function<void(const std::string&)> listener;
  };
  struct Call {
    std::string interface;
    std::string method;
    GVariant* arguments;
  };

  static GVariant* list(const std::vector<std::string>& texts) {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("as"));
    for (const std::string& text : texts) {
      g_variant_builder_add(&builder, "s", text.c_str());
    }
    return g_variant_builder_end(&builder);
  }
  static GVariant* options(const std::vector<std::pair<std::string, unsigned>>& entries) {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("a{sv}"));
    for (const auto& [key, value] : entries) {
      g_variant_builder_add(&builder, "{sv}", key.c_str(), g_variant_new_uint32(value));
    }
    return g_variant_builder_end(&builder);
  }

  void named() {
    present_ = true;
    ++appearances_;
    sendWaiting();
  }
  void sendWaiting() {
    for (const Call& call : std::exchange(waiting_, {})) {
      g_dbus_connection_call(connection_, kName, "/com/lumo/LumoBrowser", call.interface.c_str(),
                             call.method.c_str(), call.arguments, nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START,
                             10'000, nullptr, answered, new std::shared_ptr<Inbox>(inbox_));
      g_variant_unref(call.arguments);
    }
  }
  static void answered(GObject* source, GAsyncResult* result, gpointer data) {
    const std::unique_ptr<std::shared_ptr<Inbox>> inbox(static_cast<std::shared_ptr<Inbox>*>(data));
    GError* error = nullptr;
    GVariant* answer = g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &error);
    std::string name;
    if (answer == nullptr) {
      char* remote = g_dbus_error_get_remote_error(error);
      name = remote == nullptr ? "local error" : remote;
      g_free(remote);
      g_error_free(error);
    } else {
      g_variant_unref(answer);
    }
    (*inbox)->answers.push_back(name);
    const auto listener = (*inbox)->listener;
    if (listener) {
      listener(name);
    }
  }

  GDBusConnection* connection_ = nullptr;
  guint watch_ = 0;
  bool present_ = false;
  int appearances_ = 0;
  std::vector<Call> waiting_;
  std::shared_ptr<Inbox> inbox_ = std::make_shared<Inbox>();
};

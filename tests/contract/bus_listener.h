#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include <gio/gio.h>

#include "platform/message_bus.h"

// Another program of the station: hears what is sent on the bus while the default main context runs.
class BusListener {
 public:
  explicit BusListener(const std::string& address) {
    GError* error = nullptr;
    connection_ = g_dbus_connection_new_for_address_sync(
        address.c_str(),
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, nullptr, &error);
    if (connection_ == nullptr) {
      const std::string why = error->message;
      g_error_free(error);
      throw std::runtime_error("no listener: " + why);
    }
    subscription_ = g_dbus_connection_signal_subscribe(
        connection_, nullptr, "com.lumo.DistributedNotifications", nullptr,
        "/com/lumo/DistributedNotifications", nullptr, G_DBUS_SIGNAL_FLAGS_NONE, heard, this, nullptr);
    // The bus has the subscription when it has answered a later question.
    GVariant* answer = g_dbus_connection_call_sync(
        connection_, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetId",
        nullptr, nullptr, G_DBUS_CALL_FLAGS_NONE, 10'000, nullptr, nullptr);
    if (answer == nullptr) {
      throw std::runtime_error("the bus does not answer");
    }
    g_variant_unref(answer);
  }
  ~BusListener() {
    g_dbus_connection_signal_unsubscribe(connection_, subscription_);
    g_object_unref(connection_);
  }
  BusListener(const BusListener&) = delete;
  BusListener& operator=(const BusListener&) = delete;

  GDBusConnection* connection() const { return connection_; }
  const std::vector<platform::DistributedNotification>& heard() const { return heard_; }

 private:
  static void heard(GDBusConnection*, const char*, const char*, const char*, const char* name,
                    GVariant* arguments, gpointer self) {
    platform::DistributedNotification notification;
    notification.name = name;
    if (g_variant_is_of_type(arguments, G_VARIANT_TYPE("(sa{ss})")) == FALSE) {
      notification.object = std::string("wrong type ") + g_variant_get_type_string(arguments);
      static_cast<BusListener*>(self)->heard_.push_back(notification);
      return;
    }
    const char* object = nullptr;
    GVariantIter* texts = nullptr;
    g_variant_get(arguments, "(&sa{ss})", &object, &texts);
    if (*object != '\0') {
      notification.object = object;
    }
    const char* key = nullptr;
    const char* value = nullptr;
    while (g_variant_iter_loop(texts, "{&s&s}", &key, &value) != FALSE) {
      notification.userInfo.emplace_back(key, value);
    }
    g_variant_iter_free(texts);
    static_cast<BusListener*>(self)->heard_.push_back(notification);
  }

  GDBusConnection* connection_ = nullptr;
  guint subscription_ = 0;
  std::vector<platform::DistributedNotification> heard_;
};

#include "platform/wifi_name.h"

#include <chrono>
#include <cstdarg>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <tuple>

#include <gio/gio.h>
#include <gtest/gtest.h>
#include <linux/wireless.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "tests/contract/private_bus.h"

// The name of the Wi-Fi network: as NetworkManager tells it on a bus of the test's own, and as the wireless
// interfaces tell it.

namespace {

// What wireless interfaces there are, with the names of their networks.
std::map<std::string, std::string> wirelessInterfaces;

}  // namespace

// In place of the C library's: what a machine has of wireless hardware is up to the test.
extern "C" int ioctl(int descriptor, unsigned long request, ...) noexcept {
  va_list arguments;
  va_start(arguments, request);
  void* argument = va_arg(arguments, void*);
  va_end(arguments);
  if (request != SIOCGIWESSID) {
    return static_cast<int>(syscall(SYS_ioctl, descriptor, request, argument));
  }
  auto* wireless = static_cast<iwreq*>(argument);
  const auto found = wirelessInterfaces.find(wireless->ifr_name);
  if (found == wirelessInterfaces.end() || wireless->u.essid.length < found->second.size()) {
    errno = found == wirelessInterfaces.end() ? EOPNOTSUPP : E2BIG;
    return -1;
  }
  std::memcpy(wireless->u.essid.pointer, found->second.data(), found->second.size());
  wireless->u.essid.length = static_cast<__u16>(found->second.size());
  wireless->u.essid.flags = 1;
  return 0;
}

namespace {

constexpr const char* kManager = "org.freedesktop.NetworkManager";
constexpr const char* kDevice = "org.freedesktop.NetworkManager.Device";
constexpr const char* kWireless = "org.freedesktop.NetworkManager.Device.Wireless";
constexpr const char* kAccessPoint = "org.freedesktop.NetworkManager.AccessPoint";
constexpr unsigned kEthernet = 1;
constexpr unsigned kWifi = 2;

std::string device(int number) {
  return "/org/freedesktop/NetworkManager/Devices/" + std::to_string(number);
}
std::string accessPoint(int number) {
  return "/org/freedesktop/NetworkManager/AccessPoint/" + std::to_string(number);
}

// NetworkManager as far as its properties go, which are what the test sets. It answers on a thread of the
// library's, so the test may block meanwhile.
class NetworkManagerDouble {
 public:
  explicit NetworkManagerDouble(const std::string& address) {
    connection_ = g_dbus_connection_new_for_address_sync(
        address.c_str(),
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, nullptr, nullptr);
    if (connection_ == nullptr) {
      throw std::runtime_error("the bus does not take a service");
    }
    g_dbus_connection_add_filter(connection_, filter, this, nullptr);
    GVariant* answer = g_dbus_connection_call_sync(
        connection_, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName",
        g_variant_new("(su)", kManager, 0U), nullptr, G_DBUS_CALL_FLAGS_NONE, 10'000, nullptr, nullptr);
    if (answer == nullptr) {
      throw std::runtime_error("the bus does not give the name");
    }
    g_variant_unref(answer);
  }
  ~NetworkManagerDouble() {
    // No filter runs after this.
    g_dbus_connection_close_sync(connection_, nullptr, nullptr);
    g_object_unref(connection_);
    for (const auto& [key, value] : properties_) {
      g_variant_unref(value);
    }
  }
  NetworkManagerDouble(const NetworkManagerDouble&) = delete;
  NetworkManagerDouble& operator=(const NetworkManagerDouble&) = delete;

  // Takes the value.
  void set(const std::string& object, const std::string& interface, const std::string& name,
           GVariant* value) {
    const std::lock_guard lock(mutex_);
    GVariant*& kept = properties_[{object, interface, name}];
    if (kept != nullptr) {
      g_variant_unref(kept);
    }
    kept = g_variant_ref_sink(value);
  }
  void setDevices(int count) {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("ao"));
    for (int number = 1; number <= count; ++number) {
      g_variant_builder_add(&builder, "o", device(number).c_str());
    }
    set("/org/freedesktop/NetworkManager", kManager, "Devices", g_variant_builder_end(&builder));
  }
  void setDevice(int number, unsigned type) {
    set(device(number), kDevice, "DeviceType", g_variant_new_uint32(type));
  }
  // A wireless device on the network with these bytes as its name.
  void setWireless(int number, const std::string& ssid) {
    setDevice(number, kWifi);
    set(device(number), kWireless, "ActiveAccessPoint",
        g_variant_new_object_path(accessPoint(number).c_str()));
    set(accessPoint(number), kAccessPoint, "Ssid",
        g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, ssid.data(), ssid.size(), 1));
  }
  void setWithoutNetwork(int number) {
    setDevice(number, kWifi);
    set(device(number), kWireless, "ActiveAccessPoint", g_variant_new_object_path("/"));
  }
  // Takes questions and leaves them without an answer.
  void fallSilent() {
    const std::lock_guard lock(mutex_);
    silent_ = true;
  }

 private:
  static GDBusMessage* filter(GDBusConnection* connection, GDBusMessage* message, gboolean incoming,
                              gpointer self) {
    if (incoming == FALSE || g_dbus_message_get_message_type(message) != G_DBUS_MESSAGE_TYPE_METHOD_CALL) {
      return message;
    }
    static_cast<NetworkManagerDouble*>(self)->answer(connection, message);
    g_object_unref(message);
    return nullptr;
  }

  void answer(GDBusConnection* connection, GDBusMessage* question) {
    const std::lock_guard lock(mutex_);
    GVariant* body = g_dbus_message_get_body(question);
    if (silent_ || body == nullptr || g_variant_is_of_type(body, G_VARIANT_TYPE("(ss)")) == FALSE) {
      return;
    }
    const char* interface = nullptr;
    const char* name = nullptr;
    g_variant_get(body, "(&s&s)", &interface, &name);
    const auto found = properties_.find({g_dbus_message_get_path(question), interface, name});
    GDBusMessage* reply = nullptr;
    if (found == properties_.end()) {
      reply = g_dbus_message_new_method_error_literal(question, "org.freedesktop.DBus.Error.InvalidArgs",
                                                      "No such property");
    } else {
      reply = g_dbus_message_new_method_reply(question);
      g_dbus_message_set_body(reply, g_variant_new("(v)", found->second));
    }
    g_dbus_connection_send_message(connection, reply, G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr, nullptr);
    g_object_unref(reply);
  }

  GDBusConnection* connection_ = nullptr;
  std::mutex mutex_;
  std::map<std::tuple<std::string, std::string, std::string>, GVariant*> properties_;
  bool silent_ = false;
};

class WifiNameTest : public testing::Test {
 protected:
  WifiNameTest() : address_("DBUS_SYSTEM_BUS_ADDRESS", bus.address()) { wirelessInterfaces.clear(); }
  ~WifiNameTest() override { wirelessInterfaces.clear(); }

  PrivateBus bus;

 private:
  ScopedEnvironment address_;
};

class WifiNameFromNetworkManagerTest : public WifiNameTest {
 protected:
  NetworkManagerDouble manager{bus.address()};
};

}  // namespace

TEST_F(WifiNameFromNetworkManagerTest, IsThatOfTheAccessPointOfTheWirelessDevice) {
  manager.setDevices(2);
  manager.setDevice(1, kEthernet);
  manager.setWireless(2, "Shop Floor");
  EXPECT_EQ(platform::wifiName(), "Shop Floor");
}

TEST_F(WifiNameFromNetworkManagerTest, ComesBeforeWhatTheInterfacesSay) {
  wirelessInterfaces["lo"] = "Elsewhere";
  manager.setDevices(1);
  manager.setWireless(1, "Shop");
  EXPECT_EQ(platform::wifiName(), "Shop");
}

TEST_F(WifiNameFromNetworkManagerTest, IsThatOfTheFirstDeviceThatIsOnANetwork) {
  manager.setDevices(4);
  manager.setWithoutNetwork(1);
  manager.setWireless(2, "");
  manager.setWireless(3, "Third");
  manager.setWireless(4, "Fourth");
  EXPECT_EQ(platform::wifiName(), "Third");
}

TEST_F(WifiNameFromNetworkManagerTest, IsAbsentOnAWiredComputer) {
  manager.setDevices(1);
  manager.setDevice(1, kEthernet);
  EXPECT_EQ(platform::wifiName(), std::nullopt);
}

TEST_F(WifiNameFromNetworkManagerTest, IsAbsentWithoutDevicesAndWithoutAccessPoint) {
  EXPECT_EQ(platform::wifiName(), std::nullopt);
  manager.setDevices(0);
  EXPECT_EQ(platform::wifiName(), std::nullopt);
  manager.setDevices(1);
  EXPECT_EQ(platform::wifiName(), std::nullopt);
  manager.setWithoutNetwork(1);
  EXPECT_EQ(platform::wifiName(), std::nullopt);
}

TEST_F(WifiNameFromNetworkManagerTest, HasBytesThatAreNoTextReplaced) {
  manager.setDevices(1);
  manager.setWireless(1, "Caf\xe9 M\xc3\xbcller");
  EXPECT_EQ(platform::wifiName(), "Caf\uFFFD M\u00fcller");
}

TEST_F(WifiNameFromNetworkManagerTest, IsNotTakenFromPropertiesOfAnotherType) {
  manager.setDevices(1);
  manager.setDevice(1, kWifi);
  manager.set(device(1), kWireless, "ActiveAccessPoint", g_variant_new_string("nonsense"));
  EXPECT_EQ(platform::wifiName(), std::nullopt);
  manager.setWireless(1, "Shop");
  manager.set(accessPoint(1), kAccessPoint, "Ssid", g_variant_new_string("Shop"));
  EXPECT_EQ(platform::wifiName(), std::nullopt);
  manager.set("/org/freedesktop/NetworkManager", kManager, "Devices", g_variant_new_boolean(TRUE));
  EXPECT_EQ(platform::wifiName(), std::nullopt);
}

TEST_F(WifiNameFromNetworkManagerTest, IsNotWaitedForBeyondTwoSeconds) {
  manager.setDevices(1);
  manager.setWireless(1, "Shop");
  manager.fallSilent();
  wirelessInterfaces["lo"] = "From the interface";
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(platform::wifiName(), "From the interface");
  const auto elapsed = std::chrono::steady_clock::now() - start;
  EXPECT_GE(elapsed, std::chrono::milliseconds(1900));
  EXPECT_LT(elapsed, std::chrono::seconds(5));
}

TEST_F(WifiNameTest, ComesFromTheWirelessInterfaceWithoutNetworkManager) {
  wirelessInterfaces["lo"] = "Shop";
  EXPECT_EQ(platform::wifiName(), "Shop");
}

TEST_F(WifiNameTest, ComesFromTheWirelessInterfaceWithoutASystemBus) {
  bus.stop();
  wirelessInterfaces["lo"] = "Shop";
  EXPECT_EQ(platform::wifiName(), "Shop");
}

TEST_F(WifiNameTest, ComesFromTheWirelessInterfaceWhereTheBusIsSilent) {
  bus.freeze();
  wirelessInterfaces["lo"] = "Shop";
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(platform::wifiName(), "Shop");
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
  bus.thaw();
}

TEST_F(WifiNameTest, ComesFromTheInterfaceWithAllThirtyTwoBytes) {
  const std::string longest(IW_ESSID_MAX_SIZE, 'x');
  wirelessInterfaces["lo"] = longest;
  EXPECT_EQ(platform::wifiName(), longest);
}

TEST_F(WifiNameTest, IsAbsentWhereAWirelessInterfaceIsOnNoNetworkOrThereIsNone) {
  EXPECT_EQ(platform::wifiName(), std::nullopt);
  wirelessInterfaces["lo"] = "";
  EXPECT_EQ(platform::wifiName(), std::nullopt);
}

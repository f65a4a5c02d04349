#include "station/bus_peer.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <stdexcept>

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include "station/local_socket.h"

namespace station {

namespace {

constexpr const char* kKiosk = "com.lumo.LumoBrowser";
constexpr const char* kKioskPath = "/com/lumo/LumoBrowser";
constexpr const char* kApplication = "org.freedesktop.Application";
constexpr const char* kBus = "org.freedesktop.DBus";
constexpr const char* kBusPath = "/org/freedesktop/DBus";
constexpr const char* kNotifications = "com.lumo.DistributedNotifications";
constexpr const char* kNotificationPath = "/com/lumo/DistributedNotifications";
// What a message has at least (D-Bus specification, "Message Format").
constexpr std::size_t kSmallestMessage = 16;

GVariant* openArguments(const std::vector<std::string>& addresses) {
  GVariantBuilder list;
  g_variant_builder_init(&list, G_VARIANT_TYPE("as"));
  for (const std::string& address : addresses) {
    g_variant_builder_add(&list, "s", address.c_str());
  }
  return g_variant_new("(as@a{sv})", &list, g_variant_new_array(G_VARIANT_TYPE("{sv}"), nullptr, 0));
}

}  // namespace

BusPeer::BusPeer(const std::string& address) : socket_(connectedTo(address.substr(address.find('=') + 1))) {
  if (!socket_) {
    throw std::runtime_error("no bus at " + address);
  }
  std::string user;
  for (const char digit : std::to_string(geteuid())) {
    user += "3" + std::string(1, digit);
  }
  write(std::string(1, '\0') + "AUTH EXTERNAL " + user + "\r\n");
  if (!line().starts_with("OK ")) {
    throw std::runtime_error("the bus does not know who asks");
  }
  write("BEGIN\r\n");
  if (askBus("Hello", nullptr) == nullptr) {
    throw std::runtime_error("the bus does not take a client");
  }
}

std::string BusPeer::line() {
  for (auto end = input_.find("\r\n");; end = input_.find("\r\n")) {
    if (end != std::string::npos) {
      std::string text = input_.substr(0, end);
      input_.erase(0, end + 2);
      return text;
    }
    char bytes[256];
    const ssize_t count = ::read(socket_.get(), bytes, sizeof bytes);
    if (count <= 0) {
      throw std::runtime_error("the bus says nothing");
    }
    input_.append(bytes, static_cast<std::size_t>(count));
  }
}

void BusPeer::write(const std::string& bytes) {
  for (std::size_t sent = 0; sent < bytes.size();) {
    const ssize_t count = ::send(socket_.get(), bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
    if (count <= 0) {
      closed_ = true;
      return;
    }
    sent += static_cast<std::size_t>(count);
  }
}

std::string BusPeer::bytesOf(GDBusMessage* message) {
  g_dbus_message_set_serial(message, ++last_);
  gsize size = 0;
  guchar* blob = g_dbus_message_to_blob(message, &size, G_DBUS_CAPABILITY_FLAGS_NONE, nullptr);
  if (blob == nullptr) {
    throw std::runtime_error("no message can be made of this");
  }
  std::string bytes(reinterpret_cast<const char*>(blob), size);
  g_free(blob);
  return bytes;
}

std::uint32_t BusPeer::send(const std::string& destination, const std::string& path,
                            const std::string& interface, const std::string& method, GVariant* arguments) {
  const Message message(
      g_dbus_message_new_method_call(destination.c_str(), path.c_str(), interface.c_str(), method.c_str()));
  if (arguments != nullptr) {
    g_dbus_message_set_body(message.get(), arguments);
  }
  write(bytesOf(message.get()));
  return last_;
}

std::uint32_t BusPeer::sendToKiosk(const std::string& interface, const std::string& method,
                                   GVariant* arguments) {
  return send(kKiosk, kKioskPath, interface, method, arguments);
}

std::uint32_t BusPeer::sendOpen(const std::vector<std::string>& addresses) {
  return sendToKiosk(kApplication, "Open", openArguments(addresses));
}

void BusPeer::sendBrokenOpen(const std::string& address) {
  const Message message(g_dbus_message_new_method_call(kKiosk, kKioskPath, kApplication, "Open"));
  g_dbus_message_set_body(message.get(), openArguments({address}));
  std::string bytes = bytesOf(message.get());
  const auto at = bytes.find(address);
  const auto end = bytes.begin() + static_cast<std::ptrdiff_t>(at + address.size());
  std::replace(end - static_cast<std::ptrdiff_t>(address.size()), end, '?', '\xFF');
  write(bytes);
}

void BusPeer::notify(const std::string& name, const std::string& key, const std::string& value) {
  const Message message(g_dbus_message_new_signal(kNotificationPath, kNotifications, name.c_str()));
  GVariantBuilder texts;
  g_variant_builder_init(&texts, G_VARIANT_TYPE("a{ss}"));
  g_variant_builder_add(&texts, "{ss}", key.c_str(), value.c_str());
  g_dbus_message_set_body(message.get(), g_variant_new("(sa{ss})", "", &texts));
  write(bytesOf(message.get()));
}

bool BusPeer::read() {
  pollfd ready = {socket_.get(), POLLIN, 0};
  constexpr auto patience = std::chrono::duration_cast<std::chrono::milliseconds>(kPatience);
  if (closed_ || poll(&ready, 1, static_cast<int>(patience.count())) != 1) {
    return false;
  }
  char bytes[65536];
  const ssize_t count = ::read(socket_.get(), bytes, sizeof bytes);
  if (count <= 0) {
    closed_ = true;
    return false;
  }
  input_.append(bytes, static_cast<std::size_t>(count));
  while (input_.size() >= kSmallestMessage) {
    auto* data = reinterpret_cast<guchar*>(input_.data());
    const gssize needed = g_dbus_message_bytes_needed(data, input_.size(), nullptr);
    if (needed < 0) {
      throw std::runtime_error("the bus sends what is no message");
    }
    if (input_.size() < static_cast<std::size_t>(needed)) {
      break;
    }
    GError* error = nullptr;
    Message message(
        g_dbus_message_new_from_blob(data, static_cast<gsize>(needed), G_DBUS_CAPABILITY_FLAGS_NONE, &error));
    if (message == nullptr) {
      throw std::runtime_error(error->message);
    }
    input_.erase(0, static_cast<std::size_t>(needed));
    take(std::move(message));
  }
  return true;
}

void BusPeer::take(Message message) {
  const std::uint32_t call = g_dbus_message_get_reply_serial(message.get());
  if (call != 0) {
    answers_[call] = std::move(message);
    return;
  }
  GVariant* body = g_dbus_message_get_body(message.get());
  const char* interface = g_dbus_message_get_interface(message.get());
  if (interface == nullptr || std::string(interface) != kNotifications || body == nullptr ||
      g_variant_is_of_type(body, G_VARIANT_TYPE("(sa{ss})")) == FALSE) {
    return;
  }
  HeardNotification& notification = heard_.emplace_back();
  notification.name = g_dbus_message_get_member(message.get());
  GVariantIter* texts = nullptr;
  g_variant_get(body, "(&sa{ss})", nullptr, &texts);
  const char* key = nullptr;
  const char* value = nullptr;
  while (g_variant_iter_next(texts, "{&s&s}", &key, &value) != FALSE) {
    notification.texts[key] = value;
  }
  g_variant_iter_free(texts);
}

std::optional<std::string> BusPeer::answer(std::uint32_t call) {
  const auto end = std::chrono::steady_clock::now() + kPatience;
  while (answers_.count(call) == 0) {
    if (std::chrono::steady_clock::now() > end || !read()) {
      return std::nullopt;
    }
  }
  const char* error = g_dbus_message_get_error_name(answers_[call].get());
  return error == nullptr ? "" : error;
}

GVariant* BusPeer::result(std::uint32_t call) {
  return answer(call) == "" ? g_dbus_message_get_body(answers_[call].get()) : nullptr;
}

bool BusPeer::isDropped() {
  while (read()) {
  }
  return closed_;
}

GVariant* BusPeer::askBus(const char* method, GVariant* arguments) {
  return result(send(kBus, kBusPath, kBus, method, arguments));
}

void BusPeer::listen() {
  const std::string rule = std::string("type='signal',interface='") + kNotifications + "'";
  if (answer(send(kBus, kBusPath, kBus, "AddMatch", g_variant_new("(s)", rule.c_str()))) != "") {
    throw std::runtime_error("the bus does not take a listener");
  }
}

std::vector<HeardNotification> BusPeer::heardUntil(const std::string& name) {
  const auto isThere = [&] {
    return std::ranges::find(heard_, name, &HeardNotification::name) != heard_.end();
  };
  while (!isThere()) {
    if (!read()) {
      return {};
    }
  }
  return heard_;
}

pid_t BusPeer::kioskProcess() {
  GVariant* body = askBus("GetConnectionUnixProcessID", g_variant_new("(s)", kKiosk));
  guint32 process = 0;
  if (body != nullptr && g_variant_is_of_type(body, G_VARIANT_TYPE("(u)")) != FALSE) {
    g_variant_get(body, "(u)", &process);
  }
  return static_cast<pid_t>(process);
}

bool BusPeer::seesKiosk() {
  return waitUntil([this] { return kioskProcess() != 0; });
}

}  // namespace station

#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <gio/gio.h>

#include "platform/file_descriptor.h"
#include "station/waiting.h"

namespace station {

// A notification as it came: the name, and key and value of its texts.
struct HeardNotification {
  std::string name;
  std::map<std::string, std::string> texts;
};

// Another program on the session bus, byte by byte: it reads only when it is asked to, and can send what no
// library would. For one thread.
class BusPeer {
 public:
  // `address` is that of a socket with a path. Throws std::runtime_error when the bus does not take it.
  explicit BusPeer(const std::string& address);
  BusPeer(const BusPeer&) = delete;
  BusPeer& operator=(const BusPeer&) = delete;

  // Sends a call, whose arguments are taken, and returns its number at once.
  std::uint32_t send(const std::string& destination, const std::string& path, const std::string& interface,
                     const std::string& method, GVariant* arguments);
  // The same to the kiosk.
  std::uint32_t sendOpen(const std::vector<std::string>& addresses);
  std::uint32_t sendToKiosk(const std::string& interface, const std::string& method, GVariant* arguments);
  // Sends a call of Open in which each '?' of the address has become the byte 0xFF.
  void sendBrokenOpen(const std::string& address);
  // Sends a notification of its own.
  void notify(const std::string& name, const std::string& key, const std::string& value);

  // Waits for the answer to a call: the name of its error, empty for none. Absent when the bus has closed the
  // connection or no answer came in time.
  std::optional<std::string> answer(std::uint32_t call);
  // The same, and what was answered: null for an error. Not owned.
  GVariant* result(std::uint32_t call);
  // Waits until the bus has closed the connection.
  bool isDropped();

  // From here on the bus gives it all notifications.
  void listen();
  // Reads until a notification of that name has come, and gives all that have come until then. Empty when it
  // does not come in time.
  std::vector<HeardNotification> heardUntil(const std::string& name);

  // The process that has the kiosk's name; 0 for none.
  pid_t kioskProcess();
  // Waits until somebody has the kiosk's name.
  bool seesKiosk();

 private:
  struct Unreference {
    void operator()(void* object) const { g_object_unref(object); }
  };
  using Message = std::unique_ptr<GDBusMessage, Unreference>;

  std::string bytesOf(GDBusMessage* message);
  void write(const std::string& bytes);
  // Reads what there is, waiting for something; false when the bus has closed the connection or time is up.
  bool read();
  void take(Message message);
  GVariant* askBus(const char* method, GVariant* arguments);
  std::string line();

  platform::FileDescriptor socket_;
  std::string input_;
  std::uint32_t last_ = 0;
  std::map<std::uint32_t, Message> answers_;
  std::vector<HeardNotification> heard_;
  bool closed_ = false;
};

}  // namespace station

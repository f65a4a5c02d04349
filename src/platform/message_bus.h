#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace platform {

// A notification for other programs: a name, an optional object and texts. Order of userInfo is kept on
// sending.
struct DistributedNotification {
  std::string name;
  std::optional<std::string> object;
  std::vector<std::pair<std::string, std::string>> userInfo;
  bool operator==(const DistributedNotification&) const = default;
};

std::string description(const DistributedNotification& notification);

// Messages to the other programs of the station.
class MessageBus {
 public:
  virtual ~MessageBus() = default;
  // Sends the notification and returns when it has left the process, so that it is not lost when the program
  // ends. Main queue. Text that is not UTF-8 is repaired, a name that the bus does not allow is refused, both
  // with a line in the log. False when it could not be sent (no bus, said once in the log); the kiosk goes
  // on.
  virtual bool postNotification(const DistributedNotification& notification) = 0;
};

}  // namespace platform

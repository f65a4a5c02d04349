#include "platform/message_bus.h"

#include "platform/format.h"

namespace platform {

std::string description(const DistributedNotification& notification) {
  return stringWithFormat("{name = %@; object = %@; userInfo = %@}", notification.name, notification.object,
                          notification.userInfo);
}

}  // namespace platform

#pragma once

#include "platform/message_bus.h"

namespace platform {

class SessionBus;

// Notifications as signals on the session bus: object /com/lumo/DistributedNotifications, interface
// com.lumo.DistributedNotifications, the notification's name as member, arguments (s object, a{ss} userInfo)
// with "" for no object. `bus` must outlive it. A call takes SessionBus::kPatience at most.
class LinuxMessageBus : public MessageBus {
 public:
  explicit LinuxMessageBus(SessionBus& bus) : bus_(bus) {}

  bool postNotification(const DistributedNotification& notification) override;

 private:
  SessionBus& bus_;
};

}  // namespace platform

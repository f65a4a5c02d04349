#include "tests/fakes/fake_message_bus.h"

#include <algorithm>

#include "platform/log.h"
#include "platform/strings.h"

namespace fakes {

using platform::DistributedNotification;
using platform::NSLog;
using platform::validUtf8;

namespace {

// A member name of the bus.
bool isAllowedName(const std::string& name) {
  const auto letter = [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
  };
  return !name.empty() && name.size() <= 255 && !(name[0] >= '0' && name[0] <= '9') &&
         std::all_of(name.begin(), name.end(), letter);
}

DistributedNotification repaired(DistributedNotification notification) {
  if (notification.object) {
    notification.object = validUtf8(*notification.object);
  }
  for (auto& [key, value] : notification.userInfo) {
    key = validUtf8(key);
    value = validUtf8(value);
  }
  return notification;
}

}  // namespace

bool FakeMessageBus::postNotification(const DistributedNotification& notification) {
  if (!isAllowedName(notification.name)) {
    NSLog("the bus allows no notification named [%@]", validUtf8(notification.name));
    return false;
  }
  if (!present_) {
    if (!said_) {
      NSLog("there is no session bus; %@ was not sent", notification.name);
      said_ = true;
    }
    return false;
  }
  const DistributedNotification sent = repaired(notification);
  if (sent != notification) {
    NSLog("%@ had text that is not UTF-8", notification.name);
  }
  journal_.add("bus post " + sent.name);
  posted_.push_back(sent);
  if (listener_) {
    listener_(sent);
  }
  return true;
}

}  // namespace fakes

#include "platform/notification_center.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "platform/format.h"

namespace platform {

std::string description(const Notification& notification) {
  return stringWithFormat("{name = %@; object = %@; userInfo = %@}", notification.name, notification.object,
                          notification.userInfo);
}

NotificationCenter::Token NotificationCenter::addObserver(std::string name, Observer observer) {
  auto shared = std::make_shared<Observer>(std::move(observer));
  const std::lock_guard lock(mutex_);
  entries_.push_back({++last_, std::move(name), std::move(shared)});
  return last_;
}

void NotificationCenter::removeObserver(Token token) {
  // What an observer holds may use this center when it goes, so it goes after the lock.
  Entry removed;
  const std::lock_guard lock(mutex_);
  const auto found = std::find_if(entries_.begin(), entries_.end(),
                                  [&](const Entry& entry) { return entry.token == token; });
  if (found != entries_.end()) {
    removed = std::move(*found);
    entries_.erase(found);
  }
}

void NotificationCenter::postNotification(const Notification& notification) {
  std::vector<Entry> observers;
  {
    const std::lock_guard lock(mutex_);
    std::copy_if(entries_.begin(), entries_.end(), std::back_inserter(observers),
                 [&](const Entry& entry) { return entry.name == notification.name; });
  }
  const auto isRegistered = [this](Token token) {
    const std::lock_guard lock(mutex_);
    return std::any_of(entries_.begin(), entries_.end(),
                       [&](const Entry& entry) { return entry.token == token; });
  };
  for (const Entry& entry : observers) {
    // An observer before this one may have removed it.
    if (isRegistered(entry.token) && *entry.observer) {
      (*entry.observer)(notification);
    }
  }
}

}  // namespace platform

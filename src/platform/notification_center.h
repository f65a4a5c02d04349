#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/property_list.h"

namespace platform {

// One in-process notification. `object` is the poster's text or list, absent for none; `sender` a reference
// to an object of the system that user information carries under "sender" (not owned, null for none).
struct Notification {
  std::string name;
  std::optional<PropertyList> object;
  Dictionary userInfo;
  void* sender = nullptr;
};

std::string description(const Notification& notification);

// In-process notifications. Observers run synchronously on the poster's thread, in the order of their
// registration; an observer may post, add and remove. Any thread.
class NotificationCenter {
 public:
  using Observer = std::function<void(const Notification&)>;
  using Token = std::uint64_t;

  // Calls `observer` for every notification of that name, whoever sends it, until it is removed.
  Token addObserver(std::string name, Observer observer);
  // Removes one observer; an unknown token is no error. It is not called any more, also not for a
  // notification that is being posted, but a call that is running on another thread may still end after this.
  void removeObserver(Token token);
  // Calls the observers of the name that are registered now and returns when the last one has.
  void postNotification(const Notification& notification);
  void postNotificationName(std::string name) {
    postNotification({std::move(name), std::nullopt, {}, nullptr});
  }

 private:
  struct Entry {
    Token token;
    std::string name;
    std::shared_ptr<Observer> observer;
  };
  std::mutex mutex_;
  std::vector<Entry> entries_;
  Token last_ = 0;
};

}  // namespace platform

#pragma once

#include <functional>
#include <vector>

#include "platform/message_bus.h"
#include "tests/fakes/journal.h"

namespace fakes {

// Keeps what was posted. Recorded as "bus post NAME"; what is refused or finds no bus is not kept.
class FakeMessageBus final : public platform::MessageBus {
 public:
  explicit FakeMessageBus(Journal& journal) : journal_(journal) {}

  bool postNotification(const platform::DistributedNotification& notification) override;

  const std::vector<platform::DistributedNotification>& posted() const { return posted_; }
  void clear() { posted_.clear(); }
  // Whether there is a bus; at first there is.
  void setPresent(bool present) { present_ = present; }
  // Runs after each notification that has left.
  void setPosted(std::function<void(const platform::DistributedNotification&)> listener) {
    listener_ = std::move(listener);
  }

 private:
  Journal& journal_;
  std::vector<platform::DistributedNotification> posted_;
  std::function<void(const platform::DistributedNotification&)> listener_;
  bool present_ = true;
  bool said_ = false;
};

}  // namespace fakes

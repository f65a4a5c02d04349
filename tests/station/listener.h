#pragma once

#include <string>
#include <vector>

#include "contract/bus_listener.h"

namespace station {

// Another program of the station, with a connection of its own: it hears what the kiosk tells. For one
// thread.
class Listener {
 public:
  // Throws std::runtime_error when the bus does not take it.
  explicit Listener(const std::string& sessionBus) : bus_(sessionBus) {}

  // What has come so far, in its order.
  const std::vector<platform::DistributedNotification>& heard();
  // What has come from kiosks that have ended. The last message of a kiosk may be on its way for a while
  // after that; the bus gives its name back when it has passed all of them on.
  const std::vector<platform::DistributedNotification>& heardToTheEnd();

 private:
  bool kioskIsOnTheBus();

  BusListener bus_;
};

}  // namespace station

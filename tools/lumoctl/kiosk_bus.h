#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/message_bus.h"

namespace lumoctl {

// The kiosk as it is found on the session bus. Main thread only. No operation waits for ever.
class KioskBus {
 public:
  // Connects to the session bus; null with `error` set when there is none or it does not answer. A bus is
  // never started.
  static std::unique_ptr<KioskBus> connect(std::string& error);
  ~KioskBus();
  KioskBus(const KioskBus&) = delete;
  KioskBus& operator=(const KioskBus&) = delete;

  // Whether a kiosk runs: whether somebody owns its name. Absent when the bus does not say.
  std::optional<bool> running() const;
  // The process of the kiosk; absent when none runs.
  std::optional<int> process() const;

  // Starts `program`, detached from this terminal, and waits until a kiosk is on the bus, for `patience` at
  // most. A line that says why there is none.
  std::optional<std::string> start(const std::string& program, std::chrono::milliseconds patience);

  // The kiosk's requests; each returns a line that says why it failed.
  std::optional<std::string> activate();
  std::optional<std::string> open(const std::vector<std::string>& addresses);
  std::optional<std::string> searchText(const std::string& text);

  // Calls `heard` with each distributed notification until SIGINT or SIGTERM comes (true) or the connection
  // is lost (false).
  bool listen(const std::function<void(const platform::DistributedNotification&)>& heard);

 private:
  struct State;
  explicit KioskBus(std::unique_ptr<State> state);
  std::unique_ptr<State> state_;
};

}  // namespace lumoctl

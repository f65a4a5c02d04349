#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/pasteboard.h"
#include "platform/queue.h"

typedef struct _GDBusConnection GDBusConnection;

namespace platform {

inline constexpr const char* kServiceName = "com.lumo.LumoBrowser";

// What the requests of other programs become. Each answers whether it took the request. Main queue.
struct ServiceHandlers {
  // The options of the copy that asks, absent for a launcher's request.
  std::function<bool(std::optional<unsigned> options)> activate;
  std::function<bool(std::vector<std::string> addresses)> open;
  std::function<bool(Pasteboard pasteboard, std::string userData)> search;
};

// Registers the object /com/lumo/LumoBrowser with the interfaces org.freedesktop.Application and
// com.lumo.LumoBrowser.Services on the connection. A request that is too large or makes no sense is answered
// with an error; every other is answered as soon as it is taken. Each error that the connection answers with
// is a line in the log. Once for a connection.
void registerServices(GDBusConnection* connection, const std::shared_ptr<const ServiceHandlers>& handlers);

// Asks the copy that owns the name to come to the front and waits for its answer, `patience` at most. The
// error text when that failed.
std::optional<std::string> requestActivation(GDBusConnection* connection, unsigned options, Millis patience);

}  // namespace platform

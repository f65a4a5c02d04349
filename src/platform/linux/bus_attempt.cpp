#include "platform/linux/bus_attempt.h"

#include <chrono>
#include <system_error>
#include <thread>
#include <utility>

namespace platform {

std::shared_ptr<BusAttempt> BusAttempt::start(const std::string& address, Block ended) {
  auto attempt = std::make_shared<BusAttempt>();
  attempt->ended_ = std::move(ended);
  try {
    // Not joined: at the end of the program a silent bus would keep it.
    std::thread([attempt, address] { attempt->run(address); }).detach();
  } catch (const std::system_error& error) {
    attempt->error_ = error.what();
    attempt->done_ = true;
    attempt->ended_();
  }
  return attempt;
}

BusAttempt::BusAttempt() = default;

BusAttempt::~BusAttempt() {
  g_clear_object(&connection_);
  g_object_unref(cancellable_);
}

void BusAttempt::run(const std::string& address) {
  GError* error = nullptr;
  // Made on a thread without a main context of its own, the connection belongs to the default one.
  GDBusConnection* connection = g_dbus_connection_new_for_address_sync(
      address.c_str(),
      static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                        G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
      nullptr, cancellable_, &error);
  if (connection != nullptr) {
    g_dbus_connection_set_exit_on_close(connection, FALSE);
  }
  const std::lock_guard lock(mutex_);
  connection_ = connection;
  if (error != nullptr) {
    error_ = error->message;
    g_error_free(error);
  }
  done_ = true;
  changed_.notify_all();
  if (ended_) {
    ended_();
  }
}

bool BusAttempt::wait(Millis patience) {
  const auto left = patience - std::chrono::microseconds(g_get_monotonic_time() - started_);
  std::unique_lock lock(mutex_);
  changed_.wait_for(lock, left, [this] { return done_; });
  return done_;
}

GDBusConnection* BusAttempt::take(std::string& error) {
  const std::lock_guard lock(mutex_);
  error = error_;
  return std::exchange(connection_, nullptr);
}

void BusAttempt::abandon() {
  g_cancellable_cancel(cancellable_);
  const std::lock_guard lock(mutex_);
  ended_ = nullptr;
}

}  // namespace platform

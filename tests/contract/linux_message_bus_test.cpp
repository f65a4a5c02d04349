#include "platform/linux/linux_message_bus.h"

#include <chrono>
#include <cstdlib>
#include <memory>
#include <string>

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>

#include "platform/linux/session_bus.h"
#include "tests/contract/bus_listener.h"
#include "tests/contract/dispatch_harness.h"
#include "tests/contract/private_bus.h"
#include "tests/fakes/captured_log.h"

using platform::DistributedNotification;
using platform::Millis;
using platform::SessionBus;
using namespace std::chrono_literals;

namespace {

constexpr const char* kBusVariable = "DBUS_SESSION_BUS_ADDRESS";
// Set for a copy of this program that a test started: the bus of that test.
constexpr const char* kParentBus = "LUMO_TEST_PARENT_BUS";

const DistributedNotification kRelease{"lumoXNotification", std::nullopt, {{"status", "registered"}}};

Millis elapsedSince(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration_cast<Millis>(std::chrono::steady_clock::now() - start);
}

// A program that listens where a bus should be, takes connections and never answers.
class SilentBus {
 public:
  SilentBus() {
    char name[] = "/tmp/lumo-silent-XXXXXX";
    folder_ = mkdtemp(name);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    (folder_ / "socket").string().copy(address.sun_path, sizeof address.sun_path - 1);
    (void)bind(listener_.get(), reinterpret_cast<sockaddr*>(&address), sizeof address);
    listen(listener_.get(), 8);
  }
  ~SilentBus() { std::filesystem::remove_all(folder_); }
  std::string address() const { return "unix:path=" + (folder_ / "socket").string(); }

 private:
  std::filesystem::path folder_;
  platform::FileDescriptor listener_{socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)};
};

class LinuxMessageBusTest : public testing::Test {
 protected:
  PrivateBus daemon_;
  ScopedEnvironment address_{kBusVariable, daemon_.address()};
  LinuxHarness queues_;
  SessionBus connection_{queues_.dispatch()};
  platform::LinuxMessageBus bus_{connection_};
};

}  // namespace

TEST_F(LinuxMessageBusTest, ReachesTheBusThatWasStartedAgain) {
  ASSERT_TRUE(bus_.postNotification(kRelease));
  daemon_.stop();
  daemon_.start();
  const BusListener listener(daemon_.address());
  EXPECT_TRUE(bus_.postNotification(kRelease));
  EXPECT_TRUE(queues_.runUntil([&] { return listener.heard().size() == 1; }));
}

TEST_F(LinuxMessageBusTest, SaysEachLossOnce) {
  ASSERT_TRUE(bus_.postNotification(kRelease));
  for (int loss = 0; loss < 2; ++loss) {
    daemon_.stop();
    const fakes::CapturedLog log;
    EXPECT_FALSE(bus_.postNotification(kRelease));
    EXPECT_FALSE(bus_.postNotification(kRelease));
    EXPECT_EQ(log.lines().size(), 1U) << log.text();
    daemon_.start();
    EXPECT_TRUE(bus_.postNotification(kRelease));
  }
}

TEST_F(LinuxMessageBusTest, ComesBackByItselfOnceStarted) {
  int connections = 0;
  connection_.start("com.lumo.Test", [&](GDBusConnection*) { ++connections; });
  ASSERT_TRUE(queues_.runUntil([&] { return connections == 1; }));
  daemon_.stop();
  daemon_.start();
  const BusListener listener(daemon_.address());
  const auto owned = [&] {
    GVariant* answer = g_dbus_connection_call_sync(
        listener.connection(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
        "NameHasOwner", g_variant_new("(s)", "com.lumo.Test"), G_VARIANT_TYPE("(b)"), G_DBUS_CALL_FLAGS_NONE,
        -1, nullptr, nullptr);
    gboolean has = FALSE;
    if (answer != nullptr) {
      g_variant_get(answer, "(b)", &has);
      g_variant_unref(answer);
    }
    return has != FALSE;
  };
  EXPECT_TRUE(queues_.runUntil(owned));
  EXPECT_EQ(connections, 2);
}

TEST_F(LinuxMessageBusTest, DoesNotHangOnABusThatStops) {
  ASSERT_TRUE(bus_.postNotification(kRelease));
  daemon_.freeze();
  const fakes::CapturedLog log;
  // Much more than the socket takes.
  const DistributedNotification large{
      "lumoXNotification", std::nullopt, {{"text", std::string(2 << 20, 'x')}}};
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(bus_.postNotification(large));
  EXPECT_LT(elapsedSince(start), SessionBus::kPatience + 1500ms);
  daemon_.thaw();
  EXPECT_TRUE(bus_.postNotification(kRelease));
}

TEST_F(LinuxMessageBusTest, RepairsTextWithNul) {
  const BusListener listener(daemon_.address());
  const fakes::CapturedLog log;
  const std::string text("a\0b", 3);
  EXPECT_TRUE(bus_.postNotification({"lumoXNotification", text, {{text, text}}}));
  ASSERT_TRUE(queues_.runUntil([&] { return listener.heard().size() == 1; }));
  const std::string repaired = "a\uFFFDb";
  EXPECT_EQ(listener.heard().front(),
            (DistributedNotification{"lumoXNotification", repaired, {{repaired, repaired}}}));
  EXPECT_EQ(log.lines().size(), 1U) << log.text();
}

TEST_F(LinuxMessageBusTest, CarriesLargeTexts) {
  const BusListener listener(daemon_.address());
  const DistributedNotification large{
      "lumoXNotification", std::nullopt, {{"text", std::string(2 << 20, 'x')}}};
  EXPECT_TRUE(bus_.postNotification(large));
  ASSERT_TRUE(queues_.runUntil([&] { return listener.heard().size() == 1; }));
  EXPECT_TRUE(listener.heard().front() == large);
}

TEST(LinuxMessageBus, WaitsOnlyOnceForABusThatNeverAnswers) {
  const SilentBus silent;
  const ScopedEnvironment address(kBusVariable, silent.address());
  LinuxHarness queues;
  SessionBus connection(queues.dispatch());
  platform::LinuxMessageBus bus(connection);
  const fakes::CapturedLog log;
  auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(bus.postNotification(kRelease));
  EXPECT_LT(elapsedSince(start), SessionBus::kPatience + 1500ms);
  start = std::chrono::steady_clock::now();
  EXPECT_FALSE(bus.postNotification(kRelease));
  EXPECT_LT(elapsedSince(start), SessionBus::kPatience / 2);
  EXPECT_EQ(log.lines().size(), 1U) << log.text();
}

TEST(LinuxMessageBus, NeverStartsABus) {
  char name[] = "/tmp/lumo-runtime-XXXXXX";
  const std::filesystem::path folder = mkdtemp(name);
  const ScopedEnvironment runtime("XDG_RUNTIME_DIR", folder.string());
  for (const char* address : {"", "autolaunch:", "autolaunch:scope=*user"}) {
    const ScopedEnvironment given(kBusVariable, address);
    EXPECT_EQ(platform::sessionBusAddress(), "");
  }
  const ScopedEnvironment none(kBusVariable, "");
  const platform::FileDescriptor listener(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  (folder / "bus").string().copy(address.sun_path, sizeof address.sun_path - 1);
  ASSERT_EQ(bind(listener.get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  EXPECT_EQ(platform::sessionBusAddress(), "unix:path=" + (folder / "bus").string());
  std::filesystem::remove_all(folder);
}

// The statement runs in another process, a new copy of this program that runs this test up to there. What it
// sends must arrive although it ends at once.
TEST(LinuxMessageBusDeathTest, SendsBeforeTheProgramEnds) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const char* parentBus = std::getenv(kParentBus);
  std::unique_ptr<PrivateBus> daemon;
  if (parentBus == nullptr) {
    daemon = std::make_unique<PrivateBus>();
  }
  const ScopedEnvironment address(kBusVariable, daemon ? daemon->address() : parentBus);
  const ScopedEnvironment mark(kParentBus, daemon ? daemon->address() : parentBus);
  const auto post = [] {
    platform::LinuxDispatch dispatch;
    SessionBus connection(dispatch);
    platform::LinuxMessageBus bus(connection);
    const DistributedNotification large{
        "lumoXNotification", std::nullopt, {{"text", std::string(1 << 20, 'x')}}};
    const bool sent = bus.postNotification(large) && bus.postNotification(kRelease);
    _exit(sent ? 0 : 1);
  };
  std::unique_ptr<BusListener> listener;
  if (daemon) {
    listener = std::make_unique<BusListener>(daemon->address());
  }
  EXPECT_EXIT(post(), testing::ExitedWithCode(0), "");
  LinuxHarness queues;
  ASSERT_TRUE(queues.runUntil([&] { return listener->heard().size() == 2; }));
  EXPECT_EQ(listener->heard().back(), kRelease);
}

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/linux/linux_message_bus.h"
#include "platform/linux/session_bus.h"
#include "tests/contract/bus_listener.h"
#include "tests/contract/dispatch_harness.h"
#include "tests/contract/private_bus.h"
#include "tests/fakes/captured_log.h"
#include "tests/fakes/fake_message_bus.h"

using platform::DistributedNotification;

namespace {

// A bus, and another program that hears what is sent on it.
class BusHarness {
 public:
  virtual ~BusHarness() = default;
  virtual platform::MessageBus& bus() = 0;
  // What the other program has heard, as soon as it is `count` notifications; fewer when they do not come.
  virtual std::vector<DistributedNotification> heard(std::size_t count) = 0;
  virtual void takeBusAway() = 0;
};

class FakeHarness : public BusHarness {
 public:
  platform::MessageBus& bus() override { return bus_; }
  std::vector<DistributedNotification> heard(std::size_t) override { return bus_.posted(); }
  void takeBusAway() override { bus_.setPresent(false); }

 private:
  fakes::SimDispatch dispatch_;
  fakes::Journal journal_{dispatch_};
  fakes::FakeMessageBus bus_{journal_};
};

class LinuxBusHarness : public BusHarness {
 public:
  platform::MessageBus& bus() override { return bus_; }
  std::vector<DistributedNotification> heard(std::size_t count) override {
    queues_.runUntil([&] { return listener_.heard().size() >= count; });
    return listener_.heard();
  }
  void takeBusAway() override { daemon_.stop(); }

 private:
  PrivateBus daemon_;
  ScopedEnvironment address_{"DBUS_SESSION_BUS_ADDRESS", daemon_.address()};
  LinuxHarness queues_;
  BusListener listener_{daemon_.address()};
  platform::SessionBus connection_{queues_.dispatch()};
  platform::LinuxMessageBus bus_{connection_};
};

struct Kind {
  const char* name;
  std::unique_ptr<BusHarness> (*make)();
};

void PrintTo(const Kind& kind, std::ostream* out) {
  *out << kind.name;
}

}  // namespace

class MessageBusContract : public testing::TestWithParam<Kind> {
 protected:
  platform::MessageBus& bus() { return harness_->bus(); }
  BusHarness& harness() { return *harness_; }

 private:
  std::unique_ptr<BusHarness> harness_ = GetParam().make();
};

TEST_P(MessageBusContract, CarriesNameObjectAndTextsInOrder) {
  const DistributedNotification release{"lumoXNotification",
                                        "counter 3",
                                        {{"senderApp", "LumoBrowser.app"},
                                         {"email", "noEmailRequired"},
                                         {"status", "registered"},
                                         {"LUMO-REG-NAME", "Zoë Ångström, 李"},
                                         {"urlstring", ""}}};
  EXPECT_TRUE(bus().postNotification(release));
  EXPECT_EQ(harness().heard(1), std::vector<DistributedNotification>{release});
}

TEST_P(MessageBusContract, CarriesNotificationsWithoutObjectAndTexts) {
  const DistributedNotification bare{"lumoXNotification", std::nullopt, {}};
  EXPECT_TRUE(bus().postNotification(bare));
  EXPECT_EQ(harness().heard(1), std::vector<DistributedNotification>{bare});
}

TEST_P(MessageBusContract, KeepsTheOrderOfNotifications) {
  std::vector<DistributedNotification> all;
  for (int number = 0; number < 50; ++number) {
    all.push_back({"lumoXNotification", std::nullopt, {{"number", std::to_string(number)}}});
    ASSERT_TRUE(bus().postNotification(all.back()));
  }
  EXPECT_EQ(harness().heard(all.size()), all);
}

TEST_P(MessageBusContract, RepairsTextThatIsNotUtf8) {
  const fakes::CapturedLog log;
  EXPECT_TRUE(bus().postNotification({"lumoXNotification", "\xff", {{"na\xefve", "M\xfcller"}}}));
  const std::vector<DistributedNotification> repaired{
      {"lumoXNotification", "\uFFFD", {{"na\uFFFDve", "M\uFFFDller"}}}};
  EXPECT_EQ(harness().heard(1), repaired);
  EXPECT_EQ(log.lines().size(), 1U) << log.text();
}

TEST_P(MessageBusContract, RefusesNamesThatTheBusDoesNotAllow) {
  const std::string names[] = {"",
                               "two words",
                               "1st",
                               "a-b",
                               "a.b",
                               "caf\u00e9",
                               "bad\xff",
                               std::string("nul\0nul", 7),
                               std::string(256, 'n')};
  for (const std::string& name : names) {
    const fakes::CapturedLog log;
    EXPECT_FALSE(bus().postNotification({name, std::nullopt, {}})) << name;
    EXPECT_EQ(log.lines().size(), 1U) << name;
  }
  const DistributedNotification allowed{std::string(255, 'n'), std::nullopt, {}};
  EXPECT_TRUE(bus().postNotification(allowed));
  EXPECT_EQ(harness().heard(1), std::vector<DistributedNotification>{allowed});
}

TEST_P(MessageBusContract, SaysOnceThatThereIsNoBusAndGoesOn) {
  harness().takeBusAway();
  const fakes::CapturedLog log;
  for (int time = 0; time < 3; ++time) {
    EXPECT_FALSE(bus().postNotification({"lumoXNotification", std::nullopt, {}}));
  }
  EXPECT_EQ(log.lines().size(), 1U) << log.text();
}

INSTANTIATE_TEST_SUITE_P(
    All, MessageBusContract,
    testing::Values(
        Kind{"Fake", []() -> std::unique_ptr<BusHarness> { return std::make_unique<FakeHarness>(); }},
        Kind{"Linux", []() -> std::unique_ptr<BusHarness> { return std::make_unique<LinuxBusHarness>(); }}),
    [](const auto& info) { return std::string(info.param.name); });

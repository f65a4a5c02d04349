#include "platform/linux/bus_environment.h"

#include <cstdlib>

#include <gtest/gtest.h>

#include "tests/contract/private_bus.h"

using platform::leaveOutUnreachableBuses;
using platform::withoutMissingFolders;

namespace {

class BusEnvironment : public testing::Test {
 protected:
  BusEnvironment() { std::filesystem::create_directory(folder_ / "a b"); }
  ~BusEnvironment() override { std::filesystem::remove_all(folder_); }
  // The address of a socket in the folder, which need not be there.
  std::string in(const std::string& place) const { return "unix:path=" + (folder_ / place).string(); }

  char name_[25] = "/tmp/lumo-address-XXXXXX";
  const std::filesystem::path folder_ = mkdtemp(name_);
  const ScopedEnvironment runtime_{"XDG_RUNTIME_DIR", folder_.string()};
};

}  // namespace

TEST_F(BusEnvironment, KeepsWhatTheEngineCanPutIntoItsSandbox) {
  for (const std::string& address :
       {in("none"), in("none,guid=0123"), in("a%20b/bus"), in("none") + ";tcp:host=127.0.0.1,port=1",
        std::string("unix:abstract=/no/such/folder"), std::string("unix:path=relative"), std::string("foo"),
        std::string("foo;"), std::string("unix:path=%zz/bus"), std::string("tcp:path=/no/such/folder"),
        std::string()}) {
    EXPECT_EQ(withoutMissingFolders(address), address);
  }
}

TEST_F(BusEnvironment, LeavesOutSocketsInFoldersThatDoNotExist) {
  EXPECT_EQ(withoutMissingFolders(in("no/bus")), "");
  EXPECT_EQ(withoutMissingFolders(in("no/bus,guid=0123")), "");
  EXPECT_EQ(withoutMissingFolders("unix:guid=0123,path=/no/such/folder"), "");
  EXPECT_EQ(withoutMissingFolders(in("no%2Fbus")), "");
  EXPECT_EQ(withoutMissingFolders(in("no/bus") + ";" + in("bus") + ";" + in("no/other")), in("bus"));
}

TEST_F(BusEnvironment, PutsTheUsualSocketInTheirPlaceAndSaysSo) {
  const ScopedEnvironment given("DBUS_SESSION_BUS_ADDRESS", in("no/bus"));
  const auto said = leaveOutUnreachableBuses();
  ASSERT_TRUE(said);
  EXPECT_EQ(*said, "The session bus address " + in("no/bus") + " is left out, its folder does not exist; " +
                       in("bus") + " is used");
  EXPECT_EQ(std::getenv("DBUS_SESSION_BUS_ADDRESS"), in("bus"));
  EXPECT_FALSE(leaveOutUnreachableBuses());
}

TEST_F(BusEnvironment, LeavesAnEnvironmentWithoutAddressAlone) {
  const ScopedEnvironment given("DBUS_SESSION_BUS_ADDRESS", "");
  EXPECT_FALSE(leaveOutUnreachableBuses());
  EXPECT_STREQ(std::getenv("DBUS_SESSION_BUS_ADDRESS"), "");
}

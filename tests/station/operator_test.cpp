#include <gmock/gmock.h>

#include "station/exit_fixture.h"

// What an operator sets with the command while the kiosk runs.

namespace station {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

class OperatorTest : public ExitTest {
 protected:
  void set(const std::string& key, const std::vector<std::string>& value) {
    std::vector<std::string> command{LUMO_CTL, "defaults", "write", key};
    command.insert(command.end(), value.begin(), value.end());
    EXPECT_EQ(station.use(command), "exit status 0") << station.said();
    EXPECT_EQ(station.said(), "");
  }
};

TEST_F(OperatorTest, HasTheKioskUseWhatWasSetTheNextTimeItReads) {
  server.set("/next", HttpAnswer{page(kGreen)});
  startAtHome();
  set("prefServerAddress", {"-string", server.url("/next")});
  ASSERT_TRUE(station.press("Home"));
  EXPECT_TRUE(station.shows(kGreen));
  // The kiosk has stored the address beside what the command had written.
  EXPECT_EQ(runningAddress(), server.url("/next"));
  EXPECT_EQ(station.storedText("prefServerAddress"), server.url("/next"));

  EXPECT_EQ(station.use({LUMO_CTL, "defaults", "delete", "prefRunningUrlString"}), "exit status 0");
  set("prefDoNotConfirmOnExit", {"-bool", "YES"});
  station.key("ctrl+q");
  EXPECT_EQ(station.kiosk().end(), "exit status 0");
  EXPECT_THAT(listener->heardToTheEnd(), ElementsAre(releaseOf("closedwindow", std::nullopt)));
}

TEST_F(OperatorTest, TypedValuesOfEachKindReachTheKiosk) {
  server.set("/leave/now", HttpAnswer{page(kGreen)});
  startAtHome();
  // The text wins over the factory list; a release path ends the session.
  set("prefPathNamesToDataForLumo", {"-string", "/leave/now"});
  set("prefSelectedJunivaServerInfo",
      {"-dict", "status", "found", "urlstring", server.url("/home"), "ipaddress", "127.0.0.1"});
  set("prefArrayOfPathNamesToDataForLumo", {"-array", "a", "b"});
  EXPECT_EQ(station.use({LUMO_CTL, "defaults", "write", "prefNobodys", "-int", "4"}), "exit status 0");
  EXPECT_THAT(station.said(), HasSubstr("warning: the kiosk knows no key prefNobodys"));
  EXPECT_EQ(station.use({LUMO_CTL, "open", server.url("/leave/now")}), "exit status 0") << station.said();
  EXPECT_EQ(station.kiosk().end(), "exit status 0");
  auto expected = releaseOf("registered", server.url("/leave/now"));
  expected.userInfo.insert(expected.userInfo.end() - 1, {"respurlstring", server.url("/leave/now")});
  EXPECT_THAT(listener->heardToTheEnd(), ElementsAre(expected));
}

}  // namespace station

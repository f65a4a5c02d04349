#include "browser/ReleaseMessage.h"

#include <gtest/gtest.h>

namespace lumo {
namespace {

using Info = std::vector<std::pair<std::string, std::string>>;

TEST(ReleaseMessage, TheShellsMessageHasFourKeysAndWithoutARunningAddressThree) {
  const auto message = releaseMessage(ReleaseStatus::ClosedWindow, "http://h/x");
  EXPECT_EQ(message.name, "lumoXNotification");
  EXPECT_FALSE(message.object);
  EXPECT_EQ(message.userInfo, (Info{{"senderApp", "LumoBrowser.app"},
                                    {"email", "noEmailRequired"},
                                    {"status", "closedwindow"},
                                    {"urlstring", "http://h/x"}}));
  EXPECT_EQ(
      releaseMessage(ReleaseStatus::ClosedWindow, std::nullopt).userInfo,
      (Info{{"senderApp", "LumoBrowser.app"}, {"email", "noEmailRequired"}, {"status", "closedwindow"}}));
}

TEST(ReleaseMessage, EachEndHasItsStatus) {
  EXPECT_EQ(messageValue(releaseMessage(ReleaseStatus::Registered, {}), "status"), "registered");
  EXPECT_EQ(messageValue(releaseMessage(ReleaseStatus::CancelledRegistered, {}), "status"),
            "cancelled_registered");
}

TEST(ReleaseMessage, OrderFieldsArePassedOnInCapitalsAndTheOrderTextWithBlanks) {
  const platform::HeaderFields fields{
      {"Server", "x"},       {"Lumo-Reg-Code", "A+1"},  {"Lumo-Reg-Ordertext", "12+Main+Street"},
      {"lumo-reg-", "bare"}, {"X-lumo-reg-name", "no"}, {"respurlstring", "http://h/save"}};
  const auto message = releaseMessage(ReleaseStatus::Registered, "http://h/run", &fields);
  EXPECT_EQ(message.userInfo, (Info{{"senderApp", "LumoBrowser.app"},
                                    {"email", "noEmailRequired"},
                                    {"status", "registered"},
                                    {"LUMO-REG-CODE", "A+1"},
                                    {"LUMO-REG-ORDERTEXT", "12 Main Street"},
                                    {"LUMO-REG-", "bare"},
                                    {"respurlstring", "http://h/save"},
                                    {"urlstring", "http://h/run"}}));
}

TEST(ReleaseMessage, OfFieldsWithTheSameNameInCapitalsTheLastCounts) {
  const platform::HeaderFields fields{
      {"lumo-reg-code", "first"}, {"Lumo-Reg-Name", "Ann"}, {"LUMO-REG-CODE", "last"}};
  const auto message = releaseMessage(ReleaseStatus::Registered, std::nullopt, &fields);
  EXPECT_EQ(message.userInfo, (Info{{"senderApp", "LumoBrowser.app"},
                                    {"email", "noEmailRequired"},
                                    {"status", "registered"},
                                    {"LUMO-REG-CODE", "last"},
                                    {"LUMO-REG-NAME", "Ann"}}));
}

TEST(ReleaseMessage, TheOrderListIsAppendedTwice) {
  EXPECT_EQ(
      photoStationListUrl(*platform::Url::parse("http://10.0.0.5:9090/registrationorders/confirmsave?c=1")),
      platform::Url::parse("http://10.0.0.5:9090/registrationorders/photostationlist/"
                           "registrationorders/photostationlist"));
}

TEST(ReleaseMessage, AServerWithoutAPortGivesNoOrderListAndAnAddressWithoutAHostTheTextForNone) {
  EXPECT_FALSE(photoStationListUrl(*platform::Url::parse("http://10.0.0.5/x")));
  EXPECT_EQ(photoStationListUrl(*platform::Url::parse("file:///x")),
            platform::Url::parse("file://(null)/registrationorders/photostationlist/"
                                 "registrationorders/photostationlist"));
}

}  // namespace
}  // namespace lumo

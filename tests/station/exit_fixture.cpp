#include "station/exit_fixture.h"

namespace station {

platform::DistributedNotification releaseOf(const std::string& status,
                                            const std::optional<std::string>& address) {
  platform::DistributedNotification message{
      "lumoXNotification",
      std::nullopt,
      {{"senderApp", "LumoBrowser.app"}, {"email", "noEmailRequired"}, {"status", status}}};
  if (address) {
    message.userInfo.emplace_back("urlstring", *address);
  }
  return message;
}

void ExitTest::SetUp() {
  StationTest::SetUp();
  station.prefer("prefDoNotConfirmOnExit", false);
  listener = std::make_unique<Listener>(station.environment.at("DBUS_SESSION_BUS_ADDRESS"));
}

int ExitTest::questions() {
  int count = 0;
  if (const auto program = station.controls()) {
    program->walk([&count](const Accessible& item, int) {
      count += item.role() == "alert dialog" && item.name() == "Are You Sure???" ? 1 : 0;
    });
  }
  return count;
}

std::vector<Accessible> ExitTest::buttons() {
  std::vector<Accessible> found;
  if (const auto question = station.control("alert dialog", "Are You Sure???")) {
    question->walk([&found](const Accessible& item, int) {
      if (item.role() == "button") {
        found.push_back(item);
      }
    });
  }
  return found;
}

std::vector<std::string> ExitTest::answers() {
  std::vector<std::string> titles;
  for (const Accessible& button : buttons()) {
    titles.push_back(button.name());
  }
  return titles;
}

std::string ExitTest::focusedAnswer() {
  for (const Accessible& button : buttons()) {
    if (button.isFocused()) {
      return button.name();
    }
  }
  return "";
}

int ExitTest::requests() const {
  static const std::string kRequest = "AppDelegate->applicationShouldTerminate:....";
  const std::string log = station.log();
  int count = 0;
  for (auto at = log.find(kRequest); at != std::string::npos; at = log.find(kRequest, at + 1)) {
    ++count;
  }
  return count;
}

void ExitTest::quitWith(const std::string& answer) {
  station.key("ctrl+q");
  ASSERT_TRUE(isAskedSoon());
  ASSERT_TRUE(station.press(answer));
  ASSERT_EQ(station.kiosk().end(), "exit status 0");
}

}  // namespace station

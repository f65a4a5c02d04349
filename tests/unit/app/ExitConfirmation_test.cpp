#include "app/ExitConfirmation.h"

#include <gtest/gtest.h>

namespace lumo {
namespace {

std::vector<std::string> titles(const std::optional<std::string>& running) {
  std::vector<std::string> texts;
  for (const platform::AlertButton& button : exitConfirmation(running).buttons) {
    texts.push_back(button.title);
  }
  return texts;
}

using Titles = std::vector<std::string>;

TEST(ExitConfirmation, OffAnOrderPageThereAreThreeButtons) {
  const Titles three{"Cancel", "Close Window Only", "Close Window and Release Order"};
  EXPECT_EQ(titles(std::nullopt), three);
  EXPECT_EQ(titles("http://h/other"), three);
}

TEST(ExitConfirmation, OnAnOrderPageThereAreTwoWhereverTheWordStands) {
  const Titles two{"Cancel", "Close Window"};
  EXPECT_EQ(titles("http://h:9090/REGISTRATIONORDERS"), two);
  EXPECT_EQ(titles("http://registrationorders.local/"), two);
  EXPECT_EQ(titles("http://h/?next=RegistrationOrders"), two);
}

TEST(ExitConfirmation, AsksInItsOwnWords) {
  const platform::Alert alert = exitConfirmation(std::nullopt);
  EXPECT_EQ(alert.messageText, "Are You Sure???");
  EXPECT_EQ(alert.informativeText, "Are you sure you want to exit this window?");
  EXPECT_EQ(alert.style, platform::AlertStyle::Warning);
  EXPECT_EQ(alert.buttons[0].tag, 1000);
  EXPECT_EQ(alert.buttons[1].tag, 1001);
  EXPECT_EQ(alert.buttons[2].tag, 1002);
}

}  // namespace
}  // namespace lumo

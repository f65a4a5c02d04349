#include <cmath>
#include <csignal>
#include <cstdlib>

#include <gmock/gmock.h>

#include "station/exit_fixture.h"

// The question before the end, and what the station's other programs hear of the end.

namespace station {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

using Titles = std::vector<std::string>;

const Titles kOffAnOrder{"Cancel", "Close Window Only", "Close Window and Release Order"};
const Titles kOnAnOrder{"Cancel", "Close Window"};

}  // namespace

// --- each way to quit

struct WayOut {
  const char* name;
  std::function<void(Station&)> take;
};

void PrintTo(const WayOut& way, std::ostream* out) {
  *out << way.name;
}

class WayOutTest : public ExitTest, public ::testing::WithParamInterface<WayOut> {};

INSTANTIATE_TEST_SUITE_P(
    All, WayOutTest,
    ::testing::Values(WayOut{"TheKey", [](Station& station) { station.key("ctrl+q"); }},
                      WayOut{"TheWindowManagersClose",
                             [](Station& station) { station.screen().close(station.window()); }},
                      WayOut{"TheTitleBarsButton", [](Station& station) { station.press("Close"); }},
                      WayOut{"TheMenu",
                             [](Station& station) {
                               const auto menu = station.control("menu item", "Lumo Browser");
                               ASSERT_TRUE(menu && station.clickOn(*menu));
                               // Newer toolkits do not tell the names of its items.
                               ASSERT_TRUE(waitUntil([&] {
                                 return station.control("menu item", "Quit Lumo Browser") ||
                                        station.control("menu item", "");
                               }));
                               // The last item; opened by pointer, the menu has no item chosen yet.
                               station.key("Up");
                               station.key("Return");
                             }}),
    [](const auto& info) { return info.param.name; });

TEST_P(WayOutTest, AsksOnceAndCancelChangesNothing) {
  startAtHome();
  GetParam().take(station);
  ASSERT_TRUE(isAskedSoon());
  EXPECT_EQ(answers(), kOffAnOrder);
  EXPECT_TRUE(hasFocusSoon("Cancel")) << focusedAnswer();

  // The key is off meanwhile; the window manager's request counts as one, and adds no question.
  station.key("ctrl+q");
  station.screen().close(station.window());
  ASSERT_TRUE(waitUntil([this] { return requests() == 2; })) << requests();
  EXPECT_EQ(questions(), 1);

  ASSERT_TRUE(station.press("Cancel"));
  ASSERT_TRUE(isAskedNoMore());
  EXPECT_TRUE(station.logs("AppDelegate->alertDidEnd:returnCode:contextInfo:....returnCode = 1000"));
  EXPECT_TRUE(station.shows(kRed));
  EXPECT_THAT(listener->heard(), IsEmpty());

  GetParam().take(station);
  ASSERT_TRUE(isAskedSoon());
  ASSERT_TRUE(station.press("Close Window Only"));
  EXPECT_EQ(station.kiosk().end(), "exit status 0");
  EXPECT_THAT(listener->heardToTheEnd(), ElementsAre(releaseOf("closedwindow", server.url("/home"))));
}

// --- the question itself

TEST_F(ExitTest, TheKeyboardChoosesAnAnswerAndStaysInTheQuestion) {
  startAtHome();
  station.key("ctrl+q");
  ASSERT_TRUE(isAskedSoon());
  ASSERT_TRUE(hasFocusSoon("Cancel"));
  for (const char* next : {"Close Window Only", "Close Window and Release Order", "Cancel"}) {
    station.key("Tab");
    EXPECT_TRUE(hasFocusSoon(next)) << focusedAnswer();
  }
  station.key("shift+Tab");
  EXPECT_TRUE(hasFocusSoon("Close Window and Release Order")) << focusedAnswer();
  station.key("Right");
  EXPECT_TRUE(hasFocusSoon("Close Window and Release Order")) << focusedAnswer();
  station.key("Left");
  EXPECT_TRUE(hasFocusSoon("Close Window Only")) << focusedAnswer();
  station.key("Left");
  EXPECT_TRUE(hasFocusSoon("Cancel")) << focusedAnswer();
  station.key("space");
  ASSERT_TRUE(isAskedNoMore());

  // At once with Enter: the first answer.
  station.key("ctrl+q");
  ASSERT_TRUE(hasFocusSoon("Cancel"));
  station.key("Return");
  ASSERT_TRUE(isAskedNoMore());
  EXPECT_TRUE(station.kiosk().isRunning());

  station.key("ctrl+q");
  ASSERT_TRUE(hasFocusSoon("Cancel"));
  station.key("Tab");
  ASSERT_TRUE(hasFocusSoon("Close Window Only"));
  station.key("Return");
  EXPECT_EQ(station.kiosk().end(), "exit status 0");
  EXPECT_THAT(listener->heardToTheEnd(), ElementsAre(releaseOf("closedwindow", server.url("/home"))));
}

TEST_F(ExitTest, EscapeIsCancel) {
  startAtHome();
  station.key("ctrl+q");
  ASSERT_TRUE(isAskedSoon());
  station.key("Escape");
  ASSERT_TRUE(isAskedNoMore());
  EXPECT_TRUE(station.logs("AppDelegate->alertDidEnd:returnCode:contextInfo:....returnCode = 1000"));
  EXPECT_TRUE(station.kiosk().isRunning());
  quitWith("Close Window Only");
  EXPECT_THAT(listener->heardToTheEnd(), ElementsAre(releaseOf("closedwindow", server.url("/home"))));
}

TEST_F(ExitTest, TheScreenIsPressedForAnAnswerOverADimmedPageThatHearsNothing) {
  server.set("/home", HttpAnswer{page(kRed, "<script>onpointerdown = () => fetch('/touched')</script>")});
  server.set("/touched", HttpAnswer{"ok"});
  startAtHome();
  const Area frame = station.screen().frame(station.window());
  const int x = frame.x + 40;
  const int y = frame.y + frame.height - 40;
  const auto colour = [&] { return station.screen().at(x, y); };
  ASSERT_EQ(colour(), kRed);
  station.key("ctrl+q");
  ASSERT_TRUE(isAskedSoon());
  EXPECT_TRUE(waitUntil([&] { return colour().red < kRed.red * 2 / 3 && colour().red > 0; }))
      << int(colour().red);
  station.click(x, y);
  EXPECT_TRUE(isAsked());

  const auto cancel = station.control("button", "Cancel");
  ASSERT_TRUE(cancel && station.clickOn(*cancel));
  ASSERT_TRUE(isAskedNoMore());
  EXPECT_TRUE(waitUntil([&] { return colour() == kRed; }));
  station.click(x, y);
  ASSERT_TRUE(waitUntil([this] { return server.count("/touched") > 0; }));

  station.key("ctrl+q");
  ASSERT_TRUE(isAskedSoon());
  const auto close = station.control("button", "Close Window Only");
  ASSERT_TRUE(close && station.clickOn(*close));
  EXPECT_EQ(station.kiosk().end(), "exit status 0");
  EXPECT_THAT(listener->heardToTheEnd(), ElementsAre(releaseOf("closedwindow", server.url("/home"))));
  EXPECT_EQ(server.count("/touched"), 1);
}

class ExitByTouchTest : public ExitTest {
 protected:
  ExitByTouchTest() : ExitTest({.touch = true}) {}
};

TEST_F(ExitByTouchTest, AFingerChoosesAnAnswerAndThePageBehindFeelsNothing) {
  server.set("/home", HttpAnswer{page(kRed, "<script>ontouchstart = () => fetch('/touched')</script>")});
  server.set("/touched", HttpAnswer{"ok"});
  startAtHome();
  const Area frame = station.screen().frame(station.window());
  const int x = frame.x + 40;
  const int y = frame.y + frame.height - 40;
  station.tap(x, y);
  ASSERT_TRUE(waitUntil([this] { return server.count("/touched") == 1; })) << "the page cannot be touched";

  station.key("ctrl+q");
  ASSERT_TRUE(isAskedSoon());
  station.tap(x, y);
  const auto cancel = station.control("button", "Cancel");
  ASSERT_TRUE(cancel && station.tapOn(*cancel));
  ASSERT_TRUE(isAskedNoMore());
  EXPECT_TRUE(station.logs("AppDelegate->alertDidEnd:returnCode:contextInfo:....returnCode = 1000"));

  station.key("ctrl+q");
  ASSERT_TRUE(isAskedSoon());
  const auto release = station.control("button", "Close Window and Release Order");
  ASSERT_TRUE(release && station.tapOn(*release));
  EXPECT_EQ(station.kiosk().end(), "exit status 0");
  EXPECT_THAT(listener->heardToTheEnd(), ElementsAre(releaseOf("cancelled_registered", server.url("/home"))));
  EXPECT_EQ(server.count("/touched"), 1);
}

TEST_F(ExitTest, TheQuestionStandsInTheMiddleOfAFullScreen) {
  station.prefer("prefForceFullScreen", true);
  startAtHome();
  station.key("ctrl+q");
  ASSERT_TRUE(isAskedSoon());
  const Area screen = station.screen().area();
  const auto isInTheMiddle = [&] {
    const auto question = station.control("alert dialog", "Are You Sure???");
    const Area card = question ? question->extents() : Area{};
    return card.width > 0 && std::abs(2 * card.x + card.width - screen.width) <= 2 &&
           std::abs(2 * card.y + card.height - screen.height) <= 2;
  };
  EXPECT_TRUE(waitUntil(isInTheMiddle)) << station.control("alert dialog", "Are You Sure???")->extents();
  station.key("Escape");
  ASSERT_TRUE(isAskedNoMore());
  quitWith("Close Window and Release Order");
}

// --- every answer, and what is heard of it

struct Choice {
  const char* name;
  // The page of the start, absent for none.
  std::optional<std::string> path;
  bool confirms;
  Titles offered;
  // Where it asks.
  std::string answer;
  // Of the message; absent when nothing is sent, and the kiosk goes on.
  std::optional<std::string> status;
};

void PrintTo(const Choice& choice, std::ostream* out) {
  *out << choice.name;
}

class ChoiceTest : public ExitTest, public ::testing::WithParamInterface<Choice> {
 protected:
  void start() {
    if (GetParam().path) {
      server.set(GetParam().path->substr(0, GetParam().path->find('?')), HttpAnswer{page(kRed)});
      station.prefer("prefServerAddress", server.url(*GetParam().path));
      startAtHome();
      return;
    }
    station.prefer("prefDoAutoLoadUrlAtStartup", false);
    station.start();
    ASSERT_TRUE(waitUntil([this] { return station.control("button", "Home").has_value(); }));
  }
};

INSTANTIATE_TEST_SUITE_P(
    All, ChoiceTest,
    ::testing::Values(
        Choice{"UnaskedWithoutAnAddress", {}, false, {}, "", "closedwindow"},
        Choice{"UnaskedOffAnOrder", "/home", false, {}, "", "closedwindow"},
        Choice{"UnaskedOnAnOrder", "/registrationorders", false, {}, "", "closedwindow"},
        Choice{"CancelWithoutAnAddress", {}, true, kOffAnOrder, "Cancel", {}},
        Choice{"CloseWithoutAnAddress", {}, true, kOffAnOrder, "Close Window Only", "closedwindow"},
        Choice{"ReleaseWithoutAnAddress",
               {},
               true,
               kOffAnOrder,
               "Close Window and Release Order",
               "cancelled_registered"},
        Choice{"CancelOffAnOrder", "/home", true, kOffAnOrder, "Cancel", {}},
        Choice{"CloseOffAnOrder", "/home", true, kOffAnOrder, "Close Window Only", "closedwindow"},
        Choice{"ReleaseOffAnOrder", "/home", true, kOffAnOrder, "Close Window and Release Order",
               "cancelled_registered"},
        Choice{"CancelOnAnOrder", "/registrationorders", true, kOnAnOrder, "Cancel", {}},
        Choice{"CloseOnAnOrder", "/registrationorders/details", true, kOnAnOrder, "Close Window",
               "closedwindow"},
        Choice{"CloseOnAnOrderInCapitals", "/REGISTRATIONORDERS", true, kOnAnOrder, "Close Window",
               "closedwindow"},
        Choice{"CloseOnAnOrderInTheQuery", "/home?next=RegistrationOrders", true, kOnAnOrder, "Close Window",
               "closedwindow"}),
    [](const auto& info) { return info.param.name; });

TEST_P(ChoiceTest, HasItsEffectAndItsMessage) {
  const Choice& choice = GetParam();
  station.prefer("prefDoNotConfirmOnExit", !choice.confirms);
  start();
  const std::optional<std::string> address =
      choice.path ? std::optional(server.url(*choice.path)) : std::nullopt;
  ASSERT_EQ(runningAddress(), address);

  station.key("ctrl+q");
  if (choice.confirms) {
    ASSERT_TRUE(isAskedSoon());
    EXPECT_EQ(answers(), choice.offered);
    EXPECT_THAT(listener->heard(), IsEmpty());
    ASSERT_TRUE(station.press(choice.answer));
  }
  if (!choice.status) {
    ASSERT_TRUE(isAskedNoMore());
    ASSERT_TRUE(station.logs("returnCode = 1000"));
    // A signal ends it now, and tells of itself alone.
    EXPECT_EQ(station.stop(), "exit status 0");
    EXPECT_THAT(listener->heardToTheEnd(), ElementsAre(releaseOf("closedwindow", address)));
    return;
  }
  EXPECT_EQ(station.kiosk().end(), "exit status 0");
  EXPECT_THAT(listener->heardToTheEnd(), ElementsAre(releaseOf(*choice.status, address)));
  EXPECT_EQ(runningAddress(), address);
}

// --- a session's end

class SignalTest : public ExitTest, public ::testing::WithParamInterface<int> {};

INSTANTIATE_TEST_SUITE_P(All, SignalTest, ::testing::Values(SIGTERM, SIGINT, SIGHUP),
                         [](const auto& info) { return std::string("SIG") + sigabbrev_np(info.param); });

TEST_P(SignalTest, IsToldOnceAndLeavesThePreferencesWhole) {
  station.prefer("prefThisUserAgent", "Counter 4");
  startAtHome();
  station.kiosk().send(GetParam());
  EXPECT_EQ(station.kiosk().end(), "exit status 0");
  EXPECT_THAT(listener->heardToTheEnd(), ElementsAre(releaseOf("closedwindow", server.url("/home"))));
  EXPECT_EQ(station.storedText("prefThisUserAgent"), "Counter 4");
  EXPECT_EQ(station.storedText("prefServerAddress"), server.url("/home"));
  EXPECT_EQ(runningAddress(), server.url("/home"));
}

TEST_F(ExitTest, ASignalEndsItWhileTheQuestionStands) {
  startAtHome();
  station.key("ctrl+q");
  ASSERT_TRUE(isAskedSoon());
  EXPECT_EQ(station.stop(), "exit status 0");
  EXPECT_THAT(listener->heardToTheEnd(), ElementsAre(releaseOf("closedwindow", server.url("/home"))));
}

TEST_F(ExitTest, ASignalDoesNotOvertakeARelease) {
  startAtHome();
  station.key("ctrl+q");
  ASSERT_TRUE(isAskedSoon());
  ASSERT_TRUE(station.press("Close Window and Release Order"));
  ASSERT_TRUE(station.logs("returnCode = 1002"));
  EXPECT_EQ(station.stop(), "exit status 0");
  EXPECT_THAT(listener->heardToTheEnd(), ElementsAre(releaseOf("cancelled_registered", server.url("/home"))));
}

// --- again and again

class ReleaseSoakTest : public ExitTest {
 protected:
  // LUMO_RELEASES has the number of a long run.
  static int rounds() {
    const char* wanted = std::getenv("LUMO_RELEASES");
    const int number = wanted == nullptr ? 0 : std::atoi(wanted);
    return number > 0 ? number : 5;
  }
};

TEST_F(ReleaseSoakTest, EachEndIsHeardOnce) {
  for (int round = 1; round <= rounds(); ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    // An address of its own tells the rounds apart.
    const std::string address = server.url("/home?round=" + std::to_string(round));
    station.prefer("prefServerAddress", address);
    ASSERT_NO_FATAL_FAILURE(startAtHome());
    ASSERT_NO_FATAL_FAILURE(quitWith("Close Window and Release Order"));
    const auto& heard = listener->heardToTheEnd();
    ASSERT_EQ(heard.size(), static_cast<std::size_t>(round));
    ASSERT_EQ(heard.back(), releaseOf("cancelled_registered", address));
  }
  std::cout << "[ releases ] " << listener->heard().size() << " heard of " << rounds() << "\n";
}

}  // namespace station

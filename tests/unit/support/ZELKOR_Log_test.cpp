#include "support/ZELKOR_Log.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <optional>
#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/unit/support/log_fixture.h"

using logtest::contents;
using logtest::lines;
using lumo::ZELKOR_Log;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::StartsWith;
using namespace std::chrono_literals;

namespace {

constexpr const char* kStamp =
    "\\[[0-9]{4}/[0-9]{2}/[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{3} [+-][0-9]{4}\\]";

std::string stamped(const std::string& tag, const std::string& rest) {
  return tag + " " + kStamp + rest;
}

class ZELKOR_LogTest : public logtest::LogTest {};

// The local zone for one test.
class ZoneGuard {
 public:
  explicit ZoneGuard(const char* zone) {
    if (const char* before = std::getenv("TZ")) {
      before_ = before;
    }
    setenv("TZ", zone, 1);
    tzset();
  }
  ~ZoneGuard() {
    if (before_) {
      setenv("TZ", before_->c_str(), 1);
    } else {
      unsetenv("TZ");
    }
    tzset();
  }
  ZoneGuard(const ZoneGuard&) = delete;
  ZoneGuard& operator=(const ZoneGuard&) = delete;

 private:
  std::optional<std::string> before_;
};

platform::Data bytes(const std::string& text) {
  platform::Data data;
  for (const char character : text) {
    data.push_back(static_cast<std::byte>(character));
  }
  return data;
}

std::optional<std::string> textOf(const platform::PropertyList* value) {
  const auto* text = value == nullptr ? nullptr : value->as<std::string>();
  return text == nullptr ? std::nullopt : std::optional(*text);
}

}  // namespace

TEST_F(ZELKOR_LogTest, OnlyTheDebug2LevelPassesTheMask) {
  ASSERT_TRUE(ZELKOR_Log::setLogFile(path("Foo.log")));
  ZELKOR_Log::debug("debug");
  ZELKOR_Log::err("err");
  ZELKOR_Log::logData(bytes("some data"));
  for (const int level : {0, 2, 4, 8, 16, 30, 64, -64}) {
    ZELKOR_Log::logLevel_message(level, "level");
  }
  run();
  EXPECT_THAT(diagnostics(), IsEmpty());
  EXPECT_EQ(contents(path("Foo.log")), "");
  ZELKOR_Log::debug2("debug2");
  run();
  EXPECT_THAT(diagnostics(), ElementsAre("DEBUG2: MyApp: debug2"));
  EXPECT_THAT(contents(path("Foo.log")), MatchesRegex(stamped("D2", " debug2\n")));
}

TEST_F(ZELKOR_LogTest, OtherLevelsWithTheDebug2BitAreTaggedAsDebug) {
  ASSERT_TRUE(ZELKOR_Log::setLogFile(path("Foo.log")));
  for (const int level : {34, 36, 40, 48, 33, -1}) {
    ZELKOR_Log::logLevel_message(level, std::to_string(level));
  }
  run();
  EXPECT_THAT(diagnostics(), ElementsAre("DEBUG: MyApp: 34", "DEBUG: MyApp: 36", "DEBUG: MyApp: 40",
                                         "DEBUG: MyApp: 48", "DEBUG: MyApp: 33", "DEBUG: MyApp: -1"));
  EXPECT_THAT(lines(contents(path("Foo.log"))),
              ElementsAre(MatchesRegex(stamped("D", " 34")), MatchesRegex(stamped("D", " 36")),
                          MatchesRegex(stamped("D", " 40")), MatchesRegex(stamped("D", " 48")),
                          MatchesRegex(stamped("D", " 33")), MatchesRegex(stamped("D", " -1"))));
}

TEST_F(ZELKOR_LogTest, TheApplicationNameStandsInFileLinesWhenAskedFor) {
  ASSERT_TRUE(ZELKOR_Log::setLogFile(path("Foo.log")));
  ZELKOR_Log::debug2("without");
  run();
  ZELKOR_Log::setShouldLogAppName(true);
  ZELKOR_Log::debug2("disk full");
  run();
  ZELKOR_Log::setApplicationName("Other App");
  ZELKOR_Log::debug2("disk full");
  run();
  EXPECT_THAT(
      lines(contents(path("Foo.log"))),
      ElementsAre(MatchesRegex(stamped("D2", " without")), MatchesRegex(stamped("D2", " MyApp: disk full")),
                  MatchesRegex(stamped("D2", " Other App: disk full"))));
  EXPECT_THAT(diagnostics(), ElementsAre("DEBUG2: MyApp: without", "DEBUG2: MyApp: disk full",
                                         "DEBUG2: Other App: disk full"));
}

TEST_F(ZELKOR_LogTest, AMultiLineMessageBecomesOneFileLineForEachPieceEmptyOnesIncluded) {
  ASSERT_TRUE(ZELKOR_Log::setLogFile(path("Foo.log")));
  ZELKOR_Log::debug2("first\n\nthird\n");
  run();
  EXPECT_THAT(lines(contents(path("Foo.log"))),
              ElementsAre(MatchesRegex(stamped("D2", " first")), MatchesRegex(stamped("D2", " ")),
                          MatchesRegex(stamped("D2", " third")), MatchesRegex(stamped("D2", " "))));
  EXPECT_THAT(diagnostics(), ElementsAre("DEBUG2: MyApp: first", "DEBUG2: MyApp: ", "DEBUG2: MyApp: third",
                                         "DEBUG2: MyApp: "));
}

TEST_F(ZELKOR_LogTest, MessagesAreTextAndNoFormats) {
  ASSERT_TRUE(ZELKOR_Log::setLogFile(path("Foo.log")));
  ZELKOR_Log::debug2("100 %@ %s %n %");
  ZELKOR_Log::debug2(std::string_view("a\0b", 3));
  ZELKOR_Log::debug2("bad \xff byte");
  run();
  const auto all = lines(contents(path("Foo.log")));
  ASSERT_EQ(all.size(), 3U);
  EXPECT_TRUE(all[0].ends_with("] 100 %@ %s %n %"));
  EXPECT_TRUE(all[1].ends_with(std::string("] a\0b", 5)));
  EXPECT_TRUE(all[2].ends_with("] bad \xef\xbf\xbd byte"));
}

TEST_F(ZELKOR_LogTest, LoggingReturnsBeforeTheLineIsWritten) {
  ZELKOR_Log::debug2("later");
  EXPECT_THAT(diagnostics(), IsEmpty());
  run();
  EXPECT_THAT(diagnostics(), ElementsAre("DEBUG2: MyApp: later"));
}

TEST_F(ZELKOR_LogTest, ABurstOfLinesTakesOneTurnOfTheQueueAndKeepsItsOrder) {
  ASSERT_TRUE(ZELKOR_Log::setLogFile(path("log.log")));
  for (int line = 0; line < 100; ++line) {
    ZELKOR_Log::debug2(std::to_string(line));
  }
  EXPECT_EQ(dispatch_.runUntilIdle(), 1U);
  const auto written = lines(contents(path("log.log")));
  ASSERT_EQ(written.size(), 100U);
  for (std::size_t line = 0; line < written.size(); ++line) {
    EXPECT_TRUE(written[line].ends_with("] " + std::to_string(line))) << written[line];
  }
  // The next line has a turn of its own again.
  ZELKOR_Log::debug2("later");
  EXPECT_EQ(dispatch_.runUntilIdle(), 1U);
  EXPECT_EQ(lines(contents(path("log.log"))).size(), 101U);
}

TEST_F(ZELKOR_LogTest, AnObserverThatThrowsCostsNoLine) {
  ASSERT_TRUE(ZELKOR_Log::setLogFile(path("log.log")));
  ZELKOR_Log::setShouldNotifyForLogUpdates(true);
  int heard = 0;
  center_.addObserver(ZELKOR_Log::LogFileDidUpdateNotification, [&](const platform::Notification&) {
    ++heard;
    throw std::runtime_error("no more");
  });
  ZELKOR_Log::debug2("first");
  ZELKOR_Log::debug2("second");
  run();
  EXPECT_EQ(heard, 2);
  EXPECT_EQ(lines(contents(path("log.log"))).size(), 2U);
  EXPECT_EQ(diagnostics().back(), "An observer of the log ended with an exception: no more");
}

TEST_F(ZELKOR_LogTest, TheDateStringHasMillisecondsTheZoneAndTheYearOfTheWeek) {
  struct Row {
    const char* zone;
    std::chrono::sys_days day;
    std::chrono::milliseconds time;
    const char* text;
  };
  using std::chrono::sys_days;
  using namespace std::chrono;
  const Row rows[] = {
      {"UTC0", 2026y / 11 / 14, 23h + 56min + 6123ms, "[2026/11/14 23:56:06.123 +0000]"},
      {"UTC0", 2027y / 1 / 1, 0ms, "[2026/01/01 00:00:00.000 +0000]"},
      {"UTC0", 2024y / 12 / 30, 9h + 7ms, "[2025/12/30 09:00:00.007 +0000]"},
      {"UTC0", 1969y / 12 / 31, 24h - 1ms, "[1970/12/31 23:59:59.999 +0000]"},
      {"EST5EDT,M3.2.0,M11.1.0", 2026y / 7 / 1, 3h, "[2026/06/30 23:00:00.000 -0400]"},
      {"EST5EDT,M3.2.0,M11.1.0", 2026y / 12 / 1, 3h, "[2026/11/30 22:00:00.000 -0500]"},
      {"IST-5:30", 2026y / 6 / 1, 0ms, "[2026/06/01 05:30:00.000 +0530]"},
  };
  for (const Row& row : rows) {
    const ZoneGuard zone(row.zone);
    EXPECT_EQ(ZELKOR_Log::logDateString(platform::Date(row.day) + row.time), row.text);
  }
  EXPECT_THAT(ZELKOR_Log::logDateString(), MatchesRegex(kStamp));
}

TEST_F(ZELKOR_LogTest, PendingLinesGoIntoTheFileWhenItIsOpened) {
  ZELKOR_Log::debug2("one");
  ZELKOR_Log::debug2("two");
  run();
  logtest::write(path("Foo.log"), "before\n");
  ASSERT_TRUE(ZELKOR_Log::setLogFile(path("Foo.log")));
  EXPECT_THAT(lines(contents(path("Foo.log"))), ElementsAre("before", MatchesRegex(stamped("D2", " one")),
                                                            MatchesRegex(stamped("D2", " two"))));
  ZELKOR_Log::debug2("three");
  run();
  EXPECT_THAT(lines(contents(path("Foo.log"))),
              ElementsAre("before", MatchesRegex(stamped("D2", " one")), MatchesRegex(stamped("D2", " two")),
                          MatchesRegex(stamped("D2", " three"))));
}

TEST_F(ZELKOR_LogTest, WithoutFileAndStandardErrorLinesAreDropped) {
  ZELKOR_Log::setShouldLogToStdErr(false);
  ZELKOR_Log::debug2("dropped");
  run();
  ZELKOR_Log::setShouldLogToStdErr(true);
  ZELKOR_Log::debug2("kept");
  run();
  ASSERT_TRUE(ZELKOR_Log::setLogFile(path("Foo.log")));
  EXPECT_THAT(lines(contents(path("Foo.log"))), ElementsAre(MatchesRegex(stamped("D2", " kept"))));
  EXPECT_THAT(diagnostics(), ElementsAre("DEBUG2: MyApp: kept"));
}

TEST_F(ZELKOR_LogTest, ThePendingBufferLosesItsFirstTenThousandCharactersBeyondAMillion) {
  // Characters of one, two and four bytes.
  for (const std::string character : {"x", "\xc3\xa4", "\xf0\x9f\x93\xb7"}) {
    ZELKOR_Log::initialize(dispatch_, center_, "MyApp");
    std::string message;
    for (int i = 0; i < 967; ++i) {
      message += character;
    }
    // Each line is "D2 ", the stamp of 31 characters, a blank, the message and a line break: 1003 characters.
    std::size_t characters = 0;
    std::size_t most = 0;
    for (int i = 0; i < 1100; ++i) {
      ZELKOR_Log::debug2(message);
      characters -= characters >= 1000001 ? 10000 : 0;
      characters += 1003;
      most = std::max(most, characters);
    }
    run();
    ASSERT_TRUE(ZELKOR_Log::setLogFile(path("Foo" + character + ".log")));
    const std::string text = contents(path("Foo" + character + ".log"));
    std::size_t found = 0;
    for (const char byte : text) {
      found += (static_cast<unsigned char>(byte) & 0xC0) != 0x80 ? 1 : 0;
    }
    EXPECT_EQ(found, characters);
    EXPECT_LE(most, 1000000U + 1003U);
    // Ten thousand characters end inside the message of a line.
    EXPECT_THAT(text.substr(0, character.size()), character);
  }
}

TEST_F(ZELKOR_LogTest, ThePendingBufferIsTrimmedFromAMillionAndOneCharactersOn) {
  for (const std::size_t characters : {std::size_t{1000000}, std::size_t{1000001}}) {
    ZELKOR_Log::initialize(dispatch_, center_, "MyApp");
    ZELKOR_Log::debug2(std::string(characters - 36, 'x'));
    ZELKOR_Log::debug2(std::string(64, 'y'));
    run();
    const std::string file = path(std::to_string(characters));
    ASSERT_TRUE(ZELKOR_Log::setLogFile(file));
    EXPECT_EQ(contents(file).size(), characters + 100 - (characters == 1000001 ? 10000 : 0));
  }
}

TEST_F(ZELKOR_LogTest, ASecondSetLogFileOpensNothingButChangesThePathOfTheNotification) {
  std::vector<std::optional<std::string>> objects;
  center_.addObserver("ZELKOR_LogFileDidUpdate", [&](const platform::Notification& notification) {
    objects.push_back(notification.object ? textOf(&*notification.object) : std::nullopt);
  });
  ZELKOR_Log::setShouldNotifyForLogUpdates(true);
  EXPECT_TRUE(ZELKOR_Log::setLogFile(path("Foo.log")));
  ZELKOR_Log::debug2("one");
  run();
  EXPECT_FALSE(ZELKOR_Log::setLogFile(path("new/Bar.log")));
  ZELKOR_Log::debug2("two");
  run();
  EXPECT_FALSE(ZELKOR_Log::setLogFile(path("Foo.log")));
  EXPECT_THAT(objects, ElementsAre(path("Foo.log"), path("new/Bar.log")));
  EXPECT_FALSE(std::filesystem::exists(path("new/Bar.log")));
  EXPECT_TRUE(std::filesystem::exists(path("new")));
  EXPECT_EQ(lines(contents(path("Foo.log"))).size(), 2U);
}

TEST_F(ZELKOR_LogTest, NotificationsHaveTheWholeLineAndComeOnTheLoggingQueue) {
  std::vector<platform::Notification> seen;
  bool onQueue = true;
  center_.addObserver("ZELKOR_LogFileDidUpdate", [&](const platform::Notification& notification) {
    seen.push_back(notification);
    onQueue = onQueue && ZELKOR_Log::loggingQueue().isCurrent() && !dispatch_.main().isCurrent();
    // Settings may be changed from here.
    ZELKOR_Log::setShouldLogAppName(false);
    ZELKOR_Log().logFileDidUpdate(notification);
  });
  ZELKOR_Log::debug2("not asked for");
  run();
  EXPECT_TRUE(seen.empty());
  ZELKOR_Log::setShouldNotifyForLogUpdates(true);
  ZELKOR_Log::debug2("pending");
  run();
  ASSERT_TRUE(ZELKOR_Log::setLogFile(path("x/../Foo.log")));
  ZELKOR_Log::debug2("written");
  run();
  EXPECT_TRUE(onQueue);
  ASSERT_EQ(seen.size(), 2U);
  EXPECT_FALSE(seen[0].object.has_value());
  EXPECT_EQ(seen[0].sender, nullptr);
  ASSERT_EQ(seen[0].userInfo.size(), 1U);
  EXPECT_THAT(textOf(seen[0].userInfo.find("ZELKOR_LogFileAddedString")).value_or(""),
              MatchesRegex(stamped("D2", " pending\n")));
  ASSERT_TRUE(seen[1].object.has_value());
  EXPECT_EQ(textOf(&*seen[1].object), path("Foo.log"));
  const std::string line = textOf(seen[1].userInfo.find("ZELKOR_LogFileAddedString")).value_or("");
  EXPECT_THAT(line, MatchesRegex(stamped("D2", " written\n")));
  EXPECT_TRUE(contents(path("Foo.log")).ends_with(line));
}

TEST_F(ZELKOR_LogTest, TheFoldersAreMadeAndTheFileIsWritableForTheGroup) {
  const mode_t before = umask(077);
  const bool opened = ZELKOR_Log::setLogFile(path("Library/Logs/Lumo/Foo.log"));
  umask(before);
  EXPECT_TRUE(opened);
  struct stat status {};
  ASSERT_EQ(stat(path("Library/Logs/Lumo/Foo.log").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0664U);
  EXPECT_THAT(diagnostics(), IsEmpty());
}

TEST_F(ZELKOR_LogTest, AFolderThatCannotBeMadeIsLoggedAndLinesStayPending) {
  logtest::write(path("file"), "");
  ZELKOR_Log::debug2("one");
  run();
  EXPECT_FALSE(ZELKOR_Log::setLogFile(path("file/Foo.log")));
  run();
  EXPECT_THAT(diagnostics(),
              ElementsAre("DEBUG2: MyApp: one",
                          "error with createDirectoryAtPath for [" + path("file/Foo.log") + "]:",
                          "ERROR = Not a directory"));
  ZELKOR_Log::debug2("two");
  run();
  EXPECT_TRUE(ZELKOR_Log::setLogFile(path("Foo.log")));
  EXPECT_THAT(lines(contents(path("Foo.log"))),
              ElementsAre(MatchesRegex(stamped("D2", " one")), MatchesRegex(stamped("D2", " two"))));
}

TEST_F(ZELKOR_LogTest, WithoutAPathNothingIsOpened) {
  EXPECT_FALSE(ZELKOR_Log::setLogFile(std::nullopt));
  EXPECT_THAT(diagnostics(),
              ElementsAre("error with createDirectoryAtPath for [(null)]:", StartsWith("ERROR = ")));
  EXPECT_FALSE(ZELKOR_Log::setLogFile(folder_.string()));
}

// In a process of its own, where nothing has set the log up yet.
TEST(ZELKOR_LogDeathTest, BeforeItIsSetUpThereIsNoFileAndNoQueueAndLinesGoNowhere) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto use = [] {
    ZELKOR_Log::debug2("nobody hears this");
    if (ZELKOR_Log::setLogFile("/nowhere/kiosk.log")) {
      std::exit(1);
    }
    try {
      ZELKOR_Log::loggingQueue();
    } catch (const std::logic_error& error) {
      std::exit(std::string(error.what()) == "the log has not been set up" ? 0 : 2);
    }
    std::exit(3);
  };
  EXPECT_EXIT(use(), testing::ExitedWithCode(0),
              "^[^\n]*The log has not been set up, so it cannot be kept in /nowhere/kiosk.log\n$");
}

TEST_F(ZELKOR_LogTest, TheLoggingQueueIsOneQueueWithTheNameOfItsOperation) {
  EXPECT_EQ(ZELKOR_Log::loggingQueue().label(), "loggingQueue");
  EXPECT_TRUE(ZELKOR_Log::loggingQueue() == ZELKOR_Log::loggingQueue());
}

TEST_F(ZELKOR_LogTest, AsciiHexHasTwoDigitsAndABlankForEachByte) {
  EXPECT_EQ(ZELKOR_Log::asciiHexForData({}), "");
  EXPECT_EQ(ZELKOR_Log::asciiHexForData(bytes(std::string("\x00\x0a\xff Z", 5))), "00 0a ff 20 5a ");
}

TEST_F(ZELKOR_LogTest, TheHexDumpGrowsByOneLineWithEachText) {
  const auto dump = [](const platform::Data& data) {
    std::vector<std::string> texts;
    ZELKOR_Log::hexDumpOfData_usingBlock(data, [&](std::string_view text) { texts.emplace_back(text); });
    return texts;
  };
  EXPECT_THAT(dump({}), IsEmpty());
  const std::string first = "00000000  30 31 32 33 34 35 36 37  38 39 61 62 63 64 65 66  |0123456789abcdef|";
  EXPECT_THAT(dump(bytes("0123456789abcdef")), ElementsAre(first));
  EXPECT_THAT(
      dump(bytes("0123456789abcdefg%")),
      ElementsAre(first, first + "00000010  67 25                                             |g%%|"));
  EXPECT_THAT(dump(bytes(std::string("\x1f $&~\x7f\x80\xff\0", 9))),
              ElementsAre("00000000  1f 20 24 26 7e 7f 80 ff  00                       |. $&~....|"));
}

#include "platform/user_defaults.h"

#include <array>
#include <chrono>
#include <filesystem>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/property_list_file.h"
#include "tests/unit/platform/child_process.h"
#include "tests/unit/platform/temporary_folder.h"

namespace {

using namespace std::chrono_literals;
using platform::Array;
using platform::Data;
using platform::Date;
using platform::Dictionary;
using platform::PropertyList;
using platform::UserDefaults;

class UserDefaultsTest : public testing::Test {
 protected:
  // What stands in the domain file now.
  Dictionary onDisk() const {
    const auto list = platform::propertyListFromFile(file);
    const auto* dictionary = list ? list->as<Dictionary>() : nullptr;
    return dictionary != nullptr ? *dictionary : Dictionary{{"unreadable", true}};
  }

  // Another process's program would do the same: read, change, replace.
  void writeAsOther(const Dictionary& values) const { UserDefaultsTest::write(file, values); }

  static void write(const std::filesystem::path& path, const Dictionary& values) {
    const auto other = path.string() + ".other";
    writeFile(other, platform::xmlDataFromPropertyList(values));
    std::filesystem::rename(other, path);
  }

  TemporaryFolder folder;
  std::filesystem::path file = folder / "lumo/test.plist";
};

ino_t inodeOf(const std::filesystem::path& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 ? status.st_ino : 0;
}

TEST_F(UserDefaultsTest, AnswersTheUsersValueThenTheRegisteredOneThenNothing) {
  UserDefaults defaults(file);
  EXPECT_EQ(defaults.stringForKey("a"), std::nullopt);
  EXPECT_EQ(defaults.objectForKey("a"), std::nullopt);
  EXPECT_FALSE(defaults.boolForKey("a"));

  defaults.registerDefaults(Dictionary{{"a", "registered"}, {"b", true}});
  EXPECT_EQ(defaults.stringForKey("a"), "registered");
  EXPECT_TRUE(defaults.boolForKey("b"));

  defaults.setObject("user", "a");
  defaults.setObject(false, "b");
  EXPECT_EQ(defaults.stringForKey("a"), "user");
  EXPECT_FALSE(defaults.boolForKey("b"));
  EXPECT_EQ(defaults.userValues(), (Dictionary{{"a", "user"}, {"b", false}}));
}

TEST_F(UserDefaultsTest, RegisteredValueShowsAgainAfterRemoval) {
  UserDefaults defaults(file);
  defaults.registerDefaults(Dictionary{{"prefPathNamesToForceFocus", "/factory"}});
  defaults.setObject("/user", "prefPathNamesToForceFocus");
  defaults.removeObject("prefPathNamesToForceFocus");
  EXPECT_EQ(defaults.stringForKey("prefPathNamesToForceFocus"), "/factory");
  EXPECT_EQ(onDisk(), Dictionary());

  defaults.setObject("/user", "prefPathNamesToForceFocus");
  defaults.setObject(std::nullopt, "prefPathNamesToForceFocus");
  EXPECT_EQ(defaults.stringForKey("prefPathNamesToForceFocus"), "/factory");
  EXPECT_EQ(onDisk(), Dictionary());

  defaults.removeObject("never set");
  EXPECT_EQ(onDisk(), Dictionary());
}

TEST_F(UserDefaultsTest, RegistersMoreAndAnew) {
  UserDefaults defaults(file);
  defaults.registerDefaults(Dictionary{{"a", "1"}, {"b", "1"}});
  defaults.registerDefaults(Dictionary{{"b", "2"}, {"c", "2"}});
  EXPECT_EQ(defaults.stringForKey("a"), "1");
  EXPECT_EQ(defaults.stringForKey("b"), "2");
  EXPECT_EQ(defaults.stringForKey("c"), "2");
  EXPECT_TRUE(defaults.userValues().empty());
  EXPECT_FALSE(std::filesystem::exists(file));
}

TEST_F(UserDefaultsTest, WithoutFactoryValuesEverythingIsFalseOrNothing) {
  UserDefaults defaults(file);
  defaults.registerDefaults(Dictionary());
  EXPECT_FALSE(defaults.boolForKey("prefShowMenuBar"));
  EXPECT_EQ(defaults.stringForKey("prefServerAddress"), std::nullopt);
  EXPECT_EQ(defaults.dictionaryForKey("prefSelectedJunivaServerInfo"), std::nullopt);
}

TEST_F(UserDefaultsTest, ConvertsOnReading) {
  struct Case {
    PropertyList value;
    bool asBool;
    std::optional<std::string> asString;
    bool isDictionary;
  };
  const std::vector<Case> cases{
      {true, true, std::nullopt, false},
      {false, false, std::nullopt, false},
      {1, true, "1", false},
      {0, false, "0", false},
      {-7, true, "-7", false},
      {0.5, true, "0.5", false},
      {0.0, false, "0", false},
      {"YES", true, "YES", false},
      {"yes", true, "yes", false},
      {"True", true, "True", false},
      {"1", true, "1", false},
      {"NO", false, "NO", false},
      {"0", false, "0", false},
      {"", false, "", false},
      {"on", false, "on", false},
      {Date(), false, std::nullopt, false},
      {Data{std::byte{1}}, false, std::nullopt, false},
      {Array{"YES"}, false, std::nullopt, false},
      {Dictionary{{"a", true}}, false, std::nullopt, true},
  };
  UserDefaults defaults(file);
  for (const auto& [value, asBool, asString, isDictionary] : cases) {
    defaults.setObject(value, "key");
    const auto text = platform::description(value);
    EXPECT_EQ(defaults.boolForKey("key"), asBool) << text;
    if (value.as<bool>() == nullptr) {
      EXPECT_EQ(defaults.stringForKey("key"), asString) << text;
    }
    EXPECT_EQ(defaults.dictionaryForKey("key").has_value(), isDictionary) << text;
    EXPECT_EQ(defaults.objectForKey("key"), value) << text;
  }
}

TEST_F(UserDefaultsTest, UsersValueOfAnotherKindHidesTheRegisteredOne) {
  UserDefaults defaults(file);
  defaults.registerDefaults(Dictionary{{"a", "registered"}, {"b", true}, {"c", Dictionary{{"x", 1}}}});
  for (const auto* key : {"a", "b", "c"}) {
    defaults.setObject(Array{1}, key);
  }
  EXPECT_EQ(defaults.stringForKey("a"), std::nullopt);
  EXPECT_FALSE(defaults.boolForKey("b"));
  EXPECT_EQ(defaults.dictionaryForKey("c"), std::nullopt);
}

TEST_F(UserDefaultsTest, KeepsEveryKindOfValue) {
  const Dictionary values{{"text", "Gr\u00F6\u00DFe <&> \u20AC"},
                          {"flag", true},
                          {"number", std::int64_t{1} << 60},
                          {"real", 0.1},
                          {"date", Date(1700000000s)},
                          {"data", Data{std::byte{0}, std::byte{255}}},
                          {"list", Array{"a", Array{}, Dictionary{{"k", 1}}}}};
  {
    UserDefaults defaults(file);
    for (const auto& [key, value] : values) {
      defaults.setObject(value, key);
    }
  }
  UserDefaults defaults(file);
  EXPECT_EQ(defaults.userValues(), values);
}

TEST_F(UserDefaultsTest, InMemoryKeepsNothing) {
  UserDefaults defaults;
  defaults.registerDefaults(Dictionary{{"a", "registered"}});
  defaults.setObject("user", "a");
  EXPECT_EQ(defaults.stringForKey("a"), "user");
  EXPECT_EQ(defaults.userValues(), (Dictionary{{"a", "user"}}));
  defaults.setObject(std::nullopt, "a");
  EXPECT_EQ(defaults.stringForKey("a"), "registered");
  EXPECT_TRUE(defaults.synchronize());
}

TEST_F(UserDefaultsTest, SeesAnotherWritersChangeAtTheNextRead) {
  UserDefaults defaults(file);
  UserDefaults other(file);
  for (int i = 0; i < 200; ++i) {
    // Of one length, so that size and often inode and time stay the same.
    const auto value = std::to_string(1000 + i);
    other.setObject(value, "a");
    ASSERT_EQ(defaults.stringForKey("a"), value);
  }
  std::filesystem::remove(file);
  EXPECT_EQ(defaults.stringForKey("a"), std::nullopt);
  writeAsOther(Dictionary{{"a", "back"}});
  EXPECT_EQ(defaults.stringForKey("a"), "back");
  // An editor that writes in place.
  writeFile(file, platform::xmlDataFromPropertyList(Dictionary{{"a", "edit"}}));
  EXPECT_EQ(defaults.stringForKey("a"), "edit");
}

TEST_F(UserDefaultsTest, SeesAnotherProcesssChangeAtTheNextRead) {
  UserDefaults defaults(file);
  defaults.setObject("mine", "a");
  ASSERT_EQ(inChild([&] {
              UserDefaults other(file);
              other.setObject("theirs", "a");
              other.setObject(true, "b");
              return 0;
            }),
            0);
  EXPECT_EQ(defaults.stringForKey("a"), "theirs");
  EXPECT_TRUE(defaults.boolForKey("b"));
}

TEST_F(UserDefaultsTest, ReadsNothingWhileTheFileStaysAsItIs) {
  UserDefaults defaults(file);
  defaults.setObject("value", "a");
  // The file's times move in ticks: for a moment after a change it is read again each time.
  const auto end = std::chrono::steady_clock::now() + 200ms;
  while (std::chrono::steady_clock::now() < end) {
    ASSERT_EQ(defaults.stringForKey("a"), "value");
  }
  const int watch = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
  ASSERT_GE(watch, 0);
  ASSERT_GE(::inotify_add_watch(watch, file.c_str(), IN_OPEN), 0);
  for (int i = 0; i < 1000; ++i) {
    ASSERT_EQ(defaults.stringForKey("a"), "value");
    ASSERT_FALSE(defaults.boolForKey("missing"));
  }
  std::array<char, 4096> events;
  EXPECT_LT(::read(watch, events.data(), events.size()), 0);
  readFile(file);
  EXPECT_GT(::read(watch, events.data(), events.size()), 0);
  ::close(watch);
}

TEST_F(UserDefaultsTest, WritesNothingWhenNothingChanges) {
  UserDefaults defaults(file);
  defaults.setObject("value", "a");
  const auto inode = inodeOf(file);
  defaults.setObject("value", "a");
  defaults.removeObject("missing");
  EXPECT_TRUE(defaults.synchronize());
  EXPECT_EQ(inodeOf(file), inode);
  defaults.setObject("other", "a");
  EXPECT_NE(inodeOf(file), inode);
}

TEST_F(UserDefaultsTest, ReadsABinaryFileAndKeepsItsValues) {
  // {"first": "last", "when": a date, "n": -1}, written by another program.
  const unsigned char binary[] = {
      0x62, 0x70, 0x6c, 0x69, 0x73, 0x74, 0x30, 0x30, 0xd3, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06,
      0x55, 0x66, 0x69, 0x72, 0x73, 0x74, 0x54, 0x77, 0x68, 0x65, 0x6e, 0x51, 0x6e, 0x54, 0x6c,
      0x61, 0x73, 0x74, 0x33, 0x41, 0xc8, 0x58, 0x99, 0x5c, 0x00, 0x00, 0x00, 0x13, 0xff, 0xff,
      0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0x08, 0x0f, 0x15, 0x1a, 0x1c, 0x21, 0x2a, 0x00, 0x00,
      0x00, 0x00, 0x00, 0x00, 0x01, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x07, 0x00,
      0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x33};
  std::filesystem::create_directories(file.parent_path());
  writeFile(file, std::string_view(reinterpret_cast<const char*>(binary), sizeof binary));
  UserDefaults defaults(file);
  EXPECT_EQ(defaults.stringForKey("first"), "last");
  defaults.setObject("new", "added");
  EXPECT_THAT(readFile(file), testing::StartsWith("<?xml"));
  const auto values = onDisk();
  EXPECT_EQ(values.size(), 4U);
  EXPECT_EQ(*values.find("n"), PropertyList(-1));
  EXPECT_TRUE(values.find("when") != nullptr && values.find("when")->as<Date>() != nullptr);
}

TEST_F(UserDefaultsTest, MakesItsFolderForTheUserAlone) {
  const auto deep = folder / "config/lumo/test.plist";
  UserDefaults defaults(deep);
  EXPECT_FALSE(std::filesystem::exists(folder / "config"));
  defaults.setObject("value", "a");
  EXPECT_EQ(std::filesystem::status(deep.parent_path()).permissions(), std::filesystem::perms::owner_all);
  EXPECT_EQ(std::filesystem::status(deep).permissions(),
            std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

TEST_F(UserDefaultsTest, KeepsTheModeOfTheFile) {
  UserDefaults defaults(file);
  defaults.setObject("value", "a");
  const auto mode = static_cast<std::filesystem::perms>(0640);
  std::filesystem::permissions(file, mode);
  defaults.setObject("other", "a");
  EXPECT_EQ(std::filesystem::status(file).permissions(), mode);
}

TEST_F(UserDefaultsTest, WritesThroughASymbolicLink) {
  write(folder / "real.plist", Dictionary{{"a", "old"}});
  std::filesystem::create_symlink("real.plist", folder / "link.plist");
  UserDefaults defaults(folder / "link.plist");
  defaults.setObject("new", "a");
  EXPECT_TRUE(std::filesystem::is_symlink(folder / "link.plist"));
  EXPECT_EQ(UserDefaults(folder / "real.plist").stringForKey("a"), "new");
}

TEST_F(UserDefaultsTest, ManyThreadsKeepEverything) {
  UserDefaults defaults(file);
  std::vector<std::thread> threads;
  threads.reserve(4);
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&defaults, t] {
      for (int i = 0; i < 25; ++i) {
        const auto key = std::to_string(t) + "-" + std::to_string(i);
        defaults.setObject(i, key);
        defaults.stringForKey(key);
        defaults.userValues();
        defaults.registerDefaults(Dictionary{{key, "registered"}});
      }
    });
  }
  for (auto& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(defaults.userValues().size(), 100U);
  EXPECT_EQ(onDisk().size(), 100U);
}

TEST(UserDefaultsStandardPath, FollowsTheDesktopsRules) {
  struct Case {
    const char* config;
    const char* home;
    std::optional<std::string> path;
  };
  const std::vector<Case> cases{
      {"/c", "/h", "/c/lumo/com.lumo.LumoBrowser.plist"},
      {nullptr, "/h", "/h/.config/lumo/com.lumo.LumoBrowser.plist"},
      {"", "/h", "/h/.config/lumo/com.lumo.LumoBrowser.plist"},
      {"relative", "/h", "/h/.config/lumo/com.lumo.LumoBrowser.plist"},
      {"/c", nullptr, "/c/lumo/com.lumo.LumoBrowser.plist"},
      {nullptr, "relative", std::nullopt},
      {nullptr, nullptr, std::nullopt},
  };
  for (const auto& [config, home, path] : cases) {
    const ScopedEnvironment one("XDG_CONFIG_HOME", config);
    const ScopedEnvironment two("HOME", home);
    EXPECT_EQ(UserDefaults::standardPath("com.lumo.LumoBrowser"), path);
  }
}

}  // namespace

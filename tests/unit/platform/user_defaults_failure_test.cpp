#include <array>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <functional>
#include <new>
#include <random>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/property_list_file.h"
#include "platform/user_defaults.h"
#include "tests/unit/platform/child_process.h"
#include "tests/unit/platform/temporary_folder.h"

// What happens to preferences when processes, disks and files fail.
namespace {

using namespace std::chrono_literals;
using platform::Array;
using platform::Dictionary;
using platform::PropertyList;
using platform::UserDefaults;

constexpr uid_t nobody = 65534;

std::size_t occurrences(std::string_view text, std::string_view part) {
  std::size_t count = 0;
  for (auto at = text.find(part); at != std::string_view::npos; at = text.find(part, at + part.size())) {
    ++count;
  }
  return count;
}

// Runs as a user whom rights bind, also where the test runs as root.
int withoutPrivileges(const std::function<int()>& body) {
  return inChild([&] { return ::geteuid() == 0 && ::seteuid(nobody) != 0 ? 100 : body(); });
}

class UserDefaultsFailureTest : public testing::Test {
 protected:
  Dictionary onDisk() const {
    const auto list = platform::propertyListFromFile(file);
    const auto* dictionary = list ? list->as<Dictionary>() : nullptr;
    return dictionary != nullptr ? *dictionary : Dictionary{{"unreadable", true}};
  }

  TemporaryFolder folder;
  std::filesystem::path file = folder / "test.plist";
};

TEST_F(UserDefaultsFailureTest, TwoProcessesKeepEachOthersKeys) {
  constexpr int count = 200;
  const auto writer = [this](const std::string& name) {
    return [this, name] {
      UserDefaults defaults(file);
      for (int i = 0; i < count; ++i) {
        defaults.setObject(i, name + std::to_string(i));
      }
      return defaults.synchronize() ? 0 : 1;
    };
  };
  const auto one = startChild(writer("one"));
  const auto two = startChild(writer("two"));
  EXPECT_EQ(endOfChild(one), 0);
  EXPECT_EQ(endOfChild(two), 0);
  const auto values = onDisk();
  EXPECT_EQ(values.size(), 2U * count);
  for (const std::string name : {"one", "two"}) {
    for (int i = 0; i < count; ++i) {
      const auto* value = values.find(name + std::to_string(i));
      ASSERT_TRUE(value != nullptr) << name << i;
      EXPECT_EQ(*value, PropertyList(i));
    }
  }
}

TEST_F(UserDefaultsFailureTest, KilledWritersLeaveTheOldValueOrTheNewOne) {
  // Of some size, so that half a write would show.
  const auto valueOf = [](int number) {
    std::string text = std::to_string(number) + ":";
    return text + std::string(4000, static_cast<char>('a' + number % 26)) + ":" + std::to_string(number);
  };
  auto* memory =
      ::mmap(nullptr, sizeof(std::atomic<int>), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  ASSERT_NE(memory, MAP_FAILED);
  // The number of the last value whose call has returned.
  auto& written = *new (memory) std::atomic<int>(0);
  UserDefaults(file).setObject("another", "kept");

  std::mt19937 random(11);
  const auto end = std::chrono::steady_clock::now() + 60s;
  int kills = 0;
  int lastWritten = 0;
  for (; kills < 200 && std::chrono::steady_clock::now() < end; ++kills) {
    std::array<int, 2> progress{};
    ASSERT_EQ(::pipe(progress.data()), 0);
    const auto child = startChild([&] {
      UserDefaults defaults(file);
      while (::write(progress[1], "x", 1) == 1) {
        const int next = written + 1;
        defaults.setObject(valueOf(next), "value");
        written = next;
      }
      return 1;
    });
    ASSERT_GT(child, 0);
    ::close(progress[1]);
    // One to four bytes: at the start or after so many writes.
    for (auto steps = random() % 4 + 1; steps > 0; --steps) {
      char byte = 0;
      ASSERT_EQ(::read(progress[0], &byte, 1), 1);
    }
    // The moment within the next write is all that this wait is for.
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 2500));
    ::kill(child, SIGKILL);
    ASSERT_EQ(endOfChild(child), -SIGKILL);
    ::close(progress[0]);

    const auto values = onDisk();
    ASSERT_FALSE(values.contains("unreadable")) << kills;
    ASSERT_TRUE(values.contains("kept"));
    EXPECT_EQ(*values.find("kept"), PropertyList("another"));
    const int last = written;
    const auto* value = values.find("value");
    if (last > 0) {
      ASSERT_TRUE(value != nullptr);
    }
    // The child can be killed between the replacement of the file and its return.
    const bool isOld = value == nullptr ? last == 0 : *value == PropertyList(valueOf(last));
    const bool isNew = value != nullptr && *value == PropertyList(valueOf(last + 1));
    ASSERT_TRUE(isOld || isNew) << "after " << last << " writes";
    lastWritten = last;
  }
  EXPECT_EQ(kills, 200);
  EXPECT_GT(lastWritten, 200);
  UserDefaults(file).setObject("alive", "value");
  EXPECT_EQ(folder.names().size(), 2U) << "only the file and its lock stay";
  ::munmap(memory, sizeof(std::atomic<int>));
}

TEST_F(UserDefaultsFailureTest, SetsDamagedFilesAside) {
  const auto whole = platform::xmlDataFromPropertyList(Dictionary{{"a", "user"}});
  const std::vector<std::string> contents{
      "",
      "x",
      whole.substr(0, whole.size() / 2),
      whole.substr(0, whole.size() - 10),
      platform::xmlDataFromPropertyList(Array{"a"}),
      std::string("bplist00") + std::string(60, '\xFF'),
      std::string(4096, '\0'),
      "<html><body>Bad gateway</body></html>",
  };
  for (const auto& content : contents) {
    const TemporaryFolder place;
    const auto path = place / "test.plist";
    writeFile(path, content);
    testing::internal::CaptureStderr();
    UserDefaults defaults(path);
    defaults.registerDefaults(Dictionary{{"a", "registered"}});
    EXPECT_EQ(defaults.stringForKey("a"), "registered");
    EXPECT_TRUE(defaults.userValues().empty());
    EXPECT_TRUE(defaults.synchronize());
    const auto log = testing::internal::GetCapturedStderr();
    EXPECT_EQ(occurrences(log, "is damaged"), 1U) << log;

    const auto kept = place.names("test.plist.damaged-");
    ASSERT_EQ(kept.size(), 1U);
    EXPECT_THAT(kept[0], testing::MatchesRegex("test.plist.damaged-[0-9]+-[0-9]+"));
    EXPECT_EQ(kept[0].size(), std::string("test.plist.damaged-YYYYMMDD-HHMMSS").size());
    EXPECT_EQ(readFile(place / kept[0]), content);
    defaults.setObject("new", "a");
    EXPECT_EQ(UserDefaults(path).stringForKey("a"), "new");
  }
}

TEST_F(UserDefaultsFailureTest, SetsAFileAsideThatIsDamagedLater) {
  UserDefaults defaults(file);
  defaults.setObject("user", "a");
  writeFile(file, "damaged");
  EXPECT_EQ(defaults.stringForKey("a"), std::nullopt);
  writeFile(file, "damaged again, in the same second");
  defaults.setObject("new", "b");
  EXPECT_EQ(onDisk(), (Dictionary{{"b", "new"}}));
  EXPECT_EQ(folder.names("test.plist.damaged-").size(), 2U);
}

TEST_F(UserDefaultsFailureTest, ADamagedFileStaysWhereItCannotBeSetAside) {
  struct Obstacle {
    const char* what;
    std::filesystem::perms folder;
    const char* line;
  };
  // Without the lock nobody may touch the file; with it, the folder may still forbid to rename.
  const std::vector<Obstacle> obstacles{
      {"no lock", std::filesystem::perms::owner_all, "cannot lock"},
      {"no other name", static_cast<std::filesystem::perms>(0555), "cannot set aside the damaged"}};
  for (const auto& [what, rights, line] : obstacles) {
    const TemporaryFolder place;
    const auto path = place / "test.plist";
    writeFile(path, "damaged");
    std::filesystem::permissions(path, static_cast<std::filesystem::perms>(0666));
    if (rights == std::filesystem::perms::owner_all) {
      std::filesystem::create_directory(place / "test.plist.lock");
    } else {
      writeFile(place / "test.plist.lock", "");
      std::filesystem::permissions(place / "test.plist.lock", static_cast<std::filesystem::perms>(0666));
    }
    std::filesystem::permissions(place.path(), rights);
    testing::internal::CaptureStderr();
    EXPECT_EQ(withoutPrivileges([&path = path] {
                UserDefaults defaults(path);
                if (defaults.stringForKey("a")) return 1;
                defaults.setObject("new", "a");
                defaults.setObject("newer", "a");
                return defaults.stringForKey("a") == "newer" && !defaults.synchronize() ? 0 : 2;
              }),
              0)
        << what;
    EXPECT_EQ(occurrences(testing::internal::GetCapturedStderr(), line), 1U) << what;
    EXPECT_EQ(readFile(path), "damaged") << what;
  }
}

TEST_F(UserDefaultsFailureTest, LivesInMemoryWhereNoFolderCanBe) {
  writeFile(folder / "file", "x");
  testing::internal::CaptureStderr();
  {
    UserDefaults defaults(folder / "file/lumo/test.plist");
    defaults.registerDefaults(Dictionary{{"a", "registered"}});
    for (int i = 0; i < 5; ++i) {
      defaults.setObject(i, "a");
      EXPECT_EQ(defaults.objectForKey("a"), PropertyList(i));
    }
    EXPECT_FALSE(defaults.synchronize());
    defaults.removeObject("a");
    EXPECT_EQ(defaults.stringForKey("a"), "registered");
  }
  const auto log = testing::internal::GetCapturedStderr();
  EXPECT_EQ(occurrences(log, "make the folder"), 1U) << log;
  EXPECT_EQ(readFile(folder / "file"), "x");
}

TEST_F(UserDefaultsFailureTest, LivesInMemoryWhereAFolderStandsInTheWay) {
  std::filesystem::create_directory(file);
  testing::internal::CaptureStderr();
  {
    UserDefaults defaults(file);
    defaults.setObject("value", "a");
    EXPECT_EQ(defaults.stringForKey("a"), "value");
    EXPECT_FALSE(defaults.synchronize());
    std::filesystem::remove(file);
    EXPECT_TRUE(defaults.synchronize());
  }
  EXPECT_EQ(occurrences(testing::internal::GetCapturedStderr(), "cannot read"), 1U);
  EXPECT_EQ(onDisk(), (Dictionary{{"a", "value"}}));
}

TEST_F(UserDefaultsFailureTest, AFolderWithoutRightsLosesNothing) {
  UserDefaults(file).setObject("old", "a");
  std::filesystem::permissions(file, static_cast<std::filesystem::perms>(0644));
  std::filesystem::permissions(folder.path(), static_cast<std::filesystem::perms>(0555));
  testing::internal::CaptureStderr();
  EXPECT_EQ(withoutPrivileges([&] {
              UserDefaults defaults(file);
              if (!defaults.synchronize()) return 1;
              defaults.setObject("new", "a");
              defaults.setObject("new", "b");
              if (defaults.stringForKey("a") != "new" || defaults.stringForKey("b") != "new") return 2;
              if (defaults.synchronize()) return 3;
              return UserDefaults(file).stringForKey("a") == "old" ? 0 : 4;
            }),
            0);
  EXPECT_EQ(occurrences(testing::internal::GetCapturedStderr(), "cannot lock"), 1U);
  std::filesystem::permissions(folder.path(), std::filesystem::perms::owner_all);
  EXPECT_EQ(onDisk(), (Dictionary{{"a", "old"}}));
}

TEST_F(UserDefaultsFailureTest, AFileMadeReadOnlyStays) {
  UserDefaults(file).setObject("old", "a");
  std::filesystem::permissions(file, static_cast<std::filesystem::perms>(0444));
  std::filesystem::permissions(folder / "test.plist.lock", static_cast<std::filesystem::perms>(0666));
  std::filesystem::permissions(folder.path(), static_cast<std::filesystem::perms>(0777));
  EXPECT_EQ(withoutPrivileges([&] {
              UserDefaults defaults(file);
              defaults.setObject("new", "a");
              return defaults.stringForKey("a") == "new" && !defaults.synchronize() ? 0 : 1;
            }),
            0);
  EXPECT_EQ(onDisk(), (Dictionary{{"a", "old"}}));
}

TEST_F(UserDefaultsFailureTest, AFileThatCannotBeReadIsNeverReplaced) {
  UserDefaults(file).setObject("old", "a");
  std::filesystem::permissions(file, static_cast<std::filesystem::perms>(0200));
  std::filesystem::permissions(folder / "test.plist.lock", static_cast<std::filesystem::perms>(0666));
  std::filesystem::permissions(folder.path(), static_cast<std::filesystem::perms>(0777));
  if (::geteuid() == 0) {
    ASSERT_EQ(::chown(file.c_str(), nobody, static_cast<gid_t>(-1)), 0);
  }
  EXPECT_EQ(withoutPrivileges([&] {
              UserDefaults defaults(file);
              if (defaults.synchronize()) return 1;
              defaults.setObject("new", "b");
              if (defaults.stringForKey("b") != "new" || defaults.synchronize()) return 2;
              if (::chmod(file.c_str(), 0600) != 0) return 3;
              return defaults.synchronize() && defaults.stringForKey("a") == "old" ? 0 : 4;
            }),
            0);
  std::filesystem::permissions(file, std::filesystem::perms::owner_all);
  EXPECT_EQ(onDisk(), (Dictionary{{"a", "old"}, {"b", "new"}}));
}

TEST_F(UserDefaultsFailureTest, ALimitOnFilesLosesNothing) {
  UserDefaults(file).setObject("old", "a");
  testing::internal::CaptureStderr();
  EXPECT_EQ(inChild([&] {
              ::signal(SIGXFSZ, SIG_IGN);
              struct rlimit limit {};
              ::getrlimit(RLIMIT_FSIZE, &limit);
              const auto before = limit.rlim_cur;
              limit.rlim_cur = 4096;
              UserDefaults defaults(file);
              ::setrlimit(RLIMIT_FSIZE, &limit);
              defaults.setObject(std::string(10000, 'x'), "large");
              defaults.setObject("new", "a");
              if (defaults.stringForKey("large") != std::string(10000, 'x')) return 1;
              if (defaults.stringForKey("a") != "new") return 2;
              if (defaults.synchronize()) return 3;
              if (UserDefaults(file).stringForKey("a") != "old") return 4;
              limit.rlim_cur = before;
              ::setrlimit(RLIMIT_FSIZE, &limit);
              return defaults.synchronize() ? 0 : 5;
            }),
            0);
  EXPECT_EQ(occurrences(testing::internal::GetCapturedStderr(), "cannot write"), 1U);
  EXPECT_EQ(onDisk(), (Dictionary{{"a", "new"}, {"large", std::string(10000, 'x')}}));
  EXPECT_EQ(folder.names().size(), 2U);
}

TEST_F(UserDefaultsFailureTest, AFullDiskLosesNothing) {
  constexpr int noMount = 77;
  testing::internal::CaptureStderr();
  const auto result = inChild([&] {
    // A small file system of this child's own.
    if (::unshare(CLONE_NEWNS | (::geteuid() == 0 ? 0 : CLONE_NEWUSER)) != 0 ||
        ::mount("none", "/", "none", MS_REC | MS_PRIVATE, nullptr) != 0 ||
        ::mount("tmpfs", folder.path().c_str(), "tmpfs", 0, "size=128k") != 0) {
      return noMount;
    }
    UserDefaults defaults(file);
    defaults.setObject("old", "a");
    writeFile(folder / "filler", std::string(200000, 'f'));
    for (int i = 0; i < 20; ++i) {
      defaults.setObject(std::string(1000, 'x'), "key" + std::to_string(i));
    }
    defaults.setObject("new", "a");
    if (defaults.userValues().size() != 21 || defaults.stringForKey("a") != "new") return 1;
    if (defaults.synchronize()) return 2;
    if (UserDefaults(file).stringForKey("a") != "old") return 3;
    std::filesystem::remove(folder / "filler");
    // The next change that succeeds takes all that waited along.
    defaults.setObject(true, "b");
    UserDefaults fresh(file);
    if (fresh.userValues().size() != 22 || fresh.stringForKey("a") != "new") return 4;
    return folder.names().size() == 2 ? 0 : 5;
  });
  const auto log = testing::internal::GetCapturedStderr();
  if (result == noMount) {
    GTEST_SKIP() << "no file system can be mounted here";
  }
  EXPECT_EQ(result, 0);
  EXPECT_EQ(occurrences(log, "cannot write"), 1U) << log;
}

TEST_F(UserDefaultsFailureTest, LogsAFailureAgainAfterASuccess) {
  testing::internal::CaptureStderr();
  UserDefaults defaults(file);
  const auto lock = folder / "test.plist.lock";
  for (int round = 0; round < 2; ++round) {
    std::filesystem::create_directory(lock);
    defaults.setObject(round, "a");
    defaults.setObject(round, "b");
    EXPECT_FALSE(defaults.synchronize());
    std::filesystem::remove(lock);
    EXPECT_TRUE(defaults.synchronize());
    std::filesystem::remove(lock);
  }
  EXPECT_EQ(occurrences(testing::internal::GetCapturedStderr(), "cannot lock"), 2U);
  EXPECT_EQ(onDisk(), (Dictionary{{"a", 1}, {"b", 1}}));
}

TEST_F(UserDefaultsFailureTest, AStoppedProcessWithTheLockStopsNobody) {
  UserDefaults defaults(file);
  defaults.setObject("old", "a");
  const int lock = ::open((folder / "test.plist.lock").c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_EQ(::flock(lock, LOCK_EX), 0);
  const auto start = std::chrono::steady_clock::now();
  defaults.setObject("new", "a");
  EXPECT_LT(std::chrono::steady_clock::now() - start, 10s);
  EXPECT_EQ(defaults.stringForKey("a"), "new");
  EXPECT_EQ(onDisk(), (Dictionary{{"a", "old"}}));
  ::close(lock);
  EXPECT_TRUE(defaults.synchronize());
  EXPECT_EQ(onDisk(), (Dictionary{{"a", "new"}}));
}

TEST_F(UserDefaultsFailureTest, WritesWhatWaitsAtTheEnd) {
  const auto lock = folder / "test.plist.lock";
  std::filesystem::create_directory(lock);
  {
    UserDefaults defaults(file);
    defaults.setObject("value", "a");
    std::filesystem::remove(lock);
  }
  EXPECT_EQ(onDisk(), (Dictionary{{"a", "value"}}));
}

TEST_F(UserDefaultsFailureTest, RefusesWhatTheFileCannotCarry) {
  PropertyList deep(true);
  for (int i = 0; i < 600; ++i) {
    deep = Array{deep};
  }
  testing::internal::CaptureStderr();
  const auto lock = folder / "test.plist.lock";
  UserDefaults defaults(file);
  defaults.setObject("kept", "a");
  // Also when it waited with others.
  std::filesystem::remove(lock);
  std::filesystem::create_directory(lock);
  defaults.setObject(deep, "deep");
  defaults.setObject("kept", "b");
  std::filesystem::remove(lock);
  EXPECT_TRUE(defaults.synchronize());
  defaults.setObject(std::string(platform::propertyListSizeLimit, 'x'), "large");
  EXPECT_EQ(defaults.objectForKey("deep"), std::nullopt);
  EXPECT_EQ(defaults.objectForKey("large"), std::nullopt);
  EXPECT_EQ(onDisk(), (Dictionary{{"a", "kept"}, {"b", "kept"}}));
  const auto log = testing::internal::GetCapturedStderr();
  EXPECT_THAT(log, testing::HasSubstr("the value for deep"));
  EXPECT_THAT(log, testing::HasSubstr("the value for large"));
}

TEST_F(UserDefaultsFailureTest, KeepsFilesReadableWhateverTheTextsHold) {
  testing::internal::CaptureStderr();
  UserDefaults defaults(file);
  defaults.setObject(std::string("a\x01z\0y", 5), "control");
  defaults.setObject("a\xFFz", "bytes");
  defaults.setObject("value", "k\x02y");
  testing::internal::GetCapturedStderr();
  EXPECT_EQ(UserDefaults(file).userValues(),
            (Dictionary{{"control", "azy"}, {"bytes", "a\uFFFDz"}, {"ky", "value"}}));
  EXPECT_EQ(defaults.userValues(), UserDefaults(file).userValues());
}

TEST_F(UserDefaultsFailureTest, LeftoversOfKilledWritersDoNotPileUp) {
  for (int i = 0; i < 3; ++i) {
    writeFile(folder / "test.plist.new", "half a fi");
    UserDefaults(file).setObject(i, "a");
    EXPECT_EQ(folder.names().size(), 2U);
  }
}

}  // namespace

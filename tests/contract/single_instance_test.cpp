#include "platform/linux/single_instance.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/contract/other_copy.h"
#include "tests/contract/private_bus.h"
#include "tests/fakes/captured_log.h"

using platform::RunningApplication;
using platform::SingleInstance;

namespace fs = std::filesystem;

namespace {

class SingleInstanceTest : public testing::Test {
 protected:
  SingleInstanceTest() {
    char name[] = "/tmp/lumo-runtime-XXXXXX";
    folder_ = mkdtemp(name);
  }
  ~SingleInstanceTest() override { fs::remove_all(folder_); }

  fs::path file() const { return folder_ / "com.lumo.LumoBrowser.lock"; }

  fs::path folder_;
  SingleInstance instance_{"com.lumo.LumoBrowser"};
  const RunningApplication self_{getpid()};
};

using Copies = std::vector<RunningApplication>;

}  // namespace

TEST_F(SingleInstanceTest, TakesAFreePlaceAndWritesItsProcess) {
  EXPECT_EQ(instance_.claim(folder_), Copies{self_});
  EXPECT_EQ(instance_.claim(folder_), Copies{self_});
  std::ifstream lock(file());
  int process = 0;
  lock >> process;
  EXPECT_EQ(process, getpid());
  EXPECT_EQ(fs::status(file()).permissions() & fs::perms::mask,
            fs::perms::owner_read | fs::perms::owner_write | fs::perms::sticky_bit);
}

TEST_F(SingleInstanceTest, NamesTheHolderOfATakenPlaceFirst) {
  OtherCopy other(folder_);
  EXPECT_EQ(instance_.claim(folder_), (Copies{{other.process()}, self_}));
  other.end();
  EXPECT_EQ(instance_.claim(folder_), Copies{self_});
}

TEST_F(SingleInstanceTest, TakesOverWhatAnotherCopyLeft) {
  std::ofstream(file()) << "123456789\nleft from a crash\n";
  EXPECT_EQ(instance_.claim(folder_), Copies{self_});
  std::ifstream lock(file());
  const std::string text((std::istreambuf_iterator<char>(lock)), {});
  EXPECT_EQ(text, std::to_string(getpid()) + "\n");
}

TEST_F(SingleInstanceTest, CopesWithAHolderThatWroteNothing) {
  const OtherCopy other(folder_);
  for (const char* content : {"", "nonsense", "-5", "99999999999999999999"}) {
    std::ofstream(file(), std::ios::trunc) << content;
    EXPECT_EQ(instance_.claim(folder_), (Copies{{0}, self_})) << content;
  }
}

TEST_F(SingleInstanceTest, DoesNotGiveThePlaceToChildren) {
  std::optional<SingleInstance> first("com.lumo.LumoBrowser");
  ASSERT_EQ(first->claim(folder_), Copies{self_});
  int in[2];
  int out[2];
  ASSERT_EQ(pipe2(in, O_CLOEXEC), 0);
  ASSERT_EQ(pipe2(out, O_CLOEXEC), 0);
  const platform::FileDescriptor childIn(in[0]);
  platform::FileDescriptor toChild(in[1]);
  const platform::FileDescriptor fromChild(out[0]);
  const platform::FileDescriptor childOut(out[1]);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, childIn.get(), STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, childOut.get(), STDOUT_FILENO);
  const char* arguments[] = {"cat", nullptr};
  pid_t child = 0;
  ASSERT_EQ(posix_spawnp(&child, "cat", &actions, nullptr, const_cast<char**>(arguments), environ), 0);
  posix_spawn_file_actions_destroy(&actions);
  // When it answers it is the other program, without what is not inherited.
  char byte = 0;
  ASSERT_EQ(write(toChild.get(), "x", 1), 1);
  ASSERT_EQ(read(fromChild.get(), &byte, 1), 1);
  first.reset();
  EXPECT_EQ(instance_.claim(folder_), Copies{self_});
  toChild.reset();
  waitpid(child, nullptr, 0);
}

TEST_F(SingleInstanceTest, CannotTellWithoutAUsableFile) {
  const fakes::CapturedLog log;
  EXPECT_EQ(instance_.claim(std::nullopt), std::nullopt);
  EXPECT_EQ(instance_.claim(folder_ / "missing"), std::nullopt);
  fs::create_directory(file());
  EXPECT_EQ(instance_.claim(folder_), std::nullopt);
  fs::remove(file());
  fs::create_symlink(folder_ / "elsewhere", file());
  EXPECT_EQ(instance_.claim(folder_), std::nullopt);
  EXPECT_FALSE(fs::exists(folder_ / "elsewhere"));
  EXPECT_EQ(log.lines().size(), 3U) << log.text();
}

TEST_F(SingleInstanceTest, UsesTheSessionsRuntimeFolder) {
  const ScopedEnvironment given("XDG_RUNTIME_DIR", folder_.string());
  EXPECT_EQ(platform::runtimeFolder(), folder_);
}

TEST_F(SingleInstanceTest, HasAFolderOfItsOwnWithoutARuntimeFolder) {
  for (const std::string& given : {std::string(), (folder_ / "missing").string(), std::string("relative")}) {
    const ScopedEnvironment runtime("XDG_RUNTIME_DIR", given);
    const auto folder = platform::runtimeFolder();
    ASSERT_TRUE(folder);
    struct stat status = {};
    ASSERT_EQ(lstat(folder->c_str(), &status), 0);
    EXPECT_TRUE(S_ISDIR(status.st_mode));
    EXPECT_EQ(status.st_uid, geteuid());
    EXPECT_EQ(status.st_mode & (S_IRWXG | S_IRWXO), 0U) << *folder;
  }
}

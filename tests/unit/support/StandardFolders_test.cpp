#include "support/StandardFolders.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/ZELKOR_Base.h"
#include "tests/unit/platform/child_process.h"
#include "tests/unit/platform/temporary_folder.h"

namespace {

using Kind = lumo::SearchPathDirectory;
using Folders = std::vector<std::string>;
using lumo::standardFolders;
using lumo::userDirectory;

const std::string kGerman =
    "# This file is written by xdg-user-dirs-update\n"
    "XDG_DESKTOP_DIR=\"$HOME/Schreibtisch\"\n"
    "  XDG_DOCUMENTS_DIR=\"$HOME/Dokumente und mehr\"\n"
    "XDG_DOWNLOAD_DIR=\"/data/downloads/\"\n"
    "#XDG_MUSIC_DIR=\"$HOME/Musik\"\n"
    "XDG_VIDEOS_DIR=\"$HOME/\"\n"
    "XDG_PICTURES_DIR=\"relative\"\n"
    "XDG_TEMPLATES_DIR=\"$HOME/a\\\"b\\$c\"\n";

TEST(StandardFolders, AreThoseOfTheDomainsInTheirOrder) {
  struct Row {
    Kind kind;
    unsigned domains;
    Folders folders;
  };
  const std::vector<Row> rows = {
      {Kind::Desktop, lumo::AllDomains, {"~/Desktop"}},
      {Kind::Desktop, lumo::SystemDomain, {}},
      {Kind::Document, lumo::UserDomain, {"~/Documents"}},
      {Kind::Downloads, lumo::AllDomains, {"~/Downloads"}},
      {Kind::Movies, lumo::AllDomains, {"~/Videos"}},
      {Kind::Music, lumo::AllDomains, {"~/Music"}},
      {Kind::Pictures, lumo::AllDomains, {"~/Pictures"}},
      {Kind::SharedPublic, lumo::AllDomains, {"~/Public"}},
      {Kind::Trash, lumo::AllDomains, {"~/.local/share/Trash"}},
      {Kind::AutosavedInformation, lumo::AllDomains, {"~/.local/state"}},
      {Kind::Library, lumo::AllDomains, {"~/Library", "/usr/local/lib", "/usr/lib"}},
      {Kind::AllLibraries, lumo::AllDomains, {"~/Library", "/usr/local/lib", "/usr/lib"}},
      {Kind::Library, lumo::LocalDomain | lumo::SystemDomain, {"/usr/local/lib", "/usr/lib"}},
      {Kind::Library, lumo::NetworkDomain, {}},
      {Kind::Caches, lumo::AllDomains, {"~/.cache", "/var/cache"}},
      {Kind::ApplicationSupport, lumo::AllDomains, {"~/.local/share", "/usr/local/share", "/usr/share"}},
      {Kind::Application,
       lumo::AllDomains,
       {"~/.local/share/applications", "/usr/local/share/applications", "/usr/share/applications"}},
      {Kind::AllApplications, lumo::SystemDomain, {"/usr/share/applications"}},
      {Kind::Documentation, lumo::AllDomains, {"/usr/local/share/doc", "/usr/share/doc"}},
      {Kind::PrinterDescription, lumo::AllDomains, {"/usr/local/share/ppd", "/usr/share/ppd"}},
      {Kind::User, lumo::AllDomains, {"/home"}},
      {static_cast<Kind>(9999), lumo::AllDomains, {}},
      {Kind::Desktop, 0, {}},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(standardFolders(row.kind, row.domains, ""), row.folders) << static_cast<unsigned>(row.kind);
  }
}

TEST(StandardFolders, HaveTheirNamesInTheUsersLanguage) {
  EXPECT_EQ(standardFolders(Kind::Desktop, lumo::AllDomains, kGerman), Folders{"~/Schreibtisch"});
  EXPECT_EQ(standardFolders(Kind::Downloads, lumo::AllDomains, kGerman), Folders{"/data/downloads"});
  EXPECT_EQ(standardFolders(Kind::Music, lumo::AllDomains, kGerman), Folders{"~/Music"});
  EXPECT_EQ(standardFolders(Kind::Library, lumo::UserDomain, kGerman), Folders{"~/Library"});
}

TEST(StandardFolders, ReadTheUsersFile) {
  EXPECT_EQ(userDirectory(kGerman, "DOCUMENTS"), "~/Dokumente und mehr");
  EXPECT_EQ(userDirectory(kGerman, "VIDEOS"), "~");
  EXPECT_EQ(userDirectory(kGerman, "TEMPLATES"), "~/a\"b$c");
  EXPECT_EQ(userDirectory(kGerman, "MUSIC"), std::nullopt);
  EXPECT_EQ(userDirectory(kGerman, "PICTURES"), std::nullopt);
  EXPECT_EQ(userDirectory("XDG_MUSIC_DIR=\"/a\"\nXDG_MUSIC_DIR=\"/b\"\n", "MUSIC"), "/b");
  EXPECT_EQ(userDirectory("XDG_MUSIC_DIR=\"/\"", "MUSIC"), "/");
  EXPECT_EQ(userDirectory("XDG_MUSIC_DIR=\"/open", "MUSIC"), "/open");
  EXPECT_EQ(userDirectory("XDG_MUSIC_DIR=\"\\", "MUSIC"), std::nullopt);
  EXPECT_EQ(userDirectory("", "MUSIC"), std::nullopt);
}

TEST(FirstFoundDirectory, WithDomainZeroIsLookedForInEveryDomain) {
  const TemporaryFolder folder;
  const ScopedEnvironment config("XDG_CONFIG_HOME", folder.path().c_str());
  const auto first = &lumo::ZELKOR_Base::firstFoundDirectoryType_inDomain;
  EXPECT_EQ(first(Kind::Library, 0), "~/Library");
  EXPECT_EQ(first(Kind::Documentation, 0), "/usr/local/share/doc");
  EXPECT_EQ(first(Kind::Library, lumo::SystemDomain), "/usr/lib");
  EXPECT_EQ(first(Kind::Desktop, lumo::LocalDomain), std::nullopt);
  EXPECT_EQ(first(static_cast<Kind>(6), 0), std::nullopt);
}

TEST(FirstFoundDirectory, FollowsTheUsersFile) {
  const TemporaryFolder folder;
  std::filesystem::create_directories(folder / ".config");
  writeFile(folder / "user-dirs.dirs", kGerman);
  writeFile(folder / ".config/user-dirs.dirs", "XDG_DESKTOP_DIR=\"$HOME/Bureau\"\n");
  const ScopedEnvironment home("HOME", folder.path().c_str());
  {
    const ScopedEnvironment config("XDG_CONFIG_HOME", folder.path().c_str());
    EXPECT_EQ(lumo::ZELKOR_Base::firstFoundDirectoryType_inDomain(Kind::Desktop, 0), "~/Schreibtisch");
  }
  {
    const ScopedEnvironment config("XDG_CONFIG_HOME", nullptr);
    EXPECT_EQ(lumo::ZELKOR_Base::firstFoundDirectoryType_inDomain(Kind::Desktop, 0), "~/Bureau");
  }
}

}  // namespace

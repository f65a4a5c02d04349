#include "platform/file_kind.h"

#include <filesystem>
#include <fstream>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include "platform/file_descriptor.h"
#include "tests/unit/platform/temporary_folder.h"

// The shared MIME database of this machine, as the system asks it.

namespace platform {
namespace {

constexpr uid_t kNobody = 65534;

class FileKindTest : public testing::Test {
 protected:
  std::string file(const std::string& name, const std::string& content) {
    writeFile(folder / name, content);
    return folder / name;
  }
  static std::vector<FileKind> kindsOf(const std::string& type) {
    std::vector<FileKind> kinds;
    for (const FileKind kind : {FileKind::Text, FileKind::Image, FileKind::PDF, FileKind::Movie}) {
      if (typeConformsToKind(type, kind)) {
        kinds.push_back(kind);
      }
    }
    return kinds;
  }

  TemporaryFolder folder;
};

TEST_F(FileKindTest, NameAndContentTellTheType) {
  const std::pair<std::string, std::string> rows[] = {
      {file("a.txt", "text"), "text/plain"},
      {file("a.html", "<!doctype html>"), "text/html"},
      {file("a.jpg", "\xFF\xD8\xFF\xE0 and so on"), "image/jpeg"},
      {file("A.JPG", "\xFF\xD8\xFF\xE0 and so on"), "image/jpeg"},
      {file("a.svg", "<svg xmlns='http://www.w3.org/2000/svg'/>"), "image/svg+xml"},
      {file("a.pdf", "%PDF-1.4\n"), "application/pdf"},
      {file("run.sh", "#!/bin/sh\n"), "application/x-shellscript"},
      {file("a.zip", "PK\x03\x04"), "application/zip"},
      // Without an extension the content decides.
      {file("photo", "\xFF\xD8\xFF\xE0 and so on"), "image/jpeg"},
      {file("document", "%PDF-1.4\n"), "application/pdf"},
      {file("run", "#!/bin/sh\necho\n"), "application/x-shellscript"},
      {file("notes", "plain words\n"), "text/plain"},
      {file("bytes", std::string("\x01\x00\x02\x00", 4)), "application/octet-stream"},
      // An empty file has only its name.
      {file("empty.txt", ""), "text/plain"},
      {file("empty.jpg", ""), "image/jpeg"},
      {file("empty", ""), "application/octet-stream"},
      {file("Gr\xC3\xB6\xC3\x9F"
            "e 100% #1?.txt",
            "x"),
       "text/plain"},
      {file("\xFF.txt", "x"), "text/plain"},
  };
  for (const auto& [path, type] : rows) {
    EXPECT_EQ(typeOfFile(path), type) << path;
  }
}

TEST_F(FileKindTest, WhatIsNoRegularFileIsNotOpened) {
  std::filesystem::create_directory(folder / "photos.jpg");
  ASSERT_EQ(mkfifo((folder / "pipe.txt").c_str(), 0600), 0);
  const FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  const std::string name = folder / "socket.txt";
  name.copy(address.sun_path, sizeof(address.sun_path) - 1);
  ASSERT_EQ(bind(socket.get(), reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
  EXPECT_EQ(typeOfFile(folder / "photos.jpg"), "inode/directory");
  EXPECT_EQ(typeOfFile(folder / "photos.jpg/"), "inode/directory");
  // Opening it would wait for a writer.
  EXPECT_EQ(typeOfFile(folder / "pipe.txt"), "inode/fifo");
  EXPECT_EQ(typeOfFile(name), "inode/socket");
  EXPECT_EQ(typeOfFile("/dev/null"), "inode/chardevice");
  for (const char* type : {"inode/directory", "inode/fifo", "inode/socket", "inode/chardevice"}) {
    EXPECT_TRUE(kindsOf(type).empty()) << type;
  }
}

TEST_F(FileKindTest, LinksAreFollowed) {
  file("a.jpg", "\xFF\xD8\xFF\xE0 and so on");
  std::filesystem::create_symlink("a.jpg", folder / "link");
  std::filesystem::create_symlink("gone", folder / "dangling");
  EXPECT_EQ(typeOfFile(folder / "link"), "image/jpeg");
  EXPECT_FALSE(typeOfFile(folder / "dangling"));
  EXPECT_FALSE(typeOfFile(folder / "nothing.txt"));
  EXPECT_FALSE(typeOfFile(""));
}

TEST_F(FileKindTest, AFileThatCannotBeReadIsJudgedByItsName) {
  // Other tests may have left threads behind that hold a lock.
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const std::string path = file("a.jpg", "words");
  ASSERT_EQ(chmod(path.c_str(), 0), 0);
  ASSERT_EQ(chmod(folder.path().c_str(), 0755), 0);
  const auto judge = [&path] {
    // Nothing is unreadable for root.
    if (geteuid() == 0 && seteuid(kNobody) != 0) {
      _exit(2);
    }
    _exit(euidaccess(path.c_str(), R_OK) != 0 && typeOfFile(path) == "image/jpeg" ? 0 : 1);
  };
  EXPECT_EXIT(judge(), testing::ExitedWithCode(0), "");
}

TEST_F(FileKindTest, DerivedTypesBelongToTheKindsOfTheirParents) {
  using Kinds = std::vector<FileKind>;
  const std::pair<const char*, Kinds> rows[] = {
      {"text/plain", {FileKind::Text}},
      {"text/html", {FileKind::Text}},
      {"text/x-nobody-knows", {FileKind::Text}},
      {"application/x-shellscript", {FileKind::Text}},
      {"application/json", {FileKind::Text}},
      {"application/xml", {FileKind::Text}},
      {"image/jpeg", {FileKind::Image}},
      {"image/x-nobody-knows", {FileKind::Image}},
      {"image/svg+xml", {FileKind::Text, FileKind::Image}},
      {"application/pdf", {FileKind::PDF}},
      {"application/x-pdf", {FileKind::PDF}},
      {"video/mp4", {FileKind::Movie}},
      {"video/quicktime", {FileKind::Movie}},
      {"video/x-matroska", {FileKind::Movie}},
      {"audio/mpeg", {}},
      {"application/zip", {}},
      {"application/octet-stream", {}},
      {"application/x-zerosize", {}},
      {"inode/directory", {}},
      {"application/x-nobody-knows", {}},
      {"no type", {}},
      {"", {}},
  };
  for (const auto& [type, kinds] : rows) {
    EXPECT_EQ(kindsOf(type), kinds) << type;
  }
}

TEST_F(FileKindTest, TellsTheSizeOfWhatIsThere) {
  EXPECT_EQ(sizeOfFile(file("a", "12345")), 5);
  EXPECT_EQ(sizeOfFile(file("empty", "")), 0);
  EXPECT_TRUE(sizeOfFile(folder.path()));
  EXPECT_FALSE(sizeOfFile(folder / "nothing"));
}

}  // namespace
}  // namespace platform

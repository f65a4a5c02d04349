#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <system_error>

#include <sys/stat.h>
#include <sys/types.h>

#include "platform/file_descriptor.h"
#include "platform/property_list.h"

namespace platform {

// The file of one preferences domain, as UserDefaults keeps it: one dictionary, shared by processes. One
// thread at a time. A failure gives one line in the log for each kind, until the same kind of access succeeds
// again.
class DomainFile {
 public:
  explicit DomainFile(std::filesystem::path path);

  const std::filesystem::path& path() const { return path_; }

  // Whether the file may differ from what was read or written last. One stat.
  bool changed() const;
  // The file's dictionary; empty when there is no file, or when a damaged one was set aside. Absent when it
  // cannot be read.
  std::optional<Dictionary> read();

  // The right to write, held by one process at a time. Absent when it cannot be had.
  class Lock {
   private:
    friend class DomainFile;
    explicit Lock(FileDescriptor descriptor) : descriptor_(std::move(descriptor)) {}
    FileDescriptor descriptor_;
  };
  std::optional<Lock> lock();
  // As read(), for the holder of the lock. Absent also when a damaged file cannot be moved out of the way.
  std::optional<Dictionary> read(const Lock& lock);
  // Replaces the file. False when it cannot be written.
  bool write(const Lock& lock, std::string_view bytes);

 private:
  // What tells one state of the file from another.
  struct Stamp {
    bool exists = false;
    // The file's times move in ticks of some milliseconds, and a replaced file's inode is used again: a stamp
    // taken within that time of the change proves nothing.
    bool settled = false;
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = 0;
    std::int64_t modified = 0;
    std::int64_t statusChanged = 0;

    bool sameState(const Stamp& other) const;
  };
  static Stamp stampOf(const struct stat& status);

  enum class Kind { Folder, Lock, Read, SetAside, Write };
  void report(Kind kind, std::string_view what, const std::string& reason);
  void succeeded(Kind kind) { reported_.erase(kind); }

  enum class Outcome { Values, Damaged, Unreadable };
  Outcome load(Dictionary& values);
  bool setAside(const Lock& lock);

  std::filesystem::path path_;
  Stamp stamp_;
  bool known_ = false;
  std::set<Kind> reported_;
};

}  // namespace platform

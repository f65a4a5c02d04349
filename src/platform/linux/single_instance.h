#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "platform/application.h"
#include "platform/file_descriptor.h"

namespace platform {

// The user's folder for files that live as long as the session: XDG_RUNTIME_DIR, else /run/user/UID when it
// is a folder of ours, else /tmp/lumobrowser-UID, made for us alone. Absent, with a line in the log, when
// none can be had.
std::optional<std::filesystem::path> runtimeFolder();

// The place of the one running copy: a lock on FOLDER/NAME.lock, in which the process identifier stands. The
// lock goes with the process, however it ends, and children do not inherit it. The file stays.
class SingleInstance {
 public:
  explicit SingleInstance(std::string name) : name_(std::move(name)) {}

  // Takes the place in `folder` when it is free. The copies that run, the oldest first: this one alone when
  // it holds the place, else the holder (identifier 0 when it has not written it yet) and this one. Absent,
  // with a line in the log, when the file cannot be used.
  std::optional<std::vector<RunningApplication>> claim(const std::optional<std::filesystem::path>& folder);

 private:
  const std::string name_;
  FileDescriptor lock_;
};

}  // namespace platform

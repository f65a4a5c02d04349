#pragma once

#include <utility>

#include <unistd.h>

namespace platform {

// Owns a file descriptor; -1 is none.
class FileDescriptor {
 public:
  explicit FileDescriptor(int descriptor = -1) : descriptor_(descriptor) {}
  FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    reset(std::exchange(other.descriptor_, -1));
    return *this;
  }
  ~FileDescriptor() { reset(); }

  explicit operator bool() const { return descriptor_ >= 0; }
  int get() const { return descriptor_; }
  int release() { return std::exchange(descriptor_, -1); }
  void reset(int descriptor = -1) {
    if (descriptor_ >= 0) {
      // Never repeated after EINTR: on Linux the descriptor is gone by then.
      ::close(descriptor_);
    }
    descriptor_ = descriptor;
  }

 private:
  int descriptor_;
};

}  // namespace platform

#pragma once

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <string>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/file_descriptor.h"

// Another process that holds the place of the running copy in a runtime folder until this object goes.
class OtherCopy {
 public:
  explicit OtherCopy(const std::filesystem::path& folder) {
    const std::string path = (folder / "com.lumo.LumoBrowser.lock").string();
    int started[2];
    int stopped[2];
    if (pipe2(started, O_CLOEXEC) != 0 || pipe2(stopped, O_CLOEXEC) != 0) {
      throw std::runtime_error("no pipe");
    }
    process_ = fork();
    if (process_ == 0) {
      close(stopped[1]);
      hold(path.c_str(), started[1], stopped[0]);
    }
    close(started[1]);
    close(stopped[0]);
    stop_.reset(stopped[1]);
    const platform::FileDescriptor ready(started[0]);
    char byte = 0;
    if (process_ < 0 || read(ready.get(), &byte, 1) != 1) {
      throw std::runtime_error("the other copy did not start");
    }
  }
  ~OtherCopy() { end(); }
  OtherCopy(const OtherCopy&) = delete;
  OtherCopy& operator=(const OtherCopy&) = delete;

  int process() const { return process_; }
  // Returns when it has ended.
  void end() {
    stop_.reset();
    if (process_ > 0) {
      waitpid(process_, nullptr, 0);
      process_ = -1;
    }
  }

 private:
  // After a fork of a program with threads only plain system calls are safe.
  [[noreturn]] static void hold(const char* path, int started, int stopped) {
    char text[16] = {};
    int length = 0;
    for (int rest = getpid(); rest > 0; rest /= 10) {
      std::memmove(text + 1, text, static_cast<std::size_t>(length++));
      text[0] = static_cast<char>('0' + rest % 10);
    }
    const int file = open(path, O_RDWR | O_CREAT, 0600);
    char byte = 0;
    if (file < 0 || flock(file, LOCK_EX | LOCK_NB) != 0 ||
        write(file, text, static_cast<std::size_t>(length)) != length || write(started, "r", 1) != 1) {
      _exit(1);
    }
    _exit(static_cast<int>(read(stopped, &byte, 1)));
  }

  pid_t process_ = -1;
  platform::FileDescriptor stop_;
};

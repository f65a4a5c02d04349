#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "platform/file_descriptor.h"

namespace station {

// An X server with a screen that can be touched, and the finger. Xvfb has none.
class TouchScreen {
 public:
  // Writes what the server needs into `folder`. `size` is "WIDTHxHEIGHT".
  TouchScreen(std::filesystem::path folder, const std::string& size);

  // The command that starts the server, without the options that every X server takes.
  std::vector<std::string> command() const;
  // A finger comes down at the point, in device pixels, and goes up again. The server has taken both when
  // this returns; throws std::runtime_error when it does not.
  void tap(int x, int y);

 private:
  void connect();
  void put(int type, int x, int y);
  void waitUntilTaken();

  std::filesystem::path folder_;
  int width_;
  int height_;
  platform::FileDescriptor socket_;
};

}  // namespace station

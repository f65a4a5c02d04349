#pragma once

#include <memory>
#include <string>
#include <vector>

#include "station/station.h"

namespace station {

// A person who drags something out of another program's window with the mouse.
class DragSource {
 public:
  // Starts the program with these arguments (programs/drag_source.cpp) and moves its window out of the way.
  // Throws std::runtime_error when it does not show.
  DragSource(Station& station, const std::vector<std::string>& arguments);

  // Presses the button over it and moves until the drag has begun.
  bool pickUp();
  // Moves the pointer there, and a little to and fro until the condition holds.
  bool moveTo(int x, int y, const std::function<bool()>& reached);
  void letGo();
  // The program crashes.
  void crash() { program_.reset(); }
  // What has become of the drag, as the program says.
  std::string said() const;
  bool says(const std::string& line) const;

 private:
  void mouse(const std::vector<std::string>& commands);

  Station& station_;
  std::filesystem::path output_;
  std::unique_ptr<ChildProcess> program_;
  Area frame_;
};

}  // namespace station

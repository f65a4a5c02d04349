#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace fakes {

// Takes what the process writes on standard error from here to its end, instead of showing it. May be nested;
// the inner one gets the lines. Make and destroy it while no other thread writes.
class CapturedLog {
 public:
  CapturedLog();
  ~CapturedLog();
  CapturedLog(const CapturedLog&) = delete;
  CapturedLog& operator=(const CapturedLog&) = delete;

  // The lines so far, without what the log puts in front of its texts (time, program, process and thread). A
  // text with line breaks gives several lines.
  std::vector<std::string> lines() const;
  // Everything as it was written.
  std::string text() const;
  bool contains(std::string_view line) const { return count(line) > 0; }
  // How many lines are exactly this.
  std::size_t count(std::string_view line) const;
  // Forgets the lines so far.
  void clear();

 private:
  int file_;
  int standardError_;
};

}  // namespace fakes

#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/queue.h"

namespace fakes {

// What was asked of all fakes of a test, in order: "NAME what arguments", such as "ibTextField setHidden
// YES", "MyWebViewWindowController setLevel 25", "application beep", "bus post lumoXNotification". Only
// changes and commands are recorded, reads are not. On the test's thread only.
class Journal {
 public:
  explicit Journal(const platform::Dispatch& dispatch) : dispatch_(dispatch) {}

  void add(std::string entry);
  void clear() { entries_.clear(); }

  std::vector<std::string> entries() const;
  // The same with the time in front, in milliseconds: "350 ibTextField setHidden YES".
  std::vector<std::string> timed() const;
  // Only those that begin with `prefix`.
  std::vector<std::string> startingWith(std::string_view prefix) const;
  std::vector<std::string> timedStartingWith(std::string_view prefix) const;
  bool contains(std::string_view entry) const { return count(entry) > 0; }
  std::size_t count(std::string_view entry) const;
  // Whether `earlier` is recorded and its first occurrence comes before the first of `later`, which is
  // recorded too.
  bool isBefore(std::string_view earlier, std::string_view later) const;

 private:
  const platform::Dispatch& dispatch_;
  std::vector<std::pair<platform::Millis, std::string>> entries_;
};

// What every fake is given. Both outlive it.
struct Stage {
  platform::Dispatch& dispatch;
  Journal& journal;
};

// "YES" or "NO".
const char* yesNo(bool value);

// The code under test broke a promise of an interface: fails the running test, wherever the call came from.
void breach(const std::string& text);

}  // namespace fakes

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

// What every target has, and how it takes its input apart: as lines, so that people can read the kept inputs.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzzing {

// Ends the program where what always has to hold does not.
inline void require(bool holds, const char* what) {
  if (!holds) {
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
  }
}

class Lines {
 public:
  Lines(const std::uint8_t* data, std::size_t size) : rest_(reinterpret_cast<const char*>(data), size) {}

  bool atEnd() const { return isDone_; }
  // The next line without its break, and the empty text after the last one.
  std::string next() {
    const std::size_t end = rest_.find('\n');
    std::string line(rest_.substr(0, end));
    isDone_ = end == std::string_view::npos;
    rest_ = isDone_ ? std::string_view() : rest_.substr(end + 1);
    return line;
  }
  // Absent for a line that is just "-".
  std::optional<std::string> nextOrAbsent() {
    std::string line = next();
    return line == "-" ? std::nullopt : std::optional(std::move(line));
  }

 private:
  std::string_view rest_;
  bool isDone_ = false;
};

}  // namespace fuzzing

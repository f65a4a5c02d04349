#include "tests/fakes/journal.h"

#include <algorithm>

#include <gtest/gtest.h>

namespace fakes {

void Journal::add(std::string entry) {
  entries_.emplace_back(dispatch_.now(), std::move(entry));
}

std::vector<std::string> Journal::entries() const {
  return startingWith("");
}

std::vector<std::string> Journal::timed() const {
  return timedStartingWith("");
}

std::vector<std::string> Journal::startingWith(std::string_view prefix) const {
  std::vector<std::string> found;
  for (const auto& [time, entry] : entries_) {
    if (entry.starts_with(prefix)) {
      found.push_back(entry);
    }
  }
  return found;
}

std::vector<std::string> Journal::timedStartingWith(std::string_view prefix) const {
  std::vector<std::string> found;
  for (const auto& [time, entry] : entries_) {
    if (entry.starts_with(prefix)) {
      found.push_back(std::to_string(time.count()) + " " + entry);
    }
  }
  return found;
}

std::size_t Journal::count(std::string_view entry) const {
  return static_cast<std::size_t>(std::count_if(entries_.begin(), entries_.end(),
                                                [&](const auto& item) { return item.second == entry; }));
}

bool Journal::isBefore(std::string_view earlier, std::string_view later) const {
  const auto find = [&](std::string_view entry) {
    return std::find_if(entries_.begin(), entries_.end(),
                        [&](const auto& item) { return item.second == entry; });
  };
  return find(later) != entries_.end() && find(earlier) < find(later);
}

const char* yesNo(bool value) {
  return value ? "YES" : "NO";
}

void breach(const std::string& text) {
  ADD_FAILURE() << text;
}

}  // namespace fakes

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace lumo {

// What find is asked for. An absent value asks for nothing; no patterns match every name.
struct FindRequest {
  std::string folder;
  // One letter, as find takes it ("f"); any other text counts as absent.
  std::optional<std::string> fileType;
  std::vector<std::string> patterns;
  std::optional<std::uint32_t> daysOld;
  std::optional<std::uint32_t> maxDepth;
  // What is run with all that was found.
  std::optional<std::string> command;
};

// The arguments of find for that, each an item of its own; none where the folder is the empty text. Slashes
// at the folder's end are dropped, but for the last one of "/".
std::vector<std::string> findArguments(const FindRequest& request);

// "*.EXTENSION" for each, in order.
std::vector<std::string> patternsForExtensions(const std::vector<std::string>& extensions);

// The same arguments as GNU find takes them. It refuses an "-and" with nothing before it, and takes a folder
// such as "-x" or "(" for a part of the expression, which would then be searched for in the current folder.
// One without birth times refuses the test for them; the time of the last change of status takes its place.
// It is never before the birth, so nothing younger is found.
std::vector<std::string> argumentsForGnuFind(std::vector<std::string> arguments, bool knowsBirthTimes);

}  // namespace lumo

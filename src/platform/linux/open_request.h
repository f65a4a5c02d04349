#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace platform {

// Addresses of one kind that follow each other in an open request: paths of files, or anything else.
struct OpenRequest {
  enum class Kind { Urls, Files };
  Kind kind = Kind::Urls;
  std::vector<std::string> items;
  bool operator==(const OpenRequest&) const = default;
};

// Sorts the addresses of one request into pieces, in their order: "file:" addresses become absolute paths. A
// "file:" address that names no file of this machine is left out with a line in the log. An empty request is
// one empty list of URLs.
std::vector<OpenRequest> openRequests(const std::vector<std::string>& addresses);

// The address with the brackets of a server placeholder put back, which a launcher may have escaped
// ("%5Bjunivaserver%5D").
std::string withPlaceholderBrackets(std::string_view address);

}  // namespace platform

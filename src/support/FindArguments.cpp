#include "support/FindArguments.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "platform/format.h"

namespace lumo {

namespace {

// Where the expression begins: "-H" and the folder come first.
constexpr std::size_t kExpression = 2;
constexpr std::string_view kBornBefore = "-newerBt";
constexpr std::string_view kChangedBefore = "-newerct";

bool isFileType(const std::string& type) {
  constexpr std::array<std::string_view, 7> kTypes = {"f", "d", "b", "c", "l", "p", "s"};
  return std::find(kTypes.begin(), kTypes.end(), type) != kTypes.end();
}

}  // namespace

std::vector<std::string> findArguments(const FindRequest& request) {
  std::string folder = request.folder;
  if (folder.empty()) {
    return {};
  }
  while (folder.size() > 1 && folder.ends_with('/')) {
    folder.pop_back();
  }
  std::vector<std::string> arguments{"-H", folder};
  const auto add = [&arguments](std::initializer_list<std::string> items) {
    arguments.insert(arguments.end(), items);
  };
  if (request.fileType && isFileType(*request.fileType)) {
    add({"-type", *request.fileType});
  }
  if (request.daysOld) {
    const std::uint32_t days = *request.daysOld;
    add({"-and", "-not", std::string(kBornBefore),
         platform::stringWithFormat("%u day%s ago", days, days == 1 ? "" : "s")});
  }
  if (request.patterns.size() == 1) {
    add({"-iname", request.patterns.front()});
  } else if (!request.patterns.empty()) {
    add({"-and", "("});
    for (const std::string& pattern : request.patterns) {
      if (&pattern != &request.patterns.front()) {
        add({"-or"});
      }
      add({"-iname", pattern});
    }
    add({")"});
  }
  if (request.maxDepth) {
    add({"-maxdepth", platform::stringWithFormat("%u", *request.maxDepth)});
  }
  add({"-mindepth", "1"});
  if (request.command) {
    add({"-exec", *request.command, "{}", "+"});
  }
  return arguments;
}

std::vector<std::string> patternsForExtensions(const std::vector<std::string>& extensions) {
  std::vector<std::string> patterns;
  patterns.reserve(extensions.size());
  for (const std::string& extension : extensions) {
    patterns.push_back("*." + extension);
  }
  return patterns;
}

std::vector<std::string> argumentsForGnuFind(std::vector<std::string> arguments, bool knowsBirthTimes) {
  if (arguments.size() <= kExpression) {
    return arguments;
  }
  std::string& folder = arguments[1];
  if (std::string_view("-(),!").find(folder.front()) != std::string_view::npos) {
    folder.insert(0, "./");
  }
  for (std::size_t i = kExpression; !knowsBirthTimes && i < arguments.size(); ++i) {
    // A pattern may be of the same text.
    if (arguments[i] == kBornBefore && arguments[i - 1] == "-not") {
      arguments[i] = kChangedBefore;
    }
  }
  if (arguments[kExpression] == "-and") {
    arguments.erase(arguments.begin() + kExpression);
  }
  return arguments;
}

}  // namespace lumo

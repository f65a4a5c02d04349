#include "platform/linux/drop_content.h"

#include <string_view>
#include <utility>
#include <vector>

#include "platform/linux/file_url.h"
#include "platform/strings.h"

namespace platform {

namespace {

struct DraggedFile {
  std::string uri;
  std::string path;
};

std::vector<DraggedFile> filesOf(std::string_view uriList) {
  std::vector<DraggedFile> files;
  for (const std::string& line : componentsSeparatedBy(uriList.substr(0, uriList.find('\0')), "\n")) {
    const std::string uri = trimmed(line);
    if (auto path = pathFromFileUrl(uri)) {
      files.push_back({uri, std::move(*path)});
    }
  }
  return files;
}

// Programs separate the names with blanks or line breaks, and end a text with a NUL byte here and there.
void skipGap(std::string_view& text) {
  while (!text.empty() && std::string_view(" \t\r\n\0", 5).find(text.front()) != std::string_view::npos) {
    text.remove_prefix(1);
  }
}

bool skipName(std::string_view& text, std::string_view name) {
  if (!text.starts_with(name)) {
    return false;
  }
  text.remove_prefix(name.size());
  return true;
}

bool consistsOfNames(std::string_view text, const std::vector<DraggedFile>& files) {
  for (const DraggedFile& file : files) {
    skipGap(text);
    if (!skipName(text, file.path) && !skipName(text, file.uri)) {
      return false;
    }
  }
  skipGap(text);
  return text.empty();
}

}  // namespace

Pasteboard contentOfDrag(const std::optional<std::string>& uriList, const std::optional<std::string>& text) {
  Pasteboard content;
  std::vector<DraggedFile> files;
  if (uriList) {
    files = filesOf(*uriList);
  }
  if (!files.empty()) {
    content.types.emplace_back(kFilenamesPboardType);
    content.filenames.emplace();
    for (const DraggedFile& file : files) {
      content.filenames->push_back(file.path);
    }
  }
  if (text && (files.empty() || !consistsOfNames(*text, files))) {
    content.types.emplace_back(kStringPboardType);
    content.string = validUtf8(std::string_view(*text).substr(0, text->find('\0')));
  }
  return content;
}

}  // namespace platform

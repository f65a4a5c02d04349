#include "support/StandardFolders.h"

#include <algorithm>
#include <array>

#include "platform/strings.h"

namespace lumo {

namespace {

// An empty text is no folder.
struct Row {
  SearchPathDirectory kind;
  // The name in the xdg-user-dirs file, for those that it may name.
  const char* userDirectory;
  const char* user;
  const char* local;
  const char* system;
};

// The XDG base folders where Linux has them. Library is meant literally: the log is kept there.
constexpr std::array kFolders = {
    Row{SearchPathDirectory::Application, "", "~/.local/share/applications", "/usr/local/share/applications",
        "/usr/share/applications"},
    Row{SearchPathDirectory::Library, "", "~/Library", "/usr/local/lib", "/usr/lib"},
    Row{SearchPathDirectory::User, "", "", "/home", ""},
    Row{SearchPathDirectory::Documentation, "", "", "/usr/local/share/doc", "/usr/share/doc"},
    Row{SearchPathDirectory::Document, "DOCUMENTS", "~/Documents", "", ""},
    Row{SearchPathDirectory::AutosavedInformation, "", "~/.local/state", "", ""},
    Row{SearchPathDirectory::Desktop, "DESKTOP", "~/Desktop", "", ""},
    Row{SearchPathDirectory::Caches, "", "~/.cache", "", "/var/cache"},
    Row{SearchPathDirectory::ApplicationSupport, "", "~/.local/share", "/usr/local/share", "/usr/share"},
    Row{SearchPathDirectory::Downloads, "DOWNLOAD", "~/Downloads", "", ""},
    Row{SearchPathDirectory::Movies, "VIDEOS", "~/Videos", "", ""},
    Row{SearchPathDirectory::Music, "MUSIC", "~/Music", "", ""},
    Row{SearchPathDirectory::Pictures, "PICTURES", "~/Pictures", "", ""},
    Row{SearchPathDirectory::PrinterDescription, "", "", "/usr/local/share/ppd", "/usr/share/ppd"},
    Row{SearchPathDirectory::SharedPublic, "PUBLICSHARE", "~/Public", "", ""},
    Row{SearchPathDirectory::AllApplications, "", "~/.local/share/applications",
        "/usr/local/share/applications", "/usr/share/applications"},
    Row{SearchPathDirectory::AllLibraries, "", "~/Library", "/usr/local/lib", "/usr/lib"},
    Row{SearchPathDirectory::Trash, "", "~/.local/share/Trash", "", ""},
};

}  // namespace

std::vector<std::string> standardFolders(SearchPathDirectory kind, unsigned domains,
                                         std::string_view userDirs) {
  std::vector<std::string> folders;
  const auto* row =
      std::find_if(kFolders.begin(), kFolders.end(), [kind](const Row& one) { return one.kind == kind; });
  if (row == kFolders.end()) {
    return folders;
  }
  const auto add = [&](SearchPathDomain domain, std::string folder) {
    if ((domains & domain) != 0 && !folder.empty()) {
      folders.push_back(std::move(folder));
    }
  };
  const auto named = *row->userDirectory != '\0' ? userDirectory(userDirs, row->userDirectory) : std::nullopt;
  add(UserDomain, named.value_or(row->user));
  add(LocalDomain, row->local);
  add(SystemDomain, row->system);
  return folders;
}

std::optional<std::string> userDirectory(std::string_view userDirs, std::string_view name) {
  const std::string key = "XDG_" + std::string(name) + "_DIR=\"";
  std::optional<std::string> folder;
  for (const std::string& line : platform::componentsSeparatedBy(userDirs, "\n")) {
    const std::string text = platform::trimmed(line);
    if (!text.starts_with(key)) {
      continue;
    }
    std::string value;
    for (std::size_t i = key.size(); i < text.size() && text[i] != '"'; ++i) {
      if (text[i] == '\\' && i + 1 < text.size()) {
        ++i;
      }
      value += text[i];
    }
    constexpr std::string_view kHome = "$HOME";
    if (value == kHome || value.starts_with("$HOME/")) {
      value.replace(0, kHome.size(), "~");
    } else if (!value.starts_with('/')) {
      continue;
    }
    // The home folder itself is written with a slash at its end.
    while (value.size() > 1 && value.ends_with('/')) {
      value.pop_back();
    }
    folder = value;
  }
  return folder;
}

}  // namespace lumo

#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lumo {

// Kinds of standard folders; the values are the platform's own.
enum class SearchPathDirectory : unsigned {
  Application = 1,
  Library = 5,
  User = 7,
  Documentation = 8,
  Document = 9,
  AutosavedInformation = 11,
  Desktop = 12,
  Caches = 13,
  ApplicationSupport = 14,
  Downloads = 15,
  Movies = 17,
  Music = 18,
  Pictures = 19,
  PrinterDescription = 20,
  SharedPublic = 21,
  AllApplications = 100,
  AllLibraries = 101,
  Trash = 102,
};

// Where to look for them, as bits. There are no network folders here.
enum SearchPathDomain : unsigned {
  UserDomain = 1,
  LocalDomain = 2,
  NetworkDomain = 4,
  SystemDomain = 8,
  AllDomains = 65535,
};

// The folders of that kind in these domains: the user's own, then those that the administrator fills, then
// those of the packages. A folder in the user's home begins with "~"; none of them need exist. Empty for a
// kind that has no folders here. `userDirs` is the text of the user's xdg-user-dirs file, which names the
// folders that have a name in the user's language; empty for the English names.
std::vector<std::string> standardFolders(SearchPathDirectory kind, unsigned domains,
                                         std::string_view userDirs);

// The folder that an xdg-user-dirs file gives for `name` ("DOCUMENTS"), "~" in the place of the home folder.
// Absent when it gives none, or one that is neither absolute nor in the home folder.
std::optional<std::string> userDirectory(std::string_view userDirs, std::string_view name);

}  // namespace lumo

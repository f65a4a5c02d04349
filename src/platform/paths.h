#pragma once

#include <string>
#include <string_view>

// Paths as texts. Nothing here looks at the disk, except that the home folder may come from the user
// database. Any thread. A slash at the end counts as no component.
namespace platform {

// A "~" at the start stands for $HOME (for the user database's entry where HOME is unset or no absolute
// path), a
// "~NAME" for that user's home folder. Everything else, also an unknown user, stays as it is.
std::string expandingTilde(std::string_view path);
// The tilde expanded, then ".", ".." and doubled slashes resolved by the text alone, no slash at the end. A
// relative path keeps the ".." that lead out of it; one that comes to nothing is ".". The empty text stays
// empty.
std::string standardizingPath(std::string_view path);

// "/a/b" gives "/a", "/a" and "/" give "/", "a" gives "".
std::string deletingLastPathComponent(std::string_view path);
// Without the dot; empty when there is none. A name that only begins with a dot (".profile") has no
// extension.
std::string pathExtension(std::string_view path);
std::string deletingPathExtension(std::string_view path);
// Exactly one slash between; appended to the empty path, `component` alone.
std::string appendingPathComponent(std::string_view path, std::string_view component);
// Appends "." and the extension to the last component; a path without one ("" and "/") stays as it is.
std::string appendingPathExtension(std::string_view path, std::string_view extension);

}  // namespace platform

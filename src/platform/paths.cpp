#include "platform/paths.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <optional>
#include <vector>

#include <pwd.h>
#include <unistd.h>

namespace platform {
namespace {

std::string_view withoutEndSlashes(std::string_view path) {
  while (path.size() > 1 && path.ends_with('/')) {
    path.remove_suffix(1);
  }
  return path;
}

// The home folder of the user `name`; of the running user when there is no name.
std::optional<std::string> homeInUserDatabase(const std::string& name) {
  std::vector<char> buffer(1024);
  struct passwd entry {};
  struct passwd* found = nullptr;
  int error = 0;
  while (true) {
    error = name.empty() ? ::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found)
                         : ::getpwnam_r(name.c_str(), &entry, buffer.data(), buffer.size(), &found);
    if (error != ERANGE || buffer.size() > (std::size_t{1} << 20)) {
      break;
    }
    buffer.resize(buffer.size() * 2);
  }
  if (error != 0 || found == nullptr || found->pw_dir == nullptr || *found->pw_dir == '\0') {
    return std::nullopt;
  }
  return found->pw_dir;
}

std::optional<std::string> homeFolder(const std::string& name) {
  const char* home = name.empty() ? std::getenv("HOME") : nullptr;
  if (home != nullptr && *home == '/') {
    return home;
  }
  return homeInUserDatabase(name);
}

// Where the last component begins; `path` has no slash at its end.
std::size_t lastComponent(std::string_view path) {
  const auto slash = path.rfind('/');
  return slash == std::string_view::npos ? 0 : slash + 1;
}

// Where the dot before the extension is; npos when there is no extension.
std::size_t extensionDot(std::string_view path) {
  const auto start = lastComponent(path);
  const auto dot = path.rfind('.');
  const bool inside = dot != std::string_view::npos && dot > start && dot + 1 < path.size();
  // "..txt" is a name that begins with dots, as ".txt" is.
  return inside && path.find_first_not_of('.', start) < dot ? dot : std::string_view::npos;
}

}  // namespace

std::string expandingTilde(std::string_view path) {
  if (!path.starts_with('~')) {
    return std::string(path);
  }
  const auto end = std::min(path.find('/'), path.size());
  const auto home = homeFolder(std::string(path.substr(1, end - 1)));
  if (!home) {
    return std::string(path);
  }
  return appendingPathComponent(*home, path.substr(end));
}

std::string standardizingPath(std::string_view path) {
  const auto expanded = expandingTilde(path);
  if (expanded.empty()) {
    return "";
  }
  const bool absolute = expanded.front() == '/';
  std::vector<std::string_view> parts;
  std::string_view rest = expanded;
  while (!rest.empty()) {
    const auto end = std::min(rest.find('/'), rest.size());
    const auto part = rest.substr(0, end);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    if (part == "..") {
      if (!parts.empty() && parts.back() != "..") {
        parts.pop_back();
      } else if (!absolute) {
        parts.push_back(part);
      }
    } else if (!part.empty() && part != ".") {
      parts.push_back(part);
    }
  }
  std::string result;
  for (const auto part : parts) {
    if (absolute || !result.empty()) {
      result += '/';
    }
    result += part;
  }
  if (result.empty()) {
    return absolute ? "/" : ".";
  }
  return result;
}

std::string deletingLastPathComponent(std::string_view path) {
  path = withoutEndSlashes(path);
  const auto start = lastComponent(path);
  return std::string(withoutEndSlashes(path.substr(0, start)));
}

std::string pathExtension(std::string_view path) {
  path = withoutEndSlashes(path);
  const auto dot = extensionDot(path);
  return dot == std::string_view::npos ? std::string() : std::string(path.substr(dot + 1));
}

std::string deletingPathExtension(std::string_view path) {
  path = withoutEndSlashes(path);
  return std::string(path.substr(0, extensionDot(path)));
}

std::string appendingPathComponent(std::string_view path, std::string_view component) {
  const auto front = component.find_first_not_of('/');
  component = front == std::string_view::npos ? std::string_view() : component.substr(front);
  while (component.ends_with('/')) {
    component.remove_suffix(1);
  }
  std::string result(withoutEndSlashes(path));
  if (component.empty()) {
    return result;
  }
  if (!result.empty() && result != "/") {
    result += '/';
  }
  return result.append(component);
}

std::string appendingPathExtension(std::string_view path, std::string_view extension) {
  std::string result(withoutEndSlashes(path));
  if (result.empty() || result == "/") {
    return result;
  }
  return result.append(".").append(extension);
}

}  // namespace platform

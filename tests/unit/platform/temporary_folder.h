#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include <stdlib.h>
#include <unistd.h>

// A folder of its own for one test, removed at the end.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    // In memory where there is a place for it: a disk needs some ten milliseconds for each file that is made
    // safe.
    const std::filesystem::path memory = "/dev/shm";
    const bool inMemory = ::access(memory.c_str(), W_OK | X_OK) == 0;
    std::string name =
        ((inMemory ? memory : std::filesystem::temp_directory_path()) / "lumo-test-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) {
      throw std::runtime_error("no temporary folder");
    }
    path_ = name;
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::permissions(path_, std::filesystem::perms::owner_all, ignored);
    std::filesystem::remove_all(path_, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }
  std::filesystem::path operator/(std::string_view name) const { return path_ / name; }

  // The names in the folder that begin with `prefix`.
  std::vector<std::string> names(std::string_view prefix = "") const {
    std::vector<std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator(path_)) {
      if (entry.path().filename().string().starts_with(prefix)) {
        found.push_back(entry.path().filename().string());
      }
    }
    return found;
  }

 private:
  std::filesystem::path path_;
};

inline void writeFile(const std::filesystem::path& path, std::string_view bytes) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

inline std::string readFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

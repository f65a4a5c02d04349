#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <stdlib.h>

#include "platform/file_io.h"
#include "tests/unit/browser/browser_fixture.h"

namespace browsertest {

// A home folder of the test's own, which programs that the test starts have as well.
class TestHome {
 public:
  explicit TestHome(const std::string& name = "home") {
    std::string pattern = (std::filesystem::temp_directory_path() / "receipt-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
      throw std::runtime_error("no temporary folder");
    }
    folder_ = pattern;
    path_ = folder_ / name;
    std::filesystem::create_directories(path_);
    if (const char* before = std::getenv("HOME")) {
      before_ = before;
    }
    setenv("HOME", path_.c_str(), 1);
  }
  ~TestHome() {
    if (before_) {
      setenv("HOME", before_->c_str(), 1);
    } else {
      unsetenv("HOME");
    }
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }
  TestHome(const TestHome&) = delete;
  TestHome& operator=(const TestHome&) = delete;

  const std::filesystem::path& path() const { return path_; }
  std::filesystem::path snapshot() const { return path_ / "Desktop/Snapshot.jpg"; }

  void write(const std::string& name, const std::string& text) const {
    std::filesystem::create_directories((path_ / name).parent_path());
    std::ofstream(path_ / name, std::ios::binary) << text;
  }
  std::string read(const std::string& name) const {
    std::error_code error;
    const auto contents = platform::fileContents(path_ / name, 1U << 26, error);
    return contents ? contents->bytes : "";
  }
  // The text's lines, without their breaks.
  std::vector<std::string> lines(const std::string& name) const {
    std::istringstream text(read(name));
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line);) {
      lines.push_back(line);
    }
    return lines;
  }
  // A script on the desktop.
  void installScript(const std::string& text) const {
    write("Desktop/printtocups2.sh", text);
    std::filesystem::permissions(path_ / "Desktop/printtocups2.sh", std::filesystem::perms::owner_all);
  }

 private:
  std::filesystem::path folder_;
  std::filesystem::path path_;
  std::optional<std::string> before_;
};

}  // namespace browsertest

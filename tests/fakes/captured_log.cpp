#include "tests/fakes/captured_log.h"

#include <algorithm>
#include <cstdio>
#include <regex>
#include <sstream>
#include <stdexcept>

#include <sys/mman.h>
#include <unistd.h>

namespace fakes {

CapturedLog::CapturedLog() : file_(memfd_create("captured-log", MFD_CLOEXEC)), standardError_(-1) {
  std::fflush(stderr);
  standardError_ = dup(STDERR_FILENO);
  if (file_ < 0 || standardError_ < 0 || dup2(file_, STDERR_FILENO) < 0) {
    throw std::runtime_error("standard error cannot be captured");
  }
}

CapturedLog::~CapturedLog() {
  std::fflush(stderr);
  dup2(standardError_, STDERR_FILENO);
  close(standardError_);
  close(file_);
}

std::string CapturedLog::text() const {
  std::fflush(stderr);
  std::string content;
  char buffer[4096];
  for (ssize_t count = 0;
       (count = pread(file_, buffer, sizeof buffer, static_cast<off_t>(content.size()))) > 0;) {
    content.append(buffer, static_cast<std::size_t>(count));
  }
  return content;
}

std::vector<std::string> CapturedLog::lines() const {
  static const std::regex prefix(R"(^\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} [^\[]+\[\d+:\d+\] )");
  std::vector<std::string> found;
  std::istringstream stream(text());
  for (std::string line; std::getline(stream, line);) {
    std::smatch match;
    found.push_back(std::regex_search(line, match, prefix) ? match.suffix().str() : line);
  }
  return found;
}

std::size_t CapturedLog::count(std::string_view line) const {
  const std::vector<std::string> all = lines();
  return static_cast<std::size_t>(std::count(all.begin(), all.end(), line));
}

void CapturedLog::clear() {
  std::fflush(stderr);
  // The writers' position is shared with this descriptor.
  if (ftruncate(file_, 0) != 0 || lseek(file_, 0, SEEK_SET) != 0) {
    throw std::runtime_error("the captured log cannot be emptied");
  }
}

}  // namespace fakes

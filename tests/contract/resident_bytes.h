#pragma once

#include <cstddef>
#include <fstream>

#include <unistd.h>

// The memory of this process that is in use, in bytes.
inline std::size_t residentBytes() {
  std::ifstream file("/proc/self/statm");
  std::size_t total = 0;
  std::size_t resident = 0;
  file >> total >> resident;
  return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

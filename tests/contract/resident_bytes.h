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

// By how many bytes it may grow where nothing is kept. AddressSanitizer holds up to 256 MiB of what is freed,
// ThreadSanitizer keeps several bytes for each that was touched.
#if defined(__SANITIZE_ADDRESS__)
inline constexpr std::size_t kGrowth = std::size_t{280} << 20;
#elif defined(__SANITIZE_THREAD__)
inline constexpr std::size_t kGrowth = std::size_t{96} << 20;
#else
inline constexpr std::size_t kGrowth = std::size_t{16} << 20;
#endif

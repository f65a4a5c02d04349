#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/property_list.h"

namespace lumo {

// What ZELKOR_Base and ZELKOR_Log tell of the machine, as functions of what Linux says.

// Memory in pages.
struct MemoryStatistics {
  std::uint32_t freePages = 0;
  // What cannot leave the memory: locked pages, and the kernel's own (tables, stacks, caches).
  std::uint64_t wiredPages = 0;
};

// From the text of /proc/meminfo; absent when it does not tell the free memory, or a page has no size. More
// free pages than the number can hold count as its greatest.
std::optional<MemoryStatistics> memoryStatistics(std::string_view meminfo, std::uint64_t pageSize);
// The same as a dictionary of "freePages", "freeBytes" and "freeMB" (whole MiB, rounded down), with "wiredMB"
// only where that is asked for.
platform::Dictionary memoryDictionary(const MemoryStatistics& statistics, std::uint64_t pageSize,
                                      bool withWired);

// The first of the names that says something: mainboards come with texts like "To be filled by O.E.M.". The
// empty text when none does.
std::string hardwareModel(const std::vector<std::string>& names);
// The first value of that key in the text of /proc/cpuinfo, empty when there is none.
std::string processorName(std::string_view cpuinfo);
// "MODEL (MACHINE)". The machine's name goes through the buffer of the model's, which has at least 16 bytes;
// what does not fit is cut off.
std::optional<std::string> modelAndMachine(const std::string& model, const std::string& machine);

// The value of that key in the text of an os-release file, without quotes; absent when it is not there.
std::optional<std::string> osReleaseValue(std::string_view osRelease, std::string_view key);

// "2.36" as a number, whatever the user's language takes for a decimal point; 0 for what is none.
double versionNumber(std::string_view text);

struct SystemFacts {
  std::string operatingSystemVersion;
  double foundationVersion = 0;
  // In bytes.
  std::uint64_t physicalMemory = 0;
  unsigned long processors = 0;
  // Absent when the machine does not tell; shows as 0.
  std::optional<platform::Dictionary> memory;
  std::optional<std::string> modelAndArch;
};

// The two-line summary, with the wired memory where that is asked for.
std::string systemVersionText(const SystemFacts& facts, bool withWired);
// The banner of a start.
std::string startupText(const std::string& processName, const std::string& systemVersionInfo);

}  // namespace lumo

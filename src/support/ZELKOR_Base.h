#pragma once

#include <optional>
#include <string>

#include "platform/property_list.h"
#include "support/StandardFolders.h"

namespace lumo {

// The root of the support library's classes, and what they tell of the machine and this process. Every
// operation may be called from any thread.
class ZELKOR_Base {
 public:
  // The memory of the machine: "freePages", "freeBytes" and "freeMB" (whole MiB, rounded down). Absent when
  // the machine does not tell.
  static std::optional<platform::Dictionary> vmStats();
  // The hardware model and the machine name, "ThinkCentre M70q (x86_64)". Where the machine does not tell its
  // model (as in a container), the processor's name.
  static std::optional<std::string> hostModelAndArch();
  // Two lines: the operating system with the version of its C library, then memory, processors and hardware.
  // Memory that is not known shows as 0.
  static std::string systemVersionInfo();
  // The banner for the log of a start, with the program's name and systemVersionInfo.
  static std::string startupInfo();

  // Makes an empty file of a new name, for this user alone, in TMPDIR or /tmp, and answers its path. Where
  // `descriptor` is not null, it gets the open file (closed in children), which is the caller's to close; -1
  // when none could be made. Absent then, with a line in the log.
  static std::optional<std::string> safeTempFile(int* descriptor);

  // The first standard folder of that kind in these domains (bits of SearchPathDomain; 0 for all), which need
  // not exist. One in the user's home begins with "~". Absent when there is no such folder.
  static std::optional<std::string> firstFoundDirectoryType_inDomain(SearchPathDirectory kind,
                                                                     unsigned domain);
};

}  // namespace lumo

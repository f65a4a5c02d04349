#pragma once

#include <cstddef>
#include <vector>

#include <sys/types.h>

namespace station {

// What a process and all below it hold at one moment.
struct ProcessTree {
  // The memory of all, pages that several share counted once in all (PSS), in KiB.
  std::size_t memory = 0;
  // Of the first process alone.
  std::size_t openFiles = 0;
  std::size_t threads = 0;
};

// A process that has ended counts nothing.
ProcessTree measure(pid_t first);

// The processes that the process has started.
std::vector<pid_t> childrenOf(pid_t process);
// The same, with those that they have started.
std::vector<pid_t> processesBelow(pid_t process);

// Sends a signal to the processes of the pages of a kiosk, which the engine's sandbox keeps somewhere below
// it. How many got it.
int signalPages(pid_t kiosk, int signal);
// Ends them. How many.
int killPages(pid_t kiosk);
// Ends the process that speaks with the servers for all pages. How many.
int killNetwork(pid_t kiosk);

}  // namespace station

#pragma once

#include <sys/types.h>

namespace station {

// Ends the processes of the pages of a kiosk, which the engine's sandbox keeps somewhere below it. How many.
int killPages(pid_t kiosk);

}  // namespace station

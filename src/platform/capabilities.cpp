#include "platform/capabilities.h"

#include <sys/prctl.h>

namespace platform {

void dropAmbientCapabilities() {
  ::prctl(PR_CAP_AMBIENT, PR_CAP_AMBIENT_CLEAR_ALL, 0, 0, 0);
}

}  // namespace platform

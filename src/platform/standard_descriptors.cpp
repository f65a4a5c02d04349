#include "platform/standard_descriptors.h"

#include <fcntl.h>
#include <unistd.h>

namespace platform {

void openStandardDescriptors() {
  // The lowest free descriptor is taken, so this ends with the first one beyond the three.
  int descriptor = 0;
  do {
    descriptor = open("/dev/null", O_RDWR);
  } while (descriptor >= 0 && descriptor <= STDERR_FILENO);
  if (descriptor > STDERR_FILENO) {
    close(descriptor);
  }
}

}  // namespace platform

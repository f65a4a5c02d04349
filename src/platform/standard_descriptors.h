#pragma once

namespace platform {

// Opens the null device on each of the descriptors 0, 1 and 2 that is closed, so that no file that is opened
// later becomes the program's standard output or error by accident. A program does this first of all.
void openStandardDescriptors();

}  // namespace platform

#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace platform {

// Sets the environment that makes drawing without a GPU fast and small, where the person has not set it.
// Before the toolkit is initialised and before any thread is started; with a GPU it does nothing.
void prepareDrawingEnvironment();
// The names of what prepareDrawingEnvironment has set, which is no affair of the programs that the kiosk
// starts.
std::vector<std::string> drawingEnvironment();
// Whether the machine has a GPU that the toolkit and the engine could draw with: a render node (renderD…)
// below `root`/dev/dri that is more than the picture memory of a virtual machine. What `root`/sys does not
// tell counts as one.
bool hasGpu(const std::filesystem::path& root = "/");

// Connects to the display; false when there is none.
bool initializeToolkit();
// Whether there is any font. Without one the toolkit gives its windows sizes that no screen has. What it
// costs is done once: after the first window was laid out it costs nothing.
bool hasFonts();
// Loads the desktop's style, light or dark as the desktop prefers.
void initializeStyle();

}  // namespace platform

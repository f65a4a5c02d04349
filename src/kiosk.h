#pragma once

#include <functional>
#include <memory>

namespace platform {
class ApplicationDelegate;
struct Platform;
}  // namespace platform

namespace lumo {

// Makes the application's delegate over the platform, which outlives it.
using MakeDelegate = std::function<std::unique_ptr<platform::ApplicationDelegate>(platform::Platform&)>;

// Builds the platform of this machine and runs the application on it. Ends the process with the application,
// or answers 1 when there is no display to show a window on. Once for each process, on its first thread.
int runKiosk(const MakeDelegate& makeDelegate);

}  // namespace lumo

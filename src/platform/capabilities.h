#pragma once

namespace platform {

// Gives up the capabilities that programs started from here would have by inheritance alone (capabilities(7),
// "ambient"). Newer systemds leave the account of a local session CAP_WAKE_ALARM that way (pam_systemd(8)),
// and the sandbox of the web engine does not start with any. For a program's main thread, before it starts
// others; where the kernel does not know them nothing happens.
void dropAmbientCapabilities();

}  // namespace platform

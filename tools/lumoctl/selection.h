#pragma once

#include <optional>
#include <string>

namespace lumoctl {

// The text of the primary selection, of the Wayland session where there is one (through wl-paste), else of
// the X11 one (through xclip). Absent with `error` set when there is no selection, no such program or no
// answer within five seconds. Main thread only.
std::optional<std::string> primarySelection(std::string& error);

}  // namespace lumoctl

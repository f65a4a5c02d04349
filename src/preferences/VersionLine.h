#pragma once

#include <string>

#include "platform/property_list.h"

namespace lumo {

// The settings' line about the program: its name, the processor, versions, the commit, the compiler and the
// web engine, from the bundle's information dictionary. "??" stands for a missing bundle version, compiler or
// engine, "(null)" for what else is missing. Any thread.
std::string versionLine(const platform::Dictionary& info, const std::string& architecture,
                        const std::string& revision);

}  // namespace lumo

// The files of pages/, as they were when the program was built.
#pragma once

#include <string_view>

namespace juniva {

// The content of the file with this name; empty when there is no such file.
std::string_view embeddedPage(std::string_view name);

}  // namespace juniva

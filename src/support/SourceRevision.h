#pragma once

namespace lumo {

// The first seven hexadecimal digits of the commit that was built; zeros when that is not known. Made by the
// build.
const char* sourceRevision();

}  // namespace lumo

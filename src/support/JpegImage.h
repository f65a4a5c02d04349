#pragma once

#include <optional>
#include <string>

#include "platform/web_view.h"

namespace lumo {

// `image` as the bytes of a JPEG file. `compressionFactor` goes from 0.0 (smallest) to 1.0 (best, with the
// colours in full resolution); values outside are brought to the nearer end. Transparency is dropped. Absent,
// with a line in the log, for an image without pixels, with fewer than its size tells, or of more than 65500
// pixels in a direction, which is what the format can hold. Any thread.
std::optional<std::string> jpegRepresentation(const platform::Image& image, double compressionFactor);

}  // namespace lumo

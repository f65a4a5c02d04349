#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "support/JpegSegments.h"

namespace lumo {

// The picture of the JPEG file `jpeg`, whose parts are `segments`, decoded and encoded again. `quality` goes
// from 1 to 100. Size, colour model and the resolution of the colours stay; nothing but the picture comes
// along. Absent, with a line in the log, when the picture cannot be decoded, has more than 200 million pixels
// or claims more of them than so few bytes can hold. A picture that is damaged inside is decoded as far as it
// goes, with a line. Any thread; takes some ten milliseconds for each million pixels.
std::optional<std::string> reencodedJpeg(std::string_view jpeg, const JpegSegments& segments, int quality);

}  // namespace lumo

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lumo {

// One segment in front of the picture's own data, such as EXIF, a colour profile or a comment.
struct JpegSegment {
  std::uint8_t marker = 0;
  // Without the length that stands in front of it.
  std::string_view payload;
};

// The parts of a JPEG file. The views are into the bytes it was read from.
struct JpegSegments {
  std::vector<JpegSegment> header;
  // Where the picture's data begin: the position of the first scan's marker.
  std::size_t firstScan = 0;
  std::size_t scans = 0;
  // Whether the file goes on to its end marker; a file that was cut off does not.
  bool isWhole = false;
};

// The most bytes that one segment can hold.
inline constexpr std::size_t jpegPayloadLimit = 65533;
// What the payload of an EXIF segment begins with.
inline constexpr std::string_view exifSignature{"Exif\0\0", 6};

// Absent when the bytes do not begin as a JPEG file, or end before its picture begins. What lies between
// segments and after the end marker is passed over. Linear in time; any thread.
std::optional<JpegSegments> readJpegSegments(std::string_view bytes);

// The place of the first EXIF segment in the header; absent where there is none.
std::optional<std::size_t> exifSegment(const JpegSegments& segments);

// The picture of `encoded` with what `original` tells about its own, which is the same picture: EXIF, XMP,
// colour profile, captions, comments and the resolution. Its EXIF data is `exif` (without the signature)
// where present; where absent, no EXIF segment comes along. What described the bytes of the old file (the
// colours' coding, pictures appended to it) stays behind. Absent when `encoded` is no JPEG file or `exif` is
// larger than a segment holds.
std::optional<std::string> jpegWithMetadata(std::string_view encoded, const JpegSegments& original,
                                            const std::optional<std::string>& exif);

}  // namespace lumo

#include "support/JpegSegments.h"

#include <algorithm>

namespace lumo {

namespace {

constexpr std::uint8_t kTemporary = 0x01;
constexpr std::uint8_t kFirstRestart = 0xD0;
constexpr std::uint8_t kStart = 0xD8;
constexpr std::uint8_t kEnd = 0xD9;
constexpr std::uint8_t kScan = 0xDA;
constexpr std::uint8_t kApplication0 = 0xE0;
constexpr std::uint8_t kApplication1 = 0xE1;
constexpr std::uint8_t kApplication2 = 0xE2;
constexpr std::uint8_t kApplication13 = 0xED;
constexpr std::uint8_t kComment = 0xFE;
constexpr std::size_t kLengthSize = 2;

std::uint8_t byteAt(std::string_view bytes, std::size_t position) {
  return static_cast<std::uint8_t>(bytes[position]);
}

// Markers without a length.
bool standsAlone(std::uint8_t marker) {
  return marker == kTemporary || (marker >= kFirstRestart && marker <= kStart);
}

// Moves `position` past the next marker and answers it; 0 at the end of the bytes. In the data of a scan a
// restart marker is no end, and 0xFF followed by zero is a byte of the data.
std::uint8_t nextMarker(std::string_view bytes, std::size_t& position) {
  while (true) {
    position = bytes.find('\xFF', position);
    if (position == std::string_view::npos) {
      return 0;
    }
    position = bytes.find_first_not_of('\xFF', position);
    if (position == std::string_view::npos) {
      return 0;
    }
    const std::uint8_t marker = byteAt(bytes, position++);
    if (marker != 0 && !standsAlone(marker)) {
      return marker;
    }
  }
}

// Whether a segment tells about the picture and not about the bytes that spell it.
bool describesPicture(const JpegSegment& segment) {
  switch (segment.marker) {
    case kApplication0:
      return segment.payload.starts_with(std::string_view("JFIF\0", 5));
    case kApplication2:
      return segment.payload.starts_with("ICC_PROFILE");
    case kApplication1:
    case kApplication13:
    case kComment:
      return true;
    default:
      return false;
  }
}

bool isExif(const JpegSegment& segment) {
  return segment.marker == kApplication1 && segment.payload.starts_with(exifSignature);
}

void append(std::string& bytes, std::uint8_t marker, std::string_view payload) {
  const std::size_t length = payload.size() + kLengthSize;
  bytes += '\xFF';
  bytes += static_cast<char>(marker);
  bytes += static_cast<char>(length >> 8);
  bytes += static_cast<char>(length & 0xFF);
  bytes += payload;
}

}  // namespace

std::optional<JpegSegments> readJpegSegments(std::string_view bytes) {
  if (!bytes.starts_with("\xFF\xD8\xFF")) {
    return std::nullopt;
  }
  JpegSegments segments;
  std::size_t position = kLengthSize;
  while (const std::uint8_t marker = nextMarker(bytes, position)) {
    if (marker == kEnd) {
      segments.isWhole = segments.scans > 0;
      break;
    }
    if (bytes.size() - position < kLengthSize) {
      break;
    }
    const std::size_t length = std::size_t{byteAt(bytes, position)} << 8 | byteAt(bytes, position + 1);
    if (length < kLengthSize || length > bytes.size() - position) {
      break;
    }
    if (marker == kScan) {
      if (segments.scans == 0) {
        segments.firstScan = position - 2;
      }
      ++segments.scans;
    } else if (segments.scans == 0) {
      segments.header.push_back({marker, bytes.substr(position + kLengthSize, length - kLengthSize)});
    }
    position += length;
  }
  return segments.scans > 0 ? std::optional(std::move(segments)) : std::nullopt;
}

std::optional<std::size_t> exifSegment(const JpegSegments& segments) {
  const auto found = std::find_if(segments.header.begin(), segments.header.end(), isExif);
  if (found == segments.header.end()) {
    return std::nullopt;
  }
  return static_cast<std::size_t>(found - segments.header.begin());
}

std::optional<std::string> jpegWithMetadata(std::string_view encoded, const JpegSegments& original,
                                            const std::optional<std::string>& exif) {
  const auto picture = readJpegSegments(encoded);
  if (!picture || (exif && exif->size() > jpegPayloadLimit - exifSignature.size())) {
    return std::nullopt;
  }
  const auto replaced = exifSegment(original);
  std::string result = "\xFF\xD8";
  for (std::size_t i = 0; i < original.header.size(); ++i) {
    const JpegSegment& segment = original.header[i];
    if (exif && i == replaced) {
      append(result, segment.marker, std::string(exifSignature) + *exif);
    } else if (describesPicture(segment) && (exif || !isExif(segment))) {
      append(result, segment.marker, segment.payload);
    }
  }
  for (const JpegSegment& segment : picture->header) {
    if (segment.marker != kApplication0) {
      append(result, segment.marker, segment.payload);
    }
  }
  result += encoded.substr(picture->firstScan);
  return result;
}

}  // namespace lumo

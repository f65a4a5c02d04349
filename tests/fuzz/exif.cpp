// A photo with a property list in it: a JPEG file, or the block of its EXIF segment.

#include <algorithm>
#include <cstdlib>
#include <string>
#include <string_view>

#include "platform/property_list.h"
#include "platform/strings.h"
#include "support/ExifBlock.h"
#include "support/ExifUserComment.h"
#include "support/JpegSegments.h"
#include "support/ZELKOR_XMLinEXIF.h"
#include "tests/fuzz/fuzzing.h"

using fuzzing::require;
using lumo::ExifBlock;
using lumo::ZELKOR_XMLinEXIF;

namespace {

constexpr std::size_t kBlockLimit = 65527;
// A larger picture only takes longer.
constexpr std::size_t kMostPixels = 1 << 18;

// The size that the picture's frame tells.
std::size_t pixelsOf(const lumo::JpegSegments& segments) {
  std::size_t most = 0;
  for (const auto& [marker, payload] : segments.header) {
    const bool isFrame =
        marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
    if (isFrame && payload.size() >= 5) {
      const auto byte = [&payload = payload](std::size_t i) {
        return std::size_t{static_cast<std::uint8_t>(payload[i])};
      };
      most = std::max(most, (byte(1) << 8 | byte(2)) * (byte(3) << 8 | byte(4)));
    }
  }
  return most;
}

void lookAtPhoto(const std::string& jpeg) {
  ZELKOR_XMLinEXIF::propertyListObjectForJpegData(jpeg);
  const auto segments = lumo::readJpegSegments(jpeg);
  if (segments && pixelsOf(*segments) > kMostPixels) {
    return;
  }
  const platform::PropertyList list = platform::Dictionary{{"code", "A-1017"}, {"name", "Zo\u00EB"}};
  const auto made =
      ZELKOR_XMLinEXIF::jpegDataWithPropertyListObject_embeddedInExifDataForJpegData(list, jpeg);
  if (!made) {
    return;
  }
  const auto parts = lumo::readJpegSegments(*made);
  require(parts && parts->isWhole, "what is made is a whole photo");
  const auto place = lumo::exifSegment(*parts);
  if (place && ExifBlock::read(parts->header[*place].payload.substr(lumo::exifSignature.size()))) {
    require(ZELKOR_XMLinEXIF::propertyListObjectForJpegData(made) == list, "what was embedded reads back");
  }
}

void lookAtBlock(const std::string& bytes) {
  auto block = ExifBlock::read(bytes);
  if (!block) {
    return;
  }
  block->dictionary();
  if (const auto comment = block->userComment()) {
    block->propertyList(*comment);
  }
  const std::string field = lumo::userCommentField("<a>\u00E9</a>", block->isBigEndian());
  if (block->setUserComment(field, kBlockLimit)) {
    const auto comment = block->userComment();
    require(comment && comment->bytes == field, "a comment that was set is there");
    const auto again = ExifBlock::read(block->bytes());
    require(again && again->userComment() && again->userComment()->bytes == field,
            "a changed block can be read");
  } else {
    require(block->bytes() == bytes, "a comment that was refused changes nothing");
  }
}

void lookAtComment(const std::string& field) {
  for (const bool isBigEndian : {false, true}) {
    const auto text = lumo::textOfUserComment(field, isBigEndian);
    require(!text || platform::isValidUtf8(*text), "a comment's text is UTF-8");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // No copies for debugging: there can be no folder.
  static const bool isHomeless = ::setenv("HOME", "/dev/null", 1) == 0;
  require(isHomeless, "the home can be taken away");
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  if (bytes.starts_with("\xFF\xD8")) {
    lookAtPhoto(bytes);
  } else if (bytes.starts_with("II") || bytes.starts_with("MM")) {
    lookAtBlock(bytes);
  } else {
    lookAtComment(bytes);
  }
  return 0;
}

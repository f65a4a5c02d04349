#include "support/ZELKOR_XMLinEXIF.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <filesystem>
#include <string_view>
#include <system_error>

#include <unistd.h>

#include "platform/file_io.h"
#include "platform/log.h"
#include "platform/paths.h"
#include "platform/property_list_file.h"
#include "support/ExifBlock.h"
#include "support/ExifUserComment.h"
#include "support/JpegReencoding.h"
#include "support/JpegSegments.h"
#include "support/ZELKOR_Log.h"
#include "support/ZELKOR_NSStringAdditions.h"

namespace lumo {

using platform::NSLog;
using platform::PropertyList;

namespace {

constexpr const char* kEntered = "Inside %@ => %@...";
constexpr const char* kClass = "ZELKOR_XMLinEXIF";
constexpr const char* kDebugFolder = "~/Documents";
constexpr int kQuality = 90;
constexpr int kDefaultQuality = 75;
constexpr std::size_t kCommentLimit = 60'000;
constexpr std::size_t kFileLimit = std::size_t{256} << 20;

platform::Data dataOf(std::string_view bytes) {
  const auto* const start = reinterpret_cast<const std::byte*>(bytes.data());
  return {start, start + bytes.size()};
}

bool isNestedWithin(const PropertyList& value, std::size_t levels) {
  const auto fits = [levels](const PropertyList& part) {
    return levels > 0 && isNestedWithin(part, levels - 1);
  };
  if (const auto* array = value.as<platform::Array>()) {
    return levels > 0 && std::all_of(array->begin(), array->end(), fits);
  }
  if (const auto* dictionary = value.as<platform::Dictionary>()) {
    return levels > 0 && std::all_of(dictionary->begin(), dictionary->end(),
                                     [&fits](const auto& entry) { return fits(entry.second); });
  }
  return true;
}

// A list that no reader would take back is not written. Its description would be as endless as itself.
std::optional<std::string> xmlDataOf(const PropertyList& object) {
  if (!isNestedWithin(object, platform::propertyListDepthLimit)) {
    NSLog("a property list is nested more than %lu levels deep, and is not embedded",
          platform::propertyListDepthLimit);
    ZELKOR_Log::debug(
        platform::stringWithFormat("unable to create XML data for object:%@",
                                   object.as<platform::Array>() != nullptr ? "array" : "dictionary"));
    return std::nullopt;
  }
  return platform::xmlDataFromPropertyList(object);
}

// The copies are for whoever looks for a fault; that they cannot be written is none.
void writeDebugCopy(const char* name, std::string_view bytes) {
  // Two calls at the same time must not write into the same temporary file.
  static std::atomic<unsigned> calls{0};
  const std::filesystem::path folder = platform::expandingTilde(kDebugFolder);
  const auto temporary = folder / platform::stringWithFormat(".%s.%i.%u.new", name, ::getpid(), calls++);
  if (!platform::makeFolder(folder)) {
    platform::replaceFile(folder / name, temporary, bytes);
  }
}

// The text of the comment, with the debug copies on the way.
std::optional<std::string> commentText(const PropertyList& object) {
  const auto xml = xmlDataOf(object);
  if (!xml) {
    return std::nullopt;
  }
  writeDebugCopy("xmlData2.dat", *xml);
  if (!ZELKOR_NSStringAdditions::stringWithCString_maxLength_encoding(xml->data(), xml->size(),
                                                                      platform::StringEncoding::UTF8)) {
    ZELKOR_Log::debug(
        "unable to create string from XML data using [NSString stringWithCString: "
        "encoding:NSUTF8StringEncoding]");
    ZELKOR_Log::debug("raw XML data:]");
    ZELKOR_Log::logData(dataOf(*xml));
    return std::nullopt;
  }
  std::string text = platform::stringWithFormat("%s", xml->c_str());
  if (text.empty()) {
    ZELKOR_Log::debug("unable to create string from XML data using [NSString stringWithFormat:]");
    return std::nullopt;
  }
  writeDebugCopy("xmlDataAsString.txt", text);
  writeDebugCopy("xmlDataAsString2.txt", text);
  return text;
}

std::optional<ExifBlock> exifBlockOf(const JpegSegments& segments) {
  const auto place = exifSegment(segments);
  if (!place) {
    return std::nullopt;
  }
  auto block = ExifBlock::read(segments.header[*place].payload.substr(exifSignature.size()));
  if (!block) {
    NSLog("the EXIF data of a JPEG cannot be read");
  }
  return block;
}

bool setComment(ExifBlock& exif, const std::string& text) {
  const std::string field = userCommentField(text, exif.isBigEndian());
  if (field.size() >= kCommentLimit) {
    NSLog("a property list of %lu bytes is too large for an EXIF comment, and is not embedded", field.size());
    return false;
  }
  if (!exif.setUserComment(field, jpegPayloadLimit - exifSignature.size())) {
    NSLog("a property list of %lu bytes does not fit beside the other EXIF data, and is not embedded",
          field.size());
    return false;
  }
  return true;
}

std::optional<std::string> jpegWithComment(const std::string& jpeg, const std::string& text) {
  const auto segments = readJpegSegments(jpeg);
  if (!segments || !segments->isWhole) {
    NSLog(segments ? "the JPEG is cut off, and nothing is embedded" : "the image is no JPEG");
    return std::nullopt;
  }
  auto exif = exifBlockOf(*segments);
  if (exif && !setComment(*exif, text)) {
    return std::nullopt;
  }
  NSLog("EXIF data of the new image: %@", exif ? std::optional(exif->dictionary()) : std::nullopt);
  const auto picture = reencodedJpeg(jpeg, *segments, exif ? kQuality : kDefaultQuality);
  if (!picture) {
    return std::nullopt;
  }
  return jpegWithMetadata(*picture, *segments, exif ? std::optional(exif->bytes()) : std::nullopt);
}

std::optional<std::string> fileAt(const std::optional<std::string>& path) {
  if (!path) {
    return std::nullopt;
  }
  std::error_code error;
  auto contents = platform::fileContents(*path, kFileLimit, error);
  if (!contents) {
    NSLog("the image at %@ cannot be read: %@", *path, error.message());
    return std::nullopt;
  }
  return std::move(contents->bytes);
}

std::optional<PropertyList> propertyListIn(const ExifBlock& exif, const ExifBlock::Value& comment) {
  switch (comment.kind) {
    case ExifBlock::Kind::Byte:
    case ExifBlock::Kind::Ascii:
    case ExifBlock::Kind::Undefined: {
      // Bytes without a code may also be the binary form.
      if (auto object = platform::propertyListFromData(comment.bytes)) {
        return object;
      }
      const auto text = textOfUserComment(comment.bytes, exif.isBigEndian());
      return text ? platform::propertyListFromData(*text) : std::nullopt;
    }
    default:
      return exif.propertyList(comment);
  }
}

}  // namespace

std::optional<std::string> ZELKOR_XMLinEXIF::jpegDataWithPropertyListObject_embeddedInExifDataForJpegData(
    const std::optional<PropertyList>& object, const std::optional<std::string>& jpegData) {
  NSLog(kEntered, kClass, "jpegDataWithPropertyListObject:embeddedInExifDataForJpegData:");
  ZELKOR_Log::debug("Inside jpegDataWithPropertyListObject....");
  NSLog("see if this shows up in log file...");
  if (!object || !jpegData) {
    return std::nullopt;
  }
  const auto text = commentText(*object);
  return text ? jpegWithComment(*jpegData, *text) : std::nullopt;
}

std::optional<std::string> ZELKOR_XMLinEXIF::jpegDataWithPropertyListObject_embeddedInExifDataForJpegAtPath(
    const std::optional<PropertyList>& object, const std::optional<std::string>& path) {
  NSLog(kEntered, kClass, "jpegDataWithPropertyListObject:embeddedInExifDataForJpegAtPath:");
  return jpegDataWithPropertyListObject_embeddedInExifDataForJpegData(object, fileAt(path));
}

std::optional<PropertyList> ZELKOR_XMLinEXIF::propertyListObjectForJpegData(
    const std::optional<std::string>& jpegData) {
  NSLog(kEntered, kClass, "propertyListObjectForJpegData:");
  if (!jpegData) {
    return std::nullopt;
  }
  const auto segments = readJpegSegments(*jpegData);
  if (!segments) {
    NSLog("the image is no JPEG");
    return std::nullopt;
  }
  const auto exif = exifBlockOf(*segments);
  const auto comment = exif ? exif->userComment() : std::nullopt;
  return comment ? propertyListIn(*exif, *comment) : std::nullopt;
}

std::optional<PropertyList> ZELKOR_XMLinEXIF::propertyListObjectForJpegAtPath(
    const std::optional<std::string>& path) {
  NSLog(kEntered, kClass, "propertyListObjectForJpegAtPath:");
  return propertyListObjectForJpegData(fileAt(path));
}

}  // namespace lumo

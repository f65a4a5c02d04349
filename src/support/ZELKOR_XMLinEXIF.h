#pragma once

#include <optional>
#include <string>

#include "platform/property_list.h"

namespace lumo {

// A property list carried inside a JPEG image: as XML text in the user comment of its EXIF data. Without
// state. Any thread; the operations block for as long as decoding, encoding and the disk take. No bad input
// raises or hangs: the result is absent then, and a line in the log says why.
class ZELKOR_XMLinEXIF {
 public:
  // The image, encoded again at quality 0.9, with `object` as its user comment. All other EXIF data
  // (thumbnail, position and makers' notes included), the colour profile, captions and comments stay. An
  // image without EXIF data gets no comment: it is encoded again at quality 0.75, and that is the result.
  //
  // Each call leaves copies of the XML text in ~/Documents: xmlData2.dat, xmlDataAsString.txt and
  // xmlDataAsString2.txt.
  //
  // Absent when an argument is, when the data are no whole JPEG file, when `object` is nested more than 512
  // levels deep, and when the comment has 60,000 bytes or more (two for a character where not all of them are
  // ASCII) or does not fit into the 64 KB of an EXIF segment beside what is there.
  static std::optional<std::string> jpegDataWithPropertyListObject_embeddedInExifDataForJpegData(
      const std::optional<platform::PropertyList>& object, const std::optional<std::string>& jpegData);
  // The same for the file at `path`, which stays as it is. Absent also when it cannot be read.
  static std::optional<std::string> jpegDataWithPropertyListObject_embeddedInExifDataForJpegAtPath(
      const std::optional<platform::PropertyList>& object, const std::optional<std::string>& path);

  // The property list in the user comment; absent when there is none, or another program's text. A comment
  // that is a number and no text is the result as it is. An image that is cut off after its EXIF data will
  // do.
  static std::optional<platform::PropertyList> propertyListObjectForJpegData(
      const std::optional<std::string>& jpegData);
  static std::optional<platform::PropertyList> propertyListObjectForJpegAtPath(
      const std::optional<std::string>& path);
};

}  // namespace lumo

// A property list into a photo and out of it, each as a program would do it once:
//   exif_steps embed PHOTO LIST RESULT
//   exif_steps read PHOTO
// `read` prints the list as XML. Exit status 1: it failed; 2: bad usage.

#include <cstdio>
#include <string>
#include <string_view>

#include "platform/file_io.h"
#include "platform/property_list_file.h"
#include "support/ZELKOR_XMLinEXIF.h"

namespace {

int embed(const std::string& photo, const std::string& list, const std::string& result) {
  const auto made = lumo::ZELKOR_XMLinEXIF::jpegDataWithPropertyListObject_embeddedInExifDataForJpegAtPath(
      platform::propertyListFromFile(list), photo);
  return made && !platform::replaceFile(result, result + ".new", *made) ? 0 : 1;
}

int read(const std::string& photo) {
  const auto list = lumo::ZELKOR_XMLinEXIF::propertyListObjectForJpegAtPath(photo);
  if (!list) {
    return 1;
  }
  std::fputs(platform::xmlDataFromPropertyList(*list).c_str(), stdout);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string_view command = argc > 1 ? argv[1] : "";
  if (command == "embed" && argc == 5) {
    return embed(argv[2], argv[3], argv[4]);
  }
  if (command == "read" && argc == 3) {
    return read(argv[2]);
  }
  std::fputs("usage: exif_steps embed PHOTO LIST RESULT | read PHOTO\n", stderr);
  return 2;
}

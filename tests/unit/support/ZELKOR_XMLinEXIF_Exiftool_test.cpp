// Images as cameras make them, written and read by exiftool, which knows the fields of all of them.

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/format.h"
#include "platform/property_list_file.h"
#include "platform/strings.h"
#include "platform/task.h"
#include "support/ZELKOR_XMLinEXIF.h"
#include "tests/unit/support/exif_fixture.h"

namespace {

using exif_fixture::bytesOf;
using exif_fixture::directory;
using exif_fixture::number;
using exif_fixture::picture;
using exif_fixture::text;
using exif_fixture::undefined;
using platform::Dictionary;
using platform::PropertyList;
using Object = std::optional<PropertyList>;

// A whole photo of one maker.
struct Layout {
  const char* name;
  std::vector<std::string> arguments;
  // exiftool's name of the maker's note, and the note as it stands at a position of the EXIF data.
  std::string noteTag;
  std::string (*note)(std::size_t position) = nullptr;
  // What exiftool must have understood before anything is embedded.
  std::map<std::string, std::string> understood;
};

// A plain directory whose positions count from the beginning of the EXIF data.
std::string canonNote(std::size_t position) {
  return directory({text(0x0006, "Canon EOS R6"), text(0x0007, "Firmware 1.8.1"), text(0x0009, "Lumo Studio"),
                    number(0x000C, 12345678)},
                   position, false);
}

// With a header and positions of its own.
std::string nikonNote(std::size_t) {
  return std::string("Nikon\0\2\20\0\0MM\0*\0\0\0\10", 18) +
         directory({undefined(0x0001, "0210"), text(0x0004, "FINE   "), text(0x001D, "3001234"),
                    number(0x00A7, 4711, true)},
                   8, true);
}

// Positions from the note's beginning.
std::string phoneNote(std::size_t) {
  return std::string("Apple iOS\0\0\1MM", 14) +
         directory(
             {{0x0001, 9, 1, bytesOf(14, 4, true)}, text(0x0015, "0D9B3C1E-1111-2222-3333-444455556666")}, 14,
             true);
}

std::vector<Layout> layouts() {
  return {
      {"Canon",
       {"-Make=Canon", "-Model=Canon EOS R6", "-ExposureTime=1/250", "-FNumber=2.8", "-ISO=400",
        "-DateTimeOriginal=2026:11:21 10:00:00", "-LensModel=RF35mm F1.8", "-ImageDescription=Family Grüße"},
       "MakerNoteCanon",
       canonNote,
       {{"Canon:OwnerName", "\"Lumo Studio\""}, {"ExifIFD:FNumber", "2.8"}}},
      {"Nikon",
       {"-Make=NIKON CORPORATION", "-Model=NIKON Z 6", "-ExifByteOrder=MM", "-SubSecTimeOriginal=42",
        "-Flash#=16", "-UserComment=a person's own words"},
       "MakerNoteNikon",
       nikonNote,
       {{"Nikon:SerialNumber", "3001234"}, {"Nikon:ShutterCount", "4711"}}},
      {"Phone",
       {"-Make=Apple", "-Model=iPhone 15", "-ExifByteOrder=MM", "-OffsetTimeOriginal=+01:00",
        "-LensMake=Apple", "-HostComputer=iPhone 15", "-XMP-dc:Title=A title", "-ExposureCompensation=-1/3"},
       "MakerNoteApple",
       phoneNote,
       {{"Apple:ImageUniqueID", "\"0D9B3C1E-1111-2222-3333-444455556666\""},
        {"XMP-dc:Title", "\"A title\""}}},
      {"Position",
       {"-Make=Lumocam", "-GPSLatitude=48.137154", "-GPSLatitudeRef=N", "-GPSLongitude=11.576124",
        "-GPSLongitudeRef=E", "-GPSAltitude=519", "-GPSDateStamp=2026:11:21", "-IPTC:City=Munich",
        "-Comment=a comment of the file"},
       "",
       nullptr,
       {{"GPS:GPSAltitude", "519"}, {"IPTC:City", "\"Munich\""}}},
      {"Turned",
       {"-Make=Lumocam", "-Orientation#=6", "-ThumbnailImage<=thumbnail.jpg", "-ICC_Profile<=profile.icc",
        "-XResolution=300", "-YResolution=300", "-Copyright=Lumo", "-InteropIndex=R98"},
       "",
       nullptr,
       {{"IFD0:Orientation", "6"}, {"ICC_Profile:ProfileDescription", "\"Lumo\""}}},
  };
}

// A profile that has no more than a name.
std::string profile() {
  const std::string description =
      "desc" + std::string(4, '\0') + bytesOf(5, 4, true) + "Lumo" + std::string(79, '\0');
  const std::string table = bytesOf(1, 4, true) + "desc" + bytesOf(144, 4, true) +
                            bytesOf(static_cast<std::uint32_t>(description.size()), 4, true);
  std::string head(128, '\0');
  head.replace(8, 4, std::string("\2\20\0\0", 4));
  head.replace(12, 12, "mntrRGB XYZ ");
  head.replace(36, 4, "acsp");
  const std::string rest = head.substr(4) + table + description;
  return bytesOf(static_cast<std::uint32_t>(rest.size() + 4), 4, true) + rest;
}

Object parcel() {
  return Dictionary{
      {"code", "A-1017"}, {"name", "Zoë <&> 日本"}, {"prints", 12}, {"sizes", platform::Array{"10 x 15"}}};
}

class ZELKOR_XMLinEXIFExiftoolTest : public exif_fixture::HomeTest,
                                     public ::testing::WithParamInterface<Layout> {
 protected:
  // Runs exiftool on `file` in the test's folder.
  std::string exiftool(std::vector<std::string> arguments, const std::string& file) {
    const std::string folder = home_.path().string() + "/";
    for (std::string& argument : arguments) {
      const std::size_t source = argument.find("<=");
      if (source != std::string::npos) {
        argument.insert(source + 2, folder);
      }
    }
    arguments.insert(arguments.begin(), {"exiftool", "-charset", "utf8"});
    arguments.push_back(folder + file);
    const auto result = platform::Task::run("/usr/bin/env", arguments);
    EXPECT_TRUE(result && result->status == 0) << log_.text();
    return result ? result->standardOutput : "";
  }

  void make(const Layout& layout) {
    writeFile(home_ / "photo.jpg", picture(160, 120));
    writeFile(home_ / "thumbnail.jpg", picture(16, 12));
    writeFile(home_ / "profile.icc", profile());
    auto arguments = layout.arguments;
    arguments.emplace_back("-overwrite_original");
    const std::string note = layout.note != nullptr ? layout.note(0) : "";
    if (!note.empty()) {
      writeFile(home_ / "note.bin", note);
      arguments.push_back("-" + layout.noteTag + "<=note.bin");
    }
    exiftool(arguments, "photo.jpg");
    if (!note.empty()) {
      // Where the note has come to stand decides what stands in it.
      std::string jpeg = readFile(home_ / "photo.jpg");
      const std::size_t place = jpeg.find(note);
      ASSERT_NE(place, std::string::npos);
      const std::size_t block = jpeg.find("Exif" + std::string(2, '\0')) + 6;
      jpeg.replace(place, note.size(), layout.note(place - block));
      writeFile(home_ / "photo.jpg", jpeg);
    }
  }

  // Everything that exiftool finds in the file, but for what is the file's own and not the picture's, and
  // the comment.
  std::vector<std::string> fieldsOf(const std::string& file) {
    std::vector<std::string> fields;
    for (std::string line :
         platform::componentsSeparatedBy(exiftool({"-j", "-a", "-u", "-U", "-G1", "-b", "-n"}, file), "\n")) {
      if (line.ends_with(',')) {
        line.pop_back();
      }
      const bool isOwn =
          line.starts_with("  \"System:") || line.starts_with("  \"ExifTool:ExifToolVersion") ||
          line.starts_with("  \"File:FileSize") || line.starts_with("  \"ExifIFD:UserComment") ||
          line.find("SourceFile") != std::string::npos;
      if (!isOwn) {
        fields.push_back(line);
      }
    }
    std::sort(fields.begin(), fields.end());
    return fields;
  }

  Object embed(const Object& object) {
    const auto made = lumo::ZELKOR_XMLinEXIF::jpegDataWithPropertyListObject_embeddedInExifDataForJpegAtPath(
        object, (home_ / "photo.jpg").string());
    EXPECT_TRUE(made);
    writeFile(home_ / "made.jpg", made.value_or(""));
    return lumo::ZELKOR_XMLinEXIF::propertyListObjectForJpegAtPath((home_ / "made.jpg").string());
  }
};

TEST_P(ZELKOR_XMLinEXIFExiftoolTest, AllFieldsOfAPhotoStay) {
  make(GetParam());
  const auto before = fieldsOf("photo.jpg");
  for (const auto& [name, value] : GetParam().understood) {
    const std::string line = platform::stringWithFormat("  \"%@\": %@", name, value);
    EXPECT_NE(std::find(before.begin(), before.end(), line), before.end()) << line;
  }
  EXPECT_EQ(embed(parcel()), parcel());
  EXPECT_EQ(fieldsOf("made.jpg"), before);
}

TEST_P(ZELKOR_XMLinEXIFExiftoolTest, TheListSurvivesAnotherProgramsChanges) {
  make(GetParam());
  EXPECT_EQ(embed(parcel()), parcel());
  exiftool({"-overwrite_original", "-Artist=Somebody else",
            "-ImageDescription=A longer text than there was before"},
           "made.jpg");
  EXPECT_EQ(lumo::ZELKOR_XMLinEXIF::propertyListObjectForJpegAtPath((home_ / "made.jpg").string()), parcel());
  EXPECT_EQ(exiftool({"-s3", "-Artist"}, "made.jpg"), "Somebody else\n");
}

TEST_P(ZELKOR_XMLinEXIFExiftoolTest, ExiftoolReadsTheListAndWritesOneThatIsRead) {
  make(GetParam());
  for (const Object& object : {parcel(), Object(Dictionary{{"code", "A-1017"}})}) {
    EXPECT_EQ(embed(object), object);
    const std::string xml = exiftool({"-b", "-UserComment"}, "made.jpg");
    EXPECT_EQ(platform::propertyListFromData(xml), object);

    writeFile(home_ / "list.xml", xml);
    exiftool({"-overwrite_original", "-UserComment<=list.xml"}, "photo.jpg");
    EXPECT_EQ(lumo::ZELKOR_XMLinEXIF::propertyListObjectForJpegAtPath((home_ / "photo.jpg").string()),
              object);
  }
}

INSTANTIATE_TEST_SUITE_P(, ZELKOR_XMLinEXIFExiftoolTest, ::testing::ValuesIn(layouts()),
                         [](const auto& layout) { return std::string(layout.param.name); });

}  // namespace

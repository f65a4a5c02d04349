#include "support/ZELKOR_XMLinEXIF.h"

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/property_list_file.h"
#include "support/ExifBlock.h"
#include "support/ExifUserComment.h"
#include "tests/unit/support/exif_fixture.h"

namespace {

using exif_fixture::exifOf;
using exif_fixture::picture;
using exif_fixture::segment;
using exif_fixture::text;
using exif_fixture::tiff;
using exif_fixture::undefined;
using exif_fixture::withExif;
using lumo::ExifBlock;
using platform::Array;
using platform::Dictionary;
using platform::PropertyList;
using Object = std::optional<PropertyList>;
using Bytes = std::optional<std::string>;

constexpr std::uint32_t kComment = 0x9286;
const std::string kAscii("ASCII\0\0\0", 8);
const std::string kUnicode("UNICODE\0", 8);

Bytes embed(const Object& object, const Bytes& jpeg) {
  return lumo::ZELKOR_XMLinEXIF::jpegDataWithPropertyListObject_embeddedInExifDataForJpegData(object, jpeg);
}
Bytes embedAtPath(const Object& object, const Bytes& path) {
  return lumo::ZELKOR_XMLinEXIF::jpegDataWithPropertyListObject_embeddedInExifDataForJpegAtPath(object, path);
}
Object read(const Bytes& jpeg) {
  return lumo::ZELKOR_XMLinEXIF::propertyListObjectForJpegData(jpeg);
}
Object readAtPath(const Bytes& path) {
  return lumo::ZELKOR_XMLinEXIF::propertyListObjectForJpegAtPath(path);
}

std::string cameraImage() {
  return withExif(picture(), tiff({text(0x010F, "Lumocam")}, {{text(0x9003, "2026:11:21 10:00:00")}}));
}

std::string imageWithComment(const std::string& field, std::uint32_t kind = 7) {
  return withExif(picture(), tiff({}, {{{kComment, kind, static_cast<std::uint32_t>(field.size()), field}}}));
}

Dictionary order() {
  return {{"code", "A-1017"},
          {"name", "Zoë & <Søn>"},
          {"prints", 12},
          {"price", 4.68},
          {"paid", true},
          {"taken", platform::Date(std::chrono::seconds(1795255224))},
          {"seal", platform::Data{std::byte{0}, std::byte{255}}},
          {"sizes", Array{"10 x 15", "13 x 18", Array{}, Dictionary{}}}};
}

std::string commentField(const std::string& jpeg) {
  const auto block = ExifBlock::read(exifOf(jpeg));
  const auto comment = block ? block->userComment() : std::nullopt;
  return comment ? std::string(comment->bytes) : "";
}

Array nested(std::size_t levels) {
  Array list;
  for (std::size_t level = 1; level < levels; ++level) {
    Array outer;
    outer.emplace_back(std::move(list));
    list = std::move(outer);
  }
  return list;
}

class ZELKOR_XMLinEXIFTest : public exif_fixture::HomeTest {};

TEST_F(ZELKOR_XMLinEXIFTest, EmbeddingThenReadingTheSameDictionaryReturnsAnEqualOne) {
  const auto jpeg = embed(order(), cameraImage());
  ASSERT_TRUE(jpeg);
  EXPECT_EQ(read(jpeg), Object(order()));
}

TEST_F(ZELKOR_XMLinEXIFTest, EveryKindOfObjectReadsBack) {
  const Object objects[] = {PropertyList("text"),
                            PropertyList(42),
                            PropertyList(0.5),
                            PropertyList(false),
                            PropertyList(platform::Date(std::chrono::seconds(0))),
                            PropertyList(platform::Data(1000, std::byte{7})),
                            PropertyList(Array{}),
                            PropertyList(Dictionary{})};
  for (const Object& object : objects) {
    EXPECT_EQ(read(embed(object, cameraImage())), object);
  }
}

TEST_F(ZELKOR_XMLinEXIFTest, AnotherEmbeddingReplacesTheFirst) {
  const auto first = embed(order(), cameraImage());
  const auto second = embed(Dictionary{{"code", "B-2"}}, first);
  EXPECT_EQ(read(second), Object(Dictionary{{"code", "B-2"}}));
  EXPECT_EQ(second->find("A-1017"), std::string::npos);
}

TEST_F(ZELKOR_XMLinEXIFTest, AJpegWithoutExifIsEncodedAtTheDefaultWithoutAComment) {
  const std::string profile = segment('\xE2', "ICC_PROFILE" + std::string("\0\1\1", 3) + "colours");
  const std::string jpeg = exif_fixture::withSegments(picture(), profile);
  const auto made = embed(order(), jpeg);
  ASSERT_TRUE(made);
  EXPECT_EQ(exifOf(*made), "");
  EXPECT_EQ(made->find("plist"), std::string::npos);
  EXPECT_FALSE(read(made));
  EXPECT_NE(made->find("colours"), std::string::npos);
  // Less quality than where a comment is written.
  EXPECT_LT(made->size(),
            embed(order(), cameraImage())->size() - exifOf(*embed(order(), cameraImage())).size());
}

TEST_F(ZELKOR_XMLinEXIFTest, ExifDataThatCannotBeReadCountsAsNone) {
  const auto made = embed(order(), withExif(picture(), "no directory at all"));
  ASSERT_TRUE(made);
  EXPECT_EQ(exifOf(*made), "");
  EXPECT_TRUE(log_.contains("the EXIF data of a JPEG cannot be read"));
}

TEST_F(ZELKOR_XMLinEXIFTest, AnAbsentPathOrAbsentDataReturnsNoneWithoutTouchingTheDisk) {
  EXPECT_FALSE(embed(order(), std::nullopt));
  EXPECT_FALSE(embed(std::nullopt, cameraImage()));
  EXPECT_FALSE(embedAtPath(order(), std::nullopt));
  EXPECT_FALSE(read(std::nullopt));
  EXPECT_FALSE(readAtPath(std::nullopt));
  EXPECT_TRUE(home_.names().empty());
}

TEST_F(ZELKOR_XMLinEXIFTest, EachMethodSaysThatItWasEntered) {
  read(std::nullopt);
  readAtPath(std::nullopt);
  embed(std::nullopt, std::nullopt);
  embedAtPath(std::nullopt, std::nullopt);
  EXPECT_EQ(
      log_.lines(),
      (std::vector<std::string>{
          "Inside ZELKOR_XMLinEXIF => propertyListObjectForJpegData:...",
          "Inside ZELKOR_XMLinEXIF => propertyListObjectForJpegAtPath:...",
          "Inside ZELKOR_XMLinEXIF => propertyListObjectForJpegData:...",
          "Inside ZELKOR_XMLinEXIF => jpegDataWithPropertyListObject:embeddedInExifDataForJpegData:...",
          "see if this shows up in log file...",
          "Inside ZELKOR_XMLinEXIF => jpegDataWithPropertyListObject:embeddedInExifDataForJpegAtPath:...",
          "Inside ZELKOR_XMLinEXIF => jpegDataWithPropertyListObject:embeddedInExifDataForJpegData:...",
          "see if this shows up in log file...",
      }));
}

TEST_F(ZELKOR_XMLinEXIFTest, TheDictionaryIsLoggedBeforeItIsWritten) {
  ASSERT_TRUE(embed(Dictionary{{"a", 1}}, cameraImage()));
  EXPECT_NE(
      log_.text().find("EXIF data of the new image: {\n    DateTimeOriginal = \"2026:11:21 10:00:00\";\n"
                       "    UserComment = \"("),
      std::string::npos)
      << log_.text();
  log_.clear();
  ASSERT_TRUE(embed(Dictionary{{"a", 1}}, picture()));
  EXPECT_TRUE(log_.contains("EXIF data of the new image: (null)"));
}

TEST_F(ZELKOR_XMLinEXIFTest, EveryCallLeavesThreeDebugCopiesAndNothingElse) {
  const std::string xml = platform::xmlDataFromPropertyList(order());
  ASSERT_TRUE(embed(order(), cameraImage()));
  for (const char* name : {"xmlData2.dat", "xmlDataAsString.txt", "xmlDataAsString2.txt"}) {
    EXPECT_EQ(readFile(documents() / name), xml) << name;
  }
  // Also where the image is of no use, and over older copies.
  EXPECT_FALSE(embed(Dictionary{{"code", "B-2"}}, "no image"));
  const std::string second = platform::xmlDataFromPropertyList(Dictionary{{"code", "B-2"}});
  std::size_t files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(documents())) {
    EXPECT_EQ(readFile(entry.path()), second);
    ++files;
  }
  EXPECT_EQ(files, 3U);
}

TEST_F(ZELKOR_XMLinEXIFTest, DebugCopiesThatCannotBeWrittenAreNoFailure) {
  writeFile(documents(), "a file where the folder should be");
  EXPECT_EQ(read(embed(order(), cameraImage())), Object(order()));
  EXPECT_EQ(readFile(documents()), "a file where the folder should be");
}

TEST_F(ZELKOR_XMLinEXIFTest, ADebugCopyIsNeverSeenHalfWritten) {
  const std::string longOne = platform::xmlDataFromPropertyList(std::string(40000, 'l'));
  const std::string shortOne = platform::xmlDataFromPropertyList("s");
  ASSERT_FALSE(embed("s", ""));
  std::thread writer([] {
    for (int i = 0; i < 50; ++i) {
      embed(i % 2 == 0 ? std::string(40000, 'l') : "s", "");
    }
  });
  std::thread other([] {
    for (int i = 0; i < 50; ++i) {
      embed("s", "");
    }
  });
  for (int i = 0; i < 200; ++i) {
    const std::string seen = readFile(documents() / "xmlData2.dat");
    EXPECT_TRUE(seen == longOne || seen == shortOne) << seen.size();
  }
  writer.join();
  other.join();
}

TEST_F(ZELKOR_XMLinEXIFTest, PathsDoWhatDataDoAndLeaveTheFileAsItIs) {
  const auto path = home_ / "photo.jpg";
  writeFile(path, cameraImage());
  const auto made = embedAtPath(order(), path.string());
  EXPECT_EQ(made, embed(order(), cameraImage()));
  EXPECT_EQ(readFile(path), cameraImage());
  writeFile(path, made.value_or(""));
  EXPECT_EQ(readAtPath(path.string()), Object(order()));
}

TEST_F(ZELKOR_XMLinEXIFTest, AFileThatCannotBeReadIsToldWithItsReason) {
  const std::string missing = (home_ / "missing.jpg").string();
  const std::string pipe = (home_ / "pipe").string();
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_FALSE(readAtPath(missing));
  EXPECT_FALSE(embedAtPath(order(), missing));
  EXPECT_FALSE(readAtPath(pipe));
  EXPECT_FALSE(readAtPath(home_.path().string()));
  EXPECT_EQ(log_.count("the image at " + missing + " cannot be read: No such file or directory"), 2U);
  EXPECT_TRUE(log_.contains("the image at " + pipe + " cannot be read: Invalid argument"));
  EXPECT_TRUE(log_.contains("the image at " + home_.path().string() + " cannot be read: Is a directory"));
}

TEST_F(ZELKOR_XMLinEXIFTest, AsciiTextIsMarkedAsAsciiAndAnyOtherAsUnicode) {
  EXPECT_TRUE(commentField(*embed("plain", cameraImage())).starts_with(kAscii + "<?xml"));
  for (const std::string text : {"Grüße", "Ελληνικά", "日本語", "العربية", "📷"}) {
    const auto jpeg = embed(text, cameraImage());
    EXPECT_TRUE(commentField(*jpeg).starts_with(kUnicode + std::string("<\0?\0", 4))) << text;
    EXPECT_EQ(read(jpeg), Object(text));
  }
}

TEST_F(ZELKOR_XMLinEXIFTest, PlainTextOfAnotherProgramReadsBackAsNone) {
  for (const std::string& field :
       {kAscii + "Summer holidays", kUnicode + std::string("S\0u\0m\0", 6), std::string(8, '\0') + "Summer",
        std::string("Summer"), std::string(64, ' '), std::string(8, '\0'), kAscii, kUnicode + "\xFF",
        std::string()}) {
    EXPECT_FALSE(read(imageWithComment(field))) << field;
  }
}

TEST_F(ZELKOR_XMLinEXIFTest, ListsThatOtherProgramsWroteAreRead) {
  const std::string xml = "<plist version=\"1.0\"><dict><key>a</key><string>\u00E9</string></dict></plist>";
  const Object expected = Dictionary{{"a", "\u00E9"}};
  const std::string fields[] = {xml,
                                kAscii + xml + std::string(100, '\0'),
                                kAscii + xml + std::string(100, ' '),
                                std::string(8, '\0') + xml,
                                "Ascii" + std::string(3, '\0') + "\xEF\xBB\xBF" + xml,
                                lumo::userCommentField(xml, true),
                                lumo::userCommentField(xml, false)};
  for (const std::string& field : fields) {
    EXPECT_EQ(read(imageWithComment(field)), expected) << field;
  }
  EXPECT_EQ(read(imageWithComment(xml, 2)), expected);
  EXPECT_EQ(read(imageWithComment(xml, 1)), expected);
}

TEST_F(ZELKOR_XMLinEXIFTest, ABinaryListIsReadToo) {
  const std::string binary(
      "bplist00\x51x\x08\0\0\0\0\0\0\1\1\0\0\0\0\0\0\0\1\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\x0A", 43);
  EXPECT_EQ(read(imageWithComment(binary)), Object("x"));
}

TEST_F(ZELKOR_XMLinEXIFTest, ACommentThatIsNoTextIsReturnedAsItIs) {
  const auto image = [](std::uint32_t kind, std::uint32_t count, const std::string& value) {
    return withExif(picture(), tiff({}, {{{kComment, kind, count, value}}}));
  };
  EXPECT_EQ(read(image(3, 1, std::string("\7\0", 2))), Object(7));
  EXPECT_EQ(read(image(4, 2, std::string("\1\0\0\0\2\0\0\0", 8))), Object(Array{1, 2}));
  EXPECT_EQ(read(image(5, 1, std::string("\1\0\0\0\2\0\0\0", 8))), Object(0.5));
}

TEST_F(ZELKOR_XMLinEXIFTest, NoJpegAndNoCommentGiveNone) {
  EXPECT_FALSE(read(picture()));
  EXPECT_FALSE(read(cameraImage()));
  log_.clear();
  const std::string png = "\x89PNG\r\n\x1A\n" + std::string("\0\0\0\rIHDR", 8);
  for (const std::string& bytes : {std::string(), std::string("text"), png}) {
    EXPECT_FALSE(read(bytes));
    EXPECT_FALSE(embed(order(), bytes));
  }
  EXPECT_EQ(log_.count("the image is no JPEG"), 6U);
}

TEST_F(ZELKOR_XMLinEXIFTest, AJpegThatCannotBeDecodedGivesNoneAndALine) {
  std::string jpeg = cameraImage();
  // A table that is no table.
  jpeg.replace(jpeg.find(std::string("\xFF\xC4", 2)) + 5, 16, std::string(16, '\xFF'));
  EXPECT_FALSE(embed(order(), jpeg));
  EXPECT_NE(log_.text().find("the picture of a JPEG cannot be encoded again: "), std::string::npos);
}

TEST_F(ZELKOR_XMLinEXIFTest, AJpegThatIsCutOffIsRefusedWhereverItIsCut) {
  const std::string jpeg = cameraImage();
  for (const std::size_t size : {jpeg.size() - 1, jpeg.size() - 100, jpeg.size() / 2, std::size_t{30}}) {
    EXPECT_FALSE(embed(order(), jpeg.substr(0, size))) << size;
  }
  EXPECT_TRUE(log_.contains("the JPEG is cut off, and nothing is embedded"));
}

TEST_F(ZELKOR_XMLinEXIFTest, AJpegThatIsCutOffBehindItsExifDataStillGivesItsList) {
  const auto jpeg = embed(order(), cameraImage());
  EXPECT_EQ(read(jpeg->substr(0, jpeg->size() - 300)), Object(order()));
}

TEST_F(ZELKOR_XMLinEXIFTest, ACommentOf60KilobytesIsRefusedAndOneByteLessIsNot) {
  // What is around the text in the comment.
  const std::size_t around = commentField(*embed("", cameraImage())).size();
  const auto largest = embed(std::string(59999 - around, 'x'), cameraImage());
  ASSERT_TRUE(largest);
  EXPECT_EQ(commentField(*largest).size(), 59999U);
  EXPECT_EQ(read(largest), Object(std::string(59999 - around, 'x')));
  for (const std::size_t size : {std::size_t{60000}, std::size_t{65536}, std::size_t{1} << 20}) {
    log_.clear();
    EXPECT_FALSE(embed(std::string(size - around, 'x'), cameraImage()));
    EXPECT_TRUE(log_.contains("a property list of " + std::to_string(size) +
                              " bytes is too large for an EXIF comment, and is not embedded"));
  }
}

TEST_F(ZELKOR_XMLinEXIFTest, UnicodeTextCountsItsTwoBytes) {
  EXPECT_TRUE(embed("é" + std::string(29000, 'x'), cameraImage()));
  EXPECT_FALSE(embed("é" + std::string(30000, 'x'), cameraImage()));
}

TEST_F(ZELKOR_XMLinEXIFTest, ACommentThatDoesNotFitBesideTheOtherFieldsIsRefused) {
  const std::string jpeg = withExif(picture(), tiff({}, {{undefined(0x927C, std::string(50000, 'm'))}}));
  EXPECT_TRUE(embed(std::string(15000, 'x'), jpeg));
  EXPECT_FALSE(embed(std::string(16000, 'x'), jpeg));
  EXPECT_NE(log_.text().find(" bytes does not fit beside the other EXIF data, and is not embedded"),
            std::string::npos);
}

TEST_F(ZELKOR_XMLinEXIFTest, ADeeplyNestedListIsRefused) {
  EXPECT_EQ(read(embed(nested(100), cameraImage())), Object(nested(100)));
  for (const std::size_t levels : {std::size_t{513}, std::size_t{2000}}) {
    log_.clear();
    EXPECT_FALSE(embed(nested(levels), cameraImage()));
    EXPECT_TRUE(log_.contains("a property list is nested more than 512 levels deep, and is not embedded"));
  }
  Object dictionary = Dictionary{{"list", nested(512)}};
  EXPECT_FALSE(embed(dictionary, cameraImage()));
}

TEST_F(ZELKOR_XMLinEXIFTest, ADeeplyNestedCommentReadsBackAsNone) {
  std::string xml;
  for (int level = 0; level < 6000; ++level) {
    xml += "<array>";
  }
  EXPECT_FALSE(read(imageWithComment(kAscii + xml)));
}

TEST_F(ZELKOR_XMLinEXIFTest, ListsFarBeyondAnyCommentAreRefusedInAMoment) {
  EXPECT_FALSE(embed(Array(100'000, PropertyList("x")), cameraImage()));
}

TEST_F(ZELKOR_XMLinEXIFTest, NothingThatTheImageToldOfItselfIsLost) {
  const std::string thumbnail = picture(16, 12);
  std::string block = tiff({text(0x010F, "Lumocam"), {0x0112, 3, 1, std::string("\6\0", 2)}},
                           {{undefined(0x927C, "note"), text(0xA434, "Lumo 35 mm")}});
  block += thumbnail;
  const auto made = embed(order(), withExif(picture(), block));
  ASSERT_TRUE(made);
  EXPECT_EQ(exifOf(*made).find(thumbnail), block.find(thumbnail));
  EXPECT_EQ(exifOf(*made).find("Lumo 35 mm"), block.find("Lumo 35 mm"));
}

}  // namespace

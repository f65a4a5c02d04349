#include "support/JpegSegments.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/unit/support/exif_fixture.h"

namespace {

using exif_fixture::picture;
using exif_fixture::segment;
using exif_fixture::withExif;
using exif_fixture::withSegments;
using lumo::jpegWithMetadata;
using lumo::readJpegSegments;

TEST(JpegSegmentsTest, APlainPictureIsWhole) {
  const std::string jpeg = picture();
  const auto segments = readJpegSegments(jpeg);
  ASSERT_TRUE(segments);
  EXPECT_TRUE(segments->isWhole);
  EXPECT_EQ(segments->scans, 1U);
  EXPECT_EQ(jpeg.substr(segments->firstScan, 2), "\xFF\xDA");
  EXPECT_FALSE(exifSegment(*segments));
}

TEST(JpegSegmentsTest, EveryCutIsNoticedAndNoneReadsTooFar) {
  const std::string jpeg = withExif(picture(), exif_fixture::tiff({}, std::vector<exif_fixture::Entry>{}));
  for (std::size_t size = 0; size < jpeg.size(); ++size) {
    // A copy of its own, so that the sanitizer sees every byte beyond.
    const std::string cut = jpeg.substr(0, size);
    const auto segments = readJpegSegments(cut);
    EXPECT_FALSE(segments && segments->isWhole) << size;
  }
}

TEST(JpegSegmentsTest, BytesBetweenSegmentsAndBehindTheEndArePassedOver) {
  const std::string jpeg =
      withSegments(picture(), "\xFF" + segment('\xFE', "hello") + "junk" + std::string(3, '\xFF')) +
      "trailer";
  const auto segments = readJpegSegments(jpeg);
  ASSERT_TRUE(segments);
  EXPECT_TRUE(segments->isWhole);
  EXPECT_EQ(segments->header.front().payload, "hello");
}

TEST(JpegSegmentsTest, WhatIsNoJpegGivesNone) {
  for (const std::string bytes :
       {"", "\xFF", "\xFF\xD8", "\xFF\xD8\xFF", "\x89PNG\r\n\x1A\n", "\xFF\xD8\xFF\xD9"}) {
    EXPECT_FALSE(readJpegSegments(bytes)) << bytes.size();
  }
}

TEST(JpegSegmentsTest, WhatTellsOfThePictureComesAlongAndWhatTellsOfTheBytesStays) {
  const std::string profile = "ICC_PROFILE" + std::string("\0\1\1", 3) + "the colours";
  const std::string old = withSegments(
      picture(), segment('\xE1', "Exif" + std::string(2, '\0') + "block") +
                     segment('\xE1', "http://ns.adobe.com/xap/1.0/" + std::string(1, '\0') + "<x/>") +
                     segment('\xE2', profile) + segment('\xE2', "MPF" + std::string(1, '\0') + "offsets") +
                     segment('\xED', "Photoshop 3.0") + segment('\xEE', "Adobe") +
                     segment('\xFE', "a comment"));
  const auto segments = readJpegSegments(old);
  ASSERT_TRUE(segments);
  const auto made = jpegWithMetadata(picture(), *segments, "changed");
  ASSERT_TRUE(made);
  for (const std::string kept : {"changed", "<x/>", "the colours", "Photoshop 3.0", "a comment"}) {
    EXPECT_NE(made->find(kept), std::string::npos) << kept;
  }
  for (const std::string dropped : {"block", "offsets", "Adobe"}) {
    EXPECT_EQ(made->find(dropped), std::string::npos) << dropped;
  }
  EXPECT_EQ(exif_fixture::exifOf(*made), "changed");
}

TEST(JpegSegmentsTest, TheResolutionIsTheOldImagesOrNone) {
  const std::string old = picture();
  auto segments = readJpegSegments(old);
  ASSERT_TRUE(segments);
  const std::string jfif = std::string("JFIF\0\1\1\1\1\54\1\54\0\0", 14);
  segments->header.front().payload = jfif;
  const auto made = jpegWithMetadata(picture(), *segments, std::nullopt);
  ASSERT_TRUE(made);
  EXPECT_EQ(readJpegSegments(*made)->header.front().payload, jfif);

  segments->header.erase(segments->header.begin());
  const auto bare = jpegWithMetadata(picture(), *segments, std::nullopt);
  ASSERT_TRUE(bare);
  EXPECT_EQ(bare->find("JFIF"), std::string::npos);
}

TEST(JpegSegmentsTest, WithoutExifNoExifSegmentComesAlong) {
  const std::string old = withExif(picture(), "broken");
  const auto made = jpegWithMetadata(picture(), *readJpegSegments(old), std::nullopt);
  ASSERT_TRUE(made);
  EXPECT_EQ(made->find("Exif"), std::string::npos);
}

TEST(JpegSegmentsTest, ASegmentHolds65533Bytes) {
  const std::string old = withExif(picture(), "x");
  const auto segments = readJpegSegments(old);
  const std::size_t most = lumo::jpegPayloadLimit - lumo::exifSignature.size();
  const auto made = jpegWithMetadata(picture(), *segments, std::string(most, 'e'));
  ASSERT_TRUE(made);
  EXPECT_EQ(exif_fixture::exifOf(*made).size(), most);
  EXPECT_FALSE(jpegWithMetadata(picture(), *segments, std::string(most + 1, 'e')));
}

}  // namespace

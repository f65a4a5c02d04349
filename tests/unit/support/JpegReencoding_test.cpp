#include "support/JpegReencoding.h"

#include <cmath>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <turbojpeg.h>

#include "tests/fakes/captured_log.h"
#include "tests/unit/support/exif_fixture.h"

namespace {

using exif_fixture::picture;
using lumo::readJpegSegments;
using lumo::reencodedJpeg;

struct Header {
  int width = 0;
  int height = 0;
  int sampling = 0;
  int space = 0;
  bool operator==(const Header&) const = default;
};

const unsigned char* bytesOf(const std::string& jpeg) {
  return reinterpret_cast<const unsigned char*>(jpeg.data());
}

Header headerOf(const std::string& jpeg) {
  const std::unique_ptr<void, int (*)(tjhandle)> reader(tjInitDecompress(), tjDestroy);
  Header header;
  EXPECT_EQ(tjDecompressHeader3(reader.get(), bytesOf(jpeg), jpeg.size(), &header.width, &header.height,
                                &header.sampling, &header.space),
            0);
  return header;
}

std::vector<unsigned char> pixelsOf(const std::string& jpeg, int format) {
  const std::unique_ptr<void, int (*)(tjhandle)> reader(tjInitDecompress(), tjDestroy);
  const Header header = headerOf(jpeg);
  std::vector<unsigned char> pixels(
      static_cast<std::size_t>(header.width * header.height * tjPixelSize[format]));
  EXPECT_EQ(tjDecompress2(reader.get(), bytesOf(jpeg), jpeg.size(), pixels.data(), header.width, 0,
                          header.height, format, TJFLAG_ACCURATEDCT),
            0);
  return pixels;
}

// The mean difference of two pictures, in steps of 1/255.
double differenceOf(const std::string& one, const std::string& other, int format) {
  const auto a = pixelsOf(one, format);
  const auto b = pixelsOf(other, format);
  EXPECT_EQ(a.size(), b.size());
  double sum = 0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    sum += std::abs(a[i] - b[i]);
  }
  return sum / static_cast<double>(a.size());
}

// In the space of printers' colours, or with red, green and blue as they are.
std::string otherwiseCoded(int format) {
  const int size = tjPixelSize[format];
  std::vector<unsigned char> pixels;
  for (int i = 0; i < 48 * 32; ++i) {
    for (int colour = 0; colour < size; ++colour) {
      pixels.push_back(static_cast<unsigned char>(i / (colour + 5)));
    }
  }
  const std::unique_ptr<void, int (*)(tjhandle)> encoder(tjInitCompress(), tjDestroy);
  unsigned char* bytes = nullptr;
  unsigned long length = 0;
  EXPECT_EQ(tjCompress2(encoder.get(), pixels.data(), 48, 0, 32, format, &bytes, &length, TJSAMP_444, 95, 0),
            0);
  const std::unique_ptr<unsigned char, void (*)(unsigned char*)> owned(bytes, tjFree);
  return {reinterpret_cast<const char*>(bytes), length};
}

TEST(JpegReencodingTest, SizeAndResolutionOfColoursStay) {
  for (const int sampling : {TJSAMP_444, TJSAMP_422, TJSAMP_420, TJSAMP_440, TJSAMP_411, TJSAMP_GRAY}) {
    for (const int width : {1, 17, 64}) {
      const std::string jpeg = picture(width, 33, sampling);
      const auto made = reencodedJpeg(jpeg, *readJpegSegments(jpeg), 90);
      ASSERT_TRUE(made) << sampling;
      EXPECT_EQ(headerOf(*made), headerOf(jpeg));
      EXPECT_LT(differenceOf(jpeg, *made, TJPF_RGB), 3.0) << sampling << " " << width;
    }
  }
}

TEST(JpegReencodingTest, AProgressivePictureBecomesAUsualOne) {
  const std::string jpeg = picture(64, 48, TJSAMP_420, 95, TJFLAG_PROGRESSIVE);
  EXPECT_GT(readJpegSegments(jpeg)->scans, 1U);
  const auto made = reencodedJpeg(jpeg, *readJpegSegments(jpeg), 90);
  ASSERT_TRUE(made);
  EXPECT_EQ(readJpegSegments(*made)->scans, 1U);
  EXPECT_LT(differenceOf(jpeg, *made, TJPF_RGB), 3.0);
}

TEST(JpegReencodingTest, TheQualityCounts) {
  const std::string jpeg = picture(200, 200);
  const auto parts = readJpegSegments(jpeg);
  const auto usual = reencodedJpeg(jpeg, *parts, 75);
  const auto good = reencodedJpeg(jpeg, *parts, 90);
  ASSERT_TRUE(usual && good);
  EXPECT_LT(usual->size(), good->size());
  // The first step of brightness tells the quality: 16 at 50 in the standard's table.
  const auto firstStep = [](const std::string& bytes) {
    const auto segments = readJpegSegments(bytes);
    for (const auto& segment : segments->header) {
      if (segment.marker == 0xDB) {
        return int{segment.payload[1]};
      }
    }
    return 0;
  };
  EXPECT_EQ(firstStep(*good), 3);
  EXPECT_EQ(firstStep(*usual), 8);
}

TEST(JpegReencodingTest, PrintersColoursStayPrintersColours) {
  const std::string jpeg = otherwiseCoded(TJPF_CMYK);
  const auto made = reencodedJpeg(jpeg, *readJpegSegments(jpeg), 90);
  ASSERT_TRUE(made);
  EXPECT_EQ(headerOf(*made).space, TJCS_YCCK);
  EXPECT_LT(differenceOf(jpeg, *made, TJPF_CMYK), 3.0);
}

TEST(JpegReencodingTest, AnUnusualResolutionOfColoursIsDecodedAllTheSame) {
  std::string jpeg = picture(48, 32, TJSAMP_420);
  // Three components, the first with two blocks in each direction: now the others differ from one another.
  const std::size_t frame = jpeg.find(std::string("\xFF\xC0", 2));
  ASSERT_NE(frame, std::string::npos);
  ASSERT_EQ(jpeg[frame + 11], '\x22');
  jpeg[frame + 14] = '\x21';
  const fakes::CapturedLog log;
  const auto made = reencodedJpeg(jpeg, *readJpegSegments(jpeg), 90);
  ASSERT_TRUE(made) << log.text();
  EXPECT_EQ(headerOf(*made), (Header{48, 32, TJSAMP_444, TJCS_YCbCr}));
}

TEST(JpegReencodingTest, ADamagedPictureIsDecodedAsFarAsItGoes) {
  const std::string jpeg = picture(64, 480);
  const fakes::CapturedLog log;
  const std::string damaged = jpeg.substr(0, jpeg.size() / 2) + "\xFF\xD9";
  const auto made = reencodedJpeg(damaged, *readJpegSegments(damaged), 90);
  ASSERT_TRUE(made);
  EXPECT_EQ(headerOf(*made), headerOf(jpeg));
  ASSERT_EQ(log.lines().size(), 1U);
  EXPECT_TRUE(log.lines().front().starts_with("the picture of a JPEG is damaged: ")) << log.text();
}

TEST(JpegReencodingTest, APictureThatClaimsMorePixelsThanItCanHaveIsRefusedAtOnce) {
  std::string jpeg = picture();
  const std::size_t frame = jpeg.find(std::string("\xFF\xC0", 2));
  const std::string line = "the picture of a JPEG cannot be encoded again: it ";
  for (const auto& [size, why] : {std::pair<std::string, std::string>{"\x3A\x98\x3A\x98", "is too large"},
                                  {"\xFF\xDC\xFF\xDC", "is too large"},
                                  {"\x1F\x40\x1F\x40", "has too few bytes for its size"}}) {
    jpeg.replace(frame + 5, 4, size);
    const fakes::CapturedLog log;
    EXPECT_FALSE(reencodedJpeg(jpeg, *readJpegSegments(jpeg), 90));
    EXPECT_EQ(log.lines(), std::vector<std::string>{line + why});
  }
}

TEST(JpegReencodingTest, AnEndlessRowOfScansIsRefusedAtOnce) {
  const std::string jpeg = picture(2000, 2000);
  auto segments = readJpegSegments(jpeg);
  segments->scans = 1001;
  const fakes::CapturedLog log;
  EXPECT_FALSE(reencodedJpeg(jpeg, *segments, 90));
  EXPECT_TRUE(log.contains("the picture of a JPEG cannot be encoded again: it is too large"));
}

TEST(JpegReencodingTest, ABrokenPictureGivesNoneAndALine) {
  std::string jpeg = picture();
  // A table that is no table.
  const std::size_t table = jpeg.find(std::string("\xFF\xC4", 2));
  jpeg.replace(table + 5, 16, std::string(16, '\xFF'));
  const fakes::CapturedLog log;
  EXPECT_FALSE(reencodedJpeg(jpeg, *readJpegSegments(jpeg), 90));
  EXPECT_EQ(log.lines().size(), 1U) << log.text();
}

}  // namespace

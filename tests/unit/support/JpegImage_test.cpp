#include "support/JpegImage.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <turbojpeg.h>

#include "tests/fakes/captured_log.h"

namespace {

using lumo::jpegRepresentation;
using platform::Image;

struct Header {
  int width = 0;
  int height = 0;
  int subsampling = 0;
  bool operator==(const Header&) const = default;
};

const unsigned char* bytesOf(const std::string& jpeg) {
  return reinterpret_cast<const unsigned char*>(jpeg.data());
}

Header headerOf(const std::string& jpeg) {
  const std::unique_ptr<void, int (*)(tjhandle)> reader(tjInitDecompress(), tjDestroy);
  Header header;
  int space = 0;
  EXPECT_EQ(tjDecompressHeader3(reader.get(), bytesOf(jpeg), jpeg.size(), &header.width, &header.height,
                                &header.subsampling, &space),
            0);
  return header;
}

std::vector<unsigned char> pixelsOf(const std::string& jpeg) {
  const std::unique_ptr<void, int (*)(tjhandle)> reader(tjInitDecompress(), tjDestroy);
  const Header header = headerOf(jpeg);
  std::vector<unsigned char> pixels(static_cast<std::size_t>(header.width * header.height * 3));
  EXPECT_EQ(tjDecompress2(reader.get(), bytesOf(jpeg), jpeg.size(), pixels.data(), header.width, 0,
                          header.height, TJPF_RGB, 0),
            0);
  return pixels;
}

// Every pixel has another colour.
Image gradient(int width, int height) {
  Image image{width, height, {}};
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      for (const int value : {x * 255 / width, y * 255 / height, (x + y) % 256, 255}) {
        image.pixels.push_back(static_cast<std::byte>(value));
      }
    }
  }
  return image;
}

int largestDifference(const Image& image, const std::vector<unsigned char>& rgb) {
  int largest = 0;
  for (std::size_t pixel = 0; pixel * 4 < image.pixels.size(); ++pixel) {
    for (std::size_t colour = 0; colour < 3; ++colour) {
      const int before = std::to_integer<int>(image.pixels[pixel * 4 + colour]);
      largest = std::max(largest, std::abs(before - rgb[pixel * 3 + colour]));
    }
  }
  return largest;
}

TEST(JpegImageTest, TheBestQualityKeepsSizeAndColours) {
  const Image image = gradient(64, 48);
  const auto jpeg = jpegRepresentation(image, 1.0);
  ASSERT_TRUE(jpeg);
  EXPECT_EQ(headerOf(*jpeg), (Header{64, 48, TJSAMP_444}));
  EXPECT_LE(largestDifference(image, pixelsOf(*jpeg)), 4);
}

TEST(JpegImageTest, LessQualityIsSmaller) {
  const Image image = gradient(200, 200);
  const auto best = jpegRepresentation(image, 1.0);
  const auto half = jpegRepresentation(image, 0.5);
  const auto least = jpegRepresentation(image, 0.0);
  ASSERT_TRUE(best && half && least);
  EXPECT_GT(best->size(), half->size());
  EXPECT_GT(half->size(), least->size());
  EXPECT_EQ(jpegRepresentation(image, 7.0), best);
  EXPECT_EQ(jpegRepresentation(image, -1.0), least);
}

TEST(JpegImageTest, AWholeReceiptAtDoubleResolutionIsPossible) {
  Image image{1010, 28094, {}};
  image.pixels.assign(std::size_t{1010} * 28094 * 4, std::byte{0xFF});
  const auto jpeg = jpegRepresentation(image, 1.0);
  ASSERT_TRUE(jpeg);
  EXPECT_EQ(headerOf(*jpeg), (Header{1010, 28094, TJSAMP_444}));
}

TEST(JpegImageTest, WhatIsNoPictureGivesNoneAndALine) {
  const Image cases[] = {
      {},
      {0, 10, {}},
      {10, -1, std::vector<std::byte>(400)},
      {10, 10, std::vector<std::byte>(399)},
      {65501, 1, std::vector<std::byte>(262004)},
  };
  for (const Image& image : cases) {
    fakes::CapturedLog log;
    EXPECT_FALSE(jpegRepresentation(image, 1.0)) << image.width << " x " << image.height;
    ASSERT_EQ(log.lines().size(), 1U);
    EXPECT_TRUE(log.lines().front().starts_with("no JPEG can be made of an image of "));
  }
}

}  // namespace

#include "support/JpegImage.h"

#include <algorithm>
#include <cmath>
#include <memory>

#include <turbojpeg.h>

#include "platform/log.h"

namespace lumo {

using platform::Image;
using platform::NSLog;

namespace {

constexpr int kMostPixels = 65500;
constexpr int kBytesPerPixel = 4;

bool isWhole(const Image& image) {
  if (image.width <= 0 || image.height <= 0 || image.width > kMostPixels || image.height > kMostPixels) {
    return false;
  }
  return image.pixels.size() >=
         static_cast<std::size_t>(image.width) * static_cast<std::size_t>(image.height) * kBytesPerPixel;
}

}  // namespace

std::optional<std::string> jpegRepresentation(const Image& image, double compressionFactor) {
  if (!isWhole(image)) {
    NSLog("no JPEG can be made of an image of %i x %i with %lu bytes", image.width, image.height,
          image.pixels.size());
    return std::nullopt;
  }
  const std::unique_ptr<void, int (*)(tjhandle)> compressor(tjInitCompress(), tjDestroy);
  if (compressor == nullptr) {
    NSLog("no JPEG can be made: %s", tjGetErrorStr2(nullptr));
    return std::nullopt;
  }
  // The library knows 1 to 100.
  const int quality =
      std::max(1, static_cast<int>(std::lround(std::clamp(compressionFactor, 0.0, 1.0) * 100)));
  const int subsampling = quality == 100 ? TJSAMP_444 : TJSAMP_420;
  unsigned char* bytes = nullptr;
  unsigned long size = 0;
  const auto* pixels = reinterpret_cast<const unsigned char*>(image.pixels.data());
  const int status = tjCompress2(compressor.get(), pixels, image.width, image.width * kBytesPerPixel,
                                 image.height, TJPF_RGBX, &bytes, &size, subsampling, quality, 0);
  const std::unique_ptr<unsigned char, void (*)(unsigned char*)> owned(bytes, tjFree);
  if (status != 0) {
    NSLog("no JPEG can be made: %s", tjGetErrorStr2(compressor.get()));
    return std::nullopt;
  }
  return std::string(reinterpret_cast<const char*>(bytes), size);
}

}  // namespace lumo

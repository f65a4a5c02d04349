#include "support/JpegReencoding.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include <turbojpeg.h>

#include "platform/log.h"

namespace lumo {

using platform::NSLog;

namespace {

constexpr std::uint64_t kMostPixels = 200'000'000;
// The emptiest picture takes about a byte for 340 pixels.
constexpr std::uint64_t kMostPixelsPerByte = 1024;
// Each scan goes over the whole picture. This is more than twenty scans of the largest one.
constexpr std::uint64_t kMostWork = 4'000'000'000;
constexpr int kFlags = TJFLAG_ACCURATEDCT | TJFLAG_LIMITSCANS;
constexpr std::size_t kPlanes = 3;

using Handle = std::unique_ptr<void, int (*)(tjhandle)>;
using Bytes = std::vector<unsigned char>;

struct Picture {
  int width = 0;
  int height = 0;
  int sampling = -1;
  int space = -1;
};

struct Planes {
  std::array<Bytes, kPlanes> bytes;
  std::array<unsigned char*, kPlanes> starts{};
};

class Reencoder {
 public:
  explicit Reencoder(std::string_view jpeg)
      : start_(reinterpret_cast<const unsigned char*>(jpeg.data())), size_(jpeg.size()) {}

  std::optional<std::string> run(std::size_t scans, int quality) {
    if (decoder_ == nullptr || encoder_ == nullptr) {
      return failure("out of memory");
    }
    // It also fails where the colours' resolution is an unusual one, which the pixels' way can do.
    const int status = tjDecompressHeader3(decoder_.get(), start_, size_, &picture_.width, &picture_.height,
                                           &picture_.sampling, &picture_.space);
    if (picture_.width <= 0 || picture_.height <= 0 || picture_.space < 0) {
      return failure(tjGetErrorStr2(decoder_.get()));
    }
    const auto pixels =
        static_cast<std::uint64_t>(picture_.width) * static_cast<std::uint64_t>(picture_.height);
    if (pixels > kMostPixels || pixels * scans > kMostWork) {
      return failure("it is too large");
    }
    if (pixels / kMostPixelsPerByte > size_) {
      return failure("it has too few bytes for its size");
    }
    const bool isPlanar = status == 0 && (picture_.space == TJCS_YCbCr || picture_.space == TJCS_GRAY);
    return isPlanar ? throughPlanes(quality) : throughPixels(quality);
  }

 private:
  static std::nullopt_t failure(const char* why) {
    NSLog("the picture of a JPEG cannot be encoded again: %s", why);
    return std::nullopt;
  }

  // Whether the decoder has given the picture, be it with a flaw.
  bool isDecoded(int status) const {
    if (status != 0 && tjGetErrorCode(decoder_.get()) == TJERR_WARNING) {
      NSLog("the picture of a JPEG is damaged: %s", tjGetErrorStr2(decoder_.get()));
      return true;
    }
    return status == 0;
  }

  // Brightness and colours as they are stored, so that nothing is lost by converting them.
  std::optional<std::string> throughPlanes(int quality) {
    const std::size_t count = picture_.sampling == TJSAMP_GRAY ? 1 : kPlanes;
    Planes planes;
    for (std::size_t i = 0; i < count; ++i) {
      planes.bytes.at(i).resize(
          tjPlaneSizeYUV(static_cast<int>(i), picture_.width, 0, picture_.height, picture_.sampling));
      planes.starts.at(i) = planes.bytes.at(i).data();
    }
    if (!isDecoded(tjDecompressToYUVPlanes(decoder_.get(), start_, size_, planes.starts.data(),
                                           picture_.width, nullptr, picture_.height, kFlags))) {
      return failure(tjGetErrorStr2(decoder_.get()));
    }
    std::array<const unsigned char*, kPlanes> sources{planes.starts[0], planes.starts[1], planes.starts[2]};
    unsigned char* bytes = nullptr;
    unsigned long size = 0;
    const int status =
        tjCompressFromYUVPlanes(encoder_.get(), sources.data(), picture_.width, nullptr, picture_.height,
                                picture_.sampling, &bytes, &size, quality, kFlags);
    return encoded(status, bytes, size);
  }

  std::optional<std::string> throughPixels(int quality) {
    const bool isPrint = picture_.space == TJCS_CMYK || picture_.space == TJCS_YCCK;
    const int format = isPrint ? TJPF_CMYK : TJPF_RGB;
    Bytes pixels(static_cast<std::size_t>(picture_.width) * static_cast<std::size_t>(picture_.height) *
                 static_cast<std::size_t>(tjPixelSize[format]));
    if (!isDecoded(tjDecompress2(decoder_.get(), start_, size_, pixels.data(), picture_.width, 0,
                                 picture_.height, format, kFlags))) {
      return failure(tjGetErrorStr2(decoder_.get()));
    }
    const int sampling = picture_.sampling < 0 ? int{TJSAMP_444} : picture_.sampling;
    unsigned char* bytes = nullptr;
    unsigned long size = 0;
    const int status = tjCompress2(encoder_.get(), pixels.data(), picture_.width, 0, picture_.height, format,
                                   &bytes, &size, sampling, quality, kFlags);
    return encoded(status, bytes, size);
  }

  std::optional<std::string> encoded(int status, unsigned char* bytes, unsigned long size) const {
    const std::unique_ptr<unsigned char, void (*)(unsigned char*)> owned(bytes, tjFree);
    if (status != 0) {
      return failure(tjGetErrorStr2(encoder_.get()));
    }
    return std::string(reinterpret_cast<const char*>(bytes), size);
  }

  const unsigned char* start_;
  unsigned long size_;
  Handle decoder_{tjInitDecompress(), tjDestroy};
  Handle encoder_{tjInitCompress(), tjDestroy};
  Picture picture_;
};

}  // namespace

std::optional<std::string> reencodedJpeg(std::string_view jpeg, const JpegSegments& segments, int quality) {
  return Reencoder(jpeg).run(segments.scans, quality);
}

}  // namespace lumo

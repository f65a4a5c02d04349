#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>
#include <turbojpeg.h>

#include "support/JpegSegments.h"
#include "tests/fakes/captured_log.h"
#include "tests/unit/platform/temporary_folder.h"

// Images with EXIF data, made byte by byte.
namespace exif_fixture {

inline std::string bytesOf(std::uint32_t value, std::size_t size, bool isBigEndian) {
  std::string bytes;
  for (std::size_t i = 0; i < size; ++i) {
    const auto byte = static_cast<char>(value >> (8 * i));
    bytes.insert(isBigEndian ? bytes.begin() : bytes.end(), byte);
  }
  return bytes;
}

struct Entry {
  std::uint32_t tag;
  std::uint32_t kind;
  std::uint32_t count;
  // In the byte order of the whole.
  std::string value;
};

inline Entry text(std::uint32_t tag, const std::string& value) {
  return {tag, 2, static_cast<std::uint32_t>(value.size() + 1), value + '\0'};
}
inline Entry undefined(std::uint32_t tag, const std::string& value) {
  return {tag, 7, static_cast<std::uint32_t>(value.size()), value};
}
inline Entry number(std::uint32_t tag, std::uint32_t value, bool isBigEndian = false) {
  return {tag, 4, 1, bytesOf(value, 4, isBigEndian)};
}

// A directory with its values behind it, as it stands at `position`.
inline std::string directory(const std::vector<Entry>& entries, std::size_t position, bool isBigEndian,
                             std::uint32_t next = 0) {
  std::string result = bytesOf(static_cast<std::uint32_t>(entries.size()), 2, isBigEndian);
  std::string values;
  const std::size_t behind = position + 2 + entries.size() * 12 + 4;
  for (const Entry& entry : entries) {
    result += bytesOf(entry.tag, 2, isBigEndian) + bytesOf(entry.kind, 2, isBigEndian) +
              bytesOf(entry.count, 4, isBigEndian);
    if (entry.value.size() <= 4) {
      std::string field = entry.value;
      field.resize(4, '\0');
      result += field;
    } else {
      result += bytesOf(static_cast<std::uint32_t>(behind + values.size()), 4, isBigEndian);
      values += entry.value;
      values.append(values.size() % 2, '\0');
    }
  }
  return result + bytesOf(next, 4, isBigEndian) + values;
}

// A whole block. Without `exif` there is no EXIF directory.
inline std::string tiff(std::vector<Entry> main, const std::optional<std::vector<Entry>>& exif,
                        bool isBigEndian = false) {
  constexpr std::size_t kFirst = 8;
  std::string result = isBigEndian ? std::string("MM\0*", 4) : std::string("II*\0", 4);
  result += bytesOf(kFirst, 4, isBigEndian);
  if (exif) {
    main.push_back(number(0x8769, 0, isBigEndian));
  }
  const std::size_t second = kFirst + directory(main, kFirst, isBigEndian).size();
  if (exif) {
    main.back() = number(0x8769, static_cast<std::uint32_t>(second), isBigEndian);
  }
  result += directory(main, kFirst, isBigEndian);
  return exif ? result + directory(*exif, second, isBigEndian) : result;
}

// A picture whose every row differs, without any metadata.
inline std::string picture(int width = 64, int height = 48, int sampling = TJSAMP_420, int quality = 95,
                           int flags = 0) {
  std::string pixels;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      for (const int value : {x * 255 / width, y * 255 / height, (x + y) % 256}) {
        pixels += static_cast<char>(value);
      }
    }
  }
  const std::unique_ptr<void, int (*)(tjhandle)> encoder(tjInitCompress(), tjDestroy);
  unsigned char* bytes = nullptr;
  unsigned long size = 0;
  EXPECT_EQ(tjCompress2(encoder.get(), reinterpret_cast<const unsigned char*>(pixels.data()), width, 0,
                        height, TJPF_RGB, &bytes, &size, sampling, quality, flags),
            0);
  const std::unique_ptr<unsigned char, void (*)(unsigned char*)> owned(bytes, tjFree);
  return {reinterpret_cast<const char*>(bytes), size};
}

inline std::string segment(char marker, const std::string& payload) {
  return std::string{'\xFF', marker} + bytesOf(static_cast<std::uint32_t>(payload.size() + 2), 2, true) +
         payload;
}

// `jpeg` with these segments right after its start.
inline std::string withSegments(const std::string& jpeg, const std::string& segments) {
  return jpeg.substr(0, 2) + segments + jpeg.substr(2);
}

inline std::string withExif(const std::string& jpeg, const std::string& block) {
  return withSegments(jpeg, segment('\xE1', std::string(lumo::exifSignature) + block));
}

// The EXIF data of an image, or the empty text.
inline std::string exifOf(const std::string& jpeg) {
  const auto segments = lumo::readJpegSegments(jpeg);
  const auto place = segments ? lumo::exifSegment(*segments) : std::nullopt;
  return place ? std::string(segments->header[*place].payload.substr(lumo::exifSignature.size())) : "";
}

// A home of the test's own, and the log.
class HomeTest : public ::testing::Test {
 protected:
  HomeTest() {
    if (const char* home = std::getenv("HOME")) {
      before_ = home;
    }
    ::setenv("HOME", home_.path().c_str(), 1);
  }
  ~HomeTest() override { ::setenv("HOME", before_.c_str(), 1); }

  std::filesystem::path documents() const { return home_ / "Documents"; }

  TemporaryFolder home_;
  fakes::CapturedLog log_;

 private:
  std::string before_ = "/";
};

}  // namespace exif_fixture

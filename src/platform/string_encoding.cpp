#include "platform/string_encoding.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <memory>

#include <iconv.h>

#include "platform/strings.h"

namespace platform {
namespace {

struct Row {
  StringEncoding encoding;
  std::size_t bytesOfDot;
  // The name by which the C library knows it; UTF-8, Latin-1 and ASCII need no table of its.
  const char* name;
};

constexpr bool kLittle = std::endian::native == std::endian::little;

constexpr std::array kEncodings = {
    Row{StringEncoding::ASCII, 1, ""},
    Row{StringEncoding::JapaneseEUC, 1, "EUC-JP"},
    Row{StringEncoding::UTF8, 1, ""},
    Row{StringEncoding::ISOLatin1, 1, ""},
    Row{StringEncoding::ShiftJIS, 1, "SHIFT_JIS"},
    Row{StringEncoding::ISOLatin2, 1, "ISO-8859-2"},
    Row{StringEncoding::UTF16, 2, kLittle ? "UTF-16LE" : "UTF-16BE"},
    Row{StringEncoding::WindowsCP1251, 1, "CP1251"},
    Row{StringEncoding::WindowsCP1252, 1, "CP1252"},
    Row{StringEncoding::WindowsCP1253, 1, "CP1253"},
    Row{StringEncoding::WindowsCP1254, 1, "CP1254"},
    Row{StringEncoding::WindowsCP1250, 1, "CP1250"},
    Row{StringEncoding::ISO2022JP, 1, "ISO-2022-JP"},
    Row{StringEncoding::MacOSRoman, 1, "MACINTOSH"},
    Row{StringEncoding::UTF16BigEndian, 2, "UTF-16BE"},
    Row{StringEncoding::UTF16LittleEndian, 2, "UTF-16LE"},
    Row{StringEncoding::UTF32, 4, kLittle ? "UTF-32LE" : "UTF-32BE"},
    Row{StringEncoding::UTF32BigEndian, 4, "UTF-32BE"},
    Row{StringEncoding::UTF32LittleEndian, 4, "UTF-32LE"},
};

const Row* rowOf(StringEncoding encoding) {
  const auto row = std::find_if(kEncodings.begin(), kEncodings.end(),
                                [encoding](const Row& one) { return one.encoding == encoding; });
  return row == kEncodings.end() ? nullptr : &*row;
}

// A conversion into UTF-8, null when the C library has no table.
class Converter {
 public:
  explicit Converter(const char* name) : handle_(::iconv_open("UTF-8", name)) {}
  ~Converter() {
    if (*this) {
      ::iconv_close(handle_);
    }
  }
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;

  // The C library's own sign of a failure is -1 as a pointer.
  explicit operator bool() const { return handle_ != reinterpret_cast<iconv_t>(-1); }

  std::optional<std::string> convert(std::string_view bytes) {
    std::string text;
    std::array<char, 4096> buffer;
    char* from = const_cast<char*>(bytes.data());
    std::size_t left = bytes.size();
    bool flushed = false;
    while (!flushed) {
      // Called without input at the end, it gives what an encoding with states still holds back.
      flushed = left == 0;
      char* to = buffer.data();
      std::size_t room = buffer.size();
      const std::size_t result = flushed ? ::iconv(handle_, nullptr, nullptr, &to, &room)
                                         : ::iconv(handle_, &from, &left, &to, &room);
      // A number above zero is that of letters which were only replaced by similar ones.
      if (result != 0 && !(result == static_cast<std::size_t>(-1) && errno == E2BIG)) {
        return std::nullopt;
      }
      text.append(buffer.data(), buffer.size() - room);
    }
    return text;
  }

 private:
  const iconv_t handle_;
};

std::string textFromLatin1(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size());
  for (const char one : bytes) {
    const auto byte = static_cast<unsigned char>(one);
    if (byte < 0x80) {
      text += one;
    } else {
      text += static_cast<char>(0xC0 | (byte >> 6));
      text += static_cast<char>(0x80 | (byte & 0x3F));
    }
  }
  return text;
}

bool isAscii(std::string_view bytes) {
  return std::all_of(bytes.begin(), bytes.end(),
                     [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
}

}  // namespace

std::size_t bytesOfDot(StringEncoding encoding) {
  const Row* row = rowOf(encoding);
  if (row == nullptr || (*row->name != '\0' && !Converter(row->name))) {
    return 0;
  }
  return row->bytesOfDot;
}

std::optional<std::string> textFromBytes(std::string_view bytes, StringEncoding encoding) {
  const Row* row = rowOf(encoding);
  if (row == nullptr) {
    return std::nullopt;
  }
  if (encoding == StringEncoding::ISOLatin1) {
    return textFromLatin1(bytes);
  }
  if (*row->name == '\0') {
    const bool valid = encoding == StringEncoding::ASCII ? isAscii(bytes) : isValidUtf8(bytes);
    return valid ? std::optional(std::string(bytes)) : std::nullopt;
  }
  Converter converter(row->name);
  return converter ? converter.convert(bytes) : std::nullopt;
}

}  // namespace platform

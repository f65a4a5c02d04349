#include "support/ExifUserComment.h"

#include <algorithm>
#include <cstddef>

#include <unicode/unistr.h>

#include "platform/string_encoding.h"
#include "platform/strings.h"

namespace lumo {

namespace {

using platform::StringEncoding;

constexpr std::size_t kCodeSize = 8;
constexpr std::string_view kAsciiCode{"ASCII\0\0\0", kCodeSize};
constexpr std::string_view kUnicodeCode{"UNICODE\0", kCodeSize};
constexpr unsigned char kFirstBeyondAscii = 0x80;

bool isAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < kFirstBeyondAscii; });
}

// Up to the first zero; a field of fixed size is filled up with zeros.
std::string_view untilZero(std::string_view bytes) {
  return bytes.substr(0, bytes.find('\0'));
}

std::optional<std::string> narrowText(std::string_view bytes) {
  bytes = untilZero(bytes);
  return platform::isValidUtf8(bytes) ? std::string(bytes)
                                      : platform::textFromBytes(bytes, StringEncoding::ISOLatin1);
}

// What a property list begins with tells the byte order that its writer meant.
bool looksBigEndian(std::string_view bytes, bool otherwise) {
  constexpr std::string_view kBeginnings = "< \t\r\n";
  if (bytes.size() < 2) {
    return otherwise;
  }
  if (bytes[0] == '\0' && kBeginnings.find(bytes[1]) != std::string_view::npos) {
    return true;
  }
  return otherwise && !(bytes[1] == '\0' && kBeginnings.find(bytes[0]) != std::string_view::npos);
}

std::optional<std::string> wideText(std::string_view bytes, bool isBigEndian) {
  // Some programs put narrow text under the wide code.
  if (bytes.starts_with("<?xml") || bytes.starts_with("<plist") || bytes.starts_with("<!DOCTYPE")) {
    return narrowText(bytes);
  }
  if (bytes.starts_with("\xFE\xFF") || bytes.starts_with("\xFF\xFE")) {
    isBigEndian = bytes.front() == '\xFE';
    bytes.remove_prefix(2);
  } else {
    isBigEndian = looksBigEndian(bytes, isBigEndian);
  }
  bytes.remove_suffix(bytes.size() % 2);
  const auto text = platform::textFromBytes(
      bytes, isBigEndian ? StringEncoding::UTF16BigEndian : StringEncoding::UTF16LittleEndian);
  return text ? std::optional(std::string(untilZero(*text))) : std::nullopt;
}

// The name in the first eight bytes, in capitals; empty for zeros, blanks and whatever is no code.
std::string codeName(std::string_view field) {
  return platform::uppercase(platform::trimmed(untilZero(field.substr(0, kCodeSize))));
}

}  // namespace

std::string userCommentField(std::string_view text, bool isBigEndian) {
  if (isAscii(text)) {
    return std::string(kAsciiCode).append(text);
  }
  const auto units =
      icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())));
  std::string field(kUnicodeCode);
  field.reserve(kCodeSize + static_cast<std::size_t>(units.length()) * 2);
  for (std::int32_t i = 0; i < units.length(); ++i) {
    const char16_t unit = units.charAt(i);
    const auto high = static_cast<char>(unit >> 8);
    const auto low = static_cast<char>(unit & 0xFF);
    field += isBigEndian ? high : low;
    field += isBigEndian ? low : high;
  }
  return field;
}

std::optional<std::string> textOfUserComment(std::string_view field, bool isBigEndian) {
  const std::string code = codeName(field);
  const std::string_view rest = field.substr(std::min(field.size(), kCodeSize));
  if (code == "ASCII") {
    return narrowText(rest);
  }
  if (code == "UNICODE") {
    return wideText(rest, isBigEndian);
  }
  if (code == "JIS") {
    return platform::textFromBytes(untilZero(rest), StringEncoding::ISO2022JP);
  }
  // No code: either eight zeros or blanks, or text from the first byte on.
  return narrowText(code.empty() ? rest : field);
}

}  // namespace lumo

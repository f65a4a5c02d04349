#include "text.h"

#include <charconv>

namespace juniva {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";
constexpr char kHexDigits[] = "0123456789ABCDEF";

bool isControlByte(unsigned char byte) {
  return byte < 0x20 || byte == 0x7F;
}

// C1 control characters are two bytes long in UTF-8: C2 80 to C2 9F.
bool isC1Control(std::string_view character) {
  return character.size() == 2 && character[0] == '\xC2' && static_cast<unsigned char>(character[1]) < 0xA0;
}

// U+2028 and U+2029 end a line for many readers of a log.
bool isLineSeparator(std::string_view character) {
  return character == "\xE2\x80\xA8" || character == "\xE2\x80\xA9";
}

void appendHexEscapes(std::string& out, std::string_view bytes) {
  for (unsigned char byte : bytes) {
    out += "\\x";
    out += kHexDigits[byte >> 4];
    out += kHexDigits[byte & 15];
  }
}

int hexValue(char digit) {
  if (digit >= '0' && digit <= '9') return digit - '0';
  if (digit >= 'a' && digit <= 'f') return digit - 'a' + 10;
  if (digit >= 'A' && digit <= 'F') return digit - 'A' + 10;
  return -1;
}

std::string escapedForLog(std::string_view text, std::size_t limit, bool quoted) {
  std::string out;
  for (std::size_t at = 0; at < text.size();) {
    if (out.size() >= limit) {
      out += "...";
      break;
    }
    const std::size_t length = utf8CharacterLength(text, at);
    const std::string_view character = text.substr(at, length == 0 ? 1 : length);
    const auto first = static_cast<unsigned char>(character[0]);
    at += character.size();
    if (length == 0 || isControlByte(first) || isC1Control(character) || isLineSeparator(character) ||
        (first == ' ' && !quoted)) {
      appendHexEscapes(out, character);
    } else if (first == '\\' || (first == '"' && quoted)) {
      out += '\\';
      out += character;
    } else {
      out += character;
    }
  }
  return out.empty() ? "-" : out;
}

}  // namespace

std::size_t utf8CharacterLength(std::string_view text, std::size_t at) {
  const auto byte = [&](std::size_t offset) -> unsigned {
    return at + offset < text.size() ? static_cast<unsigned char>(text[at + offset]) : 0U;
  };
  const auto continues = [&](std::size_t offset) { return (byte(offset) & 0xC0) == 0x80; };
  const unsigned first = byte(0);
  if (at >= text.size()) return 0;
  if (first < 0x80) return 1;
  if (first >= 0xC2 && first <= 0xDF) return continues(1) ? 2 : 0;
  if (first >= 0xE0 && first <= 0xEF) {
    const bool overlong = first == 0xE0 && byte(1) < 0xA0;
    const bool surrogate = first == 0xED && byte(1) > 0x9F;
    return continues(1) && continues(2) && !overlong && !surrogate ? 3 : 0;
  }
  if (first >= 0xF0 && first <= 0xF4) {
    const bool overlong = first == 0xF0 && byte(1) < 0x90;
    const bool beyondUnicode = first == 0xF4 && byte(1) > 0x8F;
    return continues(1) && continues(2) && continues(3) && !overlong && !beyondUnicode ? 4 : 0;
  }
  return 0;
}

bool isValidUtf8(std::string_view text) {
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t length = utf8CharacterLength(text, at);
    if (length == 0) return false;
    at += length;
  }
  return true;
}

std::size_t utf8Length(std::string_view text) {
  std::size_t count = 0;
  for (unsigned char byte : text) count += (byte & 0xC0) != 0x80 ? 1 : 0;
  return count;
}

bool hasControlCharacter(std::string_view text) {
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (isControlByte(static_cast<unsigned char>(text[at])) || isC1Control(text.substr(at, 2))) return true;
  }
  return false;
}

std::string htmlEscape(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t length = utf8CharacterLength(text, at);
    const std::string_view character = text.substr(at, length == 0 ? 1 : length);
    const char first = character[0];
    at += character.size();
    if (first == '&') {
      out += "&amp;";
    } else if (first == '<') {
      out += "&lt;";
    } else if (first == '>') {
      out += "&gt;";
    } else if (first == '"') {
      out += "&quot;";
    } else if (first == '\'') {
      out += "&#39;";
    } else if (first == '\t' || first == '\n') {
      out += first;
    } else if (length == 0 || isControlByte(static_cast<unsigned char>(first)) || isC1Control(character)) {
      out += kReplacement;
    } else {
      out += character;
    }
  }
  return out;
}

std::string logField(std::string_view text, std::size_t limit) {
  return escapedForLog(text, limit, false);
}

std::string quotedLogField(std::string_view text, std::size_t limit) {
  return escapedForLog(text, limit, true);
}

std::string headerText(std::string_view text) {
  std::string out;
  for (char character : text) out += isControlByte(static_cast<unsigned char>(character)) ? ' ' : character;
  return std::string(trimmed(out));
}

std::string plusForBlanks(std::string_view text) {
  std::string out = headerText(text);
  for (char& character : out) {
    if (character == ' ') character = '+';
  }
  return out;
}

std::optional<std::string> percentDecode(std::string_view text, bool plusIsBlank) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == '%') {
      const int high = at + 1 < text.size() ? hexValue(text[at + 1]) : -1;
      const int low = at + 2 < text.size() ? hexValue(text[at + 2]) : -1;
      if (high < 0 || low < 0 || (high == 0 && low == 0)) return std::nullopt;
      out += static_cast<char>(high * 16 + low);
      at += 2;
    } else if (text[at] == '+' && plusIsBlank) {
      out += ' ';
    } else {
      out += text[at];
    }
  }
  if (!isValidUtf8(out)) return std::nullopt;
  return out;
}

std::string percentEncode(std::string_view text) {
  std::string out;
  for (unsigned char byte : text) {
    const bool letterOrDigit =
        (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z') || (byte >= '0' && byte <= '9');
    if (letterOrDigit || byte == '-' || byte == '.' || byte == '_' || byte == '~') {
      out += static_cast<char>(byte);
    } else {
      out += '%';
      out += kHexDigits[byte >> 4];
      out += kHexDigits[byte & 15];
    }
  }
  return out;
}

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kWhiteSpace = " \t\r\n\f\v";
  const std::size_t begin = text.find_first_not_of(kWhiteSpace);
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(kWhiteSpace) - begin + 1);
}

std::optional<int> parseWholeNumber(std::string_view text, int lowest, int highest) {
  if (text.empty() || text[0] == '-') return std::nullopt;
  int value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  if (value < lowest || value > highest) return std::nullopt;
  return value;
}

}  // namespace juniva

#include "platform/url.h"

#include <algorithm>
#include <charconv>
#include <memory>
#include <utility>

#include <uriparser/Uri.h>
#include <uriparser/UriIp4.h>

#include "platform/strings.h"

namespace platform {

namespace {

constexpr int kHighestPort = 65535;

// The parser takes some fifty bytes for each segment of a path.
constexpr std::size_t kLongestAddress = std::size_t{2} << 20;

bool isLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

// Unreserved and reserved characters of RFC 3986, without '[', ']' and '#', which have rules of their own.
bool standsInUrl(char c) {
  return isLetter(c) || isDigit(c) ||
         std::string_view("-._~:/?@!$&'()*+,;=").find(c) != std::string_view::npos;
}

int hexadecimalValue(char c) {
  if (isDigit(c)) {
    return c - '0';
  }
  if (c >= 'a' && c <= 'f') {
    return c - 'a' + 10;
  }
  return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

bool startsWithEscape(std::string_view text) {
  return text.size() > 2 && text.front() == '%' && hexadecimalValue(text[1]) >= 0 &&
         hexadecimalValue(text[2]) >= 0;
}

std::string decoded(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (startsWithEscape(text.substr(at))) {
      result += static_cast<char>(hexadecimalValue(text[at + 1]) * 16 + hexadecimalValue(text[at + 2]));
      at += 2;
    } else {
      result += text[at];
    }
  }
  return result;
}

void appendEscape(std::string& text, char c) {
  constexpr std::string_view digits = "0123456789ABCDEF";
  const auto byte = static_cast<unsigned char>(c);
  text += '%';
  text += digits[byte >> 4];
  text += digits[byte & 0xF];
}

// The decoded text, or the text itself when that is no UTF-8.
std::string readable(std::string_view text) {
  return stringByRemovingPercentEscapes(text).value_or(std::string(text));
}

// Where the first character of `set` is at or after `start`, or the end.
std::size_t findFirstOf(std::string_view text, std::string_view set, std::size_t start) {
  return std::min(text.find_first_of(set, start), text.size());
}

std::optional<int> portNumber(std::string_view digits) {
  int number = 0;
  const char* const end = digits.data() + digits.size();
  const auto result = std::from_chars(digits.data(), end, number);
  if (result.ec != std::errc() || result.ptr != end || number < 0 || number > kHighestPort) {
    return std::nullopt;
  }
  return number;
}

// Whether the text starts like "10.0.0.5:9090": no reference of RFC 3986, but what people type.
bool startsWithIpv4AndPort(std::string_view text) {
  const std::string_view authority = text.substr(0, findFirstOf(text, "/?#", 0));
  const std::size_t colon = authority.find(':');
  if (colon == std::string_view::npos) {
    return false;
  }
  unsigned char octets[4];
  return uriParseIpFourAddressA(octets, authority.data(), authority.data() + colon) == URI_SUCCESS &&
         portNumber(authority.substr(colon + 1)).has_value();
}

// Frees what the parser has made of a text; the text must outlive it.
class ParsedUri {
 public:
  explicit ParsedUri(std::string_view text) {
    isValid_ = uriParseSingleUriExA(&uri_, text.data(), text.data() + text.size(), nullptr) == URI_SUCCESS;
  }
  // A parser that failed has freed all.
  ~ParsedUri() {
    if (isValid_) {
      uriFreeUriMembersA(&uri_);
    }
  }
  ParsedUri(const ParsedUri&) = delete;
  ParsedUri& operator=(const ParsedUri&) = delete;

  bool isValid() const { return isValid_; }
  const UriUriA& operator*() const { return uri_; }

  static std::optional<std::string> text(const UriTextRangeA& range) {
    return range.first == nullptr ? std::nullopt
                                  : std::optional<std::string>(std::in_place, range.first, range.afterLast);
  }
  static std::optional<std::string> nonEmptyText(const UriTextRangeA& range) {
    return range.first == range.afterLast ? std::nullopt : text(range);
  }

 private:
  UriUriA uri_{};
  bool isValid_ = false;
};

// RFC 3986, 5.2.4, for a path that begins with a slash.
std::string withoutDotSegments(std::string_view path) {
  std::string result;
  while (!path.empty()) {
    const std::string_view segment = path.substr(0, findFirstOf(path, "/", 1));
    path.remove_prefix(segment.size());
    if (segment == "/." || segment == "/..") {
      if (segment == "/.." && !result.empty()) {
        result.erase(result.rfind('/'));
      }
      if (path.empty()) {
        result += '/';
      }
    } else {
      result += segment;
    }
  }
  return result;
}

// The end of the scheme and its colon at the start of `text`; 0 when it has none.
std::size_t endOfScheme(std::string_view text) {
  if (text.empty() || !isLetter(text.front())) {
    return 0;
  }
  const auto end = std::find_if_not(text.begin(), text.end(), [](char c) {
    return isLetter(c) || isDigit(c) || c == '+' || c == '-' || c == '.';
  });
  return end != text.end() && *end == ':' ? static_cast<std::size_t>(end - text.begin()) + 1 : 0;
}

// From where to where the authority lies in a text that need not be an address yet; empty when it has none.
std::pair<std::size_t, std::size_t> rangeOfAuthority(std::string_view text) {
  const std::size_t start = endOfScheme(text);
  if (text.substr(start, 2) != "//") {
    return {start, start};
  }
  return {start + 2, findFirstOf(text, "/?#", start + 2)};
}

// Escapes what has no place in an address; the escapes that are there stay or are escaped themselves.
std::string withEscapes(std::string_view text, bool keepsEscapes) {
  const bool isFile = !keepsEscapes && hasPrefixIgnoringCase(text, "file:");
  const auto [authorityStart, authorityEnd] = rangeOfAuthority(text);
  bool hasFragment = isFile;
  std::string result;
  result.reserve(text.size());
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char c = text[at];
    bool stays = standsInUrl(c);
    if (c == '[' || c == ']') {
      stays = at >= authorityStart && at < authorityEnd;
    } else if (c == '?') {
      stays = !isFile;
    } else if (c == '#') {
      stays = !std::exchange(hasFragment, true);
    } else if (c == '%') {
      stays = keepsEscapes && startsWithEscape(text.substr(at));
    }
    if (stays) {
      result += c;
    } else {
      appendEscape(result, c);
    }
  }
  return result;
}

}  // namespace

std::optional<Url> Url::parse(std::string_view text) {
  if (text.empty() || text.size() > kLongestAddress) {
    return std::nullopt;
  }
  // With two slashes before it, a host and port is a reference that the grammar knows.
  const std::string slashes = startsWithIpv4AndPort(text) ? "//" : "";
  const std::string reference = slashes + std::string(text);
  const ParsedUri parsed(reference);
  if (!parsed.isValid()) {
    return std::nullopt;
  }
  Url url;
  url.text_ = text;
  url.scheme_ = ParsedUri::text((*parsed).scheme);
  url.host_ = ParsedUri::nonEmptyText((*parsed).hostText);
  url.query_ = ParsedUri::text((*parsed).query);
  url.fragment_ = ParsedUri::text((*parsed).fragment);
  if (const auto digits = ParsedUri::nonEmptyText((*parsed).portText)) {
    url.port_ = portNumber(*digits);
    if (!url.port_) {
      return std::nullopt;
    }
  }
  const std::size_t start = rangeOfAuthority(reference).second;
  url.pathStart_ = start - slashes.size();
  url.pathLength_ = findFirstOf(reference, "?#", start) - start;
  const std::string_view path = url.rawPath();
  const bool isOpaque =
      url.scheme_ && url.scheme_->size() + 1 == start && !path.empty() && path.front() != '/';
  if (!isOpaque) {
    url.path_ = readable(path);
  }
  return url;
}

std::optional<Url> Url::parse(const std::optional<std::string>& text) {
  return text ? parse(std::string_view(*text)) : std::nullopt;
}

std::optional<Url> Url::parseEngineText(std::string_view text) {
  return parse(withEscapes(text, true));
}

std::optional<std::string> Url::parameterString() const {
  const std::string_view path = rawPath();
  const std::string_view segment = path.substr(path.rfind('/') + 1);
  const std::size_t semicolon = segment.find(';');
  if (!path_ || semicolon == std::string_view::npos) {
    return std::nullopt;
  }
  return std::string(segment.substr(semicolon + 1));
}

std::string Url::lastPathComponent() const {
  const std::string_view path = path_ ? rawPath() : std::string_view();
  const std::size_t last = path.find_last_not_of('/');
  if (last == std::string_view::npos) {
    return path.empty() ? "" : "/";
  }
  const std::string_view upToLast = path.substr(0, last + 1);
  return readable(upToLast.substr(upToLast.rfind('/') + 1));
}

Url Url::standardized() const {
  if (!rawPath().starts_with('/')) {
    return *this;
  }
  std::string path = withoutDotSegments(rawPath());
  // Without an authority a path that came to begin with two slashes would be read as one.
  const bool hasAuthority = pathStart_ != endOfScheme(text_);
  if (!hasAuthority && path.starts_with("//")) {
    path.insert(0, "/.");
  }
  return byReplacingRawPath(path);
}

Url Url::byAppendingPathComponent(const std::optional<std::string>& component) const {
  if (!component || component->empty()) {
    return *this;
  }
  std::string path(rawPath());
  path.erase(path.find_last_not_of('/') + 1);
  path += '/';
  std::string_view added = *component;
  added.remove_prefix(std::min(added.find_first_not_of('/'), added.size()));
  for (const char c : added) {
    if (standsInUrl(c) && c != '?') {
      path += c;
    } else {
      appendEscape(path, c);
    }
  }
  return byReplacingRawPath(path);
}

Url Url::byReplacingRawPath(const std::string& path) const {
  std::string text = text_;
  text.replace(pathStart_, pathLength_, path);
  return parse(text).value_or(*this);
}

std::string description(const Url& url) {
  return url.absoluteString();
}

std::string stringByAddingPercentEscapes(std::string_view text) {
  return withEscapes(text, false);
}

std::optional<std::string> stringByRemovingPercentEscapes(std::string_view text) {
  std::string result = decoded(text);
  if (!isValidUtf8(result)) {
    return std::nullopt;
  }
  return result;
}

std::string htmlEscaped(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  for (const char c : text) {
    switch (c) {
      case '&':
        result += "&amp;";
        break;
      case '<':
        result += "&lt;";
        break;
      case '>':
        result += "&gt;";
        break;
      case '"':
        result += "&quot;";
        break;
      case '\'':
        result += "&#39;";
        break;
      default:
        result += c;
    }
  }
  return result;
}

}  // namespace platform

#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace platform {

// A parsed address: an RFC 3986 URI or relative reference. Immutable; copies are cheap enough to pass by
// value.
class Url {
 public:
  // Parses strictly (a blank is refused, the empty text too), with one leniency: an IPv4 host with a port,
  // such as "10.0.0.5:9090/x", parses without a scheme ("localhost:9090/x" has the scheme localhost). Absent
  // when it does not parse.
  static std::optional<Url> parse(std::string_view text);
  static std::optional<Url> parse(const char* text) { return parse(std::string_view(text)); }
  static std::optional<Url> parse(const std::string& text) { return parse(std::string_view(text)); }
  // An absent text does not parse.
  static std::optional<Url> parse(const std::optional<std::string>& text);

  // The text as it was given.
  const std::string& absoluteString() const { return text_; }
  // Each part is absent when the address has none; the port is a decimal number, absent when missing or
  // empty.
  const std::optional<std::string>& scheme() const { return scheme_; }
  const std::optional<std::string>& host() const { return host_; }
  std::optional<int> port() const { return port_; }
  // Percent-decoded, keeps its trailing slash; absent for an address without a path component in its grammar
  // (opaque).
  const std::optional<std::string>& path() const { return path_; }
  // As written, not decoded, without '?' and '#'.
  const std::optional<std::string>& query() const { return query_; }
  const std::optional<std::string>& fragment() const { return fragment_; }
  // The part of the last path segment after ';', as written.
  std::optional<std::string> parameterString() const;
  // The last non-empty component of the path ("/" for the root, "" when there is no path).
  std::string lastPathComponent() const;

  // The same address with "." and ".." segments resolved (RFC 3986, 5.2.4).
  Url standardized() const;
  // Exactly one slash between the path and `component`; '?' and '#' inside it are escaped; an absent or empty
  // component appends nothing.
  Url byAppendingPathComponent(const std::optional<std::string>& component) const;

  bool operator==(const Url& other) const { return text_ == other.text_; }

 private:
  Url() = default;

  std::string text_;
  std::optional<std::string> scheme_;
  std::optional<std::string> host_;
  std::optional<int> port_;
  std::optional<std::string> path_;
  std::string rawPath_;
  std::optional<std::string> query_;
  std::optional<std::string> fragment_;
};

std::string description(const Url& url);

// Escapes every byte that RFC 3986 allows nowhere in a URL, and every '%' (as %25). '[' and ']' stay only in
// the authority, '#' only the first one; in a "file:" address '#' and '?' are escaped too.
std::string stringByAddingPercentEscapes(std::string_view text);
// Decodes every %XX; a '%' that starts no escape stays. Absent when the result is not UTF-8.
std::optional<std::string> stringByRemovingPercentEscapes(std::string_view text);
// Escapes the characters that have a meaning in HTML (& < > " ') so that text from outside shows as it is.
std::string htmlEscaped(std::string_view text);

}  // namespace platform

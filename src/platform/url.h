#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace platform {

// A parsed address: an RFC 3986 URI or relative reference. Immutable; copies are cheap enough to pass by
// value.
class Url {
 public:
  // Parses strictly: absent for the empty text, one of more than 2 MiB, a blank, a byte outside ASCII, a '%'
  // that starts no escape and a port that is no number up to 65535. One leniency: an IPv4 host with a port,
  // such as "10.0.0.5:9090/x", parses without a scheme, into host, port and path ("localhost:9090/x" has the
  // scheme localhost).
  static std::optional<Url> parse(std::string_view text);
  static std::optional<Url> parse(const std::string& text) { return parse(std::string_view(text)); }
  static std::optional<Url> parse(const char* text) { return parse(std::string_view(text)); }
  // An absent text does not parse.
  static std::optional<Url> parse(const std::optional<std::string>& text);

  // Parses an address as web engines write them. The engines leave characters such as '|' and '[' in paths
  // and queries, which RFC 3986 allows nowhere there: these are escaped first, escapes that are there stay.
  static std::optional<Url> parseEngineText(std::string_view text);

  // The text as it was given.
  const std::string& absoluteString() const { return text_; }
  // Each part is absent when the address has none.
  const std::optional<std::string>& scheme() const { return scheme_; }
  // As written, without the brackets of an IPv6 address; absent also when it is empty ("file:///x").
  const std::optional<std::string>& host() const { return host_; }
  // Absent also when it is empty ("http://host:/").
  std::optional<int> port() const { return port_; }
  // Percent-decoded, keeps its trailing slash, empty for "http://host"; as written when the decoded bytes are
  // not UTF-8. Absent for an opaque address, which has something other than a slash behind its scheme
  // ("mailto:x", "localhost:9090/x").
  const std::optional<std::string>& path() const { return path_; }
  // As written, not decoded, without '?' and '#'.
  const std::optional<std::string>& query() const { return query_; }
  const std::optional<std::string>& fragment() const { return fragment_; }
  // The part of the last path segment after its first ';', as written; absent for an opaque address.
  std::optional<std::string> parameterString() const;
  // The last non-empty component of the path, percent-decoded ("/" for the root, "" when there is no path).
  std::string lastPathComponent() const;

  // The same address with "." and ".." segments resolved (RFC 3986, 5.2.4), everything else byte for byte. A
  // path that does not begin with a slash has nothing to be resolved against and stays.
  Url standardized() const;
  // The address with `component`, a text without escapes, at the end of its path; query and fragment stay
  // behind it. Exactly one slash between them; what has no place in a path is escaped, with '?', '#' and '%'.
  // An absent or empty component appends nothing.
  Url byAppendingPathComponent(const std::optional<std::string>& component) const;

  bool operator==(const Url& other) const { return text_ == other.text_; }

 private:
  Url() = default;

  std::string_view rawPath() const { return std::string_view(text_).substr(pathStart_, pathLength_); }
  Url byReplacingRawPath(const std::string& path) const;

  std::string text_;
  std::optional<std::string> scheme_;
  std::optional<std::string> host_;
  std::optional<int> port_;
  std::optional<std::string> path_;
  // Where the path as written lies in the text.
  std::size_t pathStart_ = 0;
  std::size_t pathLength_ = 0;
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

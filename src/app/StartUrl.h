#pragma once

#include <optional>
#include <string>
#include <vector>

namespace lumo {

// What became of an address that arrived from outside.
struct StartUrl {
  // The address to store and load; absent when the text was refused.
  std::optional<std::string> address;
  // Diagnostic lines in their order.
  std::vector<std::string> log;
};

// Puts the photo server's scheme, host and port (9090 when it names none) where `url` has a placeholder,
// "[junivaserver]" or
// "[dorvinserver]". A placeholder is found in exactly this spelling; when one is, all spellings are replaced.
// A text without a placeholder comes back unchanged. `server` counts before `defaultServer`; absent when
// neither is set.
std::optional<std::string> replaceKnownPlaceholders(const std::string& url,
                                                    const std::optional<std::string>& server,
                                                    const std::optional<std::string>& defaultServer);

// The whole way of an address: the application's own scheme off, trimmed, placeholders replaced, a usable
// scheme
// ("file", "http", "https") in front. An absent text is refused.
StartUrl resolveStartUrl(const std::optional<std::string>& text, const std::optional<std::string>& server,
                         const std::optional<std::string>& defaultServer);

}  // namespace lumo

#include "dropview/DroppedItems.h"

#include <algorithm>
#include <iterator>

#include "platform/strings.h"
#include "platform/url.h"

namespace lumo {

bool isAccepted(const std::optional<std::string>& type) {
  return type && std::any_of(std::begin(kAcceptedKinds), std::end(kAcceptedKinds),
                             [&](auto kind) { return platform::typeConformsToKind(*type, kind); });
}

std::optional<std::string> droppedText(const std::optional<std::string>& text) {
  return text && !text->empty() ? std::optional(platform::trimmed(*text)) : std::nullopt;
}

std::string fileItem(const std::string& path) {
  return "file://" + path;
}

std::optional<std::string> ownAddressOfItem(const std::string& item) {
  const auto plain = platform::stringByRemovingPercentEscapes(platform::trimmed(item));
  return plain ? std::optional("lumobrowser://" + platform::stringByAddingPercentEscapes(*plain))
               : std::nullopt;
}

}  // namespace lumo

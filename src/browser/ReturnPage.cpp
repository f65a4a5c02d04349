#include "browser/ReturnPage.h"

namespace lumo {

std::optional<platform::Url> returnUrl(const ReturnPage& page) {
  if (const auto* address = std::get_if<std::string>(&page)) {
    return platform::Url::parse(*address);
  }
  const auto* url = std::get_if<platform::Url>(&page);
  return url == nullptr ? std::nullopt : std::optional(*url);
}

}  // namespace lumo

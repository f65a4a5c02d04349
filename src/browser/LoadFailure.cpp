#include "browser/LoadFailure.h"

#include "platform/format.h"
#include "platform/strings.h"

namespace lumo {

namespace {

constexpr const char* kSavePath = "/registration/save";
// These two with a code in the query.
constexpr const char* kOrderDataPaths[] = {"/registrationorders/posdata",
                                           "/registrationorders/photostationdata"};
constexpr const char* kCodeQuery = "code=";

std::optional<std::string> escaped(const std::optional<std::string>& text) {
  return text ? std::optional(platform::htmlEscaped(*text)) : std::nullopt;
}

}  // namespace

bool isExpectedFailure(const std::optional<platform::Url>& failing) {
  if (!failing || !failing->path()) {
    return false;
  }
  const std::string& path = *failing->path();
  if (platform::equalIgnoringCase(path, kSavePath)) {
    return true;
  }
  const auto& query = failing->query();
  if (!query || !query->starts_with(kCodeQuery)) {
    return false;
  }
  for (const char* orderData : kOrderDataPaths) {
    if (path == orderData) {
      return true;
    }
  }
  return false;
}

std::optional<platform::Url> failingUrl(const platform::WebError& error) {
  return error.failingUrlString ? platform::Url::parseEngineText(*error.failingUrlString) : std::nullopt;
}

std::string errorPage(const platform::WebError& error) {
  return platform::stringWithFormat(
      "Error Encountered at %@ !!<br>error code = [%li] = %@<br><br>sender url = %@",
      "handleWebViewError:", static_cast<long>(error.code), platform::htmlEscaped(error.localizedDescription),
      escaped(error.failingUrlString));
}

std::string readablePage(const std::string& text) {
  return "<!doctype html><meta charset=utf-8><style>:root{color-scheme:light dark}"
         "body{margin:6vh 6vw;font:clamp(22px,2.4vw,40px)/1.5 sans-serif;overflow-wrap:anywhere}</style>" +
         text;
}

}  // namespace lumo

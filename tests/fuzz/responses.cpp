// What a server answers to a navigation. Lines: the page's address, a list of paths, a field's identifier,
// then the header fields, "Name: value".

#include <algorithm>
#include <string>

#include "browser/FieldFocus.h"
#include "browser/LoadFailure.h"
#include "browser/ReleaseMessage.h"
#include "browser/ReturnPage.h"
#include "browser/ServerRoutes.h"
#include "platform/strings.h"
#include "tests/fuzz/fuzzing.h"

using fuzzing::require;
using platform::Url;

namespace {

// As the engine hands them on: valid UTF-8.
platform::HeaderFields fieldsIn(fuzzing::Lines& lines) {
  platform::HeaderFields fields;
  while (!lines.atEnd()) {
    const std::string line = platform::validUtf8(lines.next());
    const std::size_t colon = line.find(':');
    fields.emplace_back(line.substr(0, colon),
                        colon == std::string::npos ? "" : platform::trimmed(line.substr(colon + 1)));
  }
  return fields;
}

std::size_t tagsOf(const platform::WebError& error) {
  const std::string page = lumo::errorPage(error);
  return static_cast<std::size_t>(std::count(page.begin(), page.end(), '<'));
}

void lookAtFailure(const std::string& text, const std::optional<Url>& url) {
  const platform::WebError plain{102, "plain", "plain"};
  const platform::WebError error{102, text, text};
  require(tagsOf(error) == tagsOf(plain), "no markup comes from outside");
  lumo::failingUrl(error);
  lumo::isExpectedFailure(url);
  if (url) {
    lumo::photoStationListUrl(*url);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzzing::Lines lines(data, size);
  const std::string address = platform::validUtf8(lines.next());
  const auto url = Url::parseEngineText(address);
  const auto paths = lines.nextOrAbsent();
  const auto identifier = lines.nextOrAbsent();
  const platform::HeaderFields fields = fieldsIn(lines);

  lumo::headerWish(fields);
  const platform::HeaderFields addressed = lumo::fieldsWithAddress(fields, url);
  const auto* const back = platform::headerValue(fields, lumo::kScanReturnHeader);
  lumo::returnUrl(lumo::receiptReturnPage(url, back != nullptr ? std::optional(*back) : std::nullopt));
  const auto path = url ? url->path() : std::nullopt;
  lumo::isRegistrationSave(path);
  lumo::isReleasePath(path, lumo::releasePaths(paths));
  lumo::isFocusPath(path, paths);
  lumo::focusScript(identifier);
  for (const auto status : {lumo::ReleaseStatus::Registered, lumo::ReleaseStatus::CancelledRegistered}) {
    const auto message = lumo::releaseMessage(status, address, &addressed);
    for (const auto& [key, value] : message.userInfo) {
      require(platform::isValidUtf8(key) && platform::isValidUtf8(value), "a message is UTF-8");
    }
  }
  if (url) {
    const platform::UrlRequest request{*url, {}, platform::Millis(0), fields};
    for (const bool hasCamera : {false, true}) {
      const auto changed = lumo::requestWithScanHeader(request, hasCamera);
      require(!changed || !lumo::requestWithScanHeader(*changed, hasCamera), "the header is added once");
    }
  }
  lookAtFailure(address, url);
  return 0;
}

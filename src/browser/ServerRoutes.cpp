#include "browser/ServerRoutes.h"

#include <algorithm>

#include "platform/format.h"
#include "platform/strings.h"
#include "support/ZELKOR_NSStringAdditions.h"

namespace lumo {

namespace {

constexpr const char* kPrintHeader = "Glimmerpad-Plus-Print";
constexpr const char* kAddressField = "respurlstring";

constexpr LegacyRoute kLegacyRoutes[] = {
    {"/registrationorders/save", LegacyAction::Log},
    {"/registrationorders/confirmsave", LegacyAction::Log},
    {"/registration/save", LegacyAction::Save},
    {"/registrationorders/photostationdata", LegacyAction::Release},
    {"/registrationorders/posdata", LegacyAction::Release},
    {"/registrationam/photostationdata", LegacyAction::Release, true},
    {"/registrationam/posdata", LegacyAction::Release, true},
    {"/registrationbookeo/photostationdata", LegacyAction::Release, true},
    {"/registrationbookeo/posdata", LegacyAction::Release, true},
    {"/gradorders/gowndata", LegacyAction::Release, true},
};

bool hasValue(const platform::HeaderFields& fields, const char* name, std::string_view wanted) {
  const std::string* value = platform::headerValue(fields, name);
  return value != nullptr && platform::equalIgnoringCase(*value, wanted);
}

// What stands behind the last slash that is not the text's end.
std::string_view lastPathComponent(std::string_view path) {
  const std::size_t end = path.find_last_not_of('/');
  if (end == std::string_view::npos) {
    return path.substr(0, 1);
  }
  path = path.substr(0, end + 1);
  return path.substr(path.rfind('/') + 1);
}

}  // namespace

HeaderWish headerWish(const platform::HeaderFields& fields) {
  if (hasValue(fields, kScannerHeader, "start")) {
    return HeaderWish::Scan;
  }
  return hasValue(fields, kPrintHeader, "Receipt") ? HeaderWish::PrintReceipt : HeaderWish::None;
}

platform::HeaderFields fieldsWithAddress(platform::HeaderFields fields,
                                         const std::optional<platform::Url>& address) {
  std::erase_if(fields, [](const auto& field) { return field.first == kAddressField; });
  if (address) {
    fields.emplace_back(kAddressField, address->absoluteString());
  }
  return fields;
}

ReturnPage receiptReturnPage(const std::optional<platform::Url>& address,
                             const std::optional<std::string>& scanReturn) {
  if (!address) {
    return {};
  }
  const std::string root =
      platform::stringWithFormat("%@://%@:%@", address->scheme(), address->host(), address->port());
  if (const auto url = platform::Url::parse(root)) {
    return url->byAppendingPathComponent(scanReturn);
  }
  return root;
}

bool isRegistrationSave(const std::optional<std::string>& path) {
  return path && platform::equalIgnoringCase(*path, "/registration/save");
}

std::set<std::string> releasePaths(const std::optional<std::string>& list) {
  std::set<std::string> paths;
  if (!list) {
    return paths;
  }
  const std::string items = platform::replacingOccurrences(platform::trimmed(*list), " ", "");
  for (const std::string& item : platform::componentsSeparatedBy(items, ",")) {
    paths.insert(ZELKOR_NSStringAdditions::validateAsPath(platform::lowercase(item)));
  }
  return paths;
}

bool isReleasePath(const std::optional<std::string>& path, const std::set<std::string>& paths) {
  if (!path) {
    return false;
  }
  const std::string lower = platform::lowercase(*path);
  return paths.contains(ZELKOR_NSStringAdditions::validateAsPath(lower)) ||
         paths.contains(ZELKOR_NSStringAdditions::validateAsPath(std::string(lastPathComponent(lower))));
}

const LegacyRoute* legacyRoute(const std::optional<std::string>& path) {
  const auto* const found =
      std::find_if(std::begin(kLegacyRoutes), std::end(kLegacyRoutes),
                   [&](const auto& route) { return path && platform::equalIgnoringCase(*path, route.path); });
  return found == std::end(kLegacyRoutes) ? nullptr : found;
}

std::optional<platform::UrlRequest> requestWithScanHeader(const platform::UrlRequest& request,
                                                          bool hasCamera) {
  if (!hasCamera || platform::headerValue(request.headers, kScanRequestHeader) != nullptr) {
    return std::nullopt;
  }
  platform::UrlRequest marked{request.url};
  marked.headers.emplace_back(kScanRequestHeader, "yes");
  return marked;
}

}  // namespace lumo

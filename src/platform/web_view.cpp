#include "platform/web_view.h"

#include <algorithm>

#include "platform/format.h"

namespace platform {

const std::string* headerValue(const HeaderFields& fields, std::string_view name) {
  const auto found =
      std::find_if(fields.begin(), fields.end(), [&](const auto& field) { return field.first == name; });
  return found == fields.end() ? nullptr : &found->second;
}

std::string description(const UrlRequest& request) {
  return stringWithFormat("<NSMutableURLRequest: {URL: %@}>", request.url);
}

std::string description(const WebError& error) {
  return stringWithFormat("Error code=%i \"%@\" url=%@", error.code, error.localizedDescription,
                          error.failingUrlString);
}

std::string description(const WebFrame& frame) {
  return stringWithFormat("<WebFrame: {main: %@, request: %@}>", frame.isMain ? "YES" : "NO", frame.request);
}

std::string description(const NavigationAction& action) {
  return stringWithFormat("<WKNavigationAction: {request: %@, mainFrame: %@}>", action.request,
                          action.isMainFrame ? "YES" : "NO");
}

std::string description(const NavigationResponse& response) {
  if (!response.isHttp) {
    return stringWithFormat("<WKNavigationResponse: {URL: %@, mainFrame: %@}>", response.url,
                            response.isMainFrame ? "YES" : "NO");
  }
  return stringWithFormat("<WKNavigationResponse: {URL: %@, mainFrame: %@, status code: %i, headers: %@}>",
                          response.url, response.isMainFrame ? "YES" : "NO", response.statusCode,
                          response.headers);
}

}  // namespace platform

#include "platform/linux/web_messages.h"

#include "platform/strings.h"

namespace platform {

namespace {

Url parsed(const char* uri) {
  const auto url = uri == nullptr ? std::nullopt : Url::parseEngineText(uri);
  return url ? *url : *Url::parse("about:blank");
}

// The engine reads header bytes as Latin-1. What is UTF-8 when it is put back into bytes was UTF-8.
std::string headerText(const char* engineText) {
  std::string bytes;
  for (const char* at = engineText; *at != '\0'; at = g_utf8_next_char(at)) {
    const gunichar character = g_utf8_get_char_validated(at, -1);
    if (character > 0xFF) {
      return validUtf8(engineText);
    }
    bytes.push_back(static_cast<char>(character));
  }
  return isValidUtf8(bytes) ? bytes : validUtf8(engineText);
}

HeaderFields fieldsOf(SoupMessageHeaders* headers) {
  HeaderFields fields;
  if (headers == nullptr) {
    return fields;
  }
  SoupMessageHeadersIter iterator;
  soup_message_headers_iter_init(&iterator, headers);
  const char* name = nullptr;
  const char* value = nullptr;
  while (soup_message_headers_iter_next(&iterator, &name, &value)) {
    const std::string text = headerText(value);
    bool repeated = false;
    for (auto& [known, joined] : fields) {
      if (known == name) {
        joined += ", " + text;
        repeated = true;
      }
    }
    if (!repeated) {
      fields.emplace_back(name, text);
    }
  }
  return fields;
}

}  // namespace

UrlRequest requestOf(WebKitURIRequest* request) {
  return {parsed(webkit_uri_request_get_uri(request)), CachePolicy::UseProtocolCachePolicy, Millis{0},
          fieldsOf(webkit_uri_request_get_http_headers(request))};
}

NavigationResponse responseOf(WebKitURIResponse* answered) {
  NavigationResponse response;
  const char* uri = webkit_uri_response_get_uri(answered);
  response.url = uri == nullptr ? std::nullopt : Url::parseEngineText(uri);
  response.statusCode = static_cast<int>(webkit_uri_response_get_status_code(answered));
  response.isHttp = response.statusCode != 0;
  if (response.isHttp) {
    response.headers = fieldsOf(webkit_uri_response_get_http_headers(answered));
  }
  return response;
}

}  // namespace platform

#pragma once

#include <webkit/webkit.h>

#include "platform/web_view.h"

namespace platform {

// What the engine's requests and answers say, in the platform's terms: every repeated field joined, every
// value valid UTF-8. An address that does not parse is about:blank in a request and absent in an answer.
UrlRequest requestOf(WebKitURIRequest* request);
// Of the main frame, until the caller knows better.
NavigationResponse responseOf(WebKitURIResponse* answered);

}  // namespace platform

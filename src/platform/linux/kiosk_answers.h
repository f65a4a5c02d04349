#pragma once

#include <webkit/webkit.h>

namespace platform {

// The engine asks its application about many things that a kiosk does not want, and has a default for each
// that is left unanswered. These connect one deliberate answer for every such question; the table stands in
// the source file.
void answerForSession(WebKitNetworkSession* session);
void answerForView(WebKitWebView* view);

}  // namespace platform

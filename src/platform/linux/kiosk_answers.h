#pragma once

#include <webkit/webkit.h>

namespace platform {

// The engine asks its application about many things that a kiosk does not want, and has a default for each
// that is left unanswered. These connect one deliberate answer for every such question; the tables stand in
// the source file. Scripts' panels and new windows are the delegate's affair, see LinuxWebView; a bad
// certificate is a failure like any other.
void answerForSession(WebKitNetworkSession* session);
void answerInSettings(WebKitSettings* settings);
void answerForView(WebKitWebView* view);

// Whether the engine can show what the server answers. What it cannot show would be a download elsewhere;
// left to itself it shows the bytes as text.
bool canBeShown(WebKitResponsePolicyDecision* decision);

}  // namespace platform

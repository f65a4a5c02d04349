#include "platform/linux/kiosk_answers.h"

#include "platform/log.h"

namespace platform {

namespace {

gboolean suppressed(const char* what) {
  NSLog("the kiosk does not allow %@", what);
  return TRUE;
}

gboolean noContextMenu() {
  return TRUE;
}

gboolean denyPermission(WebKitWebView*, WebKitPermissionRequest* request, gpointer) {
  webkit_permission_request_deny(request);
  return suppressed(G_OBJECT_TYPE_NAME(request));
}

gboolean goOnWithoutPassword(WebKitWebView*, WebKitAuthenticationRequest* request, gpointer) {
  // The server's answer shows then; cancelling would end the load without a word.
  webkit_authentication_request_authenticate(request, nullptr);
  return suppressed("a page to ask for a name and a password");
}

gboolean cancelFileChooser(WebKitWebView*, WebKitFileChooserRequest* request, gpointer) {
  webkit_file_chooser_request_cancel(request);
  return suppressed("a page to choose files of this computer");
}

gboolean cancelColorChooser(WebKitWebView*, WebKitColorChooserRequest* request, gpointer) {
  webkit_color_chooser_request_cancel(request);
  return suppressed("a colour chooser");
}

gboolean noNotification() {
  return suppressed("a page to show notifications");
}

gboolean noPrintDialogue() {
  return suppressed("a page to open the print dialogue");
}

gboolean noFullScreen() {
  return suppressed("a page to cover the whole screen");
}

void cancelDownload(WebKitNetworkSession*, WebKitDownload* download, gpointer) {
  webkit_download_cancel(download);
  suppressed("downloads");
}

// What the engine asks, and the kiosk's answer.
struct Answer {
  const char* question;
  GCallback answer;
};

const Answer kViewAnswers[] = {
    {"context-menu", G_CALLBACK(noContextMenu)},
    {"permission-request", G_CALLBACK(denyPermission)},
    {"authenticate", G_CALLBACK(goOnWithoutPassword)},
    {"run-file-chooser", G_CALLBACK(cancelFileChooser)},
    {"run-color-chooser", G_CALLBACK(cancelColorChooser)},
    {"show-notification", G_CALLBACK(noNotification)},
    {"print", G_CALLBACK(noPrintDialogue)},
    // A page that goes full screen would cover the bars and hide the way out for the operator.
    {"enter-fullscreen", G_CALLBACK(noFullScreen)},
};

// What is no question when it is switched off: the page is told so.
struct Setting {
  const char* name;
  gboolean value;
};

const Setting kSettings[] = {
    {"enable-developer-extras", FALSE},
    // Otherwise a page would wait for ever for the full screen that it does not get.
    {"enable-fullscreen", FALSE},
    {"enable-back-forward-navigation-gestures", FALSE},
    // Windows only where the person has pressed something.
    {"javascript-can-open-windows-automatically", FALSE},
};

const Answer kSessionAnswers[] = {
    {"download-started", G_CALLBACK(cancelDownload)},
};

}  // namespace

void answerForSession(WebKitNetworkSession* session) {
  for (const Answer& entry : kSessionAnswers) {
    g_signal_connect(session, entry.question, entry.answer, nullptr);
  }
}

bool canBeShown(WebKitResponsePolicyDecision* decision) {
  // Some answers have no type, such as those without content: what they mean is the engine's affair.
  const char* type =
      webkit_uri_response_get_mime_type(webkit_response_policy_decision_get_response(decision));
  if (type == nullptr || *type == '\0' ||
      webkit_response_policy_decision_is_mime_type_supported(decision) != FALSE) {
    return true;
  }
  NSLog("the kiosk does not show %@", type);
  return false;
}

void answerInSettings(WebKitSettings* settings) {
  for (const Setting& setting : kSettings) {
    g_object_set(settings, setting.name, setting.value, nullptr);
  }
}

void answerForView(WebKitWebView* view) {
  for (const Answer& entry : kViewAnswers) {
    g_signal_connect(view, entry.question, entry.answer, nullptr);
  }
}

}  // namespace platform

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

gboolean cancelAuthentication(WebKitWebView*, WebKitAuthenticationRequest* request, gpointer) {
  webkit_authentication_request_cancel(request);
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
  return TRUE;
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
    {"authenticate", G_CALLBACK(cancelAuthentication)},
    {"run-file-chooser", G_CALLBACK(cancelFileChooser)},
    {"run-color-chooser", G_CALLBACK(cancelColorChooser)},
    {"show-notification", G_CALLBACK(noNotification)},
    {"print", G_CALLBACK(noPrintDialogue)},
    // A page that goes full screen would cover the bars and hide the way out for the operator.
    {"enter-fullscreen", G_CALLBACK(noFullScreen)},
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

void answerForView(WebKitWebView* view) {
  for (const Answer& entry : kViewAnswers) {
    g_signal_connect(view, entry.question, entry.answer, nullptr);
  }
}

}  // namespace platform

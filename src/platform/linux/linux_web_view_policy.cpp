#include <memory>

#include "platform/linux/kiosk_answers.h"
#include "platform/linux/linux_web_view.h"
#include "platform/log.h"
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

UrlRequest requestOf(WebKitURIRequest* request) {
  return {parsed(webkit_uri_request_get_uri(request)), CachePolicy::UseProtocolCachePolicy, Millis{0},
          fieldsOf(webkit_uri_request_get_http_headers(request))};
}

// Answers the engine exactly once: by the first call, or with "ignore" when it is dropped.
class Decision {
 public:
  explicit Decision(WebKitPolicyDecision* decision)
      : decision_(WEBKIT_POLICY_DECISION(g_object_ref(decision))) {}
  ~Decision() {
    answer(NavigationPolicy::Cancel);
    g_object_unref(decision_);
  }
  Decision(const Decision&) = delete;
  Decision& operator=(const Decision&) = delete;

  void answer(NavigationPolicy policy) {
    if (answered_) {
      return;
    }
    answered_ = true;
    if (policy == NavigationPolicy::Allow) {
      webkit_policy_decision_use(decision_);
    } else {
      webkit_policy_decision_ignore(decision_);
    }
  }

 private:
  WebKitPolicyDecision* decision_;
  bool answered_ = false;
};

}  // namespace

bool LinuxWebView::decidePolicy(WebKitPolicyDecision* decision, WebKitPolicyDecisionType type) {
  if (delegate_ == nullptr) {
    return false;
  }
  switch (type) {
    case WEBKIT_POLICY_DECISION_TYPE_NAVIGATION_ACTION:
      decideAction(WEBKIT_NAVIGATION_POLICY_DECISION(decision));
      break;
    case WEBKIT_POLICY_DECISION_TYPE_NEW_WINDOW_ACTION:
      webkit_policy_decision_ignore(decision);
      newWindow(webkit_navigation_policy_decision_get_navigation_action(
          WEBKIT_NAVIGATION_POLICY_DECISION(decision)));
      break;
    case WEBKIT_POLICY_DECISION_TYPE_RESPONSE:
      decideResponse(WEBKIT_RESPONSE_POLICY_DECISION(decision));
      break;
  }
  return true;
}

void LinuxWebView::decideAction(WebKitNavigationPolicyDecision* decision) {
  WebKitNavigationAction* action = webkit_navigation_policy_decision_get_navigation_action(decision);
  const NavigationAction asked{requestOf(webkit_navigation_action_get_request(action)), true};
  auto answer = std::make_shared<Decision>(WEBKIT_POLICY_DECISION(decision));
  delegate_->webView_decidePolicyForNavigationAction_decisionHandler(
      *this, asked, [answer](NavigationPolicy policy) { answer->answer(policy); });
}

void LinuxWebView::decideResponse(WebKitResponsePolicyDecision* decision) {
  WebKitURIResponse* answered = webkit_response_policy_decision_get_response(decision);
  NavigationResponse response;
  const char* uri = webkit_uri_response_get_uri(answered);
  response.url = uri == nullptr ? std::nullopt : Url::parseEngineText(uri);
  response.statusCode = static_cast<int>(webkit_uri_response_get_status_code(answered));
  response.isHttp = response.statusCode != 0;
  if (response.isHttp) {
    response.headers = fieldsOf(webkit_uri_response_get_http_headers(answered));
  }
  response.isMainFrame = webkit_response_policy_decision_is_main_frame_main_resource(decision) != FALSE;

  auto answer = std::make_shared<Decision>(WEBKIT_POLICY_DECISION(decision));
  if (response.isMainFrame) {
    // The view's own address is still the old page's while a link's or form's answer is decided.
    decidedUrl_ = parsed(webkit_uri_request_get_uri(webkit_response_policy_decision_get_request(decision)));
  }
  const bool showable = canBeShown(decision);
  delegate_->webView_decidePolicyForNavigationResponse_decisionHandler(
      *this, response, [answer, showable](NavigationPolicy policy) {
        answer->answer(showable ? policy : NavigationPolicy::Cancel);
      });
  decidedUrl_.reset();
}

void LinuxWebView::newWindow(WebKitNavigationAction* action) {
  if (delegate_ == nullptr) {
    return;
  }
  const UrlRequest request = requestOf(webkit_navigation_action_get_request(action));
  WebView* target = delegate_->webView_createWebViewWithRequest(*this, request);
  const std::string& address = request.url.absoluteString();
  // A window that a script opens empty is filled by the script; there is nothing to show yet.
  if (target != nullptr && !address.empty() && address != "about:blank") {
    target->load(request);
  }
}

bool LinuxWebView::scriptDialog(WebKitScriptDialog* dialog) {
  const WebKitScriptDialogType type = webkit_script_dialog_get_dialog_type(dialog);
  if (type == WEBKIT_SCRIPT_DIALOG_BEFORE_UNLOAD_CONFIRM || delegate_ == nullptr) {
    // The server decides when a page is left, not the page.
    webkit_script_dialog_confirm_set_confirmed(dialog, TRUE);
    return true;
  }
  const std::string message = webkit_script_dialog_get_message(dialog);
  std::shared_ptr<WebKitScriptDialog> open(webkit_script_dialog_ref(dialog),
                                           [](WebKitScriptDialog* finished) {
                                             webkit_script_dialog_close(finished);
                                             webkit_script_dialog_unref(finished);
                                           });
  const UrlRequest frame = frameRequest();
  if (type == WEBKIT_SCRIPT_DIALOG_CONFIRM) {
    delegate_->webView_runJavaScriptConfirmPanelWithMessage_initiatedByFrame_completionHandler(
        *this, message, frame,
        [open](bool confirmed) { webkit_script_dialog_confirm_set_confirmed(open.get(), confirmed); });
  } else if (type == WEBKIT_SCRIPT_DIALOG_PROMPT) {
    const char* text = webkit_script_dialog_prompt_get_default_text(dialog);
    delegate_->webView_runJavaScriptTextInputPanelWithPrompt_defaultText_initiatedByFrame_completionHandler(
        *this, message, text == nullptr ? "" : text, frame, [open](std::optional<std::string> answer) {
          if (answer) {
            webkit_script_dialog_prompt_set_text(open.get(), answer->c_str());
          }
        });
  } else {
    delegate_->webView_runJavaScriptAlertPanelWithMessage_initiatedByFrame_completionHandler(
        *this, message, frame, [open] {});
  }
  return true;
}

}  // namespace platform

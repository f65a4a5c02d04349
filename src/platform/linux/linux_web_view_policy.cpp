#include <memory>
#include <utility>

#include "platform/linux/kiosk_answers.h"
#include "platform/linux/linux_web_frames.h"
#include "platform/linux/linux_web_view.h"
#include "platform/linux/web_messages.h"
#include "platform/log.h"

namespace platform {

namespace {

// Answers the engine exactly once: by the first call, or with "ignore" when it is dropped.
class Decision {
 public:
  // `refused` is set before the engine hears of it.
  explicit Decision(WebKitPolicyDecision* decision, std::shared_ptr<bool> refused = nullptr)
      : decision_(WEBKIT_POLICY_DECISION(g_object_ref(decision))), refused_(std::move(refused)) {}
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
      if (refused_ != nullptr) {
        *refused_ = true;
      }
      webkit_policy_decision_ignore(decision_);
    }
  }

 private:
  WebKitPolicyDecision* decision_;
  const std::shared_ptr<bool> refused_;
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
  if (frames_ != nullptr && webkit_navigation_action_is_redirect(action) == FALSE) {
    frames_->willLoad(asked.request);
  }
  // An empty page that was not asked for is the first one of a process which takes the place of another.
  ignoredPageComes_ =
      requested_ && !requested_->blankExpected && asked.request.url.absoluteString() == "about:blank";
  if (requested_ && !ignoredPageComes_) {
    requested_->decided = true;
  }
  auto answer = std::make_shared<Decision>(WEBKIT_POLICY_DECISION(decision));
  delegate_->webView_decidePolicyForNavigationAction_decisionHandler(
      *this, asked, [this, alive = lifetime(), answer](NavigationPolicy policy) {
        // What is refused does not begin, and nobody waits for it. The timer may be that of another page.
        if (policy == NavigationPolicy::Cancel && !alive.expired() && requested_ &&
            requested_->serial != navigation_.serial) {
          stopTimer();
        }
        answer->answer(policy);
      });
}

void LinuxWebView::decideResponse(WebKitResponsePolicyDecision* decision) {
  NavigationResponse response = responseOf(webkit_response_policy_decision_get_response(decision));
  response.isMainFrame = webkit_response_policy_decision_is_main_frame_main_resource(decision) != FALSE;

  std::shared_ptr<bool> refused;
  if (response.isMainFrame) {
    // The engine itself leaves the page as it is when there is nothing to take its place.
    refused = std::make_shared<bool>(response.statusCode == SOUP_STATUS_NO_CONTENT ||
                                     response.statusCode == SOUP_STATUS_RESET_CONTENT);
    answerRefused_ = refused;
    // The view's own address is still the old page's while a link's or form's answer is decided.
    decidedUrl_ = requestOf(webkit_response_policy_decision_get_request(decision)).url;
  }
  auto answer = std::make_shared<Decision>(WEBKIT_POLICY_DECISION(decision), refused);
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
  panel_ = open;
  ++panels_;
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

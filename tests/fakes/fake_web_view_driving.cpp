#include <stdexcept>

#include "tests/fakes/fake_web_view.h"

// The test as server, engine and page.

namespace fakes {

using platform::DecisionHandler;
using platform::HeaderFields;
using platform::NavigationAction;
using platform::NavigationPolicy;
using platform::NavigationResponse;
using platform::Url;
using platform::UrlRequest;
using platform::WebError;

namespace {

Url parsed(const std::string& address) {
  const auto url = Url::parse(address);
  if (!url) {
    throw std::invalid_argument("a test's address does not parse: " + address);
  }
  return *url;
}

// Calls a panel's or question's completion exactly once.
void answerOnce(bool& answered, const std::string& what) {
  if (answered) {
    breach(what + " was answered twice");
  }
  answered = true;
}

}  // namespace

// One question to the delegate. Dropped without an answer it counts as cancel.
struct FakeWebView::Decision {
  std::string question;
  Consequence consequence;
  std::shared_ptr<std::optional<NavigationPolicy>> policy;
  // The delegate's call has returned: an answer from now on takes effect by itself.
  bool returned = false;
  bool answered = false;

  void answer(NavigationPolicy given) {
    answerOnce(answered, question);
    *policy = given;
    if (returned) {
      consequence(given);
    }
  }
};

DecisionHandler FakeWebView::newDecision(const std::string& question, Consequence consequence,
                                         std::shared_ptr<Decision>& decision) {
  lastPolicy_ = std::make_shared<std::optional<NavigationPolicy>>();
  decision = std::make_shared<Decision>();
  decision->question = question;
  decision->policy = lastPolicy_;
  decision->consequence = [this, alive = lifetime(), serial = navigation_,
                           consequence = std::move(consequence)](NavigationPolicy policy) {
    if (!alive.expired() && serial == navigation_) {
      consequence(policy);
    }
  };
  // All copies of the handler share this; the last one that goes answers for the delegate.
  std::shared_ptr<void> guard(nullptr, [decision](void*) {
    if (!decision->answered) {
      decision->answer(NavigationPolicy::Cancel);
    }
  });
  return [decision, guard](NavigationPolicy policy) { decision->answer(policy); };
}

std::optional<NavigationPolicy> FakeWebView::settle(const std::shared_ptr<Decision>& decision) {
  const std::optional<NavigationPolicy> policy = *decision->policy;
  decision->returned = true;
  if (policy) {
    decision->consequence(*policy);
  }
  return policy;
}

std::optional<NavigationPolicy> FakeWebView::startNavigation() {
  if (phase_ != Phase::Requested) {
    breach(name() + " has nothing to navigate to: nothing was loaded");
    return std::nullopt;
  }
  const auto start = [this](NavigationPolicy policy) {
    if (policy == NavigationPolicy::Cancel) {
      phase_ = Phase::Idle;
      pending_.reset();
      return;
    }
    phase_ = Phase::Started;
    progress_ = 0.1;
    if (delegate_ != nullptr) {
      delegate_->webView_didStartProvisionalNavigation(*this);
    }
    main_ = platform::WebFrame{};
    if (pending_) {
      main_.request = *pending_;
    } else if (pendingBase_) {
      main_.request = UrlRequest{*pendingBase_, {}, platform::Millis{0}, {}};
    }
    tellFrame(&platform::WebFrameDelegate::webView_didStartProvisionalLoadForFrame);
  };
  if (delegate_ == nullptr) {
    start(NavigationPolicy::Allow);
    return NavigationPolicy::Allow;
  }
  // A text of the system's own is a navigation like any other.
  const UrlRequest text{pendingBase_ ? *pendingBase_ : parsed("about:blank"), {}, platform::Millis{0}, {}};
  const NavigationAction action{pending_ ? *pending_ : text, true};
  std::shared_ptr<Decision> decision;
  DecisionHandler decide = newDecision("a navigation action", start, decision);
  delegate_->webView_decidePolicyForNavigationAction_decisionHandler(*this, action, std::move(decide));
  decide = nullptr;
  return settle(decision);
}

std::optional<NavigationPolicy> FakeWebView::startNavigation(const std::string& address) {
  return startNavigation(UrlRequest{parsed(address), {}, platform::Millis{0}, {}});
}

std::optional<NavigationPolicy> FakeWebView::startNavigation(const UrlRequest& request) {
  ++navigation_;
  pending_ = request;
  phase_ = Phase::Requested;
  return startNavigation();
}

std::optional<NavigationPolicy> FakeWebView::answer(const NavigationResponse& response) {
  const bool main = response.isMainFrame;
  const auto commit = [this, response, main](NavigationPolicy policy) {
    if (!main) {
      return;
    }
    if (policy == NavigationPolicy::Cancel) {
      failCancelled();
      return;
    }
    committed_ = response.url;
    phase_ = Phase::Committed;
    progress_ = 0.5;
    main_.response = response;
    commitFrame();
  };
  if (delegate_ == nullptr) {
    commit(NavigationPolicy::Allow);
    return NavigationPolicy::Allow;
  }
  std::shared_ptr<Decision> decision;
  DecisionHandler decide = newDecision("a navigation response", commit, decision);
  if (main) {
    decided_ = response.url;
  }
  delegate_->webView_decidePolicyForNavigationResponse_decisionHandler(*this, response, std::move(decide));
  decide = nullptr;
  decided_.reset();
  return settle(decision);
}

void FakeWebView::failCancelled() {
  const std::string address = pending_ ? pending_->url.absoluteString() : "";
  phase_ = Phase::Idle;
  pending_.reset();
  if (!failsCancelledResponses_) {
    return;
  }
  stage().dispatch.main().async([this, alive = lifetime(), serial = navigation_, address] {
    if (!alive.expired() && serial == navigation_) {
      tellFailure({platform::kErrorFrameLoadInterrupted, "Frame load interrupted", address}, true);
    }
  });
}

bool FakeWebView::reach(Phase phase) {
  if (phase_ == Phase::Requested && phase >= Phase::Started) {
    startNavigation();
  }
  if (phase_ == Phase::Started && phase >= Phase::Committed) {
    if (pending_) {
      answerResponse(200);
    } else {
      committed_ = pendingBase_;
      phase_ = Phase::Committed;
      main_.response = NavigationResponse{pendingBase_, false, 0, {}, true};
      commitFrame();
    }
  }
  return phase_ >= phase;
}

std::optional<NavigationPolicy> FakeWebView::answerResponse(int status, HeaderFields headers,
                                                            std::optional<std::string> address) {
  if (!reach(Phase::Started) || !pending_) {
    return std::nullopt;
  }
  if (address && parsed(*address) != pending_->url) {
    pending_->url = parsed(*address);
    main_.request->url = pending_->url;
    tellFrame(&platform::WebFrameDelegate::webView_didReceiveServerRedirectForProvisionalLoadForFrame);
  }
  return answer({pending_->url, true, status, std::move(headers), true});
}

std::optional<NavigationPolicy> FakeWebView::answerFileResponse() {
  if (!reach(Phase::Started) || !pending_) {
    return std::nullopt;
  }
  return answer({pending_->url, false, 0, {}, true});
}

std::optional<NavigationPolicy> FakeWebView::answerSubframeResponse(const std::string& address, int status,
                                                                    HeaderFields headers) {
  return answer({parsed(address), true, status, std::move(headers), false});
}

bool FakeWebView::finish() {
  if (!reach(Phase::Committed)) {
    return false;
  }
  phase_ = Phase::Idle;
  pending_.reset();
  progress_ = 1;
  if (delegate_ != nullptr) {
    delegate_->webView_didFinishNavigation(*this);
  }
  tellFrame(&platform::WebFrameDelegate::webView_didFinishLoadForFrame);
  return true;
}

bool FakeWebView::browse(const std::string& address, int status, HeaderFields headers) {
  return startNavigation(address) == NavigationPolicy::Allow &&
         answerResponse(status, std::move(headers)) == NavigationPolicy::Allow && finish();
}

void FakeWebView::failProvisional(const WebError& error) {
  if (!reach(Phase::Started)) {
    return;
  }
  phase_ = Phase::Idle;
  pending_.reset();
  tellFailure(error, true);
}

void FakeWebView::failProvisional(int code, const std::string& text) {
  std::optional<std::string> address;
  if (pending_) {
    address = pending_->url.absoluteString();
  }
  failProvisional(WebError{code, text, address});
}

void FakeWebView::fail(const WebError& error) {
  if (!reach(Phase::Committed)) {
    return;
  }
  phase_ = Phase::Idle;
  pending_.reset();
  tellFailure(error, false);
}

void FakeWebView::tellFrame(FrameCall call) {
  if (frameDelegate_ != nullptr) {
    (frameDelegate_->*call)(*this, main_);
  }
}

void FakeWebView::tellFailure(const WebError& error, bool provisional) {
  if (delegate_ != nullptr) {
    if (provisional) {
      delegate_->webView_didFailProvisionalNavigation_withError(*this, error);
    } else {
      delegate_->webView_didFailNavigation_withError(*this, error);
    }
  }
  if (frameDelegate_ != nullptr) {
    if (provisional) {
      frameDelegate_->webView_didFailProvisionalLoadWithError_forFrame(*this, error, main_);
    } else {
      frameDelegate_->webView_didFailLoadWithError_forFrame(*this, error, main_);
    }
  }
}

void FakeWebView::commitFrame() {
  if (shown_ && frameDelegate_ != nullptr) {
    frameDelegate_->webView_willCloseFrame(*this, *shown_);
  }
  shown_ = main_;
  tellFrame(&platform::WebFrameDelegate::webView_didCommitLoadForFrame);
}

void FakeWebView::browseInnerFrame(const std::string& address, int status, HeaderFields headers) {
  if (frameDelegate_ == nullptr) {
    return;
  }
  platform::WebFrame inner{false, UrlRequest{parsed(address), {}, platform::Millis{0}, {}}, std::nullopt};
  frameDelegate_->webView_didStartProvisionalLoadForFrame(*this, inner);
  inner.response = NavigationResponse{inner.request->url, true, status, std::move(headers), false};
  frameDelegate_->webView_didCommitLoadForFrame(*this, inner);
  frameDelegate_->webView_didFinishLoadForFrame(*this, inner);
}

void FakeWebView::failInnerFrame(const std::string& address, const WebError& error) {
  if (frameDelegate_ == nullptr) {
    return;
  }
  const platform::WebFrame inner{false, UrlRequest{parsed(address), {}, platform::Millis{0}, {}},
                                 std::nullopt};
  frameDelegate_->webView_didStartProvisionalLoadForFrame(*this, inner);
  frameDelegate_->webView_didFailProvisionalLoadWithError_forFrame(*this, error, inner);
}

void FakeWebView::receiveTitle(const std::string& title) {
  if (frameDelegate_ != nullptr && shown_) {
    frameDelegate_->webView_didReceiveTitle_forFrame(*this, title, *shown_);
  }
}

void FakeWebView::changeLocation(const std::string& address) {
  committed_ = parsed(address);
  if (frameDelegate_ != nullptr && shown_ && shown_->request) {
    shown_->request->url = *committed_;
    frameDelegate_->webView_didChangeLocationWithinPageForFrame(*this, *shown_);
  }
}

void FakeWebView::loadResource(const std::string& address, const std::optional<std::string>& redirectedFrom,
                               const std::optional<WebError>& error) {
  if (frameDelegate_ == nullptr) {
    return;
  }
  UrlRequest request{parsed(redirectedFrom.value_or(address)), {}, platform::Millis{0}, {}};
  const auto identifier =
      frameDelegate_->webView_identifierForInitialRequest_fromDataSource(*this, request, main_);
  frameDelegate_->webView_resource_willSendRequest_redirectResponse_fromDataSource(*this, identifier, request,
                                                                                   std::nullopt, main_);
  if (redirectedFrom) {
    const NavigationResponse redirect{request.url, true, 302, {}, false};
    request.url = parsed(address);
    frameDelegate_->webView_resource_willSendRequest_redirectResponse_fromDataSource(
        *this, identifier, request, redirect, main_);
  }
  if (error) {
    frameDelegate_->webView_resource_didFailLoadingWithError_fromDataSource(*this, identifier, *error, main_);
    return;
  }
  frameDelegate_->webView_resource_didReceiveResponse_fromDataSource(
      *this, identifier, {request.url, true, 200, {}, false}, main_);
  frameDelegate_->webView_resource_didFinishLoadingFromDataSource(*this, identifier, main_);
}

void FakeWebView::terminateProcess() {
  phase_ = Phase::Idle;
  pending_.reset();
  if (delegate_ != nullptr) {
    delegate_->webViewWebContentProcessDidTerminate(*this);
  }
}

UrlRequest FakeWebView::frameRequest() const {
  return {committed_ ? *committed_ : parsed("about:blank"), {}, platform::Millis{0}, {}};
}

std::shared_ptr<const FakeWebView::PanelAnswer> FakeWebView::runAlertPanel(const std::string& message) {
  const auto panel = newPanel();
  if (delegate_ != nullptr) {
    delegate_->webView_runJavaScriptAlertPanelWithMessage_initiatedByFrame_completionHandler(
        *this, message, frameRequest(), [panel] { answerOnce(panel->answered, "an alert panel"); });
  }
  return panel;
}

std::shared_ptr<const FakeWebView::PanelAnswer> FakeWebView::runConfirmPanel(const std::string& message) {
  const auto panel = newPanel();
  if (delegate_ != nullptr) {
    delegate_->webView_runJavaScriptConfirmPanelWithMessage_initiatedByFrame_completionHandler(
        *this, message, frameRequest(), [panel](bool confirmed) {
          answerOnce(panel->answered, "a confirm panel");
          panel->confirmed = confirmed;
        });
  }
  return panel;
}

std::shared_ptr<const FakeWebView::PanelAnswer> FakeWebView::runTextPanel(const std::string& prompt,
                                                                          const std::string& defaultText) {
  const auto panel = newPanel();
  if (delegate_ != nullptr) {
    delegate_->webView_runJavaScriptTextInputPanelWithPrompt_defaultText_initiatedByFrame_completionHandler(
        *this, prompt, defaultText, frameRequest(), [panel](std::optional<std::string> text) {
          answerOnce(panel->answered, "a text panel");
          panel->confirmed = text.has_value();
          panel->text = std::move(text);
        });
  }
  return panel;
}

platform::WebView* FakeWebView::requestNewWindow(const std::string& address) {
  if (delegate_ == nullptr) {
    return nullptr;
  }
  const UrlRequest request{parsed(address), {}, platform::Millis{0}, {}};
  platform::WebView* target = delegate_->webView_createWebViewWithRequest(*this, request);
  if (target != nullptr && address != "about:blank") {
    target->load(request);
  }
  return target;
}

void FakeWebView::closeByScript() {
  if (delegate_ != nullptr) {
    delegate_->webViewDidClose(*this);
  }
}

}  // namespace fakes

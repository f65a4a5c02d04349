#pragma once

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/web_view.h"
#include "tests/contract/http_peer.h"
#include "tests/contract/toolkit_harness.h"
#include "tests/fakes/fake_web_view.h"

// Notes what a web view tells and asks, and answers as the test says; allows everything at first. Addresses
// are noted without what comes before their path.
class WebRecorder : public platform::WebViewDelegate {
 public:
  using Decide = platform::DecisionHandler;
  using Frame = const platform::UrlRequest&;
  using Policy = platform::NavigationPolicy;

  void webView_decidePolicyForNavigationAction_decisionHandler(platform::WebView&,
                                                               const platform::NavigationAction& action,
                                                               Decide decide) override {
    note("action " + short_(action.request.url.absoluteString()));
    decide(actionPolicy);
    if (const platform::Block then = std::exchange(actionDecided, nullptr)) {
      then();
    }
  }
  void webView_decidePolicyForNavigationResponse_decisionHandler(platform::WebView& view,
                                                                 const platform::NavigationResponse& response,
                                                                 Decide decide) override {
    responses.push_back(response);
    note((response.isMainFrame ? "response " : "inner response ") + std::to_string(response.statusCode) +
         " at " + address(view));
    if (keepsResponses) {
      kept = std::move(decide);
    } else if (!dropsResponses) {
      decide(responsePolicy);
    }
  }
  void webView_didStartProvisionalNavigation(platform::WebView& view) override {
    note("start at " + address(view));
  }
  void webView_didFinishNavigation(platform::WebView& view) override { note("finish at " + address(view)); }
  void webView_didFailProvisionalNavigation_withError(platform::WebView&,
                                                      const platform::WebError& error) override {
    errors.push_back(error);
    note("provisional failure " + std::to_string(error.code));
  }
  void webView_didFailNavigation_withError(platform::WebView&, const platform::WebError& error) override {
    errors.push_back(error);
    note("failure " + std::to_string(error.code));
  }
  void webViewWebContentProcessDidTerminate(platform::WebView&) override { note("terminated"); }
  void webView_runJavaScriptAlertPanelWithMessage_initiatedByFrame_completionHandler(
      platform::WebView&, const std::string& message, Frame frame, platform::Block done) override {
    note("alert " + message + " of " + short_(frame.url.absoluteString()));
    alertDone = std::move(done);
  }
  void webView_runJavaScriptConfirmPanelWithMessage_initiatedByFrame_completionHandler(
      platform::WebView&, const std::string& message, Frame, std::function<void(bool)> done) override {
    note("confirm " + message);
    confirmDone = std::move(done);
  }
  void webView_runJavaScriptTextInputPanelWithPrompt_defaultText_initiatedByFrame_completionHandler(
      platform::WebView&, const std::string& prompt, const std::string& defaultText, Frame,
      std::function<void(std::optional<std::string>)> done) override {
    note("prompt " + prompt + " " + defaultText);
    promptDone = std::move(done);
  }
  platform::WebView* webView_createWebViewWithRequest(platform::WebView&, Frame request) override {
    note("new window " + short_(request.url.absoluteString()));
    return newWindow;
  }
  void webViewDidClose(platform::WebView&) override { note("close"); }

  std::size_t count(const std::string& entry) const {
    return static_cast<std::size_t>(std::count(heard.begin(), heard.end(), entry));
  }
  bool hasHeard(const std::string& entry) const { return count(entry) > 0; }
  std::string address(platform::WebView& view) const {
    return view.url() ? short_(view.url()->absoluteString()) : "nothing";
  }

  // What stands before the paths.
  std::string server;
  Policy actionPolicy = Policy::Allow;
  // Runs once, after the next action has been answered.
  platform::Block actionDecided;
  Policy responsePolicy = Policy::Allow;
  bool keepsResponses = false;
  bool dropsResponses = false;
  Decide kept;
  platform::Block alertDone;
  std::function<void(bool)> confirmDone;
  std::function<void(std::optional<std::string>)> promptDone;
  platform::WebView* newWindow = nullptr;
  std::vector<std::string> heard;
  std::vector<platform::NavigationResponse> responses;
  std::vector<platform::WebError> errors;

 private:
  void note(const std::string& entry) { heard.push_back(entry); }
  std::string short_(const std::string& address) const {
    return !server.empty() && address.starts_with(server) ? address.substr(server.size()) : address;
  }
};

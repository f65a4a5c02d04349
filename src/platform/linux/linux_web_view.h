#pragma once

#include <functional>

#include <webkit/webkit.h>

#include "platform/linux/linux_view.h"
#include "platform/web_view.h"

namespace platform {

class LinuxWebFrames;
class WebEngine;

// An engine view, or the dormant place of one: then `widget` is a box, and the engine view is made and put
// into it on first use.
class LinuxWebView final : public LinuxView, public WebView {
 public:
  LinuxWebView(Dispatch& dispatch, WebEngine& engine, GtkWidget* widget, GtkWidget* engineView);
  ~LinuxWebView() override;

  ViewKind kind() const override { return ViewKind::WebView; }
  void setHidden(bool hidden) override;

  void setDelegate(WebViewDelegate* delegate) override { delegate_ = delegate; }
  void setFrameDelegate(WebFrameDelegate* delegate) override;
  void load(const UrlRequest& request) override;
  void loadHTMLString(const std::string& html, const std::optional<Url>& base) override;
  std::optional<Url> url() const override;
  void goBack() override;
  void goForward() override;
  double estimatedProgress() const override;
  void evaluateJavaScript(
      const std::string& script,
      std::function<void(std::optional<PropertyList>, std::optional<WebError>)> completion) override;
  std::optional<std::string> stringByEvaluatingJavaScriptFromString(const std::string& script) override;
  std::optional<std::string> customUserAgent() const override { return customUserAgent_; }
  void setCustomUserAgent(const std::string& agent) override;
  void takeSnapshot(std::function<void(std::optional<Image>)> completion) override;
  void disableCache() override;

  // How long the engine may say nothing of an address of a server before it is asked for again.
  void setLongestSilence(Millis silence) { longestSilence_ = silence; }

 private:
  // The main frame's navigation as far as it has come.
  struct Navigation {
    // Counts what was asked for; 0 for what the page began itself.
    std::uint64_t serial = 0;
    // What was asked for by load or loadHTMLString; empty for what the page began itself.
    std::string requested;
    // The same as the engine writes it.
    std::string engineText;
    // The server has sent it to another address.
    bool redirected = false;
    // A text of the system's own that has no address.
    bool addressless = false;
    // Nobody waits for it: the empty page with which the engine begins in a new process, or what was asked
    // for before something newer.
    bool ignored = false;
    // The engine has been told to go on with it.
    bool decided = false;
    // A page of the system's own making, or an address that really is about:blank.
    bool blankExpected = false;
    Millis timeout{0};
    bool timedOut = false;
    // Asks for it once more; empty for what the page began itself.
    std::function<void()> repeat;
    int repeats = 0;
    // It failed or was replaced: the engine's "finished" that follows does not count.
    bool failed = false;
  };

  WebKitWebView* engineView();
  void connectEngine();
  void followFrames();
  std::string userAgentNow() const;
  void applyUserAgent();
  UrlRequest frameRequest() const;

  void expect(const std::string& address, Millis timeout);
  bool isReplaced(const char* failing) const;
  // Tells of a failure that counts.
  void failed(const WebError& error, bool provisional);
  void loadChanged(WebKitLoadEvent event);
  bool loadFailed(WebKitLoadEvent event, const char* uri, const GError* error);
  void committed();
  void processEnded(WebKitWebProcessTerminationReason reason);
  void repeatWhatWasLost(std::uint64_t serial);
  void repeatWhatIsSilent(std::uint64_t serial);
  void awaitBeginning();
  void startTimer();
  void stopTimer();
  // Runs `then` after the time, if the timer has not been stopped or started anew by then. The time begins
  // anew where the page waited for a person's answer.
  void unlessStopped(Millis time, Block then);
  void timeOut();

  bool decidePolicy(WebKitPolicyDecision* decision, WebKitPolicyDecisionType type);
  void decideAction(WebKitNavigationPolicyDecision* decision);
  void decideResponse(WebKitResponsePolicyDecision* decision);
  void newWindow(WebKitNavigationAction* action);
  bool scriptDialog(WebKitScriptDialog* dialog);

  WebEngine& engine_;
  WebKitWebView* web_ = nullptr;
  WebViewDelegate* delegate_ = nullptr;
  WebFrameDelegate* frameDelegate_ = nullptr;
  // While there are both an engine view and somebody who wants to hear of its frames.
  std::unique_ptr<LinuxWebFrames> frames_;
  std::optional<std::string> customUserAgent_;
  Navigation navigation_;
  // What was asked for last, until it commits or fails.
  std::optional<Navigation> requested_;
  std::uint64_t lastRequest_ = 0;
  std::uint64_t timerSerial_ = 0;
  Millis longestSilence_{20'000};
  std::optional<Url> decidedUrl_;
  // Whether the last answer for the whole page was not to take the page's place.
  std::shared_ptr<const bool> answerRefused_ = std::make_shared<bool>(false);
  // The page's process has shown a page.
  bool processHasShown_ = false;
  // What the page's script has asked the person last; expired when it is answered.
  std::weak_ptr<WebKitScriptDialog> panel_;
  // How many such panels there have been.
  std::uint64_t panels_ = 0;
  // Until the engine asks about what was asked for last, it may tell of a page that nobody waits for any
  // more.
  bool ignoredPageComes_ = false;
  // The page that is shown has no address.
  bool addressless_ = false;
};

}  // namespace platform

#pragma once

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/web_view.h"
#include "tests/fakes/fake_view.h"

namespace fakes {

// A page that does what the test says. Loads only wait to be driven: a test plays server and engine with the
// operations of the second half. Everything that the delegate is asked is asked at once, in the driving call.
class FakeWebView final : public FakeView, public platform::WebView {
 public:
  struct LoadedHtml {
    std::string html;
    std::optional<platform::Url> base;
  };
  // What a script panel was answered; not answered until the delegate calls back.
  struct PanelAnswer {
    bool answered = false;
    bool confirmed = false;
    std::optional<std::string> text;
  };
  using ScriptCompletion =
      std::function<void(std::optional<platform::PropertyList>, std::optional<platform::WebError>)>;

  // A dormant view wakes when it is first shown, loaded or given a script other than "navigator.userAgent".
  FakeWebView(Stage stage, std::string name, ViewOptions options = {}, bool dormant = false);
  ~FakeWebView() override;

  platform::ViewKind kind() const override { return platform::ViewKind::WebView; }
  void setHidden(bool hidden) override;
  void setDelegate(platform::WebViewDelegate* delegate) override { delegate_ = delegate; }
  void setFrameDelegate(platform::WebFrameDelegate* delegate) override { frameDelegate_ = delegate; }
  void load(const platform::UrlRequest& request) override;
  void loadHTMLString(const std::string& html, const std::optional<platform::Url>& base) override;
  std::optional<platform::Url> url() const override;
  void goBack() override;
  void goForward() override;
  double estimatedProgress() const override { return progress_; }
  void evaluateJavaScript(const std::string& script, ScriptCompletion completion) override;
  std::optional<std::string> stringByEvaluatingJavaScriptFromString(const std::string& script) override;
  std::optional<std::string> customUserAgent() const override { return customUserAgent_; }
  void setCustomUserAgent(const std::string& agent) override;
  void takeSnapshot(std::function<void(std::optional<platform::Image>)> completion) override;
  void disableCache() override;

  // What was asked of the view, in order.
  const std::vector<platform::UrlRequest>& requests() const { return requests_; }
  const std::vector<LoadedHtml>& htmlLoads() const { return htmlLoads_; }
  const std::vector<std::string>& scripts() const { return scripts_; }
  // The view's frame at each snapshot.
  const std::vector<platform::Rect>& snapshotFrames() const { return snapshotFrames_; }
  bool isDormant() const { return dormant_; }
  bool isCacheDisabled() const { return cacheDisabled_; }
  platform::WebViewDelegate* delegate() const { return delegate_; }

  // A navigation of the main frame to what load was given last, or to an address of the page's own (a link, a
  // script): asks for the action and, when it is allowed, tells of the start. The answer is absent while the
  // delegate keeps it waiting; what follows then follows when it comes (lastPolicy tells it).
  std::optional<platform::NavigationPolicy> startNavigation();
  std::optional<platform::NavigationPolicy> startNavigation(const std::string& address);
  std::optional<platform::NavigationPolicy> startNavigation(const platform::UrlRequest& request);
  // The server's answer to the navigation, which is started first when it was only loaded. `address` is the
  // one after redirects. Allowed, the page commits; cancelled, the navigation fails with 102 on the main
  // queue, as the engine has it (setFailsCancelledResponses(false) takes that away).
  std::optional<platform::NavigationPolicy> answerResponse(int status, platform::HeaderFields headers = {},
                                                           std::optional<std::string> address = std::nullopt);
  // The same for an answer that is not HTTP.
  std::optional<platform::NavigationPolicy> answerFileResponse();
  // An answer for a frame inside the page, which changes nothing of the main frame.
  std::optional<platform::NavigationPolicy> answerSubframeResponse(const std::string& address, int status,
                                                                   platform::HeaderFields headers = {});
  // A frame inside the page loads, or fails to, without any question about it: the frame delegate alone hears
  // of it.
  void browseInnerFrame(const std::string& address, int status = 200, platform::HeaderFields headers = {});
  void failInnerFrame(const std::string& address, const platform::WebError& error);
  // The page gets a title, and an address of its own making.
  void receiveTitle(const std::string& title);
  void changeLocation(const std::string& address);
  // Something that is no frame is asked for, redirected once when `redirectedFrom` is given, and comes or
  // fails.
  void loadResource(const std::string& address,
                    const std::optional<std::string>& redirectedFrom = std::nullopt,
                    const std::optional<platform::WebError>& error = std::nullopt);
  // The last decision's answer, absent until it has come.
  std::optional<platform::NavigationPolicy> lastPolicy() const { return *lastPolicy_; }
  // The page has been loaded. What is missing before (start, an answer of 200 without fields) happens first;
  // false when the delegate did not allow it, and then nothing is finished.
  bool finish();
  // All at once: startNavigation, answerResponse and finish. False when the delegate cancelled it.
  bool browse(const std::string& address, int status = 200, platform::HeaderFields headers = {});
  // The navigation fails before anything of it was shown. With a code alone, its address is the failing one.
  void failProvisional(const platform::WebError& error);
  void failProvisional(int code, const std::string& text = "The request failed.");
  // A page that has committed stops coming.
  void fail(const platform::WebError& error);
  void terminateProcess();
  void setFailsCancelledResponses(bool fails) { failsCancelledResponses_ = fails; }

  // The page's panels. The answer is filled in when the delegate calls back.
  std::shared_ptr<const PanelAnswer> runAlertPanel(const std::string& message);
  std::shared_ptr<const PanelAnswer> runConfirmPanel(const std::string& message);
  std::shared_ptr<const PanelAnswer> runTextPanel(const std::string& prompt,
                                                  const std::string& defaultText = "");
  // The page asks for a new window; what the delegate answers is told the request to load, as by the engine.
  platform::WebView* requestNewWindow(const std::string& address);
  void closeByScript();

  // From now on a script that contains `part` gives this value (absent for undefined) or error, on the main
  // queue. Later rules come first; a script without a rule gives undefined, "navigator.userAgent" the agent
  // at once.
  void answerScript(const std::string& part, std::optional<platform::PropertyList> result);
  void failScript(const std::string& part, const platform::WebError& error);
  // What "navigator.userAgent" is without a custom agent.
  void setEngineUserAgent(const std::string& agent) { engineUserAgent_ = agent; }
  // The next snapshot (in order, one each) gives this after `delay`, or nothing after the limit of 10 s.
  // Without a script a snapshot gives a small picture at once, on the main queue.
  void scriptSnapshot(std::optional<platform::Image> image, platform::Millis delay = platform::Millis{0});
  void scriptEndlessSnapshot() { scriptSnapshot(std::nullopt, platform::Millis::max()); }
  // A picture of one colour.
  static platform::Image picture(int width, int height);

 protected:
  bool canTakeFocus() const override { return true; }

 private:
  enum class Phase { Idle, Requested, Started, Committed };
  struct ScriptRule {
    std::string part;
    std::optional<platform::PropertyList> result;
    std::optional<platform::WebError> error;
  };
  struct Decision;
  using Consequence = std::function<void(platform::NavigationPolicy)>;

  void wake() { dormant_ = false; }
  platform::DecisionHandler newDecision(const std::string& question, Consequence consequence,
                                        std::shared_ptr<Decision>& decision);
  std::optional<platform::NavigationPolicy> settle(const std::shared_ptr<Decision>& decision);
  std::optional<platform::NavigationPolicy> answer(const platform::NavigationResponse& response);
  bool reach(Phase phase);
  void failCancelled();
  platform::UrlRequest frameRequest() const;
  // Tells of the main frame.
  using FrameCall = void (platform::WebFrameDelegate::*)(platform::WebView&, const platform::WebFrame&);
  void tellFrame(FrameCall call);
  void commitFrame();
  void tellFailure(const platform::WebError& error, bool provisional);
  std::shared_ptr<PanelAnswer> newPanel() const { return std::make_shared<PanelAnswer>(); }

  platform::WebViewDelegate* delegate_ = nullptr;
  platform::WebFrameDelegate* frameDelegate_ = nullptr;
  // The main frame's load that is or was under way, and the one that is seen.
  platform::WebFrame main_;
  std::optional<platform::WebFrame> shown_;
  bool dormant_;
  bool cacheDisabled_ = false;
  bool failsCancelledResponses_ = true;
  std::string engineUserAgent_ = "Mozilla/5.0 (X11; Linux x86_64) AppleWebKit/605.1.15 (KHTML, like Gecko)";
  std::optional<std::string> customUserAgent_;
  std::vector<platform::UrlRequest> requests_;
  std::vector<LoadedHtml> htmlLoads_;
  std::vector<std::string> scripts_;
  std::vector<platform::Rect> snapshotFrames_;
  std::vector<ScriptRule> scriptRules_;
  std::deque<std::pair<std::optional<platform::Image>, platform::Millis>> snapshots_;

  Phase phase_ = Phase::Idle;
  // Counts the navigations, so that a decision about a replaced one has no consequence.
  int navigation_ = 0;
  // The navigation in progress: its request, or none for a text of the system's own.
  std::optional<platform::UrlRequest> pending_;
  std::optional<platform::Url> pendingBase_;
  std::optional<platform::Url> decided_;
  std::optional<platform::Url> committed_;
  double progress_ = 0;
  std::shared_ptr<std::optional<platform::NavigationPolicy>> lastPolicy_;
};

}  // namespace fakes

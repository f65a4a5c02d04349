#include "tests/fakes/fake_web_view.h"

#include <algorithm>
#include <tuple>

#include <fmt/format.h>

namespace fakes {

using platform::Image;
using platform::Millis;
using platform::PropertyList;
using platform::Url;
using platform::UrlRequest;
using platform::WebError;

namespace {

constexpr const char* kUserAgentScript = "navigator.userAgent";
constexpr Millis kSnapshotLimit{10000};

}  // namespace

FakeWebView::FakeWebView(Stage stage, std::string name, ViewOptions options, bool dormant)
    : FakeView(stage, std::move(name), std::move(options)),
      dormant_(dormant),
      lastPolicy_(std::make_shared<std::optional<platform::NavigationPolicy>>()) {}

FakeWebView::~FakeWebView() = default;

void FakeWebView::setHidden(bool hidden) {
  if (!hidden) {
    wake();
  }
  FakeView::setHidden(hidden);
}

void FakeWebView::load(const UrlRequest& request) {
  record("load " + request.url.absoluteString());
  wake();
  requests_.push_back(request);
  ++navigation_;
  pending_ = request;
  phase_ = Phase::Requested;
}

void FakeWebView::loadHTMLString(const std::string& html, const std::optional<Url>& base) {
  record("loadHTMLString " + html);
  wake();
  htmlLoads_.push_back({html, base});
  ++navigation_;
  pending_.reset();
  pendingBase_ = base;
  phase_ = Phase::Requested;
}

std::optional<Url> FakeWebView::url() const {
  return decided_ ? decided_ : committed_;
}

void FakeWebView::goBack() {
  record("goBack");
}

void FakeWebView::goForward() {
  record("goForward");
}

void FakeWebView::setCustomUserAgent(const std::string& agent) {
  record("setCustomUserAgent " + agent);
  // A header value cannot hold line breaks.
  std::string clean = agent;
  std::erase_if(clean, [](char c) { return c == '\r' || c == '\n' || c == '\0'; });
  customUserAgent_ = clean;
}

void FakeWebView::disableCache() {
  record("disableCache");
  cacheDisabled_ = true;
}

std::optional<std::string> FakeWebView::stringByEvaluatingJavaScriptFromString(const std::string& script) {
  return script == kUserAgentScript ? std::optional(customUserAgent_.value_or(engineUserAgent_))
                                    : std::nullopt;
}

void FakeWebView::evaluateJavaScript(const std::string& script, ScriptCompletion completion) {
  record("evaluateJavaScript " + script);
  scripts_.push_back(script);
  const auto rule = std::find_if(
      scriptRules_.rbegin(), scriptRules_.rend(),
      [&](const ScriptRule& candidate) { return script.find(candidate.part) != std::string::npos; });
  if (script == kUserAgentScript && rule == scriptRules_.rend()) {
    completion(PropertyList(customUserAgent_.value_or(engineUserAgent_)), std::nullopt);
    return;
  }
  if (script != kUserAgentScript) {
    wake();
  }
  ScriptRule answer;
  if (rule != scriptRules_.rend()) {
    answer = *rule;
  }
  stage().dispatch.main().async(
      [answer, completion = std::move(completion)] { completion(answer.result, answer.error); });
}

void FakeWebView::answerScript(const std::string& part, std::optional<PropertyList> result) {
  scriptRules_.push_back({part, std::move(result), std::nullopt});
}

void FakeWebView::failScript(const std::string& part, const WebError& error) {
  scriptRules_.push_back({part, std::nullopt, error});
}

void FakeWebView::takeSnapshot(std::function<void(std::optional<Image>)> completion) {
  record("takeSnapshot");
  wake();
  snapshotFrames_.push_back(frame());
  std::optional<Image> image = picture(4, 4);
  Millis delay{0};
  if (!snapshots_.empty()) {
    std::tie(image, delay) = std::move(snapshots_.front());
    snapshots_.pop_front();
  }
  if (delay >= kSnapshotLimit) {
    delay = kSnapshotLimit;
    image.reset();
  }
  stage().dispatch.main().after(
      delay, [image = std::move(image), completion = std::move(completion)] { completion(image); });
}

void FakeWebView::scriptSnapshot(std::optional<Image> image, Millis delay) {
  snapshots_.emplace_back(std::move(image), delay);
}

Image FakeWebView::picture(int width, int height) {
  const auto size = static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4;
  return {width, height, std::vector<std::byte>(size, std::byte{0xF0})};
}

}  // namespace fakes

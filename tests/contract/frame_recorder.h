#pragma once

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "platform/web_view.h"

// Notes what a web view tells of its frames and resources, without what comes before the paths.
class FrameRecorder : public platform::WebFrameDelegate {
 public:
  using View = platform::WebView;
  using Frame = platform::WebFrame;
  using Identifier = std::optional<std::string>;

  void webView_didStartProvisionalLoadForFrame(View&, const Frame& frame) override { note("start", frame); }
  void webView_didReceiveServerRedirectForProvisionalLoadForFrame(View&, const Frame& frame) override {
    note("redirect", frame);
  }
  void webView_didCommitLoadForFrame(View&, const Frame& frame) override { note("commit", frame); }
  void webView_didReceiveTitle_forFrame(View&, const std::string& title, const Frame& frame) override {
    note("title " + title, frame);
  }
  void webView_didFinishLoadForFrame(View&, const Frame& frame) override {
    note("finish", frame);
    finished.push_back(frame);
  }
  void webView_didFailProvisionalLoadWithError_forFrame(View&, const platform::WebError& error,
                                                        const Frame& frame) override {
    note("provisional failure " + std::to_string(error.code), frame);
    errors.push_back(error);
  }
  void webView_didFailLoadWithError_forFrame(View&, const platform::WebError& error,
                                             const Frame& frame) override {
    note("failure", frame);
    errors.push_back(error);
  }
  void webView_didChangeLocationWithinPageForFrame(View&, const Frame& frame) override {
    note("moved", frame);
  }
  void webView_willCloseFrame(View&, const Frame& frame) override { note("close", frame); }

  Identifier webView_identifierForInitialRequest_fromDataSource(View&, const platform::UrlRequest& request,
                                                                const Frame&) override {
    return "#" + path(request.url);
  }
  void webView_resource_willSendRequest_redirectResponse_fromDataSource(
      View&, const Identifier& identifier, const platform::UrlRequest& request,
      const std::optional<platform::NavigationResponse>& redirect, const Frame&) override {
    resources.push_back(identifier.value_or("none") + " sends " + path(request.url) +
                        (redirect ? " after " + std::to_string(redirect->statusCode) : ""));
  }
  void webView_resource_didReceiveResponse_fromDataSource(View&, const Identifier& identifier,
                                                          const platform::NavigationResponse& response,
                                                          const Frame&) override {
    resources.push_back(identifier.value_or("none") + " answered " + std::to_string(response.statusCode));
  }
  void webView_resource_didFinishLoadingFromDataSource(View&, const Identifier& identifier,
                                                       const Frame&) override {
    resources.push_back(identifier.value_or("none") + " finished");
  }
  void webView_resource_didFailLoadingWithError_fromDataSource(View&, const Identifier& identifier,
                                                               const platform::WebError&,
                                                               const Frame&) override {
    resources.push_back(identifier.value_or("none") + " failed");
  }

  bool hasHeard(const std::string& entry) const {
    return std::find(heard.begin(), heard.end(), entry) != heard.end();
  }
  std::vector<std::string> resourcesOf(const std::string& identifier) const {
    std::vector<std::string> found;
    for (const std::string& entry : resources) {
      if (entry.starts_with(identifier + " ")) {
        found.push_back(entry);
      }
    }
    return found;
  }

  // What stands before the paths.
  std::string server;
  std::vector<std::string> heard;
  std::vector<std::string> resources;
  std::vector<Frame> finished;
  std::vector<platform::WebError> errors;

 private:
  std::string path(const platform::Url& url) const {
    const std::string& address = url.absoluteString();
    return !server.empty() && address.starts_with(server) ? address.substr(server.size()) : address;
  }
  void note(const std::string& what, const Frame& frame) {
    heard.push_back((frame.isMain ? "" : "inner ") + what + " " +
                    (frame.request ? path(frame.request->url) : "nothing"));
  }
};

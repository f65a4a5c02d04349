#pragma once

#include <list>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include <webkit/webkit.h>

#include "platform/web_view.h"

namespace platform {

// Follows the frames and resources of an engine view for a frame delegate. Of the main frame the view tells
// it, because the view knows which of the engine's accounts count. The engine says nothing of the other
// frames, but asks before each of them loads, and tells of each resource: the resource that was asked about
// is the frame's document.
class LinuxWebFrames {
 public:
  // All three outlive it.
  LinuxWebFrames(WebView& view, WebKitWebView* web, WebFrameDelegate& delegate);
  ~LinuxWebFrames();
  LinuxWebFrames(const LinuxWebFrames&) = delete;
  LinuxWebFrames& operator=(const LinuxWebFrames&) = delete;

  // What the view was given to load last; absent for a text without an address.
  void asked(std::optional<UrlRequest> request);
  // Some frame is about to load this.
  void willLoad(const UrlRequest& request);

  // The main frame. `asked` tells that this is the load that the view was given, else the page's own.
  void started(bool asked);
  void redirected();
  void committed();
  void finished();
  void failed(const WebError& error, bool provisional);
  void processEnded();

 private:
  struct Resource;

  void resourceStarted(WebKitWebResource* started, WebKitURIRequest* request);
  void resourceSent(Resource& resource, WebKitURIRequest* request, WebKitURIResponse* redirect);
  void resourceAnswered(Resource& resource);
  void resourceFailed(Resource& resource, const GError* error);
  void resourceFinished(Resource& resource);
  void titleChanged();
  void addressChanged();
  // Where the main frame is now.
  std::optional<Url> mainAddress() const;

  WebView& view_;
  WebKitWebView* web_;
  WebFrameDelegate& delegate_;
  std::optional<UrlRequest> asked_;
  // What some frame was allowed to load last.
  std::optional<UrlRequest> allowed_;
  // The main frame loads what its page wants.
  bool isPagesOwn_ = false;
  // The addresses that frames are about to load.
  std::multiset<std::string> awaited_;
  // The main frame's load that is or was under way, and the one that is seen.
  WebFrame main_;
  std::optional<WebFrame> shown_;
  std::list<std::unique_ptr<Resource>> resources_;
};

}  // namespace platform

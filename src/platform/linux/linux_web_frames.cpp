#include "platform/linux/linux_web_frames.h"

#include <algorithm>

#include "platform/linux/web_messages.h"

namespace platform {

// A resource on its way. What is told of it stops with this.
struct LinuxWebFrames::Resource {
  Resource(LinuxWebFrames& watcher, WebKitWebResource* started)
      : frames(watcher), engine(WEBKIT_WEB_RESOURCE(g_object_ref(started))) {}
  ~Resource() {
    g_signal_handlers_disconnect_by_data(engine, this);
    g_object_unref(engine);
  }
  Resource(const Resource&) = delete;
  Resource& operator=(const Resource&) = delete;

  LinuxWebFrames& frames;
  WebKitWebResource* engine;
  bool isMain = false;
  // Of a frame inside the page; absent for what is no frame's document.
  std::optional<WebFrame> inner;
  std::optional<std::string> identifier;
  bool failed = false;
};

LinuxWebFrames::LinuxWebFrames(WebView& view, WebKitWebView* web, WebFrameDelegate& delegate)
    : view_(view), web_(web), delegate_(delegate) {
  g_signal_connect(
      web_, "resource-load-started",
      G_CALLBACK(+[](WebKitWebView*, WebKitWebResource* started, WebKitURIRequest* request, gpointer self) {
        static_cast<LinuxWebFrames*>(self)->resourceStarted(started, request);
      }),
      this);
  g_signal_connect(web_, "notify::title", G_CALLBACK(+[](WebKitWebView*, GParamSpec*, gpointer self) {
                     static_cast<LinuxWebFrames*>(self)->titleChanged();
                   }),
                   this);
  g_signal_connect(web_, "notify::uri", G_CALLBACK(+[](WebKitWebView*, GParamSpec*, gpointer self) {
                     static_cast<LinuxWebFrames*>(self)->addressChanged();
                   }),
                   this);
}

LinuxWebFrames::~LinuxWebFrames() {
  g_signal_handlers_disconnect_by_data(web_, this);
}

std::optional<Url> LinuxWebFrames::mainAddress() const {
  const char* uri = webkit_web_view_get_uri(web_);
  return uri == nullptr ? std::nullopt : Url::parseEngineText(uri);
}

void LinuxWebFrames::asked(std::optional<UrlRequest> request) {
  asked_ = std::move(request);
}

void LinuxWebFrames::willLoad(const UrlRequest& request) {
  allowed_ = request;
  // An empty frame has no document.
  if (const std::string& address = request.url.absoluteString(); address != "about:blank") {
    awaited_.insert(address);
  }
}

void LinuxWebFrames::started(bool asked) {
  awaited_.clear();
  isPagesOwn_ = !asked;
  // The view's address is still the old one when the page leads on by itself.
  main_ = WebFrame{true, asked ? asked_ : allowed_, std::nullopt};
  delegate_.webView_didStartProvisionalLoadForFrame(view_, main_);
}

void LinuxWebFrames::redirected() {
  if (const auto address = mainAddress(); address && main_.request) {
    main_.request->url = *address;
  }
  delegate_.webView_didReceiveServerRedirectForProvisionalLoadForFrame(view_, main_);
}

void LinuxWebFrames::committed() {
  if (shown_) {
    delegate_.webView_willCloseFrame(view_, *shown_);
  }
  shown_ = main_;
  delegate_.webView_didCommitLoadForFrame(view_, main_);
}

void LinuxWebFrames::finished() {
  delegate_.webView_didFinishLoadForFrame(view_, main_);
}

void LinuxWebFrames::failed(const WebError& error, bool provisional) {
  if (provisional) {
    delegate_.webView_didFailProvisionalLoadWithError_forFrame(view_, error, main_);
  } else {
    delegate_.webView_didFailLoadWithError_forFrame(view_, error, main_);
  }
}

void LinuxWebFrames::processEnded() {
  resources_.clear();
  awaited_.clear();
}

void LinuxWebFrames::titleChanged() {
  // It is emptied when a page goes.
  const char* title = webkit_web_view_get_title(web_);
  if (shown_ && title != nullptr && *title != '\0') {
    delegate_.webView_didReceiveTitle_forFrame(view_, title, *shown_);
  }
}

void LinuxWebFrames::addressChanged() {
  const auto address = mainAddress();
  // While something loads it is the address of that, and when that fails the old one comes back.
  if (!shown_ || !shown_->request || !address || webkit_web_view_is_loading(web_) != FALSE ||
      *address == shown_->request->url) {
    return;
  }
  shown_->request->url = *address;
  delegate_.webView_didChangeLocationWithinPageForFrame(view_, *shown_);
}

void LinuxWebFrames::resourceStarted(WebKitWebResource* started, WebKitURIRequest* request) {
  Resource* resource = resources_.emplace_back(std::make_unique<Resource>(*this, started)).get();
  const UrlRequest asked = requestOf(request);
  resource->isMain = webkit_web_view_get_main_resource(web_) == started;
  if (resource->isMain && isPagesOwn_) {
    main_.request = asked;
  }
  if (const auto awaited = awaited_.find(asked.url.absoluteString()); awaited != awaited_.end()) {
    awaited_.erase(awaited);
    if (!resource->isMain) {
      resource->inner = WebFrame{false, asked, std::nullopt};
    }
  }
  g_signal_connect(
      started, "sent-request",
      G_CALLBACK(+[](WebKitWebResource*, WebKitURIRequest* sent, WebKitURIResponse* redirect, gpointer self) {
        auto* of = static_cast<Resource*>(self);
        of->frames.resourceSent(*of, sent, redirect);
      }),
      resource);
  g_signal_connect(started, "notify::response",
                   G_CALLBACK(+[](WebKitWebResource*, GParamSpec*, gpointer self) {
                     auto* of = static_cast<Resource*>(self);
                     of->frames.resourceAnswered(*of);
                   }),
                   resource);
  g_signal_connect(started, "failed", G_CALLBACK(+[](WebKitWebResource*, GError* error, gpointer self) {
                     auto* of = static_cast<Resource*>(self);
                     of->frames.resourceFailed(*of, error);
                   }),
                   resource);
  g_signal_connect(started, "finished", G_CALLBACK(+[](WebKitWebResource*, gpointer self) {
                     auto* of = static_cast<Resource*>(self);
                     of->frames.resourceFinished(*of);
                   }),
                   resource);
  resource->identifier = delegate_.webView_identifierForInitialRequest_fromDataSource(view_, asked, main_);
  if (resource->inner) {
    delegate_.webView_didStartProvisionalLoadForFrame(view_, *resource->inner);
  }
}

void LinuxWebFrames::resourceSent(Resource& resource, WebKitURIRequest* request,
                                  WebKitURIResponse* redirect) {
  const UrlRequest sent = requestOf(request);
  delegate_.webView_resource_willSendRequest_redirectResponse_fromDataSource(
      view_, resource.identifier, sent,
      redirect == nullptr ? std::nullopt : std::optional(responseOf(redirect)), main_);
  if (resource.inner && redirect != nullptr) {
    resource.inner->request = sent;
    delegate_.webView_didReceiveServerRedirectForProvisionalLoadForFrame(view_, *resource.inner);
  }
}

void LinuxWebFrames::resourceAnswered(Resource& resource) {
  WebKitURIResponse* answered = webkit_web_resource_get_response(resource.engine);
  if (answered == nullptr) {
    return;
  }
  NavigationResponse response = responseOf(answered);
  response.isMainFrame = resource.isMain;
  delegate_.webView_resource_didReceiveResponse_fromDataSource(view_, resource.identifier, response, main_);
  if (resource.isMain) {
    main_.response = response;
  } else if (resource.inner) {
    resource.inner->response = response;
    delegate_.webView_didCommitLoadForFrame(view_, *resource.inner);
  }
}

void LinuxWebFrames::resourceFailed(Resource& resource, const GError* error) {
  resource.failed = true;
  if (g_error_matches(error, WEBKIT_NETWORK_ERROR, WEBKIT_NETWORK_ERROR_CANCELLED)) {
    // The page was left.
    return;
  }
  const WebError failure{error->code, error->message,
                         std::string(webkit_web_resource_get_uri(resource.engine))};
  delegate_.webView_resource_didFailLoadingWithError_fromDataSource(view_, resource.identifier, failure,
                                                                    main_);
  if (!resource.inner) {
    return;
  }
  if (resource.inner->response) {
    delegate_.webView_didFailLoadWithError_forFrame(view_, failure, *resource.inner);
  } else {
    delegate_.webView_didFailProvisionalLoadWithError_forFrame(view_, failure, *resource.inner);
  }
}

// Follows a failure too.
void LinuxWebFrames::resourceFinished(Resource& resource) {
  const auto found = std::find_if(resources_.begin(), resources_.end(),
                                  [&](const auto& candidate) { return candidate.get() == &resource; });
  const std::unique_ptr<Resource> ended = std::move(*found);
  resources_.erase(found);
  if (ended->failed) {
    return;
  }
  delegate_.webView_resource_didFinishLoadingFromDataSource(view_, ended->identifier, main_);
  if (ended->inner) {
    delegate_.webView_didFinishLoadForFrame(view_, *ended->inner);
  }
}

}  // namespace platform

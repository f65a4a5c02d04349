#include <cstring>
#include <utility>

#include "platform/linux/linux_web_frames.h"
#include "platform/linux/linux_web_view.h"
#include "platform/linux/web_engine.h"
#include "platform/log.h"

// How a navigation of the main frame goes, told to the delegate in the platform's terms. The engine's own
// account differs: a failed navigation is also said to have finished, a replaced one to have failed, and a
// refused port commits an empty page.

namespace platform {

namespace {

constexpr const char* kBlankPage = "about:blank";
// The server is asked in any case with a date that is never newer than the page; the engine takes the header
// off itself again for redirects. Its own cache rule has no effect on pages that are kept in memory.
constexpr const char* kNeverNotModified = "Thu, 01 Jan 1970 00:00:00 GMT";
// The engine keeps a process ready for the next page. When both end at once, the first repetition goes to the
// one that was kept.
constexpr int kMostRepeats = 2;
// From the word to give up to the engine's failure. The engine needs three seconds to find that a process
// does not answer.
constexpr Millis kLongestGivingUp{4000};

std::string withoutFragment(const char* address) {
  const std::string text = address == nullptr ? "" : address;
  return text.substr(0, text.find('#'));
}

}  // namespace

void LinuxWebView::load(const UrlRequest& request) {
  WebKitWebView* web = engineView();
  const std::string& address = request.url.absoluteString();
  WebKitURIRequest* asked = webkit_uri_request_new(address.c_str());
  if (SoupMessageHeaders* headers = webkit_uri_request_get_http_headers(asked)) {
    for (const auto& [name, value] : request.headers) {
      soup_message_headers_append(headers, name.c_str(), value.c_str());
    }
    if (request.cachePolicy == CachePolicy::ReloadIgnoringLocalCacheData) {
      soup_message_headers_replace(headers, "If-Modified-Since", kNeverNotModified);
    }
  }
  expect(address, request.timeout);
  if (frames_ != nullptr) {
    frames_->asked(request);
  }
  requested_->repeat = [this, request] { load(request); };
  requested_->blankExpected = address.starts_with(kBlankPage);
  webkit_web_view_load_request(web, asked);
  requested_->engineText = withoutFragment(webkit_web_view_get_uri(web));
  g_object_unref(asked);
}

void LinuxWebView::loadHTMLString(const std::string& html, const std::optional<Url>& base) {
  WebKitWebView* web = engineView();
  expect(base ? base->absoluteString() : kBlankPage, Millis{0});
  requested_->repeat = [this, html, base] { loadHTMLString(html, base); };
  requested_->addressless = !base;
  if (frames_ != nullptr) {
    frames_->asked(base ? std::optional(UrlRequest{*base, {}, Millis{0}, {}}) : std::nullopt);
  }
  requested_->blankExpected = true;
  webkit_web_view_load_html(web, html.c_str(), base ? base->absoluteString().c_str() : nullptr);
  requested_->engineText = withoutFragment(webkit_web_view_get_uri(web));
}

void LinuxWebView::expect(const std::string& address, Millis timeout) {
  stopTimer();
  // A page of the system's own comes without a server, whatever is asked for meanwhile.
  ignoredPageComes_ = ignoredPageComes_ || (requested_ && requested_->blankExpected && requested_->decided &&
                                            requested_->serial != navigation_.serial);
  requested_ = Navigation{};
  requested_->serial = ++lastRequest_;
  requested_->requested = address;
  requested_->timeout = timeout;
  awaitBeginning();
}

// When two addresses come at once, the engine can drop the second with the first and say nothing more: the
// page would stay white. A part of the page that is shown begins no navigation, and only a server's address
// has to come from somewhere.
void LinuxWebView::awaitBeginning() {
  if (!requested_ || !requested_->requested.starts_with("http") ||
      requested_->requested.find('#') != std::string::npos) {
    return;
  }
  unlessStopped(longestSilence_, [this, silent = requested_->serial] { repeatWhatIsSilent(silent); });
}

// A page whose script never ends would keep the window from everything that is asked for later. A process
// that has shown nothing yet may be starting, which takes minutes on a slow machine.
void LinuxWebView::repeatWhatIsSilent(std::uint64_t serial) {
  if (requested_ && requested_->serial == serial && processHasShown_ &&
      webkit_web_view_get_is_web_process_responsive(web_) == FALSE) {
    NSLog("the web process does not answer and is ended");
    webkit_web_view_terminate_web_process(web_);
  } else {
    repeatWhatWasLost(serial);
  }
}

// A failure can be on its way when something newer is asked for. Then it is neither that of the newest
// address nor of one to which the server has sent it on.
bool LinuxWebView::isReplaced(const char* failing) const {
  if (!requested_ || failing == nullptr || requested_->engineText.empty()) {
    return false;
  }
  const bool redirected = navigation_.serial == requested_->serial && navigation_.redirected;
  return !redirected && withoutFragment(failing) != requested_->engineText;
}

void LinuxWebView::startTimer() {
  stopTimer();
  // What the page began itself has no time-out, and nothing could ask for it again.
  if (navigation_.repeat) {
    unlessStopped(navigation_.timeout.count() > 0 ? navigation_.timeout : longestSilence_,
                  [this] { timeOut(); });
  }
}

// While a panel of the page is open, its process does nothing but wait for the person.
void LinuxWebView::unlessStopped(Millis time, Block then) {
  dispatch().main().after(time, [this, time, alive = lifetime(), serial = timerSerial_, panels = panels_,
                                 held = !panel_.expired(), then = std::move(then)] {
    if (alive.expired() || serial != timerSerial_) {
      return;
    }
    if (held || panels != panels_) {
      unlessStopped(time, then);
    } else {
      then();
    }
  });
}

void LinuxWebView::stopTimer() {
  ++timerSerial_;
}

void LinuxWebView::timeOut() {
  if (navigation_.failed) {
    return;
  }
  // When several addresses come at once, the engine can drop the last one too after it has told of a start.
  // And a process of the page that stands still does not even give up.
  if (navigation_.timedOut || webkit_web_view_is_loading(web_) == FALSE) {
    navigation_.timedOut = false;
    repeatWhatIsSilent(navigation_.serial);
  } else if (navigation_.timeout.count() == 0) {
    startTimer();
  } else {
    navigation_.timedOut = true;
    webkit_web_view_stop_loading(web_);
    unlessStopped(kLongestGivingUp, [this] { timeOut(); });
  }
}

void LinuxWebView::loadChanged(WebKitLoadEvent event) {
  switch (event) {
    case WEBKIT_LOAD_STARTED:
      if (ignoredPageComes_) {
        // What was asked for follows.
        navigation_ = Navigation{};
        navigation_.ignored = true;
        break;
      }
      // The start may still be that of a load which this one has replaced; its own then follows.
      navigation_ = requested_.value_or(Navigation{});
      startTimer();
      if (delegate_ != nullptr) {
        delegate_->webView_didStartProvisionalNavigation(*this);
      }
      if (frames_ != nullptr) {
        frames_->started(navigation_.serial != 0);
      }
      break;
    case WEBKIT_LOAD_REDIRECTED:
      navigation_.redirected = true;
      startTimer();
      if (frames_ != nullptr) {
        frames_->redirected();
      }
      break;
    case WEBKIT_LOAD_COMMITTED:
      if (navigation_.ignored) {
        break;
      }
      stopTimer();
      committed();
      break;
    case WEBKIT_LOAD_FINISHED:
      if (navigation_.ignored) {
        break;
      }
      stopTimer();
      if (navigation_.failed) {
        awaitBeginning();
        break;
      }
      if (delegate_ != nullptr) {
        delegate_->webView_didFinishNavigation(*this);
      }
      if (frames_ != nullptr) {
        frames_->finished();
      }
      break;
  }
}

void LinuxWebView::committed() {
  processHasShown_ = true;
  if (requested_ && requested_->serial == navigation_.serial) {
    requested_.reset();
  }
  addressless_ = navigation_.addressless;
  const char* uri = webkit_web_view_get_uri(web_);
  if (navigation_.requested.empty() || navigation_.blankExpected || uri == nullptr ||
      std::strcmp(uri, kBlankPage) != 0) {
    if (frames_ != nullptr) {
      frames_->committed();
    }
    return;
  }
  // The engine refuses some ports without a word and shows an empty page instead.
  navigation_.failed = true;
  failed({WEBKIT_POLICY_ERROR_CANNOT_USE_RESTRICTED_PORT, "The engine refuses this address",
          navigation_.requested},
         true);
}

void LinuxWebView::failed(const WebError& error, bool provisional) {
  if (delegate_ != nullptr) {
    if (provisional) {
      delegate_->webView_didFailProvisionalNavigation_withError(*this, error);
    } else {
      delegate_->webView_didFailNavigation_withError(*this, error);
    }
  }
  if (frames_ != nullptr) {
    frames_->failed(error, provisional);
  }
}

void LinuxWebView::processEnded(WebKitWebProcessTerminationReason reason) {
  NSLog("the web process has ended (reason %i)", static_cast<int>(reason));
  processHasShown_ = false;
  stopTimer();
  if (frames_ != nullptr) {
    frames_->processEnded();
  }
  const std::uint64_t lost = requested_ ? requested_->serial : 0;
  if (delegate_ != nullptr) {
    delegate_->webViewWebContentProcessDidTerminate(*this);
  }
  if (lost != 0) {
    // Not from inside the engine's signal: it still clears up after the process.
    dispatch().main().async([this, alive = lifetime(), lost] {
      if (!alive.expired()) {
        repeatWhatWasLost(lost);
      }
    });
  }
}

// The engine says nothing more of an address that it gave to a process which has ended, even if the address
// came later than the end: the page would stay white.
void LinuxWebView::repeatWhatWasLost(std::uint64_t serial) {
  if (!requested_ || requested_->serial != serial) {
    return;
  }
  const Navigation lost = *requested_;
  if (lost.repeats == kMostRepeats) {
    requested_.reset();
    failed({kErrorWebContentProcessTerminated, "The page's process has ended", lost.requested}, true);
    return;
  }
  NSLog("%s is asked for again", lost.requested);
  lost.repeat();
  requested_->repeats = lost.repeats + 1;
}

bool LinuxWebView::loadFailed(WebKitLoadEvent event, const char* uri, const GError* error) {
  stopTimer();
  const bool timedOut = navigation_.timedOut;
  const bool cancelled = g_error_matches(error, WEBKIT_NETWORK_ERROR, WEBKIT_NETWORK_ERROR_CANCELLED);
  // The engine drops an answer when something newer is asked for, be it the same address again. That one has
  // not begun yet, or the start that seemed to be its own was still the first one's.
  const bool dropped = g_error_matches(error, WEBKIT_POLICY_ERROR,
                                       WEBKIT_POLICY_ERROR_FRAME_LOAD_INTERRUPTED_BY_POLICY_CHANGE) &&
                       requested_ && (requested_->serial != navigation_.serial || !*answerRefused_);
  navigation_.failed = true;
  navigation_.timedOut = false;
  if ((cancelled && !timedOut) || dropped || isReplaced(uri)) {
    // A newer load has taken this one's place; an error page now would replace the new page.
    return true;
  }
  requested_.reset();
  WebError failure{error->code, error->message, std::nullopt};
  if (uri != nullptr && *uri != '\0') {
    failure.failingUrlString = uri;
  }
  if (timedOut && cancelled) {
    failure.code = kErrorTimedOut;
    failure.localizedDescription = "The request timed out.";
  }
  failed(failure, event == WEBKIT_LOAD_STARTED || event == WEBKIT_LOAD_REDIRECTED);
  return true;
}

}  // namespace platform

#include "platform/linux/linux_http_client.h"

#include <csignal>
#include <deque>
#include <map>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include <curl/curl.h>
#include <pthread.h>

#include "platform/linux/file_url.h"
#include "platform/linux/http_exchange.h"

namespace platform {

namespace {

constexpr const char* kCancelled = "cancelled";
constexpr int kLongestPollMs = 60'000;

struct Request {
  std::string url;
  Millis timeout;
  std::function<void(HttpResult)> done;
};

void end(const Request& request, std::string error) {
  HttpResult result;
  result.error = std::move(error);
  request.done(std::move(result));
}

}  // namespace

struct LinuxHttpClient::State {
  State() {
    static std::once_flag once;
    std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
    multi = curl_multi_init();
  }
  ~State() { curl_multi_cleanup(multi); }
  State(const State&) = delete;
  State& operator=(const State&) = delete;

  // Takes the request, or answers why not.
  std::optional<std::string> add(Request& request);
  void run();
  // Ends one request of the queue or starts it.
  void begin(Request request);
  void takeEnded();
  // The requests that wait, and whether the client goes.
  std::pair<std::deque<Request>, bool> takeWaiting();

  CURLM* multi;
  std::thread thread;
  std::mutex mutex;
  std::deque<Request> waiting;
  bool stopping = false;

  // The client's thread only.
  std::map<CURL*, std::unique_ptr<HttpExchange>> open;
};

std::optional<std::string> LinuxHttpClient::State::add(Request& request) {
  const std::lock_guard lock(mutex);
  if (stopping) {
    return kCancelled;
  }
  if (multi == nullptr) {
    return "out of memory";
  }
  if (!thread.joinable()) {
    try {
      thread = std::thread([this] { run(); });
    } catch (const std::system_error& error) {
      return error.what();
    }
  }
  waiting.push_back(std::move(request));
  return std::nullopt;
}

std::pair<std::deque<Request>, bool> LinuxHttpClient::State::takeWaiting() {
  const std::lock_guard lock(mutex);
  return {std::exchange(waiting, {}), stopping};
}

void LinuxHttpClient::State::run() {
  pthread_setname_np(pthread_self(), "lumo-http");
  // Signals belong to the main thread, and a write to a closed connection must not end the program.
  sigset_t all;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, nullptr);
  while (true) {
    auto [requests, stop] = takeWaiting();
    if (stop) {
      for (const Request& request : requests) {
        end(request, kCancelled);
      }
      break;
    }
    for (Request& request : requests) {
      begin(std::move(request));
    }
    int running = 0;
    curl_multi_perform(multi, &running);
    takeEnded();
    curl_multi_poll(multi, nullptr, 0, kLongestPollMs, nullptr);
  }
  for (const auto& [easy, exchange] : open) {
    curl_multi_remove_handle(multi, easy);
    exchange->fail(kCancelled);
  }
  open.clear();
}

void LinuxHttpClient::State::begin(Request request) {
  if (isFileUrl(request.url)) {
    request.done(resultForFile(request.url));
    return;
  }
  auto exchange =
      std::make_unique<HttpExchange>(std::move(request.url), request.timeout, std::move(request.done));
  CURL* easy = exchange->start();
  if (easy == nullptr) {
    return;
  }
  if (curl_multi_add_handle(multi, easy) != CURLM_OK) {
    exchange->fail("the request could not be started");
    return;
  }
  open.emplace(easy, std::move(exchange));
}

void LinuxHttpClient::State::takeEnded() {
  int left = 0;
  while (const CURLMsg* message = curl_multi_info_read(multi, &left)) {
    if (message->msg != CURLMSG_DONE) {
      continue;
    }
    CURL* easy = message->easy_handle;
    const CURLcode code = message->data.result;
    auto ended = open.extract(easy);
    curl_multi_remove_handle(multi, easy);
    if (!ended.empty()) {
      ended.mapped()->finish(code);
    }
  }
}

LinuxHttpClient::LinuxHttpClient() : state_(std::make_unique<State>()) {}

LinuxHttpClient::~LinuxHttpClient() {
  {
    const std::lock_guard lock(state_->mutex);
    state_->stopping = true;
  }
  if (state_->thread.joinable()) {
    curl_multi_wakeup(state_->multi);
    state_->thread.join();
  }
}

void LinuxHttpClient::get(const std::string& url, Millis timeout, std::function<void(HttpResult)> done) {
  if (!done) {
    done = [](const HttpResult&) {};
  }
  Request request{url, timeout, std::move(done)};
  if (const auto refused = state_->add(request)) {
    end(request, *refused);
    return;
  }
  curl_multi_wakeup(state_->multi);
}

}  // namespace platform

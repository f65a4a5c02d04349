#include "platform/linux/http_exchange.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>

#include "platform/file_descriptor.h"
#include "platform/linux/file_url.h"
#include "platform/strings.h"

namespace platform {

namespace {

// No server that is looked for comes near these.
constexpr std::size_t kMostHeaderBytes = std::size_t{256} * 1024;
constexpr std::size_t kMostFields = 1000;
constexpr long kMostRedirects = 20;

std::size_t dropBody(char*, std::size_t size, std::size_t count, void*) {
  return size * count;
}

std::string_view withoutBlanks(std::string_view text) {
  const auto first = text.find_first_not_of(" \t\r\n");
  if (first == std::string_view::npos) {
    return {};
  }
  return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

}  // namespace

HttpExchange::HttpExchange(std::string url, Millis timeout, std::function<void(HttpResult)> done)
    : url_(std::move(url)), timeout_(timeout), done_(std::move(done)) {}

HttpExchange::~HttpExchange() {
  curl_easy_cleanup(easy_);
}

CURL* HttpExchange::start() {
  const bool isHttp = hasPrefixIgnoringCase(url_, "http://") || hasPrefixIgnoringCase(url_, "https://");
  if (!isHttp || url_.find('\0') != std::string::npos) {
    fail("unsupported URL");
    return nullptr;
  }
  easy_ = curl_easy_init();
  if (easy_ == nullptr) {
    fail("out of memory");
    return nullptr;
  }
  const long limit = static_cast<long>(std::clamp<Millis::rep>(timeout_.count(), 1, INT_MAX));
  curl_easy_setopt(easy_, CURLOPT_URL, url_.c_str());
  curl_easy_setopt(easy_, CURLOPT_PRIVATE, this);
  curl_easy_setopt(easy_, CURLOPT_ERRORBUFFER, reason_);
  curl_easy_setopt(easy_, CURLOPT_TIMEOUT_MS, limit);
  curl_easy_setopt(easy_, CURLOPT_CONNECTTIMEOUT_MS, limit);
  curl_easy_setopt(easy_, CURLOPT_NOSIGNAL, 1L);
  // Otherwise a name server that does not answer keeps the thread beyond the time-out.
  curl_easy_setopt(easy_, CURLOPT_QUICK_EXIT, 1L);
  curl_easy_setopt(easy_, CURLOPT_NOPROXY, "*");
  curl_easy_setopt(easy_, CURLOPT_PROTOCOLS_STR, "http,https");
  curl_easy_setopt(easy_, CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
  curl_easy_setopt(easy_, CURLOPT_FOLLOWLOCATION, 1L);
  curl_easy_setopt(easy_, CURLOPT_MAXREDIRS, kMostRedirects);
  // Field names stay as the server writes them only up to this version.
  curl_easy_setopt(easy_, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
  curl_easy_setopt(easy_, CURLOPT_FORBID_REUSE, 1L);
  curl_easy_setopt(easy_, CURLOPT_WRITEFUNCTION, dropBody);
  curl_easy_setopt(easy_, CURLOPT_HEADERFUNCTION, headerArrived);
  curl_easy_setopt(easy_, CURLOPT_HEADERDATA, this);
  return easy_;
}

std::size_t HttpExchange::headerArrived(char* bytes, std::size_t size, std::size_t count, void* self) {
  const std::string_view line(bytes, size * count);
  return static_cast<HttpExchange*>(self)->addHeaderLine(line) ? line.size() : 0;
}

bool HttpExchange::addHeaderLine(std::string_view line) {
  headerBytes_ += line.size();
  headerTooLarge_ = headerBytes_ > kMostHeaderBytes || fields_.size() > kMostFields;
  if (headerTooLarge_) {
    return false;
  }
  if (!inHeader_) {
    // A later answer replaces the earlier one; fields after the body (trailers) are none of the answer's.
    if (line.starts_with("HTTP/")) {
      inHeader_ = true;
      fields_.clear();
    }
    return true;
  }
  if (withoutBlanks(line).empty()) {
    inHeader_ = false;
    return true;
  }
  return addField(line);
}

bool HttpExchange::addField(std::string_view line) {
  const bool continues = line.front() == ' ' || line.front() == '\t';
  if (continues) {
    if (!fields_.empty()) {
      fields_.back().second += ' ' + validUtf8(withoutBlanks(line));
    }
    return true;
  }
  const auto colon = line.find(':');
  if (colon == std::string_view::npos) {
    return true;
  }
  std::string name = validUtf8(withoutBlanks(line.substr(0, colon)));
  std::string value = validUtf8(withoutBlanks(line.substr(colon + 1)));
  const auto same =
      std::ranges::find_if(fields_, [&](const auto& field) { return equalIgnoringCase(field.first, name); });
  if (same == fields_.end()) {
    fields_.emplace_back(std::move(name), std::move(value));
  } else {
    same->second += ", " + value;
  }
  return true;
}

void HttpExchange::finish(CURLcode code) {
  if (code != CURLE_OK) {
    if (headerTooLarge_) {
      fail("the header of the answer is too large");
    } else {
      fail(reason_[0] != '\0' ? reason_ : curl_easy_strerror(code));
    }
    return;
  }
  // The library takes a connection that ends there for the end of the header.
  if (inHeader_) {
    fail("the header of the answer is cut off");
    return;
  }
  HttpResult result;
  long status = 0;
  curl_easy_getinfo(easy_, CURLINFO_RESPONSE_CODE, &status);
  result.statusCode = static_cast<int>(status);
  result.headers = std::move(fields_);
  end(std::move(result));
}

void HttpExchange::fail(std::string_view error) {
  HttpResult result;
  result.error = validUtf8(error);
  end(std::move(result));
}

void HttpExchange::end(HttpResult result) {
  const auto done = std::exchange(done_, nullptr);
  if (done) {
    done(std::move(result));
  }
}

HttpResult resultForFile(const std::string& url) {
  HttpResult result;
  const auto path = pathFromFileUrl(url);
  if (!path) {
    result.error = "unsupported URL";
    return result;
  }
  // Nothing is read: a pipe or a device may have no end, and the thread serves other requests too.
  const FileDescriptor file(open(path->c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  struct stat status = {};
  if (!file || fstat(file.get(), &status) != 0) {
    result.error = std::strerror(errno);
  } else if (S_ISDIR(status.st_mode)) {
    result.error = std::strerror(EISDIR);
  }
  return result;
}

}  // namespace platform

#include "station/test_server.h"

#include <algorithm>
#include <stdexcept>
#include <string_view>
#include <tuple>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <strings.h>
#include <sys/socket.h>

namespace station {

namespace {

constexpr const char* kLoopback = "127.0.0.1";
// Where a server can be reached at every address of the computer.
constexpr const char* kEverywhere = "0.0.0.0";

// A socket on a port of that address, a free one for 0, and that port.
std::pair<platform::FileDescriptor, std::uint16_t> boundSocket(const std::string& host, std::uint16_t port) {
  platform::FileDescriptor socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  // Connections that have just ended do not keep the port from a server that is started again.
  const int yes = 1;
  setsockopt(socket.get(), SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = inet_addr(host.c_str());
  address.sin_port = htons(port);
  socklen_t size = sizeof address;
  if (bind(socket.get(), reinterpret_cast<sockaddr*>(&address), size) != 0 ||
      getsockname(socket.get(), reinterpret_cast<sockaddr*>(&address), &size) != 0) {
    throw std::runtime_error("no port at " + host);
  }
  return {std::move(socket), ntohs(address.sin_port)};
}

std::string urlAt(const std::string& address, std::uint16_t port, const std::string& path) {
  return "http://" + address + ":" + std::to_string(port) + path;
}

void sendAll(int socket, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t length = send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (length <= 0) {
      return;
    }
    bytes.remove_prefix(static_cast<std::size_t>(length));
  }
}

// Linux ends a connection with a reset when the socket is connected to nothing (connect(2), AF_UNSPEC).
void reset(int socket) {
  sockaddr nothing = {};
  nothing.sa_family = AF_UNSPEC;
  static_cast<void>(connect(socket, &nothing, sizeof nothing));
}

std::string bytesOf(const HttpAnswer& answer) {
  std::string text = "HTTP/1.1 " + std::to_string(answer.status) + " Answer\r\n";
  text += "Content-Type: " + answer.type + "\r\n";
  for (const auto& [name, value] : answer.headers) {
    text.append(name).append(": ").append(value).append("\r\n");
  }
  text += "Content-Length: " + std::to_string(answer.body.size()) + "\r\nConnection: close\r\n\r\n";
  return text + answer.body;
}

}  // namespace

std::optional<std::string> HttpRequest::header(const std::string& name) const {
  for (const auto& [known, value] : headers) {
    if (strcasecmp(known.c_str(), name.c_str()) == 0) {
      return value;
    }
  }
  return std::nullopt;
}

TestServer::TestServer(const std::string& address, std::uint16_t port) : address_(address), port_(port) {
  start();
}

TestServer::~TestServer() {
  stop();
}

void TestServer::start() {
  std::tie(listener_, port_) = boundSocket(address_, port_);
  if (listen(listener_.get(), 64) != 0) {
    throw std::runtime_error("the server's port is taken");
  }
  ended_ = false;
  accepter_ = std::thread([this] { acceptAll(); });
}

void TestServer::stop() {
  if (ended_.exchange(true)) {
    return;
  }
  shutdown(listener_.get(), SHUT_RDWR);
  accepter_.join();
  for (auto& [socket, thread] : connections_) {
    shutdown(socket.get(), SHUT_RDWR);
    thread.join();
  }
  connections_.clear();
  listener_ = platform::FileDescriptor();
}

void TestServer::set(const std::string& path, Answer answer) {
  const std::lock_guard lock(mutex_);
  answers_[path] = std::move(answer);
}

void TestServer::set(const std::string& path, HttpAnswer answer) {
  set(path, [answer = std::move(answer)](const HttpRequest&) { return answer; });
}

void TestServer::setSilent(const std::string& path) {
  set(path, nullptr);
}

std::string TestServer::url(const std::string& path) const {
  return urlAt(address_ == kEverywhere ? kLoopback : address_, port_, path);
}

std::vector<HttpRequest> TestServer::requests(const std::string& path) const {
  const std::lock_guard lock(mutex_);
  std::vector<HttpRequest> found;
  std::copy_if(requests_.begin(), requests_.end(), std::back_inserter(found),
               [&path](const HttpRequest& request) { return path.empty() || request.path == path; });
  return found;
}

void TestServer::acceptAll() {
  while (!ended_) {
    platform::FileDescriptor socket(accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC));
    if (!socket) {
      break;
    }
    auto& connection = connections_.emplace_back(std::move(socket), std::thread());
    connection.second = std::thread([this, number = connection.first.get()] { serve(number); });
  }
}

std::optional<HttpRequest> TestServer::read(int socket) const {
  std::string text;
  const auto readMore = [&text, socket] {
    char bytes[4096];
    const ssize_t length = recv(socket, bytes, sizeof bytes, 0);
    text.append(bytes, static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
    return length > 0;
  };
  while (text.find("\r\n\r\n") == std::string::npos) {
    if (!readMore()) {
      return std::nullopt;
    }
  }
  HttpRequest request;
  const auto firstBlank = text.find(' ');
  const auto secondBlank = text.find(' ', firstBlank + 1);
  request.method = text.substr(0, firstBlank);
  request.target = text.substr(firstBlank + 1, secondBlank - firstBlank - 1);
  request.path = request.target.substr(0, request.target.find('?'));
  const auto bodyStart = text.find("\r\n\r\n") + 4;
  for (auto at = text.find("\r\n") + 2; at < bodyStart - 2;) {
    const auto end = text.find("\r\n", at);
    const auto colon = text.find(':', at);
    const auto value = text.find_first_not_of(' ', colon + 1);
    request.headers.emplace_back(text.substr(at, colon - at), text.substr(value, end - value));
    at = end + 2;
  }
  const std::size_t bodySize = std::stoul(request.header("Content-Length").value_or("0"));
  while (text.size() < bodyStart + bodySize) {
    if (!readMore()) {
      return std::nullopt;
    }
  }
  request.body = text.substr(bodyStart, bodySize);
  return request;
}

void TestServer::serve(int socket) {
  const auto request = read(socket);
  if (request) {
    Answer answer = [](const HttpRequest&) { return HttpAnswer{"Not here", {}, 404}; };
    {
      const std::lock_guard lock(mutex_);
      requests_.push_back(*request);
      if (const auto found = answers_.find(request->path); found != answers_.end()) {
        answer = found->second;
      }
    }
    if (answer) {
      const HttpAnswer given = answer(*request);
      if (given.reset) {
        reset(socket);
      } else {
        sendAll(socket, bytesOf(given));
      }
    } else {
      char byte = 0;
      while (!ended_ && recv(socket, &byte, 1, 0) > 0) {
      }
    }
  }
  shutdown(socket, SHUT_RDWR);
}

RefusingPort::RefusingPort() {
  std::tie(socket_, port_) = boundSocket(kLoopback, 0);
}

std::string RefusingPort::url(const std::string& path) const {
  return urlAt(kLoopback, port_, path);
}

}  // namespace station

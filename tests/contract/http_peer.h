#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include "platform/file_descriptor.h"

// One connection that a client made to an HttpPeer.
class PeerConnection {
 public:
  PeerConnection(int socket, const std::atomic<bool>& ended) : socket_(socket), ended_(ended) {}

  // The path of the request, after its whole header has come in; empty when the client went before or wants
  // to speak TLS, which is answered in plain text as usual servers do.
  std::string readRequest() {
    std::string text;
    char bytes[4096];
    while (text.find("\r\n\r\n") == std::string::npos) {
      const ssize_t length = recv(socket_, bytes, sizeof bytes, 0);
      if (length <= 0) {
        return "";
      }
      text.append(bytes, static_cast<std::size_t>(length));
      if (text.front() == kTlsHandshake) {
        send("HTTP/1.1 400 Bad Request\r\n\r\n");
        return "";
      }
    }
    const auto begin = text.find(' ') + 1;
    header_ = text;
    return text.substr(begin, text.find(' ', begin) - begin);
  }
  // The header of the request that was read, as it came.
  const std::string& header() const { return header_; }
  // False when the client has gone.
  bool send(std::string_view bytes) {
    while (!bytes.empty()) {
      const ssize_t length = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
      if (length <= 0) {
        return false;
      }
      bytes.remove_prefix(static_cast<std::size_t>(length));
    }
    return true;
  }
  void waitUntilClientGoes() {
    char byte = 0;
    while (!ended_ && recv(socket_, &byte, 1, 0) > 0) {
    }
  }
  // Whether the client stays for so long.
  bool staysFor(std::chrono::milliseconds time) const {
    pollfd gone = {socket_, POLLRDHUP, 0};
    return !ended_ && poll(&gone, 1, static_cast<int>(time.count())) == 0;
  }

 private:
  static constexpr char kTlsHandshake = 0x16;

  int socket_;
  const std::atomic<bool>& ended_;
  std::string header_;
};

// A server on the loopback interface that answers each path as the test says, each connection on a thread of
// its own.
class HttpPeer {
 public:
  using Answer = std::function<void(PeerConnection&)>;

  // Every address of the loopback network, 127.0.0.0/8, will do.
  explicit HttpPeer(const std::string& host = "127.0.0.1")
      : host_(host), listener_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = inet_addr(host.c_str());
    socklen_t size = sizeof address;
    (void)bind(listener_.get(), reinterpret_cast<sockaddr*>(&address), size);
    getsockname(listener_.get(), reinterpret_cast<sockaddr*>(&address), &size);
    port_ = ntohs(address.sin_port);
  }
  ~HttpPeer() { stop(); }
  HttpPeer(const HttpPeer&) = delete;
  HttpPeer& operator=(const HttpPeer&) = delete;

  // Before start.
  void answer(const std::string& path, Answer answer) { answers_[path] = std::move(answer); }
  void answer(const std::string& path, std::string bytes) {
    answers_[path] = [bytes = std::move(bytes)](PeerConnection& connection) { connection.send(bytes); };
  }
  // Until then the port refuses connections.
  void start() {
    listen(listener_.get(), 1024);
    accepter_ = std::thread([this] { acceptAll(); });
  }
  void stop() {
    ended_ = true;
    if (accepter_.joinable()) {
      shutdown(listener_.get(), SHUT_RDWR);
      accepter_.join();
    }
    for (auto& [socket, thread] : connections_) {
      shutdown(socket.get(), SHUT_RDWR);
      thread.join();
    }
    connections_.clear();
  }

  std::string url(const std::string& path, const std::string& scheme = "http") const {
    return scheme + "://" + host_ + ":" + port() + path;
  }
  std::string port() const { return std::to_string(port_); }
  // Requests that have come in so far.
  int requests() const { return requests_; }

 private:
  void acceptAll() {
    while (!ended_) {
      platform::FileDescriptor socket(accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC));
      if (!socket) {
        break;
      }
      auto& connection = connections_.emplace_back(std::move(socket), std::thread());
      connection.second = std::thread([this, number = connection.first.get()] { serve(number); });
    }
  }

  void serve(int socket) {
    PeerConnection connection(socket, ended_);
    const std::string path = connection.readRequest();
    const auto found = answers_.find(path);
    if (found != answers_.end()) {
      ++requests_;
      found->second(connection);
    }
    shutdown(socket, SHUT_RDWR);
  }

  const std::string host_;
  platform::FileDescriptor listener_;
  std::uint16_t port_ = 0;
  std::map<std::string, Answer> answers_;
  std::atomic<bool> ended_{false};
  std::atomic<int> requests_{0};
  std::thread accepter_;
  // Of the accepting thread until it has ended.
  std::list<std::pair<platform::FileDescriptor, std::thread>> connections_;
};

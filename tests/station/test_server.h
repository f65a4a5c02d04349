#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/file_descriptor.h"

namespace station {

struct HttpRequest {
  std::string method;
  std::string target;  // With the query, as it came.
  std::string path;    // Without it.
  std::vector<std::pair<std::string, std::string>> headers;
  std::string body;

  // The first value, whatever the case of the name; absent when there is none.
  std::optional<std::string> header(const std::string& name) const;
};

struct HttpAnswer {
  std::string body;
  std::vector<std::pair<std::string, std::string>> headers;
  int status = 200;
  std::string type = "text/html; charset=utf-8";
  // The connection is reset in place of all that.
  bool reset = false;
};

// A photo server of the test's own, on a free port of the loopback interface or where the test says. Each
// connection carries one request. What is not set is answered with 404. All of it may be called from any
// thread.
class TestServer {
 public:
  using Answer = std::function<HttpAnswer(const HttpRequest&)>;

  // Throws std::runtime_error when the port cannot be had. Port 0 is a free one.
  explicit TestServer(const std::string& address = "127.0.0.1", std::uint16_t port = 0);
  // Ends all connections.
  ~TestServer();
  TestServer(const TestServer&) = delete;
  TestServer& operator=(const TestServer&) = delete;

  // Ends all connections and refuses new ones until it is started again, on the same port.
  void stop();
  void start();

  // `answer` runs on the connection's thread.
  void set(const std::string& path, Answer answer);
  void set(const std::string& path, HttpAnswer answer);
  // Requests of this path are read and never answered.
  void setSilent(const std::string& path);

  std::string url(const std::string& path) const;
  std::uint16_t port() const { return port_; }
  // Those that have come in, in their order; of one path, or of all when it is empty.
  std::vector<HttpRequest> requests(const std::string& path = "") const;
  int count(const std::string& path) const { return static_cast<int>(requests(path).size()); }

 private:
  void acceptAll();
  void serve(int socket);
  std::optional<HttpRequest> read(int socket) const;

  platform::FileDescriptor listener_;
  std::string address_;
  std::uint16_t port_ = 0;
  std::atomic<bool> ended_{true};
  mutable std::mutex mutex_;
  std::map<std::string, Answer> answers_;
  std::vector<HttpRequest> requests_;
  std::thread accepter_;
  // Of the accepting thread until it has ended.
  std::list<std::pair<platform::FileDescriptor, std::thread>> connections_;
};

// A port of the loopback interface that nobody listens on and nobody else gets meanwhile.
class RefusingPort {
 public:
  RefusingPort();
  std::string url(const std::string& path) const;

 private:
  platform::FileDescriptor socket_;
  std::uint16_t port_ = 0;
};

}  // namespace station

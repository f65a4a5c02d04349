// The photo server's side of the network: HTTP by libsoup, on the thread of the default main context.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "http.h"

namespace juniva {

class Server {
 public:
  struct Callbacks {
    std::function<Response(const Request&)> answer;
    std::function<Response()> bodyTooLarge;
    std::function<void(const std::string& line)>
        log;  // one access line for each request, before its answer goes out
  };

  explicit Server(Callbacks callbacks);
  ~Server();  // closes everything that is still open
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  // Begins to listen; port 0 takes a free one. Nothing when it worked, else one sentence that says why it did
  // not.
  std::optional<std::string> listen(const std::string& address, int port);

  // The port that it listens on, 0 before listen().
  int port() const;

 private:
  class Impl;
  std::unique_ptr<Impl> mImpl;
};

}  // namespace juniva

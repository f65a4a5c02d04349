#pragma once

#include <filesystem>
#include <string>

#include <sys/socket.h>
#include <sys/un.h>

#include "platform/file_descriptor.h"

namespace station {

// A connection to the local socket at `path`; none where nobody listens there, or the path is too long.
inline platform::FileDescriptor connectedTo(const std::filesystem::path& path) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  const std::string& name = path.native();
  if (name.size() >= sizeof address.sun_path) {
    return platform::FileDescriptor();
  }
  name.copy(address.sun_path, name.size());
  platform::FileDescriptor client(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  if (::connect(client.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    client.reset();
  }
  return client;
}

}  // namespace station

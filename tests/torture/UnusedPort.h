#pragma once

#include <netinet/in.h>
#include <sys/socket.h>

#include <stdexcept>
#include <string>

#include "ztportal/platform/linux/Descriptor.h"

namespace zt::torture {

/// A loopback port that refuses every connection, as long as this object lives: it is taken, and
/// nobody listens.
class UnusedPort {
 public:
  UnusedPort() : _socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof(address);
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    if (::bind(_socket.number(), generic, size) != 0 ||
        ::getsockname(_socket.number(), generic, &size) != 0) {
      throw std::runtime_error("no port to leave unused");
    }
    _port = ntohs(address.sin_port);
  }

  std::string url() const { return "http://127.0.0.1:" + std::to_string(_port); }

 private:
  Descriptor _socket;
  int _port = 0;
};

}  // namespace zt::torture

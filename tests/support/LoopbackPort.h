#pragma once

#include <netinet/in.h>
#include <sys/socket.h>

#include <stdexcept>
#include <string>

#include "ztportal/base/FileDescriptor.h"

namespace zt::test {

/// A port of the loopback interface that is free and taken as long as this object lives. It refuses
/// every connection, or with `Listens` holds those that come until accept() takes them.
///
///     const LoopbackPort nobody(LoopbackPort::Refuses);
///     report->setUrl(nobody.url("/soap"));
class LoopbackPort {
 public:
  enum Manner { Refuses, Listens };

  explicit LoopbackPort(Manner manner) : _socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof(address);
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    if (::bind(socket(), generic, size) != 0 || ::getsockname(socket(), generic, &size) != 0 ||
        (manner == Listens && ::listen(socket(), 16) != 0)) {
      throw std::runtime_error("no port of the loopback interface");
    }
    _number = ntohs(address.sin_port);
  }

  int number() const { return _number; }
  int socket() const { return _socket.number(); }
  std::string host() const { return "127.0.0.1:" + std::to_string(_number); }
  std::string url(const std::string& path = "") const { return "http://" + host() + path; }

  /// Waits for the next connection; one that is not open when there is none any more.
  FileDescriptor accept() const {
    return FileDescriptor(::accept4(socket(), nullptr, nullptr, SOCK_CLOEXEC));
  }
  /// Nobody waits in accept() from now on.
  void stop() const { ::shutdown(socket(), SHUT_RDWR); }

 private:
  FileDescriptor _socket;
  int _number = 0;
};

}  // namespace zt::test

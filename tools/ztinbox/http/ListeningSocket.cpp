#include "tools/ztinbox/http/ListeningSocket.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "tools/ztinbox/faults/Fault.h"

namespace zt::inbox {

namespace {

/// An address as the socket calls want it.
class SocketAddress {
 public:
  explicit SocketAddress(const ListenAddress& address) {
    if (address.isIpv6()) {
      auto& ipv6 = reinterpret_cast<sockaddr_in6&>(_storage);
      ipv6.sin6_family = AF_INET6;
      ipv6.sin6_port = htons(address.port);
      inet_pton(AF_INET6, address.address.c_str(), &ipv6.sin6_addr);
      _length = sizeof(ipv6);
    } else {
      auto& ipv4 = reinterpret_cast<sockaddr_in&>(_storage);
      ipv4.sin_family = AF_INET;
      ipv4.sin_port = htons(address.port);
      inet_pton(AF_INET, address.address.c_str(), &ipv4.sin_addr);
      _length = sizeof(ipv4);
    }
  }

  int family() const { return _storage.ss_family; }
  const sockaddr* get() const { return reinterpret_cast<const sockaddr*>(&_storage); }
  socklen_t length() const { return _length; }

 private:
  sockaddr_storage _storage{};
  socklen_t _length = 0;
};

void turnOn(int socket, int level, int option) {
  const int on = 1;
  setsockopt(socket, level, option, &on, sizeof(on));
}

std::uint16_t boundPort(int socket) {
  sockaddr_storage bound{};
  socklen_t length = sizeof(bound);
  getsockname(socket, reinterpret_cast<sockaddr*>(&bound), &length);
  return ntohs(bound.ss_family == AF_INET6 ? reinterpret_cast<sockaddr_in6&>(bound).sin6_port
                                           : reinterpret_cast<sockaddr_in&>(bound).sin_port);
}

}  // namespace

ListeningSocket::ListeningSocket(const ListenAddress& address) : _address(address) {
  const SocketAddress wanted(address);
  _socket = Fd(::socket(wanted.family(), SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  // Only what is left of closed connections may share the address, no second inbox.
  turnOn(number(), SOL_SOCKET, SO_REUSEADDR);
  if (address.isIpv6()) turnOn(number(), IPPROTO_IPV6, IPV6_V6ONLY);
  if (!_socket.isOpen() || ::bind(number(), wanted.get(), wanted.length()) != 0 ||
      ::listen(number(), SOMAXCONN) != 0) {
    throw MachineFault("cannot listen on " + address.text() + ": " + std::strerror(errno));
  }
  _address.port = boundPort(number());
}

Fd ListeningSocket::accept() const {
  Fd connection(::accept4(number(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
  if (connection.isOpen()) turnOn(connection.number(), IPPROTO_TCP, TCP_NODELAY);
  return connection;
}

}  // namespace zt::inbox

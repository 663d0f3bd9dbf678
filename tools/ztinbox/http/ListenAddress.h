// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/socket.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "ztportal/base/FileDescriptor.h"

namespace zt::inbox {

/// An address and port of this machine.
struct ListenAddress {
  std::string address;  ///< IPv4 or IPv6, numeric, without brackets
  std::uint16_t port = 0;

  bool isIpv6() const { return address.find(':') != std::string::npos; }
  /// Whether this means all addresses of the machine.
  bool isWildcard() const { return address == "0.0.0.0" || address == "::"; }
  /// "127.0.0.1:8025", "[::1]:8025"
  std::string text() const;
};

/// One end of `socket`, as getsockname(2) or getpeername(2) tells it; empty if that fails.
ListenAddress addressOf(int (*getName)(int, sockaddr*, socklen_t*), int socket);

/// Parses "127.0.0.1:8025", "[::1]:8025" or "localhost:8025" (which means 127.0.0.1). Returns
/// nullopt for any other text, including other names: where the inbox listens must not depend on a
/// lookup.
std::optional<ListenAddress> parseListenAddress(std::string_view text);

// Who may use the page and the API. A page of another site in the user's browser can also send
// requests to this machine, under its own host name (DNS rebinding); its requests contain that
// name.

/// Whether the value of a Host header names the inbox that listens on `own`: that address, or a
/// name or address of the loopback interface, with the port of `own`.
bool isOwnHost(std::string_view host, const ListenAddress& own);

/// The same for the value of an Origin header, which is "http://" and a host.
bool isOwnOrigin(std::string_view origin, const ListenAddress& own);

/// A listening TCP socket.
class ListeningSocket {
 public:
  /// Port 0 selects a free port. Throws MachineFault if the address is not available.
  explicit ListeningSocket(const ListenAddress& address);

  /// The address with the actual port.
  const ListenAddress& address() const { return _address; }
  int number() const { return _socket.number(); }

  /// The next waiting connection, non-blocking and with TCP_NODELAY; not open if there is none.
  FileDescriptor accept() const;

 private:
  FileDescriptor _socket;
  ListenAddress _address;
};

}  // namespace zt::inbox

// SPDX-License-Identifier: Apache-2.0
#include "tools/ztinbox/http/ListenAddress.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include "tools/ztinbox/Fault.h"
#include "ztportal/base/Text.h"

namespace zt::inbox {

namespace {

/// The canonical form of `address`, or nothing if it is not one of `family`.
std::optional<std::string> canonicalAddress(int family, std::string_view address) {
  std::array<unsigned char, sizeof(in6_addr)> bytes{};
  if (address.find('\0') != std::string_view::npos) return std::nullopt;
  if (inet_pton(family, std::string(address).c_str(), bytes.data()) != 1) return std::nullopt;
  std::array<char, INET6_ADDRSTRLEN> text{};
  if (inet_ntop(family, bytes.data(), text.data(), text.size()) == nullptr) return std::nullopt;
  return text.data();
}

constexpr std::string_view kHttpPort = ":80";
constexpr std::string_view kOriginScheme = "http://";

std::string lowered(std::string_view text) {
  std::string lower(text);
  std::ranges::transform(lower, lower.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  return lower;
}

bool hasPort(std::string_view host) {
  const std::size_t colon = host.rfind(':');
  return colon != std::string_view::npos && !host.substr(colon).ends_with(']');
}

bool isLoopback(const ListenAddress& host) {
  return host.address.starts_with("127.") || host.address == "::1";
}

/// An address for the socket calls.
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

}  // namespace

ListenAddress addressOf(int (*getName)(int, sockaddr*, socklen_t*), int socket) {
  sockaddr_storage name{};
  socklen_t length = sizeof(name);
  if (getName(socket, reinterpret_cast<sockaddr*>(&name), &length) != 0) return {};
  std::array<char, INET6_ADDRSTRLEN> text{};
  if (name.ss_family == AF_INET6) {
    const auto& ipv6 = reinterpret_cast<const sockaddr_in6&>(name);
    inet_ntop(AF_INET6, &ipv6.sin6_addr, text.data(), text.size());
    return {text.data(), ntohs(ipv6.sin6_port)};
  }
  const auto& ipv4 = reinterpret_cast<const sockaddr_in&>(name);
  inet_ntop(AF_INET, &ipv4.sin_addr, text.data(), text.size());
  return {text.data(), ntohs(ipv4.sin_port)};
}

std::string ListenAddress::text() const {
  const std::string host = isIpv6() ? "[" + address + "]" : address;
  return host + ":" + std::to_string(port);
}

std::optional<ListenAddress> parseListenAddress(std::string_view text) {
  const std::size_t colon = text.rfind(':');
  if (colon == std::string_view::npos) return std::nullopt;
  const auto port = parseNumber<std::uint16_t>(text.substr(colon + 1));
  if (!port) return std::nullopt;

  std::string_view host = text.substr(0, colon);
  if (host == "localhost") return ListenAddress{"127.0.0.1", *port};
  const bool bracketed = host.starts_with('[') && host.ends_with(']') && host.size() > 1;
  if (bracketed) host = host.substr(1, host.size() - 2);
  const auto address = canonicalAddress(bracketed ? AF_INET6 : AF_INET, host);
  if (!address) return std::nullopt;
  return ListenAddress{*address, *port};
}

bool isOwnHost(std::string_view host, const ListenAddress& own) {
  std::string text = lowered(host);
  if (!hasPort(text)) text += kHttpPort;
  const auto asked = parseListenAddress(text);
  if (!asked || asked->port != own.port) return false;
  return isLoopback(*asked) || asked->address == own.address;
}

bool isOwnOrigin(std::string_view origin, const ListenAddress& own) {
  const std::string text = lowered(origin);
  return text.starts_with(kOriginScheme) &&
         isOwnHost(std::string_view(text).substr(kOriginScheme.size()), own);
}

ListeningSocket::ListeningSocket(const ListenAddress& address) : _address(address) {
  const SocketAddress wanted(address);
  _socket =
      FileDescriptor(::socket(wanted.family(), SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  // Allows closed connections that remain at the address (TIME_WAIT), but not a second inbox.
  turnOn(number(), SOL_SOCKET, SO_REUSEADDR);
  if (address.isIpv6()) turnOn(number(), IPPROTO_IPV6, IPV6_V6ONLY);
  if (!_socket.isOpen() || ::bind(number(), wanted.get(), wanted.length()) != 0 ||
      ::listen(number(), SOMAXCONN) != 0) {
    throw MachineFault("cannot listen on " + address.text() + ": " + std::strerror(errno));
  }
  _address.port = addressOf(::getsockname, number()).port;
}

FileDescriptor ListeningSocket::accept() const {
  FileDescriptor connection(::accept4(number(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
  if (connection.isOpen()) turnOn(connection.number(), IPPROTO_TCP, TCP_NODELAY);
  return connection;
}

}  // namespace zt::inbox

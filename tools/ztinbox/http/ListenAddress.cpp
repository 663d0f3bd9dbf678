#include "tools/ztinbox/http/ListenAddress.h"

#include <arpa/inet.h>

#include <array>
#include <charconv>

namespace zt::inbox {

namespace {

/// The usual way of writing `address`, or nothing when it is none of `family`.
std::optional<std::string> canonicalAddress(int family, std::string_view address) {
  std::array<unsigned char, sizeof(in6_addr)> bytes{};
  if (address.find('\0') != std::string_view::npos) return std::nullopt;
  if (inet_pton(family, std::string(address).c_str(), bytes.data()) != 1) return std::nullopt;
  std::array<char, INET6_ADDRSTRLEN> text{};
  if (inet_ntop(family, bytes.data(), text.data(), text.size()) == nullptr) return std::nullopt;
  return text.data();
}

std::optional<std::uint16_t> parsePort(std::string_view text) {
  std::uint16_t port = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return port;
}

}  // namespace

std::string ListenAddress::text() const {
  const std::string host = isIpv6() ? "[" + address + "]" : address;
  return host + ":" + std::to_string(port);
}

std::optional<ListenAddress> parseListenAddress(std::string_view text) {
  const std::size_t colon = text.rfind(':');
  if (colon == std::string_view::npos) return std::nullopt;
  const auto port = parsePort(text.substr(colon + 1));
  if (!port) return std::nullopt;

  std::string_view host = text.substr(0, colon);
  if (host == "localhost") return ListenAddress{"127.0.0.1", *port};
  const bool bracketed = host.starts_with('[') && host.ends_with(']') && host.size() > 1;
  if (bracketed) host = host.substr(1, host.size() - 2);
  const auto address = canonicalAddress(bracketed ? AF_INET6 : AF_INET, host);
  if (!address) return std::nullopt;
  return ListenAddress{*address, *port};
}

}  // namespace zt::inbox

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zt::inbox {

/// An address and port of this machine.
struct ListenAddress {
  std::string address;  ///< IPv4 or IPv6, in numbers and without brackets
  std::uint16_t port = 0;

  bool isIpv6() const { return address.find(':') != std::string::npos; }
  /// Whether it stands for every address of the machine.
  bool isWildcard() const { return address == "0.0.0.0" || address == "::"; }
  /// "127.0.0.1:8025", "[::1]:8025"
  std::string text() const;
};

/// Reads "127.0.0.1:8025", "[::1]:8025" or "localhost:8025" (which means 127.0.0.1). Nothing for
/// any other text, other names included: where the inbox listens must not hang on a look-up.
std::optional<ListenAddress> parseListenAddress(std::string_view text);

}  // namespace zt::inbox

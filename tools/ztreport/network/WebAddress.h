// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>

namespace zt::tools {

/// The parts of a URL that matter for the connection.
struct WebAddress {
  std::string scheme;  ///< lower case
  std::string host;    ///< an IPv6 address has no brackets
  int port;
  std::string user;      ///< decoded
  std::string password;  ///< decoded
  std::string shown;     ///< the URL without user and password

  bool isSameServer(const WebAddress& other) const {
    return scheme == other.scheme && host == other.host && port == other.port;
  }
};

/// Parses a complete http or https URL; empty for anything else.
std::optional<WebAddress> webAddress(const std::string& url);

/// Parses the URL of a proxy as libcurl does: the default scheme is http.
std::optional<WebAddress> proxyAddress(const std::string& url);

/// `url` as it may be shown: without user and password. Any text will do.
std::string shownUrl(const std::string& url);

}  // namespace zt::tools

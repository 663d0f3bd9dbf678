#pragma once

#include <optional>
#include <string>

namespace zt::tools {

/// The parts of a URL that say which way it goes.
struct WebAddress {
  std::string scheme;  ///< lower case
  std::string host;    ///< an IPv6 address without its brackets
  int port;
  std::string shown;  ///< the URL without a password in it
};

/// `url` as the library takes it: http or https, nothing guessed. Nothing for any other text.
std::optional<WebAddress> webAddress(const std::string& url);

/// The URL of a proxy as libcurl takes it from the environment: without a scheme one of http.
std::optional<WebAddress> proxyAddress(const std::string& url);

}  // namespace zt::tools

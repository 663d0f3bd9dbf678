// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

// How the library reaches a server, with the reasons for failures.

namespace zt::tools {

/// Why something does not work, and what to do about it.
struct Fault {
  std::string reason;
  std::string remedy;
};

/// Result of a request.
struct Response {
  std::optional<Fault> failure;  ///< why there is no response; its remedy may be empty
  long status = 0;
  std::string body;
  std::chrono::seconds retryAfter{0};  ///< what the header Retry-After asks for; 0: nothing
  std::vector<std::string> redirects;  ///< the URLs that were redirected to, without passwords
};

/// Sends a GET, or a POST when there is a `body`, as the library does: the same headers, time
/// limit, redirects (at most five, each with the same method and body, none from https to http,
/// user and password not beyond the first server) and certificates (`SSL_CERT_FILE` and
/// `SSL_CERT_DIR` replace the system's).
Response request(const std::string& url, const std::optional<std::string>& body = std::nullopt);

/// Why `host` has no address; empty when it has, with the addresses in `addresses`. Waits no longer
/// than the library waits for a whole response.
std::string lookUp(const std::string& host, std::string& addresses);

/// Why no connection to `host` and `port` is possible, or empty. Sends nothing.
std::string connectTo(const std::string& host, int port);

}  // namespace zt::tools

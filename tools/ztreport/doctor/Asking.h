#pragma once

#include <optional>
#include <string>

namespace zt::tools {

/// What came of a request.
struct Answer {
  std::string failure;  ///< why no answer came; empty when one did
  long status = 0;
  std::string body;
};

/// Asks as the library does, with its time limit, redirects and headers, but tells why there is no
/// answer: a GET, or with `body` a POST.
Answer ask(const std::string& url, const std::optional<std::string>& body = std::nullopt);

/// Why `host` has no address, or empty when it has; `addresses` are these. Waits no longer than the
/// library waits for a whole answer.
std::string lookUp(const std::string& host, std::string& addresses);

/// Why nobody takes a connection at `host` and `port`, or empty. Nothing is sent there.
std::string knock(const std::string& host, int port);

}  // namespace zt::tools

#pragma once

#include <chrono>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace zt {

struct HttpHeader {
  std::string_view name;
  std::string_view value;
};

/// Views only; the strings must live until the exchange is over.
struct HttpRequest {
  std::string_view url;     ///< absolute, http or https
  std::string_view method;  ///< "GET" or "POST"
  std::span<const HttpHeader> headers;
  std::optional<std::string_view> body;
  std::chrono::milliseconds timeout;  ///< for all of it: name look-up, connection and response
};

struct HttpResponse {
  int status = 0;    ///< 0: no complete response arrived
  std::string body;  ///< the bytes as they came; empty with status 0
};

/// An HTTP client: one request, one complete response, on the caller's thread.
class HttpTransport {
 public:
  virtual ~HttpTransport() = default;

  /// Sends `request` and waits for the response, following redirects (to http and https only).
  /// Every failure (no such host, refused, timed out, cut off, larger than the limit of the
  /// implementation) gives status 0.
  virtual HttpResponse exchange(const HttpRequest& request) = 0;

  /// Closes what is kept open on this thread for the next exchange.
  virtual void closeConnections() = 0;
};

}  // namespace zt

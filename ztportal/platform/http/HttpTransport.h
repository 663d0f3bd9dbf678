// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "ztportal/platform/http/ZtDeliveryError.h"
#include "ztportal/platform/http/ZtTransportOptions.h"

namespace zt {

struct HttpHeader {
  std::string_view name;
  std::string_view value;
};

/// Consists of views: the strings must exist until the exchange is over.
struct HttpRequest {
  std::string_view url;     ///< absolute, http or https
  std::string_view method;  ///< "GET" or "POST"
  std::span<const HttpHeader> headers;
  std::optional<std::string_view> body;
  std::chrono::milliseconds timeout;  ///< for all of it: name look-up, connection and response
  /// Null: none. Its `timeout`, `compressRequests` and `transport` are for the caller.
  const ZtTransportOptions* options = nullptr;
};

/// How long the parts of an exchange took; zero for what was not reached or not needed.
struct HttpTimes {
  std::chrono::microseconds lookup{0};
  std::chrono::microseconds connect{0};
  std::chrono::microseconds tls{0};
  std::chrono::microseconds response{0};  ///< from the request's first byte to the end
  std::chrono::microseconds total{0};
};

struct HttpResponse {
  int status = 0;         ///< 0: no complete response arrived
  std::string body = {};  ///< the bytes as received; empty with status 0

  // For status 0 the reason; the message is a sentence without passwords.
  ZtDeliveryError error = ZtDeliveryError::NoError;
  std::string message = {};
  std::string url = {};                ///< the last one after redirects, without user and password
  std::chrono::seconds retryAfter{0};  ///< as the server asks (RFC 9110, 10.2.3); zero: not at all
  HttpTimes times = {};
};

/// An HTTP client: one request, one complete response, on the caller's thread.
class HttpTransport {
 public:
  virtual ~HttpTransport() = default;

  /// Sends `request` once and waits for the response, following redirects (to http and https only)
  /// with the same method and body. Every failure (no such host, refused, timed out, cut off) gives
  /// status 0. The implementation may cut a long body.
  virtual HttpResponse exchange(const HttpRequest& request) = 0;

  /// Closes what is kept open on this thread for the next exchange.
  virtual void closeConnections() = 0;
};

}  // namespace zt

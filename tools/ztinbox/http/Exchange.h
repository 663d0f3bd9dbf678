// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/ztinbox/http/Connection.h"

namespace zt::inbox {

inline constexpr const char* kHtmlType = "text/html; charset=utf-8";
inline constexpr const char* kJsonType = "application/json";
inline constexpr const char* kProblemType = "application/problem+json";
inline constexpr const char* kTextType = "text/plain; charset=utf-8";
inline constexpr const char* kXmlType = "text/xml; charset=utf-8";

using HttpHeaders = std::vector<std::pair<std::string, std::string>>;

struct HttpRequest {
  std::string method;
  std::string path;       ///< decoded, and without the scheme and authority of a proxy request
  std::string authority;  ///< host and port of a proxy request's target, else empty
  HttpHeaders headers;
  std::multimap<std::string, std::string> parameters;  ///< of the query, decoded
  std::string body;                                    ///< without chunks and trailers

  /// Whether the method is GET or HEAD.
  bool isRead() const { return method == "GET" || method == "HEAD"; }
  /// The values of all headers with this name, in any letter case.
  std::vector<std::string> header(std::string_view name) const;
};

struct HttpResponse {
  /// Sends bytes; false if the client has disconnected.
  using Write = std::function<bool(std::string_view)>;

  int status = 200;
  HttpHeaders headers;
  std::string type;  ///< of the body
  std::string body;
  /// If this is larger than the body, the connection ends after the body, before the client
  /// expects.
  std::size_t announcedSize = 0;
  /// Replaces the body: called repeatedly to write more of it, until it returns false. Then the
  /// connection ends. Only for requests that HttpHandlers::waits names.
  std::function<bool(const Write&)> stream;

  void setBody(std::string text, const char* mediaType) {
    body = std::move(text);
    type = mediaType;
  }
};

/// One request and its response.
struct Exchange {
  const HttpRequest& request;
  HttpResponse& response;
  Connection& connection;
};

/// The statuses of the server's own responses (RFC 9110, section 15).
namespace status {
inline constexpr int kBadRequest = 400;
inline constexpr int kForbidden = 403;
inline constexpr int kNotFound = 404;
inline constexpr int kNotAllowed = 405;
inline constexpr int kTimedOut = 408;
inline constexpr int kTooLarge = 413;
inline constexpr int kHeadTooLarge = 431;
inline constexpr int kServerError = 500;
inline constexpr int kNotImplemented = 501;
inline constexpr int kUnavailable = 503;
}  // namespace status

struct Refusal {
  int status = 0;
  std::string reason;
};

/// A response that gives `reason`: as a problem document (RFC 9457) below /api, and as plain text
/// elsewhere. One with status 503 asks the client to come back in a second.
HttpResponse refusalOf(std::string_view path, const Refusal& refusal);

/// Responds with a refusal; headers that the response has already stay.
void refuse(Exchange& exchange, const Refusal& refusal);
/// `allowed` are the allowed methods: "GET, HEAD".
void refuseMethod(Exchange& exchange, const char* allowed);

}  // namespace zt::inbox

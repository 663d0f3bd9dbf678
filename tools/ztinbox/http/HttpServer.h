// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/ztinbox/http/Connection.h"

namespace zt::inbox {

/// Status codes (RFC 9110; 431: RFC 6585).
inline constexpr int kBadRequest = 400;
inline constexpr int kForbidden = 403;
inline constexpr int kNotFound = 404;
inline constexpr int kNotAllowed = 405;
inline constexpr int kTimedOut = 408;
inline constexpr int kTooLarge = 413;
inline constexpr int kHeadTooLarge = 431;
inline constexpr int kServerError = 500;
inline constexpr int kNotImplemented = 501;

inline constexpr const char* kHtmlType = "text/html; charset=utf-8";
inline constexpr const char* kJsonType = "application/json";
inline constexpr const char* kTextType = "text/plain; charset=utf-8";
inline constexpr const char* kXmlType = "text/xml; charset=utf-8";

using HttpHeaders = std::vector<std::pair<std::string, std::string>>;

struct HttpRequest {
  const std::string& method;
  std::string path;       ///< decoded, and without the scheme and authority of a proxy request
  std::string authority;  ///< host and port of a proxy request's target, else empty
  HttpHeaders headers;
  const std::multimap<std::string, std::string>& parameters;  ///< of the query, decoded
  const std::string& body;                                    ///< as it was received

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
  /// Replaces the body: called repeatedly to write more of it, until it returns false.
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

struct Refusal {
  int status = 0;
  std::string reason;
};

/// Responds with `reason`, as JSON below /api/ and as plain text elsewhere.
void refuse(Exchange& exchange, const Refusal& refusal);
/// `allowed` are the allowed methods: "GET, HEAD".
void refuseMethod(Exchange& exchange, const char* allowed);

/// Serves HTTP/1.1 connections. Of a request target in absolute form (a proxy request), only the
/// path counts, for any host. Bodies are passed on as received, whatever their media type, and
/// responses are sent uncompressed. Thread-safe.
class HttpServer {
 public:
  using Handler = std::function<void(Exchange&)>;
  /// Returns a refusal for a request that must not be handled. Called before the body is read.
  using Guard = std::function<std::optional<Refusal>(const HttpRequest&, const Connection&)>;

  HttpServer(Handler handler, Guard guard);
  HttpServer(const HttpServer&) = delete;
  HttpServer& operator=(const HttpServer&) = delete;
  ~HttpServer();

  /// Responds to the requests of `connection` one after another; returns when it ends.
  void serve(Connection& connection);

 private:
  class Engine;
  std::unique_ptr<Engine> _engine;
};

/// The target of a request (RFC 9112, section 3.2).
struct RequestTarget {
  std::string path;       ///< percent escapes decoded
  std::string authority;  ///< host and port of a target in absolute form, else empty
};

/// Splits `target`, which is as the client wrote it. `decoded` is the part before the query,
/// decoded.
///
///     http://config.kelvane.example/reporting/kelvane.xml  ->  /reporting/kelvane.xml
RequestTarget readTarget(const std::string& target, const std::string& decoded);

}  // namespace zt::inbox

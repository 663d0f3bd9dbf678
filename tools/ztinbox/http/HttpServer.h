#pragma once

#include <httplib.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "tools/ztinbox/http/Connection.h"

namespace zt::inbox {

/// One request and its answer.
struct Exchange {
  const httplib::Request& request;
  const std::string& path;  ///< of this server, percent escapes decoded; in proxy form too
  httplib::Response& response;
  Connection& connection;
};

/// A request before its body is read.
struct RequestHead {
  const httplib::Request& request;
  const std::string& path;
  const std::string& authority;  ///< host and port of a target in proxy form, else empty
  const Connection& connection;
};

struct Refusal {
  int status = 0;
  std::string reason;
};

/// Answers with `reason`: as JSON below /api/, else as plain text.
void refuse(httplib::Response& response, std::string_view path, const Refusal& refusal);

/// Serves HTTP/1.1 connections. A request target in absolute form (a proxy's client sends it) is
/// served as its own path, whatever the host. Bodies are given out as they came, whatever their
/// media type says, and answers are sent uncompressed. Any thread may call it.
class HttpServer {
 public:
  using Handler = std::function<void(Exchange&)>;
  /// Decides before the body is read.
  using Guard = std::function<std::optional<Refusal>(const RequestHead&)>;

  HttpServer(Handler handler, Guard guard);
  HttpServer(const HttpServer&) = delete;
  HttpServer& operator=(const HttpServer&) = delete;
  ~HttpServer();

  /// Answers the requests of `connection` one after another; returns when it ends.
  void serve(Connection& connection);

 private:
  class Engine;
  std::unique_ptr<Engine> _engine;
};

}  // namespace zt::inbox

// SPDX-License-Identifier: Apache-2.0
#include "tools/ztinbox/http/HttpServer.h"

#include <httplib.h>
#include <strings.h>

#include <algorithm>
#include <array>
#include <charconv>

#include "ztportal/base/Text.h"
#include "ztportal/platform/json/Json.h"

namespace zt::inbox {

namespace {

constexpr std::chrono::milliseconds kIdleTimeout{5'000};
constexpr int kRequestsPerConnection = 1'000;
constexpr const char* kTooLargeReason = "request over 64 MiB";
constexpr std::string_view kScheme = "http://";
const std::string kEveryPath = "/";

/// Makes a browser load and run only the inbox's own files, whatever a report contains, and
/// prevents other sites from embedding the inbox.
const httplib::Headers kEveryResponse{
    {"Content-Security-Policy",
     "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; font-src 'self'; "
     "connect-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'"},
    {"Cross-Origin-Resource-Policy", "same-origin"},
    {"Referrer-Policy", "no-referrer"},
    {"X-Content-Type-Options", "nosniff"},
};

/// Lets the HTTP library read from and write to a Connection.
class ConnectionStream final : public httplib::Stream {
 public:
  explicit ConnectionStream(Connection& connection) : _connection(connection) {}

  bool is_readable() const override { return _connection.isReadable(); }
  bool is_writable() const override { return _connection.isWritable(); }
  ssize_t read(char* ptr, size_t size) override { return _connection.read(ptr, size); }
  ssize_t write(const char* ptr, size_t size) override { return _connection.write(ptr, size); }
  // The inbox asks the connection itself.
  void get_remote_ip_and_port(std::string& /*ip*/, int& /*port*/) const override {}
  void get_local_ip_and_port(std::string& /*ip*/, int& /*port*/) const override {}
  socket_t socket() const override { return _connection.socket(); }

 private:
  Connection& _connection;
};

/// The request that a thread is serving, for the HTTP library's handlers.
struct Current {
  Connection& connection;
  std::optional<HttpRequest> request;  ///< set once its head has been read
  std::optional<Refusal> refusal;
};

thread_local Current* current = nullptr;

class CurrentScope {
 public:
  explicit CurrentScope(Current& request) { current = &request; }
  CurrentScope(const CurrentScope&) = delete;
  CurrentScope& operator=(const CurrentScope&) = delete;
  ~CurrentScope() { current = nullptr; }
};

bool isChunked(const httplib::Request& request) { return request.has_header("Transfer-Encoding"); }

/// The announced length, or nothing if it is invalid.
std::optional<std::uint64_t> announcedLength(const httplib::Request& request) {
  if (request.get_header_value_count("Content-Length") > 1) return std::nullopt;
  const std::string text = request.get_header_value("Content-Length");
  if (text.empty()) return 0;
  std::uint64_t length = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), length);
  if (end != text.data() + text.size() || error == std::errc::invalid_argument) return std::nullopt;
  return error == std::errc() ? length : std::numeric_limits<std::uint64_t>::max();
}

std::optional<Refusal> checkFraming(const httplib::Request& request) {
  constexpr std::array<std::string_view, 5> kMethods{"GET", "HEAD", "POST", "PUT", "DELETE"};
  if (std::ranges::find(kMethods, request.method) == kMethods.end()) {
    return Refusal{kNotAllowed, "method not allowed: " + request.method};
  }
  if (isChunked(request) && request.get_header_value("Transfer-Encoding") != "chunked") {
    return Refusal{kNotImplemented, "transfer encoding not supported"};
  }
  const auto length = announcedLength(request);
  if (!length) return Refusal{kBadRequest, "bad Content-Length"};
  if (*length > kLargestRequest) return Refusal{kTooLarge, kTooLargeReason};
  return std::nullopt;
}

/// Prevents the HTTP library from interpreting the body. It would limit a form to 8 KiB, parse
/// multipart, decompress without a limit, and read a body without a length until the connection
/// ends.
void makePlain(httplib::Request& request) {
  for (const char* name : {"Content-Type", "Content-Encoding", "Accept-Encoding", "Range"}) {
    request.headers.erase(name);
  }
  request.ranges.clear();
  if (isChunked(request)) request.headers.erase("Content-Length");
  if (!isChunked(request) && !request.has_header("Content-Length")) {
    request.headers.emplace("Content-Length", "0");
  }
}

void announceEnd(httplib::Request& request) {
  request.headers.erase("Connection");
  request.headers.emplace("Connection", "close");
}

bool isAbsolute(const std::string& target) {
  return strncasecmp(target.c_str(), kScheme.data(), kScheme.size()) == 0;
}

HttpResponse refusalOf(std::string_view path, const Refusal& refusal) {
  HttpResponse response;
  response.status = refusal.status;
  if (path.starts_with("/api/")) {
    response.setBody(Json{{"error", refusal.reason}}.text() + "\n", kJsonType);
  } else {
    response.setBody(refusal.reason + "\n", kTextType);
  }
  return response;
}

void send(HttpResponse&& from, httplib::Response& to) {
  to.status = from.status;
  for (const auto& [name, value] : from.headers) to.set_header(name, value);
  if (from.stream) {
    to.set_chunked_content_provider(
        from.type, [stream = std::move(from.stream)](std::size_t, httplib::DataSink& sink) {
          return stream(
              [&sink](std::string_view bytes) { return sink.write(bytes.data(), bytes.size()); });
        });
  } else if (from.announcedSize > from.body.size()) {
    to.set_content_provider(
        from.announcedSize, from.type,
        [body = std::move(from.body)](std::size_t, std::size_t, httplib::DataSink& sink) {
          sink.write(body.data(), body.size());
          return false;
        });
  } else if (!from.type.empty()) {
    to.body = std::move(from.body);
    to.set_header("Content-Type", from.type);
  }
}

void sendRefusal(const Refusal& refusal, httplib::Response& response) {
  const std::string& path = current->request ? current->request->path : kEveryPath;
  send(refusalOf(path, refusal), response);
}

}  // namespace

std::vector<std::string> HttpRequest::header(std::string_view name) const {
  std::vector<std::string> values;
  for (const auto& [candidate, value] : headers) {
    if (equalsAnyCase(candidate, name)) values.push_back(value);
  }
  return values;
}

void refuse(Exchange& exchange, const Refusal& refusal) {
  HttpResponse response = refusalOf(exchange.request.path, refusal);
  response.headers = std::move(exchange.response.headers);
  exchange.response = std::move(response);
}

void refuseMethod(Exchange& exchange, const char* allowed) {
  exchange.response.headers.emplace_back("Allow", allowed);
  refuse(exchange, {kNotAllowed, "method not allowed: " + exchange.request.method});
}

class HttpServer::Engine final : public httplib::Server {
 public:
  Engine(HttpServer::Handler handler, Guard guard)
      : _handler(std::move(handler)), _guard(std::move(guard)) {
    // With the default, INVALID_SOCKET, the library would consider the server shut down and would
    // not write streamed responses.
    svr_sock_ = 0;
    set_keep_alive_max_count(kRequestsPerConnection);
    set_default_headers(kEveryResponse);
    set_pre_routing_handler([](const httplib::Request&, httplib::Response& response) {
      if (!current->refusal) return HandlerResponse::Unhandled;
      sendRefusal(*current->refusal, response);
      return HandlerResponse::Handled;
    });
    const auto handle = [this](const httplib::Request&, httplib::Response& response) {
      HttpResponse own;
      Exchange exchange{*current->request, own, current->connection};
      try {
        _handler(exchange);
      } catch (...) {
        refuse(exchange, {kServerError, "the inbox failed"});
      }
      send(std::move(own), response);
    };
    Get(kEveryPath, handle);
    Post(kEveryPath, handle);
    Put(kEveryPath, handle);
    Delete(kEveryPath, handle);
    set_error_handler([](const httplib::Request&, httplib::Response& response) {
      if (response.body.empty()) explainError(response);
    });
  }

  void serve(Connection& connection) {
    for (int left = kRequestsPerConnection; left > 0 && !connection.isEnding(); --left) {
      if (!connection.waitForRequest(kIdleTimeout)) return;
      if (!serveOne(connection, left == 1)) break;
    }
    connection.finish();
  }

 private:
  bool serveOne(Connection& connection, bool last) {
    Current request{connection, {}, {}};
    const CurrentScope scope(request);
    connection.beginHead();
    bool closed = false;
    ConnectionStream stream(connection);
    const bool answered =
        process_request(stream, last, closed, [this](httplib::Request& head) { prepare(head); });
    return answered && !closed;
  }

  /// The library calls this between head and body.
  void prepare(httplib::Request& request) {
    RequestTarget target = readTarget(request.target, request.path);
    current->request.emplace(HttpRequest{request.method,
                                         std::move(target.path),
                                         std::move(target.authority),
                                         {request.headers.begin(), request.headers.end()},
                                         request.params,
                                         request.body});
    current->connection.beginBody();
    current->refusal = checkFraming(request);
    if (!current->refusal) {
      current->refusal = _guard(*current->request, current->connection);
    }
    makePlain(request);
    const bool bodyIsRead = request.method != "GET" && request.method != "HEAD";
    const bool hasBody = isChunked(request) || request.get_header_value("Content-Length") != "0";
    // A client that expects "100 Continue" gets the refusal instead.
    if (current->refusal) request.headers.erase("Expect");
    if (hasBody && (current->refusal || !bodyIsRead)) {
      current->connection.endAfterResponse();
      announceEnd(request);
    }
    // A single route handles every path; the handler dispatches.
    request.path = kEveryPath;
  }

  static void explainError(httplib::Response& response) {
    const Connection& connection = current->connection;
    if (connection.isOverLimit() && connection.isInHead()) {
      sendRefusal({kHeadTooLarge, "request head over 256 KiB"}, response);
    } else if (connection.isOverLimit()) {
      sendRefusal({kTooLarge, kTooLargeReason}, response);
    } else {
      sendRefusal({response.status, "bad request"}, response);
    }
  }

  HttpServer::Handler _handler;
  Guard _guard;
};

HttpServer::HttpServer(Handler handler, Guard guard)
    : _engine(std::make_unique<Engine>(std::move(handler), std::move(guard))) {}

HttpServer::~HttpServer() = default;

void HttpServer::serve(Connection& connection) { _engine->serve(connection); }

RequestTarget readTarget(const std::string& target, const std::string& decoded) {
  if (!isAbsolute(target)) return {decoded, {}};
  const std::string_view rest = std::string_view(target).substr(kScheme.size());
  const std::string authority(rest.substr(0, rest.find_first_of("/?#")));
  // With an escape in the host name, the path would not be at the same offset in the decoded text.
  if (authority.find('%') != std::string::npos) return {decoded, authority};
  const std::string path = decoded.substr(kScheme.size() + authority.size());
  return {path.empty() ? "/" : path, authority};
}

}  // namespace zt::inbox

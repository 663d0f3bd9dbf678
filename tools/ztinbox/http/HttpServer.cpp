#include "tools/ztinbox/http/HttpServer.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <exception>
#include <utility>

#include "tools/ztinbox/api/ReportJson.h"
#include "tools/ztinbox/http/RequestTarget.h"
#include "tools/ztinbox/soap/SoapAnswers.h"

namespace zt::inbox {

namespace {

constexpr std::chrono::milliseconds kIdleTimeout{5'000};
constexpr int kRequestsPerConnection = 1'000;
constexpr int kBadRequest = 400;
constexpr int kNotAllowed = 405;
constexpr int kTooLarge = 413;
constexpr int kHeadTooLarge = 431;
constexpr int kServerError = 500;
constexpr int kNotImplemented = 501;
constexpr const char* kTooLargeReason = "request over 64 MiB";
const std::string kEveryPath = "/";

/// A browser runs and loads nothing but the inbox's own files, whatever a report holds, and shows
/// nothing of the inbox within another site's page.
const httplib::Headers kEveryAnswer{
    {"Content-Security-Policy",
     "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; font-src 'self'; "
     "connect-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'"},
    {"Cross-Origin-Resource-Policy", "same-origin"},
    {"Referrer-Policy", "no-referrer"},
    {"X-Content-Type-Options", "nosniff"},
};

/// The request that a thread is serving: the HTTP library's handlers get it this way.
struct Current {
  Connection& connection;
  std::string path;
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

/// The length that the head announces, or nothing when it makes no sense.
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

/// Keeps the HTTP library from interpreting the body: as a form, which it limits to 8 KiB, as
/// many parts, as compressed bytes that grow without limit, or as bytes up to the end of the
/// connection where no length is given.
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

}  // namespace

void refuse(httplib::Response& response, std::string_view path, const Refusal& refusal) {
  response.status = refusal.status;
  if (path.starts_with("/api/")) {
    response.set_content(errorJson(refusal.reason) + "\n", "application/json");
  } else {
    response.set_content(refusal.reason + "\n", kTextType);
  }
}

class HttpServer::Engine final : public httplib::Server {
 public:
  Engine(HttpServer::Handler handler, Guard guard)
      : _handler(std::move(handler)), _guard(std::move(guard)) {
    // The library gives up on answers of a server without a socket; this one has its own.
    svr_sock_ = 0;
    set_keep_alive_max_count(kRequestsPerConnection);
    set_default_headers(kEveryAnswer);
    set_pre_routing_handler([](const httplib::Request&, httplib::Response& response) {
      if (!current->refusal) return HandlerResponse::Unhandled;
      refuse(response, current->path, *current->refusal);
      return HandlerResponse::Handled;
    });
    const auto handle = [this](const httplib::Request& request, httplib::Response& response) {
      Exchange exchange{request, current->path, response, current->connection};
      _handler(exchange);
    };
    Get(kEveryPath, handle);
    Post(kEveryPath, handle);
    Put(kEveryPath, handle);
    Delete(kEveryPath, handle);
    set_error_handler([](const httplib::Request&, httplib::Response& response) {
      if (response.body.empty()) explainError(response);
    });
    set_exception_handler(
        [](const httplib::Request&, httplib::Response& response, const std::exception_ptr&) {
          refuse(response, current->path, {kServerError, "the inbox failed"});
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
    const bool answered = process_request(connection, last, closed,
                                          [this](httplib::Request& head) { prepare(head); });
    return answered && !closed;
  }

  /// Called by the library between head and body.
  void prepare(httplib::Request& request) {
    const RequestTarget target = readTarget(request.target, request.path);
    current->path = target.path;
    current->connection.beginBody();
    current->refusal = checkFraming(request);
    if (!current->refusal) {
      current->refusal = _guard({request, current->path, target.authority, current->connection});
    }
    makePlain(request);
    const bool bodyIsRead = request.method != "GET" && request.method != "HEAD";
    const bool hasBody = isChunked(request) || request.get_header_value("Content-Length") != "0";
    // A client that asks first is told at once, not invited to send.
    if (current->refusal) request.headers.erase("Expect");
    if (hasBody && (current->refusal || !bodyIsRead)) {
      current->connection.endAfterAnswer();
      announceEnd(request);
    }
    // One route serves all: where a request goes is decided by its path, not by a pattern.
    request.path = kEveryPath;
  }

  static void explainError(httplib::Response& response) {
    const Connection& connection = current->connection;
    if (connection.isOverLimit() && connection.isInHead()) {
      refuse(response, current->path, {kHeadTooLarge, "request head over 256 KiB"});
    } else if (connection.isOverLimit()) {
      refuse(response, current->path, {kTooLarge, kTooLargeReason});
    } else {
      refuse(response, current->path, {response.status, "bad request"});
    }
  }

  HttpServer::Handler _handler;
  Guard _guard;
};

HttpServer::HttpServer(Handler handler, Guard guard)
    : _engine(std::make_unique<Engine>(std::move(handler), std::move(guard))) {}

HttpServer::~HttpServer() = default;

void HttpServer::serve(Connection& connection) { _engine->serve(connection); }

}  // namespace zt::inbox

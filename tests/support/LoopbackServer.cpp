// SPDX-License-Identifier: Apache-2.0
#include "tests/support/LoopbackServer.h"

#include <netinet/in.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

#include <algorithm>
#include <charconv>
#include <stdexcept>
#include <utility>

namespace zt::test {

namespace {

std::size_t bodyLength(std::string_view head) {
  constexpr std::string_view kName = "\r\nContent-Length: ";
  const std::size_t found = head.find(kName);
  std::size_t length = 0;
  if (found != std::string_view::npos) {
    std::from_chars(head.data() + found + kName.size(), head.data() + head.size(), length);
  }
  return length;
}

bool isComplete(std::string_view request) {
  constexpr std::string_view kEnd = "\r\n\r\n";
  const std::size_t end = request.find(kEnd);
  return end != std::string_view::npos &&
         request.size() >= end + kEnd.size() + bodyLength(request.substr(0, end));
}

void resetOnClose(int connection) {
  const linger now{1, 0};
  ::setsockopt(connection, SOL_SOCKET, SO_LINGER, &now, sizeof(now));
}

}  // namespace

LoopbackPort::LoopbackPort(Manner manner)
    : _socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof(address);
  auto* const generic = reinterpret_cast<sockaddr*>(&address);
  if (::bind(socket(), generic, size) != 0 || ::getsockname(socket(), generic, &size) != 0 ||
      (manner == Listens && ::listen(socket(), 64) != 0)) {
    throw std::runtime_error("no port of the loopback interface");
  }
  _number = ntohs(address.sin_port);
}

FileDescriptor LoopbackPort::accept() const {
  return FileDescriptor(::accept4(socket(), nullptr, nullptr, SOCK_CLOEXEC));
}

void LoopbackPort::stop() const { ::shutdown(socket(), SHUT_RDWR); }

LoopbackServer::LoopbackServer(Handler handler)
    : _handler(std::move(handler)),
      _stop(::eventfd(0, EFD_CLOEXEC)),
      _acceptor([this] { acceptAll(); }) {}

LoopbackServer::LoopbackServer(std::vector<LoopbackResponse> script)
    : LoopbackServer([script = std::move(script), next = std::size_t{0}](auto&) mutable {
        return next < script.size() ? script[next++]
                                    : LoopbackResponse{"", LoopbackResponse::Then::Reset};
      }) {}

LoopbackServer::~LoopbackServer() {
  ::eventfd_write(_stop.number(), 1);
  _acceptor.join();
  for (std::thread& connection : _threads) connection.join();
}

std::vector<std::string> LoopbackServer::requests() const {
  const std::lock_guard lock(_mutex);
  return _requests;
}

/// Waits until `descriptor` can be read; false if the server ends, or after the timeout.
bool LoopbackServer::wait(int descriptor, int milliseconds) const {
  pollfd both[] = {{_stop.number(), POLLIN, 0}, {descriptor, POLLIN, 0}};
  return ::poll(both, 2, milliseconds) > 0 && both[0].revents == 0;
}

bool LoopbackServer::isStopped() const {
  pollfd stop{_stop.number(), POLLIN, 0};
  return ::poll(&stop, 1, 0) > 0;
}

void LoopbackServer::acceptAll() {
  while (wait(_port.socket(), -1)) {
    FileDescriptor connection = _port.accept();
    if (!connection.isOpen()) continue;
    ++_connections;
    _threads.emplace_back(
        [this, connection = std::move(connection)] { serve(connection.number()); });
  }
}

void LoopbackServer::serve(int connection) {
  using Then = LoopbackResponse::Then;
  std::string request;
  while (read(connection, request)) {
    const LoopbackResponse response = handle(request);
    if (!send(connection, response) || response.then == Then::Close) return;
    if (response.then == Then::Reset) return resetOnClose(connection);
    if (response.then == Then::Hang) {
      wait(connection, -1);
      return;
    }
  }
}

LoopbackResponse LoopbackServer::handle(const std::string& request) {
  const std::lock_guard lock(_mutex);
  _requests.push_back(request);
  return _handler(request);
}

bool LoopbackServer::read(int connection, std::string& request) const {
  request.clear();
  while (!isComplete(request)) {
    char bytes[65536];
    if (!wait(connection, -1)) return false;
    const ssize_t count = ::recv(connection, bytes, sizeof(bytes), 0);
    if (count <= 0) return false;
    request.append(bytes, static_cast<std::size_t>(count));
  }
  return true;
}

bool LoopbackServer::send(int connection, const LoopbackResponse& response) const {
  const auto pause = static_cast<int>(response.perByte.count());
  const std::size_t step = pause == 0 ? response.bytes.size() : 1;
  std::string_view rest = response.bytes;
  while (!rest.empty()) {
    // Anything that the client sends meanwhile, including the end of the connection, ends the
    // sending.
    if (pause != 0 && (wait(connection, pause) || isStopped())) return false;
    const ssize_t sent = ::send(connection, rest.data(), std::min(step, rest.size()), MSG_NOSIGNAL);
    if (sent < 0) return false;
    rest.remove_prefix(static_cast<std::size_t>(sent));
  }
  return true;
}

const char* nameOf(RequestKind kind) {
  switch (kind) {
    case RequestKind::Configuration:
      return "configuration";
    case RequestKind::Version:
      return "version";
    default:
      return "report";
  }
}

RequestKind kindOf(std::string_view request) {
  if (request.starts_with("GET ")) return RequestKind::Configuration;
  const bool isVersion = request.find("<getVersionInfo") != std::string_view::npos;
  return isVersion ? RequestKind::Version : RequestKind::Report;
}

LoopbackResponse success(std::string_view body, LoopbackResponse::Then then) {
  std::string bytes = "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(body.size()) +
                      "\r\nContent-Type: text/xml\r\n\r\n";
  bytes += body;
  return {std::move(bytes), then};
}

ReportingServer::ReportingServer(std::function<void(RequestKind)> beforeResponse)
    : _beforeResponse(std::move(beforeResponse)),
      _server([this](const std::string& request) { return respond(request); }) {}

std::string ReportingServer::healthyBody(RequestKind kind) const {
  switch (kind) {
    case RequestKind::Configuration:
      return "<configuration><defSOAP>" + _server.url("/soap") + "</defSOAP><defTestSOAP>" +
             _server.url("/soap-test") + "</defTestSOAP></configuration>";
    case RequestKind::Version:
      return "<versioninfo>7.3</versioninfo>";
    default:
      return "<Envelope><Body><ns1:postPoolDatasResponse><return>true</return>"
             "</ns1:postPoolDatasResponse></Body></Envelope>";
  }
}

void ReportingServer::setResponse(RequestKind kind, LoopbackResponse response) {
  const std::lock_guard lock(_mutex);
  _responses[kind] = std::move(response);
}

void ReportingServer::setResponseOnce(RequestKind kind, LoopbackResponse response) {
  const std::lock_guard lock(_mutex);
  _nextResponses[kind] = std::move(response);
}

LoopbackResponse ReportingServer::respond(const std::string& request) {
  const RequestKind kind = kindOf(request);
  _beforeResponse(kind);
  const std::lock_guard lock(_mutex);
  if (auto next = _nextResponses.extract(kind)) return std::move(next.mapped());
  const auto found = _responses.find(kind);
  return found != _responses.end() ? found->second : success(healthyBody(kind));
}

}  // namespace zt::test

// SPDX-License-Identifier: Apache-2.0
#include "tools/ztinbox/http/Session.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <exception>

namespace zt::inbox {

namespace {

using std::chrono::milliseconds;

constexpr std::size_t kReceived = 64UL * 1024;
/// After this many steps, other connections get their turn.
constexpr int kStepsInTurn = 64;

/// A chunk of a body (RFC 9112, section 7.1).
std::string chunkOf(std::string_view bytes) {
  std::array<char, 16> size{};
  char* const end = std::to_chars(size.data(), size.data() + size.size(), bytes.size(), 16).ptr;
  std::string chunk(size.data(), end);
  return chunk.append("\r\n").append(bytes).append("\r\n");
}

}  // namespace

Session::Session(FileDescriptor socket, const HttpHandlers& handlers, const HttpLimits& limits,
                 MemoryBudget& memory)
    : _handlers(handlers),
      _limits(limits),
      _connection(std::move(socket)),
      _memory(memory),
      _reader(_memory) {}

Session::Next Session::advance() try {
  for (int steps = 0; steps < kStepsInTurn; ++steps) {
    if (const Pause pause = step()) return *pause;
  }
  return Next::kWritable;  // mostly at once
} catch (const std::bad_alloc&) {
  return Next::kEnd;
}

Session::Pause Session::step() {
  switch (_state) {
    case State::kReading:
      return receive();
    case State::kWriting:
      return write();
    case State::kFarewell:
      return drain();
    case State::kEnded:
      break;
  }
  return Next::kEnd;
}

Session::Next Session::timeOut() {
  if (_state != State::kReading || !_reader.hasBegun()) return Next::kEnd;
  refuse({status::kTimedOut, "the request took too long"});
  return advance();
}

Session::Clock::time_point Session::deadline() const {
  switch (_state) {
    case State::kReading:
      if (!_reader.hasBegun()) return _since + _limits.idle;
      if (!_reader.isHeadComplete()) return _since + _limits.head;
      return endAtRate(_reader.bodySize());
    case State::kWriting:
      return endAtRate(_sent);
    case State::kFarewell:
      return std::min(_since + _limits.farewell, Clock::now() + _limits.farewellPause);
    case State::kEnded:
      break;
  }
  return Clock::now();
}

Session::Clock::time_point Session::endAtRate(std::size_t bytes) const {
  const milliseconds usual(bytes * 1'000 / _limits.bytesPerSecond);
  return _since + std::max(_limits.body, usual);
}

Session::Pause Session::receive() {
  std::array<char, kReceived> portion;  // NOLINT(*-member-init): overwritten
  const auto count = _connection.receive(portion);
  if (!count) return Next::kReadable;
  if (*count == 0) return Next::kEnd;
  const bool wasIdle = !_reader.hasBegun();
  const auto step = _reader.read({portion.data(), *count});
  if (wasIdle && _reader.hasBegun()) _since = Clock::now();
  return proceed(step);
}

Session::Pause Session::proceed(RequestReader::Step step) {
  switch (step) {
    case RequestReader::Step::kMore:
      return std::nullopt;
    case RequestReader::Step::kComplete:
      return Next::kHandler;
    case RequestReader::Step::kRefused:
      refuse(_reader.refusal());
      return std::nullopt;
    case RequestReader::Step::kHead:
      break;
  }
  _since = Clock::now();
  if (request().method == "CONNECT") {
    HttpResponse response = refusalOf("/", {status::kNotAllowed, "this is no tunnel"});
    response.headers.emplace_back("Allow", "GET, HEAD, POST, PUT, DELETE");
    respondWith(std::move(response));
    return std::nullopt;
  }
  if (const auto refusal = _handlers.check(request(), _connection)) {
    refuse(*refusal);
    return std::nullopt;
  }
  if (_reader.expectsContinue()) _connection.send("HTTP/1.1 100 Continue\r\n\r\n");
  return proceed(_reader.read({}));
}

void Session::handle() {
  HttpResponse response;
  Exchange exchange{request(), response, _connection};
  _connection.setHead(std::move(_reader.head()));
  try {
    _handlers.respond(exchange);
    if (response.stream && !_connection.isSilent()) return sendStream(response);
  } catch (...) {
    response = refusalOf(request().path, {status::kServerError, "the inbox failed"});
  }
  _reader.request().body = std::string();  // frees its memory
  _memory.clear();
  if (_connection.isSilent()) return enter(State::kEnded);
  if (!_memory.grow(response.body.size())) {
    return refuse({status::kUnavailable, "too much is being sent"});
  }
  respondWith(std::move(response));
}

void Session::refuse(const Refusal& refusal) { respondWith(refusalOf(_reader.path(), refusal)); }

/// Chunked for clients that know chunks; otherwise up to the end of the connection.
void Session::sendStream(HttpResponse& response) {
  _isLast = true;
  if (request().method == "HEAD") return respondWith(std::move(response));
  enter(State::kEnded);
  const bool isChunked = !_reader.isVersion10();
  if (!_connection.write(responseHead(response, isChunked, connectionHeader()))) return;
  const auto write = [this, isChunked](std::string_view bytes) {
    return _connection.write(isChunked ? chunkOf(bytes) : bytes);
  };
  while (response.stream(write)) {
  }
  if (_connection.isSilent()) return;
  if (isChunked) _connection.write("0\r\n\r\n");
}

void Session::respondWith(HttpResponse response) {
  // The rest of a request that was refused is not read.
  if (!_reader.isComplete() || !_reader.keepsAlive()) _isLast = true;
  if (response.announcedSize > response.body.size()) _isLast = true;
  _head = responseHead(response, false, connectionHeader());
  if (request().method != "HEAD" && mayHaveBody(response.status)) _body = std::move(response.body);
  _sent = 0;
  enter(State::kWriting);
}

std::string Session::connectionHeader() const {
  if (_isLast) return "Connection: close\r\n";
  const auto idle = std::chrono::floor<std::chrono::seconds>(_limits.idle).count();
  return (_reader.isVersion10() ? "Connection: keep-alive\r\nKeep-Alive: timeout="
                                : "Keep-Alive: timeout=") +
         std::to_string(idle) + "\r\n";
}

Session::Pause Session::write() {
  while (_sent < _head.size() + _body.size()) {
    const std::string_view head = std::string_view(_head).substr(std::min(_sent, _head.size()));
    const std::size_t bodySent = _sent - std::min(_sent, _head.size());
    const auto count = _connection.send(head, std::string_view(_body).substr(bodySent));
    if (!count) return Next::kWritable;
    if (*count == 0) return Next::kEnd;
    _sent += *count;
  }
  _head.clear();
  _body = std::string();
  _memory.clear();
  if (_isLast) {
    // Closing a socket with unread input resets the connection, and the response could be lost.
    _connection.endSending();
    enter(State::kFarewell);
    return std::nullopt;
  }
  _reader.next();
  enter(State::kReading);
  return proceed(_reader.read({}));
}

Session::Pause Session::drain() {
  std::array<char, kReceived> portion;  // NOLINT(*-member-init): overwritten
  const auto count = _connection.receive(portion);
  if (count == std::size_t{0} || Clock::now() > _since + _limits.farewell) return Next::kEnd;
  if (!count) return Next::kReadable;
  return std::nullopt;
}

void Session::enter(State state) {
  _state = state;
  _since = Clock::now();
}

}  // namespace zt::inbox

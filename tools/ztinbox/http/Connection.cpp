// SPDX-License-Identifier: Apache-2.0
#include "tools/ztinbox/http/Connection.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "tools/ztinbox/http/ListenAddress.h"

namespace zt::inbox {

namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr milliseconds kReadTimeout{5'000};
constexpr milliseconds kWriteTimeout{5'000};
/// After the last response, a client may continue to send, with pauses of at most this length and
/// for at most this time.
constexpr milliseconds kFarewellPause{2'000};
constexpr milliseconds kFarewell{30'000};

/// Waits for any of `events`, an error, or the end of both directions; false after the timeout.
bool waitFor(int socket, short events, milliseconds timeout) {
  pollfd entry{socket, events, 0};
  const bool limited = timeout >= milliseconds::zero();
  const auto end = Clock::now() + std::max(timeout, milliseconds::zero());
  for (;;) {
    const auto left = std::chrono::ceil<milliseconds>(end - Clock::now()).count();
    const int wait = limited ? static_cast<int>(std::max<std::int64_t>(left, 0)) : -1;
    const int ready = ::poll(&entry, 1, wait);
    if (ready > 0) return true;
    if (ready == 0) return false;
    if (errno != EINTR) return true;
  }
}

}  // namespace

bool Connection::waitForRequest(milliseconds timeout) {
  return _bufferBegin < _bufferEnd || fillBuffer(timeout);
}

void Connection::beginHead() {
  _inHead = true;
  _mayRead = kLargestHead;
  _head.clear();
}

void Connection::beginBody() {
  _inHead = false;
  _mayRead = kLargestRequest;
}

void Connection::finish() {
  if (_silent) return;
  // Closing a socket with unread input resets the connection, and the response could be lost.
  ::shutdown(_socket.number(), SHUT_WR);
  const auto end = Clock::now() + kFarewell;
  while (Clock::now() < end && waitFor(_socket.number(), POLLIN, kFarewellPause)) {
    const ssize_t count = ::recv(_socket.number(), _buffer.data(), _buffer.size(), 0);
    if (count == 0 || (count < 0 && errno != EINTR && errno != EAGAIN)) return;
  }
}

void Connection::reset() {
  _silent = true;
  const linger atOnce{1, 0};
  setsockopt(_socket.number(), SOL_SOCKET, SO_LINGER, &atOnce, sizeof(atOnce));
}

bool Connection::staysOpenFor(milliseconds time) const {
  // A client that closed only its sending side still waits for the response: no POLLRDHUP.
  return time == milliseconds::zero() || !waitFor(_socket.number(), 0, time);
}

bool Connection::isLeftWithin(milliseconds timeout) const {
  return waitFor(_socket.number(), POLLRDHUP, timeout);
}

std::string Connection::localAddress() const {
  return addressOf(::getsockname, _socket.number()).address;
}

std::string Connection::sender() const { return addressOf(::getpeername, _socket.number()).text(); }

bool Connection::isReadable() const {
  return _bufferBegin < _bufferEnd || waitFor(_socket.number(), POLLIN, kReadTimeout);
}

bool Connection::isWritable() const {
  return !_silent && waitFor(_socket.number(), POLLOUT, kWriteTimeout);
}

ssize_t Connection::read(char* bytes, std::size_t size) {
  if (_mayRead == 0 && size > 0) {
    _overLimit = true;
    _readFailed = true;
    return -1;
  }
  if (_bufferBegin == _bufferEnd && !fillBuffer(kReadTimeout)) return _readFailed ? -1 : 0;
  return takeBuffered(bytes, std::min(size, _mayRead));
}

ssize_t Connection::write(const char* bytes, std::size_t size) {
  std::size_t sent = 0;
  while (sent < size) {
    if (_silent) return -1;
    const ssize_t count = ::send(_socket.number(), bytes + sent, size - sent, MSG_NOSIGNAL);
    if (count >= 0) {
      sent += static_cast<std::size_t>(count);
      continue;
    }
    if (errno == EINTR) continue;
    if (errno != EAGAIN || !waitFor(_socket.number(), POLLOUT, kWriteTimeout)) {
      _silent = true;
      return -1;
    }
  }
  return static_cast<ssize_t>(size);
}

/// False at the end of the input, after an error or after the timeout.
bool Connection::fillBuffer(milliseconds timeout) {
  if (_readFailed || !waitFor(_socket.number(), POLLIN, timeout)) {
    _readFailed = true;
    return false;
  }
  ssize_t count = 0;
  do {
    count = ::recv(_socket.number(), _buffer.data(), _buffer.size(), 0);
  } while (count < 0 && errno == EINTR);
  _bufferBegin = 0;
  _bufferEnd = count > 0 ? static_cast<std::size_t>(count) : 0;
  _readFailed = count <= 0;
  return count > 0;
}

ssize_t Connection::takeBuffered(char* to, std::size_t size) {
  const std::size_t count = std::min(size, _bufferEnd - _bufferBegin);
  std::memcpy(to, _buffer.data() + _bufferBegin, count);
  if (_inHead) _head.append(to, count);
  _bufferBegin += count;
  _mayRead -= count;
  return static_cast<ssize_t>(count);
}

}  // namespace zt::inbox

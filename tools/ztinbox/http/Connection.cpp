// SPDX-License-Identifier: Apache-2.0
#include "tools/ztinbox/http/Connection.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/uio.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "tools/ztinbox/http/ListenAddress.h"

namespace zt::inbox {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kWriteTimeout{5'000};

/// Waits for any of `events`, an error, or the end of both directions; false after the timeout.
bool waitFor(int socket, short events, milliseconds timeout) {
  using Clock = std::chrono::steady_clock;
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

std::optional<std::size_t> resultOf(ssize_t count) {
  if (count >= 0) return static_cast<std::size_t>(count);
  if (errno == EAGAIN || errno == EINTR) return std::nullopt;
  return 0;
}

}  // namespace

void Connection::reset() {
  _silent = true;
  const linger atOnce{1, 0};
  setsockopt(socket(), SOL_SOCKET, SO_LINGER, &atOnce, sizeof(atOnce));
}

bool Connection::staysOpenFor(milliseconds time) const {
  // A client that closed only its sending side still waits for the response: no POLLRDHUP.
  return time == milliseconds::zero() || !waitFor(socket(), 0, time);
}

bool Connection::isLeftWithin(milliseconds timeout) const {
  return waitFor(socket(), POLLRDHUP, timeout);
}

std::string Connection::localAddress() const { return addressOf(::getsockname, socket()).address; }

std::string Connection::sender() const { return addressOf(::getpeername, socket()).text(); }

std::optional<std::size_t> Connection::receive(std::span<char> bytes) const {
  return resultOf(::recv(socket(), bytes.data(), bytes.size(), 0));
}

std::optional<std::size_t> Connection::send(std::string_view first, std::string_view second) const {
  std::array<iovec, 2> parts{{{const_cast<char*>(first.data()), first.size()},
                              {const_cast<char*>(second.data()), second.size()}}};
  msghdr message{};
  message.msg_iov = parts.data();
  message.msg_iovlen = parts.size();
  return resultOf(::sendmsg(socket(), &message, MSG_NOSIGNAL));
}

bool Connection::write(std::string_view bytes) const {
  while (!bytes.empty()) {
    const auto count = send(bytes);
    if (!count) {
      if (!waitFor(socket(), POLLOUT, kWriteTimeout)) return false;
      continue;
    }
    if (*count == 0) return false;
    bytes.remove_prefix(*count);
  }
  return true;
}

bool Connection::isReadableWithin(milliseconds timeout) const {
  return waitFor(socket(), POLLIN, timeout);
}

void Connection::endSending() const { ::shutdown(socket(), SHUT_WR); }

void Connection::endNow() const { ::shutdown(socket(), SHUT_RDWR); }

}  // namespace zt::inbox

#pragma once

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <functional>
#include <list>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "tests/support/LoopbackPort.h"

namespace zt::test {

/// What a `RawHttpServer` does once a request has arrived.
struct RawAnswer {
  enum class Then { Keep, Close, Reset, Hang };

  std::string bytes;
  Then then = Then::Keep;
  std::chrono::milliseconds perByte{0};  ///< a pause before each byte
};

/// A server on a loopback port that answers with any bytes whatever and records the bytes of the
/// requests. Each connection has a thread.
///
///     RawHttpServer server({{"HTTP/1.1 204 No Content\r\n\r\n"}});
///     get(server.url("/config.xml"));
///     server.requests();                       // {"GET /config.xml HTTP/1.1\r\n..."}
class RawHttpServer {
 public:
  using Handler = std::function<RawAnswer(const std::string& request)>;

  explicit RawHttpServer(Handler handler)
      : _handler(std::move(handler)), _acceptor([this] { acceptAll(); }) {}
  /// Answers in turn, over all connections; a request beyond the last one resets its connection.
  explicit RawHttpServer(std::vector<RawAnswer> script)
      : RawHttpServer([script = std::move(script), next = std::size_t{0}](auto&) mutable {
          return next < script.size() ? script[next++] : RawAnswer{"", RawAnswer::Then::Reset};
        }) {}
  RawHttpServer(const RawHttpServer&) = delete;
  RawHttpServer& operator=(const RawHttpServer&) = delete;
  ~RawHttpServer() {
    eventfd_write(_stop, 1);
    _acceptor.join();
    for (std::thread& connection : _threads) connection.join();
    ::close(_stop);
  }

  int port() const { return _port.number(); }
  std::string host() const { return _port.host(); }
  std::string url(const std::string& path) const { return _port.url(path); }

  /// How many connections have been accepted.
  int connections() const { return _connections; }
  std::vector<std::string> requests() const {
    const std::lock_guard lock(_mutex);
    return _requests;
  }

 private:
  /// Waits until `descriptor` can be read; false when the server ends or the time is over.
  bool wait(int descriptor, int milliseconds) const {
    pollfd both[] = {{_stop, POLLIN, 0}, {descriptor, POLLIN, 0}};
    return poll(both, 2, milliseconds) > 0 && both[0].revents == 0;
  }

  void acceptAll() {
    while (wait(_port.socket(), -1)) {
      FileDescriptor connection = _port.accept();
      if (!connection.isOpen()) continue;
      ++_connections;
      _threads.emplace_back(
          [this, connection = std::move(connection)] { serve(connection.number()); });
    }
  }

  void serve(int connection) {
    std::string request;
    while (read(connection, request)) {
      const RawAnswer answer = handle(request);
      if (!send(connection, answer)) return;
      if (answer.then == RawAnswer::Then::Close) return;
      if (answer.then == RawAnswer::Then::Reset) return reset(connection);
      if (answer.then == RawAnswer::Then::Hang) {
        wait(connection, -1);
        return;
      }
    }
  }

  RawAnswer handle(const std::string& request) {
    const std::lock_guard lock(_mutex);
    _requests.push_back(request);
    return _handler(request);
  }

  static std::size_t bodyLength(std::string_view head) {
    constexpr std::string_view kName = "\r\nContent-Length: ";
    const std::size_t found = head.find(kName);
    std::size_t length = 0;
    if (found != std::string_view::npos) {
      std::from_chars(head.data() + found + kName.size(), head.data() + head.size(), length);
    }
    return length;
  }

  bool read(int connection, std::string& request) const {
    constexpr std::string_view kEnd = "\r\n\r\n";
    request.clear();
    while (true) {
      const std::size_t end = request.find(kEnd);
      if (end != std::string::npos &&
          request.size() >=
              end + kEnd.size() + bodyLength(std::string_view(request).substr(0, end))) {
        return true;
      }
      char bytes[65536];
      if (!wait(connection, -1)) return false;
      const ssize_t count = recv(connection, bytes, sizeof(bytes), 0);
      if (count <= 0) return false;
      request.append(bytes, static_cast<std::size_t>(count));
    }
  }

  bool send(int connection, const RawAnswer& answer) const {
    const std::size_t step = answer.perByte.count() == 0 ? answer.bytes.size() : 1;
    std::string_view rest = answer.bytes;
    while (!rest.empty()) {
      // Whatever the client sends meanwhile, its end included, ends the drip.
      if (answer.perByte.count() != 0 &&
          (wait(connection, static_cast<int>(answer.perByte.count())) || stopped())) {
        return false;
      }
      const ssize_t sent =
          ::send(connection, rest.data(), std::min(step, rest.size()), MSG_NOSIGNAL);
      if (sent < 0) return false;
      rest.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
  }

  bool stopped() const {
    pollfd stop{_stop, POLLIN, 0};
    return poll(&stop, 1, 0) > 0;
  }

  static void reset(int connection) {
    const linger now{1, 0};
    setsockopt(connection, SOL_SOCKET, SO_LINGER, &now, sizeof(now));
  }

  Handler _handler;
  const LoopbackPort _port{LoopbackPort::Listens};
  const int _stop = eventfd(0, EFD_CLOEXEC);
  std::atomic<int> _connections{0};
  mutable std::mutex _mutex;
  std::vector<std::string> _requests;
  std::list<std::thread> _threads;  // touched by the acceptor alone until it has ended
  std::thread _acceptor;
};

}  // namespace zt::test
